// Vector assemblers that are not templates, and the table of Lagrange states.
#include "model/vector_assembler.h"
#include <orv/fem/error_type.h>

#include <new>

namespace orv {
namespace core {

vector_assembler_base::~vector_assembler_base() = default;

template class vector_assembler<double>;
template class vector_assembler<std::complex<double>>;

int vector_assembler_Lagrange::add(double factor, const DOF_vector& v, std::uint32_t NM_ID, std::uint32_t) {
    if (!v.get_IDs() || v.size() == 0 || factor == 0.0) return 0;
    bool all_zero = true;
    for (std::size_t k = 0; k < v.size() && all_zero; ++k) all_zero = v[k] == 0.0;
    if (all_zero) return 0;
    const int rc = add_plain(factor, v);
    if (rc) return rc;
    if (states_ && !states_->add(NM_ID, factor * multiplier(), v)) return fem::error_memory;
    return 0;
}

DOF_vector* Lagrange_states::find(std::uint32_t NM_ID) {
    auto it = table_.find(NM_ID);
    return it == table_.end() ? nullptr : &it->second;
}

const DOF_vector* Lagrange_states::find(std::uint32_t NM_ID) const {
    auto it = table_.find(NM_ID);
    return it == table_.end() ? nullptr : &it->second;
}

bool Lagrange_states::add(std::uint32_t NM_ID, double factor, const DOF_vector& v) {
    if (!v.get_IDs()) return true;
    try {
        auto it = table_.find(NM_ID);
        if (it == table_.end()) {
            // A new entry on a private copy of v's DOFs.
            Ptr<DOF_index> ids(new DOF_index(*v.get_IDs()));
            if (ids->size() != v.get_IDs()->size()) return false;
            DOF_vector entry;
            if (!entry.init(ids, 0.0)) return false;
            it = table_.emplace(NM_ID, entry).first;
        }
        DOF_vector& e = it->second;
        DOF_index& ids = const_cast<DOF_index&>(*e.get_IDs());
        const DOF_index& vids = *v.get_IDs();
        for (std::size_t k = 0; k < v.size() && k < vids.size(); ++k) {
            const std::pair<std::uint32_t, bool> r = ids.insert(vids[k]);
            if (r.first == DOF_index::npos) return false;
            if (r.second && !e.values().push_back(0.0)) return false;
            e[r.first] += factor * v[k];
        }
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

}  // namespace core
}  // namespace orv
