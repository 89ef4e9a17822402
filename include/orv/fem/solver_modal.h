// Modal analysis: the vibration modes of K x = lambda M x whose frequencies lie in a
// range, and the static modes of the load cases (K u = F).
#pragma once

#include <cfloat>
#include <cstdint>

#include <orv/fem/FEM_SymSparse.h>
#include <orv/fem/FEM_factor.h>
#include <orv/fem/FEM_matrix.h>
#include <orv/fem/problem_data.h>
#include <orv/fem/solver_base.h>

#include <orvmath1/dense1D.h>
#include <orvmath1/dense2D.h>

namespace orv {
namespace core {
class solver_root;
}
namespace fem {

/// Set `settings`, build a data_type from the problem (its models must answer the mass
/// matrix, matrix code 2, somewhere), call run(), read the modes and the error fields
/// from the record. run() never throws.
class solver_modal : public solver_base {
public:
    /// Settings of a modal run, in their fixed order.
    struct settings_type {
        /// Objects the caller supplies in data: 2 F.
        std::uint32_t input_mask = 0;
        /// Objects to keep after the run: 2 F, 16 Ks and Ms, 32 Kf (the factor last
        /// used, shifted), 64 static modes, 128 dynamic modes. 0 is a dry run.
        std::uint32_t output_mask = 192;
        /// The frequency range in Hz. freq_max at its default is an open upper end.
        double freq_min = 0.0;
        double freq_max = DBL_MAX;  ///< upper end of the range, Hz
        /// Most dynamic modes to compute.
        std::uint32_t max_modes = 1;
        /// Size of the Ritz space as a factor on max_modes (2 at least).
        std::uint32_t ritz_factor = 8;
        /// Cap of the eigen iterations and their convergence threshold.
        std::uint32_t max_iters = 50;
        double tolerance = 0.001;  ///< convergence threshold of the eigen iterations
        /// 1: consistent mass, on the coupling pattern of the mass models. Any other
        /// value: a diagonal mass; 2 makes the mass meshes lump their matrices.
        std::uint32_t mass_level = 1;
        /// Shift of the spectral factorisation from the range (true) or 0 (false).
        bool auto_shift = true;
        /// Fills mode_results after the run (see there).
        bool post_modes = false;
        ORV_FEM_SETTINGS_HOOKS

        settings_type() = default;
        void reset() { *this = settings_type(); }  ///< back to the defaults
        /// tolerance > 0, max_iters, ritz_factor and max_modes non-zero, and
        /// max(freq_min, 0) < freq_max.
        bool valid() const;
    };

