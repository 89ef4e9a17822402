// Engine side of a physics description: a material law with its section data, the
// codes of the physics and the DOF slots of its nodes. Mesh models are built from it
// and keep a shared reference.
#pragma once

#include <cstdint>

#include "elements/mesh_material.h"
#include "orvmath1/ref_counted.h"

// Definitions of the members ORV_FEM_PHYSICS_HANDLE declares, in namespace orv::fem:
// the expression after X makes the physics of *this on `law` (it may hold commas).
#define ORV_FEM_PHYSICS_HANDLE_IMPL(X, ...)    \
    X::X() = default;                          \
    X::X(const base_class& law) { init(law); } \
    error_type X::init(const base_class& law) { return __VA_ARGS__; }

namespace orv {
namespace core {

// Kinematics offsets added to a family code: small strain, and the finite variants.
enum : unsigned { kinematics_lin = 0u, kinematics_gnls = 100u, kinematics_gnld = 200u, kinematics_gnl = 300u };

class physics_model_base : public ref_counted {
public:
    static constexpr unsigned max_DOF_slots = 6;

    // family: the coarse code (4000 solid, ...); physics: with its kinematics offset.
    physics_model_base(unsigned family, unsigned physics) : family_code_(family), physics_code_(physics) {}
    ~physics_model_base() override = default;
    physics_model_base(const physics_model_base&) = delete;
    physics_model_base& operator=(const physics_model_base&) = delete;

    unsigned get_family_code() const { return family_code_; }
    unsigned get_physics_code() const { return physics_code_; }
    // The kinematics offset: physics code minus family code.
    unsigned get_kinematics() const { return physics_code_ - family_code_; }

    // The positions (ID % 9) of the DOFs of a node, in the order of the kernels.
    unsigned nbr_DOF_slots() const { return nbr_slots_; }
    unsigned DOF_slot(unsigned k) const { return slots_[k]; }
    void set_DOF_slots(const unsigned* slots, unsigned n) {
        nbr_slots_ = n > max_DOF_slots ? max_DOF_slots : n;
        for (unsigned k = 0; k < nbr_slots_; ++k) slots_[k] = slots[k];
    }
    // A third slot of physics data (the normal axis of plane strain).
    unsigned get_aux() const { return aux_; }
    void set_aux(unsigned a) { aux_ = a; }

    // The adapter the kernels call, and the law it forwards to (for get_material).
    const mesh_material* material() const { return material_.get(); }
    const Ptr<mesh_material>& get_material_adapter() const { return material_; }
    const Ptr<ref_counted>& get_law() const { return law_; }
    void set_material(const Ptr<mesh_material>& adapter, const Ptr<ref_counted>& law) {
        material_ = adapter;
        law_ = law;
    }
    bool is_ready() const { return material_ && nbr_slots_ > 0; }

private:
    unsigned family_code_;
    unsigned physics_code_;
    unsigned slots_[max_DOF_slots] = {0, 0, 0, 0, 0, 0};
    unsigned nbr_slots_ = 0;
    unsigned aux_ = 0;
    Ptr<mesh_material> material_;
    Ptr<ref_counted> law_;
};

// The continuum physics of the mesh engine. Each is a physics_model_base with its
// family code; the kernels that go with them are in the mechanical_* headers.
#define ORV_MECHANICAL_PHYSICS(name, family)                                                    \
    class name : public physics_model_base {                                                    \
    public:                                                                                     \
        static constexpr unsigned family_code = family;                                         \
        explicit name(unsigned kinematics) : physics_model_base(family, family + kinematics) {} \
    };

ORV_MECHANICAL_PHYSICS(mechanical_displacement_1d, 2000u)
ORV_MECHANICAL_PHYSICS(mechanical_displacement_3d, 4000u)
ORV_MECHANICAL_PHYSICS(mechanical_membrane, 9000u)
ORV_MECHANICAL_PHYSICS(mechanical_plane_strain, 10000u)
ORV_MECHANICAL_PHYSICS(mechanical_displacement_axi3d, 15000u)
ORV_MECHANICAL_PHYSICS(mechanical_displacement_axi_torsion, 16000u)

#undef ORV_MECHANICAL_PHYSICS

}  // namespace core
}  // namespace orv
