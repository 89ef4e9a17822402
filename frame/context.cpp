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

context::context() : base_class(static_cast<ref_counted*>(new core::context_type())) {}

void context::set_max_threads(unsigned n) { engine()->process()->set_max_threads(n); }
unsigned context::get_max_threads() const { return engine()->process()->max_threads(); }
unsigned context::get_nbr_physical_cores() const { return engine()->process()->nbr_physical_cores(); }

void context::set_LLC_size(unsigned bytes) { engine()->process()->set_LLC_size(bytes); }
unsigned context::get_LLC_size() const {
    const std::uint64_t s = engine()->process()->LLC_size();
    return s > 0xFFFFFFFFu ? 0xFFFFFFFFu : static_cast<unsigned>(s);
}

void context::set_max_total_size(unsigned long long MB) { engine()->process()->set_max_total_size(MB); }
unsigned long long context::get_max_total_size() const { return engine()->process()->max_total_size(); }

error_type context::set_max_incore_size(unsigned MB, const char* folder, const char* prefix) {
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
    const core::OOC_mgr* ooc = engine()->OOC();
    return ooc ? ooc->budget_bytes() >> 20 : 0;
}

void context::set_raw_penalty_factor(double f) { engine()->raw_penalty_factor = f; }
double context::get_raw_penalty_factor() const { return engine()->raw_penalty_factor; }
void context::set_min_penalty_factor(double f) { engine()->min_penalty_factor = f; }
double context::get_min_penalty_factor() const { return engine()->min_penalty_factor; }
void context::set_max_penalty_factor(double f) { engine()->max_penalty_factor = f; }
double context::get_max_penalty_factor() const { return engine()->max_penalty_factor; }
void context::set_shell_drilling_factor(double f) { engine()->shell_drilling_factor = f; }
double context::get_shell_drilling_factor() const { return engine()->shell_drilling_factor; }

}  // namespace fem
}  // namespace orv
