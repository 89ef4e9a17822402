// Subspace iteration: simultaneous inverse iteration on a block of vectors with a
// Rayleigh-Ritz step in each round, for K x = lambda M x with K given by its
// (possibly shifted) LDLt factors.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <new>
#include <random>
#include <vector>

#include <orv/fem/error_type.h>

#include "eigen/eigen_kernels.h"
#include "eigen/eigen_projected.h"
#include "eigen/eigen_settings.h"
#include "frame/run_log.h"

namespace orv {
namespace core {

// Set up once on the factor of K - sigma M, the matrix M, the settings and a run's
// records (RunSettings: its log and interrupt hooks; RunData: its error fields), then
// applied by solve(). The interrupt hook is asked at each round; a stop sets warning
// -10 in the run's data. The solver stores no error in the data itself: its codes are
// returned for the run to report in its own words.
template <class RunSettings, class RunData>
class eigen_subspace {
public:
    eigen_subspace(const skyline_factor& K, const eigen_mass_operator& M, const eigen_settings& settings,
                   const RunSettings& run, RunData& data)
        : K_(K), M_(M), s_(settings), run_(run), data_(data) {}

    // X holds n rows (the dimension of K) and m columns, m being the size of the
    // subspace; its first n_given columns are start vectors, the others are made here.
    // On return X shares the modes whose eigenvalues fall into the window, at most
    // `wanted` of them, ascending, and lambda holds those eigenvalues (of the unshifted
    // pencil). Returns 0; -10 when stopped by the interrupt hook (no modes: a stop
    // comes between rounds, when the block holds M times the Ritz vectors); -109 (error_convergence) when
    // max_iterations rounds did not converge (the modes of the last round are kept); -101 for inconsistent arguments,
    // -199 on exhaustion, -200 when columns cannot be made resident, or the run's standing error code (nothing is
    // returned then).
    int solve(std::size_t wanted, dense2D_OOC<double>& X, std::size_t n_given,
              orv::dense1D<double, 8>& lambda) noexcept {
        iterations_ = 0;
        residue_ = 1.0;
        try {
            return solve_impl(wanted, X, n_given, lambda);
        } catch (const std::bad_alloc&) {
            return fem::error_memory;
        } catch (...) {
            return fem::error_internal;
        }
    }

    // Rounds of the last solve (each bad-mode restart counts as one).
    unsigned nbr_iterations() const { return iterations_; }
    // Convergence value of the last round.
    double last_residue() const { return residue_; }

private:
    int solve_impl(std::size_t wanted, dense2D_OOC<double>& X_io, std::size_t n_given,
                   orv::dense1D<double, 8>& lambda_out);

