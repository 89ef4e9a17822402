// Instantiation helpers of the stiffness meshes: one model class per physics
// kinematics, shape and point sets, checked at compile time against the family table.
// Included by the per-shape-family source files only.
#pragma once

#include <new>

#include "elements/element_family_table.h"
#include "elements/numerical_model_stiff_mesh.h"
#include "elements/shape_element_type.h"

namespace orv {
namespace core {

template <class Kin, class Shape, class MainSet, class LoadSet, class Form = regular_formulation>
numerical_model_base* make_stiff_mesh(context_type* ctx, const Ptr<physics_model_base>& physics,
                                      const dense2D<unsigned int>& connectivity, fem::element_type type) {
    using server = stiffness_server<Kin, Shape, MainSet, Form>;
    using load_server = external_work_server<Kin, Shape, LoadSet>;
    return new (std::nothrow) numerical_model_stiff_mesh<server, load_server>(ctx, physics, connectivity, type);
}

// The family table's point sets of a physics on a shape must be the ones given.
// (A walk by index: the sanitizers make pointer tests non-constant.)
template <class Shape, class MainSet, class LoadSet>
constexpr bool matches_family_table(const char* physics, unsigned instance) {
    for (unsigned i = 0; i < elfes::family_table_size; ++i) {
        const elfes::family_entry& e = elfes::family_table[i];
        if (e.shape == Shape::element_type_value && (e.instances & instance) != 0 &&
            elfes::family_detail::same_name(e.physics, physics))
            return e.main == elfes::point_set_spec_of<MainSet>() && e.load == elfes::point_set_spec_of<LoadSet>();
    }
    return false;
}

// The small or the finite form of a physics, as its kinematics code says (any code
// but the small strain one is the finite form; the axisymmetric finite code is 100).
template <template <class, class> class Kinematics, class Shape, class MainSet, class LoadSet,
          class Form = regular_formulation>
numerical_model_base* make_lin_or_gnl(context_type* ctx, const Ptr<physics_model_base>& physics,
                                      const dense2D<unsigned int>& connectivity, fem::element_type type) {
    if (physics->get_kinematics() == kinematics_lin)
        return make_stiff_mesh<Kinematics<small_strain_tag, small_transformation_tag>, Shape, MainSet, LoadSet, Form>(
            ctx, physics, connectivity, type);
    return make_stiff_mesh<Kinematics<finite_strain_tag, finite_transformation_tag>, Shape, MainSet, LoadSet, Form>(
        ctx, physics, connectivity, type);
}

}  // namespace core
}  // namespace orv
