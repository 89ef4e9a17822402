// Public handle on a composite: one model made of other models, by ID.
#pragma once

#include <orv/fem/context.h>
#include <orv/fem/numerical_model_base.h>

namespace orv {
namespace core {
class numerical_model_composite;
}
namespace fem {

/// Groups models of one context by their IDs. Every operation of the model contract is
/// forwarded to the children in insertion order; an ID without a model is skipped, a
/// duplicated ID acts twice. The composite's own evolution function multiplies its
/// children's contributions.
class numerical_model_composite : public numerical_model_base {
public:
    ORV_FEM_HANDLE(numerical_model_composite, core::numerical_model_composite)

    /// An empty handle.
    numerical_model_composite();
    /// create(ctx).
    explicit numerical_model_composite(context& ctx);
    /// A new, empty composite registered on ctx (with one element in the registry).
    error_type create(context& ctx);

    /// Appends a model ID; no check that a model exists or is already there.
    /// -101 on an empty handle, -199 when memory fails (the same for every insert).
    error_type insert(unsigned ID);
    /// Appends two model IDs.
    error_type insert(unsigned a, unsigned b);
    /// Appends three model IDs.
    error_type insert(unsigned a, unsigned b, unsigned c);
    /// Appends four model IDs.
    error_type insert(unsigned a, unsigned b, unsigned c, unsigned d);
    /// Appends a list of model IDs.
    error_type insert(const dense1D<unsigned int>& IDs);
    /// False when memory fails.
    bool reserve(unsigned n);
    /// Number of entries (a repeated ID counts each time).
    unsigned size() const;
    /// Entry i; 0xFFFFFFFF past the end.
    unsigned get_NM_ID(unsigned i) const;
    /// The list, shared.
    dense1D<unsigned int> get_NM_IDs() const;
    /// Child i; empty past the end or when no model has that ID.
    numerical_model_base get_NM(unsigned i) const;
};

}  // namespace fem
}  // namespace orv
