// Engine of the sparse symmetric stiffness given on a list of DOFs.
#pragma once

#include "discrete/stiffness_given.h"

namespace orv {
namespace core {

// Registered on its context at construction, with one element.
class stiffness_sym_sparse : public stiffness_given<symmetric_sparse<double>> {
public:
    explicit stiffness_sym_sparse(context_type* ctx) : stiffness_given<symmetric_sparse<double>>(ctx) {
        register_self(1);
    }
};

}  // namespace core
}  // namespace orv
