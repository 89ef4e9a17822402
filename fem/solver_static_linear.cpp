// Linear static run: the public handle, its records and the helpers of the engine.
#include "fem/solver_static_linear.h"
#include <orv/fem/error_type.h>

#include <orv/fem/solver_heat_static_linear.h>
#include <orv/fem/solver_static_linear.h>

#include <algorithm>
#include <cmath>
#include <new>
#include <vector>

namespace orv {
namespace core {

const solver_identity static_linear_identity = {"solver_static_linear", "ORV FEM(R) - STATIC LINEAR",
                                                "fem/solver_static_linear", 199};
const solver_identity heat_static_identity = {"solver_heat_static_linear", "ORV FEM(R) - THERMAL STATIC LINEAR",
                                              "fem/solver_heat_static_linear", 199};

namespace {

typedef solver_static_linear<OOC_matrix_types, fem::solver_static_linear::settings_type,
                             fem::solver_static_linear::data_type>
    base_engine;

typedef handle_engine<base_engine, fem::solver_static_linear::settings_type> static_linear_engine;

// The steady heat run: the same engine on the conduction matrix, its solution
// reported as temperatures.
class heat_static_engine : public static_linear_engine {
public:
    heat_static_engine() {
        set_identity(heat_static_identity);
        stiffness_code_ = fem::matrix_conduction;
        temperatures_ = true;
    }
};

}  // namespace

template class solver_static_linear<OOC_matrix_types, fem::solver_static_linear::settings_type,
                                    fem::solver_static_linear::data_type>;

}  // namespace core

namespace fem {

void solver_static_linear::data_type::clear_data_out() {
    U = FEM_states();
    nbr_free_DOFs = nbr_kept_imposed_DOFs = nbr_eliminated_DOFs = nbr_total_DOFs = 0;
    energy = dense1D<double>();
    spare_counts = dense1D<unsigned int>();
    spare_counter = 0;
    strain_energy = dense1D<double>();
    pivot_min = pivot_max = 0.0;
    bad_pivot_DOF = 0xFFFFFFFFu;
    size_RHS = size_Ks = size_Kf = size_U = size_spare = size_total = 0.0;
    used_out_of_core = false;
    clear_errors();
    time_numbering = time_RHS = time_assembly = time_factor = time_solve = time_total = 0.0;
}

ORV_FEM_HANDLE_IMPL(solver_static_linear, solver_base, core::solver_root)

solver_static_linear::solver_static_linear() : settings() {
    set_w(static_cast<ref_counted*>(new core::static_linear_engine()));
}

void solver_static_linear::run(data_type& data) {
    core::static_linear_engine* e = dynamic_cast<core::static_linear_engine*>(engine());
    if (!e) {
        core::set_error_msg(data, fem::error_internal, "INTERNAL ERROR", "");
        return;
    }
    e->set_settings(settings);
    e->run(data, static_cast<const problem_data&>(data), data.U_prior, data.F, data.U, data.Ks, data.Kf);
}

ORV_FEM_HANDLE_IMPL(solver_heat_static_linear, solver_base, core::solver_root)

solver_heat_static_linear::solver_heat_static_linear() : settings() {
    set_w(static_cast<ref_counted*>(new (std::nothrow) core::heat_static_engine()));
}

void solver_heat_static_linear::run(data_type& data) {
    core::heat_static_engine* e = dynamic_cast<core::heat_static_engine*>(engine());
    if (!e) {
        core::set_error_msg(data, fem::error_internal, "INTERNAL ERROR", "");
        return;
    }
    e->set_settings(settings);
    e->run(data, static_cast<const problem_data&>(data), data.U_prior, data.F, data.U, data.Ks, data.Kf);
}

}  // namespace fem
}  // namespace orv
