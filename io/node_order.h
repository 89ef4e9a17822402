// Node orders of the file formats against the library's: for a shape read from a
// file, library_node[i] = file_node[order[i]]; for a VTK cell, vtk_node[k] =
// library_node[order[k]].
#pragma once

#include <string>

#include <orv/fem/element_type.h>

namespace orv {
namespace fem {
namespace io {
namespace detail {

struct shape_order {
    element_type type = FE_none;  // FE_none: the file's type is unknown
    unsigned nbr_file_nodes = 0;
    const unsigned char* order = nullptr;
};

// A Gmsh element type number.
shape_order gmsh_shape(int gmsh_type);
// An input deck's element type name (upper case).
shape_order deck_shape(const std::string& name);

}  // namespace detail
}  // namespace io
}  // namespace fem
}  // namespace orv
