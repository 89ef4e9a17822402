// Adapters from the material laws to the mesh kernels.
#include "elements/mesh_material_law.h"

namespace orv {
namespace core {

namespace {
// Room for the state values of a point.
constexpr unsigned max_states = 64;

law_key key_of(const material_point_key& key) {
    law_key k;
    k.element = key.element;
    k.point = key.point;
    k.step = key.step;
    return k;
}
}  // namespace

bool mesh_material_solid::material_frame(const double* position, double* Q) const {
    vector_fixed<double, 3> x;
    for (unsigned c = 0; c < 3; ++c) x[c] = position[c];
    matrix_fixed<double, 3, 3> R;
    if (!law_ || !law_->get_material_frame(x, R)) return false;
    for (unsigned d = 0; d < 3; ++d)
        for (unsigned k = 0; k < 3; ++k) Q[3 * d + k] = R(d, k);
    return true;
}

int mesh_material_solid::compute(const material_point_key& key, const double* strain, double* D, double* stress,
                                 double& energy, unsigned flags, const assembly_params&) const {
    if (!law_) return -1;
    const law_key k = key_of(key);
    law_3d::strain_type e;
    law_3d::stress_type s;
    for (unsigned i = 0; i < 6; ++i) {
        e[i] = strain[i];
        s[i] = stress[i];
    }
    law_3d::tangent_type T;
    energy = 0.0;
    double states[max_states];
    if (law_->nbr_states() > max_states) return -1;
    const int rc = law_->compute(k, e, T, s, energy, states, flags);
    if (rc < 0) return rc;
    for (unsigned i = 0; i < 6; ++i) {
        stress[i] = s[i];
        for (unsigned j = 0; j < 6; ++j) D[6 * i + j] = T(i, j);
    }
    return 0;
}

int mesh_material_membrane::compute(const material_point_key& key, const double* strain, double* D, double* stress,
                                    double& energy, unsigned flags, const assembly_params&) const {
    if (!law_) return -1;
    law_membrane_stiff::strain_type e;
    law_membrane_stiff::stress_type s;
    for (unsigned i = 0; i < 3; ++i) {
        e[i] = strain[i];
        s[i] = stress[i];
    }
    law_membrane_stiff::tangent_type T;
    energy = 0.0;
    double states[max_states];
    if (law_->nbr_states() > max_states) return -1;
    const int rc = law_->compute(key_of(key), e, T, s, energy, states, flags);
    if (rc < 0) return rc;
    for (unsigned i = 0; i < 3; ++i) {
        stress[i] = s[i];
        for (unsigned j = 0; j < 3; ++j) D[3 * i + j] = T(i, j);
    }
    return 0;
}

int mesh_material_rod::compute(const material_point_key& key, const double* strain, double* D, double* stress,
                               double& energy, unsigned flags, const assembly_params&) const {
    if (!law_) return -1;
    const law_key k = key_of(key);
    double area = 0.0, alpha = 0.0, tangent = 0.0;
    int rc = law_->get_properties(k, area, alpha, tangent);
    if (rc < 0) return rc;
    double s = area != 0.0 ? stress[0] / area : 0.0, d = 0.0;
    energy = 0.0;
    double states[max_states];
    if (law_->nbr_states() > max_states) return -1;
    rc = law_->compute(k, strain[0], d, s, energy, states, flags);
    if (rc < 0) return rc;
    stress[0] = s * area;
    D[0] = d * area;
    energy *= area;
    return 0;
}

}  // namespace core
}  // namespace orv
