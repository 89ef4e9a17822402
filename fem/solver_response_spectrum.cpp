// Response spectrum run: combines modal responses into peaks per direction and
// component, and the complete quadratic combination of modes.
#include <orv/fem/error_type.h>
#include <orv/fem/solver_response_spectrum.h>

#include <cmath>
#include <new>

#include "frame/solver_base.h"
#include "orvmath1/ref_counted.h"

namespace orv {
namespace core {

// Correlations of the modes of a list of frequencies; false on memory.
class spectrum_combination_engine : public ref_counted {
public:
    virtual bool correlations(const dense1D<double>& frequencies, symmetric_full<double>& rho) const = 0;
};

class spectrum_combination_cqc_engine : public spectrum_combination_engine {
public:
    explicit spectrum_combination_cqc_engine(const fem::oneD_table& damping) : damping_(damping) {}
    bool init(const fem::oneD_table& damping) {
        fem::oneD_table copy;
        if (!damping.empty() && !copy.init(damping.get_x(), damping.get_y())) return false;
        damping_ = copy;
        return true;
    }

    bool correlations(const dense1D<double>& f, symmetric_full<double>& rho) const override {
        const std::size_t n = f.size();
        if (!rho.resize(n)) return false;
        dense1D<double> z;
        if (!z.resize(n)) return false;
        for (std::size_t i = 0; i < n; ++i) z[i] = damping_.empty() ? 0.0 : damping_(f[i]);
        for (std::size_t i = 0; i < n; ++i) {
            rho(i, i) = 1.0;
            for (std::size_t j = i + 1; j < n; ++j) rho(i, j) = pair(f[i], f[j], z[i], z[j]);
        }
        return true;
    }

private:
    static double pair(double fi, double fj, double zi, double zj) {
        if (!(fi > 0.0) || !(fj > 0.0)) return fi == fj ? 1.0 : 0.0;
        const double r = fi / fj;
        const double den =
            (1.0 - r * r) * (1.0 - r * r) + 4.0 * zi * zj * r * (1.0 + r * r) + 4.0 * (zi * zi + zj * zj) * r * r;
        if (den == 0.0) return 1.0;  // equal frequencies without damping: the formula's limit
        return 8.0 * std::sqrt(zi * zj * r) * r * (zi * r + zj) / den;
    }

    fem::oneD_table damping_;
};

namespace {

using settings_type = fem::solver_response_spectrum::settings_type;
using data_type = fem::solver_response_spectrum::data_type;

const solver_identity spectrum_identity = {"solver_response_spectrum", "ORV FEM(R) - SEISMIC SPECTRUM COMBINATION",
                                           "fem/solver_response_spectrum", 0};

bool is_empty(const dense2D<double>& m) { return m.rows() * m.cols() == 0; }

class response_spectrum_engine : public solver_base<settings_type, data_type> {
public:
    response_spectrum_engine() : solver_base(&own_settings_, spectrum_identity) {}
    settings_type& own_settings() { return own_settings_; }

protected:
    void start(data_type&) override { set_context(nullptr); }

    // The shapes of the result matrices against the stride and the counts.
    void numbering(data_type& data) override {
        const std::size_t n = data.frequencies.size(), nd = data.participation.rows(), s = settings().stride;
        const dense2D<double>& m = data.modal_results;
        const dense2D<double>& st = data.static_results;
        const bool modal_fits = is_empty(m) ? n == 0 : m.cols() == n * s;
        const bool static_fits = is_empty(st) || (st.rows() == m.rows() && st.cols() == nd * s);
        if (!modal_fits || !static_fits) {
            set_error_msg(data, fem::error_data, "DATA ERROR", "ORV solver_response_spectrum: stride error.");
            return;
        }
        data.nbr_dynamic_modes = static_cast<std::uint32_t>(n);
        const bool corrected = !is_empty(st) && settings().use_static_correction;
        data.nbr_static_modes = corrected ? static_cast<std::uint32_t>(nd) : 0;
    }
    double& numbering_time(data_type& data) override { return data.time_numbering; }
    double needed_size(data_type& data) override {
        return double(data.modal_results.rows()) * data.participation.rows() * settings().stride * 8.0 /
               (1024.0 * 1024.0);
    }

    void compute(data_type& data) override {
        step(data, data.time_combination, nullptr, [&] { combine(data); });
        log(1, "Dynamic modes                      : %d\n", int(data.nbr_dynamic_modes));
        log(1, "Static modes                       : %d\n", int(data.nbr_static_modes));
    }

private:
    void combine(data_type& data) {
        const std::size_t n = data.frequencies.size(), nd = data.participation.rows();
        const std::size_t s = settings().stride, rows = data.modal_results.rows();
        symmetric_full<double> rho;
        if (data.combination.is_valid()) {
            rho = data.combination(data.frequencies);
            if (rho.dim() != n) throw std::bad_alloc();
        }
        if (!data.peaks.resize(rows, nd * s, 0.0)) throw std::bad_alloc();
        dense1D<double> R;
        if (!R.resize(n)) throw std::bad_alloc();
        for (std::size_t d = 0; d < nd && !stop_requested(data); ++d)
            for (std::size_t k = 0; k < s; ++k) {
                log(2, "Dir #%d, Component #%d\n", int(d), int(k));
                combine_component(data, rho, R, d, k);
            }
    }

