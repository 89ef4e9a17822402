// Newmark run: the public handle, its records and the engine instance.
#include "fem/solver_Newmark.h"

#include <orv/fem/solver_Newmark.h>

#include <cmath>
#include <new>

namespace orv {
namespace core {

const solver_identity Newmark_identity = {"solver_Newmark", "ORV FEM(R) - LINEAR NEWMARK", "fem/solver_newmark", 199};

namespace {

typedef solver_Newmark<OOC_matrix_types, Newmark_engine_settings, fem::solver_Newmark::data_type> base_engine;

typedef handle_engine<base_engine, Newmark_engine_settings> Newmark_engine;

}  // namespace

template class solver_Newmark<OOC_matrix_types, Newmark_engine_settings, fem::solver_Newmark::data_type>;

}  // namespace core

namespace fem {

bool solver_Newmark::settings_type::valid() const {
    return std::isfinite(t_start) && std::isfinite(t_end) && t_end > t_start && std::isfinite(dt) && dt > 0 &&
           std::isfinite(beta) && beta >= 0 && std::isfinite(gamma) && gamma > 0 && output_period != 0;
}

const char* solver_Newmark::data_type::invalid_reason() const {
    return problem_data::valid() && nbr_load_cases() != 1 ? "Needs exactly one load case." : nullptr;
}

void solver_Newmark::data_type::clear_data_out() {
    U = FEM_states();
    Ms = FEM_SymSparse();
    times = dense1D<double>();
    energy = dense1D<double>();
    nbr_free_DOFs = nbr_kept_imposed_DOFs = nbr_eliminated_DOFs = nbr_total_DOFs = 0;
    pivot_min = pivot_max = 0.0;
    bad_pivot_DOF = 0xFFFFFFFFu;
    size_RHS = size_Ks = size_Kf = size_U = size_Ms = size_outputs = size_spare = size_total = 0.0;
    used_out_of_core = false;
    clear_errors();
    time_numbering = time_RHS = time_assembly = time_factor = time_solve = time_total = 0.0;
}

ORV_FEM_HANDLE_IMPL(solver_Newmark, solver_base, core::solver_root)

solver_Newmark::solver_Newmark() : settings() {
    set_w(static_cast<ref_counted*>(new (std::nothrow) core::Newmark_engine()));
}

void solver_Newmark::run(data_type& data) {
    core::Newmark_engine* e = dynamic_cast<core::Newmark_engine*>(engine());
    if (!e) {
        core::set_error_msg(data, fem::error_internal, "INTERNAL ERROR", "");
        return;
    }
    e->set_settings(settings);
    e->run(data, static_cast<const problem_data&>(data), data.U_init, data.F, data.U, data.Ks, data.Ms, data.Kf);
}

}  // namespace fem
}  // namespace orv
