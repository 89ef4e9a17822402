// Test helpers of the block-skyline matrix and its factorisation: a small builder of
// block profiles from a symmetric pattern (each DOF its own supervariable, identity
// order), a dense LDLt reference, and the one checker of factor-and-solve that the
// tests run for every pivot policy and thread count.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <random>
#include <set>
#include <vector>

#include "linalg/block_profile.h"
#include "linalg/symmetric_L_D_Lt.h"

namespace orv {
namespace core {
namespace testing {

// A dense symmetric test matrix with its pattern.
struct dense_sym {
    std::size_t n = 0;
    std::vector<double> a;  // column major, both triangles
    double& operator()(std::size_t i, std::size_t j) { return a[i + j * n]; }
    double operator()(std::size_t i, std::size_t j) const { return a[i + j * n]; }
    explicit dense_sym(std::size_t dim = 0) : n(dim), a(dim * dim, 0.0) {}
    void set(std::size_t i, std::size_t j, double v) {
        (*this)(i, j) = v;
        (*this)(j, i) = v;
    }
    bool nz(std::size_t i, std::size_t j) const { return (*this)(i, j) != 0.0; }
    void add_spring(std::size_t i, std::size_t j, double k) {
        (*this)(i, i) += k;
        (*this)(j, j) += k;
        (*this)(i, j) -= k;
        (*this)(j, i) -= k;
    }
    // y += A x
    void mult_add(const double* x, double* y) const {
        for (std::size_t j = 0; j < n; ++j)
            for (std::size_t i = 0; i < n; ++i) y[i] += (*this)(i, j) * x[j];
    }
};

// Block profiles for the pattern of A in its given order, blocks of at most `limit`
// columns, by the rules of the numbering: first-neighbour heights, a block opens at a
// column of height 0 or when full, columns crossing a block top become extra
// segments of the earlier blocks, then the symbolic fill from each block into the
// block of its first extra column.
inline std::vector<block_profile> build_profiles(const dense_sym& A, std::size_t limit) {
    const std::size_t n = A.n;
    std::vector<std::size_t> h(n), block_of(n);
    std::vector<std::map<std::size_t, std::size_t>> maps;
    std::vector<std::size_t> first, last, crossing;
    std::size_t count = 0;
    for (std::size_t i = 0; i < n; ++i) {
        std::size_t low = i;
        for (std::size_t p = 0; p < i; ++p)
            if (A.nz(p, i)) {
                low = p;
                break;
            }
        h[i] = i - low;
        if (h[i] == 0 || count == limit || maps.empty()) {
            maps.emplace_back();
            first.push_back(i);
            last.push_back(i);
            count = 0;
        }
        const std::size_t b = maps.size() - 1;
        std::size_t hown = h[i];
        if (i - h[i] < first[b]) {
            crossing.push_back(i);
            hown = 0;
        }
        std::size_t& slot = maps[b][i];
        slot = std::max(slot, hown);
        block_of[i] = b;
        last[b] = i + 1;
        ++count;
    }
    for (std::size_t c : crossing)
        for (std::size_t p = 0; p < c; ++p) {
            if (!A.nz(p, c)) continue;
            const std::size_t b = block_of[p];
            std::size_t& slot = maps[b][c];
            slot = std::max(slot, std::min(last[b], c) - p);
        }
    for (std::size_t b = 0; b < maps.size(); ++b) {
        auto it = maps[b].lower_bound(last[b]);
        if (it == maps[b].end()) continue;
        const std::size_t c0 = it->first;
        const std::size_t p = block_of[c0];
        for (; it != maps[b].end(); ++it) {
            const std::size_t c = it->first;
            std::size_t& slot = maps[p][c];
            slot = std::max(slot, std::min(last[p], c) - c0);
        }
    }
    std::vector<block_profile> out(maps.size());
    for (std::size_t b = 0; b < maps.size(); ++b) {
        out[b].first = unsigned(first[b]);
        out[b].last = unsigned(last[b]);
        for (auto& kv : maps[b]) out[b].segments.push_back(block_segment{unsigned(kv.first), unsigned(kv.second)});
    }
    return out;
}

// Random sparse symmetric matrix, diagonally dominant so that LDLt without pivoting
// exists; `indefinite` gives the diagonal random signs. `components` > 1 makes a
// disconnected graph of that many diagonal parts.
inline dense_sym random_matrix(std::size_t n, double density, bool indefinite, unsigned seed,
                               std::size_t components = 1) {
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> u(-1.0, 1.0), p01(0.0, 1.0);
    dense_sym A(n);
    const std::size_t part = (n + components - 1) / components;
    for (std::size_t j = 0; j < n; ++j)
        for (std::size_t i = 0; i < j; ++i) {
            if (i / part != j / part) continue;
            // a band with random holes plus scattered far entries
            const bool near = j - i <= 3;
            if ((near && p01(rng) < 0.8) || p01(rng) < density) A.set(i, j, u(rng));
        }
    for (std::size_t i = 0; i < n; ++i) {
        double s = 1.0;
        for (std::size_t j = 0; j < n; ++j)
            if (j != i) s += std::fabs(A(i, j));
        const double sign = (indefinite && p01(rng) < 0.4) ? -1.0 : 1.0;
        A(i, i) = sign * s * (1.0 + p01(rng));
    }
    return A;
}

// Dense LDLt without pivoting: returns the pivots D; x := A^-1 b.
inline std::vector<double> dense_ldlt_solve(const dense_sym& A, std::vector<double>& x) {
    const std::size_t n = A.n;
    std::vector<double> L(A.a), d(n), t(n);  // row i of L at L[i * n] (A is symmetric)
    for (std::size_t j = 0; j < n; ++j) {
        const double* Lj = &L[j * n];
        for (std::size_t k = 0; k < j; ++k) t[k] = Lj[k] * d[k];
        double dj = L[j * n + j];
        for (std::size_t k = 0; k < j; ++k) dj -= Lj[k] * t[k];
        d[j] = dj;
        for (std::size_t i = j + 1; i < n; ++i) {
            double* Li = &L[i * n];
            double s = Li[j];
            for (std::size_t k = 0; k < j; ++k) s -= Li[k] * t[k];
            Li[j] = s / dj;
        }
    }
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t k = 0; k < i; ++k) x[i] -= L[i * n + k] * x[k];
    for (std::size_t i = 0; i < n; ++i) x[i] /= d[i];
    for (std::size_t i = n; i-- > 0;)
        for (std::size_t k = i + 1; k < n; ++k) x[i] -= L[k * n + i] * x[k];
    return d;
}

// A^-1 b by the dense reference.
inline std::vector<double> dense_solve(const dense_sym& A, std::vector<double> b) {
    dense_ldlt_solve(A, b);
    return b;
}

// Builds the block-skyline matrix of A with blocks of at most `limit` columns and
// fills it entry by entry.
inline int make_skyline(const dense_sym& A, std::size_t limit, symmetric_hybrid_OOC<double>& S) {
    std::vector<block_profile> prof = build_profiles(A, limit);
    const int rc = S.init(prof.data(), prof.size(), 0.0, Ptr<OOC_mgr>());
    if (rc) return rc;
    for (std::size_t j = 0; j < A.n; ++j)
        for (std::size_t i = 0; i <= j; ++i)
            if (A.nz(i, j)) {
                const int r = S.set_val(i, j, A(i, j));
                if (r) return r;
            }
    return 0;
}

// The block-skyline form of A, not yet factored.
inline skyline_factor skyline_of(const dense_sym& A, std::size_t limit = 600) {
    symmetric_hybrid_OOC<double> S;
    EXPECT_EQ(make_skyline(A, limit, S), 0);
    return skyline_factor(S);
}

inline double inf_norm(const std::vector<double>& v) {
    double m = 0;
    for (double x : v) m = std::max(m, std::fabs(x));
    return m;
}

// The checker of factor-and-solve: factors A's skyline form with `checker` and the
// given thread count, compares the pivots with the dense reference, solves one and
// three right-hand sides and checks the residuals and the energy of the forward pass.
// Returns the solution of the first right-hand side.
template <class Checker>
std::vector<double> check_factor_and_solve(const dense_sym& A, std::size_t limit, Checker& checker, int n_threads,
                                           std::size_t cache_bytes = 0x100000) {
    const std::size_t n = A.n;
    symmetric_hybrid_OOC<double> S;
    EXPECT_EQ(make_skyline(A, limit, S), 0);
    skyline_factor F(S);
    EXPECT_EQ(F.factorize(checker, cache_bytes, n_threads), 0);
    EXPECT_TRUE(F.factored());

    std::mt19937 rng(7);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    std::vector<double> b(n), x(n), xref(n);
    for (auto& v : b) v = u(rng);
    xref = b;
    const std::vector<double> d = dense_ldlt_solve(A, xref);

    // pivots: D = 1 / stored diagonal, and the checker's range
    double dmin = 1e300, dmax = -1e300, dscale = 0;
    for (double v : d) {
        dmin = std::min(dmin, v);
        dmax = std::max(dmax, v);
        dscale = std::max(dscale, std::fabs(v));
    }
    for (std::size_t i = 0; i < n; ++i) {
        const double Di = 1.0 / F.block(F.block_of(i)).diag()[i - F.block(F.block_of(i)).first()];
        EXPECT_NEAR(Di, d[i], 1e-11 * dscale) << "pivot " << i;
    }
    EXPECT_NEAR(checker.first, dmin, 1e-11 * dscale);
    EXPECT_NEAR(checker.second, dmax, 1e-11 * dscale);

    // one right-hand side: residual relative to |A| |x| + |b|, energy b^T A^-1 b
    x = b;
    const double energy = F.solve(x.data(), n_threads);
    double anorm = 0;
    for (std::size_t i = 0; i < n; ++i) {
        double s = 0;
        for (std::size_t j = 0; j < n; ++j) s += std::fabs(A(i, j));
        anorm = std::max(anorm, s);
    }
    std::vector<double> r(b);
    for (std::size_t j = 0; j < n; ++j)
        for (std::size_t i = 0; i < n; ++i) r[i] -= A(i, j) * x[j];
    EXPECT_LT(inf_norm(r), 1e-12 * (anorm * inf_norm(x) + inf_norm(b)));
    double eref = 0;
    for (std::size_t i = 0; i < n; ++i) eref += b[i] * xref[i];
    EXPECT_NEAR(energy, eref, 1e-10 * std::max(1.0, std::fabs(eref)));
    std::vector<double> diff(n);
    for (std::size_t i = 0; i < n; ++i) diff[i] = x[i] - xref[i];
    EXPECT_LE(inf_norm(diff), 1e-10 * inf_norm(xref));

    // three right-hand sides at once, the second being b again
    const std::size_t ld = n + 3;
    std::vector<double> Y(ld * 3, 0.0), e3(3);
    for (std::size_t i = 0; i < n; ++i) {
        Y[i] = u(rng);
        Y[i + ld] = b[i];
        Y[i + 2 * ld] = u(rng);
    }
    const std::vector<double> Y0(Y);
    F.solve(Y.data(), ld, 3, n_threads, e3.data());
    for (std::size_t i = 0; i < n; ++i) EXPECT_NEAR(Y[i + ld], x[i], 1e-13 * (1 + std::fabs(x[i])));
    EXPECT_NEAR(e3[1], energy, 1e-12 * std::max(1.0, std::fabs(energy)));
    for (std::size_t c = 0; c < 3; c += 2) {
        std::vector<double> rc(n), yc(n);
        for (std::size_t i = 0; i < n; ++i) {
            rc[i] = Y0[i + c * ld];
            yc[i] = Y[i + c * ld];
        }
        const double bn = inf_norm(rc);
        for (std::size_t j = 0; j < n; ++j)
            for (std::size_t i = 0; i < n; ++i) rc[i] -= A(i, j) * yc[j];
        EXPECT_LT(inf_norm(rc), 1e-12 * (anorm * inf_norm(yc) + bn));
    }
    return x;
}

}  // namespace testing
}  // namespace core
}  // namespace orv
