// A plain handle on an engine object, for the library's code that hands an engine
// object out through a public handle class (whose narrowing constructor checks its
// class).
#pragma once

#include <orv/fem/base_class.h>

namespace orv {
namespace fem {
namespace detail {

struct raw_handle : base_class {
    explicit raw_handle(ref_counted* p) : base_class(p) {}
};

}  // namespace detail
}  // namespace fem
}  // namespace orv
