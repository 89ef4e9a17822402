// Engine of the transient heat run: the numbering and conduction assembly of the
// steady heat run, the capacity M as the second matrix of the pencil base, one
// factor of M + dt theta K, and the theta scheme on the temperature rates.
#pragma once

#include <cmath>
#include <cstddef>
#include <vector>

#include <orv/fem/solver_heat_dynamic_linear.h>

#include "fem/solver_transient_base.h"

namespace orv {
namespace core {

extern const solver_identity heat_dynamic_identity;

typedef static_steps_settings<fem::solver_heat_dynamic_linear::settings_type> heat_dynamic_engine_settings;

template <class Types, class Settings, class Data>
class solver_heat_dynamic_linear : public solver_transient_base<Types, Settings, Data> {
    typedef solver_transient_base<Types, Settings, Data> base;

public:
    typedef typename base::sparse_type sparse_type;
    typedef typename base::states_type states_type;

    enum : int { line_Md = 201, line_loop = 600 };

    explicit solver_heat_dynamic_linear(const Settings* settings)
        : base(settings, heat_dynamic_identity, "  Size matrix Md         : ", "  Size matrix Mf         : ") {
        this->stiffness_code_ = fem::matrix_conduction;
        this->temperatures_ = true;
    }

protected:
    void clear_inputs(Data& data) override;
    void numbering(Data& data) override;
    void compute(Data& data) override;
    bool make_resident(Data& data) override;
    double& size_of_B(Data& data) override { return data.size_Md; }
    fem::FEM_SymSparse& record_of_B(Data& data) override { return data.Md; }
    double& size_of_outputs(Data& data) override { return data.size_outputs; }

    // Kf := M + a K, factored under the run's pivot policy.
    void factorize_step_matrix(Data& data, double a);
    void time_loop(Data& data);

