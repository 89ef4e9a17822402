#include "orvmath1/dense1D.h"

namespace orv {

template class dense1D<double, 8>;
template class dense1D<unsigned int, 8>;
template class dense1D<std::complex<double>, 8>;

}  // namespace orv