    // Peaks of component k in direction d, one per row of the modal results.
    void combine_component(data_type& data, const symmetric_full<double>& rho, dense1D<double>& R, std::size_t d,
                           std::size_t k) {
        const std::size_t n = R.size(), s = settings().stride, column = d * s + k;
        const bool corrected = data.nbr_static_modes != 0;
        double static_norm2 = 0.0, total_norm2 = 0.0;
        for (std::size_t r = 0; r < data.modal_results.rows(); ++r) {
            for (std::size_t i = 0; i < n; ++i) R[i] = data.participation(d, i) * data.modal_results(r, i * s + k);
            double sum = 0.0;
            for (std::size_t i = 0; i < n; ++i) {
                double row = rho.dim() ? 0.0 : R[i];  // uncorrelated: the diagonal alone
                for (std::size_t j = 0; j < n && rho.dim(); ++j) row += rho(i, j) * R[j];
                sum += R[i] * row;
            }
            if (sum < 0.0) sum = 0.0;
            if (corrected) {
                const double c = data.static_results(r, column);
                sum += c * c;
                static_norm2 += c * c;
            }
            total_norm2 += sum;
            data.peaks(r, column) = std::sqrt(sum);
        }
        if (corrected) {
            const double share = total_norm2 > 0.0 ? 100.0 * std::sqrt(static_norm2 / total_norm2) : 0.0;
            log(2, "Correction pseudo mode (norm2) = %.2f %%\n", share);
        }
    }

    settings_type own_settings_;
};

}  // namespace
}  // namespace core

namespace fem {

ORV_FEM_HANDLE_IMPL(spectrum_combination, base_class, core::spectrum_combination_engine)

spectrum_combination::spectrum_combination() = default;

symmetric_full<double> spectrum_combination::operator()(const dense1D<double>& frequencies) const {
    symmetric_full<double> rho;
    const core::spectrum_combination_engine* e = engine();
    if (!e || !e->correlations(frequencies, rho)) return symmetric_full<double>();
    return rho;
}

ORV_FEM_HANDLE_IMPL(spectrum_combination_cqc, spectrum_combination, core::spectrum_combination_cqc_engine)

spectrum_combination_cqc::spectrum_combination_cqc() : spectrum_combination_cqc(oneD_table()) {}

spectrum_combination_cqc::spectrum_combination_cqc(const oneD_table& damping_ratio) {
    core::spectrum_combination_cqc_engine* e = new (std::nothrow) core::spectrum_combination_cqc_engine(oneD_table());
    if (e && e->init(damping_ratio))
        set_w(static_cast<ref_counted*>(e));
    else
        delete e;
}

error_type spectrum_combination_cqc::init(const oneD_table& damping_ratio) {
    core::spectrum_combination_cqc_engine* e = engine();
    if (!e) return error_memory;
    return e->init(damping_ratio) ? no_error : error_memory;
}

void solver_response_spectrum::data_type::clear_data_out() {
    peaks = dense2D<double>();
    nbr_dynamic_modes = nbr_static_modes = 0;
    clear_errors();
    time_numbering = time_combination = time_total = 0.0;
}

void solver_response_spectrum::data_type::PF_div_omega2() {
    if (frequencies.size() != participation.cols()) {
        error_code = error_data;
        core::detail::copy_text(error_name,
                                "ORV solver_response_spectrum::PF_div_omega2: PF and frequencies size mismatch.");
        return;
    }
    const double four_pi2 = 39.47841760435743;
    for (std::size_t i = 0; i < frequencies.size(); ++i) {
        const double f = frequencies[i];
        if (f == 0.0) continue;
        for (std::size_t d = 0; d < participation.rows(); ++d) participation(d, i) *= 1.0 / (four_pi2 * f * f);
    }
}

ORV_FEM_HANDLE_IMPL(solver_response_spectrum, solver_base, core::solver_root)

solver_response_spectrum::solver_response_spectrum() : settings() {
    set_w(static_cast<ref_counted*>(new core::response_spectrum_engine()));
}

void solver_response_spectrum::run(data_type& data) {
    core::response_spectrum_engine* e = dynamic_cast<core::response_spectrum_engine*>(engine());
    if (!e) {
        core::set_error_msg(data, error_internal, "INTERNAL ERROR", "");
        return;
    }
    e->own_settings() = settings;
    e->run(data, data.combination);
}

}  // namespace fem
}  // namespace orv
