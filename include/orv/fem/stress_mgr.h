// Public handle on the stress data of one load case.
#pragma once

#include <orv/fem/base_class.h>
#include <orv/fem/context.h>
#include <orv/fem/error_type.h>

namespace orv {
namespace core {
class stress_super_mgr;
}
namespace fem {

/// Initial strains, initial stresses and thermal loads of one load case, per model.
/// Copies share the data. The default constructor gives an empty handle.
class stress_mgr : public base_class {
public:
    ORV_FEM_HANDLE(stress_mgr, core::stress_super_mgr)

    stress_mgr();
    /// create(ctx).
    explicit stress_mgr(context& ctx);
    /// A new, empty manager on the context.
    error_type create(context& ctx);
    /// Empties everything.
    void clear();
};

}  // namespace fem
}  // namespace orv
