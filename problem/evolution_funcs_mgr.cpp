// Registry of the evolution functions of a context: engine and public handle.
#include "problem/evolution_funcs_mgr.h"

#include <new>
#include <utility>

#include <orv/fem/context.h>
#include <orv/fem/evolution_funcs_mgr.h>

#include "frame/context_type.h"

namespace orv {
namespace core {

namespace {

// Makes a function; null when the memory cannot be had.
template <class F, class... Args>
F* make_func(Args&&... args) noexcept {
    try {
        return new F(std::forward<Args>(args)...);
    } catch (...) {
        return nullptr;
    }
}

}  // namespace

unsigned evolution_funcs_mgr::append(evolution_func_base* f) {
    if (!f) return no_function;
    Ptr<evolution_func_base> keep(f);  // released if the list cannot grow
    if (funcs_.size() >= no_function) return no_function;
    try {
        funcs_.push_back(keep);
    } catch (...) {
        return no_function;
    }
    return static_cast<unsigned>(funcs_.size() - 1);
}

std::vector<Ptr<evolution_func_base>> evolution_funcs_mgr::collect(const unsigned* IDs, std::size_t n) const {
    std::vector<Ptr<evolution_func_base>> terms;
    terms.reserve(n);
    for (std::size_t i = 0; i < n; ++i) terms.push_back(get(IDs[i]));
    return terms;
}

unsigned evolution_funcs_mgr::create_cste(double c) { return append(make_func<evolution_func_constant>(c)); }

unsigned evolution_funcs_mgr::create_linear(double a) { return append(make_func<evolution_func_linear>(a)); }

unsigned evolution_funcs_mgr::create_sinus(double omega, double phi) {
    return append(make_func<evolution_func_sinus>(omega, phi));
}

unsigned evolution_funcs_mgr::create_triangle(double t0, double width) {
    return append(make_func<evolution_func_triangle>(t0, width));
}

unsigned evolution_funcs_mgr::create_trapeze(double t1, double t2, double v1, double v2) {
    return append(make_func<evolution_func_trapeze>(t1, t2, v1, v2));
}

unsigned evolution_funcs_mgr::create_discret(const double* times, std::size_t nbr_times, const double* values,
                                             std::size_t nbr_values) {
    if ((!times && nbr_times) || (!values && nbr_values)) return no_function;
    try {
        std::vector<double> t(times, times + nbr_times);
        std::vector<double> v(values, values + nbr_values);
        return append(make_func<evolution_func_discret>(std::move(t), std::move(v)));
    } catch (...) {
        return no_function;
    }
}

unsigned evolution_funcs_mgr::create_sum(const unsigned* IDs, std::size_t nbr_IDs, const double* coefficients,
                                         std::size_t nbr_coefficients) {
    if (nbr_IDs != nbr_coefficients) return no_function;
    if ((!IDs || !coefficients) && nbr_IDs) return no_function;
    try {
        std::vector<double> c(coefficients, coefficients + nbr_coefficients);
        return append(make_func<evolution_func_sum>(collect(IDs, nbr_IDs), std::move(c)));
    } catch (...) {
        return no_function;
    }
}

unsigned evolution_funcs_mgr::create_mult(const unsigned* IDs, std::size_t nbr_IDs) {
    if (!IDs && nbr_IDs) return no_function;
    try {
        return append(make_func<evolution_func_mult>(collect(IDs, nbr_IDs)));
    } catch (...) {
        return no_function;
    }
}

bool evolution_funcs_mgr::reserve(std::size_t n) {
    try {
        funcs_.reserve(n);
    } catch (...) {
        return false;
    }
    return true;
}

}  // namespace core
}  // namespace orv

// Public handle.

namespace orv {
namespace fem {

ORV_FEM_HANDLE_IMPL(evolution_funcs_mgr, base_class, core::evolution_funcs_mgr)

evolution_funcs_mgr::evolution_funcs_mgr() = default;

evolution_funcs_mgr::evolution_funcs_mgr(context& ctx) { create(ctx); }

error_type evolution_funcs_mgr::create(context& ctx) {
    core::context_type* c = ctx.engine();
    set_w(c ? static_cast<ref_counted*>(c->evolution_funcs()) : nullptr);
    return c ? no_error : error_data;
}

unsigned evolution_funcs_mgr::create_cste(double c) {
    core::evolution_funcs_mgr* e = engine();
    return e ? e->create_cste(c) : core::evolution_funcs_mgr::no_function;
}

unsigned evolution_funcs_mgr::create_linear(double a) {
    core::evolution_funcs_mgr* e = engine();
    return e ? e->create_linear(a) : core::evolution_funcs_mgr::no_function;
}

unsigned evolution_funcs_mgr::create_sinus(double omega, double phi) {
    core::evolution_funcs_mgr* e = engine();
    return e ? e->create_sinus(omega, phi) : core::evolution_funcs_mgr::no_function;
}

unsigned evolution_funcs_mgr::create_triangle(double t0, double width) {
    core::evolution_funcs_mgr* e = engine();
    return e ? e->create_triangle(t0, width) : core::evolution_funcs_mgr::no_function;
}

unsigned evolution_funcs_mgr::create_trapeze(double t1, double t2, double v1, double v2) {
    core::evolution_funcs_mgr* e = engine();
    return e ? e->create_trapeze(t1, t2, v1, v2) : core::evolution_funcs_mgr::no_function;
}

unsigned evolution_funcs_mgr::create_discret(const dense1D<double>& times, const dense1D<double>& values) {
    core::evolution_funcs_mgr* e = engine();
    if (!e) return core::evolution_funcs_mgr::no_function;
    return e->create_discret(times.data(), times.size(), values.data(), values.size());
}

unsigned evolution_funcs_mgr::create_sum(const dense1D<unsigned>& IDs, const dense1D<double>& coefficients) {
    core::evolution_funcs_mgr* e = engine();
    if (!e) return core::evolution_funcs_mgr::no_function;
    return e->create_sum(IDs.data(), IDs.size(), coefficients.data(), coefficients.size());
}

unsigned evolution_funcs_mgr::create_mult(const dense1D<unsigned>& IDs) {
    core::evolution_funcs_mgr* e = engine();
    return e ? e->create_mult(IDs.data(), IDs.size()) : core::evolution_funcs_mgr::no_function;
}

double evolution_funcs_mgr::val(unsigned ID, double t) const {
    const core::evolution_funcs_mgr* e = engine();
    return e ? e->val(ID, t) : 1.0;
}

std::size_t evolution_funcs_mgr::size() const {
    const core::evolution_funcs_mgr* e = engine();
    return e ? e->size() : 0;
}

bool evolution_funcs_mgr::reserve(std::size_t n) {
    core::evolution_funcs_mgr* e = engine();
    return e ? e->reserve(n) : false;
}

void evolution_funcs_mgr::clear() {
    if (core::evolution_funcs_mgr* e = engine()) e->clear();
}

evolution_funcs_mgr context::the_evol_funcs_mgr() const {
    evolution_funcs_mgr h;
    core::context_type* c = engine();
    if (c) h.set_w(static_cast<ref_counted*>(c->evolution_funcs()));
    return h;
}

}  // namespace fem
}  // namespace orv
