// Engine objects of the public matrices of results (real and complex) and of their
// states: a dense out-of-core matrix whose rows carry DOF IDs.
#pragma once

#include <orv/fem/error_type.h>
#include <orv/fem/field_tag.h>
#include <algorithm>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <new>
#include <vector>

#include "linalg/OOC_mgr.h"
#include "linalg/dense2D_OOC.h"
#include "linalg/indexed2D_row.h"
#include "linalg/vector_fast.h"
#include "orvmath1/dense1D.h"
#include "orvmath1/dense2D.h"
#include "orvmath1/ref_counted.h"

namespace orv {
namespace core {

class stress_super_mgr;

// M is indexed2D_row<vector_fast<unsigned>, dense2D_OOC<T>>. Rows are addressed by DOF
// ID; an ID that does not fit in 32 bits is simply absent. All operations return 0
// or a negative code (-101 out of range, -199 memory, -200 a column that cannot be
// made resident) and never throw.
template <class M>
class FEM_matrix_impl : public ref_counted, public M {
public:
    typedef M indexed_type;
    typedef typename M::matrix_type dense_type;
    typedef typename dense_type::value_type value_type;
    typedef vector_fast<unsigned> ID_list;
    static constexpr std::uint32_t npos = ~std::uint32_t(0);

    FEM_matrix_impl() = default;
    // Shares the IDs and the values of m.
    explicit FEM_matrix_impl(const M& m) : M(m) {}
    FEM_matrix_impl(const FEM_matrix_impl& o) : ref_counted(), M(o) {}
    FEM_matrix_impl& operator=(const FEM_matrix_impl& o) {
        M::operator=(o);
        return *this;
    }

    dense_type& dense() noexcept { return *this; }
    const dense_type& dense() const noexcept { return *this; }

    // rows = IDs->size() rows, cols columns of value. Returns 0 or -199 (then empty).
    int init(const Ptr<ID_list>& IDs, std::size_t cols, const value_type& value,
             const Ptr<OOC_mgr>& mgr = Ptr<OOC_mgr>()) noexcept {
        const std::size_t rows = IDs ? IDs->size() : 0;
        if (dense().init(rows, cols, value, mgr)) {
            M::clear();
            return fem::error_memory;
        }
        M::set_IDs(IDs);
        return 0;
    }
    // The same from a list of IDs (first occurrences kept).
    int init(const orv::dense1D<unsigned int, 8>& IDs, std::size_t cols, const value_type& value,
             const Ptr<OOC_mgr>& mgr = Ptr<OOC_mgr>()) noexcept {
        Ptr<ID_list> ids(new (std::nothrow) ID_list());
        if (!ids || (IDs.size() && !ids->init(IDs.begin(), IDs.end()))) {
            M::clear();
            return fem::error_memory;
        }
        return init(ids, cols, value, mgr);
    }

    std::size_t rows() const noexcept { return dense().rows(); }
    std::size_t cols() const noexcept { return dense().cols(); }
    // Row of an ID, npos when absent.
    std::uint32_t row_of(std::uint64_t ID) const noexcept {
        if (ID > 0xFFFFFFFFull) return npos;
        const std::uint32_t r = M::position(static_cast<unsigned>(ID));
        return r < rows() ? r : npos;
    }

    int get_val(std::uint64_t ID, std::uint64_t col, value_type& v) const noexcept {
        v = value_type();
        const std::uint32_t r = row_of(ID);
        if (r == npos || col >= cols()) return fem::error_data;
        return dense().get_val(r, std::size_t(col), v);
    }
    // strict: an unknown ID is an error; otherwise it is skipped.
    int set_val(std::uint64_t ID, std::uint64_t col, const value_type& v, bool strict) noexcept {
        if (col >= cols()) return fem::error_data;
        const std::uint32_t r = row_of(ID);
        if (r == npos) return strict ? fem::error_data : 0;
        return dense().set_val(r, std::size_t(col), v);
    }
    // Columns [first, first + n) of a row, capped to the end.
    int get_row(std::uint64_t ID, orv::dense1D<value_type, 8>& v, std::uint64_t first, std::uint64_t n) const noexcept {
        const std::uint32_t r = row_of(ID);
        if (r == npos || first > cols()) {
            v.clear();
            return fem::error_data;
        }
        if (n > cols() - first) n = cols() - first;
        if (!v.resize(std::size_t(n))) return fem::error_memory;
        for (std::size_t k = 0; k < n; ++k) {
            const int rc = dense().get_val(r, std::size_t(first) + k, v[k]);
            if (rc) return rc;
        }
        return 0;
    }
    // v into columns [col, col + v.size()), which must exist.
    int set_row(std::uint64_t ID, const orv::dense1D<value_type, 8>& v, std::uint64_t col, bool strict) noexcept {
        if (col > cols() || v.size() > cols() - col) return fem::error_data;
        const std::uint32_t r = row_of(ID);
        if (r == npos) return strict ? fem::error_data : 0;
        for (std::size_t k = 0; k < v.size(); ++k) {
            const int rc = dense().set_val(r, std::size_t(col) + k, v[k]);
            if (rc) return rc;
        }
        return 0;
    }

