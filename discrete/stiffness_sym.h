// Engine of the dense symmetric stiffness given on a list of DOFs.
#pragma once

#include "discrete/stiffness_given.h"

namespace orv {
namespace core {

// Registered on its context at construction, with one element.
class stiffness_sym : public stiffness_given<symmetric_full<double>> {
public:
    explicit stiffness_sym(context_type* ctx) : stiffness_given<symmetric_full<double>>(ctx) { register_self(1); }
};

}  // namespace core
}  // namespace orv
