// Registry of the evolution functions of a context: scalar functions of time that
// scale loads and models.
#pragma once

#include <cstddef>

#include <orv/fem/base_class.h>
#include <orv/fem/error_type.h>

#include <orvmath1/dense1D.h>

namespace orv {
namespace core {
class evolution_funcs_mgr;
}
namespace fem {

class context;

/// Handle on the evolution functions of a context; copies share them. Get one with
/// context::the_evol_funcs_mgr(), or construct it from a context.
///
/// A function's ID is its position in the list, from 0. Loads and models refer to a
/// function by ID; an ID that names no function (0xFFFFFFFF by convention, or any ID
/// past the end) means the constant 1.0. The create_* operations return
/// 0xFFFFFFFF when the function cannot be made (memory, or an empty handle).
class evolution_funcs_mgr : public base_class {
public:
    ORV_FEM_HANDLE(evolution_funcs_mgr, core::evolution_funcs_mgr)

    /// Empty handle.
    evolution_funcs_mgr();
    /// Shares the registry of the context.
    explicit evolution_funcs_mgr(context& ctx);
    /// Makes this handle share the registry of the context; -101 for an empty context.
    error_type create(context& ctx);

    /// c
    unsigned create_cste(double c);
    /// a * t
    unsigned create_linear(double a);
    /// sin(omega * t + phi)
    unsigned create_sinus(double omega, double phi);
    /// 1 at t0 falling linearly to 0 at t0 -+ width / 2, 0 beyond. A width that is
    /// not positive gives 1 at t0 exactly and 0 everywhere else.
    unsigned create_triangle(double t0, double width);
    /// The segment from (t1, v1) to (t2, v2) for t1 <= t < t2, 0 elsewhere; 0
    /// throughout when t1 >= t2.
    unsigned create_trapeze(double t1, double t2, double v1, double v2);
    /// Piecewise linear through (times[i], values[i]), times ascending (not checked).
    /// Below the first time the first segment goes on; above the last time the last
    /// value holds. Both lists are copied.
    unsigned create_discret(const dense1D<double>& times, const dense1D<double>& values);
    /// sum of coefficients[i] * f_IDs[i](t). The terms are taken now: a later clear()
    /// does not change the sum. An ID that names no function is a term of 1.0. Lists of
    /// different lengths give 0xFFFFFFFF. No term at all gives 0.0.
    unsigned create_sum(const dense1D<unsigned>& IDs, const dense1D<double>& coefficients);
    /// product of f_IDs[i](t), with the same rules; no factor at all gives 0.0.
    unsigned create_mult(const dense1D<unsigned>& IDs);

    /// Value of the function ID at t; 1.0 when the ID names no function.
    double val(unsigned ID, double t) const;
    /// Number of functions.
    std::size_t size() const;
    /// False when the memory cannot be had.
    bool reserve(std::size_t n);
    /// Drops every function; IDs held elsewhere then mean 1.0.
    void clear();
};

}  // namespace fem
}  // namespace orv