    // Offset of a field's first DOF in its node, -1 for a tag that names no field.
    static int field_offset(unsigned tag) noexcept {
        switch (tag) {
            case 16: return 0;
            case 32: return 3;
            case 64: return 6;
            default: return -1;
        }
    }
    // ID of component c of a node in the field at offset off, ~0 past 32 bits.
    static std::uint64_t nodal_ID(std::uint64_t node, int off, unsigned c) noexcept {
        if (node > (0xFFFFFFFFull - 8) / fem::DOFs_per_node) return ~std::uint64_t(0);
        return node * fem::DOFs_per_node + std::uint64_t(off) + c;
    }
    // Three components of a node; a missing ID reads 0.
    int get_vector(std::uint64_t node, unsigned tag, std::uint64_t col, value_type out[3]) const noexcept {
        out[0] = out[1] = out[2] = value_type();
        const int off = field_offset(tag);
        if (off < 0 || col >= cols()) return fem::error_data;
        for (unsigned c = 0; c < 3; ++c) {
            const std::uint32_t r = row_of(nodal_ID(node, off, c));
            if (r == npos) continue;
            const int rc = dense().get_val(r, std::size_t(col), out[c]);
            if (rc) return rc;
        }
        return 0;
    }
    int set_vector(std::uint64_t node, unsigned tag, std::uint64_t col, const value_type in[3]) noexcept {
        const int off = field_offset(tag);
        if (off < 0 || col >= cols()) return fem::error_data;
        for (unsigned c = 0; c < 3; ++c) {
            const std::uint32_t r = row_of(nodal_ID(node, off, c));
            if (r == npos) continue;
            const int rc = dense().set_val(r, std::size_t(col), in[c]);
            if (rc) return rc;
        }
        return 0;
    }
    // 3 x (cols - first) vectors of one node.
    int get_vectors(std::uint64_t node, unsigned tag, std::uint64_t first,
                    orv::dense2D<value_type>& out) const noexcept {
        const int off = field_offset(tag);
        if (off < 0 || first > cols()) {
            out.clear();
            return fem::error_data;
        }
        const std::size_t n = cols() - std::size_t(first);
        if (!out.resize(3, n)) return fem::error_memory;
        for (std::size_t k = 0; k < n; ++k) {
            const int rc = get_vector(node, tag, first + k, out.col(k));
            if (rc) return rc;
        }
        return 0;
    }

    // The rows of o matched to this matrix's rows by ID, as a dense matrix of
    // rows() x o.cols(); a row that o lacks is 0.
    int matched_columns(const FEM_matrix_impl& o, dense_type& out) const noexcept {
        if (out.init(rows(), o.cols(), value_type())) return fem::error_memory;
        const ID_list* mine = M::get_IDs().get();
        for (std::size_t r = 0; r < rows(); ++r) {
            const std::uint32_t s = o.row_of((*mine)[r]);
            if (s == npos) continue;
            for (std::size_t c = 0; c < o.cols(); ++c) {
                value_type v;
                int rc = o.dense().get_val(s, c, v);
                if (rc == 0) rc = out.set_val(r, c, v);
                if (rc) return rc;
            }
        }
        return 0;
    }
    // True when both matrices number their rows alike.
    bool same_rows(const FEM_matrix_impl& o) const noexcept {
        const ID_list* a = M::get_IDs().get();
        const ID_list* b = o.get_IDs().get();
        if (a == b) return true;
        if (!a || !b || a->size() != b->size()) return false;
        return std::equal(a->begin(), a->end(), b->begin());
    }

    // Appends o's columns, rows matched by ID. An empty matrix takes o's IDs.
    int push_back(const FEM_matrix_impl& o) noexcept {
        if (o.cols() == 0) return 0;
        if (!M::get_IDs() || (rows() == 0 && cols() == 0)) {
            // Nothing here yet: a copy of o.
            dense_type d;
            if (d.copy(o.dense())) return fem::error_memory;
            dense() = d;
            M::set_IDs(o.get_IDs());
            return 0;
        }
        if (same_rows(o)) return dense().push_back(o.dense());
        dense_type d;
        const int rc = matched_columns(o, d);
        if (rc) return rc;
        return dense().push_back(d);
    }
    void pop_back(std::size_t n) noexcept { dense().pop_back(n); }

    // Deep copy of the values, IDs shared.
    int copy_from(const FEM_matrix_impl& o) noexcept {
        if (this == &o) return 0;
        dense_type d;
        const int rc = d.copy(o.dense());
        if (rc) return rc;
        dense() = d;
        M::set_IDs(o.get_IDs());
        return 0;
    }

