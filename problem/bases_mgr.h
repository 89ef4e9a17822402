// Engine side of the registry of the local bases of a context.
#pragma once

#include "orvmath1/ref_counted.h"

namespace orv {
namespace core {

// Engine object of the registry of the local bases of a context.
// Owned by a context through a counted reference.
class bases_mgr : public ref_counted {
public:
    bases_mgr() = default;
    ~bases_mgr() override = default;
};

}  // namespace core
}  // namespace orv
