// Link between the elfes shapes and the public element enumeration: the value of a
// shape, and the one switch that turns a run-time element_type into a shape type.
#pragma once

#include <orv/fem/element_type.h>

#include "elements/elfes_shapes.h"

namespace elfes {

template <class Shape>
constexpr orv::fem::element_type element_type_of = static_cast<orv::fem::element_type>(Shape::element_type_value);

static_assert(element_type_of<edge2> == orv::fem::FE_edge2);
static_assert(element_type_of<edge3> == orv::fem::FE_edge3);
static_assert(element_type_of<edge4> == orv::fem::FE_edge4);
static_assert(element_type_of<faceT3> == orv::fem::FE_faceT3);
static_assert(element_type_of<faceT6> == orv::fem::FE_faceT6);
static_assert(element_type_of<faceQ4> == orv::fem::FE_faceQ4);
static_assert(element_type_of<faceQ9> == orv::fem::FE_faceQ9);
static_assert(element_type_of<tetra4> == orv::fem::FE_tetra4);
static_assert(element_type_of<tetra10> == orv::fem::FE_tetra10);
static_assert(element_type_of<pyramid5> == orv::fem::FE_pyramid5);
static_assert(element_type_of<pyramid14> == orv::fem::FE_pyramid14);
static_assert(element_type_of<wedge6> == orv::fem::FE_wedge6);
static_assert(element_type_of<wedge18> == orv::fem::FE_wedge18);
static_assert(element_type_of<hexa8> == orv::fem::FE_hexa8);
static_assert(element_type_of<hexa27> == orv::fem::FE_hexa27);

// Calls f(Shape{}) with the shape of `type` and returns true; returns false, without
// calling f, for a value that has no shape.
template <class F>
bool dispatch_shape(orv::fem::element_type type, F&& f) {
    using namespace orv::fem;
    switch (type) {
        case FE_edge2: f(edge2{}); return true;
        case FE_edge3: f(edge3{}); return true;
        case FE_edge4: f(edge4{}); return true;
        case FE_faceT3: f(faceT3{}); return true;
        case FE_faceT6: f(faceT6{}); return true;
        case FE_faceQ4: f(faceQ4{}); return true;
        case FE_faceQ9: f(faceQ9{}); return true;
        case FE_tetra4: f(tetra4{}); return true;
        case FE_tetra10: f(tetra10{}); return true;
        case FE_pyramid5: f(pyramid5{}); return true;
        case FE_pyramid14: f(pyramid14{}); return true;
        case FE_wedge6: f(wedge6{}); return true;
        case FE_wedge18: f(wedge18{}); return true;
        case FE_hexa8: f(hexa8{}); return true;
        case FE_hexa27: f(hexa27{}); return true;
        default: return false;
    }
}

}  // namespace elfes
