// Root of the models that contribute stiffness.
#pragma once

#include "model/numerical_model_base.h"

namespace orv {
namespace core {

// Models whose first matrix is a stiffness: meshes of the mechanical physics and the
// discrete stiffness elements. It adds nothing to the contract yet; it names the
// family, so that code can tell stiffness models from the others.
class numerical_model_stiff : public numerical_model_base {
public:
    explicit numerical_model_stiff(context_type* ctx) : numerical_model_base(ctx) {}
};

}  // namespace core
}  // namespace orv
