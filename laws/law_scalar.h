// Scalar law: one value k, for springs, conductivities, capacities and densities.
#pragma once

#include "laws/law_base.h"

namespace orv {
namespace core {

// Data: one value k (stiffness, conductivity, capacity or density: what the physics
// asks of it).
class law_scalar : public law_base {
public:
    bool check_size(const dense1D<double>& data) const override;
    // stress = k strain + stress (the previous stress on entry), energy = 0.5 stress
    // strain, tangent = k. 0, or -1 (tangent and energy 0, stress unchanged) when the
    // data at the point are not usable.
    virtual int stress(const law_key& key, double strain, double& stress, double& energy, double& tangent) const;
    // The tangent k at the point; 0 or -1 (tangent 0).
    virtual int tangent(const law_key& key, double& tangent) const;
    // The base value k, 0 when the law has no data.
    double value() const { return data_.empty() ? 0.0 : data_[0]; }
};

}  // namespace core
}  // namespace orv
