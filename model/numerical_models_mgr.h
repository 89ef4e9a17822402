// Engine side of the registry of the numerical models of a context, with free IDs and global element numbering.
#pragma once

#include <cstdint>
#include <mutex>
#include <utility>
#include <vector>

#include "orvmath1/ref_counted.h"

namespace orv {
namespace core {

class numerical_model_base;

// Engine object of the registry of the numerical models of a context, with free IDs and
// global element numbering. Owned by a context through a counted reference.
//
// A model's ID is its slot in `models`. The registry holds a counted reference on every
// registered model, so a model lives until it is removed or the registry is cleared.
// FE_offsets[i] is the global number of the first element of model i, FE_offsets[i + 1]
// the end of its range.
//
// Changes (registration, removal, clear) take the lock. Lookups don't: they may run in
// assembly threads, so nothing registers a model while an assembly runs.
class numerical_models_mgr : public ref_counted {
public:
    static constexpr std::uint32_t no_ID = 0xFFFFFFFFu;
    typedef std::pair<std::uint32_t, std::uint32_t> ID_pair;

    numerical_models_mgr();
    ~numerical_models_mgr() override;
    numerical_models_mgr(const numerical_models_mgr&) = delete;
    numerical_models_mgr& operator=(const numerical_models_mgr&) = delete;

    // Enters a model with its element count. A model whose ID is still 0xFFFFFFFF gets
    // one (a freed ID first, otherwise the next fresh one) and its ID field is set; a
    // model that already has an ID takes its slot again and its range is resized, the
    // later ranges being shifted. Returns the ID, or no_ID when memory fails.
    std::uint32_t register_model(numerical_model_base* model, std::uint32_t nbr_elements);

    // Drops the registry's reference on model ID and puts the ID on the free list; the
    // model object, if a host still holds it, is detached (its ID becomes 0xFFFFFFFF).
    // The element range stays until the ID is reused. Returns 0, or -101 for an ID that has
    // no model.
    int remove(std::uint32_t ID);

    // Slots of `models`, holes included.
    std::uint32_t size() const { return static_cast<std::uint32_t>(models_.size()); }
    // The model of that ID, or null.
    numerical_model_base* get_NM(std::uint32_t ID) const { return ID < models_.size() ? models_[ID].get() : nullptr; }
    // The model of that ID as a counted reference, null past the end or for a hole.
    Ptr<numerical_model_base> get_NM_ptr(std::uint32_t ID) const;

    // First global element number of model ID; no_ID when ID + 1 is past FE_offsets.
    std::uint32_t global_FE_ID(std::uint32_t ID) const;
    // (first, end) of the global range of model ID; both no_ID when out of range.
    ID_pair global_FE_ID_range(std::uint32_t ID) const;
    // (model ID, local element) of a global element number; both no_ID past the last.
    ID_pair local_FE_ID(std::uint32_t global) const;
    // Total number of global element numbers handed out.
    std::uint32_t nbr_global_FEs() const { return FE_offsets_.empty() ? 0 : FE_offsets_.back(); }

    std::size_t nbr_free_IDs() const { return free_IDs_.size(); }

    // Releases every model and resets the numbering.
    void clear();

private:
    std::uint32_t next_ID_ = 0;
    std::vector<std::uint32_t> free_IDs_;
    Ptr<numerical_model_base> null_model_;
    std::vector<Ptr<numerical_model_base>> models_;
    std::vector<std::uint32_t> FE_offsets_;
    std::mutex lock_;
};

}  // namespace core
}  // namespace orv
