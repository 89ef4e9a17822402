// Elasto-plastic laws of rods and scalar elements.
#include "laws/law_rod_ep.h"

namespace orv {
namespace core {

namespace {

// The compute of both families: E = data[0], the curve from the law's data.
template <class Law>
int compute_1d(const Law& law, ep_state_map& map, const law_key& key, double strain, double& D, double& stress,
               double& energy, double* states, unsigned flags) {
    energy = 0.0;
    states[0] = states[1] = 0.0;
    dense1D<double> data;
    if (law.get_element_data(key, data) < 0) {
        D = 0.0;
        return law_bad_size;
    }
    hardening_curve curve;
    if (!law.get_hardening(data, curve)) return law_memory;
    return scalar_ep_compute(map, curve, data[0], law.max_strain(), law.max_stress(), key, strain, D, stress, energy,
                             states, flags);
}

bool table_curve(const dense1D<double>& data, std::size_t first, hardening_curve& curve) {
    const std::size_t k = (data.size() - first) / 2;
    return curve.set_piecewise_linear(data.data() + first, data.data() + first + k, k);
}

}  // namespace

// --- rods ------------------------------------------------------------------------

int law_rod_ep_iso_hardening::compute(const law_key& key, double strain, double& D, double& stress, double& energy,
                                      double* states, unsigned flags) const {
    return compute_1d(*this, states_, key, strain, D, stress, energy, states, flags);
}

int law_rod_ep_iso_hardening::stress(const law_key& key, double strain, double& stress, double& energy,
                                     double& tangent) const {
    double states[2];
    return compute(key, strain, tangent, stress, energy, states, 0);
}

int law_rod_ep_perfect::normalize(dense1D<double>& data) const {
    if (!check_size(data)) return law_bad_size;
    return pad(data, 6) ? law_ok : law_memory;
}

bool law_rod_ep_perfect::get_hardening(const dense1D<double>& data, hardening_curve& curve) const {
    curve.set_linear(data[0], data[3], data[4]);
    return true;
}

int law_rod_ep_power::normalize(dense1D<double>& data) const {
    if (!check_size(data)) return law_bad_size;
    return pad(data, 7) ? law_ok : law_memory;
}

int law_rod_ep_RambergOsgood::normalize(dense1D<double>& data) const {
    if (!check_size(data)) return law_bad_size;
    return pad(data, 7) ? law_ok : law_memory;
}

bool law_rod_ep_power::get_hardening(const dense1D<double>& data, hardening_curve& curve) const {
    curve.set_power(data[0], data[3], data[4], data[5]);
    return true;
}

bool law_rod_ep_RambergOsgood::get_hardening(const dense1D<double>& data, hardening_curve& curve) const {
    curve.set_Ramberg_Osgood(data[0], data[3], data[4], data[5]);
    return true;
}

bool law_rod_ep_piecewise_linear::get_hardening(const dense1D<double>& data, hardening_curve& curve) const {
    return table_curve(data, 3, curve);
}

// --- scalar elements ---------------------------------------------------------------

int law_scalar_ep_iso_hardening::compute(const law_key& key, double strain, double& D, double& stress, double& energy,
                                         double* states, unsigned flags) const {
    return compute_1d(*this, states_, key, strain, D, stress, energy, states, flags);
}

int law_scalar_ep_iso_hardening::stress(const law_key& key, double strain, double& stress, double& energy,
                                        double& tangent) const {
    double states[2];
    return compute(key, strain, tangent, stress, energy, states, 0);
}

bool law_scalar_ep_perfect::get_hardening(const dense1D<double>& data, hardening_curve& curve) const {
    curve.set_linear(data[0], data[1], data[2]);
    return true;
}

bool law_scalar_ep_power::get_hardening(const dense1D<double>& data, hardening_curve& curve) const {
    curve.set_power(data[0], data[1], data[2], data[3]);
    return true;
}

bool law_scalar_ep_RambergOsgood::get_hardening(const dense1D<double>& data, hardening_curve& curve) const {
    curve.set_Ramberg_Osgood(data[0], data[1], data[2], data[3]);
    return true;
}

bool law_scalar_ep_piecewise_linear::get_hardening(const dense1D<double>& data, hardening_curve& curve) const {
    return table_curve(data, 1, curve);
}

}  // namespace core
}  // namespace orv
