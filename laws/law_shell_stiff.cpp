// Elastic laws of Mindlin shells.
#include "laws/law_shell_stiff.h"

namespace orv {
namespace core {

namespace {

// Pads a shell vector whose thickness is at t_index and whose bending inertia goes
// at i_index (the coupling after it): i_index values give inertia t^3 / 12 and
// coupling 0; i_index + 1 values turn the offset o at i_index into inertia o^2 t +
// t^3 / 12 and coupling o t. Other sizes are kept.
int pad_shell(dense1D<double>& data, std::size_t t_index, std::size_t i_index) {
    const std::size_t n = data.size();
    if (n != i_index && n != i_index + 1) return law_ok;
    const double offset = n == i_index + 1 ? data[i_index] : 0.0;
    if (!data.resize(i_index + 2, 0.0)) return law_memory;
    const double t = data[t_index];
    data[i_index] = offset * offset * t + t * t * t * 0.08333333333333333;
    data[i_index + 1] = offset * t;
    return law_ok;
}

}  // namespace

void law_shell_stiff::assemble_D(const symmetric_fixed<double, 3>& P, double t, double inertia, double coupling,
                                 const symmetric_fixed<double, 2>& H, tangent_type& D) {
    D.fill(0.0);
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j < 3; ++j) {
            if (j <= i) {
                D(i, j) = t * P(i, j);
                D(i + 3, j + 3) = inertia * P(i, j);
            }
            D(i + 3, j) = coupling * P(i, j);
        }
    D(6, 6) = t * H(0, 0);
    D(7, 6) = t * H(1, 0);
    D(7, 7) = t * H(1, 1);
}

// --- law_shell_StVenant ---------------------------------------------------------

bool law_shell_StVenant::check_size(const dense1D<double>& data) const {
    return data.size() == 4 || data.size() == 6 || data.size() == 7;
}

int law_shell_StVenant::normalize(dense1D<double>& data) const {
    if (!check_size(data)) return law_bad_size;
    if (data.size() == 4) {
        // The shear stiffness with the correction factor 5/6.
        const double E = data[0], nu = data[1];
        if (!data.resize(5, 0.0)) return law_memory;
        data[4] = E * 0.8333333333333334 / (2.0 * nu + 2.0);
    }
    return pad_shell(data, 3, 5);
}

int law_shell_StVenant::fill_D(const dense1D<double>& data, tangent_type& D) const {
    symmetric_fixed<double, 3> P;
    if (plane_stress_isotropic(data[0], data[1], P) < 0) {
        D.fill(0.0);
        return law_bad_size;
    }
    symmetric_fixed<double, 2> H;
    H(0, 0) = H(1, 1) = data[4];
    assemble_D(P, data[3], data[5], data[6], H, D);
    return law_ok;
}

void law_shell_StVenant::get_alphas(const dense1D<double>& data, double alpha[3]) const {
    alpha[0] = alpha[1] = data[2];
    alpha[2] = 0.0;
}

// --- law_shell_orthotropic ------------------------------------------------------

bool law_shell_orthotropic::check_size(const dense1D<double>& data) const {
    return data.size() >= 15 && data.size() <= 17;
}

int law_shell_orthotropic::normalize(dense1D<double>& data) const {
    if (!check_size(data)) return law_bad_size;
    const int code = pad_shell(data, 14, 15);
    if (code < 0) return code;
    plane_card_derive(data);
    return law_ok;
}

int law_shell_orthotropic::fill_D(const dense1D<double>& data, tangent_type& D) const {
    symmetric_fixed<double, 3> P;
    if (plane_stress_orthotropic(data.data(), P) < 0) {
        D.fill(0.0);
        return law_bad_size;
    }
    symmetric_fixed<double, 2> H;
    transverse_shear_orthotropic(data[4], data[12], data[13], H);
    assemble_D(P, data[14], data[15], data[16], H, D);
    return law_ok;
}

void law_shell_orthotropic::get_alphas(const dense1D<double>& data, double alpha[3]) const {
    plane_thermal_orthotropic(data.data(), alpha);
}

}  // namespace core
}  // namespace orv
