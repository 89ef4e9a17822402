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
    using base::base;

protected:
    // Loads of the case at time t into f (total index, zeroed first).
    int loads_at(double t, std::vector<double>& f);
    // The prescribed values at time t into the eliminated rows of x.
    int prescribed_at(double t, std::vector<double>& x);
    // r (free rows) += multiplier times the internal vector of matrix_code for x
    // (total index): -multiplier K x, or -multiplier M x.
    int add_product(unsigned matrix_code, const std::vector<double>& x, std::vector<double>& r, double multiplier);
    // Solves with Kf in place on the free rows of x.
    void solve_free(std::vector<double>& x);
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
    DOF_vector X(this->total_IDs_, external_view(const_cast<double*>(x.data()), n));
    DOF_vector target(this->free_IDs_, external_view(r.data(), n_free));
    return this->add_internal_forces(matrix_code, X, target, multiplier, this->stiffness_params(), this->nbr_threads());
}

template <class Types, class Settings, class Data>
void solver_transient_base<Types, Settings, Data>::solve_free(std::vector<double>& x) {
    if (this->free_IDs_->size()) this->Kf_->matrix().solve(x.data(), int(this->nbr_threads()));
}

}  // namespace core
}  // namespace orv
