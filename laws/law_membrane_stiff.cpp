// Elastic laws of membranes.
#include "laws/law_membrane_stiff.h"

namespace orv {
namespace core {

// --- law_membrane_StVenant -----------------------------------------------------

bool law_membrane_StVenant::check_size(const dense1D<double>& data) const {
    return data.size() == 4 || data.size() == 5;
}

int law_membrane_StVenant::normalize(dense1D<double>& data) const {
    if (!check_size(data)) return law_bad_size;
    return pad(data, 5) ? law_ok : law_memory;
}

int law_membrane_StVenant::fill_D(const dense1D<double>& data, tangent_type& D) const {
    const int code = plane_stress_isotropic(data[0], data[1], D);
    D *= data[3];
    return code;
}

void law_membrane_StVenant::get_alphas(const dense1D<double>& data, double alpha[3]) const {
    alpha[0] = alpha[1] = data[2];
    alpha[2] = 0.0;
}

// --- law_membrane_orthotropic --------------------------------------------------

bool law_membrane_orthotropic::check_size(const dense1D<double>& data) const {
    return data.size() == 13 || data.size() == 14;
}

int law_membrane_orthotropic::normalize(dense1D<double>& data) const {
    if (!check_size(data)) return law_bad_size;
    if (!pad(data, 14)) return law_memory;
    plane_card_derive(data);
    return law_ok;
}

int law_membrane_orthotropic::fill_D(const dense1D<double>& data, tangent_type& D) const {
    const int code = plane_stress_orthotropic(data.data(), D);
    D *= data[12];
    return code;
}

void law_membrane_orthotropic::get_alphas(const dense1D<double>& data, double alpha[3]) const {
    plane_thermal_orthotropic(data.data(), alpha);
}

}  // namespace core
}  // namespace orv
