// Engine of the linear static run, K U = F for all load cases at once, on the shared
// run frame. Its steps (numbering, sizes, assembly, penalties, factorisation,
// right-hand sides, solve, report) are separate functions that later runs call with
// their own settings and data records.
#pragma once

#include <omp.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include <orv/fem/FEM_SymSparse.h>
#include <orv/fem/FEM_factor.h>
#include <orv/fem/FEM_matrix.h>

#include "fem/augmented_lagrange.h"
#include "fem/conj_gradient.h"
#include "elements/bad_elements_log.h"
#include "frame/context_type.h"
#include "frame/solver_base.h"
#include "linalg/FEM_matrix_impl.h"
#include "linalg/indexed_sym.h"
#include "linalg/numbering.h"
#include "linalg/pivot_checkers.h"
#include "linalg/symmetric_L_D_Lt.h"
#include "model/element_workspace.h"
#include "model/matrix_assembler.h"
#include "model/numerical_model_base.h"
#include "model/penalty_statistics.h"
#include "model/vector_assembler.h"
#include "problem/DOFs_mgr.h"
#include "problem/loads_mgr.h"
#include "problem/problem_data.h"
#include "problem/stress_mgr.h"

namespace orv {
namespace core {

// The matrix types a run works with.
struct OOC_matrix_types {
    // Ks: sparse, in core.
    typedef indexed_sym<DOF_index, symmetric_sparse<double>> sparse_type;
    // Kf: block skyline, factored in place.
    typedef indexed_sym<DOF_index, skyline_factor> factor_type;
    // Kf while it is assembled: shares the factor's blocks.
    typedef indexed_sym<DOF_index, symmetric_hybrid_OOC<double>> skyline_type;
    // F and U.
    typedef FEM_matrix_impl<indexed_dense_OOC> matrix_type;
    typedef FEM_states<indexed_dense_OOC> states_type;
};

// Identity of the linear static run.
extern const solver_identity static_linear_identity;

namespace internal {

// 2-norm of n values.
inline double two_norm(const double* x, std::size_t n) {
    double s = 0.0;
    for (std::size_t i = 0; i < n; ++i) s += x[i] * x[i];
    return std::sqrt(s);
}

// Upper-triangle pattern (diagonal included) of the element DOF groups on an index:
// group g holds the IDs ids[ptr[g] .. ptr[g + 1]); IDs the index lacks are dropped.
// Every row of the index has its diagonal. Throws std::bad_alloc.
void build_sparse_pattern(const dense1D<unsigned int, 8>& ptr, const dense1D<unsigned int, 8>& ids,
                          const DOF_index& index, symmetric_sparse<double>& out);

// Inverse of a small dense symmetric positive matrix (column-major, n x n) in place,
// by Gauss-Jordan elimination with partial pivoting. False when it is singular.
bool invert_small(std::vector<double>& a, std::size_t n);

}  // namespace internal

// Settings: the settings_type of the linear static run (or one with the same members).
// Data: a record with the members of solver_static_linear::data_type.
template <class Types, class Settings, class Data>
class solver_static_linear : public solver_base<Settings, Data> {
    typedef solver_base<Settings, Data> base;

public:
    typedef typename Types::sparse_type sparse_type;
    typedef typename Types::factor_type factor_type;
    typedef typename Types::skyline_type skyline_type;
    typedef typename Types::matrix_type matrix_type;
    typedef typename Types::states_type states_type;

    // Failure lines of the run's messages.
    enum : int {
        line_size_gate = 199,
        line_Ks_allocation = 217,
        line_Ks_assembly = 224,
        line_Kf_allocation = 234,
        line_Kf_assembly = 241,
        line_factorization = 273,
        line_RHS_allocation = 284,
        line_RHS_assembly = 291,
        line_solver = 328,
        line_pivot = 525
    };

    explicit solver_static_linear(const Settings* settings, const solver_identity& id = static_linear_identity)
        : base(settings, id) {}

    // The penalties of the last run (and its time, load factor and law step).
    const assembly_params& params() const { return params_; }

    // --- the steps, in the order of a run --------------------------------------
    // Needs from the masks and the number of load cases.
    void prepare(Data& data);
    // Sorted imposed DOFs of each case, their union and the DOFs imposed in all cases.
    void collect_imposed_DOFs(Data& data);
    // Free DOF index, element graph, ordering and block profile; size_Kf and size_Ks.
    void number_system(Data& data);
    // Index of F and U; DOF counts, size_RHS and size_U.
    void make_total_index(Data& data);
    // Ks and Kf, matrix code 1.
    void assemble_stiffness(Data& data);
    // Penalty factors from the diagonal, then the pass with matrix code 7.
    void assemble_penalties(Data& data);
    // Factorisation under the pivot policy of the settings, and its outcome.
    void factorize(Data& data);
    // F, assembled or taken over from the caller.
    void assemble_RHS(Data& data);
    // U and the energies.
    void solve_cases(Data& data);
    // Norms, extreme displacements and rotations, energy of each case at level 3.
    void report_cases(Data& data);

    // Adds multiplier times the internal forces of the models of matrix_code for the
    // solution U into target; -K U is the internal force of a linear model.
    int add_internal_forces(unsigned matrix_code, const DOF_vector& U, DOF_vector& target, double multiplier,
                            const assembly_params& params, unsigned nbr_threads) const;

protected:
    void start(Data& data) override;
    void clear_inputs(Data& data) override;
    void numbering(Data& data) override;
    double& numbering_time(Data& data) override { return data.time_numbering; }
    void log_sizes(Data& data) override;
    double needed_size(Data& data) override;
    void compute(Data& data) override;
    void clear_unkept(Data& data) override;
    bool make_resident(Data& data) override;

    // What a load case is told by the solve.
    struct case_work;
    struct product_operator;
    struct case_constraints;
    int solve_case(Data& data, std::size_t c, unsigned nbr_threads, omp_lock_t* lock);
    // The host's hooks, called one thread at a time from the load-case workers.
    struct serialised_hooks {
        const Settings* host = nullptr;
        static void display(void* p, unsigned level, const char* text) {
            const Settings* h = static_cast<serialised_hooks*>(p)->host;
#pragma omp critical(orv_static_linear_hooks)
            h->display_hook(h->pass_thru, level, text);
        }
        static bool interrupt(void* p) {
            const Settings* h = static_cast<serialised_hooks*>(p)->host;
            bool stop = false;
#pragma omp critical(orv_static_linear_hooks)
            stop = h->interrupt_hook(h->pass_thru);
            return stop;
        }
    };
    // Assembly of matrix_code into a matrix assembler; returns the model's code.
    int assemble_into(unsigned matrix_code, matrix_assembler_base& assembler, const assembly_params& params);
    // Ks added into Kf through the IDs of both.
    void scatter_Ks_into_Kf(const sparse_type& Ks, skyline_type& Kf) const;
    void log_Ks_statistics(const sparse_type& Ks) const;
    void log_text_lines(unsigned level, const std::string& text) const;
    template <class Checker>
    void judge_pivots(Data& data, Checker& checker, int rc, bool forcing);
    // Drops everything the run held.
    void release();

