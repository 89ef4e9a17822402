// Node order tables. The library's orders: triangles and tetrahedra put the corner at
// the origin last; wedges list the triangle's corners in the triangle's order; the
// quadratic shapes list corners, mid-edges, face centres, centre (see elements/).
#include "io/node_order.h"

#include <cstring>

#include <orv/fem/io/mesh_io.h>

namespace orv {
namespace fem {
namespace io {
namespace detail {
namespace {

const unsigned char identity[27] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13,
                                    14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26};

// Gmsh: triangle (0,0) (1,0) (0,1), mid-edges 0-1, 1-2, 2-0; tetrahedron (0,0,0),
// (1,0,0), (0,1,0), (0,0,1), mid-edges 0-1, 1-2, 2-0, 3-0, 3-2, 3-1; prism corners
// 0-2 at the bottom, mid-edges 0-1, 0-2, 0-3, 1-2, 1-4, 2-5, 3-4, 3-5, 4-5, quad face
// centres 0143, 0253, 1254; pyramid mid-edges 0-1, 0-3, 0-4, 1-2, 1-4, 2-3, 2-4, 3-4,
// base centre; hexahedron mid-edges 0-1, 0-3, 0-4, 1-2, 1-5, 2-3, 2-6, 3-7, 4-5, 4-7,
// 5-6, 6-7, face centres z-, y-, x-, x+, y+, z+, centre.
const unsigned char gmsh_tri[6] = {1, 2, 0, 5, 3, 4};
const unsigned char gmsh_tet[10] = {1, 2, 3, 0, 8, 9, 5, 4, 6, 7};
const unsigned char gmsh_pyr[14] = {0, 1, 2, 3, 4, 7, 9, 11, 12, 5, 8, 10, 6, 13};
const unsigned char gmsh_wedge[18] = {1, 2, 0, 4, 5, 3, 10, 11, 8, 7, 6, 9, 13, 12, 14, 16, 15, 17};
const unsigned char gmsh_hex[27] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  11, 13, 9,  16, 18,
                                    19, 17, 10, 12, 14, 15, 22, 23, 21, 24, 20, 25, 26};

// Decks: tetrahedron mid-edges 1-2, 2-3, 3-1, 1-4, 2-4, 3-4 (1-based); wedge mid-edges
// of the bottom, of the top, then the vertical ones; beam B32 end, middle, end.
const unsigned char deck_tri[6] = {1, 2, 0, 5, 3, 4};
const unsigned char deck_tet[10] = {1, 2, 3, 0, 9, 8, 5, 4, 6, 7};
const unsigned char deck_wedge[15] = {1, 2, 0, 4, 5, 3, 13, 14, 12, 8, 6, 7, 11, 9, 10};
const unsigned char deck_edge3[3] = {0, 2, 1};

struct named_shape {
    const char* name;
    element_type type;
    const unsigned char* order;
};

const named_shape deck_shapes[] = {
    {"C3D4", FE_tetra4, deck_tet},     {"C3D10", FE_tetra10, deck_tet}, {"C3D6", FE_wedge6, deck_wedge},
    {"C3D15", FE_wedge15, deck_wedge}, {"C3D8", FE_hexa8, identity},    {"C3D20", FE_hexa20, identity},
    {"C3D8R", FE_hexa8, identity},     {"C3D20R", FE_hexa20, identity}, {"C3D10M", FE_tetra10, deck_tet},
    {"CPS3", FE_faceT3, deck_tri},     {"CPE3", FE_faceT3, deck_tri},   {"CAX3", FE_faceT3, deck_tri},
    {"S3", FE_faceT3, deck_tri},       {"S3R", FE_faceT3, deck_tri},    {"CPS4", FE_faceQ4, identity},
    {"CPE4", FE_faceQ4, identity},     {"CAX4", FE_faceQ4, identity},   {"S4", FE_faceQ4, identity},
    {"CPS4R", FE_faceQ4, identity},    {"CPE4R", FE_faceQ4, identity},  {"CAX4R", FE_faceQ4, identity},
    {"S4R", FE_faceQ4, identity},      {"CPS6", FE_faceT6, deck_tri},   {"CPE6", FE_faceT6, deck_tri},
    {"CAX6", FE_faceT6, deck_tri},     {"S6", FE_faceT6, deck_tri},     {"CPS8", FE_faceQ8, identity},
    {"CPE8", FE_faceQ8, identity},     {"CAX8", FE_faceQ8, identity},   {"S8", FE_faceQ8, identity},
    {"CPS8R", FE_faceQ8, identity},    {"CPE8R", FE_faceQ8, identity},  {"CAX8R", FE_faceQ8, identity},
    {"S8R", FE_faceQ8, identity},      {"B31", FE_edge2, identity},     {"B32", FE_edge3, deck_edge3},
    {"B31R", FE_edge2, identity},      {"B32R", FE_edge3, deck_edge3},  {"T3D2", FE_edge2, identity},
};

}  // namespace

shape_order gmsh_shape(int gmsh_type) {
    struct entry {
        int gmsh;
        element_type type;
        const unsigned char* order;
    };
    static const entry table[] = {
        {15, FE_node1, identity},     {1, FE_edge2, identity},      {8, FE_edge3, identity},
        {26, FE_edge4, identity},     {2, FE_faceT3, gmsh_tri},     {9, FE_faceT6, gmsh_tri},
        {3, FE_faceQ4, identity},     {16, FE_faceQ8, identity},    {10, FE_faceQ9, identity},
        {4, FE_tetra4, gmsh_tet},     {11, FE_tetra10, gmsh_tet},   {7, FE_pyramid5, gmsh_pyr},
        {19, FE_pyramid13, gmsh_pyr}, {14, FE_pyramid14, gmsh_pyr}, {6, FE_wedge6, gmsh_wedge},
        {18, FE_wedge15, gmsh_wedge}, {13, FE_wedge18, gmsh_wedge}, {5, FE_hexa8, gmsh_hex},
        {17, FE_hexa20, gmsh_hex},    {12, FE_hexa27, gmsh_hex},
    };
    for (const entry& e : table)
        if (e.gmsh == gmsh_type) return shape_order{e.type, nbr_nodes(e.type), e.order};
    return shape_order{};
}

shape_order deck_shape(const std::string& name) {
    for (const named_shape& s : deck_shapes)
        if (name == s.name) return shape_order{s.type, nbr_nodes(s.type), s.order};
    return shape_order{};
}

}  // namespace detail

unsigned vtk_cell_type(element_type type, const unsigned char** order) noexcept {
    // VTK: triangle and tetrahedron from the origin corner; wedge with its first
    // triangle's normal pointing away from the second; quadratic cells list corners,
    // then mid-edges in the order of their corner edges, then face centres.
    static const unsigned char tri[6] = {2, 0, 1, 4, 5, 3};
    static const unsigned char tet[10] = {3, 0, 1, 2, 7, 6, 8, 9, 5, 4};
    static const unsigned char pyr[13] = {0, 1, 2, 3, 4, 9, 10, 11, 12, 5, 6, 7, 8};
    static const unsigned char wedge[18] = {2, 1, 0, 5, 4, 3, 9, 11, 10, 12, 14, 13, 8, 7, 6, 15, 17, 16};
    struct entry {
        element_type type;
        unsigned vtk;
        const unsigned char* order;
    };
    static const entry table[] = {
        {FE_node1, 1, detail::identity},
        {FE_edge2, 3, detail::identity},
        {FE_edge3, 21, detail::identity},
        {FE_edge4, 35, detail::identity},
        {FE_faceT3, 5, tri},
        {FE_faceT6, 22, tri},
        {FE_faceQ4, 9, detail::identity},
        {FE_faceQ8, 23, detail::identity},
        {FE_faceQ9, 28, detail::identity},
        {FE_tetra4, 10, tet},
        {FE_tetra10, 24, tet},
        {FE_pyramid5, 14, pyr},
        {FE_pyramid13, 27, pyr},
        {FE_pyramid14, 27, pyr},
        {FE_wedge6, 13, wedge},
        {FE_wedge15, 26, wedge},
        {FE_wedge18, 32, wedge},
        {FE_hexa8, 12, detail::identity},
        {FE_hexa20, 25, detail::identity},
        {FE_hexa27, 29, detail::identity},
    };
    for (const entry& e : table)
        if (e.type == type) {
            if (order != nullptr) *order = e.order;
            return e.vtk;
        }
    return 0;
}

}  // namespace io
}  // namespace fem
}  // namespace orv
