// Saved internal states of models.
#include "model/internal_states.h"

#include <new>

namespace orv {
namespace core {

dense1D<double> internal_states_layout::row(std::size_t e) const {
    if (e + 1 >= offsets.size()) return dense1D<double>();
    const std::size_t b = offsets[e], end = offsets[e + 1];
    if (end < b || end - b != record_size || end > values.size() || record_size == 0) return dense1D<double>();
    return values.sub_vector(b, end - b);
}

bool internal_states::set(std::uint32_t NM_ID, const internal_states_layout& layout) {
    try {
        if (NM_ID >= layouts_.size()) {
            layouts_.resize(std::size_t(NM_ID) + 1);
            present_.resize(std::size_t(NM_ID) + 1, 0);
        }
        layouts_[NM_ID] = layout;
        present_[NM_ID] = 1;
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

}  // namespace core
}  // namespace orv
