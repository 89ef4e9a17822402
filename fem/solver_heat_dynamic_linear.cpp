// Transient heat run: the public handle, its records and the engine instance.
#include "fem/solver_heat_dynamic_linear.h"

#include <orv/fem/solver_heat_dynamic_linear.h>

#include <cmath>
#include <new>

namespace orv {
namespace core {

const solver_identity heat_dynamic_identity = {"solver_heat_dynamic_linear", "ORV FEM(R) - HEAT DYNAMIC LINEAR",
                                               "fem/solver_heat_dynamic_linear", 199};

namespace {

typedef solver_heat_dynamic_linear<OOC_matrix_types, heat_dynamic_engine_settings,
                                   fem::solver_heat_dynamic_linear::data_type>
    base_engine;

typedef handle_engine<base_engine, heat_dynamic_engine_settings> heat_dynamic_engine;

}  // namespace

template class solver_heat_dynamic_linear<OOC_matrix_types, heat_dynamic_engine_settings,
                                          fem::solver_heat_dynamic_linear::data_type>;

}  // namespace core

namespace fem {

bool solver_heat_dynamic_linear::settings_type::valid() const {
    return std::isfinite(t_start) && std::isfinite(t_end) && t_end > t_start && std::isfinite(dt) && dt > 0 &&
           std::isfinite(theta) && theta >= 0 && theta <= 1 && output_period != 0;
}

const char* solver_heat_dynamic_linear::data_type::invalid_reason() const {
    return problem_data::valid() && nbr_load_cases() != 1 ? "Needs exactly one load case." : nullptr;
}

void solver_heat_dynamic_linear::data_type::clear_data_out() {
    T = FEM_states();
    dT = FEM_states();
    Md = FEM_SymSparse();
    times = dense1D<double>();
    energy = dense1D<double>();
    nbr_free_DOFs = nbr_kept_imposed_DOFs = nbr_eliminated_DOFs = nbr_total_DOFs = 0;
    pivot_min = pivot_max = 0.0;
    bad_pivot_DOF = 0xFFFFFFFFu;
    size_RHS = size_Ks = size_Kf = size_U = size_Md = size_outputs = size_spare = size_total = 0.0;
    used_out_of_core = false;
    clear_errors();
    time_numbering = time_RHS = time_assembly = time_factor = time_solve = time_total = 0.0;
}

ORV_FEM_HANDLE_IMPL(solver_heat_dynamic_linear, solver_base, core::solver_root)

solver_heat_dynamic_linear::solver_heat_dynamic_linear() : settings() {
    set_w(static_cast<ref_counted*>(new (std::nothrow) core::heat_dynamic_engine()));
}

void solver_heat_dynamic_linear::run(data_type& data) {
    core::heat_dynamic_engine* e = dynamic_cast<core::heat_dynamic_engine*>(engine());
    if (!e) {
        core::set_error_msg(data, fem::error_internal, "INTERNAL ERROR", "");
        return;
    }
    e->set_settings(settings);
    e->run(data, static_cast<const problem_data&>(data), data.T_init, data.F, data.T, data.Ks, data.Md, data.Kf);
}

}  // namespace fem
}  // namespace orv