    const skyline_factor& K_;
    const eigen_mass_operator& M_;
    eigen_settings s_;
    const RunSettings& run_;
    RunData& data_;
    unsigned iterations_ = 0;
    double residue_ = 1.0;
};

template <class RunSettings, class RunData>
int eigen_subspace<RunSettings, RunData>::solve_impl(std::size_t wanted, dense2D_OOC<double>& X_io, std::size_t n_given,
                                                     orv::dense1D<double, 8>& lambda_out) {
    namespace ek = eigen_kernels;
    const std::size_t n = K_.dimension();
    std::size_t m = X_io.cols();
    wanted = std::min(wanted, m);
    if (wanted == 0 || n == 0) return fem::no_error;
    if (!K_.factored() || M_.dimension() != n || X_io.rows() != n || n_given > m) return fem::error_data;
    log_line(run_, 2, "Subspace iterations algorithm.\n");

    const double sigma = s_.shift;
    const int nt = s_.n_threads > 0 ? s_.n_threads : 1;
    std::mt19937 twister(1u);
    std::vector<double> mass_diag(n), dinv(n);
    M_.diagonal(mass_diag.data());
    int rc = ek::diagonal(K_, dinv.data());
    if (rc) return rc;

    // Y starts as M X for the given columns and as the start vectors after them.
    dense2D_OOC<double> X(X_io), Y;
    const Ptr<OOC_mgr> mgr = X.proxy() ? X.proxy()->mgr : Ptr<OOC_mgr>();
    if (Y.init(n, m, 0.0, mgr)) return fem::error_memory;
    if (n_given) {
        dense2D_OOC<double> Xg = X.sub_columns(0, n_given), Yg = Y.sub_columns(0, n_given);
        if ((rc = ek::mass_product(M_, Xg, Yg, nt))) return rc;
    }
    if ((rc = detail::start_vectors(Y, n_given, mass_diag, dinv, twister))) return rc;
    if ((rc = ek::copy_columns(Y, X))) return rc;

    std::vector<double> Kr, Mr, lambda;
    orv::dense2D<double> Q;
    projected_pencil pencil;
    bool converged = false, have_modes = false;
    std::size_t i0 = 0, i1 = 0, last_count = ~std::size_t(0);
    double a_prev = 0.0, b_prev = 0.0;

    while (m > 0) {
        if (stop_requested(run_, data_)) break;
        if ((rc = ek::solve_columns(K_, X, nt))) return rc;
        const std::size_t packed = (m + 1) * m / 2;
        Kr.assign(packed, 0.0);
        Mr.assign(packed, 0.0);
        if ((rc = ek::cross_packed(X, Y, Kr.data()))) return rc;
        if ((rc = ek::mass_product(M_, X, Y, nt))) return rc;
        if ((rc = ek::cross_packed(X, Y, Mr.data()))) return rc;
        if (sigma != 0)
            for (std::size_t k = 0; k < packed; ++k) Kr[k] += sigma * Mr[k];
        const std::size_t rejected = pencil.factor_mass(s_.indefinite_mass ? Kr.data() : Mr.data(), m);
        if (stop_requested(run_, data_)) break;
        if (!std::isfinite(pencil.lowest_pivot()) || !std::isfinite(pencil.highest_pivot())) break;

        if (rejected != projected_pencil::none) {
            // The vectors have become dependent: drop one and make the rejected ones anew.
            log_line(run_, 3, "%3d- bad mode(s).\n", int(iterations_ + 1));
            X.pop_back(1);
            Y.pop_back(1);
            --m;
            have_modes = false;
            if ((rc = detail::start_vectors(X, rejected, mass_diag, dinv, twister))) return rc;
            const bool at_limit = iterations_ >= s_.max_iterations;
            ++iterations_;
            if (at_limit) break;
            if ((rc = ek::mass_product(M_, X, Y, nt))) return rc;
            if ((rc = ek::copy_columns(Y, X))) return rc;
            continue;
        }

        lambda.assign(m, 0.0);
        if (s_.indefinite_mass)
            solve_inverted(pencil, Mr.data(), s_.mass_scaling, lambda.data(), Q);
        else
            pencil.solve(Kr.data(), s_.mass_scaling, lambda.data(), Q);
        have_modes = true;
        for (double& v : lambda) v -= sigma;

        std::vector<double> unshifted(lambda);
        for (double& v : unshifted) v += sigma;
        select_window(unshifted.data(), m, s_.low, s_.high, wanted, i0, i1);

        double r = 1.0;
        if (i0 < i1) {
            const double a = lambda[i0] + sigma, b = lambda[i1 - 1] + sigma;
            const double top = std::max(std::fabs(a), std::fabs(b));
            const double db = b - b_prev, da = a - a_prev;
            const double d = std::fabs(db) > std::fabs(da) ? db : da;
            r = std::fabs(d);
            if (s_.tolerance < top) r = std::fabs(d) / top;
            a_prev = a;
            b_prev = b;
        }
        if (i1 - i0 != last_count) r = 1.0;
        last_count = i1 - i0;
        residue_ = r;
        log_line(run_, 3, "%3d- residue             : %E\n", int(iterations_ + 1), r);
        converged = r < s_.tolerance;
        if (s_.iteration_hook) s_.iteration_hook(s_.pass_thru, iterations_ + 1, r);
        ++iterations_;
        if (converged || iterations_ >= s_.max_iterations) break;

        // The next round starts from M times the rotated vectors.
        if ((rc = ek::combine(Y, Q, X))) return rc;
        if ((rc = ek::copy_columns(X, Y))) return rc;
        have_modes = false;  // X now holds M times the Ritz vectors
    }

    const bool stopped = data_.warning_code == fem::warning_interrupted;
    if (data_.error_code != 0) return data_.error_code;
    if (converged) log_line(run_, 2, "Convergence within %d iterations.\n", int(iterations_));

    // The modes: Y := X Q, the columns of the window moved to the front.
    lambda_out.clear();
    dense2D_OOC<double> modes;
    if (have_modes && Q.rows() == m && i1 > i0) {
        modes = Y;
        if ((rc = ek::combine(X, Q, modes))) return rc;
        const std::size_t count = i1 - i0;
        if (!lambda_out.resize(count)) return fem::error_memory;
        for (std::size_t k = 0; k < count; ++k) {
            lambda_out[k] = lambda[i0 + k] + sigma;
            if (i0 == 0) continue;
            ek::column_run from, to;
            if ((rc = ek::resident_run(modes, i0 + k, from))) return rc;
            std::vector<double> keep(from.p, from.p + n);
            if ((rc = ek::resident_run(modes, k, to))) return rc;
            std::copy(keep.begin(), keep.end(), to.p);
        }
        modes.pop_back(m - count);
        if (!s_.mass_scaling)
            for (std::size_t k = 0; k < count; ++k) {
                ek::column_run c;
                if ((rc = ek::resident_run(modes, k, c))) return rc;
                double norm2 = 0.0;
                for (std::size_t i = 0; i < n; ++i) norm2 += c.p[i] * c.p[i];
                const double f = norm2 > 0 ? 1.0 / std::sqrt(norm2) : 1.0;
                for (std::size_t i = 0; i < n; ++i) c.p[i] *= f;
            }
    } else if (modes.init(n, 0, 0.0, mgr)) {
        modes.clear();
    }
    X_io = modes;
    if (stopped) return fem::warning_interrupted;
    return converged ? fem::no_error : fem::error_convergence;
}

}  // namespace core
}  // namespace orv
