#include "orvmath1/symmetric_full.h"

namespace orv {

template class symmetric_full<double>;

}  // namespace orv
