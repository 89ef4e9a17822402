// Engine of the Newmark run: the numbering and stiffness of the linear static run,
// the mass as the second matrix of the pencil base, one factor of the dynamic
// stiffness Kd = (b + a rK) K + (1 + a rM) M, and Newmark's predictors and correctors
// on the accelerations.
#pragma once

#include <cstddef>
#include <vector>

#include <orv/fem/solver_Newmark.h>

#include "fem/solver_transient_base.h"

namespace orv {
namespace core {

extern const solver_identity Newmark_identity;

typedef static_steps_settings<fem::solver_Newmark::settings_type> Newmark_engine_settings;

template <class Types, class Settings, class Data>
class solver_Newmark : public solver_transient_base<Types, Settings, Data> {
    typedef solver_transient_base<Types, Settings, Data> base;

public:
    typedef typename base::sparse_type sparse_type;
    typedef typename base::states_type states_type;

    enum : int { line_Kd = 201, line_loop = 600 };

    explicit solver_Newmark(const Settings* settings)
        : base(settings, Newmark_identity, "  Size matrix Kd         : ", "  Size matrix Kf         : ") {}

protected:
    void clear_inputs(Data& data) override;
    void numbering(Data& data) override;
    void compute(Data& data) override;
    double& size_of_B(Data& data) override { return data.size_Ms; }
    fem::FEM_SymSparse& record_of_B(Data& data) override { return data.Ms; }
    double& size_of_outputs(Data& data) override { return data.size_outputs; }

    // Kf := k K + m M, factored under the run's pivot policy.
    void factorize_combination(Data& data, double k, double m);
    void time_loop(Data& data);