    const Settings& settings() const { return base::settings(); }

    Ptr<problem_data> problem_;
    numerical_model_base* model_ = nullptr;
    const DOFs_mgr* table_ = nullptr;
    std::size_t nbr_cases_ = 0;
    bool need_F_ = false, need_Kf_ = false, need_U_ = false, need_Ks_ = false;
    bool given_F_ = false, given_Ks_ = false, given_Kf_ = false;
    std::vector<std::vector<std::uint32_t>> imposed_;  // per case, sorted
    std::vector<std::uint32_t> imposed_union_;
    std::vector<std::uint32_t> imposed_all_;
    Ptr<DOF_index> free_IDs_;
    Ptr<DOF_index> total_IDs_;
    dense1D<unsigned int, 8> graph_ptr_;
    dense1D<unsigned int, 8> graph_IDs_;
    bool have_graph_ = false;
    numbering_output numbering_;
    std::uint64_t Ks_nnz_ = 0;
    std::uint64_t Kf_profile_ = 0;
    symmetric_sparse<double> Ks_pattern_;
    Ptr<sparse_type> Ks_;
    Ptr<factor_type> Kf_;
    Ptr<matrix_type> F_;
    Ptr<states_type> U_;
    bool Ks_built_ = false;
    bool Kf_built_ = false;
    std::vector<std::uint32_t> penalised_;  // IDs in the free index
    assembly_params params_;
    bool ALM_ = false;
    std::uint64_t files_at_start_ = 0;
};

// ---------------------------------------------------------------------------------
// Frame hooks.

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::start(Data& data) {
    release();
    problem_ = data.engine();
    context_type* ctx = problem_ ? problem_->get_context() : nullptr;
    this->set_context(ctx);
    files_at_start_ = (ctx && ctx->OOC()) ? ctx->OOC()->nbr_files() : 0;
    model_ = problem_ ? problem_->get_model() : nullptr;
    table_ = problem_ ? problem_->get_DOFs() : nullptr;
    if (!model_ || !table_) {
        this->set_error(data, -101, "DATA ERROR", 0);
        return;
    }
    params_ = assembly_params();
    params_.nbr_threads = this->nbr_threads();
    ALM_ = false;
    model_->reset_internal_states();
}

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::clear_inputs(Data& data) {
    const std::uint32_t in = settings().input_mask;
    if (!(in & 2)) data.F = fem::FEM_matrix();
    if (!(in & 16)) data.Ks = fem::FEM_SymSparse();
    if (!(in & 32)) data.Kf = fem::FEM_factor();
}

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::numbering(Data& data) {
    prepare(data);
    collect_imposed_DOFs(data);
    if (this->stop_requested(data)) return;
    number_system(data);
    if (data.error_code) return;
    make_total_index(data);
}

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::log_sizes(Data& data) {
    const unsigned long long cells = static_cast<unsigned long long>(data.nbr_total_DOFs) * nbr_cases_;
    this->log(1, "  Nbr free DOFs          : %10llu\n", static_cast<unsigned long long>(data.nbr_free_DOFs));
    this->log_size(2, "  Size matrix RHS        : ", cells, data.size_RHS);
    this->log_size(2, "  Size matrix Ks         : ", Ks_nnz_, data.size_Ks);
    this->log_size(2, "  Size matrix Kf         : ", Kf_profile_, data.size_Kf);
    this->log_size(2, "  Size matrix S-modes    : ", cells, data.size_U);
}

template <class Types, class Settings, class Data>
double solver_static_linear<Types, Settings, Data>::needed_size(Data& data) {
    double total = 0.0;
    const core::FEM_SymSparse_engine* Ks = data.Ks.engine();
    const bool Ks_empty = !Ks || Ks->matrix().nbr_entries() <= 1;
    if (need_Ks_ && Ks_empty) total += data.size_Ks;
    if (need_Kf_ && !given_Kf_) total += data.size_Kf;
    if (need_F_) total += data.size_RHS;
    if (need_U_) total += data.size_U;
    data.size_total = total;
    return total;
}

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::compute(Data& data) {
    assemble_stiffness(data);
    assemble_penalties(data);
    factorize(data);
    assemble_RHS(data);
    solve_cases(data);
    report_cases(data);
}

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::clear_unkept(Data& data) {
    context_type* ctx = this->context();
    data.used_out_of_core = ctx && ctx->OOC() && ctx->OOC()->nbr_files() > files_at_start_;
    const std::uint32_t keep = settings().input_mask | settings().output_mask;
    if (!(keep & 2)) data.F = fem::FEM_matrix();
    if (!(keep & 16)) data.Ks = fem::FEM_SymSparse();
    if (!(keep & 32)) data.Kf = fem::FEM_factor();
    if (!(settings().output_mask & 64)) data.U = fem::FEM_states();
}

template <class Types, class Settings, class Data>
bool solver_static_linear<Types, Settings, Data>::make_resident(Data& data) {
    bool ok = true;
    if (data.U.is_valid() && !data.U.is_all_incore()) ok = data.U.force_incore() && ok;
    if (data.F.is_valid() && !data.F.is_all_incore() && !(settings().input_mask & 2))
        ok = data.F.force_incore() && ok;
    release();
    return ok;
}

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::release() {
    problem_.reset();
    model_ = nullptr;
    table_ = nullptr;
    imposed_.clear();
    imposed_union_.clear();
    imposed_all_.clear();
    free_IDs_.reset();
    total_IDs_.reset();
    graph_ptr_.clear_hard();
    graph_IDs_.clear_hard();
    have_graph_ = false;
    numbering_.clear();
    Ks_nnz_ = Kf_profile_ = 0;
    Ks_pattern_ = symmetric_sparse<double>();
    Ks_.reset();
    Kf_.reset();
    F_.reset();
    U_.reset();
    Ks_built_ = Kf_built_ = false;
    penalised_.clear();
}

// ---------------------------------------------------------------------------------
// Steps 1 to 4: needs, imposed DOFs, numbering and sizes.

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::prepare(Data& data) {
    const Settings& s = settings();
    given_F_ = (s.input_mask & 2) != 0 && data.F.engine() != nullptr;
    given_Ks_ = (s.input_mask & 16) != 0 && data.Ks.engine() != nullptr;
    given_Kf_ = (s.input_mask & 32) != 0 && data.Kf.engine() != nullptr;
    nbr_cases_ = given_F_ ? static_cast<std::size_t>(data.F.cols()) : problem_->nbr_load_cases();
    const std::uint32_t out = s.output_mask;
    if (out == 0) {
        need_F_ = need_Kf_ = need_U_ = need_Ks_ = true;
    } else {
        need_F_ = (out & (2 | 64)) != 0;
        need_Kf_ = (out & (32 | 64)) != 0;
        need_U_ = (out & 64) != 0;
        need_Ks_ = (out & 16) != 0;
    }
}

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::collect_imposed_DOFs(Data&) {
    imposed_.assign(nbr_cases_, std::vector<std::uint32_t>());
    imposed_union_.clear();
    imposed_all_.clear();
    for (std::size_t c = 0; c < nbr_cases_; ++c) {
        const loads_mgr* loads = problem_->get_loads(c);
        if (loads) loads->get_prescribed_DOFs(imposed_[c]);
        std::vector<std::uint32_t> merged;
        merged.reserve(imposed_union_.size() + imposed_[c].size());
        std::set_union(imposed_union_.begin(), imposed_union_.end(), imposed_[c].begin(), imposed_[c].end(),
                       std::back_inserter(merged));
        imposed_union_.swap(merged);
        if (c == 0) {
            imposed_all_ = imposed_[0];
        } else {
            std::vector<std::uint32_t> common;
            std::set_intersection(imposed_all_.begin(), imposed_all_.end(), imposed_[c].begin(), imposed_[c].end(),
                                  std::back_inserter(common));
            imposed_all_.swap(common);
        }
    }
}

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::number_system(Data& data) {
    const DOF_filter free_filter{table_, true};
    numbering_.clear();
    Ks_nnz_ = Kf_profile_ = 0;
    std::uint64_t rows = 0, blocks = 0, segments = 0, profile = 0;

    auto build_graph = [&]() -> int {
        graph_ptr_.clear();
        graph_IDs_.clear();
        if (!graph_ptr_.push_back(0u)) return -199;
        const int rc = model_->get_DOFs_graph(*table_, numerical_model_base::all_elements, 1, graph_ptr_,
                                              graph_IDs_, free_filter);
        have_graph_ = rc == 0;
        return rc;
    };

    if (given_Kf_) {
        // The factor's index is the free index, in the factor's order.
        const FEM_factor_engine* Kf = data.Kf.engine();
        free_IDs_ = Kf->get_IDs() ? Kf->get_IDs() : Ptr<DOF_index>(new DOF_index());
        const skyline_factor& m = Kf->matrix();
        rows = m.dimension();
        blocks = m.nbr_blocks();
        segments = m.nbr_segments();
        profile = m.profile();
        if (need_Ks_) {
            const int rc = build_graph();
            if (rc) {
                this->set_error(data, rc, "K assembly error.", line_Ks_allocation);
                return;
            }
        }
    } else {
        Ptr<DOF_index> candidates(new DOF_index());
        const std::uint64_t by_elements = 32ull * model_->nbr_elements();
        const std::uint64_t by_nodes = 6ull * table_->nbr_nodes();
        const std::uint64_t by_table = table_->size();
        candidates->reserve(static_cast<std::size_t>(std::min(by_elements, std::min(by_nodes, by_table))));
        int rc = model_->get_DOFs(*table_, numerical_model_base::all_elements, 1, *candidates, free_filter);
        if (rc) {
            this->set_error(data, rc, "K assembly error.", line_Ks_allocation);
            return;
        }
        // The DOFs imposed in every case leave the system.
        Ptr<DOF_index> free(new DOF_index());
        free->reserve(candidates->size());
        for (const unsigned id : *candidates)
            if (!std::binary_search(imposed_all_.begin(), imposed_all_.end(), id))
                if (free->insert(id).first == DOF_index::npos) throw std::bad_alloc();
        free_IDs_ = free;
        rows = free_IDs_->size();
        if ((need_Ks_ || need_Kf_) && rows > 0) {
            rc = build_graph();
            if (rc == 0)
                rc = number_free_DOFs(graph_ptr_, graph_IDs_, *free_IDs_, numbering_, false,
                                      numbering_nested_dissection_postordered, block_profile_limit);
            if (rc) {
                this->set_error(data, rc, rc == -199 ? "Matrix allocation error." : "K assembly error.",
                                line_Kf_allocation);
                return;
            }
            rows = free_IDs_->size();
            blocks = numbering_.totals.nbr_blocks;
            segments = numbering_.totals.nbr_segments;
            profile = numbering_.totals.profile;
        }
    }

    const double MB = 1.0 / 1048576.0;
    if (rows == 0) {
        data.size_Kf = 0.0;
    } else if (profile >= size_line_limit) {
        data.size_Kf = 17592186044416.0;  // 2^44
    } else {
        data.size_Kf = MB * (56.0 + 4.0 * double(rows + blocks) + 56.0 * double(blocks) + 16.0 * double(segments) +
                             8.0 * double(profile));
    }
    Kf_profile_ = profile;

    if (need_Ks_ && have_graph_ && rows > 0) {
        internal::build_sparse_pattern(graph_ptr_, graph_IDs_, *free_IDs_, Ks_pattern_);
        Ks_nnz_ = Ks_pattern_.nbr_entries();
    }
    if (rows == 0 || Ks_nnz_ == 0)
        data.size_Ks = 0.0;
    else if (Ks_nnz_ >= size_line_limit)
        data.size_Ks = 17592186044416.0;
    else
        data.size_Ks = MB * (4.0 * double(rows + 18 + Ks_nnz_) + 8.0 * double(Ks_nnz_));
}

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::make_total_index(Data& data) {
    Ptr<DOF_index> total(new DOF_index(*free_IDs_));
    for (const std::uint32_t id : imposed_union_)
        if (!free_IDs_->contains(id))
            if (total->insert(id).first == DOF_index::npos) throw std::bad_alloc();
    total_IDs_ = total;
    data.nbr_free_DOFs = static_cast<std::uint32_t>(free_IDs_->size());
    data.nbr_total_DOFs = static_cast<std::uint32_t>(total_IDs_->size());
    data.nbr_eliminated_DOFs = data.nbr_total_DOFs - data.nbr_free_DOFs;
    data.nbr_kept_imposed_DOFs = static_cast<std::uint32_t>(imposed_union_.size()) - data.nbr_eliminated_DOFs;
    const double size = double(data.nbr_total_DOFs) * double(nbr_cases_) * 8.0 / 1048576.0;
    data.size_RHS = size;
    data.size_U = size;
}

// ---------------------------------------------------------------------------------
// Steps 7 and 8: stiffness and penalties.

template <class Types, class Settings, class Data>
int solver_static_linear<Types, Settings, Data>::assemble_into(unsigned matrix_code, matrix_assembler_base& assembler,
                                                               const assembly_params& params) {
    if (assembler.is_null()) return 0;
    assembly_args args;
    args.params = params;
    args.matrix_assembler = &assembler;
    args.pos = &problem_->get_pos();
    return model_->assemble_matrix(matrix_code, args);
}

template <class Types, class Settings, class Data>
int solver_static_linear<Types, Settings, Data>::add_internal_forces(unsigned matrix_code, const DOF_vector& U,
                                                                     DOF_vector& target, double multiplier,
                                                                     const assembly_params& params,
                                                                     unsigned nbr_threads) const {
    vector_assembler<double> va(target, multiplier);
    if (va.is_null()) return 0;
    matrix_null_assembler none;
    assembly_args args;
    args.params = params;
    args.params.nbr_threads = nbr_threads;
    args.matrix_assembler = &none;
    args.vector_assembler = &va;
    args.U = &U;
    args.pos = &problem_->get_pos();
    return model_->assemble_matrix(matrix_code, args);
}

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::log_text_lines(unsigned level, const std::string& text) const {
    if (!settings().display_hook) return;
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find('\n', start);
        end = end == std::string::npos ? text.size() : end + 1;
        const std::string line = text.substr(start, end - start);
        this->log(level, "%s", line.c_str());
        start = end;
    }
}

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::log_Ks_statistics(const sparse_type& Ks) const {
    if (!settings().display_hook) return;
    const symmetric_sparse<double>& m = Ks.matrix();
    const unsigned long long n = m.dim(), nnz = m.nbr_entries();
    unsigned long long zeros = 0;
    for (std::size_t k = 0; k < m.size(); ++k)
        if (m[k] == 0.0) ++zeros;
    const unsigned long long non_zeros = nnz - zeros;
    this->log(2, "  dimension              : %10llu\n", n);
    this->log(2, "  profile                : %10llu (%.2f MB)\n", nnz, double(nnz) * 8.0 / 1048576.0);
    if (n == 0) return;
    const double pairs = double(n) * double(n + 1);
    this->log(2, "  symbolic fill-ins      : %8.2f %%\n", 200.0 * double(nnz) / pairs);
    this->log(2, "  zeros                  : %10llu\n", zeros);
    this->log(2, "  non zeros              : %10llu\n", non_zeros);
    this->log(2, "  numerical fill-ins     : %8.2f %% (%.2f %%)\n", 200.0 * double(non_zeros) / pairs,
              double(non_zeros) * 100.0 / double(nnz ? nnz : 1));
}

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::scatter_Ks_into_Kf(const sparse_type& Ks, skyline_type& Kf) const {
    const symmetric_sparse<double>& m = Ks.matrix();
    const std::size_t n = m.dim();
    std::vector<std::uint32_t> pos(n, DOF_index::npos);
    if (Ks.get_IDs())
        for (std::size_t r = 0; r < n && r < Ks.get_IDs()->size(); ++r) pos[r] = Kf.position((*Ks.get_IDs())[r]);
    const auto& ptr = m.pointers();
    const auto& col = m.columns();
    for (std::size_t r = 0; r < n; ++r) {
        if (pos[r] == DOF_index::npos) continue;
        for (std::size_t k = ptr[r]; k < ptr[r + 1]; ++k) {
            const std::uint32_t c = col[k] < n ? pos[col[k]] : DOF_index::npos;
            if (c == DOF_index::npos || m[k] == 0.0) continue;
            Kf.matrix().add_val(std::max(pos[r], c), std::min(pos[r], c), m[k]);
        }
    }
}

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::assemble_stiffness(Data& data) {
    if (this->stop_requested(data)) return;
    // DOFs of the models with penalties, on the free index.
    penalised_.clear();
    {
        DOF_index pen;
        const DOF_filter no_filter;
        model_->get_DOFs(*table_, numerical_model_base::all_elements, 7, pen, no_filter);
        for (const unsigned id : pen)
            if (free_IDs_->contains(id)) penalised_.push_back(id);
    }
    assembly_params first_pass = params_;
    first_pass.penalty_displacement = first_pass.penalty_rotation = first_pass.penalty_temperature = 0.0;

    const core::FEM_SymSparse_engine* given_Ks = data.Ks.engine();
    if (need_Ks_ && (!given_Ks || given_Ks->matrix().nbr_entries() <= 1)) {
        const bool ran = this->step(data, data.time_assembly, "Numerical assembly matrix Ks       : %10.2f s.\n", [&] {
            Ptr<sparse_type> Ks(new sparse_type(free_IDs_));
            if (free_IDs_->size() && !Ks->matrix().init(Ks_pattern_.pointers(), Ks_pattern_.columns(), 0.0)) {
                this->set_error(data, -199, "Matrix allocation error.", line_Ks_allocation);
                return;
            }
            Ks_ = Ks;
            Ks_built_ = true;
            data.Ks = fem::FEM_SymSparse(Ks.get());
            matrix_sym_assembler<sparse_type> a(*Ks_, 1.0);
            const int rc = assemble_into(1, a, first_pass);
            if (rc) this->set_error(data, rc, "K assembly error.", line_Ks_assembly);
        });
        if (ran && Ks_) log_Ks_statistics(*Ks_);
    } else if (given_Ks && given_Ks->matrix().nbr_entries() > 1) {
        Ks_ = Ptr<sparse_type>(const_cast<core::FEM_SymSparse_engine*>(given_Ks));
    }

    if (need_Kf_ && !given_Kf_) {
        const bool ran = this->step(data, data.time_assembly, "Numerical assembly matrix Kf       : %10.2f s.\n", [&] {
            Ptr<factor_type> Kf(new factor_type(free_IDs_));
            if (free_IDs_->size()) {
                context_type* ctx = this->context();
                const int rc = Kf->matrix().init(numbering_.blocks, 0.0, Ptr<OOC_mgr>(ctx ? ctx->OOC() : nullptr));
                if (rc) {
                    this->set_error(data, -199, "Matrix allocation error.", line_Kf_allocation);
                    return;
                }
            }
            Kf_ = Kf;
            Kf_built_ = true;
            data.Kf = fem::FEM_factor(Kf.get());
            if (free_IDs_->size() == 0) return;
            skyline_type view(free_IDs_, static_cast<const symmetric_hybrid_OOC<double>&>(Kf_->matrix()));
            if (!Ks_) {
                matrix_sym_assembler<skyline_type> a(view, 1.0);
                const int rc = assemble_into(1, a, first_pass);
                if (rc) this->set_error(data, rc, "K assembly error.", line_Kf_assembly);
            } else {
                scatter_Ks_into_Kf(*Ks_, view);
            }
        });
        if (ran && Kf_) log_text_lines(2, Kf_->matrix().report_text(true));
    } else if (given_Kf_) {
        Kf_ = Ptr<factor_type>(data.Kf.engine());
    }
    if (Ks_built_ || Kf_built_) log_bad_elements(*model_, settings().display_hook, settings().pass_thru);
}

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::assemble_penalties(Data& data) {
    if (data.error_code || penalised_.empty()) return;
    this->step(data, data.time_assembly, nullptr, [&] {
        skyline_type view;
        if (Kf_built_ && Kf_->matrix().dimension())
            view = skyline_type(free_IDs_, static_cast<const symmetric_hybrid_OOC<double>&>(Kf_->matrix()));
        bool zero = false;
        if (Kf_built_ && Kf_->matrix().dimension())
            zero = is_zero_throughout(view);
        else if (Ks_built_)
            zero = is_zero_throughout(*Ks_);
        ALM_ = settings().use_ALM != 0 || zero;

        const penalty_factors factors = context_penalty_factors(this->context());
        if (Kf_built_ && Kf_->matrix().dimension())
            compute_penalties(view, penalised_.data(), penalised_.size(), factors, params_);
        else if (Ks_built_)
            compute_penalties(*Ks_, penalised_.data(), penalised_.size(), factors, params_);
        else
            penalty_statistics().apply(factors, params_);

        int rc = 0;
        if (Ks_built_) {
            matrix_sym_assembler<sparse_type> a(*Ks_, 1.0);
            rc = assemble_into(7, a, params_);
            if (rc) this->set_error(data, rc, "K assembly error.", line_Ks_assembly);
        }
        if (!rc && Kf_built_ && Kf_->matrix().dimension()) {
            matrix_sym_assembler<skyline_type> a(view, 1.0);
            rc = assemble_into(7, a, params_);
            if (rc) this->set_error(data, rc, "K assembly error.", line_Kf_assembly);
        }
    });
}

// ---------------------------------------------------------------------------------
// Step 9: factorisation.

template <class Types, class Settings, class Data>
template <class Checker>
void solver_static_linear<Types, Settings, Data>::judge_pivots(Data& data, Checker& checker, int rc, bool forcing) {
    const std::size_t n = Kf_->matrix().dimension();
    auto ID_at = [&](std::size_t pos) -> std::uint32_t {
        return (pos < n && pos < free_IDs_->size()) ? (*free_IDs_)[pos] : 0xFFFFFFFFu;
    };
    const double lo = checker.first, hi = checker.second;
    data.pivot_min = lo;
    data.pivot_max = hi;
    if (rc != 0 && rc != -107) {
        this->set_error(data, rc, "Factorization error.", line_factorization);
        return;
    }
    if (!std::isfinite(lo) || !std::isfinite(hi)) {
        if (!data.error_code)
            data.bad_pivot_DOF = ID_at(std::isfinite(hi) ? checker.first_position : checker.second_position);
        this->set_error(data, -107, "Pivot error.", line_pivot);
        return;
    }
    const bool bad_sign = !(lo > 0.0);
    const bool small = lo < 1E-12 * hi;
    if (bad_sign && !forcing) {
        if (!data.error_code)
            data.bad_pivot_DOF =
                ID_at(checker.first_rejected != ~std::size_t(0) ? checker.first_rejected : checker.first_position);
        this->set_error(data, -107, "Pivot error.", line_pivot);
        return;
    }
    if (bad_sign || small) {
        if (!data.error_code && !data.warning_code) data.bad_pivot_DOF = ID_at(checker.first_position);
        this->set_warning(data, -11, "Pivot warning.");
    }
}

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::factorize(Data& data) {
    if (!need_Kf_ || given_Kf_ || !Kf_built_) return;
    const bool ran = this->step(data, data.time_factor, "Factorization matrix Kf            : %10.2f s.\n", [&] {
        skyline_factor& K = Kf_->matrix();
        if (K.dimension() == 0) {
            data.pivot_min = data.pivot_max = 0.0;
            return;
        }
        hook_verboser verboser(settings().display_hook, settings().pass_thru);
        const std::size_t cache = static_cast<std::size_t>(this->LLC_size());
        const int threads = static_cast<int>(this->nbr_threads());
        if (settings().force_positive_pivots) {
            pivot_force_positive<hook_verboser> checker(&verboser);
            const int rc = K.factorize(checker, cache, threads);
            judge_pivots(data, checker, rc, true);
        } else {
            pivot_check_positive<hook_verboser> checker(&verboser);
            const int rc = K.factorize(checker, cache, threads);
            judge_pivots(data, checker, rc, false);
        }
    });
    if (!ran) return;
    log_text_lines(2, Kf_->matrix().report_text(false));
    this->log(2, "  pivot max              : %+E\n", data.pivot_max);
    this->log(2, "  pivot min              : %+E\n", data.pivot_min);
}

// ---------------------------------------------------------------------------------
// Step 10: right-hand sides.

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::assemble_RHS(Data& data) {
    if (!need_F_) return;
    const bool ran = this->step(data, data.time_RHS, "Numerical assembly matrix RHS      : %10.2f s.\n", [&] {
        context_type* ctx = this->context();
        Ptr<matrix_type> F(new matrix_type());
        if (F->init(total_IDs_, nbr_cases_, 0.0, Ptr<OOC_mgr>(ctx ? ctx->OOC() : nullptr))) {
            this->set_error(data, -199, "Matrix allocation error.", line_RHS_allocation);
            return;
        }
        F_ = F;
        const std::size_t n = total_IDs_->size();
        if (given_F_) {
            // The caller's F, by IDs, into the index of the run.
            const FEM_matrix_engine* src = data.F.engine();
            for (std::size_t r = 0; r < n; ++r) {
                const std::uint32_t s = src->row_of((*total_IDs_)[r]);
                if (s == FEM_matrix_engine::npos) continue;
                for (std::size_t c = 0; c < nbr_cases_; ++c) {
                    double v = 0.0;
                    if (src->dense().get_val(s, c, v) == 0 && v != 0.0) F->dense().set_val(r, c, 1.0 * v);
                }
            }
            return;
        }
        data.F = fem::FEM_matrix(F.get());
        if (n == 0 || nbr_cases_ == 0) return;
        const unsigned threads = this->nbr_threads();
        const bool parallel = threads > 1 && nbr_cases_ >= threads && F->dense().is_all_incore();
        int first_rc = 0;
        auto one_case = [&](std::size_t c, unsigned inner_threads) -> int {
            if (!F->dense().col(c) && F->dense().window(c, 1)) return -200;
            DOF_vector target(total_IDs_, F->dense().column(c));
            vector_assembler<double> va(target, 1.0);
            assembly_args args;
            args.params = params_;
            args.params.nbr_threads = inner_threads;
            args.vector_assembler = &va;
            args.pos = &problem_->get_pos();
            const loads_mgr* loads = problem_->get_loads(c);
            return loads ? loads->assemble(args) : 0;
        };
        if (parallel) {
            const long cases = static_cast<long>(nbr_cases_);
#pragma omp parallel for schedule(static) num_threads(threads)
            for (long c = 0; c < cases; ++c) {
                int seen;
#pragma omp critical(orv_static_linear_rhs)
                seen = first_rc;
                if (seen) continue;
                int rc;
                try {
                    rc = one_case(static_cast<std::size_t>(c), 1);
                } catch (const std::bad_alloc&) {
                    rc = -199;
                } catch (...) {
                    rc = -200;
                }
                if (rc) {
#pragma omp critical(orv_static_linear_rhs)
                    if (!first_rc) first_rc = rc;
                }
            }
        } else {
            for (std::size_t c = 0; c < nbr_cases_ && !first_rc; ++c) first_rc = one_case(c, threads);
        }
        if (first_rc) this->set_error(data, first_rc, "RHS assembly error.", line_RHS_assembly);
    });
    if (!ran || data.error_code || !F_ || !settings().display_hook) return;
    for (std::size_t c = 0; c < nbr_cases_; ++c) {
        dense1D<double, 8> v;
        if (F_->dense().get_col(c, v)) continue;
        this->log(3, "%3d ||F||                : %+E\n", int(c), internal::two_norm(v.data(), v.size()));
    }
}

// ---------------------------------------------------------------------------------
// Step 11: solve.

// A view of n values of external memory (which stays the caller's).
inline dense1D<double> external_view(double* p, std::size_t n) {
    return n && p ? dense1D<double>(n, p) : dense1D<double>();
}

// The product K p of the conjugate gradient, asked from the models: the stiffness pass
// without penalties and the penalty pass with them, as Kf was assembled. The rows of
// the imposed DOFs of the case are taken as zero in p.
template <class Types, class Settings, class Data>
struct solver_static_linear<Types, Settings, Data>::product_operator {
    const solver_static_linear* run = nullptr;
    const std::vector<std::uint32_t>* fixed = nullptr;
    std::vector<double> scratch;
    unsigned nbr_threads = 1;
    int error = 0;

