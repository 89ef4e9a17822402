// Version of the library.
#include <orv/fem/version.h>

namespace orv {
namespace fem {

const char* version::text() { return "5.5.0.0"; }

}  // namespace fem
}  // namespace orv
