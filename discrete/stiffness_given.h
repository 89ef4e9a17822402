// Stiffness given directly as a matrix on a list of DOFs: the shared engine of the
// diagonal, dense symmetric and sparse symmetric forms.
#pragma once

#include <orv/fem/error_type.h>
#include <cstddef>
#include <cstdint>
#include <new>

#include "discrete/numerical_model_stiff_simple.h"
#include "model/element_workspace.h"
#include "orvmath1/dense1D.h"
#include "orvmath1/symmetric_full.h"
#include "orvmath1/symmetric_sparse.h"

namespace orv {
namespace core {

// What the engine needs of each matrix form V: its dimension, its consistency, the
// product y = V x, a scaled copy, and the hand-over into the element workspace.
template <class V>
struct stiffness_form;

template <>
struct stiffness_form<dense1D<double>> {
    static std::size_t dim(const dense1D<double>& v) { return v.size(); }
    static bool valid(const dense1D<double>&) { return true; }
    static void product(const dense1D<double>& v, const double* x, double* y) {
        for (std::size_t i = 0; i < v.size(); ++i) y[i] = v[i] * x[i];
    }
    static bool scaled(const dense1D<double>& v, double s, dense1D<double>& out) {
        if (!out.copy(v)) return false;
        for (std::size_t i = 0; i < out.size(); ++i) out[i] *= s;
        return true;
    }
    static void hand_over(element_workspace& ws, const Ptr<DOF_index>& ids, const dense1D<double>& v) {
        ws.diag = DOF_vector(ids, v);
    }
};

template <>
struct stiffness_form<symmetric_full<double>> {
    static std::size_t dim(const symmetric_full<double>& m) { return m.dim(); }
    static bool valid(const symmetric_full<double>& m) {
        std::size_t n = 0;
        return symmetric_full<double>::packed_size(m.dim(), n) && m.size() == n;
    }
    static void product(const symmetric_full<double>& m, const double* x, double* y) {
        const std::size_t n = m.dim();
        for (std::size_t i = 0; i < n; ++i) {
            double s = 0.0;
            for (std::size_t j = 0; j < n; ++j) s += m(i, j) * x[j];
            y[i] = s;
        }
    }
    static bool scaled(const symmetric_full<double>& m, double s, symmetric_full<double>& out) {
        if (!out.copy(m)) return false;
        for (std::size_t i = 0; i < out.size(); ++i) out[i] *= s;
        return true;
    }
    static void hand_over(element_workspace& ws, const Ptr<DOF_index>& ids, const symmetric_full<double>& m) {
        ws.sym.matrix() = m;
        ws.sym.set_IDs(ids);
    }
};

template <>
struct stiffness_form<symmetric_sparse<double>> {
    static std::size_t dim(const symmetric_sparse<double>& m) { return m.dim(); }
    static bool valid(const symmetric_sparse<double>& m) { return m.is_valid(); }
    static void product(const symmetric_sparse<double>& m, const double* x, double* y) {
        const std::size_t n = m.dim();
        for (std::size_t i = 0; i < n; ++i) y[i] = 0.0;
        const auto& ptr = m.pointers();
        const auto& col = m.columns();
        for (std::size_t r = 0; r < n; ++r)
            for (std::size_t k = ptr[r]; k < ptr[r + 1]; ++k) {
                const std::size_t c = col[k];
                y[r] += m[k] * x[c];
                if (c != r) y[c] += m[k] * x[r];
            }
    }
    static bool scaled(const symmetric_sparse<double>& m, double s, symmetric_sparse<double>& out) {
        // The profile is shared, only the values are copied.
        if (!out.init(m.pointers(), m.columns(), 0.0)) return false;
        for (std::size_t i = 0; i < out.size(); ++i) out[i] = s * m[i];
        return true;
    }
    static void hand_over(element_workspace& ws, const Ptr<DOF_index>& ids, const symmetric_sparse<double>& m) {
        ws.sparse.matrix() = m;
        ws.sparse.set_IDs(ids);
    }
};

// One element with the stiffness `values` on the DOFs `ids` (entry i on ids[i]).
// absolute != 0: a plain stiffness, matrix code 1. absolute == 0: a constraint, scaled
// by the largest penalty of its DOFs; it answers to codes 1, 7 and 8, and stays silent
// while the penalties are 0 (the first pass of a run).
//
// The parameters are set by init before any assembly and only read afterwards, so
// that compute_matrix may run on several threads at once.
template <class V>
class stiffness_given : public numerical_model_stiff_simple {
public:
    typedef stiffness_form<V> form;

    explicit stiffness_given(context_type* ctx) : numerical_model_stiff_simple(ctx) {}

    bool has_matrix(unsigned matrix_code) const override {
        return matrix_code == fem::matrix_K ||
               (absolute_ == 0 && (matrix_code == fem::matrix_penalty || matrix_code == fem::matrix_penalty_2));
    }
    Ptr<DOF_index> element_DOFs() const override { return ids_; }

    // 0; -101 when the dimension differs from the IDs, the matrix is not consistent or
    // an ID is repeated (the model is then empty); -199 for memory.
    int init(const V& values, const dense1D<unsigned int>& ids, int absolute) {
        reset();
        if (form::dim(values) != ids.size() || !form::valid(values)) return fem::error_data;
        Ptr<DOF_index> set(new (std::nothrow) DOF_index());
        if (!set) return fem::error_memory;
        if (ids.size() && !set->init(ids.begin(), ids.end())) return fem::error_memory;
        if (set->size() < form::dim(values)) {
            reset();
            return fem::error_data;
        }
        values_ = values;
        ids_ = set;
        absolute_ = absolute;
        return 0;
    }
    void get_params(V& values, dense1D<unsigned int>& ids, int& absolute) const {
        values = values_;
        ids = ids_ ? ids_->list() : dense1D<unsigned int>();
        absolute = absolute_;
    }

    int compute_matrix(unsigned matrix_code, element_workspace& ws) override {
        ws.reset();
        const std::size_t n = form::dim(values_);
        if (n == 0 || !ids_ || !has_matrix(matrix_code)) return 0;
        if (const int rc = check_element(ws.element_ID)) return rc;
        double scale = 1.0;
        if (absolute_ == 0) {
            scale = largest_penalty(ws.params, *ids_);
            if (scale == 0.0) return 0;
        }
        ws.DOFs = ids_;
        bool all_zero = true;
        if (gather(ws.U, *ids_, ws.U_element, all_zero)) return fem::error_memory;
        if (!all_zero) {
            // Internal force -scale * K U and the elastic energy 0.5 * scale * U K U.
            dense1D<double> f;
            if (!f.resize(n)) return fem::error_memory;
            form::product(values_, ws.U_element.data(), f.data());
            double energy = 0.0;
            for (std::size_t i = 0; i < n; ++i) {
                f[i] *= -scale;
                energy += f[i] * ws.U_element[i];
            }
            ws.vector = DOF_vector(ids_, f);
            ws.results[0] = -0.5 * energy;
        }
        if (ws.matrix_level == 1 || ws.matrix_level == 2) {
            if (scale == 1.0) {
                form::hand_over(ws, ids_, values_);
            } else {
                V m;
                if (!form::scaled(values_, scale, m)) return fem::error_memory;
                form::hand_over(ws, ids_, m);
            }
        }
        return 0;
    }

protected:
    void reset() {
        values_ = V();
        ids_.reset();
        absolute_ = 1;
    }

    V values_;
    Ptr<DOF_index> ids_;
    int absolute_ = 1;
};

}  // namespace core
}  // namespace orv