    void add_product(const double* p, double* w) {
        const std::size_t n = run->free_IDs_->size();
        scratch.assign(p, p + n);
        for (const std::uint32_t r : *fixed) scratch[r] = 0.0;
        DOF_vector U(run->free_IDs_, external_view(scratch.data(), n));
        DOF_vector target(run->free_IDs_, external_view(w, n));
        assembly_params first_pass = run->params_;
        first_pass.penalty_displacement = first_pass.penalty_rotation = first_pass.penalty_temperature = 0.0;
        int rc = run->add_internal_forces(1, U, target, -1.0, first_pass, nbr_threads);
        if (!rc) rc = run->add_internal_forces(7, U, target, -1.0, run->params_, nbr_threads);
        if (rc && !error) error = rc;
    }
};

// The constraints of the augmented Lagrange iterations of one case: the DOFs of the
// penalty models (value: their internal force, -Kp u) and the imposed DOFs that stay
// in Kf (value: the force that brings them to their value, through the inverse of
// their block of the inverse of Kf).
template <class Types, class Settings, class Data>
struct solver_static_linear<Types, Settings, Data>::case_constraints {
    const solver_static_linear* run = nullptr;
    std::vector<std::uint32_t> penalised;  // positions in the free index
    std::vector<std::uint32_t> kept;       // positions in the free index
    std::vector<double> kept_values;
    std::vector<double> S_inv;             // kept x kept
    std::vector<double> forces, residual;
    unsigned nbr_threads = 1;

