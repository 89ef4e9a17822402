// Matrix assemblers that are not templates.
#include "model/matrix_assembler.h"

namespace orv {
namespace core {

matrix_assembler_base::~matrix_assembler_base() = default;

int matrix_diag_assembler::add_diag(double factor, const DOF_vector& d) {
    const double f = factor * multiplier_;
    if (f == 0.0 || !detail::has_entries(d) || is_null()) return 0;
    map_DOFs(target_->get_IDs().get(), d.get_IDs().get(), pairs_);
    DOF_vector& t = *target_;
    for (const DOF_pair& p : pairs_) {
        if (p.second >= d.size() || p.first >= t.size()) continue;
        const double v = d[p.second];
        if (v != 0.0) t[p.first] += f * v;
    }
    return 0;
}

int matrix_sym_assembler_projection::add_diag(double factor, const DOF_vector& d) {
    if (factor == 0.0 || !target_ || !detail::has_entries(d)) return 0;
    const DOF_index& ids = *d.get_IDs();
    double q = 0.0;
    for (std::size_t k = 0; k < d.size() && k < ids.size(); ++k) {
        const double x = selector_(ids[k]);
        q += x * d[k] * x;
    }
    *target_ += factor * q;
    return 0;
}

int matrix_sym_assembler_projection::add_sparse(double factor, const element_sparse_matrix& e, bool symmetric) {
    // A skew matrix has no quadratic form.
    if (!symmetric || factor == 0.0 || !target_ || !detail::has_entries(e)) return 0;
    const DOF_index& ids = *e.get_IDs();
    const symmetric_sparse<double>& m = e.matrix();
    const auto& ptr = m.pointers();
    const auto& col = m.columns();
    double q = 0.0;
    for (std::size_t r = 0; r < m.dim() && r < ids.size(); ++r) {
        const double xr = selector_(ids[r]);
        if (xr == 0.0) continue;
        for (std::size_t k = ptr[r]; k < ptr[r + 1] && k < m.size(); ++k) {
            const std::size_t c = col[k];
            if (c >= ids.size()) continue;
            const double xc = selector_(ids[c]);
            q += (c == r ? 1.0 : 2.0) * xr * m[k] * xc;
        }
    }
    *target_ += factor * q;
    return 0;
}

int matrix_sym_assembler_projection::add_sym(double factor, const element_sym_matrix& e, bool symmetric) {
    if (!symmetric || factor == 0.0 || !target_ || !detail::has_entries(e)) return 0;
    const DOF_index& ids = *e.get_IDs();
    const symmetric_full<double>& m = e.matrix();
    const std::size_t n = m.dim() < ids.size() ? m.dim() : ids.size();
    double q = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        const double xi = selector_(ids[i]);
        if (xi == 0.0) continue;
        for (std::size_t j = 0; j <= i; ++j) {
            const double xj = selector_(ids[j]);
            q += (i == j ? 1.0 : 2.0) * xi * m(i, j) * xj;
        }
    }
    *target_ += factor * q;
    return 0;
}

}  // namespace core
}  // namespace orv
