// Context engine and its public handle.
#include <orv/fem/context.h>

#include "frame/context_type.h"

namespace orv {
namespace core {

context_type::context_type()
    : models_(new numerical_models_mgr()),
      evolution_funcs_(new evolution_funcs_mgr()),
      bases_(new bases_mgr()),
      process_(new process_mgr()) {}

context_type::~context_type() = default;

int context_type::set_max_incore_size(unsigned MB, const char* folder, const char* prefix) {
    OOC_.reset();
    if (MB == 0 || MB == 0xFFFFFFFFu) return 0;
    Ptr<OOC_mgr> mgr(new OOC_mgr());
    const int code = mgr->init(MB, folder, prefix);
    if (code != 0) return code;
    OOC_ = mgr;
    return 0;
}

}  // namespace core

namespace fem {

ORV_FEM_HANDLE_IMPL(context, base_class, core::context_type)

namespace {

// A new context engine, or null when memory fails (the handle is then empty).
core::context_type* make_context() noexcept {
    try {
        return new core::context_type();
    } catch (...) {
        return nullptr;
    }
}

}  // namespace

// On an empty handle the setters do nothing and the getters give 0.
context::context() : base_class(static_cast<ref_counted*>(make_context())) {}

void context::set_max_threads(unsigned n) {
    if (engine()) engine()->process()->set_max_threads(n);
}
unsigned context::get_max_threads() const { return engine() ? engine()->process()->max_threads() : 0; }
unsigned context::get_nbr_physical_cores() const { return engine() ? engine()->process()->nbr_physical_cores() : 0; }

void context::set_LLC_size(unsigned bytes) {
    if (engine()) engine()->process()->set_LLC_size(bytes);
}
unsigned context::get_LLC_size() const {
    const std::uint64_t s = engine() ? engine()->process()->LLC_size() : 0;
    return s > 0xFFFFFFFFu ? 0xFFFFFFFFu : static_cast<unsigned>(s);
}

void context::set_max_total_size(unsigned long long MB) {
    if (engine()) engine()->process()->set_max_total_size(MB);
}
unsigned long long context::get_max_total_size() const { return engine() ? engine()->process()->max_total_size() : 0; }

error_type context::set_max_incore_size(unsigned MB, const char* folder, const char* prefix) {
    if (!engine()) return error_data;
    try {
        return static_cast<error_type>(engine()->set_max_incore_size(MB, folder, prefix));
    } catch (...) {
        return error_memory;
    }
}
error_type context::memory_management(unsigned MB, const char* folder, const char* prefix) {
    return set_max_incore_size(MB, folder, prefix);
}
unsigned long long context::get_max_incore_size() const {
    const core::OOC_mgr* ooc = engine() ? engine()->OOC() : nullptr;
    return ooc ? ooc->budget_bytes() >> 20 : 0;
}

// The penalty and drilling factors of the context's engine, by member.
#define ORV_CONTEXT_FACTOR(name, member)    \
    void context::set_##name(double f) {    \
        if (engine()) engine()->member = f; \
    }                                       \
    double context::get_##name() const { return engine() ? engine()->member : 0.0; }

ORV_CONTEXT_FACTOR(raw_penalty_factor, raw_penalty_factor)
ORV_CONTEXT_FACTOR(min_penalty_factor, min_penalty_factor)
ORV_CONTEXT_FACTOR(max_penalty_factor, max_penalty_factor)
ORV_CONTEXT_FACTOR(shell_drilling_factor, shell_drilling_factor)
#undef ORV_CONTEXT_FACTOR

}  // namespace fem
}  // namespace orv
