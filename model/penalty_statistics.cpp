// Penalty factors measured on the diagonal of the free stiffness matrix.
#include "model/penalty_statistics.h"

#include <cmath>

#include "frame/context_type.h"

namespace orv {
namespace core {

penalty_factors context_penalty_factors(const context_type* ctx) {
    penalty_factors f;
    if (ctx) {
        f.raw = ctx->raw_penalty_factor;
        f.min = ctx->min_penalty_factor;
        f.max = ctx->max_penalty_factor;
    }
    return f;
}

double penalty_statistics::penalty(unsigned cls, const penalty_factors& factors) const {
    double p = count_[cls] ? std::sqrt(sum_[cls] / double(count_[cls])) * factors.raw : 0.0;
    if (!(p >= factors.min))
        p = factors.min;
    else if (p > factors.max)
        p = factors.max;
    return p;
}

void penalty_statistics::apply(const penalty_factors& factors, assembly_params& params) const {
    params.penalty_displacement = penalty(0, factors);
    params.penalty_rotation = penalty(1, factors);
    params.penalty_temperature = penalty(2, factors);
}

}  // namespace core
}  // namespace orv
