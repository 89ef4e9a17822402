#include "eigen/eigen_projected.h"

#include <algorithm>
#include <cmath>

#include "orvlapack/orvlapack.h"

namespace orv {
namespace core {

std::size_t projected_pencil::factor_mass(const double* Mr, std::size_t m) {
    m_ = m;
    L_.assign(m * m, 0.0);
    d_.assign(m, 0.0);
    Mr_.assign(Mr, Mr + (m + 1) * m / 2);
    checker_.reset();
    std::vector<double> t(m);
    for (std::size_t j = 0; j < m; ++j) {
        const double* Lj = &L_[j * m];
        for (std::size_t k = 0; k < j; ++k) t[k] = Lj[k] * d_[k];
        double dj = Mr[(j + 1) * j / 2 + j];
        for (std::size_t k = 0; k < j; ++k) dj -= Lj[k] * t[k];
        if (!checker_.check(dj, j)) return j;
        d_[j] = dj;
        L_[j * m + j] = 1.0;
        for (std::size_t i = j + 1; i < m; ++i) {
            double* Li = &L_[i * m];
            double s = Mr[(i + 1) * i / 2 + j];
            for (std::size_t k = 0; k < j; ++k) s -= Li[k] * t[k];
            Li[j] = s / dj;
        }
    }
    return none;
}

long projected_pencil::solve(const double* Kr, bool mass_scaling, double* lambda, orv::dense2D<double>& Q) {
    const std::size_t m = m_;
    Q.resize(m, m, 0.0);
    if (m == 0) return 0;
    // A = full Kr; W = L^-1 A by columns; C = L^-1 W^T = L^-1 A L^-T.
    std::vector<double> A(m * m), C(m * m);
    for (std::size_t i = 0; i < m; ++i)
        for (std::size_t j = 0; j <= i; ++j) A[i + j * m] = A[j + i * m] = Kr[(i + 1) * i / 2 + j];
    auto forward = [&](double* x) {  // x := L^-1 x
        for (std::size_t i = 0; i < m; ++i) {
            double s = x[i];
            for (std::size_t k = 0; k < i; ++k) s -= L_[i * m + k] * x[k];
            x[i] = s;
        }
    };
    for (std::size_t j = 0; j < m; ++j) forward(&A[j * m]);
    for (std::size_t i = 0; i < m; ++i)
        for (std::size_t j = 0; j < m; ++j) C[j + i * m] = A[i + j * m];
    for (std::size_t j = 0; j < m; ++j) forward(&C[j * m]);
    std::vector<double> root(m);
    for (std::size_t i = 0; i < m; ++i) root[i] = std::sqrt(d_[i]);
    // Upper triangle packed by columns: (i, j), i <= j, at i + j (j + 1) / 2.
    std::vector<double> ap((m + 1) * m / 2), work(3 * m), z(m * m);
    for (std::size_t j = 0; j < m; ++j)
        for (std::size_t i = 0; i <= j; ++i) ap[i + j * (j + 1) / 2] = C[i + j * m] / (root[i] * root[j]);
    long info = 0;
    orv::lapack::dspev('V', 'U', long(m), ap.data(), lambda, z.data(), long(m), work.data(), info);
    if (info != 0) {
        std::fill(lambda, lambda + m, 0.0);
        Q.fill(0.0);
        return info;
    }
    for (std::size_t c = 0; c < m; ++c) {
        double* q = Q.col(c);
        // q = L^-T D^-1/2 z
        for (std::size_t i = 0; i < m; ++i) q[i] = z[i + c * m] / root[i];
        for (std::size_t i = m; i-- > 0;) {
            double s = q[i];
            for (std::size_t k = i + 1; k < m; ++k) s -= L_[k * m + i] * q[k];
            q[i] = s;
        }
        double norm2 = 0.0;
        if (mass_scaling) {
            for (std::size_t i = 0; i < m; ++i) {
                double row = 0.0;
                for (std::size_t k = 0; k < m; ++k)
                    row += Mr_[i >= k ? (i + 1) * i / 2 + k : (k + 1) * k / 2 + i] * q[k];
                norm2 += q[i] * row;
            }
        } else {
            for (std::size_t i = 0; i < m; ++i) norm2 += q[i] * q[i];
        }
        if (norm2 > 0) {
            const double f = 1.0 / std::sqrt(norm2);
            for (std::size_t i = 0; i < m; ++i) q[i] *= f;
        }
    }
    return 0;
}

long solve_inverted(projected_pencil& pencil, const double* Mr, bool mass_scaling, double* lambda,
                    orv::dense2D<double>& Q) {
    orv::dense2D<double> Qmu;
    const std::size_t m = pencil.order();
    std::vector<double> mu(m);
    const long info = pencil.solve(Mr, true, mu.data(), Qmu);  // unit Kr norm: q^T Mr q = mu
    Q.resize(m, m, 0.0);
    if (info != 0) {
        std::fill(lambda, lambda + m, 0.0);
        return info;
    }
    std::vector<std::size_t> order(m);
    for (std::size_t i = 0; i < m; ++i) order[i] = i;
    auto lambda_of = [&](std::size_t i) { return mu[i] != 0.0 ? 1.0 / mu[i] : HUGE_VAL; };
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return lambda_of(a) < lambda_of(b); });
    for (std::size_t c = 0; c < m; ++c) {
        const std::size_t k = order[c];
        lambda[c] = lambda_of(k);
        const double* from = Qmu.col(k);
        double* q = Q.col(c);
        double f = 1.0;
        if (mass_scaling) {
            f = mu[k] != 0.0 ? 1.0 / std::sqrt(std::fabs(mu[k])) : 1.0;
        } else {
            double norm2 = 0.0;
            for (std::size_t i = 0; i < m; ++i) norm2 += from[i] * from[i];
            f = norm2 > 0 ? 1.0 / std::sqrt(norm2) : 1.0;
        }
        for (std::size_t i = 0; i < m; ++i) q[i] = f * from[i];
    }
    return 0;
}

void select_window(const double* lambda, std::size_t m, double low, double high, std::size_t wanted, std::size_t& i0,
                   std::size_t& i1) {
    // lower_bound on both ends: a value equal to the upper bound is left out.
    i0 = std::size_t(std::lower_bound(lambda, lambda + m, low) - lambda);
    i1 = std::size_t(std::lower_bound(lambda, lambda + m, high) - lambda);
    if (i1 < i0) i1 = i0;
    if (i1 - i0 <= wanted) return;
    const bool low_finite = std::isfinite(low), high_finite = std::isfinite(high);
    bool from_low = true;
    if (low_finite && high_finite)
        from_low = std::fabs(low) <= std::fabs(high);
    else if (high_finite)
        from_low = false;
    if (from_low)
        i1 = i0 + wanted;
    else
        i0 = i1 - wanted;
}

}  // namespace core
}  // namespace orv
