// Base of the discrete stiffness models: one element on a list of DOFs.
#pragma once

#include <orv/fem/error_type.h>
#include <orv/fem/field_tag.h>
#include <cstddef>
#include <cstdint>

#include "discrete/numerical_model_stiff.h"
#include "model/element_matrix_types.h"

namespace orv {
namespace core {

// A discrete model has exactly one element (number 0); the element argument
// all_elements stands for it too, any other number is -102. The DOFs of the element
// are the list element_DOFs() gives, in the model's own order (not sorted): element
// matrices are handed to the assemblers on that list.
class numerical_model_stiff_simple : public numerical_model_stiff {
public:
    explicit numerical_model_stiff_simple(context_type* ctx) : numerical_model_stiff(ctx) {}

    std::uint32_t nbr_elements() const override { return 1; }
    // Forces and moments.
    bool accepts_load(const fem::elementary_load& record) const override;
    // The element's DOFs that the filter selects; nothing when the model has no such
    // matrix. -102 for an element other than 0 or all_elements.
    int get_DOFs(const DOFs_mgr& table, std::uint32_t element, unsigned matrix_code, dense1D<unsigned int>& list,
                 const DOF_filter& filter) const override;
    using numerical_model_stiff::get_DOFs;

    // The DOFs of the element, null for none.
    virtual Ptr<DOF_index> element_DOFs() const = 0;

    // 0 for element 0 or all_elements, -102 otherwise.
    static int check_element(std::uint32_t element) {
        return (element == all_elements || element == 0) ? 0 : fem::error_index;
    }
    // The penalty of a DOF: displacement, rotation or temperature by ID % 9.
    static double penalty_of(const assembly_params& params, unsigned ID) {
        const unsigned p = ID % fem::DOFs_per_node;
        return p < 3 ? params.penalty_displacement : p < 6 ? params.penalty_rotation : params.penalty_temperature;
    }
    // The largest penalty among the DOFs of a list.
    static double largest_penalty(const assembly_params& params, const DOF_index& ids);
    // The solution on the DOFs of ids, into `out` (0.0 where U lacks a DOF or there is
    // no U). Returns 0 or -199; `all_zero` tells whether every value is 0.0.
    static int gather(const DOF_vector* U, const DOF_index& ids, dense1D<double>& out, bool& all_zero);
};

}  // namespace core
}  // namespace orv
