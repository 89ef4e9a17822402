// Plane stress blocks of the surface laws.
#include "laws/law_2d.h"

#include <cmath>

#include "orvmath1/matrix_fixed.h"

namespace orv {
namespace core {

double law_2d::thickness(const law_key& key) const {
    dense1D<double> data;
    if (get_element_data(key, data) < 0) return 0.0;
    return data[thickness_index()];
}

int plane_stress_isotropic(double E, double nu, symmetric_fixed<double, 3>& P) {
    P.fill(0.0);
    if (nu == -1.0 || nu == 1.0) return law_bad_size;
    const double c = nu * E / (1.0 - nu * nu);
    const double mu = E / (2.0 * nu + 2.0);
    P(0, 0) = P(1, 1) = 2.0 * mu + c;
    P(1, 0) = c;
    P(2, 2) = mu;
    return law_ok;
}

namespace {

constexpr double degree = 3.14159265358979323846 / 180.0;

// Turns engineering plane strains of the element's axes into those of the material
// axes at angle theta: e' = T e.
matrix_fixed<double, 3, 3> plane_strain_rotation(double theta_degrees) {
    const double c = std::cos(theta_degrees * degree);
    const double s = std::sin(theta_degrees * degree);
    return matrix_fixed<double, 3, 3>{c * c,  s * s,        c * s,       s * s,        c * c,
                                      -c * s, -2.0 * c * s, 2.0 * c * s, c * c - s * s};
}

struct plane_constants {
    double E1, E2, nu12, G12, nu21, d;
    explicit plane_constants(const double* card) : E1(card[0]), E2(card[1]), nu12(card[2]), G12(card[3]) {
        nu21 = E1 != 0.0 ? nu12 * E2 / E1 : 0.0;
        d = 1.0 - nu12 * nu21;
    }
    bool usable() const { return E1 != 0.0 && d != 0.0; }
};

}  // namespace

void plane_card_derive(dense1D<double>& data) {
    const plane_constants c(data.data());
    const double k = c.usable() ? 1.0 / c.d : 0.0;
    set_if_different(data, 7, c.nu21);
    set_if_different(data, 8, c.E1 * k);
    set_if_different(data, 9, c.E2 * k);
    set_if_different(data, 10, c.nu12 * c.E2 * k);
    set_if_different(data, 11, c.G12);
}

int plane_stress_orthotropic(const double* card, symmetric_fixed<double, 3>& P) {
    P.fill(0.0);
    const plane_constants c(card);
    if (!c.usable()) return law_bad_size;
    const double k = 1.0 / c.d;
    matrix_fixed<double, 3, 3> Q{c.E1 * k, c.nu12 * c.E2 * k, 0.0, c.nu12 * c.E2 * k, c.E2 * k, 0.0, 0.0, 0.0, c.G12};
    // Same energy in both frames: P = T' Q T.
    const matrix_fixed<double, 3, 3> T = plane_strain_rotation(card[4]);
    const matrix_fixed<double, 3, 3> QT = Q * T;
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j <= i; ++j) {
            double s = 0.0;
            for (std::size_t k2 = 0; k2 < 3; ++k2) s += T(k2, i) * QT(k2, j);
            P(i, j) = s;
        }
    return law_ok;
}

void plane_thermal_orthotropic(const double* card, double alpha[3]) {
    const double c = std::cos(card[4] * degree);
    const double s = std::sin(card[4] * degree);
    const double a1 = card[5], a2 = card[6];
    alpha[0] = c * c * a1 + s * s * a2;
    alpha[1] = s * s * a1 + c * c * a2;
    alpha[2] = 2.0 * c * s * (a1 - a2);
}

void transverse_shear_orthotropic(double theta_degrees, double k13, double k23, symmetric_fixed<double, 2>& H) {
    // Material shears: g'13 = c g13 + s g23, g'23 = -s g13 + c g23.
    const double c = std::cos(theta_degrees * degree);
    const double s = std::sin(theta_degrees * degree);
    H(0, 0) = c * c * k13 + s * s * k23;
    H(1, 1) = s * s * k13 + c * c * k23;
    H(1, 0) = c * s * (k13 - k23);
}

}  // namespace core
}  // namespace orv
