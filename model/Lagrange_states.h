// Internal forces of the constraint models, accumulated per model.
#pragma once

#include <cstdint>
#include <unordered_map>

#include "model/element_matrix_types.h"
#include "orvmath1/ref_counted.h"

namespace orv {
namespace core {

// A table from model ID to an indexed vector: the internal forces of each constraint
// model, summed over its elements. The element number takes no part in the key.
class Lagrange_states : public ref_counted {
public:
    // The entry of a model, null when it has none.
    DOF_vector* find(std::uint32_t NM_ID);
    const DOF_vector* find(std::uint32_t NM_ID) const;
    // Adds `factor` times `v` to the entry of a model, making the entry (on v's DOFs)
    // when it is missing and extending it by the DOFs it does not hold yet. False when
    // memory fails.
    bool add(std::uint32_t NM_ID, double factor, const DOF_vector& v);
    std::size_t size() const { return table_.size(); }
    void clear() { table_.clear(); }
    const std::unordered_map<std::uint32_t, DOF_vector>& table() const { return table_; }

private:
    std::unordered_map<std::uint32_t, DOF_vector> table_;
};

}  // namespace core
}  // namespace orv
