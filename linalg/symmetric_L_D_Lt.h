// LDLt factorisation of the block-skyline matrix, in place, and its solves.
#pragma once

#include <orv/fem/error_type.h>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "linalg/indexed_sym.h"
#include "linalg/pivot_checkers.h"
#include "linalg/symmetric_hybrid_OOC.h"

namespace orv {
namespace core {

template <class M>
class symmetric_L_D_Lt;

// Type-erased pivot checker handed to the block kernels: check(pivot, position) with
// the checker's semantics (false stops the factorisation).
struct pivot_callback {
    void* checker = nullptr;
    bool (*call)(void*, double&, std::size_t) = nullptr;
    bool operator()(double& d, std::size_t pos) const { return call(checker, d, pos); }
};

// The factors of a symmetric_hybrid_OOC<double>, A = U^T D U with U unit upper
// triangular (U^T = L). It shares the matrix's proxy: factorize overwrites the
// assembled values; a block's segments then hold U (row j of L in the segment of
// column j) and its diagonal holds 1 / D.
//
// Threads: factorize and the solves open their own OpenMP regions with the counts
// given; the system BLAS is kept to one thread of its own while they run. Runs at
// one thread count give the same bits every time; the single-vector sweeps give the
// same bits at any thread count, but the factors depend on it at round-off level.
template <>
class symmetric_L_D_Lt<symmetric_hybrid_OOC<double>> : public symmetric_hybrid_OOC<double> {
public:
    typedef symmetric_hybrid_OOC<double> matrix_type;

    symmetric_L_D_Lt() = default;
    // Shares the matrix's storage; factorize then works on its values.
    explicit symmetric_L_D_Lt(const matrix_type& A) : matrix_type(A) {}
    symmetric_L_D_Lt& operator=(const matrix_type& A) {
        matrix_type::operator=(A);
        factored_ = false;
        return *this;
    }

    // Factorises in place. `cache_bytes` is the last-level cache size and n_threads the
    // thread count (a solver without a context passes 0x100000 and 1). Returns 0,
    // -107 when the checker stopped the factorisation, -199 when work memory is
    // exhausted, -200 when a block could not be made resident. The checker's range
    // holds the lowest and highest pivot seen, with their positions.
    template <class Checker>
    int factorize(Checker& checker, std::size_t cache_bytes = 0x100000, int n_threads = 1) {
        pivot_callback cb;
        cb.checker = &checker;
        cb.call = [](void* c, double& d, std::size_t pos) { return static_cast<Checker*>(c)->check(d, pos); };
        return factorize_impl(cb, cache_bytes, n_threads);
    }
    bool factored() const noexcept { return factored_; }
    // Marks the values as an assembled matrix again (after a refill of the proxy).
    void set_unfactored() noexcept { factored_ = false; }
    // Marks the values as factors: they were read back from a file of factors.
    void mark_factored() noexcept { factored_ = true; }

    // The solves need the factors: calling them on an unfactored matrix is a fault of
    // the caller, asserted in debug builds (runs test factored() where a host supplies
    // the matrix).

    // Forward sweep with the diagonal: y := D^-1 U^-T y, in place. Returns
    // sum(z_i^2 / D_i) with z = U^-T y, which is y^T A^-1 y.
    double solve_forward(double* y, int n_threads = 1) const;
    // Forward sweep without the diagonal: y := U^-T y.
    void solve_forward_only(double* y, int n_threads = 1) const;
    // y := D^-1 y.
    void solve_diagonal(double* y) const;
    // Backward sweep: y := U^-1 y.
    void solve_backward(double* y, int n_threads = 1) const;
    // The three in a row: y := A^-1 y. Returns y^T A^-1 y of the given y.
    double solve(double* y, int n_threads = 1) const;

    // The same for the n_columns columns of Y (leading dimension ldy). energies, when
    // not null, receives each column's y^T A^-1 y.
    void solve_forward(double* Y, std::size_t ldy, std::size_t n_columns, int n_threads = 1,
                       double* energies = nullptr) const;
    void solve_diagonal(double* Y, std::size_t ldy, std::size_t n_columns, int n_threads = 1) const;
    void solve_backward(double* Y, std::size_t ldy, std::size_t n_columns, int n_threads = 1) const;
    void solve(double* Y, std::size_t ldy, std::size_t n_columns, int n_threads = 1, double* energies = nullptr) const;
    void solve(orv::dense2D<double>& Y, int n_threads = 1, double* energies = nullptr) const {
        if (Y.rows() >= dimension() && Y.cols()) solve(Y.col(0), Y.ld(), Y.cols(), n_threads, energies);
    }

    // Bytes of the work arrays that factorize holds (and frees when it returns) for a
    // matrix of these block profiles on n_threads threads: the per-thread dense copies
    // of the largest unit of consecutive blocks factored together.
    static std::uint64_t factor_work_bytes(const block_profile* profiles, std::size_t n_blocks, std::uint64_t profile,
                                           int n_threads);

