// Linear static run: the public handle, its records and the helpers of the engine.
#include "fem/solver_static_linear.h"

#include <orv/fem/solver_static_linear.h>

#include <algorithm>
#include <cmath>
#include <new>
#include <vector>

namespace orv {
namespace core {

const solver_identity static_linear_identity = {"solver_static_linear", "ORV FEM(R) - STATIC LINEAR",
                                                "fem/solver_static_linear", 199};

namespace internal {

void build_sparse_pattern(const dense1D<unsigned int, 8>& ptr, const dense1D<unsigned int, 8>& ids,
                          const DOF_index& index, symmetric_sparse<double>& out) {
    const std::size_t n = index.size();
    std::vector<std::vector<unsigned int>> rows(n);
    for (std::size_t r = 0; r < n; ++r) rows[r].push_back(static_cast<unsigned int>(r));
    std::vector<unsigned int> positions;
    const std::size_t groups = ptr.size() ? ptr.size() - 1 : 0;
    for (std::size_t g = 0; g < groups; ++g) {
        positions.clear();
        for (std::size_t k = ptr[g]; k < ptr[g + 1] && k < ids.size(); ++k) {
            const std::uint32_t p = index.find(ids[k]);
            if (p != DOF_index::npos) positions.push_back(p);
        }
        for (const unsigned int a : positions)
            for (const unsigned int b : positions)
                if (a < b) rows[a].push_back(b);
    }
    dense1D<unsigned int, 8> pointers, columns;
    std::size_t total = 0;
    for (auto& row : rows) {
        std::sort(row.begin(), row.end());
        row.erase(std::unique(row.begin(), row.end()), row.end());
        total += row.size();
    }
    if (!pointers.reserve(n + 1) || !columns.reserve(total)) throw std::bad_alloc();
    pointers.push_back(0u);
    for (const auto& row : rows) {
        for (const unsigned int c : row) columns.push_back(c);
        pointers.push_back(static_cast<unsigned int>(columns.size()));
    }
    if (!out.init(pointers, columns, 0.0)) throw std::bad_alloc();
}

bool invert_small(std::vector<double>& a, std::size_t n) {
    std::vector<double> inv(n * n, 0.0);
    for (std::size_t i = 0; i < n; ++i) inv[i + i * n] = 1.0;
    for (std::size_t k = 0; k < n; ++k) {
        std::size_t p = k;
        for (std::size_t i = k + 1; i < n; ++i)
            if (std::fabs(a[i + k * n]) > std::fabs(a[p + k * n])) p = i;
        const double pivot = a[p + k * n];
        if (!(std::fabs(pivot) > 0.0) || !std::isfinite(pivot)) return false;
        if (p != k)
            for (std::size_t j = 0; j < n; ++j) {
                std::swap(a[k + j * n], a[p + j * n]);
                std::swap(inv[k + j * n], inv[p + j * n]);
            }
        for (std::size_t j = 0; j < n; ++j) {
            a[k + j * n] /= pivot;
            inv[k + j * n] /= pivot;
        }
        for (std::size_t i = 0; i < n; ++i) {
            if (i == k) continue;
            const double f = a[i + k * n];
            if (f == 0.0) continue;
            for (std::size_t j = 0; j < n; ++j) {
                a[i + j * n] -= f * a[k + j * n];
                inv[i + j * n] -= f * inv[k + j * n];
            }
        }
    }
    a.swap(inv);
    return true;
}

}  // namespace internal

namespace {

typedef solver_static_linear<OOC_matrix_types, fem::solver_static_linear::settings_type,
                             fem::solver_static_linear::data_type>
    base_engine;

// The engine of a handle keeps its own copy of the settings, refreshed from the handle
// at each run, so that a copy of the handle never leaves it pointing at freed settings.
class static_linear_engine : public base_engine {
public:
    static_linear_engine() : base_engine(&own_settings_) {}
    fem::solver_static_linear::settings_type& own_settings() { return own_settings_; }

private:
    fem::solver_static_linear::settings_type own_settings_;
};

}  // namespace

template class solver_static_linear<OOC_matrix_types, fem::solver_static_linear::settings_type,
                                    fem::solver_static_linear::data_type>;

}  // namespace core

namespace fem {

void solver_static_linear::data_type::clear_data_out() {
    U = FEM_states();
    nbr_free_DOFs = nbr_kept_imposed_DOFs = nbr_eliminated_DOFs = nbr_total_DOFs = 0;
    energy = dense1D<double>();
    spare_counts = dense1D<unsigned int>();
    spare_counter = 0;
    pivot_min = pivot_max = 0.0;
    bad_pivot_DOF = 0xFFFFFFFFu;
    size_RHS = size_Ks = size_Kf = size_U = size_spare = size_total = 0.0;
    used_out_of_core = false;
    clear_errors();
    time_numbering = time_RHS = time_assembly = time_factor = time_solve = time_total = 0.0;
}

ORV_FEM_HANDLE_IMPL(solver_static_linear, solver_base, core::solver_root)

solver_static_linear::solver_static_linear() : settings() {
    set_w(static_cast<ref_counted*>(new core::static_linear_engine()));
}

void solver_static_linear::run(data_type& data) {
    core::static_linear_engine* e = dynamic_cast<core::static_linear_engine*>(engine());
    if (!e) {
        core::set_error_msg(data, -200, "INTERNAL ERROR", "");
        return;
    }
    e->own_settings() = settings;
    e->run(data, static_cast<const problem_data&>(data), data.U_prior, data.F, data.U, data.Ks, data.Kf);
}

}  // namespace fem
}  // namespace orv
