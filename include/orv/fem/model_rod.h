// Rods: two-node edges in 3-D, three displacement DOFs per node, one axial strain.
// model_rod_lin: small strain on the original axis; model_rod_gnld: engineering
// stretch on the current axis, with the geometric stiffness; model_rod_gnl:
// Green-Lagrange strain, the force being the law's stress times the stretch.
#pragma once

#include <orv/fem/physics_model_base.h>

namespace orv {
namespace fem {

/// Small-strain rod physics.
class model_rod_lin : public physics_model_base {
public:
    model_rod_lin();
    /// Makes the physics on a law: init(law).
    explicit model_rod_lin(const base_class& law);
    /// Shares the physics of another handle.
    model_rod_lin(const model_rod_lin&) = default;
    /// Shares the physics of another handle.
    model_rod_lin& operator=(const model_rod_lin&) = default;
    ~model_rod_lin() override = default;
    /// law: a rod law (E, area, alpha). -101 when the handle holds none.
    error_type init(const base_class& law);
};

/// Rod physics with the engineering stretch on the current axis.
class model_rod_gnld : public physics_model_base {
public:
    model_rod_gnld();
    /// Makes the physics on a law: init(law).
    explicit model_rod_gnld(const base_class& law);
    /// Shares the physics of another handle.
    model_rod_gnld(const model_rod_gnld&) = default;
    /// Shares the physics of another handle.
    model_rod_gnld& operator=(const model_rod_gnld&) = default;
    ~model_rod_gnld() override = default;
    /// As model_rod_lin::init.
    error_type init(const base_class& law);
};

/// Rod physics with the Green-Lagrange strain.
class model_rod_gnl : public physics_model_base {
public:
    model_rod_gnl();
    /// Makes the physics on a law: init(law).
    explicit model_rod_gnl(const base_class& law);
    /// Shares the physics of another handle.
    model_rod_gnl(const model_rod_gnl&) = default;
    /// Shares the physics of another handle.
    model_rod_gnl& operator=(const model_rod_gnl&) = default;
    ~model_rod_gnl() override = default;
    /// As model_rod_lin::init.
    error_type init(const base_class& law);
};

}  // namespace fem
}  // namespace orv
