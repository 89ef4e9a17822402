// Lanczos hybrid: a Lanczos process with full reorthogonalisation builds a Krylov
// basis of K^-1 M, which becomes the start block of the subspace iteration. The
// subspace stage does all the Rayleigh-Ritz work and the convergence test; the
// Lanczos coefficients are not kept.
#pragma once

#include <cmath>
#include <cstddef>
#include <new>
#include <random>
#include <vector>

#include <orv/fem/error_type.h>

#include "eigen/eigen_kernels.h"
#include "eigen/eigen_settings.h"
#include "eigen/eigen_subspace.h"
#include "frame/run_log.h"
#include "linalg/dense_kernels.h"

namespace orv {
namespace core {

// Set up once like eigen_subspace (factor of K - sigma M, M, settings, a run's
// records), then applied by solve(). M may be indefinite: the basis is M-orthonormal
// up to the signs of the vectors' M "norms" squared.
template <class RunSettings, class RunData>
class eigen_Lanczos_hybrid {
public:
    eigen_Lanczos_hybrid(const skyline_factor& K, const eigen_mass_operator& M, const eigen_settings& settings,
                         const RunSettings& run, RunData& data)
        : K_(K), M_(M), s_(settings), run_(run), data_(data) {}

    // Builds a basis of at most m vectors, then runs the subspace iteration on it. On
    // return `modes` and `lambda` are those of eigen_subspace::solve, and so is the
    // result code; -10 when the interrupt hook stopped the Lanczos stage (no modes).
    int solve(std::size_t wanted, std::size_t m, dense2D_OOC<double>& modes, orv::dense1D<double, 8>& lambda,
              const Ptr<OOC_mgr>& mgr = Ptr<OOC_mgr>()) noexcept {
        iterations_ = 0;
        try {
            return solve_impl(wanted, m, modes, lambda, mgr);
        } catch (const std::bad_alloc&) {
            return fem::error_memory;
        } catch (...) {
            return fem::error_internal;
        }
    }

    // The Lanczos stage alone: V gets the basis, at most m columns (fewer when the
    // Krylov space is exhausted and four random restarts in a row fail). Returns 0,
    // -10 when stopped, or the codes of eigen_subspace::solve for the arguments.
    int build_basis(std::size_t m, dense2D_OOC<double>& V, const Ptr<OOC_mgr>& mgr = Ptr<OOC_mgr>()) noexcept {
        try {
            return basis_impl(m, V, mgr);
        } catch (const std::bad_alloc&) {
            return fem::error_memory;
        } catch (...) {
            return fem::error_internal;
        }
    }

    // Sign of each basis vector's M "norm" squared, from the last build.
    const std::vector<double>& signs() const { return signs_; }
    // Rounds of the subspace stage of the last solve.
    unsigned nbr_iterations() const { return iterations_; }
    // Vectors of the last basis: less than the size asked when the Krylov space ran out.
    std::size_t basis_size() const { return signs_.size(); }

private:
    int solve_impl(std::size_t wanted, std::size_t m, dense2D_OOC<double>& modes, orv::dense1D<double, 8>& lambda,
                   const Ptr<OOC_mgr>& mgr);
    int basis_impl(std::size_t m, dense2D_OOC<double>& V, const Ptr<OOC_mgr>& mgr);
    // y := M x, on one thread for a tiny matrix.
    void mass(const double* x, double* y) const {
        const std::size_t n = M_.dimension();
        std::fill(y, y + n, 0.0);
        M_.mult_add(x, n, y, n, 1, 2 * n < 9 ? 1 : threads());
    }
    // x^T M x, t a work vector.
    double energy(const double* x, double* t) const {
        mass(x, t);
        return kernels::dot(x, t, M_.dimension());
    }
    int threads() const { return s_.n_threads > 0 ? s_.n_threads : 1; }