    /// Problem, inputs and results of a modal run.
    struct data_type : public problem_data {
        /// Held for the run, read by no step.
        FEM_states U_prior;
        /// Loads of the static modes, one column per load case (input with bit 2).
        FEM_matrix F;
        /// Static modes, one column per load case, rows on the IDs of F.
        FEM_states S_modes;
        /// Dynamic modes, one column per mode by ascending frequency, of unit mass
        /// (x^T M x = 1); the rows are those of S_modes.
        FEM_states D_modes;
        /// Stiffness and mass on the free DOFs.
        FEM_SymSparse Ks;
        FEM_SymSparse Ms;  ///< mass on the free DOFs
        /// The factor last computed: K + s M with the shift s of the run.
        FEM_factor Kf;
        /// With post_modes: one row per mode; columns: generalised mass x^T M x,
        /// generalised stiffness x^T K x, then the participation factors x^T M r_d and
        /// the effective masses (x^T M r_d)^2 / x^T M x for the rigid translations r_d
        /// in x, y and z (columns 2 to 4 and 5 to 7).
        dense2D<double> mode_results;
        /// As in the linear static run.
        std::uint32_t nbr_free_DOFs = 0;
        std::uint32_t nbr_kept_imposed_DOFs = 0;  ///< DOFs imposed in some load cases only, kept in Kf
        std::uint32_t nbr_eliminated_DOFs = 0;    ///< DOFs of the rows that are not in Kf
        std::uint32_t nbr_total_DOFs = 0;         ///< rows of F and of the modes
        /// Frequency of each dynamic mode in Hz, sqrt(lambda) / (2 pi); a mode with a
        /// lambda below 0 by round-off gets -sqrt(-lambda) / (2 pi).
        dense1D<double> frequencies;
        /// Energy of each static mode, 1/2 u . F.
        dense1D<double> energy;
        /// Smallest and largest pivot of the last factorisation, the DOF of the worst.
        double pivot_min = 0.0;
        double pivot_max = 0.0;                     ///< largest pivot
        std::uint32_t bad_pivot_DOF = 0xFFFFFFFFu;  ///< DOF ID at the worst pivot, 0xFFFFFFFF if none
        /// Sizes in MB.
        double size_RHS = 0.0;
        double size_Ks = 0.0;           ///< sparse stiffness
        double size_Kf = 0.0;           ///< block-skyline factor
        double size_U = 0.0;            ///< static modes
        double size_Ms = 0.0;           ///< sparse mass
        double size_D_modes = 0.0;      ///< the Ritz space of the dynamic modes
        double size_spare = 0.0;        ///< work arrays of the factorisation
        double size_total = 0.0;        ///< sum the size gate compares with the limit
        bool used_out_of_core = false;  ///< the out-of-core manager opened a file during the run
        ORV_FEM_DATA_ERRORS
        /// Step times in seconds, accumulated over the run.
        double time_numbering = 0.0;
        double time_RHS = 0.0;       ///< right-hand sides
        double time_assembly = 0.0;  ///< assembly of Ks, Kf and Ms
        double time_factor = 0.0;    ///< factorisations
        double time_solve = 0.0;     ///< static solve and eigen stage
        double time_total = 0.0;     ///< whole run

        data_type() = default;
        /// Shares the problem; every output default-constructed.
        explicit data_type(const problem_data& problem) : problem_data(problem) {}
        data_type(const data_type&) = default;             ///< shares the problem and the result matrices
        data_type& operator=(const data_type&) = default;  ///< shares the problem and the result matrices
        ~data_type() override = default;

        bool valid() const { return problem_data::valid(); }  ///< the problem names a model of its context
        /// Outputs to their empty state; F (which can be an input) is left.
        void clear_data_out();
    };

    ORV_FEM_HANDLE(solver_modal, core::solver_root)

    solver_modal();
    /// Runs the analysis on data; never throws, failures go to its error fields.
    void run(data_type& data);

    /// Modal damping from the dynamic modes x_i of a run's record (column i of
    /// D_modes), to be called after the run. y_i is the vector that the damping models
    /// (matrix code 3) give for the state x_i. Failures go to the error fields of data
    /// when none stands there; no mode at all gives empty results.
    ///   out[i] = -0.5 * (x_i . y_i)
    void compute_damping_decay_factors(data_type& data, dense1D<double>& out) const;
    ///   out[i] = -0.5 * c[i] * (x_i . x_i); c has one value per mode, else -101
    ///   "DATA ERROR" and out is left as it is.
    void compute_damping_decay_factors(data_type& data, const dense1D<double>& c, dense1D<double>& out) const;
    ///   out[i] = -0.5 * c * (x_i . x_i); c = 0.0 gives zeros.
    void compute_damping_decay_factors(data_type& data, double c, dense1D<double>& out) const;
    ///   out[i] = 0.5 * (x_i . y_i), and column i of corrections the sum over the modes
    ///   j of another frequency of f_i c_ij / (2 pi (f_i - f_j) (f_i + f_j)) x_j, with
    ///   c_ij = -(x_j . y_i) counted as 0 when c_ij^2 < out[i] out[j] 4E-12. The
    ///   frequencies must number the modes, else -101 "DATA ERROR".
    void compute_damping_corrections(data_type& data, dense1D<double>& out, FEM_states& corrections) const;

    /// Settings of the next run.
    settings_type settings;
};

}  // namespace fem
}  // namespace orv
