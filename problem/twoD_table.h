// Engine name of the two-variable table, a public value class.
#pragma once

#include <orv/fem/twoD_table.h>

namespace orv {
namespace core {
using fem::twoD_table;
}
}  // namespace orv
