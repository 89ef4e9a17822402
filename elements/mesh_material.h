// What the element kernels of the mesh models ask of a material law at a point.
//
// The kernels know no law class: a physics holds one mesh_material, an adapter that
// forwards to the law the host gave (see mesh_material_law.h). Strains and stresses
// use the slot order of the physics (six slots for solids: E11, E22, E33, 2 E12,
// 2 E13, 2 E23; three for membranes; one for rods).
#pragma once

#include <cstdint>

#include "model/assembly_params.h"
#include "orvmath1/ref_counted.h"

namespace orv {
namespace core {

// The key of a point's state in a law: element, point identifier of its rule and
// the step slot.
struct material_point_key {
    std::uint32_t element = 0;
    std::uint32_t point = 0;
    std::uint32_t step = 0;
};

class mesh_material : public ref_counted {
public:
    ~mesh_material() override = default;

    // Number of strain slots the law works on: 6, 3 or 1.
    virtual unsigned nbr_strains() const = 0;

    // Material frame at a point of global coordinates `position`: true and Q
    // (row-major 3 x 3, Q(d, k) the component of global direction d along local axis
    // k, that is one local axis per column) when the law has one; false keeps the
    // identity.
    virtual bool material_frame(const double* position, double* Q) const {
        (void)position;
        (void)Q;
        return false;
    }

    // Stress, tangent and energy density at a point. `stress` holds the initial
    // stress on entry and the stress on return; D is the full n x n tangent,
    // row-major. `flags` bit 0: commit the states, bit 1: first iteration of a step.
    // Returns 0 or the law's negative code.
    virtual int compute(const material_point_key& key, const double* strain, double* D, double* stress, double& energy,
                        unsigned flags, const assembly_params& params) const = 0;

    // Whether the law keeps states per point.
    virtual bool has_states() const { return false; }
    // Forgets the law's committed states.
    virtual void reset_states() {}
    // The law's states of step slot to_step become those of from_step (a step
    // started from the last committed one, or a committed step rolled back). 0, or
    // -199 on memory.
    virtual int copy_states(std::uint32_t from_step, std::uint32_t to_step) {
        (void)from_step;
        (void)to_step;
        return 0;
    }
    // The law's committed record of a point, for saving and restoring states:
    // its size (0 without states), a copy (false and zeros when there is none), and
    // storing one (0, or -199 on memory).
    virtual unsigned state_record_size() const { return 0; }
    virtual bool get_state(const material_point_key& key, double* record) const {
        (void)key;
        (void)record;
        return false;
    }
    virtual int set_state(const material_point_key& key, const double* record) {
        (void)key;
        (void)record;
        return 0;
    }
};

}  // namespace core
}  // namespace orv
