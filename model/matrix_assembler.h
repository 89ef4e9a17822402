// Matrix assemblers: what happens to an element's matrices on their way to a global target.
#pragma once

#include <orv/fem/error_type.h>
#include <orv/fem/field_tag.h>
#include <complex>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "linalg/dense2D_OOC.h"
#include "linalg/symmetric_hybrid_OOC.h"
#include "model/element_matrix_types.h"
#include "model/map_DOFs.h"

namespace orv {
namespace core {

// The kind of assembler decides where element matrices go: a sparse in-core matrix,
// a block-skyline matrix, a diagonal, a dense complex matrix, a scalar, or nowhere.
// Each call adds `factor * multiplier` times the element matrix on the intersection of
// the element's DOF list with the target's index (map_DOFs). An element matrix without
// a DOF list, or a zero product of factor and multiplier, adds nothing.
//
// Assemblers are not thread safe: the assembly loops call them one element at a time,
// in element order, from an ordered section. The scratch lists are why an assembler
// object belongs to one assembly at a time. The add operations return 0, or the code
// of a target that could not take the values.
class matrix_assembler_base {
public:
    virtual ~matrix_assembler_base();
    // True when nothing can be added: a zero multiplier or a target without storage.
    virtual bool is_null() const = 0;
    virtual int add_diag(double factor, const DOF_vector& element_diag) = 0;
    virtual int add_gen(double factor, const element_gen_matrix& element_matrix) = 0;
    // `symmetric` is the workspace's symmetry flag: false for a skew element matrix.
    virtual int add_sparse(double factor, const element_sparse_matrix& element_sparse, bool symmetric) = 0;
    virtual int add_sym(double factor, const element_sym_matrix& element_sym, bool symmetric) = 0;
};

// Takes nothing: for runs that want only vectors or energies.
class matrix_null_assembler : public matrix_assembler_base {
public:
    bool is_null() const override { return true; }
    int add_diag(double, const DOF_vector&) override { return 0; }
    int add_gen(double, const element_gen_matrix&) override { return 0; }
    int add_sparse(double, const element_sparse_matrix&, bool) override { return 0; }
    int add_sym(double, const element_sym_matrix&, bool) override { return 0; }
};

// --- Access to the storages of the targets -----------------------------------------
// storage_empty(S): no entry can be reached. storage_add(S, r, c, v): adds v at (r, c);
// a symmetric storage is given r >= c. An entry outside a sparse pattern is dropped.

inline bool storage_empty(const symmetric_sparse<double>& s) { return s.dim() == 0 || s.nbr_entries() == 0; }
inline int storage_add(symmetric_sparse<double>& s, std::size_t r, std::size_t c, double v) {
    if (double* p = s.find(r, c)) *p += v;
    return 0;
}
inline bool storage_empty(const symmetric_full<double>& s) { return s.dim() == 0; }
inline int storage_add(symmetric_full<double>& s, std::size_t r, std::size_t c, double v) {
    s(r, c) += v;
    return 0;
}
inline bool storage_empty(const symmetric_hybrid_OOC<double>& s) { return !s.is_valid() || s.dimension() == 0; }
inline int storage_add(symmetric_hybrid_OOC<double>& s, std::size_t r, std::size_t c, double v) {
    // Outside the profile (-102) the value is left out; past the dimension is an error.
    return s.add_val(r, c, v) == fem::error_data ? fem::error_data : 0;
}
template <class T>
inline bool storage_empty(const dense2D_OOC<T>& m) {
    return !m.is_valid() || m.rows() * m.cols() == 0;
}
// Columns that are not resident are brought in; a failed transfer gives its code.
template <class T, class V>
inline int storage_add(dense2D_OOC<T>& m, std::size_t r, std::size_t c, const V& v) {
    const int rc = m.add_val(r, c, T(v));
    return rc == fem::error_data ? 0 : rc;
}
// Whether a storage adds a whole element matrix itself (sorted by its own positions and
// poured row by row), given the matrix position of each element row.
template <class S>
struct has_element_add : std::false_type {};
template <>
struct has_element_add<symmetric_hybrid_OOC<double>> : std::true_type {};

template <class T>
inline bool storage_empty(const dense2D<T>& m) {
    return m.rows() * m.cols() == 0;
}
template <class T, class V>
inline int storage_add(dense2D<T>& m, std::size_t r, std::size_t c, const V& v) {
    if (r < m.rows() && c < m.cols()) m(r, c) += v;
    return 0;
}

namespace detail {

// For each entry (i, j), i >= j, of a packed element matrix on the pairs, calls
// add(I, J, value) with I, J the target positions. Entries that are exactly 0.0 are
// skipped.
template <class Add>
int for_each_sym_entry(const element_sym_matrix& e, const std::vector<DOF_pair>& pairs, Add add) {
    const symmetric_full<double>& m = e.matrix();
    const std::size_t n = pairs.size();
    for (std::size_t a = 0; a < n; ++a) {
        const std::uint32_t I = pairs[a].first, i = pairs[a].second;
        for (std::size_t b = 0; b <= a; ++b) {
            const std::uint32_t J = pairs[b].first, j = pairs[b].second;
            // The stored entry is (max(i, j), min(i, j)).
            const double v = i >= j ? m(i, j) : m(j, i);
            if (v == 0.0) continue;
            const int rc = i >= j ? add(I, J, i, j, v) : add(J, I, j, i, v);
            if (rc) return rc;
        }
    }
    return 0;
}

// The same over the stored entries of a compressed element matrix. `map` is scratch:
// element position to target position.
template <class Add>
int for_each_sparse_entry(const element_sparse_matrix& e, const std::vector<DOF_pair>& pairs,
                          std::vector<std::uint32_t>& map, Add add) {
    const symmetric_sparse<double>& m = e.matrix();
    const std::size_t n = m.dim();
    map.assign(n, DOF_index::npos);
    for (const DOF_pair& p : pairs)
        if (p.second < n) map[p.second] = p.first;
    const auto& ptr = m.pointers();
    const auto& col = m.columns();
    const std::size_t nv = m.size();
    for (std::size_t r = 0; r < n; ++r) {
        const std::uint32_t R = map[r];
        if (R == DOF_index::npos) continue;
        for (std::size_t k = ptr[r]; k < ptr[r + 1] && k < nv; ++k) {
            const std::size_t c = col[k];
            const std::uint32_t C = c < n ? map[c] : DOF_index::npos;
            const double v = m[k];
            if (C == DOF_index::npos || v == 0.0) continue;
            // Stored at (row r, column c >= r): the entry K(r, c); its mirror is K(c, r).
            const int rc = add(R, C, r, c, v);
            if (rc) return rc;
        }
    }
    return 0;
}

inline bool has_entries(const element_sym_matrix& e) { return e.get_IDs() && e.matrix().dim() > 0; }
inline bool has_entries(const element_sparse_matrix& e) {
    return e.get_IDs() && e.matrix().dim() > 0 && e.matrix().nbr_entries() > 0;
}
inline bool has_entries(const DOF_vector& e) { return e.get_IDs() && e.size() > 0; }
inline bool has_entries(const element_gen_matrix& e) { return e.get_IDs() && e.rows() * e.cols() > 0; }

}  // namespace detail

// The part shared by the assemblers into one indexed target: the target, the
// multiplier, and the DOF pairs of the element being added.
template <class Target>
class matrix_target_assembler : public matrix_assembler_base {
public:
    typedef typename Target::value_type value_type;

