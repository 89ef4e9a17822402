// Mesh readers (Gmsh MSH 4.1 ASCII and binary; the mesh part of Abaqus-style input
// decks) and VTK XML writers (.vtu unstructured grids with appended binary data, .pvd
// collections). Companion library orvfem_io.
//
// Every function is noexcept and answers an error_type: no_error, error_file (a file
// that cannot be opened, read or written), error_data (malformed or truncated
// content, sizes that disagree), error_element_type (an element type the library has
// no shape for), error_connectivity (an element or a set that names an unknown node
// or element), error_memory. On failure a reader leaves its output record untouched
// and, when `error` is not null, says where: "<file>, line <n>: <what>" for text,
// "<file>, byte <offset>: <what>" for binary content.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <orv/fem/FEM_matrix.h>
#include <orv/fem/element_type.h>
#include <orv/fem/error_type.h>
#include <orvmath1/dense2D.h>

namespace orv {
namespace fem {
namespace io {

/// The elements of one shape, in the library's node order: the connectivity has
/// nbr_nodes(type) rows and one column per element, each entry a 0-based column of
/// mesh::positions, ready for numerical_model_stiff_lin. The serendipity shapes that
/// have a number but no shape of their own (FE_faceQ8, FE_pyramid13, FE_wedge15,
/// FE_hexa20) take the order of their complete relatives (FE_faceQ9, FE_pyramid14,
/// FE_wedge18, FE_hexa27) without the face and volume nodes, which come last there.
struct element_block {
    element_type type = FE_none;
    std::string label;  ///< the file's type: "C3D20R", "gmsh 11"
    dense2D<unsigned int> connectivity;
    std::vector<std::uint64_t> element_ids;  ///< the file's number of each column
};

/// An element of a mesh: a block and a column of its connectivity.
struct element_ref {
    unsigned int block = 0;
    unsigned int column = 0;
    bool operator==(const element_ref& o) const { return block == o.block && column == o.column; }
};

/// A named set of nodes (0-based columns of positions, ascending, no repeats).
struct node_set {
    std::string name;
    int dim = -1;  ///< the physical group's dimension; -1 for a deck
    std::vector<unsigned int> nodes;
};

/// A named set of elements, in the order the file gives them, no repeats.
struct element_set {
    std::string name;
    int dim = -1;
    std::vector<element_ref> elements;
};

/// A mesh as read: 3 rows of positions, one column per node in the file's order.
struct mesh {
    dense2D<double> positions;
    std::vector<std::uint64_t> node_ids;  ///< the file's number of each column
    std::vector<element_block> blocks;
    std::vector<node_set> node_sets;
    std::vector<element_set> element_sets;
};

/// Where a read failed.
struct read_error {
    std::size_t line = 0;      ///< 1-based line in a text part, 0 otherwise
    std::uint64_t offset = 0;  ///< byte offset from the start of the file
    std::string file;          ///< the file in which the fault is
    std::string text;          ///< the whole message
};

/// Gmsh MSH 4.1, ASCII or binary (either byte order, data size 4 or 8). Nodes, elements
/// of every shape of the library (points included), and each physical group as a
/// node set and an element set of the same name (the group's tag when it has no name);
/// a group's nodes are the nodes of its elements.
error_type read_msh(const char* path, mesh& out, read_error* error = nullptr) noexcept;

/// The mesh part of an input deck: *NODE, *ELEMENT (C3D4, C3D10, C3D6, C3D15, C3D8,
/// C3D20, C3D20R, CPS3/4/6/8, CPE3/4/6/8, CAX3/4/6/8, S3, S4, S6, S8, B31, B32, T3D2, and
/// their R variants), *NSET and *ELSET (lists of numbers and set names, or GENERATE),
/// *INCLUDE (relative to the including file). Keywords and set names are case-blind;
/// set names are kept in upper case; other keywords and their data lines are skipped.
error_type read_deck(const char* path, mesh& out, read_error* error = nullptr) noexcept;

/// A named field: `values` has one row per component (1 to 9) and one column per
/// point (point data) or per cell (cell data; cells are the blocks' elements in block
/// order).
struct vtk_field {
    std::string name;
    dense2D<double> values;
};

/// One case, mode or step of results.
struct vtk_frame {
    double value = 0.0;  ///< time, frequency or index in a collection
    std::vector<vtk_field> point_data;
    std::vector<vtk_field> cell_data;
};

/// One frame per column of a results matrix whose rows carry DOF IDs (the load cases
/// of a static run, the modes of a modal run, the steps of a transient one), with the
/// point fields "<name>" (displacements, 3 components), "<name> rotation" (3) and
/// "<name> temperature" (1), each only when the matrix has DOFs of that field. A node
/// without a DOF of a field reads 0; fictitious nodes (from nbr_points on) are left
/// out. values[k] is the value of frame k (time, frequency); an empty list numbers
/// the frames 1, 2, 3... The frames are appended to `frames`, which is untouched on
/// failure: error_data when values has neither 0 nor results.cols() entries, -200
/// when a column cannot be brought into memory.
error_type nodal_frames(const FEM_matrix& results, std::size_t nbr_points, const std::string& name,
                        const std::vector<double>& values, std::vector<vtk_frame>& frames) noexcept;

/// VTK cell type of a shape and the order of its nodes: vtk_node[k] =
/// library_node[order[k]]. FE_pyramid14 is written as a 13-node quadratic pyramid
/// (its base centre is left out). Returns 0 for a shape without a VTK cell.
unsigned vtk_cell_type(element_type type, const unsigned char** order = nullptr) noexcept;

/// One .vtu file (UnstructuredGrid, raw appended binary data) of the mesh and the
/// frame's fields. Files are written as "<path>.part" and renamed when complete, so a
/// failed write leaves any earlier file of that name as it was.
error_type write_vtu(const char* path, const mesh& m, const vtk_frame& frame) noexcept;

/// One .vtu file per frame, named "<base>_<index>.vtu", and the collection
/// "<base>.pvd" that lists them with the frames' values as time steps (ParaView shows
/// them as a series of steps or modes). The files are placed next to `base`.
error_type write_vtu_series(const char* base, const mesh& m, const std::vector<vtk_frame>& frames) noexcept;

}  // namespace io
}  // namespace fem
}  // namespace orv