    const skyline_factor& K_;
    const eigen_mass_operator& M_;
    eigen_settings s_;
    const RunSettings& run_;
    RunData& data_;
    std::mt19937 twister_{1u};
    std::vector<double> signs_;
    unsigned iterations_ = 0;
};

template <class RunSettings, class RunData>
int eigen_Lanczos_hybrid<RunSettings, RunData>::solve_impl(std::size_t wanted, std::size_t m,
                                                           dense2D_OOC<double>& modes, orv::dense1D<double, 8>& lambda,
                                                           const Ptr<OOC_mgr>& mgr) {
    lambda.clear();
    const std::size_t n = K_.dimension();
    if (n * m == 0) return fem::no_error;
    log_line(run_, 2, "Lanczos hybrid algorithm.\n");
    double start = now_seconds();
    dense2D_OOC<double> V;
    int rc = basis_impl(m, V, mgr);
    if (rc && rc != fem::warning_interrupted) return rc;
    wanted = std::min(wanted, V.cols());
    if (!lambda.resize(wanted)) return fem::error_memory;
    log_line(run_, 2, "  Lanczos                          : %10.2f s.\n", now_seconds() - start);
    if (stop_requested(run_, data_)) return data_.error_code ? data_.error_code : fem::warning_interrupted;
    start = now_seconds();
    eigen_subspace<RunSettings, RunData> subspace(K_, M_, s_, run_, data_);
    rc = subspace.solve(wanted, V, V.cols(), lambda);
    iterations_ = subspace.nbr_iterations();
    log_line(run_, 2, "  Subspace iterations              : %10.2f s.\n", now_seconds() - start);
    modes = V;
    return rc;
}

template <class RunSettings, class RunData>
int eigen_Lanczos_hybrid<RunSettings, RunData>::basis_impl(std::size_t m, dense2D_OOC<double>& V_out,
                                                           const Ptr<OOC_mgr>& mgr) {
    namespace ek = eigen_kernels;
    const std::size_t n = K_.dimension();
    signs_.clear();
    if (!K_.factored() || M_.dimension() != n) return fem::error_data;
    dense2D_OOC<double> V;
    if (V.init(n, m, 0.0, mgr)) return fem::error_memory;
    twister_.seed(1u);
    std::vector<double> r(n), w(n), t(n), coef(m);
    signs_.assign(m, 0.0);
    const double half = 1.0 / std::sqrt(double(n));
    std::size_t j = 0;
    unsigned restarts = 0;
    bool need_restart = true;
    int rc = 0;

    // Sweeps over the basis so far, run by run of resident columns: coef = V^T w
    // (times the signs), then r -= V coef.
    auto project_out = [&]() -> int {
        dense2D_OOC<double> basis = V.sub_columns(0, j);
        for (std::size_t c = 0; c < j;) {
            ek::column_run run;
            if (int e = ek::resident_run(basis, c, run)) return e;
            for (std::size_t k = 0; k < run.n; ++k)
                coef[c + k] = kernels::dot(run.p + k * run.ld, w.data(), n) * signs_[c + k];
            c += run.n;
        }
        for (std::size_t c = 0; c < j;) {
            ek::column_run run;
            if (int e = ek::resident_run(basis, c, run)) return e;
            for (std::size_t k = 0; k < run.n; ++k) kernels::axpy(n, -coef[c + k], run.p + k * run.ld, r.data());
            c += run.n;
        }
        return 0;
    };

    while (j < m) {
        if (stop_requested(run_, data_)) break;
        if (need_restart) {
            if (j != 0) log_line(run_, 3, "iter #%d : restart.\n", int(j));
            if (++restarts == 4) break;
            for (std::size_t i = 0; i < n; ++i) {
                r[i] = 0.0;
                r[i] += double(twister_()) * (half - (-half)) * detail::unit_32 - half;
            }
        } else {
            ek::column_run last;
            if ((rc = ek::resident_run(V, j - 1, last))) return rc;
            mass(last.p, r.data());
            K_.solve(r.data(), threads());
        }
        double b = energy(r.data(), t.data());
        if (b == 0.0 || !std::isfinite(b)) {
            need_restart = true;
            continue;
        }
        const double scale = 1.0 / std::sqrt(std::fabs(b));
        for (double& v : r) v *= scale;
        double s = b > 0 ? 1.0 : -1.0;
        bool ok = j == 0;
        for (int pass = 0; !ok && pass < 3; ++pass) {
            mass(r.data(), w.data());
            if ((rc = project_out())) return rc;
            b = energy(r.data(), t.data());
            ok = std::fabs(b) > 0.25 && b * s > 0;
            if (b == 0.0 || !std::isfinite(b)) {
                ok = false;
                break;
            }
            const double f = 1.0 / std::sqrt(std::fabs(b));
            for (double& v : r) v *= f;
            s = b > 0 ? 1.0 : -1.0;
        }
        if (!ok) {
            need_restart = true;
            continue;
        }
        ek::column_run slot;
        if ((rc = ek::resident_run(V, j, slot))) return rc;
        std::copy(r.begin(), r.end(), slot.p);
        signs_[j] = s;
        ++j;
        restarts = 0;
        need_restart = false;
    }
    V.pop_back(m - j);
    signs_.resize(j);
    V_out = V;
    if (data_.error_code) return data_.error_code;
    return data_.warning_code == fem::warning_interrupted ? fem::warning_interrupted : fem::no_error;
}

}  // namespace core
}  // namespace orv