    matrix_target_assembler(Target& target, value_type multiplier) : target_(&target), multiplier_(multiplier) {}

    bool is_null() const override {
        return multiplier_ == value_type(0.0) || !target_->get_IDs() || storage_empty(target_->matrix());
    }
    value_type multiplier() const { return multiplier_; }

    // f d on the diagonal of the target.
    int add_diag(double factor, const DOF_vector& d) override {
        value_type f;
        if (!begin_add(factor, d, f)) return 0;
        for (const DOF_pair& p : pairs_) {
            if (p.second >= d.size() || d[p.second] == 0.0) continue;
            const int rc = storage_add(target_->matrix(), p.first, p.first, f * d[p.second]);
            if (rc) return rc;
        }
        return 0;
    }

protected:
    // f = factor * multiplier and pairs_ mapped for the element e (a DOF vector or an
    // element matrix); false when there is nothing to add.
    template <class E>
    bool begin_add(double factor, const E& e, value_type& f) {
        f = factor * multiplier_;
        if (f == value_type(0.0) || !detail::has_entries(e) || is_null()) return false;
        map_DOFs(target_->get_IDs().get(), e.get_IDs().get(), pairs_);
        return true;
    }

    Target* target_;
    value_type multiplier_;
    std::vector<DOF_pair> pairs_;
};

// Symmetric target that keeps one triangle, `Target` being an indexed_sym (sparse in
// core, block skyline) or an indexed2D_row of a dense matrix (row-indexed, both
// triangles available but the lower one written). Skew = false: adds only element
// matrices whose symmetry flag is set (matrix_sym_assembler). Skew = true: adds only
// those whose flag is clear, with the sign of the mirrored entry
// (matrix_skew_assembler).
template <class Target, bool Skew>
class matrix_triangle_assembler : public matrix_target_assembler<Target> {
    typedef matrix_target_assembler<Target> base;
    using base::begin_add;
    using base::pairs_;
    using base::target_;

public:
    typedef typename base::value_type value_type;
    using base::base;

