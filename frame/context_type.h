// Engine object of a context: registries, process resources, memory limits, factors.
#pragma once

#include <limits>

#include "frame/process_mgr.h"
#include "linalg/OOC_mgr.h"
#include "model/numerical_models_mgr.h"
#include "orvmath1/ref_counted.h"
#include "problem/bases_mgr.h"
#include "problem/evolution_funcs_mgr.h"

namespace orv {
namespace core {

// Lives as long as a handle or an object that shares it (problem, model, solver).
// Members are destroyed in the reverse order of their declaration.
class context_type : public ref_counted {
public:
    context_type();
    ~context_type() override;
    context_type(const context_type&) = delete;
    context_type& operator=(const context_type&) = delete;

    numerical_models_mgr* models() const { return models_.get(); }
    evolution_funcs_mgr* evolution_funcs() const { return evolution_funcs_.get(); }
    bases_mgr* bases() const { return bases_.get(); }
    process_mgr* process() const { return process_.get(); }
    // Null while everything stays in memory.
    OOC_mgr* OOC() const { return OOC_.get(); }

    // Drops the current out-of-core manager and makes a new one with a budget of MB;
    // MB 0 or 0xFFFFFFFF keeps everything in memory. Returns 0 or -151.
    int set_max_incore_size(unsigned MB, const char* folder, const char* prefix);

    double raw_penalty_factor = 10000.0;
    double min_penalty_factor = 1.0;
    double max_penalty_factor = std::numeric_limits<double>::max();
    double shell_drilling_factor = 0.001;

private:
    Ptr<numerical_models_mgr> models_;
    Ptr<evolution_funcs_mgr> evolution_funcs_;
    Ptr<bases_mgr> bases_;
    Ptr<process_mgr> process_;
    Ptr<OOC_mgr> OOC_;
};

}  // namespace core
}  // namespace orv
