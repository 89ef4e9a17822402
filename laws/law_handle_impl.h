// Definitions shared by the concrete law handles: identity, the constructors from a
// context (and data) and create(), which makes the engine law on the context.
#pragma once

#include <initializer_list>
#include <new>

#include <orv/fem/error_type.h>

#include "orvmath1/dense1D.h"

namespace orv {
namespace fem {
namespace detail {

// The data card of a law from a list of values; empty when memory fails.
inline dense1D<double> law_values(std::initializer_list<double> list) {
    dense1D<double> d;
    for (double x : list)
        if (!d.push_back(x)) return dense1D<double>();
    return d;
}

}  // namespace detail
}  // namespace fem
}  // namespace orv

#define ORV_FEM_LAW_HANDLE_IMPL(X, Base)              \
    ORV_FEM_HANDLE_IMPL(X, Base, core::X)             \
    X::X() = default;                                 \
    X::X(context& ctx) { create(ctx); }               \
    X::X(context& ctx, const dense1D<double>& data) { \
        if (create(ctx) == no_error) init(data);      \
    }                                                 \
    error_type X::create(context& ctx) {              \
        if (!ctx.engine()) {                          \
            clear_w();                                \
            return error_data;                        \
        }                                             \
        core::X* e = new (std::nothrow) core::X();    \
        if (!e) return error_memory;                  \
        set_w(static_cast<ref_counted*>(e));          \
        return no_error;                              \
    }
