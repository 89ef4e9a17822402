// Engine names of the load records, which are public plain records.
#pragma once

#include <orv/fem/elementary_load.h>

namespace orv {
namespace core {
using fem::DOF_record;
using fem::elementary_load;
}  // namespace core
}  // namespace orv
