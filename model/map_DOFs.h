// Intersection of an element's DOF list with a target's.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "model/element_matrix_types.h"

namespace orv {
namespace core {

// (position in the target, position in the element)
typedef std::pair<std::uint32_t, std::uint32_t> DOF_pair;

// Fills `pairs` with the DOFs that both indexes hold. The smaller index is walked and
// each ID looked up in the other. Walking the element gives the pairs in element order;
// walking the target gives them in ascending target position. One and the same index
// on both sides gives the identity. A null index has no DOF.
//
// This intersection is what keeps fixed DOFs out of Kf and free DOFs out of Ks without
// any test in a model.
void map_DOFs(const DOF_index* target, const DOF_index* element, std::vector<DOF_pair>& pairs);

}  // namespace core
}  // namespace orv
