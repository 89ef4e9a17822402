// Small dense SPD systems factored through the block-skyline path, and minimal run
// records, for the tests of the iterative solvers.
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "linalg/numbering.h"
#include "linalg/pivot_checkers.h"
#include "linalg/symmetric_L_D_Lt.h"
#include "linalg/symmetric_hybrid_OOC.h"

namespace fem_test {

// Run records with the common hooks and error fields.
struct run_settings {
    void (*display_hook)(void*, unsigned, const char*) = nullptr;
    void (*spare_hook)() = nullptr;
    bool (*interrupt_hook)(void*) = nullptr;
    void* pass_thru = nullptr;
};
struct run_data {
    int error_code = 0;
    int warning_code = 0;
    char error_name[256] = {};
    char error_msg[256] = {};
};

struct log_capture {
    std::vector<std::string> lines;
    std::vector<unsigned> levels;
    static void hook(void* self, unsigned level, const char* text) {
        static_cast<log_capture*>(self)->lines.push_back(text);
        static_cast<log_capture*>(self)->levels.push_back(level);
    }
};

// Dense symmetric n x n matrix, row major.
struct dense_sym {
    std::size_t n;
    std::vector<double> a;
    explicit dense_sym(std::size_t n_) : n(n_), a(n_ * n_, 0.0) {}
    double& operator()(std::size_t i, std::size_t j) { return a[i * n + j]; }
    double operator()(std::size_t i, std::size_t j) const { return a[i * n + j]; }
    void add_spring(std::size_t i, std::size_t j, double k) {
        (*this)(i, i) += k;
        (*this)(j, j) += k;
        (*this)(i, j) -= k;
        (*this)(j, i) -= k;
    }
    void mult_add(const double* x, double* y) const {
        for (std::size_t i = 0; i < n; ++i)
            for (std::size_t j = 0; j < n; ++j) y[i] += a[i * n + j] * x[j];
    }
    // Gaussian elimination on a copy (the matrices here are SPD and small).
    std::vector<double> solve(std::vector<double> b) const {
        std::vector<double> m(a);
        for (std::size_t k = 0; k < n; ++k)
            for (std::size_t i = k + 1; i < n; ++i) {
                const double f = m[i * n + k] / m[k * n + k];
                for (std::size_t j = k; j < n; ++j) m[i * n + j] -= f * m[k * n + j];
                b[i] -= f * b[k];
            }
        for (std::size_t k = n; k-- > 0;) {
            for (std::size_t j = k + 1; j < n; ++j) b[k] -= m[k * n + j] * b[j];
            b[k] /= m[k * n + k];
        }
        return b;
    }
};

// Numbers, assembles and factors a dense SPD matrix. pos[i] is the matrix position of
// row i. Returns the factorisation's code.
inline int factor_dense(const dense_sym& K, orv::core::skyline_factor& F, std::vector<unsigned>& pos) {
    using namespace orv::core;
    const std::size_t n = K.n;
    orv::dense1D<unsigned int, 8> gp, gi;
    gp.push_back(0u);
    for (unsigned i = 0; i < n; ++i)
        for (unsigned j = 0; j <= i; ++j)
            if (K(i, j) != 0.0) {
                gi.push_back(i);
                if (j != i) gi.push_back(j);
                gp.push_back(unsigned(gi.size()));
            }
    std::vector<unsigned> ids(n);
    for (unsigned i = 0; i < n; ++i) ids[i] = i;
    vector_fast<unsigned int> free_DOFs(ids.data(), ids.data() + n);
    numbering_output out;
    int rc = number_free_DOFs(gp, gi, free_DOFs, out, false);
    if (rc) return rc;
    pos.resize(n);
    for (unsigned i = 0; i < n; ++i) pos[i] = free_DOFs.find(i);
    symmetric_hybrid_OOC<double> A;
    rc = A.init(out.blocks, 0.0, orv::Ptr<OOC_mgr>());
    if (rc) return rc;
    for (unsigned i = 0; i < n; ++i)
        for (unsigned j = 0; j <= i; ++j)
            if (K(i, j) != 0.0 && (rc = A.add_val(pos[i], pos[j], K(i, j))) != 0) return rc;
    F = A;
    pivot_check_positive<dummy_verboser> checker;
    return F.factorize(checker, 0x100000, 1);
}

// A chain of n DOFs tied by springs 1 + i / 10, the first one also to the ground.
inline dense_sym spring_chain(std::size_t n) {
    dense_sym K(n);
    K(0, 0) += 2.0;
    for (std::size_t i = 0; i + 1 < n; ++i) K.add_spring(i, i + 1, 1.0 + 0.1 * double(i));
    return K;
}

}  // namespace fem_test
