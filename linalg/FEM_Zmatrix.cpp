// Public handles of the complex matrices of results and of their states.
#include <orv/fem/FEM_Zmatrix.h>

#include <complex>
#include <new>

#include "linalg/FEM_handle_ops.h"
#include "linalg/FEM_matrix_impl.h"
#include "problem/stress_mgr.h"

namespace orv {
namespace fem {

namespace {

typedef core::FEM_Zmatrix_engine engine_type;
typedef core::FEM_Zstates_engine zstates_type;
typedef detail::matrix_handle_ops<FEM_Zmatrix, core::FEM_Zmatrix_engine> mops;
typedef detail::states_handle_ops<FEM_Zstates, FEM_Zmatrix, core::FEM_Zstates_engine> ops;

// A new engine object of type E, or null when memory fails.
template <class E>
E* fresh() noexcept {
    return new (std::nothrow) E();
}

}  // namespace

// --- FEM_Zmatrix --------------------------------------------------------------------

ORV_FEM_HANDLE_IMPL(FEM_Zmatrix, base_class, core::FEM_Zmatrix_engine)

FEM_Zmatrix::FEM_Zmatrix() { set_w(static_cast<ref_counted*>(fresh<engine_type>())); }

FEM_Zmatrix::FEM_Zmatrix(const dense1D<unsigned int>& IDs, index_type columns, value_type value) {
    set_w(static_cast<ref_counted*>(mops::filled(IDs, columns, value)));
}

FEM_Zmatrix::FEM_Zmatrix(const FEM_Zmatrix& other, index_type first_col, index_type n_cols) {
    set_w(static_cast<ref_counted*>(mops::sub_columns(other, first_col, n_cols)));
}

FEM_Zmatrix::FEM_Zmatrix(const FEM_Zmatrix& other, const dense2D<value_type>& values) {
    set_w(static_cast<ref_counted*>(mops::with_values(other, values)));
}

FEM_Zmatrix::FEM_Zmatrix(core::FEM_Zmatrix_engine* e) { set_w(static_cast<ref_counted*>(e)); }

FEM_Zmatrix::index_type FEM_Zmatrix::rows() const { return engine() ? engine()->rows() : 0; }
FEM_Zmatrix::index_type FEM_Zmatrix::cols() const { return engine() ? engine()->cols() : 0; }

FEM_Zmatrix::index_type FEM_Zmatrix::row_pos(index_type ID) const { return mops::row_pos(*this, ID); }

dense1D<unsigned int> FEM_Zmatrix::get_IDs() const { return mops::get_IDs(*this); }

error_type FEM_Zmatrix::get_val(index_type ID, index_type col, value_type& value) const {
    return mops::get_val(*this, ID, col, value);
}

error_type FEM_Zmatrix::set_val(index_type ID, index_type col, value_type value) {
    return mops::set_val(*this, ID, col, value, false);
}

error_type FEM_Zmatrix::setID_val(index_type ID, index_type col, value_type value) {
    return mops::set_val(*this, ID, col, value, true);
}

error_type FEM_Zmatrix::get_row(index_type ID, dense1D<value_type>& v, index_type first, index_type n) const {
    return mops::get_row(*this, ID, v, first, n);
}

error_type FEM_Zmatrix::get_row(index_type ID, dense1D<value_type>& v, index_type col) const {
    return get_row(ID, v, col, ~index_type(0));
}

error_type FEM_Zmatrix::get_row(index_type ID, dense1D<value_type>& v) const {
    return get_row(ID, v, 0, ~index_type(0));
}

error_type FEM_Zmatrix::set_row(index_type ID, const dense1D<value_type>& v, index_type col) {
    return mops::set_row(*this, ID, v, col, false);
}

error_type FEM_Zmatrix::setID_row(index_type ID, const dense1D<value_type>& v, index_type col) {
    return mops::set_row(*this, ID, v, col, true);
}

dense1D<FEM_Zmatrix::value_type> FEM_Zmatrix::col(index_type c) const { return mops::col(*this, c); }

error_type FEM_Zmatrix::get_col(index_type c, dense1D<value_type>& v) const { return mops::get_col(*this, c, v); }

error_type FEM_Zmatrix::set_col(index_type c, const dense1D<value_type>& v) { return mops::set_col(*this, c, v); }

error_type FEM_Zmatrix::get_vector(index_type node, field_tag tag, index_type col, dense1D<value_type>& v) const {
    value_type out[3];
    const int rc = engine() ? engine()->get_vector(node, tag, col, out) : error_data;
    if (!v.resize(3)) return error_memory;
    for (std::size_t c = 0; c < 3; ++c) v[c] = out[c];
    return static_cast<error_type>(rc);
}

error_type FEM_Zmatrix::get_vectors(index_type node, field_tag tag, index_type first_col,
                                    dense2D<value_type>& out) const {
    if (!engine()) return error_data;
    return static_cast<error_type>(engine()->get_vectors(node, tag, first_col, out));
}

error_type FEM_Zmatrix::set_vector(index_type node, field_tag tag, index_type col, const dense1D<value_type>& v) {
    if (!engine() || v.size() != 3) return error_data;
    const value_type in[3] = {v[0], v[1], v[2]};
    return static_cast<error_type>(engine()->set_vector(node, tag, col, in));
}

error_type FEM_Zmatrix::push_back(const FEM_Zmatrix& other) { return mops::push_back(*this, other); }

error_type FEM_Zmatrix::pop_back(index_type n) { return mops::pop_back(*this, n); }

error_type FEM_Zmatrix::copy(const FEM_Zmatrix& other) { return mops::copy(*this, other); }

error_type FEM_Zmatrix::copy(value_type value) { return mops::fill(*this, value); }

void FEM_Zmatrix::clear() {
    if (engine()) engine()->clear();
}

void FEM_Zmatrix::shallow_copy(const FEM_Zmatrix& other) { mops::shallow_copy(*this, other); }

error_type FEM_Zmatrix::axpy(double alpha, const FEM_Zmatrix& other) {
    if (!engine() || !other.engine()) return error_data;
    return static_cast<error_type>(engine()->axpy(alpha, *other.engine()));
}

error_type FEM_Zmatrix::axpy(double alpha, const FEM_matrix& other) {
    if (!engine() || !other.engine()) return error_data;
    return static_cast<error_type>(engine()->axpy(alpha, *other.engine()));
}

error_type FEM_Zmatrix::axpy(value_type alpha, const FEM_Zmatrix& other) {
    if (!engine() || !other.engine()) return error_data;
    return static_cast<error_type>(engine()->axpy(alpha, *other.engine()));
}

error_type FEM_Zmatrix::axpy(value_type alpha, const FEM_matrix& other) {
    if (!engine() || !other.engine()) return error_data;
    return static_cast<error_type>(engine()->axpy(alpha, *other.engine()));
}

namespace {
// A real matrix with the IDs of z and one part of its values.
FEM_matrix part_of(const core::FEM_Zmatrix_engine* z, bool imaginary) {
    core::FEM_matrix_engine* e = new (std::nothrow) core::FEM_matrix_engine();
    if (!e) return FEM_matrix(static_cast<core::FEM_matrix_engine*>(nullptr));
    FEM_matrix out(e);
    if (!z) return out;
    if (e->init(z->get_IDs(), z->cols(), 0.0)) return out;
    for (std::size_t c = 0; c < z->cols(); ++c)
        for (std::size_t r = 0; r < z->rows(); ++r) {
            std::complex<double> v;
            if (z->dense().get_val(r, c, v) || e->dense().set_val(r, c, imaginary ? v.imag() : v.real())) {
                e->clear();
                return out;
            }
        }
    return out;
}
}  // namespace

FEM_matrix FEM_Zmatrix::real() const { return part_of(engine(), false); }
FEM_matrix FEM_Zmatrix::imag() const { return part_of(engine(), true); }

bool FEM_Zmatrix::is_all_incore() const { return !engine() || engine()->dense().is_all_incore(); }
bool FEM_Zmatrix::force_incore() { return !engine() || engine()->dense().force_incore(); }

dense2D<FEM_Zmatrix::value_type> FEM_Zmatrix::as_raw_matrix() const {
    return engine() ? engine()->dense().as_raw_matrix() : dense2D<value_type>();
}

// --- FEM_Zstates --------------------------------------------------------------------

ORV_FEM_HANDLE_IMPL(FEM_Zstates, FEM_Zmatrix, core::FEM_Zstates_engine)

FEM_Zstates::FEM_Zstates() : FEM_Zmatrix(static_cast<core::FEM_Zmatrix_engine*>(fresh<zstates_type>())) {}

FEM_Zstates::FEM_Zstates(const dense1D<unsigned int>& IDs, index_type columns, value_type value)
    : FEM_Zmatrix(static_cast<core::FEM_Zmatrix_engine*>(nullptr)) {
    zstates_type* e = fresh<zstates_type>();
    if (e && columns < (index_type(1) << 48)) e->init(IDs, std::size_t(columns), value);
    set_w(static_cast<ref_counted*>(e));
}

FEM_Zstates::FEM_Zstates(const FEM_Zstates& other, index_type first_col, index_type n_cols)
    : FEM_Zmatrix(static_cast<core::FEM_Zmatrix_engine*>(nullptr)) {
    set_w(static_cast<ref_counted*>(ops::view_engine(other, first_col, n_cols)));
}

FEM_Zstates::FEM_Zstates(core::FEM_Zstates_engine* e) : FEM_Zmatrix(static_cast<core::FEM_Zmatrix_engine*>(e)) {}

FEM_Zstates FEM_Zstates::get_state(index_type col) const {
    if (!engine() || col >= engine()->cols()) return FEM_Zstates(static_cast<core::FEM_Zstates_engine*>(nullptr));
    return FEM_Zstates(*this, col, 1);
}

error_type FEM_Zstates::get_state(index_type col, FEM_Zstates& out) const { return ops::get_state(*this, col, out); }

error_type FEM_Zstates::get_stress_mgr(index_type col, stress_mgr& out) const {
    return ops::get_stress_mgr(*this, col, out);
}
error_type FEM_Zstates::set_stress_mgr(index_type col, const stress_mgr& in) {
    return ops::set_stress_mgr(*this, col, in);
}

error_type FEM_Zstates::get_step_value(index_type col, double& value) const {
    return ops::get_step_value(*this, col, value);
}
error_type FEM_Zstates::set_step_value(index_type col, double value) { return ops::set_step_value(*this, col, value); }

error_type FEM_Zstates::copy(const FEM_Zstates& other) { return ops::copy(*this, other); }
error_type FEM_Zstates::push_back(const FEM_Zmatrix& other) { return ops::push_back(*this, other); }
error_type FEM_Zstates::pop_back(index_type n) { return ops::pop_back(*this, n); }
void FEM_Zstates::clear() { ops::clear(*this); }

}  // namespace fem
}  // namespace orv
