// Every stiffness entry of the family table for the continuum physics exists as a
// model, with its codes, and nothing outside the table does.
#include <gtest/gtest.h>

#include <cstring>

#include "elements/element_family_table.h"
#include "elements/mesh_material_law.h"
#include "tests/elements/test_mesh_utils.h"

namespace orv {
namespace test {
namespace {

struct physics_case {
    const char* name;
    unsigned family;
};

const physics_case built[] = {{"mechanical_displacement_1d", 2000},
                              {"mechanical_displacement_3d", 4000},
                              {"mechanical_membrane", 9000},
                              {"mechanical_plane_strain", 10000},
                              {"mechanical_displacement_axi3d", 15000},
                              {"mechanical_displacement_axi_torsion", 16000}};

// A physics of a family and kinematics on a law that never gets evaluated here.
Ptr<core::physics_model_base> make_physics(unsigned family, unsigned kinematics) {
    Ptr<core::physics_model_base> ph;
    switch (family) {
        case 2000: ph = new core::mechanical_displacement_1d(kinematics); break;
        case 4000: ph = new core::mechanical_displacement_3d(kinematics); break;
        case 9000: ph = new core::mechanical_membrane(kinematics); break;
        case 10000: ph = new core::mechanical_plane_strain(kinematics); break;
        case 15000: ph = new core::mechanical_displacement_axi3d(kinematics); break;
        default: ph = new core::mechanical_displacement_axi_torsion(kinematics); break;
    }
    const unsigned slots[3] = {0, 1, 2};
    const unsigned n = family == 10000 || family == 15000 ? 2 : 3;
    ph->set_DOF_slots(slots, n);
    Ptr<core::law_solid_StVenant> law = make_law(1.0, 0.3);
    ph->set_material(Ptr<core::mesh_material>(new core::mesh_material_solid(law)), Ptr<ref_counted>(law.get()));
    return ph;
}

TEST(mesh_family, every_entry_is_built) {
    fem::context ctx;
    unsigned made = 0;
    for (const physics_case& pc : built)
        for (unsigned kin :
             {core::kinematics_lin, core::kinematics_gnls, core::kinematics_gnld, core::kinematics_gnl}) {
            Ptr<core::physics_model_base> ph = make_physics(pc.family, kin);
            for (unsigned t = 0; t < fem::FE_type_end + 2; ++t) {
                const fem::element_type type = static_cast<fem::element_type>(t);
                unsigned bit = kin == core::kinematics_lin    ? elfes::instance_lin
                               : kin == core::kinematics_gnld ? elfes::instance_gnld
                               : kin == core::kinematics_gnl  ? elfes::instance_gnl
                                                              : elfes::instance_gnls;
                if (pc.family == 15000 && kin == core::kinematics_gnls) bit = elfes::instance_gnl;
                if (pc.family == 15000 && kin == core::kinematics_gnl) bit = 0;  // its finite code is 15100
                const bool listed = bit && elfes::find_family_entry(pc.name, t, bit) != nullptr;
                const unsigned nn = fem::nbr_nodes(type);
                dense2D<unsigned int> conn(nn ? nn : 1, 2, 0u);
                Ptr<core::numerical_model_base> model;
                const int rc = core::create_stiff_mesh(ctx.engine(), ph, conn, type, model);
                if (listed) {
                    ASSERT_EQ(rc, 0) << pc.name << " " << kin << " " << t;
                    ASSERT_TRUE(model);
                    EXPECT_EQ(model->get_server_code(), pc.family + kin + t);
                    EXPECT_EQ(model->get_family_code(), pc.family);
                    EXPECT_EQ(model->get_dim(), fem::element_dim(type));
                    EXPECT_EQ(model->nbr_elements(), 2u);
                    ++made;
                } else {
                    EXPECT_EQ(rc, fem::error_element_type) << pc.name << " " << kin << " " << t;
                    EXPECT_FALSE(model);
                }
            }
        }
    // 3 rods, 16 solids, 8 membranes, 8 plane strain, 8 axisymmetric, 4 with torsion
    EXPECT_EQ(made, 47u);
}

}  // namespace
}  // namespace test
}  // namespace orv
