// Penalty factors measured on the diagonal of the free stiffness matrix.
#pragma once

#include <orv/fem/field_tag.h>
#include <cstddef>
#include <cstdint>

#include "linalg/indexed_sym.h"
#include "linalg/symmetric_hybrid_OOC.h"
#include "model/assembly_params.h"
#include "model/element_matrix_types.h"
#include "orvmath1/symmetric_sparse.h"

namespace orv {
namespace core {

class context_type;

// The three factors of a context: penalty = raw * rms(diagonal), clamped into
// [min, max].
struct penalty_factors {
    double raw = 10000.0;
    double min = 1.0;
    double max = 1.7976931348623157e308;
};

// The factors of a context; the defaults without one.
penalty_factors context_penalty_factors(const context_type* ctx);

// Accumulates diagonal terms in three classes by ID % 9 (below 3 displacement, below 6
// rotation, otherwise temperature) and turns them into the penalties of a run.
class penalty_statistics {
public:
    void add(std::uint32_t ID, double d) {
        const unsigned c = ID % fem::DOFs_per_node < 3 ? 0 : (ID % fem::DOFs_per_node < 6 ? 1 : 2);
        sum_[c] += d * d;
        ++count_[c];
    }
    std::uint64_t count(unsigned cls) const { return count_[cls]; }
    // penalty = sqrt(sum / count) * raw for a class with DOFs, 0 otherwise; then
    // clamped: a value that is not at least min (0 and NaN among them) becomes min,
    // one above max becomes max. Stored in the penalties of `params`.
    void apply(const penalty_factors& factors, assembly_params& params) const;
    // The penalty of one class (0 displacement, 1 rotation, 2 temperature).
    double penalty(unsigned cls, const penalty_factors& factors) const;

private:
    double sum_[3] = {0.0, 0.0, 0.0};
    std::uint64_t count_[3] = {0, 0, 0};
};

// Diagonal term of an ID in a sparse target: false when the ID has no row.
inline bool diagonal_term(const indexed_sym<DOF_index, symmetric_sparse<double>>& K, std::uint32_t ID, double& d) {
    const std::uint32_t p = K.position(ID);
    if (p == DOF_index::npos || p >= K.matrix().dim()) return false;
    const double* v = K.matrix().find(p, p);
    d = v ? *v : 0.0;
    return true;
}

// True when every stored value is 0.0: a system of constraints alone, with no diagonal
// to measure.
inline bool is_zero_throughout(const indexed_sym<DOF_index, symmetric_sparse<double>>& K) {
    const symmetric_sparse<double>& m = K.matrix();
    for (std::size_t k = 0; k < m.size(); ++k)
        if (m[k] != 0.0) return false;
    return true;
}

// The same on a block-skyline target.
inline bool diagonal_term(const indexed_sym<DOF_index, symmetric_hybrid_OOC<double>>& K, std::uint32_t ID, double& d) {
    const std::uint32_t p = K.position(ID);
    if (p == DOF_index::npos || p >= K.matrix().dimension()) return false;
    d = K.matrix().get_val(p, p);
    return true;
}

// The same on a block-skyline target; blocks are brought in one after the other. A
// block that cannot be reached counts as not zero.
inline bool is_zero_throughout(indexed_sym<DOF_index, symmetric_hybrid_OOC<double>>& K) {
    bool zero = true;
    const int rc = K.matrix().for_each_block(true, [&](std::uint64_t, const auto& block) {
        for (std::size_t k = 0; k < block.values.size(); ++k)
            if (block.values[k] != 0.0) {
                zero = false;
                return 1;
            }
        return 0;
    });
    return zero && (rc == 0);
}

// The penalty statistics of a run: over the candidate DOFs (those of the penalty
// elements) that have a row in Kf, sets the penalties of `params`. A DOF listed twice
// counts twice.
template <class Kf>
void compute_penalties(const Kf& K, const std::uint32_t* candidates, std::size_t n, const penalty_factors& factors,
                       assembly_params& params) {
    penalty_statistics stats;
    for (std::size_t k = 0; k < n; ++k) {
        double d = 0.0;
        if (diagonal_term(K, candidates[k], d)) stats.add(candidates[k], d);
    }
    stats.apply(factors, params);
}

}  // namespace core
}  // namespace orv
