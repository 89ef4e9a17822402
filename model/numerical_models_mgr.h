// Engine side of the registry of the numerical models of a context, with free IDs and global element numbering.
#pragma once

#include "orvmath1/ref_counted.h"

namespace orv {
namespace core {

// Engine object of the registry of the numerical models of a context, with free IDs and global element numbering.
// Owned by a context through a counted reference.
class numerical_models_mgr : public ref_counted {
public:
    numerical_models_mgr() = default;
    ~numerical_models_mgr() override = default;
};

}  // namespace core
}  // namespace orv
