// Elastic law of rods.
#pragma once

#include <orv/fem/law_base.h>

namespace orv {
namespace core {
class law_rod;
}
namespace fem {

/// Data: [0] E, Young's modulus; [1] the section area; [2] alpha, the thermal
/// expansion coefficient; [3] reserved (0 when not given). 3 or 4 values.
/// The axial force is E * area * (strain - alpha * temperature).
class law_rod : public law_base {
public:
    ORV_FEM_LAW_HANDLE(law_rod, core::law_rod)

    /// A new law on ctx with these values: create(ctx) then init, whose code is not
    /// reported.
    law_rod(context& ctx, double E, double area, double alpha);
    /// init of the data [E, area, alpha]: 0, -1 or -2 as law_base::init.
    int init(double E, double area, double alpha);
};

}  // namespace fem
}  // namespace orv
