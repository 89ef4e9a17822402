// Axial laws of rods.
#include "laws/law_rod.h"

namespace orv {
namespace core {

int law_1d::get_properties(const law_key& key, double& area, double& alpha, double& tangent) const {
    dense1D<double> data;
    if (get_element_data(key, data) < 0) {
        area = alpha = tangent = 0.0;
        return law_bad_size;
    }
    area = data[1];
    alpha = data[2];
    tangent = this->tangent(data);
    return law_ok;
}

double law_1d::alpha(const law_key& key) const {
    double area, alpha, tangent;
    get_properties(key, area, alpha, tangent);
    return alpha;
}

int law_1d::stress(const law_key& key, double strain, double& stress, double& energy, double& tangent) const {
    double area, alpha;
    energy = 0.0;
    if (get_properties(key, area, alpha, tangent) < 0) return law_bad_size;
    stress += tangent * strain;
    energy = 0.5 * strain * stress;
    return law_ok;
}

int law_1d::compute(const law_key& key, double strain, double& D, double& stress, double& energy, double*,
                    unsigned) const {
    return law_1d::stress(key, strain, stress, energy, D);
}

int law_1d::thermal_correction(const law_key& key, double& strain, double temperature) const {
    double area, alpha, tangent;
    if (get_properties(key, area, alpha, tangent) < 0) return law_bad_size;
    strain -= alpha * temperature;
    return law_ok;
}

bool law_rod::check_size(const dense1D<double>& data) const { return data.size() == 3 || data.size() == 4; }

int law_rod::normalize(dense1D<double>& data) const {
    if (!check_size(data)) return law_bad_size;
    return pad(data, 4) ? law_ok : law_memory;
}

}  // namespace core
}  // namespace orv
