// Transient heat: M dT/dt + K T = Q(t) integrated in time by the theta scheme, M the
// capacity (matrix code 6), K the conduction and convection (matrix code 5) of the
// heat models, Q(t) the loads of the one load case with their evolution functions at
// each time, prescribed temperatures held at their values at each time.
#pragma once

#include <cfloat>
#include <cstdint>

#include <orv/fem/FEM_SymSparse.h>
#include <orv/fem/FEM_factor.h>
#include <orv/fem/FEM_matrix.h>
#include <orv/fem/problem_data.h>
#include <orv/fem/solver_base.h>

#include <orvmath1/dense1D.h>

namespace orv {
namespace core {
class solver_root;
}
namespace fem {

/// Set `settings`, build a data_type from a problem with one load case, give the
/// initial temperatures in T_init when they are not 0, call run(), read the
/// temperatures of the output steps in T and their times in `times`. run() never
/// throws.
///
/// Step s sits at t = t_start + s dt, s from 1 to the nearest integer to
/// (t_end - t_start) / dt. With a = dt theta, each step solves (M + a K) T' =
/// Q(t_s) - K (T + dt (1 - theta) T'_prev) for the rate T' and moves
/// T += dt ((1 - theta) T'_prev + theta T'); the start rate solves M T'_0 = Q(t_start) -
/// K T_0 (not needed with theta = 1). The factor of M + a K serves every step.
class solver_heat_dynamic_linear : public solver_base {
public:
    /// Settings of a transient heat run, in their fixed order.
    struct settings_type {
        /// Objects the caller supplies in data: none is read.
        std::uint32_t input_mask = 0;
        /// Objects to keep: 16 K and M, 32 the factor, 64 the temperatures of the outputs.
        std::uint32_t output_mask = 64;
        /// Start and end of the time range, and the step.
        double t_start = 0.0;
        double t_end = 0.0;  ///< end of the time range
        double dt = 0.0;     ///< time step
        /// 0 explicit (M alone in the factor), 1/2 Crank-Nicolson, 1 fully implicit.
        double theta = 0.5;
        /// Kept with the settings; read by no step.
        std::uint64_t reserved = 2;
        /// Every output_period-th step is an output.
        std::uint32_t output_period = 1;
        /// 256: the temperatures of the outputs in T; 512: also their rates in dT; any
        /// other value: the temperatures of the last step only.
        std::uint32_t output_kind = 256;
        ORV_FEM_SETTINGS_HOOKS

        settings_type() = default;
        void reset() { *this = settings_type(); }  ///< back to the defaults
        /// t_start finite; t_end finite and above t_start; dt finite and above 0;
        /// theta finite in [0, 1]; output_period non-zero.
        bool valid() const;
    };

    /// Problem, inputs and results of a transient heat run.
    struct data_type : public problem_data {
        /// Initial temperatures, one column by DOF ID (a missing row is 0); prescribed
        /// temperatures take their values at t_start instead.
        FEM_states T_init;
        /// The loads at the last step assembled, one column.
        FEM_matrix F;
        /// Temperatures of the output steps, one column each, rows on all DOFs.
        FEM_states T;
        /// Rates dT/dt of the output steps (output_kind 512).
        FEM_states dT;
        /// Conduction and capacity on the free DOFs.
        FEM_SymSparse Ks;
        FEM_SymSparse Md;  ///< heat capacity on the free DOFs
        /// The factor of M + dt theta K.
        FEM_factor Kf;
        /// Time of each output column.
        dense1D<double> times;
        /// Unused: a heat run has no energy.
        dense1D<double> energy;
        /// As in the linear static run.
        std::uint32_t nbr_free_DOFs = 0;
        std::uint32_t nbr_kept_imposed_DOFs = 0;  ///< always 0: prescribed temperatures are eliminated
        std::uint32_t nbr_eliminated_DOFs = 0;    ///< DOFs of the rows that are not in Kf
        std::uint32_t nbr_total_DOFs = 0;         ///< rows of the outputs
        /// Smallest and largest pivot of the factorisation, the DOF of the worst.
        double pivot_min = 0.0;
        double pivot_max = 0.0;                     ///< largest pivot
        std::uint32_t bad_pivot_DOF = 0xFFFFFFFFu;  ///< DOF ID at the worst pivot, 0xFFFFFFFF if none
        /// Sizes in MB.
        double size_RHS = 0.0;
        double size_Ks = 0.0;           ///< sparse conduction
        double size_Kf = 0.0;           ///< block-skyline factor
        double size_U = 0.0;            ///< one state
        double size_Md = 0.0;           ///< sparse capacity
        double size_outputs = 0.0;      ///< the output columns
        double size_spare = 0.0;        ///< work arrays of the factorisation
        double size_total = 0.0;        ///< sum the size gate compares with the limit
        bool used_out_of_core = false;  ///< the out-of-core manager opened a file during the run
        ORV_FEM_DATA_ERRORS
        /// Step times in seconds, accumulated over the run.
        double time_numbering = 0.0;
        double time_RHS = 0.0;       ///< loads of the steps
        double time_assembly = 0.0;  ///< assembly of K, M and the factor's matrix
        double time_factor = 0.0;    ///< factorisations
        double time_solve = 0.0;     ///< the time loop
        double time_total = 0.0;     ///< whole run

        data_type() = default;
        /// Shares the problem; every output default-constructed.
        explicit data_type(const problem_data& problem) : problem_data(problem) {}

        /// The problem names a model of its context and has exactly one load case.
        bool valid() const { return problem_data::valid() && nbr_load_cases() == 1; }
        /// What makes the record invalid, null when it is valid or the problem is.
        const char* invalid_reason() const;
        /// Outputs to their empty state.
        void clear_data_out();
    };

    ORV_FEM_HANDLE(solver_heat_dynamic_linear, core::solver_root)

    solver_heat_dynamic_linear();
    /// Runs the analysis on data; never throws, failures go to its error fields.
    void run(data_type& data);

    /// Settings of the next run.
    settings_type settings;
};

}  // namespace fem
}  // namespace orv
