// Nodal fields; the values are bit flags where a set of fields is wanted.
#pragma once

namespace orv {
namespace fem {

/// A DOF ID is node * DOFs_per_node + position: 0..2 displacements, 3..5 rotations,
/// 6 temperature, 7 and 8 reserved.
constexpr unsigned DOFs_per_node = 9;

enum field_tag : unsigned {
    field_displacement = 16,  ///< DOF positions 0, 1, 2 of a node
    field_rotation = 32,      ///< DOF positions 3, 4, 5
    field_temperature = 64    // DOF position 6
};

}  // namespace fem
}  // namespace orv
