// Linear static analysis: K U = F for every load case of a problem at once.
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

/// One factorisation and one solve for all load cases. Set `settings`, build a
/// data_type from the problem, call run(), read the results and the error fields from
/// the record. run() never throws.
class solver_static_linear : public solver_base {
public:
    /// Settings of the run; reset() restores the defaults.
    struct settings_type {
        /// Objects the caller supplies in data: 2 F, 16 Ks, 32 Kf.
        std::uint32_t input_mask = 0;
        /// Objects to keep after the run: 2 F, 16 Ks, 32 Kf, 64 U. 0 is a dry run that
        /// only numbers the system and fills the sizes.
        std::uint32_t output_mask = 64;
        /// Non-zero: DOFs that models penalise go through augmented Lagrange
        /// iterations. Zero: only when the assembled Kf is zero throughout.
        std::uint32_t use_ALM = 1;
        /// Iteration limit of the conjugate gradient on DOFs imposed in some cases only.
        std::uint32_t max_iters_CG = 100;
        /// Iteration limit of the augmented Lagrange loop.
        std::uint32_t max_iters_ALM = 50;
        /// Augmented Lagrange tolerance on the energy and constraint changes.
        double tol_ALM = 1E-6;
        /// Conjugate gradient tolerance.
        double tol_CG = 1E-6;
        /// Smallest energy that augmented Lagrange still takes as non-zero.
        double ALM_floor = 1E-16;
        /// Bad pivots replaced (with a warning) instead of stopping the run.
        bool force_positive_pivots = false;
        ORV_FEM_SETTINGS_HOOKS

        settings_type() = default;
        /// Every setting to its default, hooks included.
        void reset() { *this = settings_type(); }
        /// Every combination of these settings is accepted.
        bool valid() const { return true; }
    };

    /// The problem with the inputs and results of one run.
    struct data_type : public problem_data {
        /// Held for the run, read by no step.
        FEM_states U_prior;
        /// Right-hand sides, one column per load case (input with input_mask bit 2).
        FEM_matrix F;
        /// Solution, one column per load case, rows on the IDs of F.
        FEM_states U;
        /// Points at U; a copied record keeps pointing at the U of its source.
        FEM_states* U_view = &U;
        /// Sparse stiffness on the free DOFs (input with bit 16).
        FEM_SymSparse Ks;
        /// Block-skyline factor on the free DOFs (input with bit 32).
        FEM_factor Kf;
        /// Rows of Kf.
        std::uint32_t nbr_free_DOFs = 0;
        /// DOFs imposed in some load cases but not all: they stay in Kf.
        std::uint32_t nbr_kept_imposed_DOFs = 0;
        /// DOFs of U that are not in Kf.
        std::uint32_t nbr_eliminated_DOFs = 0;
        /// Rows of F and U.
        std::uint32_t nbr_total_DOFs = 0;
        /// Energy of each load case as the run reports it: half the work of the applied
        /// loads, 1/2 U . F over all rows of F (the reactions at imposed DOFs do no work
        /// here, so a model driven only by imposed values reports 0). For a case with a
        /// stress manager, the elastic energy summed over the elements instead.
        dense1D<double> energy;
        /// Cleared by each run; filled by no step of this run (later runs may use them).
        dense1D<unsigned int> spare_counts;
        /// Cleared by each run; set by no step of this run.
        std::uint32_t spare_counter = 0;
        /// Smallest and largest pivot of the factorisation.
        double pivot_min = 0.0;
        /// Largest pivot of the factorisation.
        double pivot_max = 0.0;
        /// DOF ID at the worst pivot, 0xFFFFFFFF if none.
        std::uint32_t bad_pivot_DOF = 0xFFFFFFFFu;
        /// Sizes in MB.
        double size_RHS = 0.0;
        /// Size of Ks in MB.
        double size_Ks = 0.0;
        /// Size of Kf in MB.
        double size_Kf = 0.0;
        /// Size of U in MB.
        double size_U = 0.0;
        /// Work arrays of the factorisation of Kf (held while it runs); the size gate
        /// counts them on top of size_total when Kf is factored.
        double size_spare = 0.0;
        /// Sum of the sizes the run allocates, compared with the context's limit, in MB.
        double size_total = 0.0;
        /// The out-of-core manager opened at least one file during the run.
        bool used_out_of_core = false;
        ORV_FEM_DATA_ERRORS
        /// Step times in seconds, accumulated over the run.
        double time_numbering = 0.0;
        /// Time of the right-hand sides.
        double time_RHS = 0.0;
        /// Time of the assembly of Ks and Kf, penalties included.
        double time_assembly = 0.0;
        /// Time of the factorisation.
        double time_factor = 0.0;
        /// Time of the solve and the outputs.
        double time_solve = 0.0;
        /// Time of the whole run.
        double time_total = 0.0;
        /// Strain energy of each load case, 1/2 U^T K U over the whole model with the
        /// imposed DOFs included, K being the stiffness of the models without penalty
        /// terms: the energy stored by a model driven by imposed displacements.
        dense1D<double> strain_energy;

        data_type() = default;
        /// Shares the problem; every output default-constructed.
        explicit data_type(const problem_data& problem) : problem_data(problem) {}
        /// Shares the problem and the result matrices of another record.
        data_type(const data_type&) = default;
        /// Shares the problem and the result matrices of another record.
        data_type& operator=(const data_type&) = default;
        ~data_type() override = default;

        /// The problem names a model of its context.
        bool valid() const { return problem_data::valid(); }
        /// Outputs to their empty state; F, Ks and Kf (which can be inputs) are left.
        void clear_data_out();
    };

    ORV_FEM_HANDLE(solver_static_linear, core::solver_root)

    solver_static_linear();
    /// Runs the analysis on data; never throws, failures go to data's error fields.
    void run(data_type& data);

    /// The settings of the next run.
    settings_type settings;
};

}  // namespace fem
}  // namespace orv
