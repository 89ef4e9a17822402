// Public handle on the registry of the numerical models of a context.
#pragma once

#include <utility>

#include <orv/fem/base_class.h>
#include <orv/fem/error_type.h>
#include <orv/fem/numerical_model_base.h>

namespace orv {
namespace core {
class numerical_models_mgr;
}
namespace fem {

/// The registry hands out model IDs (reusing those of removed models) and numbers the
/// elements of all models globally: model i owns the global numbers
/// [global_FE_ID(i), end of global_FE_ID_range(i)). Reached through
/// context::the_NM_mgr().
class numerical_models_mgr : public base_class {
public:
    ORV_FEM_HANDLE(numerical_models_mgr, core::numerical_models_mgr)

    /// An empty handle.
    numerical_models_mgr();
    /// A handle on a registry engine (shares it).
    explicit numerical_models_mgr(core::numerical_models_mgr* engine);

    /// Slots of the registry, holes included.
    unsigned size() const;
    /// The model's ID, 0xFFFFFFFF for an empty handle.
    unsigned get_ID(const numerical_model_base& model) const;
    /// A handle on model ID, empty past the end or for a removed model.
    numerical_model_base get_NM(unsigned ID) const;
    /// -101 if no model has that ID.
    error_type get_NM(unsigned ID, numerical_model_base& model) const;
    /// First global element number of model ID; 0xFFFFFFFF when out of range.
    unsigned global_FE_ID(unsigned ID) const;
    /// (first, end) of model ID's global numbers; both 0xFFFFFFFF when out of range.
    std::pair<unsigned, unsigned> global_FE_ID_range(unsigned ID) const;
    /// (model ID, local element) of a global number; both 0xFFFFFFFF past the last.
    std::pair<unsigned, unsigned> local_FE_ID(unsigned global) const;
    /// Releases model ID: the registry drops it, the ID goes to the free list and the
    /// next model created takes it. -101 if no model has that ID.
    error_type remove(unsigned ID);
    /// Releases every model and restarts the numbering.
    void clear();
};

}  // namespace fem
}  // namespace orv
