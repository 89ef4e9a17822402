// Bodies shared by the public handles of the matrix-defined stiffness models,
// which differ only in their engine class and in the type of their values.
#pragma once

#include <new>

#include <orv/fem/context.h>
#include <orv/fem/error_type.h>

#include "frame/context_type.h"
#include "orvmath1/dense1D.h"

namespace orv {
namespace fem {
namespace detail {

// Replaces the pointee of h by a new Engine registered on ctx.
template <class Engine, class Handle>
error_type create_stiffness(Handle& h, context& ctx) {
    h.clear_w();
    if (!ctx.engine()) return error_data;
    Engine* e = new (std::nothrow) Engine(ctx.engine());
    if (!e) return error_memory;
    h.set_w(static_cast<ref_counted*>(e));
    return e->ID() == 0xFFFFFFFFu ? error_memory : no_error;
}

template <class Handle, class Values>
error_type init_stiffness(Handle& h, const Values& values, const dense1D<unsigned int>& ids, int absolute) {
    if (!h.engine()) return error_data;
    try {
        return static_cast<error_type>(h.engine()->init(values, ids, absolute));
    } catch (...) {
        return error_memory;
    }
}

// An empty handle gives empty values and the absolute default.
template <class Handle, class Values>
error_type get_stiffness_params(const Handle& h, Values& values, dense1D<unsigned int>& ids, int& absolute) {
    if (!h.engine()) {
        values = Values();
        ids = dense1D<unsigned int>();
        absolute = 1;
        return error_data;
    }
    h.engine()->get_params(values, ids, absolute);
    return no_error;
}

}  // namespace detail
}  // namespace fem
}  // namespace orv
