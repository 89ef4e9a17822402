// Public handle of the sparse symmetric stiffness model.
#include <orv/fem/stiffness_sym_sparse.h>

#include "discrete/stiffness_handle_ops.h"
#include "discrete/stiffness_sym_sparse.h"

namespace orv {
namespace fem {

ORV_FEM_HANDLE_IMPL(stiffness_sym_sparse, numerical_model_base, core::stiffness_sym_sparse)

stiffness_sym_sparse::stiffness_sym_sparse() = default;

stiffness_sym_sparse::stiffness_sym_sparse(context& ctx) { create(ctx); }

stiffness_sym_sparse::stiffness_sym_sparse(context& ctx, const symmetric_sparse<double>& values,
                                           const dense1D<unsigned int>& ids, int absolute) {
    if (create(ctx) == no_error) init(values, ids, absolute);
}

error_type stiffness_sym_sparse::create(context& ctx) {
    return detail::create_stiffness<core::stiffness_sym_sparse>(*this, ctx);
}

error_type stiffness_sym_sparse::init(const symmetric_sparse<double>& values, const dense1D<unsigned int>& ids,
                                      int absolute) {
    return detail::init_stiffness(*this, values, ids, absolute);
}

error_type stiffness_sym_sparse::get_params(symmetric_sparse<double>& values, dense1D<unsigned int>& ids,
                                            int& absolute) const {
    return detail::get_stiffness_params(*this, values, ids, absolute);
}

}  // namespace fem
}  // namespace orv
