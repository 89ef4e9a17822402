// Stress data of a load case: per-model managers and their combination.
#include "problem/stress_mgr.h"
#include <orv/fem/error_type.h>

#include <new>

#include <orv/fem/stress_mgr.h>

#include "frame/context_type.h"

namespace orv {
namespace core {

stress_mgr::~stress_mgr() = default;

int stress_mgr::add(const stress_mgr& other, double coefficient) {
    (void)other;
    (void)coefficient;
    return 0;
}

stress_super_mgr::stress_super_mgr(context_type* ctx) : context_(ctx) {}

stress_super_mgr::~stress_super_mgr() = default;

stress_mgr* stress_super_mgr::get_or_create(std::uint32_t NM_ID) {
    try {
        if (NM_ID >= per_model_.size()) per_model_.resize(std::size_t(NM_ID) + 1);
        if (!per_model_[NM_ID]) per_model_[NM_ID] = new stress_mgr();
        return per_model_[NM_ID].get();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

bool stress_super_mgr::empty() const {
    for (const auto& m : per_model_)
        if (m && !m->empty()) return false;
    return true;
}

int stress_super_mgr::add(const stress_super_mgr& other, double coefficient) {
    if (coefficient == 0.0) return 0;
    for (std::size_t i = 0; i < other.per_model_.size(); ++i) {
        const stress_mgr* src = other.per_model_[i].get();
        if (!src) continue;
        stress_mgr* dst = get_or_create(static_cast<std::uint32_t>(i));
        if (!dst) return fem::error_memory;
        const int rc = dst->add(*src, coefficient);
        if (rc) return rc;
    }
    return 0;
}

}  // namespace core

namespace fem {

ORV_FEM_HANDLE_IMPL(stress_mgr, base_class, core::stress_super_mgr)

stress_mgr::stress_mgr() = default;

stress_mgr::stress_mgr(context& ctx) { create(ctx); }

error_type stress_mgr::create(context& ctx) {
    core::stress_super_mgr* e = new (std::nothrow) core::stress_super_mgr(ctx.engine());
    if (!e) return error_memory;
    set_w(static_cast<ref_counted*>(e));
    return no_error;
}

void stress_mgr::clear() {
    if (engine()) engine()->clear();
}

}  // namespace fem
}  // namespace orv
