// Engine of the diagonal stiffness given on a list of DOFs.
#pragma once

#include "discrete/stiffness_given.h"

namespace orv {
namespace core {

// Registered on its context at construction, with one element.
class stiffness_diag : public stiffness_given<dense1D<double>> {
public:
    explicit stiffness_diag(context_type* ctx) : stiffness_given<dense1D<double>>(ctx) { register_self(1); }
};

}  // namespace core
}  // namespace orv
