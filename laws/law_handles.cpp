// Public handles of the material laws: thin forwarding to the engine laws.
#include <initializer_list>
#include <new>

#include <orv/fem/bases_mgr.h>
#include <orv/fem/context.h>
#include <orv/fem/law_base.h>
#include <orv/fem/law_membrane_stiff.h>
#include <orv/fem/law_rod.h>
#include <orv/fem/law_scalar.h>
#include <orv/fem/law_shell_stiff.h>
#include <orv/fem/law_solid_stiff.h>

#include "laws/law_handle_impl.h"
#include "laws/law_membrane_stiff.h"
#include "laws/law_rod.h"
#include "laws/law_scalar.h"
#include "laws/law_shell_stiff.h"
#include "laws/law_solid_stiff.h"
#include "problem/bases_mgr.h"

namespace orv {
namespace fem {

// --- law_base ---------------------------------------------------------------------

ORV_FEM_HANDLE_IMPL(law_base, base_class, core::law_base)

int law_base::init(double value) {
    core::law_base* e = engine();
    return e ? e->init(value) : core::law_bad_size;
}

int law_base::init(const dense1D<double>& data) {
    core::law_base* e = engine();
    return e ? e->init(data) : core::law_bad_size;
}

int law_base::get_init_code() const {
    const core::law_base* e = engine();
    return e ? e->get_init_code() : core::law_bad_size;
}

dense1D<double> law_base::get_data() const {
    dense1D<double> d;
    if (const core::law_base* e = engine()) d.copy(e->get_data());
    return d;
}

int law_base::set_element_by_element(unsigned element, const dense1D<double>& data) {
    return set_element_by_element(element, all_points, data);
}

int law_base::set_element_by_element(unsigned element, unsigned point, const dense1D<double>& data) {
    core::law_base* e = engine();
    if (!e) return core::law_bad_size;
    try {
        return e->set_element_by_element(element, point, data);
    } catch (...) {
        return core::law_memory;
    }
}

bool law_base::has_element_data(unsigned element, unsigned point) const {
    const core::law_base* e = engine();
    if (!e) return false;
    core::law_key key;
    key.element = element;
    key.point = point;
    return e->has_element_data(key);
}

bool law_base::reserve_elements(std::size_t n) {
    core::law_base* e = engine();
    return e ? e->reserve_elements(n) : false;
}

void law_base::get_limits(double& min, double& max) const {
    if (const core::law_base* e = engine()) {
        e->get_limits(min, max);
    } else {
        core::law_scalar probe;
        probe.get_limits(min, max);
    }
}

// --- creation of the concrete handles -------------------------------------------

ORV_FEM_HANDLE_IMPL(law_solid_stiff, law_base, core::law_solid_stiff)
ORV_FEM_HANDLE_IMPL(law_membrane_stiff, law_base, core::law_membrane_stiff)
ORV_FEM_HANDLE_IMPL(law_shell_stiff, law_base, core::law_shell_stiff)

ORV_FEM_LAW_HANDLE_IMPL(law_scalar, law_base)
ORV_FEM_LAW_HANDLE_IMPL(law_rod, law_base)
ORV_FEM_LAW_HANDLE_IMPL(law_solid_StVenant, law_solid_stiff)
ORV_FEM_LAW_HANDLE_IMPL(law_solid_orthotropic, law_solid_stiff)
ORV_FEM_LAW_HANDLE_IMPL(law_solid_skyline, law_solid_stiff)
ORV_FEM_LAW_HANDLE_IMPL(law_membrane_StVenant, law_membrane_stiff)
ORV_FEM_LAW_HANDLE_IMPL(law_membrane_orthotropic, law_membrane_stiff)
ORV_FEM_LAW_HANDLE_IMPL(law_shell_StVenant, law_shell_stiff)
ORV_FEM_LAW_HANDLE_IMPL(law_shell_orthotropic, law_shell_stiff)
ORV_FEM_LAW_HANDLE_IMPL(law_shell_skyline, law_shell_stiff)

#undef ORV_FEM_LAW_HANDLE_IMPL

// --- convenience initialisers ----------------------------------------------------

law_scalar::law_scalar(context& ctx, double k) {
    if (create(ctx) == no_error) init(k);
}

double law_scalar::value() const {
    const core::law_scalar* e = engine();
    return e ? e->value() : 0.0;
}

law_rod::law_rod(context& ctx, double E, double area, double alpha) {
    if (create(ctx) == no_error) init(E, area, alpha);
}

law_solid_StVenant::law_solid_StVenant(context& ctx, double E, double nu, double alpha) {
    if (create(ctx) == no_error) init(E, nu, alpha);
}

law_solid_orthotropic::law_solid_orthotropic(context& ctx, const dense1D<double>& data, const bases_mgr& bases,
                                             unsigned basis_ID) {
    if (create(ctx) == no_error) init(data, bases, basis_ID);
}

law_solid_skyline::law_solid_skyline(context& ctx, const vector_fixed<unsigned int, 6>& heights,
                                     const dense1D<double>& data) {
    if (create(ctx) == no_error) init(heights, data);
}

law_membrane_StVenant::law_membrane_StVenant(context& ctx, double E, double nu, double alpha, double thickness) {
    if (create(ctx) == no_error) init(E, nu, alpha, thickness);
}

law_shell_StVenant::law_shell_StVenant(context& ctx, double E, double nu, double alpha, double thickness) {
    if (create(ctx) == no_error) init(E, nu, alpha, thickness);
}

law_shell_skyline::law_shell_skyline(context& ctx, const vector_fixed<unsigned int, 8>& heights,
                                     const dense1D<double>& data) {
    if (create(ctx) == no_error) init(heights, data);
}

int law_shell_skyline::init(const vector_fixed<unsigned int, 8>& heights, const dense1D<double>& data) {
    core::law_shell_skyline* e = engine();
    return e ? e->init(heights, data) : core::law_bad_size;
}

int law_rod::init(double E, double area, double alpha) { return law_base::init(detail::law_values({E, area, alpha})); }

int law_solid_StVenant::init(double E, double nu, double alpha) { return law_base::init(detail::law_values({E, nu, alpha})); }

int law_solid_orthotropic::init(const dense1D<double>& data, const bases_mgr& bases, unsigned basis_ID) {
    core::law_solid_orthotropic* e = engine();
    if (!e) return core::law_bad_size;
    return e->init(data, bases.engine(), basis_ID);
}

unsigned law_solid_orthotropic::basis_ID() const {
    const core::law_solid_orthotropic* e = engine();
    return e ? e->basis_ID() : 0xFFFFFFFFu;
}

int law_solid_skyline::init(const vector_fixed<unsigned int, 6>& heights, const dense1D<double>& data) {
    core::law_solid_skyline* e = engine();
    return e ? e->init(heights, data) : core::law_bad_size;
}

int law_membrane_StVenant::init(double E, double nu, double alpha, double thickness) {
    return law_base::init(detail::law_values({E, nu, alpha, thickness}));
}

int law_shell_StVenant::init(double E, double nu, double alpha, double thickness) {
    return law_base::init(detail::law_values({E, nu, alpha, thickness}));
}

}  // namespace fem
}  // namespace orv
