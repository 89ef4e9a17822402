// Element shapes of the library and their node counts.
#pragma once

namespace orv {
namespace fem {

/// Numbering of the element shapes. Values without a shape of their own keep their
/// place (and their node count) so that the numbering stays stable.
enum element_type : unsigned {
    FE_none = 0,
    FE_node1 = 1,
    FE_edge2 = 2,
    FE_edge3 = 3,
    FE_edge4 = 4,
    FE_reserved5 = 5,
    FE_reserved6 = 6,
    FE_faceT3 = 7,
    FE_faceT6 = 8,
    FE_faceQ4 = 9,
    FE_faceQ8 = 10,
    FE_faceQ9 = 11,
    FE_reserved12 = 12,
    FE_reserved13 = 13,
    FE_tetra4 = 14,
    FE_tetra10 = 15,
    FE_pyramid5 = 16,
    FE_pyramid13 = 17,
    FE_pyramid14 = 18,
    FE_wedge6 = 19,
    FE_wedge15 = 20,
    FE_wedge18 = 21,
    FE_hexa8 = 22,
    FE_hexa20 = 23,
    FE_hexa27 = 24,
    FE_type_end = 25
};

/// Dimension of a shape: 0 for a point, 1 for an edge, 2 for a face, 3 for a solid.
unsigned element_dim(element_type type);
/// Number of nodes of a shape; 0 for FE_none and for values past the table.
unsigned nbr_nodes(element_type type);
/// Number of corner nodes of a shape; 0 for FE_none and for values past the table.
unsigned nbr_base_nodes(element_type type);

}  // namespace fem
}  // namespace orv
