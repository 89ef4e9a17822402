// Repeatability of the parallel factorisation and solves: the same matrix factored
// and solved again at the same thread count gives the same bits, and the parallel
// single right-hand-side sweeps agree with the serial ones.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "linalg/dense_kernels.h"
#include "linalg/numbering.h"
#include "linalg/pivot_checkers.h"
#include "linalg/symmetric_L_D_Lt.h"

using namespace orv::core;

namespace {

// An element mesh of n^3 hexahedra with 3 DOFs a node, each element a random dense
// SPD 24 x 24 matrix (B^T B plus a small shift), numbered by the library's driver with
// small blocks, so that many blocks of one level send updates into the same
// ancestors.
struct mesh_matrix {
    std::vector<unsigned int> pos;                    // DOF ID -> position
    std::vector<std::vector<unsigned int>> elements;  // DOF IDs of each element
    std::vector<std::vector<double>> Ke;              // 24 x 24, column major
    orv::dense1D<block_profile, 8> blocks;
    std::size_t n = 0;

    explicit mesh_matrix(unsigned int ne) {
        const unsigned int nn = ne + 1;
        n = std::size_t(nn) * nn * nn * 3;
        orv::dense1D<unsigned int, 8> gptr, gids;
        gptr.push_back(0u);
        std::mt19937 rng(11);
        std::uniform_real_distribution<double> u(-1.0, 1.0);
        for (unsigned int k = 0; k < ne; ++k)
            for (unsigned int j = 0; j < ne; ++j)
                for (unsigned int i = 0; i < ne; ++i) {
                    std::vector<unsigned int> dofs;
                    for (unsigned int c = 0; c < 8; ++c) {
                        const unsigned int node = (i + (c & 1)) + nn * ((j + ((c >> 1) & 1)) + nn * (k + (c >> 2)));
                        for (unsigned int d = 0; d < 3; ++d) {
                            dofs.push_back(node * 3 + d);
                            gids.push_back(node * 3 + d);
                        }
                    }
                    gptr.push_back(unsigned(gids.size()));
                    std::vector<double> B(24 * 24), K(24 * 24, 0.0);
                    for (double& v : B) v = u(rng);
                    for (std::size_t c = 0; c < 24; ++c)
                        for (std::size_t r = 0; r < 24; ++r) {
                            double s = (r == c) ? 0.1 : 0.0;
                            for (std::size_t q = 0; q < 24; ++q) s += B[q + r * 24] * B[q + c * 24];
                            K[r + c * 24] = s;
                        }
                    elements.push_back(dofs);
                    Ke.push_back(K);
                }
        std::vector<unsigned int> all(n);
        for (std::size_t d = 0; d < n; ++d) all[d] = unsigned(d);
        vector_fast<unsigned int> free_DOFs(all.data(), all.data() + n);
        numbering_output out;
        EXPECT_EQ(number_free_DOFs(gptr, gids, free_DOFs, out, false, numbering_nested_dissection_postordered, 24), 0);
        blocks = out.blocks;
        pos.resize(n);
        for (std::size_t d = 0; d < n; ++d) pos[d] = free_DOFs.find(unsigned(d));
    }

    void assemble(symmetric_hybrid_OOC<double>& S) const {
        ASSERT_EQ(S.init(blocks, 0.0, orv::Ptr<OOC_mgr>()), 0);
        for (std::size_t e = 0; e < elements.size(); ++e)
            for (std::size_t c = 0; c < 24; ++c)
                for (std::size_t r = 0; r <= c; ++r)
                    ASSERT_EQ(S.add_val(pos[elements[e][r]], pos[elements[e][c]], Ke[e][r + c * 24]), 0);
    }
};

const mesh_matrix& mesh() {
    static const mesh_matrix m(10);
    return m;
}

// All stored values of the factor, block after block.
std::vector<double> factor_values(const skyline_factor& F) {
    std::vector<double> v;
    F.for_each_block(true, [&](std::uint64_t, const skyline_factor::block_type& blk) {
        v.insert(v.end(), blk.values.data(), blk.values.data() + blk.values.size());
        return 0;
    });
    return v;
}

struct factor_run {
    std::vector<double> values, x, y;
    double energy = 0;
};

// Factors the mesh matrix with `threads` and solves for a fixed right-hand side, with
// the single-vector sweeps (x) and with two columns at once (y).
factor_run factor_and_solve(int threads, skyline_factor* keep = nullptr) {
    const mesh_matrix& m = mesh();
    symmetric_hybrid_OOC<double> S;
    m.assemble(S);
    skyline_factor F(S);
    pivot_check_positive<dummy_verboser> checker;
    EXPECT_EQ(F.factorize(checker, 0x100000, threads), 0);
    factor_run r;
    r.values = factor_values(F);
    r.x.resize(m.n);
    for (std::size_t i = 0; i < m.n; ++i) r.x[i] = std::sin(double(i));
    r.y = r.x;
    r.y.insert(r.y.end(), r.x.begin(), r.x.end());
    r.energy = F.solve(r.x.data(), threads);
    F.solve(r.y.data(), m.n, 2, threads);
    if (keep) *keep = F;
    return r;
}

bool same_bits(const std::vector<double>& a, const std::vector<double>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0;
}

}  // namespace

