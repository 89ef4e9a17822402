// The shape-independent part of the mass meshes: element matrix on the DOFs, lumping,
// inertial vector, and the creation path.
#include "elements/numerical_model_mass_mesh.h"
#include <orv/fem/field_tag.h>

#include <orv/fem/error_type.h>

#include "elements/element_family_table.h"

namespace orv {
namespace core {

mass_mesh_base::mass_mesh_base(context_type* ctx, const Ptr<physics_model_base>& physics,
                               const dense2D<unsigned int>& connectivity, fem::element_type type)
    : stiff_mesh_base(ctx, physics, connectivity, type) {}

int mass_mesh_base::get_local_basis(const dense2D<double>&, std::uint32_t element,
                                    matrix_fixed<double, 3, 3>& R) const {
    if (element >= nbr_elements()) return fem::error_index;
    for (unsigned i = 0; i < 3; ++i)
        for (unsigned j = 0; j < 3; ++j) R(i, j) = i == j ? 1.0 : 0.0;
    return 0;
}

int mass_mesh_base::finish_element(element_workspace& ws, unsigned nn, unsigned nd, const unsigned* local,
                                   const double* m) const {
    const bool want_matrix = ws.matrix_level == 1 || ws.matrix_level == 2;
    const bool want_vector = ws.vector_level > 0 && ws.U;
    if (!want_matrix && !want_vector) return 0;
    if (!ws.init_sym()) {
        ws.reset();
        return fem::error_memory;
    }
    symmetric_full<double>& M = ws.sym.matrix();
    for (unsigned i = 0; i < nn; ++i)
        for (unsigned j = 0; j <= i; ++j) {
            const double v = m[i * nn + j];
            for (unsigned k = 0; k < nd; ++k) {
                const unsigned a = local[i * nd + k], b = local[j * nd + k];
                // a node repeated in the connectivity meets both triangles
                M(a, b) += (i != j && a == b) ? 2.0 * v : v;
            }
        }
    if (ws.matrix_level == 2 && !lump_element_matrix(ws)) {
        ws.reset();
        return fem::error_memory;
    }
    if (want_vector) {
        if (!ws.init_vector()) {
            ws.reset();
            return fem::error_memory;
        }
        const std::size_t n = ws.DOFs->size();
        double energy = 0.0;
        // a DOF that U does not hold has the value 0
        auto u = [&](std::size_t a) {
            const double* p = ws.U->find((*ws.DOFs)[a]);
            return p ? *p : 0.0;
        };
        for (std::size_t a = 0; a < n; ++a) {
            double s = 0.0;
            if (ws.diag.size() == n) {
                s = ws.diag[a] * u(a);
            } else {
                for (std::size_t b = 0; b < n; ++b) s += M(a, b) * u(b);
            }
            ws.vector[a] = -s;
            energy += 0.5 * s * u(a);
        }
        ws.results[0] += energy;
    }
    if (!want_matrix) {
        ws.sym.matrix().clear();
        ws.sym.set_IDs(Ptr<DOF_index>());
        ws.diag.clear();
    }
    return 0;
}

bool lump_element_matrix(element_workspace& ws) {
    const std::size_t n = ws.DOFs ? ws.DOFs->size() : 0;
    if (!ws.diag.init(ws.DOFs, 0.0)) return false;
    const symmetric_full<double>& M = ws.sym.matrix();
    if (M.dim() != n) return false;
    const DOF_index& ids = *ws.DOFs;
    for (unsigned s = 0; s < 9; ++s) {
        double sum_diag = 0.0, off = 0.0;
        std::size_t count = 0;
        for (std::size_t a = 0; a < n; ++a) {
            if (ids[a] % fem::DOFs_per_node != s) continue;
            ++count;
            sum_diag += M(a, a);
            for (std::size_t b = 0; b < a; ++b)
                if (ids[b] % fem::DOFs_per_node == s) off += M(a, b);
        }
        if (count == 0) continue;
        const double total = sum_diag + 2.0 * off;
        if (total == 0.0) continue;
        for (std::size_t a = 0; a < n; ++a) {
            if (ids[a] % fem::DOFs_per_node != s) continue;
            ws.diag[a] = sum_diag != 0.0 ? M(a, a) * total / sum_diag : total / double(count);
        }
    }
    ws.sym.matrix().clear();
    ws.sym.set_IDs(Ptr<DOF_index>());
    return true;
}

bool mass_mesh_base::accepts_load(const fem::elementary_load& record) const {
    if (!physics()) return false;
    const unsigned family = physics()->get_family_code(), kind = record.kind & 0xF8u;
    if (family >= heat_conduction_1d::family_code && family <= heat_conduction_3d::family_code)
        return kind == fem::elementary_load::kind_heat_flux;
    if (family == heat_convection_1d::family_code || family == heat_convection_2d::family_code)
        return kind == fem::elementary_load::kind_heat_exchange;
    return false;
}

namespace {

const char* mass_physics_name(unsigned family) {
    switch (family) {
        case mass_displacement_1d::family_code: return "mass_displacement_1d";
        case mass_displacement_2d::family_code: return "mass_displacement_2d";
        case mass_displacement_3d::family_code: return "mass_displacement_3d";
        case mass_axi3d::family_code: return "mass_axi3d";
        case heat_conduction_1d::family_code: return "heat_conduction_1d";
        case heat_conduction_2d::family_code: return "heat_conduction_2d";
        case heat_conduction_3d::family_code: return "heat_conduction_3d";
        case heat_capacity_1d::family_code: return "heat_capacity_1d";
        case heat_capacity_2d::family_code: return "heat_capacity_2d";
        case heat_capacity_3d::family_code: return "heat_capacity_3d";
        case heat_convection_1d::family_code: return "heat_convection_1d";
        case heat_convection_2d::family_code: return "heat_convection_2d";
        default: return "";
    }
}

}  // namespace

int create_mass_mesh(context_type* ctx, const Ptr<physics_model_base>& physics,
                     const dense2D<unsigned int>& connectivity, fem::element_type type,
                     Ptr<numerical_model_base>& model, bool heat) {
    model.reset();
    const mass_physics* mp = dynamic_cast<const mass_physics*>(physics.get());
    if (!mp || !mp->density() || mp->nbr_DOF_slots() == 0 || mp->nbr_DOF_slots() > 3) return fem::error_data;
    if ((mp->get_family_code() >= heat_conduction_1d::family_code) != heat) return fem::error_data;
    if (!elfes::find_family_entry(mass_physics_name(mp->get_family_code()), type, elfes::instance_lin))
        return fem::error_element_type;
    if (connectivity.rows() != fem::nbr_nodes(type)) return fem::error_connectivity;
    numerical_model_base* m = nullptr;
    try {
        switch (fem::element_dim(type)) {
            case 1: m = create_mass_mesh_edge(ctx, physics, connectivity, type); break;
            case 2: m = create_mass_mesh_face(ctx, physics, connectivity, type); break;
            case 3: m = create_mass_mesh_solid(ctx, physics, connectivity, type); break;
            default: break;
        }
    } catch (const std::bad_alloc&) {
        return fem::error_memory;
    }
    return adopt_mesh(m, model);
}

}  // namespace core
}  // namespace orv