    const Settings& settings() const { return base::settings(); }
};

template <class Types, class Settings, class Data>
void solver_Newmark<Types, Settings, Data>::clear_inputs(Data& data) {
    data.F = fem::FEM_matrix();
    data.Ks = fem::FEM_SymSparse();
    data.Ms = fem::FEM_SymSparse();
    data.Kf = fem::FEM_factor();
}

template <class Types, class Settings, class Data>
void solver_Newmark<Types, Settings, Data>::numbering(Data& data) {
    this->number_for_steps(data, fem::matrix_M, settings().output_kind == 256 ? 1 : 3, "Kd assembly error.", line_Kd);
}

template <class Types, class Settings, class Data>
void solver_Newmark<Types, Settings, Data>::compute(Data& data) {
    this->assemble_stiffness(data);
    this->assemble_penalties(data);
    this->assemble_B(data, data.Ms, 1, "Numerical assembly matrix Kd       : %10.2f s.\n", "Kd assembly error.",
                     line_Kd, line_Kd);
    time_loop(data);
}

template <class Types, class Settings, class Data>
void solver_Newmark<Types, Settings, Data>::factorize_combination(Data& data, double k, double m) {
    if (data.error_code) return;
    this->fill_Kf(k, m);
    this->factorize(data);
}

// Newmark on the accelerations. The eliminated rows follow their prescribed
// displacements: their accelerations come from the corrector, and Kd times them goes
// to the free rows.
template <class Types, class Settings, class Data>
void solver_Newmark<Types, Settings, Data>::time_loop(Data& data) {
    if (data.error_code || this->stop_requested(data)) return;
    const Settings& s = settings();
    const std::size_t n = this->total_IDs_->size(), n_free = this->free_IDs_->size();
    const double dt = s.dt, a = dt * s.gamma, b = dt * dt * s.beta, rK = s.rayleigh_K, rM = s.rayleigh_M;
    std::vector<double> u(n, 0.0), v(n, 0.0), acc(n, 0.0), f, r(n, 0.0), us(n, 0.0), vs(n, 0.0), w(n, 0.0);

    // r (free rows) = F - K x - rK K y - rM M y: the loads less the forces of the
    // displacements x and of the damping of the velocities y.
    auto residual = [&](double t, const std::vector<double>& x, const std::vector<double>& y) -> int {
        if (int rc = this->loads_at(t, f)) return rc;
        std::copy(f.begin(), f.begin() + n_free, r.begin());
        std::fill(r.begin() + n_free, r.end(), 0.0);
        for (std::size_t i = 0; i < n; ++i) w[i] = x[i] + rK * y[i];
        int rc = this->add_product(fem::matrix_K, w, r, 1.0);
        if (!rc && rM != 0.0) rc = this->add_product(fem::matrix_M, y, r, rM);
        return rc;
    };

    // Initial state, then the start acceleration from M a = F - K u - C v.
    this->read_initial(data.U_init, 0, u);
    this->read_initial(data.U_init, 1, v);
    if (int rc = this->prescribed_at(s.t_start, u)) return this->set_error(data, rc, "FEM error.", line_loop);
    if (n_free) {
        factorize_combination(data, 0.0, 1.0);
        if (data.error_code) return;
        if (int rc = residual(s.t_start, u, v)) return this->set_error(data, rc, "FEM error.", line_loop);
        this->solve_free(r);
        std::copy(r.begin(), r.begin() + n_free, acc.begin());
    }
    factorize_combination(data, b + a * rK, 1.0 + a * rM);
    if (data.error_code) return;

    const std::size_t per_output = s.output_kind == 256 ? 1 : 3, outputs = this->nbr_outputs_;
    Ptr<states_type> out = this->make_outputs(data, outputs * per_output, line_loop);
    if (data.error_code) return;
    data.times = dense1D<double>(outputs, 0.0);
    std::size_t output = 0;

    this->step(data, data.time_solve, "Resolution transient dynamic       : %10.2f s.\n", [&] {
        for (std::size_t step = 1; step <= this->nbr_steps_; ++step) {
            if (this->stop_requested(data)) return;
            const double t = s.t_start + double(step) * dt;
            for (std::size_t i = 0; i < n; ++i) {
                us[i] = u[i] + dt * v[i] + dt * dt * (0.5 - s.beta) * acc[i];
                vs[i] = v[i] + dt * (1.0 - s.gamma) * acc[i];
            }
            if (int rc = residual(t, us, vs)) return this->set_error(data, rc, "FEM error.", line_loop);
            // The eliminated rows: the accelerations that reach their prescribed values.
            std::vector<double> next(us);
            if (int rc = this->prescribed_at(t, next)) return this->set_error(data, rc, "FEM error.", line_loop);
            std::vector<double> ae(n, 0.0);
            bool moving = false;
            for (std::size_t i = n_free; i < n; ++i) {
                ae[i] = b > 0 ? (next[i] - us[i]) / b : 0.0;
                moving = moving || ae[i] != 0.0;
            }
            if (moving) {
                int rc = this->add_product(fem::matrix_K, ae, r, b + a * rK);
                if (!rc) rc = this->add_product(fem::matrix_M, ae, r, 1.0 + a * rM);
                if (rc) return this->set_error(data, rc, "Solver error.", line_loop);
            }
            this->solve_free(r);
            for (std::size_t i = 0; i < n; ++i) {
                acc[i] = i < n_free ? r[i] : ae[i];
                u[i] = us[i] + b * acc[i];
                v[i] = vs[i] + a * acc[i];
            }
            for (std::size_t i = n_free; i < n; ++i) u[i] = next[i];
            if (!detail::all_finite(u.data(), n) || !detail::all_finite(v.data(), n)) {
                this->log(1, "Time step #%d: INF or NaN detected.\n", int(step));
                return this->set_error(data, fem::error_not_finite, "INF or NaN detected.", line_loop);
            }
            if (this->is_output(step) && output < outputs) {
                data.times[output] = t;
                std::vector<double>* kept[3] = {&u, &v, &acc};
                for (std::size_t k = 0; k < per_output; ++k)
                    out->dense().set_col(output * per_output + k, dense1D<double>(n, kept[k]->data()));
                ++output;
            }
            this->log_step(step, t, output);
        }
    });
    if (data.error_code) return;
    data.U = fem::FEM_states(out.get());
    this->log_end(s.t_start, dt);
}

}  // namespace core
}  // namespace orv
