// Linear (Euler) buckling: the load factors lambda and modes x of K x = -lambda Kg x,
// Kg being the geometric stiffness of the stresses of one static load case.
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

/// Set `settings`, build a data_type from a problem with exactly one load case (the
/// reference load), call run(), read the buckling loads and modes and the error fields
/// from the record. The critical load of the structure is lambda times the reference
/// load. run() never throws.
class solver_buckling_Euler : public solver_base {
public:
    /// Settings of a buckling run, in their fixed order.
    struct settings_type {
        /// Objects the caller supplies in data: 2 F.
        std::uint32_t input_mask = 0;
        /// Objects to keep after the run: 2 F, 16 Ks and Kg, 32 Kf (the factor last
        /// used, shifted), 64 the static solution, 128 the buckling modes. 0 is a dry run.
        std::uint32_t output_mask = 192;
        /// The range of load factors; either end may be negative, and an end at +-DBL_MAX
        /// is open.
        double lambda_min = 0.0;
        double lambda_max = DBL_MAX;  ///< upper end of the range of load factors
        /// Most buckling modes to compute.
        std::uint32_t max_modes = 1;
        /// Size of the Ritz space as a factor on max_modes (2 at least).
        std::uint32_t ritz_factor = 16;
        /// Cap of the eigen iterations and their convergence threshold.
        std::uint32_t max_iters = 50;
        double tolerance = 0.001;  ///< convergence threshold of the eigen iterations
        /// 1: modes of unit |x^T Kg x|; 0: of unit Euclidean norm.
        std::uint32_t mode_scaling = 1;
        ORV_FEM_SETTINGS_HOOKS

        settings_type() = default;
        void reset() { *this = settings_type(); }  ///< back to the defaults
        /// tolerance > 0, max_iters and ritz_factor non-zero, lambda_min < lambda_max.
        bool valid() const;
    };

    /// Problem, inputs and results of a buckling run.
    struct data_type : public problem_data {
        /// Held for the run, read by no step.
        FEM_states U_prior;
        /// The reference load, one column (input with bit 2).
        FEM_matrix F;
        /// The static solution of the reference load, whose stresses make Kg.
        FEM_states S_modes;
        /// Buckling modes, one column per mode by ascending load factor; the rows are
        /// those of S_modes.
        FEM_states D_modes;
        /// Stiffness and geometric stiffness on the free DOFs.
        FEM_SymSparse Ks;
        FEM_SymSparse Kg;  ///< geometric stiffness of the static stresses on the free DOFs
        /// The factor last computed: K + s Kg with the shift s of the run.
        FEM_factor Kf;
        /// As in the linear static run.
        std::uint32_t nbr_free_DOFs = 0;
        std::uint32_t nbr_kept_imposed_DOFs = 0;  ///< DOFs imposed in some load cases only, kept in Kf
        std::uint32_t nbr_eliminated_DOFs = 0;    ///< DOFs of the rows that are not in Kf
        std::uint32_t nbr_total_DOFs = 0;         ///< rows of F and of the modes
        /// The load factor of each mode, ascending.
        dense1D<double> buckling_loads;
        /// Energy of the static solution, 1/2 u . F.
        dense1D<double> energy;
        /// Smallest and largest pivot of the last factorisation, the DOF of the worst.
        double pivot_min = 0.0;
        double pivot_max = 0.0;                     ///< largest pivot
        std::uint32_t bad_pivot_DOF = 0xFFFFFFFFu;  ///< DOF ID at the worst pivot, 0xFFFFFFFF if none
        /// Sizes in MB.
        double size_RHS = 0.0;
        double size_Ks = 0.0;           ///< sparse stiffness
        double size_Kf = 0.0;           ///< block-skyline factor
        double size_U = 0.0;            ///< static solution
        double size_Kg = 0.0;           ///< sparse geometric stiffness
        double size_D_modes = 0.0;      ///< the Ritz space of the buckling modes
        double size_spare = 0.0;        ///< work arrays of the factorisation
        double size_total = 0.0;        ///< sum the size gate compares with the limit
        bool used_out_of_core = false;  ///< the out-of-core manager opened a file during the run
        ORV_FEM_DATA_ERRORS
        /// Step times in seconds, accumulated over the run.
        double time_numbering = 0.0;
        double time_RHS = 0.0;       ///< right-hand sides
        double time_assembly = 0.0;  ///< assembly of Ks, Kf and Kg
        double time_factor = 0.0;    ///< factorisations and Sturm counts
        double time_solve = 0.0;     ///< static solve and eigen stage
        double time_total = 0.0;     ///< whole run

        data_type() = default;
        /// Shares the problem; every output default-constructed.
        explicit data_type(const problem_data& problem) : problem_data(problem) {}

        /// The problem names a model of its context and has exactly one load case.
        bool valid() const { return problem_data::valid() && nbr_load_cases() == 1; }
        /// What makes the record invalid, null when it is valid or the problem is.
        const char* invalid_reason() const;
        /// Outputs to their empty state; F (which can be an input) is left.
        void clear_data_out();
    };

    ORV_FEM_HANDLE(solver_buckling_Euler, core::solver_root)

    solver_buckling_Euler();
    /// Runs the analysis on data; never throws, failures go to its error fields.
    void run(data_type& data);

    /// Settings of the next run.
    settings_type settings;
};

}  // namespace fem
}  // namespace orv
