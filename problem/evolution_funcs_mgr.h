// Engine side of the registry of the evolution functions of a context.
#pragma once

#include <cstddef>
#include <vector>

#include "orvmath1/ref_counted.h"
#include "problem/evolution_func.h"

namespace orv {
namespace core {

// The list of the evolution functions of a context. A function's ID is its position
// in the list, the first being 0. An ID that names no function (0xFFFFFFFF, or any
// ID past the end) stands for the constant 1.0: that is how loads and models without
// a function get their full value.
// Owned by a context through a counted reference. The create_* operations are not
// called during a run; val() only reads and may be called from assembly threads.
class evolution_funcs_mgr : public ref_counted {
public:
    // The ID returned when a function could not be made (memory): it names nothing.
    static constexpr unsigned no_function = 0xFFFFFFFFu;

    evolution_funcs_mgr() = default;
    ~evolution_funcs_mgr() override = default;

    unsigned create_cste(double c);
    unsigned create_linear(double a);
    unsigned create_sinus(double omega, double phi);
    unsigned create_triangle(double t0, double width);
    unsigned create_trapeze(double t1, double t2, double v1, double v2);
    // Copies both lists. Null pointers are allowed with a count of 0.
    unsigned create_discret(const double* times, std::size_t nbr_times, const double* values, std::size_t nbr_values);
    // Takes a shared reference to each term now, so that a later clear() leaves the
    // sum intact. An ID that names no function gives a term of 1.0. Lists of
    // different lengths make no function and give no_function.
    unsigned create_sum(const unsigned* IDs, std::size_t nbr_IDs, const double* coefficients,
                        std::size_t nbr_coefficients);
    // As create_sum, for a product of factors.
    unsigned create_mult(const unsigned* IDs, std::size_t nbr_IDs);

    // Value of function ID at t; 1.0 when the ID names no function.
    double val(unsigned ID, double t) const { return ID < funcs_.size() ? funcs_[ID]->val(t) : 1.0; }
    // The function of that ID, or null.
    Ptr<evolution_func_base> get(unsigned ID) const {
        return ID < funcs_.size() ? funcs_[ID] : Ptr<evolution_func_base>();
    }

    std::size_t size() const { return funcs_.size(); }
    // False when the memory cannot be had.
    bool reserve(std::size_t n);
    // Drops every function. IDs held elsewhere then mean 1.0.
    void clear() { funcs_.clear(); }

private:
    unsigned append(evolution_func_base* f);
    std::vector<Ptr<evolution_func_base>> collect(const unsigned* IDs, std::size_t n) const;

    std::vector<Ptr<evolution_func_base>> funcs_;
};

}  // namespace core
}  // namespace orv