    std::size_t size() const { return penalised.size() + kept.size(); }
    void add_state_vectors(double*) {}
    int values(const double* u, double* L) {
        const std::size_t n = run->free_IDs_->size();
        if (!penalised.empty()) {
            forces.assign(n, 0.0);
            DOF_vector U(run->free_IDs_, external_view(const_cast<double*>(u), n));
            DOF_vector target(run->free_IDs_, external_view(forces.data(), n));
            const int rc = run->add_internal_forces(7, U, target, 1.0, run->params_, nbr_threads);
            if (rc) return rc;
            for (std::size_t i = 0; i < penalised.size(); ++i) L[i] = forces[penalised[i]];
        }
        const std::size_t m = kept.size(), o = penalised.size();
        if (m) {
            double scale = 0.0;
            for (std::size_t i = 0; i < n; ++i) scale = std::max(scale, std::fabs(u[i]));
            residual.assign(m, 0.0);
            for (std::size_t j = 0; j < m; ++j) {
                const double r = kept_values[j] - u[kept[j]];
                // What is left of a met constraint is rounding: it counts as met.
                residual[j] = std::fabs(r) <= 1e-13 * (std::fabs(kept_values[j]) + scale) ? 0.0 : r;
            }
            for (std::size_t i = 0; i < m; ++i) {
                double s = 0.0;
                for (std::size_t j = 0; j < m; ++j) s += S_inv[i + j * m] * residual[j];
                L[o + i] = s;
            }
        }
        return 0;
    }
    void add_to_rhs(const double* L, double* F) {
        for (std::size_t i = 0; i < penalised.size(); ++i) F[penalised[i]] += L[i];
        for (std::size_t j = 0; j < kept.size(); ++j) F[kept[j]] += L[penalised.size() + j];
    }
    void set_multipliers(const double*) {}
};

template <class Types, class Settings, class Data>
int solver_static_linear<Types, Settings, Data>::solve_case(Data& data, std::size_t c, unsigned threads,
                                                           omp_lock_t* lock) {
    const std::size_t n_free = free_IDs_->size(), n_total = total_IDs_->size();
    if (!U_->dense().col(c) && U_->dense().window(c, 1)) return -200;
    double* u = U_->dense().col(c);
    std::vector<double> f(n_total, 0.0);
    {
        dense1D<double, 8> v;
        if (F_->dense().get_col(c, v)) return -200;
        std::copy(v.begin(), v.end(), f.begin());
    }
    std::fill(u, u + n_total, 0.0);
    std::copy(f.begin(), f.begin() + n_free, u);

    // Imposed values of the case: eliminated ones go straight into U, with their forces
    // on the free DOFs; kept ones are met by the iterations below.
    std::vector<std::pair<std::uint32_t, double>> values;
    const loads_mgr* loads = problem_->get_loads(c);
    if (loads) loads->get_prescribed_values(params_.time, values);
    std::vector<std::uint32_t> kept;
    std::vector<double> kept_values;
    std::vector<double> eliminated(n_total, 0.0);
    bool any_eliminated = false;
    for (const auto& iv : values) {
        const std::uint32_t r = total_IDs_->find(iv.first);
        if (r == DOF_index::npos) continue;
        if (r >= n_free) {
            u[r] = iv.second;
            eliminated[r] = iv.second;
            any_eliminated = any_eliminated || iv.second != 0.0;
        } else {
            kept.push_back(r);
            kept_values.push_back(iv.second);
        }
    }
    assembly_params first_pass = params_;
    first_pass.penalty_displacement = first_pass.penalty_rotation = first_pass.penalty_temperature = 0.0;
    if (any_eliminated && n_free) {
        DOF_vector Us(total_IDs_, external_view(eliminated.data(), n_total));
        DOF_vector target(free_IDs_, external_view(u, n_free));
        int rc = add_internal_forces(1, Us, target, 1.0, first_pass, threads);
        if (!rc) rc = add_internal_forces(7, Us, target, 1.0, params_, threads);
        if (rc) return rc;
    }
    if (n_free == 0) return 0;
    const skyline_factor& K = Kf_->matrix();
    // The iterations log and ask the interrupt hook through a copy of the settings
    // whose hooks are serialised among the workers.
    serialised_hooks hooks;
    hooks.host = &settings();
    Settings s = settings();
    if (s.display_hook) s.display_hook = &serialised_hooks::display;
    if (s.interrupt_hook) s.interrupt_hook = &serialised_hooks::interrupt;
    s.pass_thru = &hooks;

    if (ALM_) {
        std::vector<double> rhs(u, u + n_free);
        case_constraints cons;
        cons.run = this;
        cons.nbr_threads = threads;
        for (const std::uint32_t id : penalised_) cons.penalised.push_back(free_IDs_->find(id));
        cons.kept = kept;
        cons.kept_values = kept_values;
        const std::size_t m = kept.size();
        if (m) {
            // S = the block of the inverse of Kf on the kept DOFs, and its inverse.
            std::vector<double> S(m * m, 0.0), e(n_free);
            for (std::size_t j = 0; j < m; ++j) {
                std::fill(e.begin(), e.end(), 0.0);
                e[kept[j]] = 1.0;
                K.solve(e.data(), int(threads));
                for (std::size_t i = 0; i < m; ++i) S[i + j * m] = e[kept[i]];
            }
            if (!internal::invert_small(S, m)) return -107;
            cons.S_inv = S;
            // The imposed values are met before the first round.
            std::vector<double> w(rhs);
            K.solve(w.data(), int(threads));
            for (std::size_t i = 0; i < m; ++i) {
                double l = 0.0;
                for (std::size_t j = 0; j < m; ++j) l += S[i + j * m] * (kept_values[j] - w[kept[j]]);
                rhs[kept[i]] += l;
            }
        }
        const std::size_t nc = cons.size();
        std::vector<double> work(n_free), solution(n_free), L(nc, 0.0), states(3 * nc, 0.0);
        augmented_lagrange_settings<case_constraints> as;
        as.factor = &K;
        as.constraints = &cons;
        as.tolerance_energy = s.tol_ALM;
        as.tolerance_constraint = s.tol_ALM;
        as.min_energy = s.ALM_floor;
        as.max_iterations = s.max_iters_ALM;
        augmented_lagrange_result result;
        const int rc = augmented_lagrange(as, rhs.data(), work.data(), solution.data(), L.data(), states.data(), u, s,
                                          data, result, int(threads));
        for (std::size_t j = 0; j < m; ++j) u[kept[j]] = kept_values[j];
        return rc;
    }

    if (!kept.empty()) {
        std::vector<double> x(n_free, 0.0), g(u, u + n_free), w(n_free), z(n_free), p(n_free);
        for (std::size_t j = 0; j < kept.size(); ++j) x[kept[j]] = kept_values[j];
        // Forces of the imposed values on the other DOFs.
        {
            DOF_vector X(free_IDs_, external_view(x.data(), n_free));
            DOF_vector G(free_IDs_, external_view(g.data(), n_free));
            int rc = add_internal_forces(1, X, G, 1.0, first_pass, threads);
            if (!rc) rc = add_internal_forces(7, X, G, 1.0, params_, threads);
            if (rc) return rc;
        }
        for (const std::uint32_t r : kept) g[r] = 0.0;
        bool zero = true;
        for (const double v : g) zero = zero && v == 0.0;
        if (!zero) {
            product_operator op;
            op.run = this;
            op.fixed = &kept;
            op.nbr_threads = threads;
            conj_gradient_settings<product_operator> cs;
            cs.tolerance = s.tol_CG;
            cs.max_iterations = s.max_iters_CG;
            cs.op = &op;
            conj_gradient_result result;
            const int rc = conj_gradient(K, cs, g.data(), w.data(), z.data(), p.data(), x.data(), kept.data(),
                                         kept.size(), s, data, result, lock, int(threads));
            if (op.error) return op.error;
            if (rc) return rc;
            for (std::size_t j = 0; j < kept.size(); ++j) x[kept[j]] = kept_values[j];
        }
        std::copy(x.begin(), x.end(), u);
        return 0;
    }

    K.solve(u, int(threads));
    return 0;
}

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::solve_cases(Data& data) {
    if (!need_U_) return;
    this->step(data, data.time_solve, "Resolution RHS                     : %10.2f s.\n", [&] {
        context_type* ctx = this->context();
        Ptr<states_type> U(new states_type());
        if (U->init(total_IDs_, nbr_cases_, 0.0, Ptr<OOC_mgr>(ctx ? ctx->OOC() : nullptr))) {
            this->set_error(data, -199, "Matrix allocation error.", line_RHS_allocation);
            return;
        }
        U_ = U;
        data.U = fem::FEM_states(U.get());
        dense1D<double> energy(nbr_cases_, 0.0);
        data.energy = energy;
        const std::size_t n_free = free_IDs_->size(), n_total = total_IDs_->size();
        if (!F_ || !Kf_ || nbr_cases_ == 0 || n_total == 0) return;
        const unsigned threads = this->nbr_threads();
        int first_rc = 0;

        if (!ALM_ && data.nbr_kept_imposed_DOFs == 0) {
            // Fast path: the right-hand sides with the forces of the eliminated values,
            // then the sweeps for all columns at once.
            for (std::size_t c = 0; c < nbr_cases_ && !first_rc; ++c) {
                if (!U_->dense().col(c) && U_->dense().window(c, 1)) {
                    first_rc = -200;
                    break;
                }
                double* u = U_->dense().col(c);
                dense1D<double, 8> f;
                if (F_->dense().get_col(c, f)) {
                    first_rc = -200;
                    break;
                }
                std::fill(u, u + n_total, 0.0);
                std::copy(f.begin(), f.begin() + n_free, u);
                std::vector<std::pair<std::uint32_t, double>> values;
                const loads_mgr* loads = problem_->get_loads(c);
                if (loads) loads->get_prescribed_values(params_.time, values);
                std::vector<double> eliminated(n_total, 0.0);
                bool any = false;
                for (const auto& iv : values) {
                    const std::uint32_t r = total_IDs_->find(iv.first);
                    if (r == DOF_index::npos || r < n_free) continue;
                    u[r] = eliminated[r] = iv.second;
                    any = any || iv.second != 0.0;
                }
                if (any && n_free) {
                    assembly_params first_pass = params_;
                    first_pass.penalty_displacement = first_pass.penalty_rotation = first_pass.penalty_temperature =
                        0.0;
                    DOF_vector Us(total_IDs_, external_view(eliminated.data(), n_total));
                    DOF_vector target(free_IDs_, external_view(u, n_free));
                    first_rc = add_internal_forces(1, Us, target, 1.0, first_pass, threads);
                    if (!first_rc) first_rc = add_internal_forces(7, Us, target, 1.0, params_, threads);
                }
            }
            if (!first_rc && n_free) {
                const skyline_factor& K = Kf_->matrix();
                if (U_->dense().is_all_incore()) {
                    dense2D<double> raw = U_->dense().as_raw_matrix();
                    if (nbr_cases_ == 1)
                        K.solve(raw.col(0), int(threads));
                    else
                        K.solve(raw.col(0), raw.ld(), nbr_cases_, int(threads));
                } else {
                    for (std::size_t c = 0; c < nbr_cases_ && !first_rc; ++c) {
                        if (!U_->dense().col(c) && U_->dense().window(c, 1)) first_rc = -200;
                        else K.solve(U_->dense().col(c), int(threads));
                    }
                }
            }
        } else {
            // Per case: imposed values, then augmented Lagrange, conjugate gradient or
            // sweeps. Parallel over the cases when everything is in memory.
            const bool in_core = U_->dense().is_all_incore() && F_->dense().is_all_incore() &&
                                 Kf_->matrix().all_incore();
            const unsigned team = in_core ? static_cast<unsigned>(std::min<std::size_t>(threads, nbr_cases_)) : 1u;
            const unsigned inner = team > 1 ? 1u : threads;
            omp_lock_t lock;
            omp_init_lock(&lock);
            const long cases = static_cast<long>(nbr_cases_);
#pragma omp parallel for schedule(static) num_threads(team)
            for (long c = 0; c < cases; ++c) {
                int seen;
#pragma omp critical(orv_static_linear_solve)
                seen = first_rc;
                if (seen) continue;
                int rc;
                try {
                    rc = solve_case(data, static_cast<std::size_t>(c), inner, &lock);
                } catch (const std::bad_alloc&) {
                    rc = -199;
                } catch (...) {
                    rc = -200;
                }
                if (rc) {
#pragma omp critical(orv_static_linear_solve)
                    if (!first_rc) first_rc = rc;
                }
            }
            omp_destroy_lock(&lock);
        }
        if (first_rc == -10) return;  // interrupted: the warning stands
        if (first_rc) {
            this->set_error(data, first_rc, "Solver error.", line_solver);
            return;
        }

        // Energies: half of U . F, or the element energies where the case has stresses.
        for (std::size_t c = 0; c < nbr_cases_; ++c) {
            dense1D<double, 8> u, f;
            if (U_->dense().get_col(c, u) || F_->dense().get_col(c, f)) continue;
            double e = 0.0;
            for (std::size_t i = 0; i < n_total; ++i) e += u[i] * f[i];
            e *= 0.5;
            const stress_super_mgr* stresses = problem_->get_stresses(c);
            if (stresses && !stresses->empty()) {
                DOF_vector Uc(total_IDs_, u);
                matrix_null_assembler none;
                vector_null_assembler no_vector;
                assembly_args args;
                args.params = params_;
                args.matrix_assembler = &none;
                args.vector_assembler = &no_vector;
                args.U = &Uc;
                args.pos = &problem_->get_pos();
                args.stresses = stresses;
                const int rc = model_->assemble_matrix(1, args);
                if (rc) {
                    this->set_error(data, rc, "Solver error.", line_solver);
                    return;
                }
                e = args.accumulators[0];
            }
            data.energy[c] = e;
        }
    });
}

// ---------------------------------------------------------------------------------
// Step 12: report.

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::report_cases(Data& data) {
    if (!settings().display_hook || !U_ || this->stop_requested(data)) return;
    const std::size_t n = total_IDs_->size();
    for (std::size_t c = 0; c < nbr_cases_; ++c) {
        dense1D<double, 8> u;
        if (U_->dense().get_col(c, u)) continue;
        double dmax = 0.0, dmin = 0.0, rmax = 0.0, rmin = 0.0;
        bool d_any = false, r_any = false;
        for (std::size_t i = 0; i < n; ++i) {
            const unsigned k = (*total_IDs_)[i] % 9;
            const double v = u[i];
            if (k < 3) {
                dmax = d_any ? std::max(dmax, v) : v;
                dmin = d_any ? std::min(dmin, v) : v;
                d_any = true;
            } else if (k < 6) {
                rmax = r_any ? std::max(rmax, v) : v;
                rmin = r_any ? std::min(rmin, v) : v;
                r_any = true;
            }
        }
        const int k = int(c);
        this->log(3, "%3d ||U||                : %+E\n", k, internal::two_norm(u.data(), n));
        this->log(3, "%3d max displacement     : %+E\n", k, dmax);
        this->log(3, "%3d min displacement     : %+E\n", k, dmin);
        this->log(3, "%3d max rotation         : %+E\n", k, rmax);
        this->log(3, "%3d min rotation         : %+E\n", k, rmin);
        this->log(3, "%3d elastic energy       : %+E\n", k, c < data.energy.size() ? data.energy[c] : 0.0);
    }
}

}  // namespace core
}  // namespace orv
