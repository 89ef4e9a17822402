// Public handle of the dense symmetric stiffness model.
#include <orv/fem/stiffness_sym.h>

#include "discrete/stiffness_handle_ops.h"
#include "discrete/stiffness_sym.h"

namespace orv {
namespace fem {

ORV_FEM_HANDLE_IMPL(stiffness_sym, numerical_model_base, core::stiffness_sym)

stiffness_sym::stiffness_sym() = default;

stiffness_sym::stiffness_sym(context& ctx) { create(ctx); }

stiffness_sym::stiffness_sym(context& ctx, const symmetric_full<double>& values, const dense1D<unsigned int>& ids,
                             int absolute) {
    if (create(ctx) == no_error) init(values, ids, absolute);
}

error_type stiffness_sym::create(context& ctx) { return detail::create_stiffness<core::stiffness_sym>(*this, ctx); }

error_type stiffness_sym::init(const symmetric_full<double>& values, const dense1D<unsigned int>& ids, int absolute) {
    return detail::init_stiffness(*this, values, ids, absolute);
}

error_type stiffness_sym::get_params(symmetric_full<double>& values, dense1D<unsigned int>& ids, int& absolute) const {
    return detail::get_stiffness_params(*this, values, ids, absolute);
}

}  // namespace fem
}  // namespace orv
