// The mass side of an eigenproblem, as the eigen solvers see it: a symmetric matrix
// in the order of the factor's elimination that can be multiplied by blocks of
// vectors and that shows its diagonal.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "linalg/symmetric_hybrid_OOC.h"
#include "orvmath1/symmetric_sparse.h"

namespace orv {
namespace core {

class eigen_mass_operator {
public:
    virtual ~eigen_mass_operator() = default;
    // Rows, those of the factor.
    virtual std::size_t dimension() const = 0;
    // The diagonal into d (dimension() values), 0.0 where nothing is stored.
    virtual void diagonal(double* d) const = 0;
    // Y += M X for n_columns columns (leading dimensions ldx, ldy).
    virtual void mult_add(const double* X, std::size_t ldx, double* Y, std::size_t ldy, std::size_t n_columns,
                          int n_threads) const = 0;
};

// A block-skyline matrix numbered like the factor.
class skyline_mass : public eigen_mass_operator {
public:
    explicit skyline_mass(const symmetric_hybrid_OOC<double>& M) : M_(M) {}
    std::size_t dimension() const override { return M_.dimension(); }
    void diagonal(double* d) const override;
    void mult_add(const double* X, std::size_t ldx, double* Y, std::size_t ldy, std::size_t n_columns,
                  int n_threads) const override;

private:
    const symmetric_hybrid_OOC<double>& M_;
};

// A compressed matrix in its own numbering (that of its DOF IDs): row i of the matrix
// is row positions[i] of the factor. Rows whose position is ~0 (DOFs without an
// equation in the factor) take no part.
class sparse_mass : public eigen_mass_operator {
public:
    static constexpr unsigned npos = ~0u;

    // Keeps a shared view of M. Returns 0, or -101 (error_data) when M's profile is
    // damaged or a position is neither npos nor below n_factor; the operator is then
    // empty (dimension 0).
    int init(const orv::symmetric_sparse<double>& M, const unsigned* positions, std::size_t n_factor);
    // Positions from two numberings: the factor's position of each of M's IDs
    // (anything with size() and operator[] for the IDs, and a lookup id -> position
    // or npos for the factor).
    template <class IDs, class Lookup>
    int init(const orv::symmetric_sparse<double>& M, const IDs& ids, const Lookup& factor_position,
             std::size_t n_factor) {
        if (ids.size() != M.dim()) return init(M, nullptr, 0);
        std::vector<unsigned> pos(ids.size());
        for (std::size_t i = 0; i < ids.size(); ++i) pos[i] = factor_position(ids[i]);
        return init(M, pos.data(), n_factor);
    }

    std::size_t dimension() const override { return n_; }
    void diagonal(double* d) const override;
    void mult_add(const double* X, std::size_t ldx, double* Y, std::size_t ldy, std::size_t n_columns,
                  int n_threads) const override;

private:
    void column_product(const double* x, double* y) const;

    orv::symmetric_sparse<double> M_;
    std::vector<unsigned> pos_;
    std::size_t n_ = 0;
};

}  // namespace core
}  // namespace orv
