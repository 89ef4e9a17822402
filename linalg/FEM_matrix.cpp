// Public handles of the real matrices of results and of their states.
#include <orv/fem/FEM_matrix.h>

#include <new>

#include "linalg/FEM_matrix_impl.h"
#include "problem/stress_mgr.h"

namespace orv {
namespace fem {

namespace {

typedef core::FEM_matrix_engine engine_type;
typedef core::FEM_states_engine states_type;

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
    engine_type* e = fresh<engine_type>();
    if (e && columns < (index_type(1) << 48)) e->init(IDs, std::size_t(columns), value);
    set_w(static_cast<ref_counted*>(e));
}

FEM_matrix::FEM_matrix(const FEM_matrix& other, index_type first_col, index_type n_cols) {
    engine_type* e = fresh<engine_type>();
    const engine_type* o = other.engine();
    if (e && o) {
        const std::size_t c = o->cols();
        e->dense() = o->dense().sub_columns(first_col > c ? c : std::size_t(first_col),
                                            n_cols > c ? c : std::size_t(n_cols));
        e->set_IDs(o->get_IDs());
    }
    set_w(static_cast<ref_counted*>(e));
}

FEM_matrix::FEM_matrix(const FEM_matrix& other, const dense2D<double>& values) {
    engine_type* e = fresh<engine_type>();
    const engine_type* o = other.engine();
    if (e && o && values.rows() == o->rows() && e->dense().init(values) == 0) e->set_IDs(o->get_IDs());
    else if (e) e->clear();
    set_w(static_cast<ref_counted*>(e));
}

FEM_matrix::FEM_matrix(core::FEM_matrix_engine* e) { set_w(static_cast<ref_counted*>(e)); }

FEM_matrix::index_type FEM_matrix::rows() const { return engine() ? engine()->rows() : 0; }
FEM_matrix::index_type FEM_matrix::cols() const { return engine() ? engine()->cols() : 0; }

FEM_matrix::index_type FEM_matrix::row_pos(index_type ID) const {
    const std::uint32_t r = engine() ? engine()->row_of(ID) : engine_type::npos;
    return r == engine_type::npos ? ~index_type(0) : index_type(r);
}

dense1D<unsigned int> FEM_matrix::get_IDs() const {
    if (!engine() || !engine()->get_IDs()) return dense1D<unsigned int>();
    return engine()->get_IDs()->list();
}

error_type FEM_matrix::get_val(index_type ID, index_type col, double& value) const {
    value = 0.0;
    if (!engine()) return error_data;
    return static_cast<error_type>(engine()->get_val(ID, col, value));
}

error_type FEM_matrix::set_val(index_type ID, index_type col, double value) {
    if (!engine()) return error_data;
    return static_cast<error_type>(engine()->set_val(ID, col, value, false));
}

error_type FEM_matrix::setID_val(index_type ID, index_type col, double value) {
    if (!engine()) return error_data;
    return static_cast<error_type>(engine()->set_val(ID, col, value, true));
}

error_type FEM_matrix::get_row(index_type ID, dense1D<double>& v, index_type first, index_type n) const {
    if (!engine()) return error_data;
    return static_cast<error_type>(engine()->get_row(ID, v, first, n));
}

error_type FEM_matrix::get_row(index_type ID, dense1D<double>& v, index_type col) const {
    return get_row(ID, v, col, ~index_type(0));
}

error_type FEM_matrix::get_row(index_type ID, dense1D<double>& v) const { return get_row(ID, v, 0, ~index_type(0)); }

error_type FEM_matrix::set_row(index_type ID, const dense1D<double>& v, index_type col) {
    if (!engine()) return error_data;
    return static_cast<error_type>(engine()->set_row(ID, v, col, false));
}

error_type FEM_matrix::setID_row(index_type ID, const dense1D<double>& v, index_type col) {
    if (!engine()) return error_data;
    return static_cast<error_type>(engine()->set_row(ID, v, col, true));
}

dense1D<double> FEM_matrix::col(index_type c) const {
    if (!engine() || c >= engine()->cols()) return dense1D<double>();
    return engine()->dense().column(std::size_t(c));
}

error_type FEM_matrix::get_col(index_type c, dense1D<double>& v) const {
    if (!engine() || c >= engine()->cols()) return error_data;
    return static_cast<error_type>(engine()->dense().get_col(std::size_t(c), v));
}

error_type FEM_matrix::set_col(index_type c, const dense1D<double>& v) {
    if (!engine() || c >= engine()->cols()) return error_data;
    return static_cast<error_type>(engine()->dense().set_col(std::size_t(c), v));
}

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

error_type FEM_matrix::push_back(const FEM_matrix& other) {
    if (!engine() || !other.engine()) return error_data;
    return static_cast<error_type>(engine()->push_back(*other.engine()));
}

error_type FEM_matrix::pop_back(index_type n) {
    if (!engine()) return error_data;
    engine()->pop_back(n > engine()->cols() ? engine()->cols() : std::size_t(n));
    return no_error;
}

error_type FEM_matrix::copy(const FEM_matrix& other) {
    if (!engine() || !other.engine()) return error_data;
    if (engine() == other.engine()) return no_error;
    other.engine()->dense().force_incore();
    const int rc = engine()->copy_from(*other.engine());
    if (rc == 0 && !engine()->dense().force_incore()) {
        engine()->clear();
        return error_memory;
    }
    if (rc) engine()->clear();
    return static_cast<error_type>(rc);
}

error_type FEM_matrix::copy(double value) {
    if (!engine()) return error_data;
    return static_cast<error_type>(engine()->dense().fill(value));
}

void FEM_matrix::clear() {
    if (engine()) engine()->clear();
}

void FEM_matrix::shallow_copy(const FEM_matrix& other) {
    if (!engine() || !other.engine() || engine() == other.engine()) return;
    engine()->dense() = other.engine()->dense();
    engine()->set_IDs(other.engine()->get_IDs());
}

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
    states_type* e = fresh<states_type>();
    const states_type* o = other.engine();
    if (e && o) {
        const std::size_t c = o->cols();
        if (e->view_of(*o, first_col > c ? c : std::size_t(first_col), n_cols > c ? c : std::size_t(n_cols)))
            e->clear();
    }
    set_w(static_cast<ref_counted*>(e));
}

FEM_states::FEM_states(core::FEM_states_engine* e) : FEM_matrix(static_cast<core::FEM_matrix_engine*>(e)) {}

FEM_states FEM_states::get_state(index_type col) const {
    if (!engine() || col >= engine()->cols()) return FEM_states(static_cast<core::FEM_states_engine*>(nullptr));
    return FEM_states(*this, col, 1);
}

error_type FEM_states::get_state(index_type col, FEM_states& out) const {
    if (!engine() || col >= engine()->cols()) {
        out.clear_w();
        return error_data;
    }
    out = get_state(col);
    return out.rows() == rows() ? no_error : error_memory;
}

error_type FEM_states::get_stress_mgr(index_type col, stress_mgr& out) const {
    out.clear_w();
    if (!engine() || col >= engine()->cols()) return error_data;
    Ptr<core::stress_super_mgr> s = engine()->stress_of(std::size_t(col));
    if (s) out.set_w(static_cast<ref_counted*>(s.get()));
    return no_error;
}

error_type FEM_states::set_stress_mgr(index_type col, const stress_mgr& in) {
    if (!engine() || col >= engine()->cols()) return error_data;
    return static_cast<error_type>(engine()->set_stress(std::size_t(col), Ptr<core::stress_super_mgr>(in.engine())));
}

error_type FEM_states::get_step_value(index_type col, double& value) const {
    value = 0.0;
    if (!engine() || col >= engine()->cols()) return error_data;
    value = engine()->step_of(std::size_t(col));
    return no_error;
}

error_type FEM_states::set_step_value(index_type col, double value) {
    if (!engine() || col >= engine()->cols()) return error_data;
    return static_cast<error_type>(engine()->set_step(std::size_t(col), value));
}

error_type FEM_states::copy(const FEM_states& other) {
    if (!engine() || !other.engine()) return error_data;
    if (engine() == other.engine()) return no_error;
    const error_type rc = FEM_matrix::copy(static_cast<const FEM_matrix&>(other));
    if (rc) return rc;
    try {
        engine()->stresses = other.engine()->stresses;
        engine()->steps = other.engine()->steps;
    } catch (...) {
        return error_memory;
    }
    engine()->trim();
    return no_error;
}

error_type FEM_states::push_back(const FEM_matrix& other) {
    if (!engine() || !other.engine()) return error_data;
    const std::size_t old = engine()->cols();
    const states_type* o = FEM_states(other).engine();  // null for a plain matrix
    const error_type rc = FEM_matrix::push_back(other);
    if (rc) return rc;
    if (o) {
        for (std::size_t k = 0; old + k < engine()->cols(); ++k) {
            if (o->stress_of(k)) engine()->set_stress(old + k, o->stress_of(k));
            if (o->step_of(k) != 0.0) engine()->set_step(old + k, o->step_of(k));
        }
    }
    return no_error;
}

error_type FEM_states::pop_back(index_type n) {
    const error_type rc = FEM_matrix::pop_back(n);
    if (engine()) engine()->trim();
    return rc;
}

void FEM_states::clear() {
    if (!engine()) return;
    engine()->clear();
    engine()->stresses.clear();
    engine()->steps.clear();
}

}  // namespace fem
}  // namespace orv
