// Physics of the 3-D solid: small strain (model_solid_lin) and total Lagrangian
// finite strain (model_solid_gnl). Three displacement DOFs per node.
#pragma once

#include <orv/fem/physics_model_base.h>

namespace orv {
namespace fem {

/// Small-strain 3-D solid physics.
class model_solid_lin : public physics_model_base {
public:
    model_solid_lin();
    /// A solid stiffness law (law_solid_StVenant, law_solid_orthotropic, ...).
    explicit model_solid_lin(const base_class& law);
    /// Shares the physics of another handle.
    model_solid_lin(const model_solid_lin&) = default;
    /// Shares the physics of another handle.
    model_solid_lin& operator=(const model_solid_lin&) = default;
    ~model_solid_lin() override = default;
    /// Makes the physics on a law; -101 when the handle holds no solid stiffness law
    /// (the handle is then empty), -199 on memory.
    error_type init(const base_class& law);
};

/// Total Lagrangian finite-strain 3-D solid physics.
class model_solid_gnl : public physics_model_base {
public:
    model_solid_gnl();
    /// Makes the physics on a law: init(law).
    explicit model_solid_gnl(const base_class& law);
    /// Shares the physics of another handle.
    model_solid_gnl(const model_solid_gnl&) = default;
    /// Shares the physics of another handle.
    model_solid_gnl& operator=(const model_solid_gnl&) = default;
    ~model_solid_gnl() override = default;
    /// As model_solid_lin::init.
    error_type init(const base_class& law);
};

}  // namespace fem
}  // namespace orv
