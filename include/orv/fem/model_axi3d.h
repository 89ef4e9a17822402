// Axisymmetric solids: small strain (model_axi3d_lin), finite strain (model_axi3d_gnl),
// two DOFs per node (radial, axial: slots 0 and 1); and with torsion
// (model_axi_torsion_lin, small strain only), the hoop displacement in slot 2.
#pragma once

#include <orv/fem/physics_model_base.h>

namespace orv {
namespace fem {

/// Small-strain axisymmetric solid physics.
class model_axi3d_lin : public physics_model_base {
public:
    model_axi3d_lin();
    /// Makes the physics on a law: init(law).
    explicit model_axi3d_lin(const base_class& law);
    /// Shares the physics of another handle.
    model_axi3d_lin(const model_axi3d_lin&) = default;
    /// Shares the physics of another handle.
    model_axi3d_lin& operator=(const model_axi3d_lin&) = default;
    ~model_axi3d_lin() override = default;
    /// law: a solid stiffness law on the six slots E11 (radial), E22 (axial), E33
    /// (hoop), 2 E12 and, for the torsion physics, 2 E13 and 2 E23. Coordinates: r
    /// the first, z the second. -101 when the handle holds no solid stiffness law.
    error_type init(const base_class& law);
};

/// Finite-strain axisymmetric solid physics.
class model_axi3d_gnl : public physics_model_base {
public:
    model_axi3d_gnl();
    /// Makes the physics on a law: init(law).
    explicit model_axi3d_gnl(const base_class& law);
    /// Shares the physics of another handle.
    model_axi3d_gnl(const model_axi3d_gnl&) = default;
    /// Shares the physics of another handle.
    model_axi3d_gnl& operator=(const model_axi3d_gnl&) = default;
    ~model_axi3d_gnl() override = default;
    /// As model_axi3d_lin::init.
    error_type init(const base_class& law);
};

/// Small-strain axisymmetric solid physics with torsion (hoop displacement in slot 2).
class model_axi_torsion_lin : public physics_model_base {
public:
    model_axi_torsion_lin();
    /// Makes the physics on a law: init(law).
    explicit model_axi_torsion_lin(const base_class& law);
    /// Shares the physics of another handle.
    model_axi_torsion_lin(const model_axi_torsion_lin&) = default;
    /// Shares the physics of another handle.
    model_axi_torsion_lin& operator=(const model_axi_torsion_lin&) = default;
    ~model_axi_torsion_lin() override = default;
    /// As model_axi3d_lin::init, with the six strain slots.
    error_type init(const base_class& law);
};

}  // namespace fem
}  // namespace orv
