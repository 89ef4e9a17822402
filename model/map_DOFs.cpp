// Intersection of an element's DOF list with a target's.
#include "model/map_DOFs.h"

#include <algorithm>

namespace orv {
namespace core {

void map_DOFs(const DOF_index* target, const DOF_index* element, std::vector<DOF_pair>& pairs) {
    pairs.clear();
    if (!target || !element) return;
    const std::size_t nt = target->size(), ne = element->size();
    pairs.reserve(std::min(nt, ne));
    if (target == element) {
        for (std::size_t k = 0; k < nt; ++k)
            pairs.emplace_back(static_cast<std::uint32_t>(k), static_cast<std::uint32_t>(k));
        return;
    }
    if (ne <= nt) {
        for (std::size_t k = 0; k < ne; ++k) {
            const std::uint32_t p = target->find((*element)[k]);
            if (p != DOF_index::npos) pairs.emplace_back(p, static_cast<std::uint32_t>(k));
        }
    } else {
        for (std::size_t k = 0; k < nt; ++k) {
            const std::uint32_t p = element->find((*target)[k]);
            if (p != DOF_index::npos) pairs.emplace_back(static_cast<std::uint32_t>(k), p);
        }
        // Already ascending in the target; kept sorted should the walk ever change.
        if (!std::is_sorted(pairs.begin(), pairs.end())) std::sort(pairs.begin(), pairs.end());
    }
}

}  // namespace core
}  // namespace orv
