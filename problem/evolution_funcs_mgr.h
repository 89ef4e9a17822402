// Engine side of the registry of the evolution functions of a context.
#pragma once

#include "orvmath1/ref_counted.h"

namespace orv {
namespace core {

// Engine object of the registry of the evolution functions of a context.
// Owned by a context through a counted reference.
class evolution_funcs_mgr : public ref_counted {
public:
    evolution_funcs_mgr() = default;
    ~evolution_funcs_mgr() override = default;
};

}  // namespace core
}  // namespace orv
