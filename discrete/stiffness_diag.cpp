// Public handle of the diagonal stiffness model.
#include <orv/fem/stiffness_diag.h>

#include <new>

#include "discrete/stiffness_diag.h"
#include "frame/context_type.h"

namespace orv {
namespace fem {

ORV_FEM_HANDLE_IMPL(stiffness_diag, numerical_model_base, core::stiffness_diag)

stiffness_diag::stiffness_diag() = default;

stiffness_diag::stiffness_diag(context& ctx) { create(ctx); }

stiffness_diag::stiffness_diag(context& ctx, const dense1D<double>& values, const dense1D<unsigned int>& ids, int absolute) {
    if (create(ctx) == no_error) init(values, ids, absolute);
}

error_type stiffness_diag::create(context& ctx) {
    clear_w();
    if (!ctx.engine()) return error_data;
    core::stiffness_diag* e = new (std::nothrow) core::stiffness_diag(ctx.engine());
    if (!e) return error_memory;
    set_w(static_cast<ref_counted*>(e));
    return e->ID() == 0xFFFFFFFFu ? error_memory : no_error;
}

error_type stiffness_diag::init(const dense1D<double>& values, const dense1D<unsigned int>& ids, int absolute) {
    if (!engine()) return error_data;
    try {
        return static_cast<error_type>(engine()->init(values, ids, absolute));
    } catch (...) {
        return error_memory;
    }
}

error_type stiffness_diag::get_params(dense1D<double>& values, dense1D<unsigned int>& ids, int& absolute) const {
    if (!engine()) {
        values = dense1D<double>();
        ids = dense1D<unsigned int>();
        absolute = 1;
        return error_data;
    }
    engine()->get_params(values, ids, absolute);
    return no_error;
}

}  // namespace fem
}  // namespace orv
