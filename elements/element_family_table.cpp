// Compile-time checks of the family table: every point set named in it exists and
// belongs to the entry's shape, and no instance of a physics is listed twice.
#include "elements/element_family_table.h"

namespace elfes {
namespace {

constexpr bool rule_fits_shape(rule_kind r, orv::fem::element_type type) {
    using namespace orv::fem;
    switch (r) {
        case rule_kind::closed_form:
        case rule_kind::edge: return type == FE_edge2 || type == FE_edge3 || type == FE_edge4;
        case rule_kind::faceT: return type == FE_faceT3 || type == FE_faceT6;
        case rule_kind::faceQ: return type == FE_faceQ4 || type == FE_faceQ9;
        case rule_kind::tetra: return type == FE_tetra4 || type == FE_tetra10;
        case rule_kind::pyramid: return type == FE_pyramid5 || type == FE_pyramid14;
        case rule_kind::wedge: return type == FE_wedge6 || type == FE_wedge18;
        case rule_kind::hexa: return type == FE_hexa8 || type == FE_hexa27;
        default: return false;
    }
}

constexpr bool table_is_consistent() {
    for (unsigned i = 0; i < family_table_size; ++i) {
        const family_entry& e = family_table[i];
        if (!e.main.exists() || !e.load.exists()) return false;
        if (!rule_fits_shape(e.main.rule, e.shape) || !rule_fits_shape(e.load.rule, e.shape)) return false;
        if (e.instances == 0) return false;
        for (unsigned j = 0; j < i; ++j) {
            const family_entry& f = family_table[j];
            if (f.shape == e.shape && (f.instances & e.instances) != 0 &&
                family_detail::same_name(f.physics, e.physics))
                return false;
        }
    }
    return true;
}

static_assert(table_is_consistent(), "family table names a point set that does not exist");

}  // namespace
}  // namespace elfes