    int add_diag(double factor, const DOF_vector& d) override { return Skew ? 0 : base::add_diag(factor, d); }
    int add_gen(double, const element_gen_matrix&) override { return 0; }
    int add_sparse(double factor, const element_sparse_matrix& e, bool symmetric) override {
        return add_triangle(factor, e, symmetric,
                            [&](auto entry) { return detail::for_each_sparse_entry(e, pairs_, map_, entry); });
    }
    int add_sym(double factor, const element_sym_matrix& e, bool symmetric) override {
        return add_triangle(factor, e, symmetric,
                            [&](auto entry) { return detail::for_each_sym_entry(e, pairs_, entry); });
    }

private:
    typedef typename std::decay<decltype(std::declval<Target&>().matrix())>::type storage_type;

    auto& storage() const { return target_->matrix(); }

    // One symmetric or skew element matrix: through the storage's own element add
    // where it has one, else entry by entry (for_each visits the entries).
    template <class Element, class ForEach>
    int add_triangle(double factor, const Element& e, bool symmetric, ForEach for_each) {
        value_type f;
        if (symmetric == Skew || !begin_add(factor, e, f)) return 0;
        if constexpr (has_element_add<storage_type>::value) {
            element_positions(e.matrix().dim());
            return storage().add(f, e.matrix(), map_.data(), Skew) == fem::error_memory ? fem::error_memory : 0;
        } else {
            return for_each([&](std::uint32_t I, std::uint32_t J, std::size_t, std::size_t, double v) {
                return add_entry(I, J, f, v);
            });
        }
    }

    // map_[k]: the target position of element row k, ~0 when the target lacks it.
    void element_positions(std::size_t n) {
        map_.assign(n, DOF_index::npos);
        for (const DOF_pair& p : pairs_)
            if (p.second < n) map_[p.second] = p.first;
    }

    // v is the value of K(I, J). The target keeps one value per pair of positions, for
    // a skew matrix the value of K(min, max) (as the block skyline does); the mirrored
    // value changes sign.
    int add_entry(std::uint32_t I, std::uint32_t J, const value_type& f, double v) {
        if (I == J) return Skew ? 0 : storage_add(storage(), I, I, f * v);
        if (I < J) return storage_add(storage(), J, I, f * v);
        return storage_add(storage(), I, J, Skew ? -(f * v) : f * v);
    }

    std::vector<std::uint32_t> map_;
};

// Symmetric targets: adds element matrices whose symmetry flag is set.
template <class Target>
class matrix_sym_assembler : public matrix_triangle_assembler<Target, false> {
public:
    using matrix_triangle_assembler<Target, false>::matrix_triangle_assembler;
};

// The skew part of a target: adds only element matrices whose symmetry flag is clear,
// so that one run can pass both assemblers without mixing.
template <class Target>
class matrix_skew_assembler : public matrix_triangle_assembler<Target, true> {
public:
    using matrix_triangle_assembler<Target, true>::matrix_triangle_assembler;
};

// A vector that holds a diagonal (lumped masses, diagonal stiffnesses): takes only
// element diagonals.
class matrix_diag_assembler : public matrix_assembler_base {
public:
    matrix_diag_assembler(DOF_vector& target, double multiplier) : target_(&target), multiplier_(multiplier) {}

    bool is_null() const override { return multiplier_ == 0.0 || !target_->get_IDs() || target_->size() == 0; }
    int add_diag(double factor, const DOF_vector& d) override;
    int add_gen(double, const element_gen_matrix&) override { return 0; }
    int add_sparse(double, const element_sparse_matrix&, bool) override { return 0; }
    int add_sym(double, const element_sym_matrix&, bool) override { return 0; }

private:
    DOF_vector* target_;
    double multiplier_;
    std::vector<DOF_pair> pairs_;
};

// A general square matrix whose rows and columns are both numbered by the target's
// index (the complex impedance matrix). Symmetric element matrices go in whole (both
// triangles), skew ones with the mirrored sign, general ones as they are.
template <class Target>
class matrix_gen_assembler : public matrix_target_assembler<Target> {
    typedef matrix_target_assembler<Target> base;
    using base::begin_add;
    using base::pairs_;
    using base::target_;

public:
    typedef typename base::value_type value_type;
    using base::base;

