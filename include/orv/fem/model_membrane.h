// Membranes: surfaces in 3-D with three displacement DOFs per node and the in-plane
// strains E11, E22, 2 E12 of the element's local frame at each point (axis 1 along the
// first tangent). Small strain (model_membrane_lin) and finite strain
// (model_membrane_gnl, out-of-plane stretching included).
#pragma once

#include <orv/fem/physics_model_base.h>

namespace orv {
namespace fem {

/// Small-strain membrane physics.
class model_membrane_lin : public physics_model_base {
public:
    model_membrane_lin();
    /// Makes the physics on a law: init(law).
    explicit model_membrane_lin(const base_class& law);
    /// Shares the physics of another handle.
    model_membrane_lin(const model_membrane_lin&) = default;
    /// Shares the physics of another handle.
    model_membrane_lin& operator=(const model_membrane_lin&) = default;
    ~model_membrane_lin() override = default;
    /// law: a membrane stiffness law (forces per unit length; the thickness is in its
    /// data). -101 when the handle holds none.
    error_type init(const base_class& law);
};

/// Finite-strain membrane physics.
class model_membrane_gnl : public physics_model_base {
public:
    model_membrane_gnl();
    /// Makes the physics on a law: init(law).
    explicit model_membrane_gnl(const base_class& law);
    /// Shares the physics of another handle.
    model_membrane_gnl(const model_membrane_gnl&) = default;
    /// Shares the physics of another handle.
    model_membrane_gnl& operator=(const model_membrane_gnl&) = default;
    ~model_membrane_gnl() override = default;
    /// As model_membrane_lin::init.
    error_type init(const base_class& law);
};

}  // namespace fem
}  // namespace orv
