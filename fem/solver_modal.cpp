// Modal run: the public handle, its records and the engine instance.
#include "fem/solver_modal.h"

#include <orv/fem/solver_modal.h>

#include <algorithm>

namespace orv {
namespace core {

const solver_identity modal_identity = {"solver_modal", "ORV FEM(R) - MODAL", "fem/solver_modal", 199};

namespace {

typedef solver_modal<OOC_matrix_types, modal_engine_settings, fem::solver_modal::data_type> base_engine;

typedef handle_engine<base_engine, modal_engine_settings> modal_engine;

}  // namespace

template class solver_modal<OOC_matrix_types, modal_engine_settings, fem::solver_modal::data_type>;

namespace {

// The dynamic modes of a record and the damping pass of its model over them. The
// modes are read one column at a time, in storage order.
class damping_pass {
public:
    explicit damping_pass(const fem::solver_modal::data_type& data) {
        problem_ = data.engine();
        D_ = data.D_modes.engine();
        if (D_ && D_->get_IDs()) {
            IDs_ = D_->get_IDs();
            n_ = IDs_->size();
            m_ = D_->dense().cols();
        }
    }
    std::size_t nbr_modes() const { return m_; }
    std::size_t rows() const { return n_; }
    const Ptr<DOF_index>& IDs() const { return IDs_; }
    // Column i of the modes into x (n values); -200 when it cannot be read.
    int mode(std::size_t i, dense1D<double, 8>& x) const { return D_->dense().get_col(i, x) ? fem::error_internal : 0; }
    // y := the vector of the damping models for the state x.
    int damping_vector(const dense1D<double, 8>& x, std::vector<double>& y) const {
        std::fill(y.begin(), y.end(), 0.0);
        numerical_model_base* model = problem_ ? problem_->get_model() : nullptr;
        if (!model) return fem::error_data;
        DOF_vector X(IDs_, x);
        DOF_vector target(IDs_, external_view(y.data(), n_));
        vector_assembler<double> va(target, 1.0);
        matrix_null_assembler none;
        assembly_args args;
        args.params.nbr_threads = 1;
        args.matrix_assembler = &none;
        args.vector_assembler = &va;
        args.matrix_level = 1;
        args.U = &X;
        args.pos = &problem_->get_pos();
        return model->assemble_matrix(3, args);
    }

private:
    Ptr<problem_data> problem_;
    const FEM_states_engine* D_ = nullptr;
    Ptr<DOF_index> IDs_;
    std::size_t n_ = 0, m_ = 0;
};

inline double dot(const double* a, const double* b, std::size_t n) {
    double s = 0.0;
    for (std::size_t k = 0; k < n; ++k) s += a[k] * b[k];
    return s;
}

// -0.5 * c_i * (x_i . x_i) for each mode; c null: one coefficient for all.
int decay_by_coefficients(const damping_pass& pass, const double* c, double c_all, dense1D<double>& out) {
    const std::size_t m = pass.nbr_modes();
    dense1D<double> r(m, 0.0);
    if (c || c_all != 0.0)
        for (std::size_t i = 0; i < m; ++i) {
            dense1D<double, 8> x;
            if (pass.mode(i, x)) return fem::error_internal;
            r[i] = -0.5 * (c ? c[i] : c_all) * dot(x.data(), x.data(), pass.rows());
        }
    out = r;
    return 0;
}

// Runs f (exceptions become their codes) and stores a failure in the record's error
// fields when none stands there.
template <class F>
void run_into(fem::solver_modal::data_type& data, F&& f) noexcept {
    const int rc = guarded(f);
    if (rc == fem::error_memory)
        set_error_msg(data, rc, "MEMORY ERROR", "");
    else if (rc == fem::error_internal)
        set_error_msg(data, rc, "INTERNAL ERROR", "");
    else if (rc)
        set_error_msg(data, rc, "Damping assembly error.", "");
}

}  // namespace

}  // namespace core

namespace fem {

void solver_modal::compute_damping_decay_factors(data_type& data, dense1D<double>& out) const {
    core::run_into(data, [&]() -> int {
        const core::damping_pass pass(data);
        const std::size_t m = pass.nbr_modes(), n = pass.rows();
        dense1D<double> r(m, 0.0);
        std::vector<double> y(n);
        for (std::size_t i = 0; i < m; ++i) {
            dense1D<double, 8> x;
            if (pass.mode(i, x)) return fem::error_internal;
            if (const int rc = pass.damping_vector(x, y)) return rc;
            r[i] = -0.5 * core::dot(x.data(), y.data(), n);
        }
        out = r;
        return 0;
    });
}

void solver_modal::compute_damping_decay_factors(data_type& data, const dense1D<double>& c,
                                                 dense1D<double>& out) const {
    core::run_into(data, [&]() -> int {
        const core::damping_pass pass(data);
        if (c.size() != pass.nbr_modes()) {
            core::set_error_msg(data, error_data, "DATA ERROR", "");
            return 0;
        }
        return core::decay_by_coefficients(pass, c.data(), 0.0, out);
    });
}

void solver_modal::compute_damping_decay_factors(data_type& data, double c, dense1D<double>& out) const {
    core::run_into(data, [&]() -> int {
        const core::damping_pass pass(data);
        return core::decay_by_coefficients(pass, nullptr, c, out);
    });
}

void solver_modal::compute_damping_corrections(data_type& data, dense1D<double>& out, FEM_states& corrections) const {
    core::run_into(data, [&]() -> int {
        const core::damping_pass pass(data);
        const std::size_t m = pass.nbr_modes(), n = pass.rows();
        if (data.frequencies.size() != m) {
            core::set_error_msg(data, error_data, "DATA ERROR", "");
            return 0;
        }
        dense1D<double> r(m, 0.0);
        Ptr<core::FEM_states_engine> C(new core::FEM_states_engine());
        if (C->init(pass.IDs() ? pass.IDs() : Ptr<core::DOF_index>(new core::DOF_index()), m, 0.0,
                    Ptr<core::OOC_mgr>()))
            return error_memory;
        std::vector<double> y(n);
        // The diagonal terms first: the threshold of each coupling needs both of them.
        for (std::size_t i = 0; i < m; ++i) {
            dense1D<double, 8> x;
            if (pass.mode(i, x)) return fem::error_internal;
            if (const int rc = pass.damping_vector(x, y)) return rc;
            r[i] = 0.5 * core::dot(x.data(), y.data(), n);
        }
        const double eps = 1E-6, two_pi = 6.283185307179586;
        for (std::size_t i = 0; i < m; ++i) {
            dense1D<double, 8> xi, col(n, 0.0);
            if (pass.mode(i, xi)) return fem::error_internal;
            if (const int rc = pass.damping_vector(xi, y)) return rc;
            const double fi = data.frequencies[i];
            for (std::size_t j = 0; j < m; ++j) {
                const double fj = data.frequencies[j];
                if (j == i || fj == fi) continue;
                dense1D<double, 8> xj;
                if (pass.mode(j, xj)) return fem::error_internal;
                double c = -core::dot(xj.data(), y.data(), n);
                if (c * c < r[i] * r[j] * 4.0 * eps * eps) c = 0.0;
                const double a = fi * c / (two_pi * (fi - fj) * (fi + fj));
                for (std::size_t k = 0; k < n; ++k) col[k] += a * xj[k];
            }
            if (C->dense().set_col(i, col)) return fem::error_internal;
        }
        out = r;
        corrections = FEM_states(C.get());
        return 0;
    });
}

bool solver_modal::settings_type::valid() const {
    return tolerance > 0 && max_iters != 0 && ritz_factor != 0 && max_modes != 0 && std::max(freq_min, 0.0) < freq_max;
}

void solver_modal::data_type::clear_data_out() {
    S_modes = FEM_states();
    D_modes = FEM_states();
    Ms = FEM_SymSparse();
    mode_results = dense2D<double>();
    nbr_free_DOFs = nbr_kept_imposed_DOFs = nbr_eliminated_DOFs = nbr_total_DOFs = 0;
    frequencies = dense1D<double>();
    energy = dense1D<double>();
    pivot_min = pivot_max = 0.0;
    bad_pivot_DOF = 0xFFFFFFFFu;
    size_RHS = size_Ks = size_Kf = size_U = size_Ms = size_D_modes = size_spare = size_total = 0.0;
    used_out_of_core = false;
    clear_errors();
    time_numbering = time_RHS = time_assembly = time_factor = time_solve = time_total = 0.0;
}

ORV_FEM_HANDLE_IMPL(solver_modal, solver_base, core::solver_root)

solver_modal::solver_modal() : settings() { set_w(static_cast<ref_counted*>(new (std::nothrow) core::modal_engine())); }

void solver_modal::run(data_type& data) {
    core::modal_engine* e = dynamic_cast<core::modal_engine*>(engine());
    if (!e) {
        core::set_error_msg(data, fem::error_internal, "INTERNAL ERROR", "");
        return;
    }
    e->set_settings(settings);
    e->run(data, static_cast<const problem_data&>(data), data.U_prior, data.F, data.S_modes, data.D_modes, data.Ks,
           data.Ms, data.Kf);
}

}  // namespace fem
}  // namespace orv
