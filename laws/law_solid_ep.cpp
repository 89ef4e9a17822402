// Elasto-plastic laws of solids: radial return and its consistent tangent.
#include "laws/law_solid_ep.h"

#include <algorithm>
#include <cmath>

namespace orv {
namespace core {

double Von_Mises_value(const double* s) {
    const double a = s[0] - s[1], b = s[1] - s[2], c = s[2] - s[0];
    return std::sqrt(0.5 * (a * a + b * b + c * c) + 3.0 * (s[3] * s[3] + s[4] * s[4] + s[5] * s[5]));
}

int law_solid_ep::fill_D(const dense1D<double>& data, tangent_type& D) const {
    return isotropic_D(data[0], data[1], D);
}

void law_solid_ep::get_alphas(const dense1D<double>& data, double alpha[3]) const {
    alpha[0] = alpha[1] = alpha[2] = data[2];
}

bool law_solid_ep_iso_hardening::return_map(double G, const hardening_curve& curve, stress_type& stress, double& p,
                                            bool& plastic, tangent_type& D) const {
    const double c = 3.0 * G;
    const double p_in = std::fabs(p);
    const double q = Von_Mises_value(stress.data());
    double y, h;
    curve.eval(p_in, y, h);
    double inv = 1.0 / (h + c);
    double dp = 0.0;
    bool flag = plastic;
    if (!(q < y)) {
        flag = false;
        for (unsigned round = 0; round < ep_max_rounds; ++round) {
            if (h == ep_largest) break;
            const double d = (q - (c * dp + y)) * inv;
            dp += d;
            curve.eval(p_in + dp, y, h);
            inv = 1.0 / (h + c);
            flag = std::fabs(dp) * ep_tolerance >= std::fabs(d);
            if (flag) break;
        }
        if (!flag && h != ep_largest && curve.solve(p_in, q, c, dp)) {
            curve.eval(p_in + dp, y, h);
            inv = 1.0 / (h + c);
            flag = true;
        }
        if (!flag) return false;
    } else if (!flag || h == ep_largest) {
        return true;  // elastic, D stays elastic
    }
    // Scale the deviator back onto the yield surface.
    const double ratio = q > 0.0 ? std::min(y / q, 1.0) : 1.0;
    const double mean = (stress[0] + stress[1] + stress[2]) / 3.0;
    double s[6];
    for (unsigned i = 0; i < 6; ++i) s[i] = i < 3 ? stress[i] - mean : stress[i];
    if (ratio != 1.0) {
        for (unsigned i = 0; i < 6; ++i) {
            stress[i] += s[i] * (ratio - 1.0);
            s[i] *= ratio;
        }
    }
    // Consistent tangent: the shear part of the elastic tangent scaled by the ratio,
    // then g s (x) s, the closed form of the derivative of the return.
    const double b = ratio - 1.0;
    for (unsigned i = 0; i < 3; ++i) {
        D(i, i) += 4.0 / 3.0 * G * b;
        D(i + 3, i + 3) += G * b;
        for (unsigned j = 0; j < i; ++j) D(i, j) += -2.0 / 3.0 * G * b;
    }
    const double g = y > 0.0 ? 9.0 * G * G * (dp * h / y - 1.0) * inv * ratio / (y * y) : 0.0;
    if (g != 0.0)
        for (unsigned i = 0; i < 6; ++i)
            for (unsigned j = 0; j <= i; ++j) D(i, j) += g * s[i] * s[j];
    p = p_in + dp;
    plastic = true;
    return true;
}

int law_solid_ep_iso_hardening::compute(const law_key& key, const strain_type& strain, tangent_type& D,
                                        stress_type& stress, double& energy, double* states, unsigned flags) const {
    const bool commit = (flags & law_commit) != 0;
    double record[13];
    states_.read(key, record, commit);
    const double p0 = record[12];
    energy = 0.0;
    for (unsigned i = 0; i < 7; ++i) states[i] = 0.0;
    dense1D<double> data;
    if (get_element_data(key, data) < 0 || fill_D(data, D) < 0) {
        D.fill(0.0);
        return law_bad_size;
    }
    const double E = data[0], nu = data[1];
    const double G = E / (2.0 * nu + 2.0);
    if (!(E > 0.0) || !(G > 0.0)) {
        // No material: the return needs a positive shear modulus.
        D.fill(0.0);
        return law_bad_size;
    }
    hardening_curve curve;
    if (!get_hardening(data, curve)) return law_memory;

    stress_type initial = stress, trial = stress;
    for (unsigned i = 0; i < 6; ++i) {
        trial[i] += record[i];
        for (unsigned j = 0; j < 6; ++j) trial[i] += D(i, j) * (strain[j] - record[6 + j]);
    }
    stress_type s = trial;
    double p = std::fabs(p0);
    bool plastic = (flags & law_first_iteration) != 0 && p0 > 0.0;
    const tangent_type elastic_D = D;
    if (!return_map(G, curve, s, p, plastic, D)) {
        // Nothing is kept from the map: the elastic trial stands. A curve that
        // cannot be used never yields; a valid one that did not converge fails.
        s = trial;
        D = elastic_D;
        p = std::fabs(p0);
        plastic = false;
        if (curve.valid()) {
            stress = s;
            return law_not_converged;
        }
    }
    stress = s;

    // Elastic strain: the mean strain (plastic flow keeps the volume) plus the
    // deviatoric stress over 2 G, shears doubled.
    const double mean_strain = (strain[0] + strain[1] + strain[2]) / 3.0;
    const double mean_stress = (s[0] + s[1] + s[2]) / 3.0;
    double elastic[6];
    for (unsigned i = 0; i < 6; ++i) {
        const double dev = G != 0.0 ? (i < 3 ? (s[i] - mean_stress) / (2.0 * G) : s[i] / G) : 0.0;
        elastic[i] = (i < 3 ? mean_strain : 0.0) + dev;
        energy += 0.5 * elastic[i] * s[i];
        states[i] = strain[i] - elastic[i];
    }
    states[6] = p;

    if (commit && p != 0.0) {
        const bool loading = plastic || p > std::fabs(p0);
        double out[13];
        for (unsigned i = 0; i < 6; ++i) {
            out[i] = s[i] - initial[i];
            out[6 + i] = strain[i];
        }
        out[12] = loading ? p : -p;
        if (!states_.write(key, out)) return law_memory;
    }
    return law_ok;
}

bool law_solid_ep_perfect::get_hardening(const dense1D<double>& data, hardening_curve& curve) const {
    curve.set_linear(data[0], data[3], data[4]);
    return true;
}

bool law_solid_ep_power::get_hardening(const dense1D<double>& data, hardening_curve& curve) const {
    curve.set_power(data[0], data[3], data[4], data[5]);
    return true;
}

bool law_solid_ep_RambergOsgood::get_hardening(const dense1D<double>& data, hardening_curve& curve) const {
    curve.set_Ramberg_Osgood(data[0], data[3], data[4], data[5]);
    return true;
}

bool law_solid_ep_piecewise_linear::get_hardening(const dense1D<double>& data, hardening_curve& curve) const {
    const std::size_t k = (data.size() - 3) / 2;
    return curve.set_piecewise_linear(data.data() + 3, data.data() + 3 + k, k);
}

}  // namespace core
}  // namespace orv
