// Linear transient dynamics: M a + C v + K u = F(t) integrated in time by Newmark's
// scheme on the accelerations, with Rayleigh damping C = rayleigh_K K + rayleigh_M M,
// F(t) the loads of the one load case with their evolution functions at each time and
// prescribed displacements following theirs.
#pragma once

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
/// initial displacements (and velocities) in U_init when they are not 0, call run(),
/// read the outputs and their times. run() never throws.
///
/// Step s sits at t = t_start + s dt, s from 1 to the nearest integer to
/// (t_end - t_start) / dt. With a = dt gamma and b = dt^2 beta, every step predicts
/// u* = u + dt v + dt^2 (1/2 - beta) a_prev and v* = v + dt (1 - gamma) a_prev, solves
/// Kd a = F(t) - K u* - C v* with Kd = (b + a rayleigh_K) K + (1 + a rayleigh_M) M
/// (one factor for every step), and corrects u = u* + b a, v = v* + a a. The start
/// acceleration solves M a_0 = F(t_start) - K u_0 - C v_0.
class solver_Newmark : public solver_base {
public:
    /// Settings of a Newmark run, in their fixed order.
    struct settings_type {
        /// Objects the caller supplies in data: none is read.
        std::uint32_t input_mask = 0;
        /// Objects to keep: 16 Kd, 32 the factor, 64 the outputs.
        std::uint32_t output_mask = 64;
        /// Start and end of the time range, and the step.
        double t_start = 0.0;
        double t_end = 0.0;  ///< end of the time range
        double dt = 0.0;     ///< time step
        /// Newmark's parameters: 1/4 and 1/2 are the average acceleration, unconditionally
        /// stable and without numerical damping.
        double beta = 0.25;
        double gamma = 0.5;  ///< Newmark gamma
        /// Rayleigh damping C = rayleigh_K K + rayleigh_M M.
        double rayleigh_K = 0.0;
        double rayleigh_M = 0.0;  ///< mass factor of Rayleigh damping
        /// Kept with the settings; read by no step.
        std::uint32_t reserved = 0;
        /// Every output_period-th step is an output.
        std::uint32_t output_period = 1;
        /// 256: the displacements of the outputs, one column each; 512: displacements,
        /// velocities and accelerations, three columns each in that order; any other
        /// value: the three of the last step only.
        std::uint32_t output_kind = 256;
        ORV_FEM_SETTINGS_HOOKS

        settings_type() = default;
        void reset() { *this = settings_type(); }  ///< back to the defaults
        /// t_start finite; t_end finite and above t_start; dt finite and above 0; beta
        /// finite and >= 0; gamma finite and above 0; output_period non-zero.
        bool valid() const;
    };

    /// Problem, inputs and results of a Newmark run.
    struct data_type : public problem_data {
        /// Initial state by DOF ID: column 0 the displacements, column 1 (when there is
        /// one) the velocities; a missing row is 0. Prescribed DOFs take their values at
        /// t_start instead.
        FEM_states U_init;
        /// The loads at the last step assembled (not kept).
        FEM_matrix F;
        /// The outputs (see output_kind), rows on all DOFs.
        FEM_states U;
        /// Stiffness and mass on the free DOFs.
        FEM_SymSparse Ks;
        FEM_SymSparse Ms;  ///< mass on the free DOFs
        /// The factor of Kd.
        FEM_factor Kf;
        /// Time of each output step (one entry per step, whatever its columns).
        dense1D<double> times;
        /// Unused: kept for the shape of the static record.
        dense1D<double> energy;
        /// As in the linear static run.
        std::uint32_t nbr_free_DOFs = 0;
        std::uint32_t nbr_kept_imposed_DOFs = 0;  ///< always 0: prescribed values are eliminated
        std::uint32_t nbr_eliminated_DOFs = 0;    ///< DOFs of the rows that are not in Kf
        std::uint32_t nbr_total_DOFs = 0;         ///< rows of the outputs
        /// Smallest and largest pivot of the factorisation, the DOF of the worst.
        double pivot_min = 0.0;
        double pivot_max = 0.0;                     ///< largest pivot
        std::uint32_t bad_pivot_DOF = 0xFFFFFFFFu;  ///< DOF ID at the worst pivot, 0xFFFFFFFF if none
        /// Sizes in MB.
        double size_RHS = 0.0;
        double size_Ks = 0.0;           ///< sparse stiffness
        double size_Kf = 0.0;           ///< block-skyline factor of Kd
        double size_U = 0.0;            ///< one state
        double size_Ms = 0.0;           ///< sparse mass
        double size_outputs = 0.0;      ///< the output columns
        double size_spare = 0.0;        ///< work arrays of the factorisation
        double size_total = 0.0;        ///< sum the size gate compares with the limit
        bool used_out_of_core = false;  ///< the out-of-core manager opened a file during the run
        ORV_FEM_DATA_ERRORS
        /// Step times in seconds, accumulated over the run.
        double time_numbering = 0.0;
        double time_RHS = 0.0;       ///< loads of the steps
        double time_assembly = 0.0;  ///< assembly of K, M and Kd
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

    ORV_FEM_HANDLE(solver_Newmark, core::solver_root)

    solver_Newmark();
    /// Runs the analysis on data; never throws, failures go to its error fields.
    void run(data_type& data);

    /// Settings of the next run.
    settings_type settings;
};

}  // namespace fem
}  // namespace orv
