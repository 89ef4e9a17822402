#include "orvmath1/symmetric_fixed.h"

namespace orv {

template class symmetric_fixed<double, 3>;
template class symmetric_fixed<double, 6>;

}  // namespace orv
