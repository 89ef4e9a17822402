// Public handle on a physics description: a material law with its section data, from
// which mesh models are built.
#pragma once

#include <orv/fem/base_class.h>
#include <orv/fem/error_type.h>
#include <orv/fem/law_base.h>

/// Members of a physics handle class X made on one law: the empty handle, the
/// constructor that calls init(law), and init itself, which gives 0, -101 when `law`
/// holds no law of the kind the physics takes (the handle is then empty) or -199 on
/// memory. Put it in the public part of the class; the class comment names the law.
#define ORV_FEM_PHYSICS_HANDLE(X)                     \
    X();                                              \
    /* init(law); an empty handle when that fails. */ \
    explicit X(const ::orv::fem::base_class& law);    \
    /* Makes the physics on law. */                   \
    ::orv::fem::error_type init(const ::orv::fem::base_class& law);

namespace orv {
namespace core {
class physics_model_base;
}
namespace fem {

/// The default constructor gives an empty handle; the model_* classes make the
/// physics. Copies share it.
class physics_model_base : public base_class {
public:
    ORV_FEM_HANDLE(physics_model_base, core::physics_model_base)

    physics_model_base();

    /// Coarse code of the physics (4000 solid, 9000 membrane, ...), and the code with
    /// its kinematics (4300 for the finite solid); 0 for an empty handle.
    unsigned get_family_code() const;
    /// The code of the physics with its kinematics.
    unsigned get_physics_code() const;
    /// The law the physics was made on; an empty handle for an empty physics.
    law_base get_material() const;
};

}  // namespace fem
}  // namespace orv
