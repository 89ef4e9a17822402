#include "orvmath1/vector_fixed.h"

namespace orv {

template class vector_fixed<double, 2>;
template class vector_fixed<double, 3>;
template class vector_fixed<double, 6>;

}  // namespace orv
