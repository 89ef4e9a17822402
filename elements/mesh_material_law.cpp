// Adapters from the material laws to the mesh kernels.
#include "elements/mesh_material_law.h"

namespace orv {
namespace core {

namespace {
// Room for the state values of a point.
constexpr unsigned max_states = 64;

// The law's compute on N slots, from and to the kernel's plain arrays (D row-major).
template <class Law>
int compute_slots(const Law& law, const law_key& k, const double* strain, double* D, double* stress, double& energy,
                  unsigned flags) {
    constexpr unsigned N = Law::nbr_strains;
    typename Law::strain_type e;
    typename Law::stress_type s;
    for (unsigned i = 0; i < N; ++i) {
        e[i] = strain[i];
        s[i] = stress[i];
    }
    typename Law::tangent_type T;
    energy = 0.0;
    double states[max_states];
    if (law.nbr_states() > max_states) return -1;
    const int rc = law.compute(k, e, T, s, energy, states, flags);
    if (rc < 0) return rc;
    for (unsigned i = 0; i < N; ++i) {
        stress[i] = s[i];
        for (unsigned j = 0; j < N; ++j) D[N * i + j] = T(i, j);
    }
    return 0;
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
    return compute_slots(*law_, law_key_of(key), strain, D, stress, energy, flags);
}

int mesh_material_membrane::compute(const material_point_key& key, const double* strain, double* D, double* stress,
                                    double& energy, unsigned flags, const assembly_params&) const {
    if (!law_) return -1;
    return compute_slots(*law_, law_key_of(key), strain, D, stress, energy, flags);
}

int mesh_material_rod::compute(const material_point_key& key, const double* strain, double* D, double* stress,
                               double& energy, unsigned flags, const assembly_params&) const {
    if (!law_) return -1;
    const law_key k = law_key_of(key);
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
