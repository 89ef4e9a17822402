// Public handle of the sparse symmetric stiffness given directly on a list of DOFs.
#pragma once

#include <orv/fem/context.h>
#include <orv/fem/error_type.h>
#include <orv/fem/numerical_model_base.h>

#include <orvmath1/dense1D.h>
#include <orvmath1/symmetric_sparse.h>

namespace orv {
namespace core {
class stiffness_sym_sparse;
}
namespace fem {

/// One element whose stiffness is the compressed matrix values, row and column i on
/// DOF ids(i). With `absolute` non-zero it is a plain stiffness; with 0 it is a
/// constraint, scaled by the run's penalty and added in the penalty pass only. The default constructor gives an empty
/// handle.
class stiffness_sym_sparse : public numerical_model_base {
public:
    ORV_FEM_HANDLE(stiffness_sym_sparse, core::stiffness_sym_sparse)

    stiffness_sym_sparse();
    /// create(ctx).
    explicit stiffness_sym_sparse(context& ctx);
    /// create(ctx), then init(values, ids, absolute); the code of init is not reported.
    stiffness_sym_sparse(context& ctx, const symmetric_sparse<double>& values, const dense1D<unsigned int>& ids,
                         int absolute);
    /// A new model registered on ctx, with no values.
    error_type create(context& ctx);
    /// Shares values. -101 when the dimension differs from the IDs, the profile is not
    /// consistent, or an ID is repeated (the model is then emptied), -199 for memory.
    error_type init(const symmetric_sparse<double>& values, const dense1D<unsigned int>& ids, int absolute);
    /// The values (shared), the IDs in their order and the mode.
    error_type get_params(symmetric_sparse<double>& values, dense1D<unsigned int>& ids, int& absolute) const;
};

}  // namespace fem
}  // namespace orv
