// Von Mises and Tresca measures, invariants, element stresses and unit products.
#include <orv/fem/field_tag.h>
#include <orv/fem/stress_measures.h>

#include <cmath>

#include "frame/context_type.h"
#include "linalg/FEM_matrix_impl.h"
#include "model/numerical_model_base.h"
#include "model/numerical_models_mgr.h"
#include "orvlapack/orvlapack.h"

namespace orv {
namespace fem {

namespace {

constexpr std::size_t tensor_rows = 6;

// The sign rule shared by both measures: plus when the trace is at or above zero.
double with_sign(double value, const stress_tensor& s, bool is_signed) {
    return is_signed && s(0, 0) + s(1, 1) + s(2, 2) < 0.0 ? -value : value;
}

// Column j of a batch (strain order s11, s22, s33, s12, s13, s23) as a packed tensor.
stress_tensor column_tensor(const dense2D<double>& stresses, std::size_t j) {
    stress_tensor s;
    s(0, 0) = stresses(0, j);
    s(1, 1) = stresses(1, j);
    s(2, 2) = stresses(2, j);
    s(1, 0) = stresses(3, j);
    s(2, 0) = stresses(4, j);
    s(2, 1) = stresses(5, j);
    return s;
}

// Applies measure to every column; the shape check comes first so that a refused
// batch leaves `out` as it was.
template <class Measure>
error_type per_column(const dense2D<double>& stresses, dense1D<double>& out, Measure measure) {
    const std::size_t n = stresses.rows() * stresses.cols() == 0 ? 0 : stresses.cols();
    if (n == 0) {
        out.clear();
        return no_error;
    }
    if (stresses.rows() != tensor_rows) return error_data;
    if (!out.resize(n)) return error_memory;
    for (std::size_t j = 0; j < n; ++j) out[j] = measure(column_tensor(stresses, j));
    return no_error;
}

double diagonal_value(const dense1D<double>& v, std::size_t k) { return v[k]; }
double diagonal_value(const symmetric_full<double>& m, std::size_t k) { return m(k, k); }
std::size_t length(const dense1D<double>& v) { return v.size(); }
std::size_t length(const symmetric_full<double>& m) { return m.dim(); }

template <class Values>
double unit_product_of(const Values& values, const dense1D<unsigned int>& IDs, unsigned field, unsigned slot) {
    unsigned position;
    if (field == field_displacement && slot < 3)
        position = slot;
    else if (field == field_rotation && slot < 3)
        position = slot + 3;
    else if (field == field_temperature)
        position = 6;
    else
        return 0.0;
    const std::size_t n = std::min(length(values), IDs.size());
    double sum = 0.0;
    for (std::size_t k = 0; k < n; ++k)
        if (IDs[k] % fem::DOFs_per_node == position) sum += diagonal_value(values, k);
    return sum;
}

}  // namespace

double Von_Mises_stress(const stress_tensor& s, bool is_signed) {
    const double d12 = s(0, 0) - s(1, 1), d23 = s(1, 1) - s(2, 2), d13 = s(0, 0) - s(2, 2);
    const double shear = s(1, 0) * s(1, 0) + s(2, 0) * s(2, 0) + s(2, 1) * s(2, 1);
    const double q = std::sqrt((d12 * d12 + d23 * d23 + d13 * d13) / 2.0 + 3.0 * shear);
    return with_sign(q, s, is_signed);
}

error_type Von_Mises_stresses(const dense2D<double>& stresses, dense1D<double>& out, bool is_signed) {
    return per_column(stresses, out, [is_signed](const stress_tensor& s) { return Von_Mises_stress(s, is_signed); });
}

double Tresca_stress(const stress_tensor& s, bool is_signed) {
    // dspev overwrites its packed input (upper triangle by columns, which for a
    // symmetric matrix is the same sequence as our lower triangle by rows).
    double ap[6], w[3], work[9];
    for (int k = 0; k < 6; ++k) ap[k] = s.data()[k];
    long info = 0;
    lapack::dspev('N', 'U', 3, ap, w, nullptr, 1, work, info);
    if (info != 0) return std::nan("");
    return with_sign(w[2] - w[0], s, is_signed);
}

error_type Tresca_stresses(const dense2D<double>& stresses, dense1D<double>& out, bool is_signed) {
    return per_column(stresses, out, [is_signed](const stress_tensor& s) { return Tresca_stress(s, is_signed); });
}

void stress_invariants(const stress_tensor& s, vector_fixed<double, 3>& I, vector_fixed<double, 2>& J) {
    const double s11 = s(0, 0), s22 = s(1, 1), s33 = s(2, 2);
    const double s12 = s(1, 0), s13 = s(2, 0), s23 = s(2, 1);
    const double I1 = s11 + s22 + s33;
    const double I2 = s11 * (s22 + s33) + s22 * s33 - s12 * s12 - s13 * s13 - s23 * s23;
    const double I3 = 2.0 * s12 * s13 * s23 + s11 * s22 * s33 - s23 * s23 * s11 - s13 * s13 * s22 - s12 * s12 * s33;
    I[0] = I1;
    I[1] = I2;
    I[2] = I3;
    J[0] = I1 * I1 / 3.0 - I2;
    J[1] = I3 - I1 * I2 / 3.0 + 2.0 * I1 * I1 * I1 / 27.0;
}

error_type stress_invariants(const dense2D<double>& stresses, dense2D<double>& I, dense2D<double>& J) {
    const std::size_t n = stresses.rows() * stresses.cols() == 0 ? 0 : stresses.cols();
    if (n && stresses.rows() != tensor_rows) return error_data;
    if (!I.resize(3, n) || !J.resize(2, n)) return error_memory;
    for (std::size_t j = 0; j < n; ++j) {
        vector_fixed<double, 3> i3;
        vector_fixed<double, 2> j2;
        stress_invariants(column_tensor(stresses, j), i3, j2);
        for (int r = 0; r < 3; ++r) I(r, j) = i3[r];
        for (int r = 0; r < 2; ++r) J(r, j) = j2[r];
    }
    return no_error;
}

error_type Cauchy_stresses(const context& ctx, std::uint32_t model_ID, std::uint32_t element,
                           const dense2D<double>& pos, const FEM_matrix& U, unsigned basis, dense2D<double>& out) {
    out.clear();
    const core::context_type* c = ctx.engine();
    const core::numerical_models_mgr* models = c ? c->models() : nullptr;
    const core::numerical_model_base* model = models ? models->get_NM(model_ID) : nullptr;
    const core::FEM_matrix_engine* u = U.engine();
    if (!model || !u || u->cols() == 0) return error_data;
    const dense1D<double> column = U.col(0);
    if (column.size() != u->rows()) return error_data;  // first column not in memory
    return static_cast<error_type>(model->get_stresses(element, pos, column, u->get_IDs().get(), basis, out));
}

double unit_product(const dense1D<double>& values, const dense1D<unsigned int>& IDs, unsigned field, unsigned slot) {
    return unit_product_of(values, IDs, field, slot);
}

double unit_product(const symmetric_full<double>& values, const dense1D<unsigned int>& IDs, unsigned field,
                    unsigned slot) {
    return unit_product_of(values, IDs, field, slot);
}

}  // namespace fem
}  // namespace orv
