#include "orvmath1/symmetric_sparse.h"

namespace orv {

template class symmetric_sparse<double>;

}  // namespace orv
