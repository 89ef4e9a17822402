// Engine name of the one-variable table, a public value class.
#pragma once

#include <orv/fem/oneD_table.h>

namespace orv {
namespace core {
using fem::oneD_table;
}
}  // namespace orv
