// Seismic response spectrum: peak responses from the modes of a modal run, combined
// with a correlation rule between modes.
#pragma once

#include <cstdint>

#include <orv/fem/oneD_table.h>
#include <orv/fem/solver_base.h>

#include <orvmath1/dense1D.h>
#include <orvmath1/dense2D.h>
#include <orvmath1/symmetric_full.h>

namespace orv {
namespace core {
class spectrum_combination_engine;
class spectrum_combination_cqc_engine;
class solver_root;
}  // namespace core
namespace fem {

/// Correlation rule between modal responses. Its call gives the symmetric matrix of
/// correlations of the modes of the given frequencies (Hz); an empty handle, or a
/// failed allocation, gives an empty matrix.
class spectrum_combination : public base_class {
public:
    ORV_FEM_HANDLE(spectrum_combination, core::spectrum_combination_engine)
    /// An empty handle.
    spectrum_combination();
    /// The correlation matrix of modes of these frequencies (Hz).
    symmetric_full<double> operator()(const dense1D<double>& frequencies) const;
};

/// Complete quadratic combination, with a damping ratio read from a table at each
/// modal frequency. For modes i, j with r = f_i / f_j:
///   rho_ij = 8 sqrt(z_i z_j r) r (z_i r + z_j)
///            / ((1 - r^2)^2 + 4 z_i z_j r (1 + r^2) + 4 (z_i^2 + z_j^2) r^2).
/// rho_ii is 1; so is rho_ij for equal frequencies without damping (the limit of the
/// formula), and a pair with a zero frequency correlates only if both are zero.
class spectrum_combination_cqc : public spectrum_combination {
public:
    ORV_FEM_HANDLE(spectrum_combination_cqc, core::spectrum_combination_cqc_engine)
    /// No damping until init(): the modes are then uncorrelated unless equal.
    spectrum_combination_cqc();
    /// init(damping_ratio).
    explicit spectrum_combination_cqc(const oneD_table& damping_ratio);
    /// Damping ratio as a function of the frequency in Hz; error_memory on failure.
    error_type init(const oneD_table& damping_ratio);
};

/// Peak value of each response component in each direction of excitation.
///
/// A mode i contributes R_i = participation(d, i) * modal_results(r, i * stride + k)
/// to row r of component k in direction d; the peak is sqrt(sum_ij rho_ij R_i R_j)
/// (0 when rounding makes the sum negative), with the correction pseudo mode of the
/// direction added in quadrature when static results are given. The host scales the
/// participation factors by the spectrum (pseudo-accelerations); PF_div_omega2 turns
/// them into displacement scales.
class solver_response_spectrum : public solver_base {
public:
    /// Settings of the run; reset() restores the defaults.
    struct settings_type {
        /// Columns of modal_results per mode: the number of response components. Above 0.
        std::uint32_t stride = 1;
        /// Non-zero: add the static results (correction pseudo modes) when given.
        std::uint32_t use_static_correction = 1;
        ORV_FEM_SETTINGS_HOOKS

        settings_type() = default;
        /// Every setting to its default, hooks included.
        void reset() { *this = settings_type(); }
        /// The stride is above 0.
        bool valid() const { return stride > 0; }
    };

    /// Inputs and results of one combination.
    struct data_type {
        /// Inputs. Modal frequencies in Hz, one per mode.
        dense1D<double> frequencies;
        /// One row per direction of excitation, one column per mode.
        dense2D<double> participation;
        /// One row per response value; column i * stride + k is component k of mode i.
        dense2D<double> modal_results;
        /// Optional: the rows of modal_results; column d * stride + k is component k of
        /// the correction pseudo mode of direction d. Empty: no static modes.
        dense2D<double> static_results;
        /// Correlation rule; an empty handle takes the modes as uncorrelated (square
        /// root of the sum of squares).
        spectrum_combination combination;

        /// Outputs. The rows of modal_results; column d * stride + k holds the peaks
        /// of component k in direction d.
        dense2D<double> peaks;
        /// Number of modes combined.
        std::uint32_t nbr_dynamic_modes = 0;
        /// Number of correction pseudo modes added (one per direction, or 0).
        std::uint32_t nbr_static_modes = 0;
        ORV_FEM_DATA_ERRORS
        /// Time of the checks of the shapes, in seconds.
        double time_numbering = 0.0;
        /// Time of the combination, in seconds.
        double time_combination = 0.0;
        /// Time of the whole run, in seconds.
        double time_total = 0.0;

        data_type() = default;
        /// As many frequencies as participation columns.
        bool valid() const { return frequencies.size() == participation.cols(); }
        /// Outputs to their empty state; inputs are left.
        void clear_data_out();
        /// Divides the participation factors of mode i by (2 pi f_i)^2. When the sizes
        /// disagree it changes nothing and sets error_code to error_data with the
        /// sentence in error_name. A mode of zero frequency is left as it is.
        void PF_div_omega2();
    };

    ORV_FEM_HANDLE(solver_response_spectrum, core::solver_root)

    solver_response_spectrum();
    /// Combines the modal results of data; never throws, failures go to data's
    /// error fields.
    void run(data_type& data);

    /// The settings of the next run.
    settings_type settings;
};

}  // namespace fem
}  // namespace orv
