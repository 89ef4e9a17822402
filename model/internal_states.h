// Saved internal states of models (law states), keyed by model ID.
#pragma once

#include <cstdint>
#include <vector>

#include "orvmath1/dense1D.h"
#include "orvmath1/ref_counted.h"

namespace orv {
namespace core {

// The states of one model: element e owns values [offsets[e], offsets[e + 1]), and a
// row holds a full record when its length is record_size.
struct internal_states_layout {
    dense1D<unsigned int> offsets;
    std::uint32_t record_size = 0;
    dense1D<double> values;

    std::size_t nbr_rows() const { return offsets.size() ? offsets.size() - 1 : 0; }
    // Row e as a view on the values; empty when e has no row or the row is not a full
    // record.
    dense1D<double> row(std::size_t e) const;
};

// The record in which a run saves and restores the states of all the models of a
// problem, one layout per model ID.
class internal_states : public ref_counted {
public:
    // The layout stored under a model ID, or null.
    const internal_states_layout* get(std::uint32_t NM_ID) const {
        return NM_ID < layouts_.size() && present_[NM_ID] ? &layouts_[NM_ID] : nullptr;
    }
    // Stores a layout under a model ID (sharing its vectors). False when memory fails.
    bool set(std::uint32_t NM_ID, const internal_states_layout& layout);
    std::size_t size() const { return layouts_.size(); }
    void clear() {
        layouts_.clear();
        present_.clear();
    }

private:
    std::vector<internal_states_layout> layouts_;
    std::vector<char> present_;
};

}  // namespace core
}  // namespace orv
