// Energies and the per-case report of the linear static run.
#pragma once

#include <orv/fem/field_tag.h>
#include "fem/solver_static_linear.h"

namespace orv {
namespace core {

// energy: half the work of the applied loads, 1/2 U . F, or for a case with stresses
// the element energies of the models. strain_energy: 1/2 U^T K U over the total index
// with the stiffness of the models without penalties, imposed DOFs included.
template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::compute_energies(Data& data) {
    const std::size_t n_total = total_IDs_->size();
    const unsigned threads = this->nbr_threads();
    std::vector<double> Ku(detail::has_strain_energy<Data>::value ? n_total : 0);
    for (std::size_t c = 0; c < nbr_cases_; ++c) {
        dense1D<double, 8> u, f;
        if (U_->dense().get_col(c, u) || F_->dense().get_col(c, f)) continue;
        double e = 0.0;
        for (std::size_t i = 0; i < n_total; ++i) e += u[i] * f[i];
        e *= 0.5;
        DOF_vector Uc(total_IDs_, u);
        const stress_super_mgr* stresses = problem_->get_stresses(c);
        if (stresses && !stresses->empty()) {
            matrix_null_assembler none;
            vector_null_assembler no_vector;
            assembly_args args;
            args.params = params_;
            args.matrix_assembler = &none;
            args.vector_assembler = &no_vector;
            args.U = &Uc;
            args.pos = &problem_->get_pos();
            args.stresses = stresses;
            const int rc = model_->assemble_matrix(stiffness_code_, args);
            if (rc) return this->set_error(data, rc, "Solver error.", line_solver);
            e = args.accumulators[0];
        }
        data.energy[c] = e;
        if constexpr (detail::has_strain_energy<Data>::value) {
            // Driven by loads alone (no imposed value other than zero, no penalty, no
            // stress), K U balances F up to reactions that do no work: the strain energy
            // is the half work already at hand, and the element pass is spared.
            if (penalised_.empty() && !(stresses && !stresses->empty()) && !imposes_motion(c, u.data())) {
                data.strain_energy[c] = e;
                continue;
            }
            std::fill(Ku.begin(), Ku.end(), 0.0);
            DOF_vector target(total_IDs_, external_view(Ku.data(), n_total));
            const int rc = add_internal_forces(1, Uc, target, -1.0, stiffness_params(), threads);
            if (rc) return this->set_error(data, rc, "Solver error.", line_solver);
            data.strain_energy[c] = 0.5 * detail::cg_dot(n_total, u.data(), Ku.data());
        }
    }
}

template <class Types, class Settings, class Data>
bool solver_static_linear<Types, Settings, Data>::imposes_motion(std::size_t c, const double* u) const {
    for (std::size_t r = free_IDs_->size(); r < total_IDs_->size(); ++r)
        if (u[r] != 0.0) return true;
    for (const double v : cases_[c].kept_values)
        if (v != 0.0) return true;
    return false;
}

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::report_cases(Data& data) {
    if (!settings().display_hook || !U_ || this->stop_requested(data)) return;
    const std::size_t n = total_IDs_->size();
    for (std::size_t c = 0; c < nbr_cases_; ++c) {
        dense1D<double, 8> u;
        if (U_->dense().get_col(c, u)) continue;
        // Extremes over the displacement (ID % 9 in 0 to 2), rotation (3 to 5) and
        // temperature (6) DOFs; 0 for a kind the case does not have.
        double hi[3] = {0, 0, 0}, lo[3] = {0, 0, 0};
        bool any[3] = {false, false, false};
        for (std::size_t i = 0; i < n; ++i) {
            const unsigned slot = (*total_IDs_)[i] % fem::DOFs_per_node;
            const int g = slot < 3 ? 0 : slot < 6 ? 1 : slot == 6 ? 2 : -1;
            if (g < 0) continue;
            const double v = u[i];
            hi[g] = any[g] ? std::max(hi[g], v) : v;
            lo[g] = any[g] ? std::min(lo[g], v) : v;
            any[g] = true;
        }
        const int k = int(c);
        if (temperatures_) {
            this->log(3, "%3d ||TH||               : %+E\n", k, detail::two_norm(u.data(), n));
            this->log(3, "%3d max temperature      : %+E\n", k, hi[2]);
            this->log(3, "%3d min temperature      : %+E\n", k, lo[2]);
            continue;
        }
        this->log(3, "%3d ||U||                : %+E\n", k, detail::two_norm(u.data(), n));
        this->log(3, "%3d max displacement     : %+E\n", k, hi[0]);
        this->log(3, "%3d min displacement     : %+E\n", k, lo[0]);
        this->log(3, "%3d max rotation         : %+E\n", k, hi[1]);
        this->log(3, "%3d min rotation         : %+E\n", k, lo[1]);
        this->log(3, "%3d elastic energy       : %+E\n", k, c < data.energy.size() ? data.energy[c] : 0.0);
    }
}

}  // namespace core
}  // namespace orv
