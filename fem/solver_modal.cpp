// Modal run: the public handle, its records and the engine instance.
#include "fem/solver_modal.h"

#include <orv/fem/solver_modal.h>

#include <algorithm>

namespace orv {
namespace core {

const solver_identity modal_identity = {"solver_modal", "ORV FEM(R) - MODAL", "fem/solver_modal", 199};

namespace {

typedef solver_modal<OOC_matrix_types, modal_engine_settings, fem::solver_modal::data_type> base_engine;

// The engine keeps its own copy of the settings, refreshed from the handle at each run.
class modal_engine : public base_engine {
public:
    modal_engine() : base_engine(&own_settings_) {}
    void set_settings(const fem::solver_modal::settings_type& s) {
        static_cast<fem::solver_modal::settings_type&>(own_settings_) = s;
    }

private:
    modal_engine_settings own_settings_;
};

}  // namespace

template class solver_modal<OOC_matrix_types, modal_engine_settings, fem::solver_modal::data_type>;

}  // namespace core

namespace fem {

bool solver_modal::settings_type::valid() const {
    return tolerance > 0 && max_iters != 0 && ritz_factor != 0 && max_modes != 0 &&
           std::max(freq_min, 0.0) < freq_max;
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

solver_modal::solver_modal() : settings() { set_w(static_cast<ref_counted*>(new core::modal_engine())); }

void solver_modal::run(data_type& data) {
    core::modal_engine* e = dynamic_cast<core::modal_engine*>(engine());
    if (!e) {
        core::set_error_msg(data, -200, "INTERNAL ERROR", "");
        return;
    }
    e->set_settings(settings);
    e->run(data, static_cast<const problem_data&>(data), data.U_prior, data.F, data.S_modes, data.D_modes, data.Ks,
           data.Ms, data.Kf);
}

}  // namespace fem
}  // namespace orv
