// An elasto-plastic solid law in a solid mesh model: the kernel reaches it through
// the adapter of the elastic laws, commits through the workspace flag, and a
// uniform plastic strain gives the law's stress on the element faces.
#include <gtest/gtest.h>

#include <algorithm>

#include "elements/test_mesh_utils.h"
#include "law_test_utils.h"
#include "laws/law_solid_ep.h"

namespace {

namespace fem = orv::fem;
namespace core = orv::core;
using orv::Ptr;

TEST(EpMesh, UniformPlasticStrainInAHexahedron) {
    fem::context ctx;
    Ptr<core::law_solid_ep_perfect> law(new core::law_solid_ep_perfect());
    ASSERT_EQ(law->init(law_test::values({250.0, 0.25, 0.0, 50.0, 1.0})), 0);
    orv::test::engine_handle h(law.get());
    fem::model_solid_lin physics(h);
    orv::test::test_mesh m = orv::test::make_patch<elfes::hexa8>(1, 1.0, 0.0);
    fem::numerical_model_stiff_lin model;
    ASSERT_EQ(model.init(ctx, physics, m.conn, fem::FE_hexa8), fem::no_error);
    const double e = 0.02;
    core::DOF_vector U = orv::test::make_U(m.pos, [&](const double* x, double* u) {
        u[0] = e * x[0];
        u[1] = u[2] = 0.0;
    });

    // What the law gives at a point of the same strain.
    orv::vector_fixed<double, 6> strain{e, 0, 0, 0, 0, 0}, S;
    orv::symmetric_fixed<double, 6> D;
    double energy, states[7];
    core::law_key probe;
    probe.element = 1000;
    ASSERT_EQ(law->compute(probe, strain, D, S, energy, states, 0), 0);
    ASSERT_GT(states[6], 0.0);

    // The workspace's first flag (set by default) lets the element commit.
    const orv::test::element_result r = orv::test::compute_element(*model.engine(), m.pos, 0, &U);
    ASSERT_EQ(r.rc, 0);
    double lo[3] = {1e300, 1e300, 1e300}, hi[3] = {-1e300, -1e300, -1e300};
    for (unsigned i = 0; i < m.pos.cols(); ++i)
        for (int c = 0; c < 3; ++c) {
            lo[c] = std::min(lo[c], m.pos(c, i));
            hi[c] = std::max(hi[c], m.pos(c, i));
        }
    // Uniform stress S: each of the four nodes of a face carries S n a quarter of
    // the face's area, and the element pulls them inwards.
    double face[3];
    for (int c = 0; c < 3; ++c) face[c] = (hi[(c + 1) % 3] - lo[(c + 1) % 3]) * (hi[(c + 2) % 3] - lo[(c + 2) % 3]);
    for (std::size_t k = 0; k < r.ids.size(); ++k) {
        const unsigned node = r.ids[k] / 9, d = r.ids[k] % 9;
        const double expected = (m.pos(d, node) == hi[d] ? -1.0 : 1.0) * S[d] * face[d] / 4.0;
        EXPECT_NEAR(r.f[k], expected, 1e-12) << k;
    }
    // Every point of the element committed its plastic state.
    EXPECT_EQ(law->nbr_state_records(), 8u);
    // K is symmetric.
    for (std::size_t i = 0; i < r.ids.size(); ++i)
        for (std::size_t j = 0; j < i; ++j) EXPECT_NEAR(r.at(i, j), r.at(j, i), 1e-12);
}

}  // namespace