TEST(FactorDeterminism, TestMatrixHasUpdatesMeetingInOneBlock) {
    // Repeatability is only at stake when several blocks send updates into one block.
    symmetric_hybrid_OOC<double> S;
    mesh().assemble(S);
    std::vector<unsigned int> children(S.nbr_blocks(), 0);
    for (std::size_t b = 0; b < S.nbr_blocks(); ++b)
        if (S.parent_of(b) != ~0u) ++children[S.parent_of(b)];
    EXPECT_GE(S.nbr_blocks(), 50u);
    EXPECT_GE(*std::max_element(children.begin(), children.end()), 2u);
}

TEST(FactorDeterminism, SameBitsEveryRunAtTwoAndThreeThreads) {
    for (int threads : {2, 3}) {
        const factor_run ref = factor_and_solve(threads);
        for (int run = 0; run < 4; ++run) {
            const factor_run r = factor_and_solve(threads);
            EXPECT_TRUE(same_bits(r.values, ref.values)) << threads << " threads, run " << run;
            EXPECT_TRUE(same_bits(r.x, ref.x)) << threads << " threads, run " << run;
            EXPECT_TRUE(same_bits(r.y, ref.y)) << threads << " threads, run " << run;
            EXPECT_EQ(std::memcmp(&r.energy, &ref.energy, sizeof(double)), 0);
        }
    }
}

TEST(FactorDeterminism, ParallelSingleVectorSweepsMatchSerialOnes) {
    skyline_factor F;
    const factor_run r = factor_and_solve(2, &F);
    std::vector<double> b(mesh().n);
    for (std::size_t i = 0; i < b.size(); ++i) b[i] = std::sin(double(i));

    // On one factor the parallel sweeps give the bits of the serial ones: every entry
    // takes its contributions in the same order.
    std::vector<double> x1(b), x2(b), x3(b);
    const double e1 = F.solve(x1.data(), 1);
    const double e2 = F.solve(x2.data(), 2);
    const double e3 = F.solve(x3.data(), 3);
    EXPECT_TRUE(same_bits(x1, x2));
    EXPECT_TRUE(same_bits(x1, x3));
    EXPECT_TRUE(same_bits(x1, r.x));
    EXPECT_EQ(e1, e2);
    EXPECT_EQ(e1, e3);
    std::vector<double> f1(b), f2(b);
    F.solve_forward_only(f1.data(), 1);
    F.solve_forward_only(f2.data(), 2);
    EXPECT_TRUE(same_bits(f1, f2));
    // The columns of a multi-vector solve are those of the single-vector one.
    for (std::size_t i = 0; i < b.size(); ++i) EXPECT_NEAR(r.y[i], x2[i], 1e-12 * (1 + std::fabs(x2[i])));
}

TEST(FactorDeterminism, LongDotHasTheSameBitsForAnyThreadCount) {
    std::vector<double> a(40000), b(40000);
    for (std::size_t i = 0; i < a.size(); ++i) {
        a[i] = std::sin(double(i)) * 1e3;
        b[i] = std::cos(0.7 * double(i)) / (1.0 + double(i % 17));
    }
    const double d1 = kernels::dot_parallel(a.data(), b.data(), a.size(), 1);
    for (int t : {2, 3, 8}) EXPECT_EQ(kernels::dot_parallel(a.data(), b.data(), a.size(), t), d1) << t;
    double scale = 0;
    for (std::size_t i = 0; i < a.size(); ++i) scale += std::fabs(a[i] * b[i]);
    EXPECT_NEAR(d1, kernels::dot(a.data(), b.data(), a.size()), 1e-13 * scale);
}
