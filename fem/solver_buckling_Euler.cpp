// Buckling run: the public handle, its records and the engine instance.
#include "fem/solver_buckling_Euler.h"

#include <orv/fem/solver_buckling_Euler.h>

namespace orv {
namespace core {

const solver_identity buckling_identity = {"solver_buckling_Euler", "ORV FEM(R) - EULER BUCKLING",
                                           "fem/solver_buckling_euler", 199};

namespace {

typedef solver_buckling_Euler<OOC_matrix_types, buckling_engine_settings, fem::solver_buckling_Euler::data_type>
    base_engine;

typedef handle_engine<base_engine, buckling_engine_settings> buckling_engine;

}  // namespace

template class solver_buckling_Euler<OOC_matrix_types, buckling_engine_settings, fem::solver_buckling_Euler::data_type>;

}  // namespace core

namespace fem {

bool solver_buckling_Euler::settings_type::valid() const {
    return tolerance > 0 && max_iters != 0 && ritz_factor != 0 && lambda_min < lambda_max;
}

const char* solver_buckling_Euler::data_type::invalid_reason() const {
    return problem_data::valid() && nbr_load_cases() != 1 ? "Needs exactly one load case." : nullptr;
}

void solver_buckling_Euler::data_type::clear_data_out() {
    S_modes = FEM_states();
    D_modes = FEM_states();
    Kg = FEM_SymSparse();
    nbr_free_DOFs = nbr_kept_imposed_DOFs = nbr_eliminated_DOFs = nbr_total_DOFs = 0;
    buckling_loads = dense1D<double>();
    energy = dense1D<double>();
    pivot_min = pivot_max = 0.0;
    bad_pivot_DOF = 0xFFFFFFFFu;
    size_RHS = size_Ks = size_Kf = size_U = size_Kg = size_D_modes = size_spare = size_total = 0.0;
    used_out_of_core = false;
    clear_errors();
    time_numbering = time_RHS = time_assembly = time_factor = time_solve = time_total = 0.0;
}

ORV_FEM_HANDLE_IMPL(solver_buckling_Euler, solver_base, core::solver_root)

solver_buckling_Euler::solver_buckling_Euler() : settings() {
    set_w(static_cast<ref_counted*>(new (std::nothrow) core::buckling_engine()));
}

void solver_buckling_Euler::run(data_type& data) {
    core::buckling_engine* e = dynamic_cast<core::buckling_engine*>(engine());
    if (!e) {
        core::set_error_msg(data, fem::error_internal, "INTERNAL ERROR", "");
        return;
    }
    e->set_settings(settings);
    e->run(data, static_cast<const problem_data&>(data), data.U_prior, data.F, data.S_modes, data.D_modes, data.Ks,
           data.Kg, data.Kf);
}

}  // namespace fem
}  // namespace orv
