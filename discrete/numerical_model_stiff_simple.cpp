#include "discrete/numerical_model_stiff_simple.h"
#include <orv/fem/error_type.h>

#include <orv/fem/elementary_load.h>

namespace orv {
namespace core {

bool numerical_model_stiff_simple::accepts_load(const fem::elementary_load& record) const {
    const std::uint32_t kind = record.kind & 0xF8u;
    return kind == fem::elementary_load::kind_force || kind == fem::elementary_load::kind_moment;
}

int numerical_model_stiff_simple::get_DOFs(const DOFs_mgr&, std::uint32_t element, unsigned matrix_code,
                                           dense1D<unsigned int>& list, const DOF_filter& filter) const {
    if (const int rc = check_element(element)) return rc;
    if (!has_matrix(matrix_code)) return 0;
    const Ptr<DOF_index> ids = element_DOFs();
    if (!ids) return 0;
    for (std::size_t k = 0; k < ids->size(); ++k) {
        const unsigned ID = (*ids)[k];
        if (is_selected(ID, filter) && !list.push_back(ID)) return fem::error_memory;
    }
    return 0;
}

double numerical_model_stiff_simple::largest_penalty(const assembly_params& params, const DOF_index& ids) {
    double scale = 0.0;
    for (std::size_t k = 0; k < ids.size(); ++k) {
        const double p = penalty_of(params, ids[k]);
        if (p > scale) scale = p;
    }
    return scale;
}

int numerical_model_stiff_simple::gather(const DOF_vector* U, const DOF_index& ids, dense1D<double>& out,
                                         bool& all_zero) {
    all_zero = true;
    if (!out.resize(ids.size(), 0.0)) return fem::error_memory;
    out.fill(0.0);
    if (!U) return 0;
    for (std::size_t k = 0; k < ids.size(); ++k) {
        const double* v = U->find(ids[k]);
        if (!v) continue;
        out[k] = *v;
        if (*v != 0.0) all_zero = false;
    }
    return 0;
}

}  // namespace core
}  // namespace orv