    const Settings& settings() const { return base::settings(); }
};

template <class Types, class Settings, class Data>
void solver_heat_dynamic_linear<Types, Settings, Data>::clear_inputs(Data& data) {
    data.F = fem::FEM_matrix();
    data.Ks = fem::FEM_SymSparse();
    data.Md = fem::FEM_SymSparse();
    data.Kf = fem::FEM_factor();
}

template <class Types, class Settings, class Data>
void solver_heat_dynamic_linear<Types, Settings, Data>::numbering(Data& data) {
    this->number_for_steps(data, fem::matrix_capacity, settings().output_kind == 512 ? 2 : 1, "Md assembly error.",
                           line_Md);
}

template <class Types, class Settings, class Data>
void solver_heat_dynamic_linear<Types, Settings, Data>::compute(Data& data) {
    this->assemble_stiffness(data);
    this->assemble_penalties(data);
    this->assemble_B(data, data.Md, 1, "Numerical assembly matrix Md       : %10.2f s.\n", "Md assembly error.",
                     line_Md, line_Md);
    time_loop(data);
}

template <class Types, class Settings, class Data>
void solver_heat_dynamic_linear<Types, Settings, Data>::factorize_step_matrix(Data& data, double a) {
    if (data.error_code) return;
    this->step(data, data.time_assembly, "Numerical assembly matrix Mf       : %10.2f s.\n",
               [&] { this->fill_Kf(a, 1.0); });
    this->factorize(data);
}

// The theta scheme on the rates: the eliminated rows follow their prescribed values,
// whose rates come from the same scheme; the free rows solve with the one factor.
template <class Types, class Settings, class Data>
void solver_heat_dynamic_linear<Types, Settings, Data>::time_loop(Data& data) {
    if (data.error_code || this->stop_requested(data)) return;
    const Settings& s = settings();
    const std::size_t n = this->total_IDs_->size(), n_free = this->free_IDs_->size();
    const double dt = s.dt, theta = s.theta, a = dt * theta;
    std::vector<double> T(n, 0.0), rate(n, 0.0), f, r(n, 0.0), v(n, 0.0), w(n, 0.0);

    // Initial state: T_init by ID, prescribed values at t_start, then the start rate.
    this->read_initial(data.T_init, 0, T);
    if (int rc = this->prescribed_at(s.t_start, T)) return this->set_error(data, rc, "FEM error.", line_loop);
    if (theta < 1.0 && n_free) {
        factorize_step_matrix(data, 0.0);  // M alone
        if (data.error_code) return;
        if (int rc = this->loads_at(s.t_start, f)) return this->set_error(data, rc, "FEM error.", line_loop);
        std::copy(f.begin(), f.begin() + n_free, rate.begin());
        if (int rc = this->add_product(fem::matrix_conduction, T, rate, 1.0))
            return this->set_error(data, rc, "Solver error.", line_loop);
        this->solve_free(rate);
    }
    factorize_step_matrix(data, a);
    if (data.error_code) return;

    const std::size_t outputs = this->nbr_outputs_;
    Ptr<states_type> outT = this->make_outputs(data, outputs, line_loop), outR;
    if (s.output_kind == 512) outR = this->make_outputs(data, outputs, line_loop);
    if (data.error_code) return;
    data.times = dense1D<double>(outputs, 0.0);
    std::size_t output = 0;
    auto write = [&](std::size_t col, double t) {
        data.times[col] = t;
        outT->dense().set_col(col, dense1D<double>(n, T.data()));
        if (outR) outR->dense().set_col(col, dense1D<double>(n, rate.data()));
    };

    this->step(data, data.time_solve, "Resolution transient dynamic       : %10.2f s.\n", [&] {
        for (std::size_t step = 1; step <= this->nbr_steps_; ++step) {
            if (this->stop_requested(data)) return;
            const double t = s.t_start + double(step) * dt;
            // v = T_n + dt (1 - theta) T'_n; the right-hand side Q(t) - K v on the free rows.
            for (std::size_t i = 0; i < n; ++i) v[i] = T[i] + dt * (1.0 - theta) * rate[i];
            if (int rc = this->loads_at(t, f)) return this->set_error(data, rc, "FEM error.", line_loop);
            std::copy(f.begin(), f.begin() + n_free, r.begin());
            std::fill(r.begin() + n_free, r.end(), 0.0);
            if (int rc = this->add_product(fem::matrix_conduction, v, r, 1.0))
                return this->set_error(data, rc, "Solver error.", line_loop);
            // The eliminated rows: their new values and rates, whose coupling (M + a K)
            // w goes to the free rows.
            std::vector<double> T_next(T);
            if (int rc = this->prescribed_at(t, T_next)) return this->set_error(data, rc, "FEM error.", line_loop);
            bool moving = false;
            std::fill(w.begin(), w.end(), 0.0);
            for (std::size_t i = n_free; i < n; ++i) {
                const double d = T_next[i] - T[i] - dt * (1.0 - theta) * rate[i];
                w[i] = theta > 0 ? d / a : (T_next[i] - T[i]) / dt;
                moving = moving || w[i] != 0.0;
            }
            if (moving) {
                int rc = this->add_product(fem::matrix_capacity, w, r, 1.0);
                if (!rc && a != 0.0) rc = this->add_product(fem::matrix_conduction, w, r, a);
                if (rc) return this->set_error(data, rc, "Solver error.", line_loop);
            }
            this->solve_free(r);
            for (std::size_t i = 0; i < n_free; ++i) {
                T[i] += dt * ((1.0 - theta) * rate[i] + theta * r[i]);
                rate[i] = r[i];
            }
            for (std::size_t i = n_free; i < n; ++i) {
                T[i] = T_next[i];
                rate[i] = w[i];
            }
            if (!detail::all_finite(T.data(), n)) {
                this->log(1, "Time step #%d: INF or NaN detected.\n", int(step));
                return this->set_error(data, fem::error_not_finite, "INF or NaN detected.", line_loop);
            }
            if (this->is_output(step) && output < outputs) write(output++, t);
            this->log_step(step, t, output);
        }
    });
    if (data.error_code) return;
    data.T = fem::FEM_states(outT.get());
    if (outR) data.dT = fem::FEM_states(outR.get());
    data.F = fem::FEM_matrix();
    this->log_end(s.t_start, dt);
}

template <class Types, class Settings, class Data>
bool solver_heat_dynamic_linear<Types, Settings, Data>::make_resident(Data& data) {
    bool ok = true;
    if (data.dT.is_valid() && !data.dT.is_all_incore()) ok = data.dT.force_incore();
    return base::make_resident(data) && ok;
}

}  // namespace core
}  // namespace orv
