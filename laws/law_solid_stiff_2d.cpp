// The law of plane strain and axisymmetric models.
#include "laws/law_solid_stiff_2d.h"

namespace orv {
namespace core {

law_solid_stiff_2d::law_solid_stiff_2d(law_solid_stiff* solid) : solid_(solid) {}

law_solid_stiff_2d::~law_solid_stiff_2d() = default;

}  // namespace core
}  // namespace orv
