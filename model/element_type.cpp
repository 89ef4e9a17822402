// Node counts and dimensions of the element shapes.
#include <orv/fem/element_type.h>

namespace orv {
namespace fem {

namespace {
const unsigned nodes_table[FE_type_end] = {0,  1, 2,  3, 4,  4,  9, 3,  6,  4, 8,  9, 8,
                                           27, 4, 10, 5, 13, 14, 6, 15, 18, 8, 20, 27};
const unsigned corners_table[FE_type_end] = {0, 1, 2, 2, 2, 4, 4, 3, 3, 4, 4, 4, 8, 8, 4, 4, 5, 5, 5, 6, 6, 6, 8, 8, 8};
}  // namespace

unsigned element_dim(element_type type) {
    if (type < 2) return 0;
    if (type < 5) return 1;
    if (type < 12) return 2;
    return 3;
}

unsigned nbr_nodes(element_type type) { return type < FE_type_end ? nodes_table[type] : 0; }

unsigned nbr_base_nodes(element_type type) { return type < FE_type_end ? corners_table[type] : 0; }

}  // namespace fem
}  // namespace orv
