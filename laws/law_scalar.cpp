// Scalar law.
#include "laws/law_scalar.h"

namespace orv {
namespace core {

bool law_scalar::check_size(const dense1D<double>& data) const { return data.size() == 1; }

int law_scalar::tangent(const law_key& key, double& tangent) const {
    dense1D<double> data;
    if (get_element_data(key, data) < 0) {
        tangent = 0.0;
        return law_bad_size;
    }
    tangent = data[0];
    return law_ok;
}

int law_scalar::stress(const law_key& key, double strain, double& stress, double& energy, double& tangent) const {
    energy = 0.0;
    if (this->tangent(key, tangent) < 0) return law_bad_size;
    stress += tangent * strain;
    energy = 0.5 * stress * strain;
    return law_ok;
}

}  // namespace core
}  // namespace orv
