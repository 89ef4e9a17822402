// Engine base of the runs that step in time on the pencil of K and a second matrix B
// (the transient heat run, the Newmark run): the one load case at a time through
// its evolution functions, the prescribed values at a time, products by the models'
// matrices, and solves with the factor, all on states over the total index (the free
// rows first, then the eliminated ones).
#pragma once

#include <cmath>
#include <cstddef>
#include <vector>

#include "fem/solver_pencil_base.h"

namespace orv {
namespace core {

template <class Types, class Settings, class Data>
class solver_transient_base : public solver_pencil_base<Types, Settings, Data> {
    typedef solver_pencil_base<Types, Settings, Data> base;

public:
    typedef typename base::sparse_type sparse_type;
    // B_label, Kf_label: the size lines of B and of the factor in the log.
    solver_transient_base(const Settings* settings, const solver_identity& id, const char* B_label,
                          const char* Kf_label)
        : base(settings, id, B_label), Kf_label_(Kf_label) {}

protected:
    // The size of the outputs in the record.
    virtual double& size_of_outputs(Data& data) = 0;

    void log_sizes(Data& data) override {
        base::log_sizes(data);
        this->log_size(2, Kf_label_, static_cast<unsigned long long>(this->Kf_profile_), data.size_Kf);
        const double outputs = size_of_outputs(data);
        this->log_size(2,
                       "  Size matrix outputs    : ", static_cast<unsigned long long>(outputs * 1048576.0 / 8.0 + 0.5),
                       outputs);
    }
    double needed_size(Data& data) override {
        const double need = base::needed_size(data);
        data.size_total += size_of_outputs(data);
        return need + size_of_outputs(data);
    }
    // The steps, the numbering with B on matrix_code, and the size of the outputs of
    // per_output columns each; the loop keeps its own states (no F, no U).
    void number_for_steps(Data& data, unsigned matrix_code, std::size_t per_output, const char* error_text, int line) {
        const Settings& s = this->settings();
        plan_steps(s.t_start, s.t_end, s.dt, s.output_period, s.output_kind);
        this->number_with_B(data, matrix_code, true, false, error_text, line);
        this->need_U_ = this->need_F_ = false;
        if (data.error_code) return;
        size_of_outputs(data) = double(this->total_IDs_->size()) * double(nbr_outputs_ * per_output) * 8.0 / 1048576.0;
    }

    // The steps and outputs of a run over [t_start, t_end] by dt: output kinds 256 and
    // 512 keep every period-th step, any other kind the last step only.
    void plan_steps(double t_start, double t_end, double dt, unsigned period, unsigned kind) {
        nbr_steps_ = std::size_t(std::nearbyint((t_end - t_start) / dt));
        every_ = kind == 256 || kind == 512 ? period : 0;
        nbr_outputs_ = every_ ? nbr_steps_ / every_ : 1;
    }
    bool is_output(std::size_t step) const { return every_ ? step % every_ == 0 : step == nbr_steps_; }
    // The line of a step: with its output number when it is an output.
    void log_step(std::size_t step, double t, std::size_t output) {
        if (is_output(step))
            this->log(3, "** Time step #%d (t = %E), Output #%d\n", int(step), t, int(output));
        else
            this->log(3, "** Time step #%d (t = %E)\n", int(step), t);
    }
    // The end lines of the time loop.
    void log_end(double t_start, double dt) {
        this->log(1, "Steps                              : %10u\n", unsigned(nbr_steps_));
        this->log(1, "Final time                         : %E\n", t_start + double(nbr_steps_) * dt);
    }
    // Column col of an initial state given by IDs into the free rows of x (rows the
    // state lacks stay as they are).
    void read_initial(const fem::FEM_states& init, std::size_t col, std::vector<double>& x) const {
        const FEM_states_engine* e = init.engine();
        if (!e || col >= e->dense().cols()) return;
        for (std::size_t i = 0; i < this->free_IDs_->size(); ++i) {
            const std::uint32_t row = e->row_of((*this->total_IDs_)[i]);
            double value = 0.0;
            if (row != FEM_states_engine::npos && e->dense().get_val(row, col, value) == 0) x[i] = value;
        }
    }
    // Output states of `columns` columns over the total index; null (error set) when
    // memory fails.
    Ptr<typename base::states_type> make_outputs(Data& data, std::size_t columns, int line) {
        Ptr<typename base::states_type> out(new typename base::states_type());
        context_type* ctx = this->context();
        if (out->init(this->total_IDs_, columns, 0.0, Ptr<OOC_mgr>(ctx ? ctx->OOC() : nullptr))) {
            this->set_error(data, fem::error_memory, "Matrix allocation error.", line);
            return Ptr<typename base::states_type>();
        }
        return out;
    }

