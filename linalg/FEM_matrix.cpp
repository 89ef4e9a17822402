// Public handles of the real matrices of results and of their states.
#include <orv/fem/FEM_matrix.h>

#include <new>

#include "linalg/FEM_handle_ops.h"
#include "linalg/FEM_matrix_impl.h"
#include "problem/stress_mgr.h"

namespace orv {
namespace fem {

namespace {

typedef core::FEM_matrix_engine engine_type;
typedef core::FEM_states_engine states_type;
typedef detail::matrix_handle_ops<FEM_matrix, core::FEM_matrix_engine> mops;
typedef detail::states_handle_ops<FEM_states, FEM_matrix, core::FEM_states_engine> ops;

// A new engine object of type E, or null when memory fails.
template <class E>
E* fresh() noexcept {
    return new (std::nothrow) E();
}

}  // namespace

// --- FEM_matrix --------------------------------------------------------------------

ORV_FEM_HANDLE_IMPL(FEM_matrix, base_class, core::FEM_matrix_engine)

FEM_matrix::FEM_matrix() { set_w(static_cast<ref_counted*>(fresh<engine_type>())); }

FEM_matrix::FEM_matrix(const dense1D<unsigned int>& IDs, index_type columns, double value) {
    set_w(static_cast<ref_counted*>(mops::filled(IDs, columns, value)));
}

FEM_matrix::FEM_matrix(const FEM_matrix& other, index_type first_col, index_type n_cols) {
    set_w(static_cast<ref_counted*>(mops::sub_columns(other, first_col, n_cols)));
}

FEM_matrix::FEM_matrix(const FEM_matrix& other, const dense2D<double>& values) {
    set_w(static_cast<ref_counted*>(mops::with_values(other, values)));
}

FEM_matrix::FEM_matrix(core::FEM_matrix_engine* e) { set_w(static_cast<ref_counted*>(e)); }

FEM_matrix::index_type FEM_matrix::rows() const { return engine() ? engine()->rows() : 0; }
FEM_matrix::index_type FEM_matrix::cols() const { return engine() ? engine()->cols() : 0; }

FEM_matrix::index_type FEM_matrix::row_pos(index_type ID) const { return mops::row_pos(*this, ID); }

dense1D<unsigned int> FEM_matrix::get_IDs() const { return mops::get_IDs(*this); }

error_type FEM_matrix::get_val(index_type ID, index_type col, double& value) const {
    return mops::get_val(*this, ID, col, value);
}

error_type FEM_matrix::set_val(index_type ID, index_type col, double value) {
    return mops::set_val(*this, ID, col, value, false);
}

error_type FEM_matrix::setID_val(index_type ID, index_type col, double value) {
    return mops::set_val(*this, ID, col, value, true);
}

error_type FEM_matrix::get_row(index_type ID, dense1D<double>& v, index_type first, index_type n) const {
    return mops::get_row(*this, ID, v, first, n);
}

error_type FEM_matrix::get_row(index_type ID, dense1D<double>& v, index_type col) const {
    return get_row(ID, v, col, ~index_type(0));
}

error_type FEM_matrix::get_row(index_type ID, dense1D<double>& v) const { return get_row(ID, v, 0, ~index_type(0)); }

error_type FEM_matrix::set_row(index_type ID, const dense1D<double>& v, index_type col) {
    return mops::set_row(*this, ID, v, col, false);
}

error_type FEM_matrix::setID_row(index_type ID, const dense1D<double>& v, index_type col) {
    return mops::set_row(*this, ID, v, col, true);
}

dense1D<double> FEM_matrix::col(index_type c) const { return mops::col(*this, c); }

error_type FEM_matrix::get_col(index_type c, dense1D<double>& v) const { return mops::get_col(*this, c, v); }

error_type FEM_matrix::set_col(index_type c, const dense1D<double>& v) { return mops::set_col(*this, c, v); }

error_type FEM_matrix::get_vector(index_type node, field_tag tag, index_type col, vector_fixed<double, 3>& v) const {
    double out[3] = {0.0, 0.0, 0.0};
    const int rc = engine() ? engine()->get_vector(node, tag, col, out) : error_data;
    for (std::size_t c = 0; c < 3; ++c) v[c] = out[c];
    return static_cast<error_type>(rc);
}

error_type FEM_matrix::get_vectors(index_type node, field_tag tag, index_type first_col, dense2D<double>& out) const {
    if (!engine()) return error_data;
    return static_cast<error_type>(engine()->get_vectors(node, tag, first_col, out));
}

error_type FEM_matrix::set_vector(index_type node, field_tag tag, index_type col, const vector_fixed<double, 3>& v) {
    if (!engine()) return error_data;
    const double in[3] = {v[0], v[1], v[2]};
    return static_cast<error_type>(engine()->set_vector(node, tag, col, in));
}

error_type FEM_matrix::push_back(const FEM_matrix& other) { return mops::push_back(*this, other); }

error_type FEM_matrix::pop_back(index_type n) { return mops::pop_back(*this, n); }

error_type FEM_matrix::copy(const FEM_matrix& other) { return mops::copy(*this, other); }

error_type FEM_matrix::copy(double value) { return mops::fill(*this, value); }

void FEM_matrix::clear() {
    if (engine()) engine()->clear();
}

void FEM_matrix::shallow_copy(const FEM_matrix& other) { mops::shallow_copy(*this, other); }

error_type FEM_matrix::axpy(double alpha, const FEM_matrix& other) {
    if (!engine() || !other.engine()) return error_data;
    return static_cast<error_type>(engine()->axpy(alpha, *other.engine()));
}

error_type FEM_matrix::add_displacements(dense2D<double>& pos, index_type col, double alpha) const {
    if (!engine()) return error_data;
    return static_cast<error_type>(engine()->add_displacements(pos, col, alpha));
}

bool FEM_matrix::is_all_incore() const { return !engine() || engine()->dense().is_all_incore(); }
bool FEM_matrix::force_incore() { return !engine() || engine()->dense().force_incore(); }

dense2D<double> FEM_matrix::as_raw_matrix() const {
    return engine() ? engine()->dense().as_raw_matrix() : dense2D<double>();
}

// --- FEM_states --------------------------------------------------------------------

ORV_FEM_HANDLE_IMPL(FEM_states, FEM_matrix, core::FEM_states_engine)

FEM_states::FEM_states() : FEM_matrix(static_cast<core::FEM_matrix_engine*>(fresh<states_type>())) {}

FEM_states::FEM_states(const dense1D<unsigned int>& IDs, index_type columns, double value)
    : FEM_matrix(static_cast<core::FEM_matrix_engine*>(nullptr)) {
    states_type* e = fresh<states_type>();
    if (e && columns < (index_type(1) << 48)) e->init(IDs, std::size_t(columns), value);
    set_w(static_cast<ref_counted*>(e));
}

FEM_states::FEM_states(const FEM_states& other, index_type first_col, index_type n_cols)
    : FEM_matrix(static_cast<core::FEM_matrix_engine*>(nullptr)) {
    set_w(static_cast<ref_counted*>(ops::view_engine(other, first_col, n_cols)));
}

FEM_states::FEM_states(core::FEM_states_engine* e) : FEM_matrix(static_cast<core::FEM_matrix_engine*>(e)) {}

FEM_states FEM_states::get_state(index_type col) const {
    if (!engine() || col >= engine()->cols()) return FEM_states(static_cast<core::FEM_states_engine*>(nullptr));
    return FEM_states(*this, col, 1);
}

error_type FEM_states::get_state(index_type col, FEM_states& out) const { return ops::get_state(*this, col, out); }

error_type FEM_states::get_stress_mgr(index_type col, stress_mgr& out) const {
    return ops::get_stress_mgr(*this, col, out);
}
error_type FEM_states::set_stress_mgr(index_type col, const stress_mgr& in) {
    return ops::set_stress_mgr(*this, col, in);
}

error_type FEM_states::get_step_value(index_type col, double& value) const {
    return ops::get_step_value(*this, col, value);
}
error_type FEM_states::set_step_value(index_type col, double value) { return ops::set_step_value(*this, col, value); }

error_type FEM_states::copy(const FEM_states& other) { return ops::copy(*this, other); }
error_type FEM_states::push_back(const FEM_matrix& other) { return ops::push_back(*this, other); }
error_type FEM_states::pop_back(index_type n) { return ops::pop_back(*this, n); }
void FEM_states::clear() { ops::clear(*this); }

}  // namespace fem
}  // namespace orv
