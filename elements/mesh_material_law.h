// Adapters from the material laws to the interface the mesh kernels call.
#pragma once

#include "elements/mesh_material.h"
#include "laws/law_membrane_stiff.h"
#include "laws/law_rod.h"
#include "laws/law_solid_stiff.h"

namespace orv {
namespace core {

// The law's key of a point of the mesh kernels.
inline law_key law_key_of(const material_point_key& key) {
    law_key k;
    k.element = key.element;
    k.point = key.point;
    k.step = key.step;
    return k;
}

// The law of an adapter and the operations on its step states, which every adapter
// passes to its law the same way.
template <class Law>
class mesh_material_of : public mesh_material {
public:
    explicit mesh_material_of(const Ptr<Law>& law) : law_(law) {}

    bool has_states() const override { return law_ && law_->nbr_states() > 0; }
    void reset_states() override {
        if (law_) law_->reset_states();
    }
    int copy_states(std::uint32_t from_step, std::uint32_t to_step) override {
        return law_ ? law_->copy_states(from_step, to_step) : 0;
    }
    unsigned state_record_size() const override { return law_ ? law_->state_record_size() : 0; }
    bool get_state(const material_point_key& key, double* record) const override {
        return law_ && law_->get_state(law_key_of(key), record);
    }
    int set_state(const material_point_key& key, const double* record) override {
        return law_ ? law_->set_state(law_key_of(key), record) : 0;
    }

protected:
    Ptr<Law> law_;
};

// A solid law on six strains (3-D solids, and the plane and axisymmetric physics,
// which keep the six slots with their unused ones 0).
class mesh_material_solid : public mesh_material_of<law_solid_stiff> {
public:
    explicit mesh_material_solid(const Ptr<law_solid_stiff>& law) : mesh_material_of(law) {}

    unsigned nbr_strains() const override { return 6; }
    bool material_frame(const double* position, double* Q) const override;
    int compute(const material_point_key& key, const double* strain, double* D, double* stress, double& energy,
                unsigned flags, const assembly_params& params) const override;
};

// A membrane law on the three in-plane strains of the element's frame.
class mesh_material_membrane : public mesh_material_of<law_membrane_stiff> {
public:
    explicit mesh_material_membrane(const Ptr<law_membrane_stiff>& law) : mesh_material_of(law) {}

    unsigned nbr_strains() const override { return 3; }
    int compute(const material_point_key& key, const double* strain, double* D, double* stress, double& energy,
                unsigned flags, const assembly_params& params) const override;
};

// A rod law: the axial stress, tangent and energy per unit section, times the area
// of the law's data, so that the kernel works with the axial force.
class mesh_material_rod : public mesh_material_of<law_1d> {
public:
    explicit mesh_material_rod(const Ptr<law_1d>& law) : mesh_material_of(law) {}

    unsigned nbr_strains() const override { return 1; }
    int compute(const material_point_key& key, const double* strain, double* D, double* stress, double& energy,
                unsigned flags, const assembly_params& params) const override;
};

}  // namespace core
}  // namespace orv
