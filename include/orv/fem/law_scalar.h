// Scalar law: one value for springs, conductivities, capacities, densities.
#pragma once

#include <orv/fem/law_base.h>

namespace orv {
namespace core {
class law_scalar;
}
namespace fem {

/// Data: one value k, the stiffness (or conductivity, capacity, density) that the
/// model using the law asks for. Evaluated, it gives stress = k strain.
class law_scalar : public law_base {
public:
    ORV_FEM_LAW_HANDLE(law_scalar, core::law_scalar)
    /// A new law on ctx with these values: create(ctx) then init, whose code is not
    /// reported.
    law_scalar(context& ctx, double k);

    /// k; 0 for an empty handle or a law without data.
    double value() const;
};

}  // namespace fem
}  // namespace orv
