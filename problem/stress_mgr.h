// Initial strains, initial stresses and thermal loads of one load case, per model.
#pragma once

#include <cstdint>
#include <vector>

#include "orvmath1/ref_counted.h"

namespace orv {
namespace core {

class context_type;

// What acts on the elements of one model beside external loads. The tables of initial
// strains, initial stresses and thermal loads are not held yet: a manager is empty and
// gives no term to any element.
class stress_mgr : public ref_counted {
public:
    stress_mgr() = default;
    ~stress_mgr() override;

    // True when no table holds a row.
    virtual bool empty() const { return true; }
    // Adds `coefficient` times the tables of `other`; 0, or an error code.
    virtual int add(const stress_mgr& other, double coefficient);
};

// The stress data of one load case: one stress_mgr per model ID, created on demand.
class stress_super_mgr : public ref_counted {
public:
    // Keeps a counted reference on the context (null is allowed).
    explicit stress_super_mgr(context_type* ctx);
    ~stress_super_mgr() override;
    stress_super_mgr(const stress_super_mgr&) = delete;
    stress_super_mgr& operator=(const stress_super_mgr&) = delete;

    context_type* get_context() const { return context_.get(); }
    // The manager of a model, null when it has none.
    stress_mgr* stress_mgr_for(std::uint32_t NM_ID) const {
        return NM_ID < per_model_.size() ? per_model_[NM_ID].get() : nullptr;
    }
    // The manager of a model, made when missing; null when memory fails.
    stress_mgr* get_or_create(std::uint32_t NM_ID);
    // Number of model slots.
    std::size_t size() const { return per_model_.size(); }
    // True when no model has a non-empty manager.
    bool empty() const;

    // Adds `coefficient` times every manager of `other`, creating the missing ones. A
    // coefficient of 0.0 adds nothing. Stops at the first failure and returns its code.
    int add(const stress_super_mgr& other, double coefficient);
    void clear() { per_model_.clear(); }

private:
    Ptr<context_type> context_;
    std::vector<Ptr<stress_mgr>> per_model_;
};

}  // namespace core
}  // namespace orv