    int add_gen(double factor, const element_gen_matrix& e) override {
        value_type f;
        if (!begin_add(factor, e, f)) return 0;
        for (const DOF_pair& a : pairs_) {
            if (a.second >= e.rows()) continue;
            for (const DOF_pair& b : pairs_) {
                if (b.second >= e.cols()) continue;
                const double v = e(a.second, b.second);
                if (v == 0.0) continue;
                const int rc = storage_add(target_->matrix(), a.first, b.first, f * v);
                if (rc) return rc;
            }
        }
        return 0;
    }
    int add_sparse(double factor, const element_sparse_matrix& e, bool symmetric) override {
        value_type f;
        if (!begin_add(factor, e, f)) return 0;
        return detail::for_each_sparse_entry(e, pairs_, map_,
                                             [&](std::uint32_t I, std::uint32_t J, std::size_t, std::size_t, double v) {
                                                 return add_both(I, J, f, v, symmetric);
                                             });
    }
    int add_sym(double factor, const element_sym_matrix& e, bool symmetric) override {
        value_type f;
        if (!begin_add(factor, e, f)) return 0;
        return detail::for_each_sym_entry(e, pairs_,
                                          [&](std::uint32_t I, std::uint32_t J, std::size_t, std::size_t, double v) {
                                              return add_both(I, J, f, v, symmetric);
                                          });
    }

private:
    // v is the element entry at (I, J); its mirror goes to (J, I).
    int add_both(std::uint32_t I, std::uint32_t J, const value_type& f, double v, bool symmetric) {
        if (I == J) return symmetric ? storage_add(target_->matrix(), I, I, f * v) : 0;
        const int rc = storage_add(target_->matrix(), I, J, f * v);
        if (rc) return rc;
        return storage_add(target_->matrix(), J, I, symmetric ? f * v : -(f * v));
    }

    std::vector<std::uint32_t> map_;
};

// Rows of a dense matrix numbered by the target's index: element general matrices add
// their rows, column by column, up to the smaller column count.
template <class Target>
class matrix_indexed2d_assembler : public matrix_target_assembler<Target> {
    typedef matrix_target_assembler<Target> base;
    using base::begin_add;
    using base::pairs_;
    using base::target_;

public:
    typedef typename base::value_type value_type;
    using base::base;

    int add_diag(double, const DOF_vector&) override { return 0; }
    int add_gen(double factor, const element_gen_matrix& e) override {
        value_type f;
        if (!begin_add(factor, e, f)) return 0;
        const std::size_t nc = e.cols() < target_->cols() ? e.cols() : target_->cols();
        for (std::size_t c = 0; c < nc; ++c) {
            for (const DOF_pair& p : pairs_) {
                if (p.second >= e.rows()) continue;
                const double v = e(p.second, c);
                if (v == 0.0) continue;
                const int rc = storage_add(target_->matrix(), p.first, c, f * v);
                if (rc) return rc;
            }
        }
        return 0;
    }
    int add_sparse(double, const element_sparse_matrix&, bool) override { return 0; }
    int add_sym(double, const element_sym_matrix&, bool) override { return 0; }
};

// Which DOFs a projection keeps: DOFs whose position in their node (ID % 9) has its
// bit set in `mask` take the component `value`, the others 0.
struct DOF_selector {
    std::uint64_t mask = 0;
    double value = 1.0;

    double operator()(std::uint32_t ID) const { return (mask >> (ID % fem::DOFs_per_node)) & 1u ? value : 0.0; }
};

// Stores no matrix: adds factor times the quadratic form x' K x of each element matrix,
// x being the selector's vector, to one double (the mass of a model in given
// directions). Never null.
class matrix_sym_assembler_projection : public matrix_assembler_base {
public:
    matrix_sym_assembler_projection(const DOF_selector& selector, double* target)
        : selector_(selector), target_(target) {}

    bool is_null() const override { return false; }
    int add_diag(double factor, const DOF_vector& d) override;
    int add_gen(double, const element_gen_matrix&) override { return 0; }
    int add_sparse(double factor, const element_sparse_matrix& e, bool symmetric) override;
    int add_sym(double factor, const element_sym_matrix& e, bool symmetric) override;

private:
    DOF_selector selector_;
    double* target_;
};

}  // namespace core
}  // namespace orv
