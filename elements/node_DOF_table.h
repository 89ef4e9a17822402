// Per-element node table of a mesh: for each local node, the DOF ID base of its global
// node (node * 9, the ID of its slot 0), the local node index and the shape's
// coefficient record of that node.
#pragma once

#include <orv/fem/field_tag.h>
#include <array>
#include <utility>

namespace elfes {

template <class Shape>
struct node_DOF_record {
    unsigned DOF_base;
    unsigned node;
    typename Shape::node_type coefs;
};

template <class Shape>
using node_DOF_table = std::array<node_DOF_record<Shape>, Shape::nbr_nodes>;

namespace node_table_detail {

template <class Shape, std::size_t... I>
void build_unrolled(const unsigned* element_nodes, node_DOF_table<Shape>& table, std::index_sequence<I...>) {
    ((table[I] = node_DOF_record<Shape>{element_nodes[I] * orv::fem::DOFs_per_node, unsigned(I),
                                        typename Shape::node_type(unsigned(I))}),
     ...);
}

}  // namespace node_table_detail

// Fills the table from the element's column of the connectivity (Shape::nbr_nodes
// global node IDs, already checked by the caller). The unrolled and the looping
// forms give the same table.
template <class Shape>
void build_node_DOF_table(const unsigned* element_nodes, node_DOF_table<Shape>& table, bool unrolled) {
    if (unrolled) {
        node_table_detail::build_unrolled<Shape>(element_nodes, table, std::make_index_sequence<Shape::nbr_nodes>());
        return;
    }
    for (unsigned i = 0; i < Shape::nbr_nodes; ++i)
        table[i] = node_DOF_record<Shape>{element_nodes[i] * orv::fem::DOFs_per_node, i, Shape::nodes[i]};
}

}  // namespace elfes
