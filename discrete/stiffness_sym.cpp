// Public handle of the dense symmetric stiffness model.
#include <orv/fem/stiffness_sym.h>

#include <new>

#include "discrete/stiffness_sym.h"
#include "frame/context_type.h"

namespace orv {
namespace fem {

ORV_FEM_HANDLE_IMPL(stiffness_sym, numerical_model_base, core::stiffness_sym)

stiffness_sym::stiffness_sym() = default;

stiffness_sym::stiffness_sym(context& ctx) { create(ctx); }

stiffness_sym::stiffness_sym(context& ctx, const symmetric_full<double>& values, const dense1D<unsigned int>& ids, int absolute) {
    if (create(ctx) == no_error) init(values, ids, absolute);
}

error_type stiffness_sym::create(context& ctx) {
    clear_w();
    if (!ctx.engine()) return error_data;
    core::stiffness_sym* e = new (std::nothrow) core::stiffness_sym(ctx.engine());
    if (!e) return error_memory;
    set_w(static_cast<ref_counted*>(e));
    return e->ID() == 0xFFFFFFFFu ? error_memory : no_error;
}

error_type stiffness_sym::init(const symmetric_full<double>& values, const dense1D<unsigned int>& ids, int absolute) {
    if (!engine()) return error_data;
    try {
        return static_cast<error_type>(engine()->init(values, ids, absolute));
    } catch (...) {
        return error_memory;
    }
}

error_type stiffness_sym::get_params(symmetric_full<double>& values, dense1D<unsigned int>& ids, int& absolute) const {
    if (!engine()) {
        values = symmetric_full<double>();
        ids = dense1D<unsigned int>();
        absolute = 1;
        return error_data;
    }
    engine()->get_params(values, ids, absolute);
    return no_error;
}

}  // namespace fem
}  // namespace orv
