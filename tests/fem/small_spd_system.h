// Small dense SPD systems (the dense reference of the factor checker) factored through
// the block-skyline path, and minimal run records, for the tests of the iterative solvers.
#pragma once

#include <vector>

#include <orv/fem/error_type.h>

#include "common/log_capture.h"
#include "common/run_records.h"
#include "linalg/factor_checker.h"
#include "linalg/numbering.h"
#include "linalg/pivot_checkers.h"
#include "linalg/symmetric_L_D_Lt.h"
#include "linalg/symmetric_hybrid_OOC.h"

namespace fem_test {

using orv::core::testing::dense_sym;
using orv::test::log_capture;
using orv::test::run_data;
using orv::test::run_settings;

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
