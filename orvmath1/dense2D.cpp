#include "orvmath1/dense2D.h"

namespace orv {

template class dense2D<double>;
template class dense2D<unsigned int>;
template class dense2D<std::complex<double>>;

}  // namespace orv
