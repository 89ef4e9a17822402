// A shape tabulated at the points of a point set: the per-point values and reference
// gradients (and second derivatives for the shapes that have them), computed once
// when a server is built and read only afterwards.
#pragma once

#include "elements/local_point.h"

namespace elfes {

template <class Shape, class PointSet>
struct shape_table {
    using shape_type = Shape;
    using point_set_type = PointSet;
    static constexpr unsigned nbr_nodes = Shape::nbr_nodes;
    static constexpr unsigned dim = Shape::dim;
    static constexpr unsigned nbr_points = PointSet::size;
    // at least one slot, so that shapes without second derivatives still compile
    static constexpr unsigned nbr_second = Shape::nbr_second_derivatives > 0 ? Shape::nbr_second_derivatives : 1;

    static_assert(PointSet::dim == Shape::dim, "point set and shape differ in dimension");

    local_point point[nbr_points];
    double N[nbr_points][nbr_nodes];
    double dN[nbr_points][nbr_nodes][dim];
    double d2N[nbr_points][nbr_nodes][nbr_second];

    shape_table() {
        for (unsigned p = 0; p < nbr_points; ++p) {
            point[p] = PointSet::point(p);
            Shape::values(point[p].coord, N[p]);
            Shape::gradients(point[p].coord, dN[p]);
            if constexpr (Shape::nbr_second_derivatives > 0)
                Shape::second_derivatives(point[p].coord, d2N[p]);
            else
                for (unsigned i = 0; i < nbr_nodes; ++i) d2N[p][i][0] = 0.0;
        }
    }
};

}  // namespace elfes