    // Floating-point operations of the last factorisation (multiply and add counted
    // apart), as carried out by the kernels.
    double last_flops() const noexcept { return flops_; }

private:
    int factorize_impl(const pivot_callback& check, std::size_t cache_bytes, int n_threads);
    // Forward sweep of one block. With extra_out, the dots of the extra segments go
    // there (one a segment) instead of being subtracted from y.
    void forward_block(const block_type& blk, double* y, double* energy, bool diagonal, int n_threads = 1,
                       double* extra_out = nullptr) const;
    // Single-vector forward sweep, serial or by levels of the block tree.
    double forward_sweep(double* y, bool diagonal, int n_threads) const;
    void backward_block(const block_type& blk, double* y) const;
    // backward_block on n_threads threads for a big block: the updates of each row are
    // cut into row ranges that the threads share, in the order of the one-thread
    // sweep for every row (the same bits).
    void backward_block_parallel(const block_type& blk, double* y, int n_threads) const;
    // The same sweeps of one block for the columns [j0, j1) of Y (leading dimension
    // ldy), segment by segment: a segment serves every column while it is in cache,
    // and each column gets the operations of the one-column sweep in their order (the
    // same bits).
    void forward_block_columns(const block_type& blk, double* Y, std::size_t ldy, std::size_t j0, std::size_t j1,
                               double* energies) const;
    void backward_block_columns(const block_type& blk, double* Y, std::size_t ldy, std::size_t j0,
                                std::size_t j1) const;

    bool factored_ = false;
    double flops_ = 0;
};

typedef symmetric_L_D_Lt<symmetric_hybrid_OOC<double>> skyline_factor;

// Where an error is reported from: the caller's source path and line, for the text
// "File = %s, Line #%d." of its run.
struct error_site {
    const char* file = nullptr;
    int line = 0;
};

// Outcome of a factorisation for a run, by the pivot range. Codes are only set when
// none stands already: `error` 0 or -107 (or the factorisation's own code), `warning`
// 0 or -11.
struct pivot_outcome {
    int error = 0;
    int warning = 0;
    const char* error_text = nullptr;    // "Pivot error." with -107
    const char* warning_text = nullptr;  // "Pivot warning." with -11
    const char* file = nullptr;          // the caller's site of the error
    int line = 0;
    std::uint32_t bad_pivot_DOF = ~0u;  // DOF ID of the pivot at fault
    double pivot_min = 0;
    double pivot_max = 0;
};

// Factorises A and judges the pivots under `policy` (judge_pivot_range). `ids[p]` is
// the DOF ID at position p; `site` is the caller's location for the error text.
// Returns the resulting error (0 on success or warning).
template <class Checker>
int factorize_with_outcome(skyline_factor& A, Checker& checker, const pivot_policy& policy, const std::uint32_t* ids,
                           std::size_t cache_bytes, int n_threads, pivot_outcome& out, const error_site& site = {}) {
    const std::size_t n = A.dimension();
    const int rc = n ? A.factorize(checker, cache_bytes, n_threads) : 0;
    const pivot_verdict v = judge_pivot_range(checker, rc, n, policy);
    out.pivot_min = v.pivot_min;
    out.pivot_max = v.pivot_max;
    const std::uint32_t at = (ids && v.position < n) ? ids[v.position] : ~0u;
    if (v.error && !out.error) {
        out.error = v.error;
        if (v.error == fem::error_pivot) {
            out.error_text = "Pivot error.";
            out.file = site.file;
            out.line = site.line;
            out.bad_pivot_DOF = at;
        }
    } else if (v.warning && !out.error && !out.warning) {
        out.warning = v.warning;
        out.warning_text = "Pivot warning.";
        out.bad_pivot_DOF = at;
    }
    return out.error;
}

// The kind (definite or not) from the checker; a bad pivot is an error.
template <class Checker>
int factorize_with_outcome(skyline_factor& A, Checker& c, bool definite, const std::uint32_t* ids,
                           std::size_t cache_bytes, int n_threads, pivot_outcome& out, const error_site& site = {}) {
    pivot_policy policy;
    policy.definite = definite;
    return factorize_with_outcome(A, c, policy, ids, cache_bytes, n_threads, out, site);
}
template <class Checker>
int factorize_with_outcome(skyline_factor& A, Checker& c, const std::uint32_t* ids, std::size_t cache_bytes,
                           int n_threads, pivot_outcome& out, const error_site& site = {}) {
    return factorize_with_outcome(A, c, Checker::definite_kind, ids, cache_bytes, n_threads, out, site);
}

// The same on the factor of an indexed matrix: the DOF IDs come from its numbering,
// the kind from the checker.
template <class I, class Checker>
int factorize_with_outcome(indexed_sym<I, skyline_factor>& A, Checker& checker, std::size_t cache_bytes, int n_threads,
                           pivot_outcome& out, const error_site& site = {}) {
    const Ptr<I>& ids = A.get_IDs();
    const bool usable = ids && ids->size() >= A.dimension();
    return factorize_with_outcome(static_cast<skyline_factor&>(A), checker, Checker::definite_kind,
                                  usable ? ids->data() : nullptr, cache_bytes, n_threads, out, site);
}

}  // namespace core
}  // namespace orv
