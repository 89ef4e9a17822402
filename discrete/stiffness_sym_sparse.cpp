// Public handle of the sparse symmetric stiffness model.
#include <orv/fem/stiffness_sym_sparse.h>

#include <new>

#include "discrete/stiffness_sym_sparse.h"
#include "frame/context_type.h"

namespace orv {
namespace fem {

ORV_FEM_HANDLE_IMPL(stiffness_sym_sparse, numerical_model_base, core::stiffness_sym_sparse)

stiffness_sym_sparse::stiffness_sym_sparse() = default;

stiffness_sym_sparse::stiffness_sym_sparse(context& ctx) { create(ctx); }

stiffness_sym_sparse::stiffness_sym_sparse(context& ctx, const symmetric_sparse<double>& values, const dense1D<unsigned int>& ids, int absolute) {
    if (create(ctx) == no_error) init(values, ids, absolute);
}

error_type stiffness_sym_sparse::create(context& ctx) {
    clear_w();
    if (!ctx.engine()) return error_data;
    core::stiffness_sym_sparse* e = new (std::nothrow) core::stiffness_sym_sparse(ctx.engine());
    if (!e) return error_memory;
    set_w(static_cast<ref_counted*>(e));
    return e->ID() == 0xFFFFFFFFu ? error_memory : no_error;
}

error_type stiffness_sym_sparse::init(const symmetric_sparse<double>& values, const dense1D<unsigned int>& ids, int absolute) {
    if (!engine()) return error_data;
    try {
        return static_cast<error_type>(engine()->init(values, ids, absolute));
    } catch (...) {
        return error_memory;
    }
}

error_type stiffness_sym_sparse::get_params(symmetric_sparse<double>& values, dense1D<unsigned int>& ids, int& absolute) const {
    if (!engine()) {
        values = symmetric_sparse<double>();
        ids = dense1D<unsigned int>();
        absolute = 1;
        return error_data;
    }
    engine()->get_params(values, ids, absolute);
    return no_error;
}

}  // namespace fem
}  // namespace orv
