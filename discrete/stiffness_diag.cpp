// Public handle of the diagonal stiffness model.
#include <orv/fem/stiffness_diag.h>

#include "discrete/stiffness_diag.h"
#include "discrete/stiffness_handle_ops.h"

namespace orv {
namespace fem {

ORV_FEM_HANDLE_IMPL(stiffness_diag, numerical_model_base, core::stiffness_diag)

stiffness_diag::stiffness_diag() = default;

stiffness_diag::stiffness_diag(context& ctx) { create(ctx); }

stiffness_diag::stiffness_diag(context& ctx, const dense1D<double>& values, const dense1D<unsigned int>& ids,
                               int absolute) {
    if (create(ctx) == no_error) init(values, ids, absolute);
}

error_type stiffness_diag::create(context& ctx) { return detail::create_stiffness<core::stiffness_diag>(*this, ctx); }

error_type stiffness_diag::init(const dense1D<double>& values, const dense1D<unsigned int>& ids, int absolute) {
    return detail::init_stiffness(*this, values, ids, absolute);
}

error_type stiffness_diag::get_params(dense1D<double>& values, dense1D<unsigned int>& ids, int& absolute) const {
    return detail::get_stiffness_params(*this, values, ids, absolute);
}

}  // namespace fem
}  // namespace orv