    // Loads of the case at time t into f (total index, zeroed first).
    int loads_at(double t, std::vector<double>& f);
    // The prescribed values at time t into the eliminated rows of x.
    int prescribed_at(double t, std::vector<double>& x);
    // r (free rows) += multiplier times the internal vector of matrix_code for x
    // (total index): -multiplier K x, or -multiplier M x.
    int add_product(unsigned matrix_code, const std::vector<double>& x, std::vector<double>& r, double multiplier);
    // Solves with Kf in place on the free rows of x.
    void solve_free(std::vector<double>& x);

    const char* Kf_label_;
    std::size_t nbr_steps_ = 0, nbr_outputs_ = 0, every_ = 1;
};

template <class Types, class Settings, class Data>
int solver_transient_base<Types, Settings, Data>::loads_at(double t, std::vector<double>& f) {
    const std::size_t n = this->total_IDs_->size();
    f.assign(n, 0.0);
    const loads_mgr* loads = this->problem_->get_loads(0);
    if (!loads || n == 0) return 0;
    DOF_vector target(this->total_IDs_, external_view(f.data(), n));
    vector_assembler<double> va(target, 1.0);
    assembly_args args;
    args.params = this->params_;
    args.params.time = t;
    args.params.nbr_threads = this->nbr_threads();
    args.vector_assembler = &va;
    args.pos = &this->problem_->get_pos();
    return loads->assemble(args);
}

template <class Types, class Settings, class Data>
int solver_transient_base<Types, Settings, Data>::prescribed_at(double t, std::vector<double>& T) {
    const loads_mgr* loads = this->problem_->get_loads(0);
    if (!loads) return 0;
    std::vector<std::pair<std::uint32_t, double>> values;
    loads->get_prescribed_values(t, values);
    const std::size_t n_free = this->free_IDs_->size();
    for (const auto& iv : values) {
        if (!std::isfinite(iv.second)) return fem::error_not_finite;
        const std::uint32_t r = this->total_IDs_->find(iv.first);
        if (r != DOF_index::npos && r >= n_free) T[r] = iv.second;
    }
    return 0;
}

template <class Types, class Settings, class Data>
int solver_transient_base<Types, Settings, Data>::add_product(unsigned matrix_code, const std::vector<double>& x,
                                                              std::vector<double>& r, double multiplier) {
    const std::size_t n = this->total_IDs_->size(), n_free = this->free_IDs_->size();
    // The free columns by the assembled matrix (Ks or B), the eliminated ones by the
    // models, only when they hold values: a step costs a sparse product, not an
    // assembly.
    const sparse_type* S = matrix_code == this->stiffness_code_ ? this->Ks_.get()
                           : matrix_code == this->B_code_       ? this->B_.get()
                                                                : nullptr;
    std::vector<double> eliminated;
    const std::vector<double>* by_models = &x;
    if (S && n_free) {
        std::vector<double> y(n_free, 0.0);
        pencil_detail::sparse_mult_add(S->matrix(), x.data(), y.data());
        for (std::size_t i = 0; i < n_free; ++i) r[i] -= multiplier * y[i];
        bool any = false;
        for (std::size_t i = n_free; i < n && !any; ++i) any = x[i] != 0.0;
        if (!any) return 0;
        eliminated.assign(n, 0.0);
        std::copy(x.begin() + n_free, x.end(), eliminated.begin() + n_free);
        by_models = &eliminated;
    }
    DOF_vector X(this->total_IDs_, external_view(const_cast<double*>(by_models->data()), n));
    DOF_vector target(this->free_IDs_, external_view(r.data(), n_free));
    return this->add_internal_forces(matrix_code, X, target, multiplier, this->stiffness_params(), this->nbr_threads());
}

template <class Types, class Settings, class Data>
void solver_transient_base<Types, Settings, Data>::solve_free(std::vector<double>& x) {
    if (this->free_IDs_->size()) this->Kf_->matrix().solve(x.data(), int(this->nbr_threads()));
}

}  // namespace core
}  // namespace orv
