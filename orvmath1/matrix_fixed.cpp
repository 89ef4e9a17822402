#include "orvmath1/matrix_fixed.h"

namespace orv {

template class matrix_fixed<double, 2, 2>;
template class matrix_fixed<double, 3, 2>;
template class matrix_fixed<double, 3, 3>;
template class matrix_fixed<double, 3, 4>;

}  // namespace orv
