// Public handles of the elasto-plastic laws.
#include <cmath>
#include <initializer_list>
#include <new>

#include <orv/fem/context.h>
#include <orv/fem/law_rod_ep.h>
#include <orv/fem/law_solid_ep.h>

#include "laws/law_handle_impl.h"
#include "laws/law_rod_ep.h"
#include "laws/law_solid_ep.h"

namespace orv {
namespace fem {

namespace {

core::law_key key_of(unsigned element, unsigned point, unsigned step) {
    core::law_key key;
    key.element = element;
    key.point = point;
    key.step = step;
    return key;
}

double plasticity_of(const core::law_base* e, unsigned element, unsigned point, unsigned step) {
    return e ? e->plasticity(key_of(element, point, step)) : 0.0;
}

error_type copy_states_of(core::law_base* e, unsigned from_step, unsigned to_step) {
    if (!e) return error_data;
    return e->copy_states(from_step, to_step) < 0 ? error_memory : no_error;
}

template <class Law>
bool curve_valid_of(const Law* e) {
    if (!e || e->get_data().empty()) return false;
    core::hardening_curve curve;
    return e->get_hardening(e->get_data(), curve) && curve.valid();
}

template <class Law>
error_type set_limits_of(Law* e, double max_strain, double max_stress) {
    if (!e || std::isnan(max_strain) || std::isnan(max_stress)) return error_data;
    e->set_limit_states(max_strain, max_stress);
    return no_error;
}

// init of a piecewise linear law: the leading values, then the strains, then the
// moduli. Tables that are empty or of different lengths keep nothing (-1).
int init_table(law_base& law, dense1D<double> d, const dense1D<double>& strains, const dense1D<double>& moduli) {
    if (!law.get_w()) return -1;
    if (strains.empty() || strains.size() != moduli.size() || d.empty()) return law.init(dense1D<double>());
    for (std::size_t i = 0; i < strains.size(); ++i)
        if (!d.push_back(strains[i])) return error_memory;
    for (std::size_t i = 0; i < moduli.size(); ++i)
        if (!d.push_back(moduli[i])) return error_memory;
    return law.init(d);
}

}  // namespace

// Family roots: state operations on the engine root.
#define ORV_FEM_EP_ROOT_IMPL(X, Base, Iso)                                        \
    ORV_FEM_HANDLE_IMPL(X, Base, core::X)                                         \
    double X::plasticity(unsigned element, unsigned point, unsigned step) const { \
        return plasticity_of(engine(), element, point, step);                     \
    }                                                                             \
    void X::reset_states() {                                                      \
        if (core::X* e = engine()) e->reset_states();                             \
    }                                                                             \
    error_type X::copy_states(unsigned from_step, unsigned to_step) {             \
        return copy_states_of(engine(), from_step, to_step);                      \
    }                                                                             \
    bool X::curve_valid() const { return curve_valid_of(dynamic_cast<const core::Iso*>(engine())); }

ORV_FEM_EP_ROOT_IMPL(law_solid_ep, law_solid_stiff, law_solid_ep_iso_hardening)
ORV_FEM_EP_ROOT_IMPL(law_rod_ep, law_base, law_rod_ep_iso_hardening)
ORV_FEM_EP_ROOT_IMPL(law_scalar_ep, law_base, law_scalar_ep_iso_hardening)

error_type law_rod_ep::set_limit_states(double max_strain, double max_stress) {
    return set_limits_of(engine(), max_strain, max_stress);
}

error_type law_scalar_ep::set_limit_states(double max_strain, double max_stress) {
    return set_limits_of(engine(), max_strain, max_stress);
}

ORV_FEM_LAW_HANDLE_IMPL(law_solid_ep_perfect, law_solid_ep)
ORV_FEM_LAW_HANDLE_IMPL(law_solid_ep_power, law_solid_ep)
ORV_FEM_LAW_HANDLE_IMPL(law_solid_ep_RambergOsgood, law_solid_ep)
ORV_FEM_LAW_HANDLE_IMPL(law_solid_ep_piecewise_linear, law_solid_ep)
ORV_FEM_LAW_HANDLE_IMPL(law_rod_ep_perfect, law_rod_ep)
ORV_FEM_LAW_HANDLE_IMPL(law_rod_ep_power, law_rod_ep)
ORV_FEM_LAW_HANDLE_IMPL(law_rod_ep_RambergOsgood, law_rod_ep)
ORV_FEM_LAW_HANDLE_IMPL(law_rod_ep_piecewise_linear, law_rod_ep)
ORV_FEM_LAW_HANDLE_IMPL(law_scalar_ep_perfect, law_scalar_ep)
ORV_FEM_LAW_HANDLE_IMPL(law_scalar_ep_power, law_scalar_ep)
ORV_FEM_LAW_HANDLE_IMPL(law_scalar_ep_RambergOsgood, law_scalar_ep)
ORV_FEM_LAW_HANDLE_IMPL(law_scalar_ep_piecewise_linear, law_scalar_ep)

#undef ORV_FEM_EP_ROOT_IMPL
#undef ORV_FEM_EP_LAW_HANDLE_IMPL

// --- convenience initialisers ------------------------------------------------------

law_solid_ep_perfect::law_solid_ep_perfect(context& ctx, double E, double nu, double alpha, double ET, double SY) {
    if (create(ctx) == no_error) init(E, nu, alpha, ET, SY);
}

int law_solid_ep_perfect::init(double E, double nu, double alpha, double ET, double SY) {
    return law_base::init(detail::law_values({E, nu, alpha, ET, SY}));
}

law_solid_ep_power::law_solid_ep_power(context& ctx, double E, double nu, double alpha, double SY, double a, double n) {
    if (create(ctx) == no_error) init(E, nu, alpha, SY, a, n);
}

int law_solid_ep_power::init(double E, double nu, double alpha, double SY, double a, double n) {
    return law_base::init(detail::law_values({E, nu, alpha, SY, a, n}));
}

law_solid_ep_RambergOsgood::law_solid_ep_RambergOsgood(context& ctx, double E, double nu, double alpha, double SY,
                                                       double a, double n) {
    if (create(ctx) == no_error) init(E, nu, alpha, SY, a, n);
}

int law_solid_ep_RambergOsgood::init(double E, double nu, double alpha, double SY, double a, double n) {
    return law_base::init(detail::law_values({E, nu, alpha, SY, a, n}));
}

law_solid_ep_piecewise_linear::law_solid_ep_piecewise_linear(context& ctx, double E, double nu, double alpha,
                                                             const dense1D<double>& strains,
                                                             const dense1D<double>& moduli) {
    if (create(ctx) == no_error) init(E, nu, alpha, strains, moduli);
}

int law_solid_ep_piecewise_linear::init(double E, double nu, double alpha, const dense1D<double>& strains,
                                        const dense1D<double>& moduli) {
    return init_table(*this, detail::law_values({E, nu, alpha}), strains, moduli);
}

int law_rod_ep_perfect::init(double E, double area, double alpha, double ET, double SY) {
    return law_base::init(detail::law_values({E, area, alpha, ET, SY}));
}

int law_rod_ep_power::init(double E, double area, double alpha, double SY, double a, double n) {
    return law_base::init(detail::law_values({E, area, alpha, SY, a, n}));
}

int law_rod_ep_RambergOsgood::init(double E, double area, double alpha, double SY, double a, double n) {
    return law_base::init(detail::law_values({E, area, alpha, SY, a, n}));
}

int law_rod_ep_piecewise_linear::init(double E, double area, double alpha, const dense1D<double>& strains,
                                      const dense1D<double>& moduli) {
    return init_table(*this, detail::law_values({E, area, alpha}), strains, moduli);
}

int law_scalar_ep_perfect::init(double k, double ET, double SY) { return law_base::init(detail::law_values({k, ET, SY})); }

int law_scalar_ep_power::init(double k, double SY, double a, double n) { return law_base::init(detail::law_values({k, SY, a, n})); }

int law_scalar_ep_RambergOsgood::init(double k, double SY, double a, double n) {
    return law_base::init(detail::law_values({k, SY, a, n}));
}

int law_scalar_ep_piecewise_linear::init(double k, const dense1D<double>& strains, const dense1D<double>& moduli) {
    return init_table(*this, detail::law_values({k}), strains, moduli);
}

}  // namespace fem
}  // namespace orv
