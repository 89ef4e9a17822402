// Targets and helpers shared by the model tests.
#pragma once

#include <vector>

#include "model/element_matrix_types.h"
#include "orvmath1/symmetric_sparse.h"

namespace orv {
namespace test {

typedef core::indexed_sym<core::DOF_index, symmetric_sparse<double>> sparse_target;

inline Ptr<core::DOF_index> make_index(const std::vector<unsigned>& ids) {
    return Ptr<core::DOF_index>(new core::DOF_index(ids.data(), ids.data() + ids.size()));
}

// A sparse symmetric target on `ids` with every entry of the upper triangle in its
// pattern (or only the diagonal), all 0.
inline void init_target(sparse_target& K, const Ptr<core::DOF_index>& ids, bool diagonal_only = false) {
    const std::size_t n = ids->size();
    dense1D<unsigned int> ptr, col;
    ptr.push_back(0);
    for (std::size_t r = 0; r < n; ++r) {
        for (std::size_t c = r; c < (diagonal_only ? r + 1 : n); ++c) col.push_back(static_cast<unsigned>(c));
        ptr.push_back(static_cast<unsigned>(col.size()));
    }
    K.matrix().init(ptr, col, 0.0);
    K.set_IDs(ids);
}

// Entry (ID_i, ID_j) of a target; 0 when absent.
inline double entry(const sparse_target& K, unsigned id_i, unsigned id_j) {
    std::uint32_t i = 0, j = 0;
    if (!K.positions(id_i, id_j, i, j)) return 0.0;
    const double* p = K.matrix().find(i, j);
    return p ? *p : 0.0;
}

// An element matrix on sorted IDs, from the lower triangle given row by row.
inline void make_sym(core::element_sym_matrix& m, const std::vector<unsigned>& ids, const std::vector<double>& lower) {
    m.set_IDs(make_index(ids));
    m.matrix().resize(ids.size(), 0.0);
    std::size_t k = 0;
    for (std::size_t i = 0; i < ids.size(); ++i)
        for (std::size_t j = 0; j <= i; ++j) m.matrix()(i, j) = lower[k++];
}

}  // namespace test
}  // namespace orv
