// The parts of the static shape interface (see shape_edge.h) that every shape of
// elfes spells the same way: its constants, the declarations of its node table and
// functions, and the node record of the shapes whose functions are written per node
// index.
#pragma once

namespace elfes {

template <unsigned NbrNodes, unsigned NbrCornerNodes, unsigned Dim, unsigned ElementTypeValue,
          unsigned NbrSecondDerivatives = 0>
struct shape_traits {
    static constexpr unsigned nbr_nodes = NbrNodes;
    static constexpr unsigned nbr_corner_nodes = NbrCornerNodes;
    static constexpr unsigned dim = Dim;
    static constexpr unsigned element_type_value = ElementTypeValue;
    static constexpr unsigned nbr_second_derivatives = NbrSecondDerivatives;
};

// Inside a shape: its node table and the functions every shape defines in its .cpp.
#define ELFES_SHAPE_INTERFACE                         \
    static const node_type nodes[nbr_nodes];          \
    static void node_position(unsigned i, double* x); \
    static void values(const double* x, double* N);   \
    static void gradients(const double* x, double(*dN)[dim]);

// Node record holding only the node's index.
struct indexed_node {
    unsigned index;
    constexpr indexed_node() : indexed_node(0u) {}
    constexpr explicit indexed_node(unsigned i) : index(i) {}
};

}  // namespace elfes