    // this += alpha * o on the common IDs; columns must agree.
    template <class S, class M2>
    int axpy(const S& alpha, const FEM_matrix_impl<M2>& o) noexcept {
        if (o.cols() != cols()) return fem::error_data;
        if (!M::get_IDs()) return 0;
        const ID_list& mine = *M::get_IDs();
        for (std::size_t r = 0; r < rows(); ++r) {
            const std::uint32_t s = o.row_of(mine[r]);
            if (s == npos) continue;
            for (std::size_t c = 0; c < cols(); ++c) {
                typename FEM_matrix_impl<M2>::value_type x;
                int rc = o.dense().get_val(s, c, x);
                if (rc == 0) rc = dense().add_val(r, c, value_type(alpha * x));
                if (rc) return rc;
            }
        }
        return 0;
    }

    // pos(c, node) += alpha * value(ID, col) for displacement DOFs.
    int add_displacements(orv::dense2D<double>& pos, std::uint64_t col, double alpha) const noexcept {
        if (col >= cols()) return fem::error_data;
        if (!M::get_IDs()) return 0;
        const ID_list& ids = *M::get_IDs();
        for (std::size_t r = 0; r < rows(); ++r) {
            const unsigned ID = ids[r];
            if (ID % fem::DOFs_per_node >= 3) continue;
            const std::size_t node = ID / fem::DOFs_per_node, c = ID % fem::DOFs_per_node;
            if (node >= pos.cols() || c >= pos.rows()) continue;
            value_type v;
            const int rc = dense().get_val(r, std::size_t(col), v);
            if (rc) return rc;
            pos(c, node) += alpha * real_part(v);
        }
        return 0;
    }

    static double real_part(const double& v) noexcept { return v; }
    static double real_part(const std::complex<double>& v) noexcept { return v.real(); }
};

// A matrix of results with, for each column, the stress data of its case and the
// solver's step value (time, load factor, frequency). The per-column lists may be
// shorter than the columns: a missing entry is no stress data and step 0.
template <class M>
class FEM_states : public FEM_matrix_impl<M> {
public:
    typedef FEM_matrix_impl<M> base_type;

    FEM_states() = default;
    explicit FEM_states(const M& m) : base_type(m) {}
    FEM_states(const FEM_states& o) : base_type(o), stresses(o.stresses), steps(o.steps) {}
    FEM_states& operator=(const FEM_states& o) {
        base_type::operator=(o);
        stresses = o.stresses;
        steps = o.steps;
        return *this;
    }

    std::vector<Ptr<stress_super_mgr>> stresses;
    std::vector<double> steps;

    Ptr<stress_super_mgr> stress_of(std::size_t c) const {
        return c < stresses.size() ? stresses[c] : Ptr<stress_super_mgr>();
    }
    double step_of(std::size_t c) const { return c < steps.size() ? steps[c] : 0.0; }
    // 0, -101 past the columns, -199.
    int set_stress(std::size_t c, const Ptr<stress_super_mgr>& s) noexcept {
        if (c >= this->cols()) return fem::error_data;
        try {
            if (stresses.size() <= c) stresses.resize(c + 1);
        } catch (...) {
            return fem::error_memory;
        }
        stresses[c] = s;
        return 0;
    }
    int set_step(std::size_t c, double v) noexcept {
        if (c >= this->cols()) return fem::error_data;
        try {
            if (steps.size() <= c) steps.resize(c + 1, 0.0);
        } catch (...) {
            return fem::error_memory;
        }
        steps[c] = v;
        return 0;
    }
    // Keeps the lists no longer than the columns.
    void trim() noexcept {
        if (stresses.size() > this->cols()) stresses.resize(this->cols());
        if (steps.size() > this->cols()) steps.resize(this->cols());
    }
    // Columns [first, first + n) of o, as a view with their stress data.
    int view_of(const FEM_states& o, std::size_t first, std::size_t n) noexcept {
        this->dense() = o.dense().sub_columns(first, n);
        this->set_IDs(o.get_IDs());
        first = this->dense().start_column() - o.dense().start_column();
        try {
            stresses.clear();
            steps.clear();
            for (std::size_t k = 0; k < this->cols(); ++k) {
                stresses.push_back(o.stress_of(first + k));
                steps.push_back(o.step_of(first + k));
            }
        } catch (...) {
            return fem::error_memory;
        }
        return 0;
    }
};

typedef indexed2D_row<vector_fast<unsigned>, dense2D_OOC<double>> indexed_dense_OOC;
typedef indexed2D_row<vector_fast<unsigned>, dense2D_OOC<std::complex<double>>> indexed_Zdense_OOC;
typedef FEM_matrix_impl<indexed_dense_OOC> FEM_matrix_engine;
typedef FEM_states<indexed_dense_OOC> FEM_states_engine;
typedef FEM_matrix_impl<indexed_Zdense_OOC> FEM_Zmatrix_engine;
typedef FEM_states<indexed_Zdense_OOC> FEM_Zstates_engine;

}  // namespace core
}  // namespace orv
