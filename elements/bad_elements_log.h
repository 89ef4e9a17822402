// The log of the bad elements of a run's meshes, for the runs that assemble a
// stiffness: the meshes cannot reach the run's display hook during assembly, so they
// keep their bad elements and a run asks for them afterwards.
#pragma once

#include <cstdint>

#include <orv/fem/solver_base.h>

namespace orv {
namespace core {

class numerical_model_base;

// Logs, through the display hook of a run, the bad elements (see get_bad_elements) of
// every mesh in `model` (a composite is walked down to its meshes), as found by the
// last assembly of their stiffness: the first ten as level-1 lines
//   "  Bad element: model <ID>, element <number> (Jacobian determinant not positive or tiny)"
// then "  Nbr bad elements       : <count>". Nothing is logged when there is none or
// when `hook` is null. Returns the count. A run calls it once after assembling K.
std::uint64_t log_bad_elements(numerical_model_base& model, fem::display_hook_type hook, void* pass_thru);

}  // namespace core
}  // namespace orv
