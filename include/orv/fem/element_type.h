// Element shapes of the library and their node counts.
#pragma once

namespace orv {
namespace fem {

// Numbering of the element shapes. Values without a shape of their own keep their
// place (and their node count) so that the numbering stays stable.
/*
 * Node order. A connectivity column lists an element's nodes in the order below,
 * corners first; every mesh code orders its mid-side nodes its own way, so a host
 * converting from another convention reorders them. Reference coordinates are xi,
 * eta, zeta; in the pictures xi runs to the right, eta upward, zeta is the layer.
 *
 *   FE_edge2   0 (xi = -1), 1 (+1)
 *   FE_edge3   0 (-1), 1 (+1), 2 (0)
 *   FE_edge4   0 (-1), 1 (+1), 2 (-1/3), 3 (+1/3)
 *
 *   FE_faceT3 / FE_faceT6: corner 0 at (1, 0), corner 1 at (0, 1), corner 2 at the
 *   origin (N0 = xi, N1 = eta, N2 = 1 - xi - eta); mid-side 3 + i opposite corner i:
 *        1
 *        | \
 *        3   5
 *        |     \
 *        2 --4-- 0
 *
 *   FE_faceQ4 / FE_faceQ9: counter-clockwise from (-1, -1); mid-sides from the side
 *   0-1 on, then the centre:
 *        3 --6-- 2
 *        |       |
 *        7   8   5
 *        |       |
 *        0 --4-- 1
 *
 *   FE_tetra4 / FE_tetra10: corners 0 (1, 0, 0), 1 (0, 1, 0), 2 (0, 0, 1), 3 at the
 *   origin (N3 = 1 - xi - eta - zeta). Edge nodes: 4 on 1-2, 5 on 0-2, 6 on 0-1,
 *   7 on 0-3, 8 on 1-3, 9 on 2-3.
 *      base (zeta = 0)          the apex 2 (zeta = 1) is joined
 *        1                      to 1 by 4, to 0 by 5, to 3 by 9
 *        | \
 *        8   6
 *        |     \
 *        3 --7-- 0
 *
 *   FE_pyramid5 / FE_pyramid14: base corners 0 to 3 as FE_faceQ4 at zeta = 0, apex 4
 *   at (0, 0, 1); 5 to 8 the middles of the edges from 0, 1, 2, 3 to the apex; 9 to
 *   12 the base mid-sides; 13 the base centre.
 *      base (zeta = 0)     zeta = 1/2
 *        3 --11-- 2          8 ---- 7
 *        |        |          |      |
 *        12  13   10         5 ---- 6
 *        |        |
 *        0 --9--- 1
 *
 *   FE_wedge6 / FE_wedge18: a triangle (xi, eta) in FE_faceT3 order times zeta in
 *   [-1, 1]: corners 0, 1, 2 at zeta = -1 and 3, 4, 5 above them at zeta = +1; then
 *   6, 7, 8 the middles of the vertical edges from 0, 1, 2; the mid-sides of the lower
 *   triangle 9 (1-2), 10 (2-0), 11 (0-1), of the upper one 12 (4-5), 13 (5-3),
 *   14 (3-4), and at zeta = 0 the centres of the quadrilateral faces 15 (on 1-2),
 *   16 (on 2-0), 17 (on 0-1).
 *      zeta = -1          zeta = 0           zeta = +1
 *        1                  7                  4
 *        | \                | \                | \
 *        9   11             15  17             12  14
 *        |     \            |     \            |     \
 *        2 --10-- 0         8 --16-- 6         5 --13-- 3
 *
 *   FE_hexa8 / FE_hexa27: the lower face (zeta = -1) counter-clockwise from
 *   (-1, -1, -1), then the upper face the same way; mid-edges of the lower face,
 *   of the upper face, the vertical edges; face centres -xi, +xi, -eta, +eta, -zeta,
 *   +zeta (20 to 25); the centre 26.
 *      zeta = -1          zeta = 0            zeta = +1
 *        3 --10-- 2         19 --23-- 18        7 --14-- 6
 *        |        |         |         |         |        |
 *        11  24   9         20   26   21        15  25   13
 *        |        |         |         |         |        |
 *        0 --8--- 1         16 --22-- 17        4 --12-- 5
 *
 * FE_faceQ8, FE_pyramid13, FE_wedge15 and FE_hexa20 (serendipity shapes) have a node
 * count but no shape: creating a model on them gives -104. A 20-node hexahedron or a
 * 15-node wedge is meshed with FE_hexa27 or FE_wedge18, whose face and centre nodes
 * the host adds.
 */
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
