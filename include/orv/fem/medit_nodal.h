// Nodal values as a plain text file: a header line "dim values nodes 2", then one
// line per node with its values written by "%E " and a line feed.
#pragma once

#include <cstdio>

#include <orv/fem/FEM_matrix.h>
#include <orv/fem/error_type.h>
#include <orv/fem/field_tag.h>

namespace orv {
namespace fem {

/// One field of column `col` of U for the nodes 0 .. nbr_nodes - 1: the DOFs
/// node * 9 + p for the positions p of `tag` (0..2 displacement, 3..5 rotation, 6
/// temperature; any other tag writes no value), at most `max_values` per node. A DOF
/// that U has no row for is written as 0. `dim` goes to the header as it is.
/// error_file for a null handle or a file that cannot be opened, error_data for a
/// column at or beyond U's columns (nothing is written then).
error_type medit_nodal(std::FILE* file, unsigned dim, const FEM_matrix& U, FEM_matrix::index_type col, field_tag tag,
                       unsigned max_values, unsigned nbr_nodes);
error_type medit_nodal(const char* path, unsigned dim, const FEM_matrix& U, FEM_matrix::index_type col, field_tag tag,
                       unsigned max_values, unsigned nbr_nodes);

/// Block `block` of `values_per_node` columns of `values`, one line per row of `values`
/// (one row per node, in row order): the columns block * values_per_node to
/// (block + 1) * values_per_node. The matrix must have at least that many columns
/// (error_data otherwise, nothing written).
error_type medit_nodal(std::FILE* file, unsigned dim, const FEM_matrix& values, unsigned values_per_node,
                       unsigned block);
error_type medit_nodal(const char* path, unsigned dim, const FEM_matrix& values, unsigned values_per_node,
                       unsigned block);

}  // namespace fem
}  // namespace orv
