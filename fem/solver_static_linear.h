// Engine of the linear static run, K U = F for all load cases at once, on the shared
// run frame. Its steps (numbering, sizes, assembly, penalties, factorisation,
// right-hand sides, forces of imposed values, solve, energies, report) are separate
// functions that later runs call with their own settings and data records; their
// bodies are in the fem/static_*.h files included at the end.
#pragma once

#include <malloc.h>
#include <omp.h>
#include <orv/fem/error_type.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <new>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <orv/fem/FEM_SymSparse.h>
#include <orv/fem/FEM_factor.h>
#include <orv/fem/FEM_matrix.h>

#include "elements/bad_elements_log.h"
#include "fem/augmented_lagrange.h"
#include "fem/conj_gradient.h"
#include "frame/context_type.h"
#include "frame/solver_base.h"
#include "linalg/FEM_matrix_impl.h"
#include "linalg/indexed_sym.h"
#include "linalg/numbering.h"
#include "linalg/parallel_first_error.h"
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

namespace detail {

// 2-norm of n values.
inline double two_norm(const double* x, std::size_t n) {
    double s = 0.0;
    for (std::size_t i = 0; i < n; ++i) s += x[i] * x[i];
    return std::sqrt(s);
}

// Whether all n values are finite.
inline bool all_finite(const double* x, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        if (!std::isfinite(x[i])) return false;
    return true;
}

// Whether a data record has a strain_energy member (the linear static record has;
// the records of later runs need not).
template <class D, class = void>
struct has_strain_energy : std::false_type {};
template <class D>
struct has_strain_energy<D, std::void_t<decltype(std::declval<D&>().strain_energy)>> : std::true_type {};

// The matrix of solutions of a data record: U, S_modes for a record that names its
// static solutions so (the eigen runs'), or T for the temperatures of a transient
// heat run.
template <class D, class = void>
struct has_static_modes : std::false_type {};
template <class D>
struct has_static_modes<D, std::void_t<decltype(std::declval<D&>().S_modes)>> : std::true_type {};
template <class D, class = void>
struct has_temperatures : std::false_type {};
template <class D>
struct has_temperatures<D, std::void_t<decltype(std::declval<D&>().T)>> : std::true_type {};
template <class D>
fem::FEM_states& solution_of(D& data) {
    if constexpr (has_static_modes<D>::value)
        return data.S_modes;
    else if constexpr (has_temperatures<D>::value)
        return data.T;
    else
        return data.U;
}

}  // namespace detail

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
        line_Kf_not_factored = 187,
        line_size_gate = 199,
        line_Ks_allocation = 217,
        line_Ks_assembly = 224,
        line_Kf_allocation = 234,
        line_Kf_assembly = 241,
        line_factorization = 273,
        line_RHS_allocation = 284,
        line_RHS_assembly = 291,
        line_RHS_not_finite = 296,
        line_solver = 328,
        line_solution_not_finite = 335,
        line_pivot = 525
    };

    explicit solver_static_linear(const Settings* settings, const solver_identity& id = static_linear_identity)
        : base(settings, id) {}

    // The penalties of the last run (and its time, load factor and law step).
    const assembly_params& params() const { return params_; }
    // The same with the penalties at 0: the pass of the stiffness alone.
    assembly_params stiffness_params() const {
        assembly_params p = params_;
        p.penalty_displacement = p.penalty_rotation = p.penalty_temperature = 0.0;
        return p;
    }

    // --- the steps, in the order of a run --------------------------------------
    // Numbering (fem/static_numbering.h).
    void prepare(Data& data);               // needs from the masks, number of cases
    void collect_imposed_DOFs(Data& data);  // per case, their union, those of all cases
    void number_system(Data& data);         // free index, graph, profile, size_Kf, size_Ks
    void make_total_index(Data& data);      // index of F and U, counts, size_RHS, size_U
    // Assembly (fem/static_assembly.h).
    void assemble_stiffness(Data& data);  // Ks and Kf, matrix code 1
    void assemble_penalties(Data& data);  // penalty factors, then matrix code 7
    // Factorisation under the pivot policy of the settings (fem/static_factorization.h).
    void factorize(Data& data);
    // F, assembled or taken over, and checked (fem/static_rhs.h).
    void assemble_RHS(Data& data);
    // U: right-hand sides with the imposed values and their forces, the direct or the
    // per-case solve, the check of the solution, the energies.
    void solve_cases(Data& data);
    // Norms, extreme displacements and rotations, energy of each case at level 3.
    void report_cases(Data& data);

    // --- the pieces of the solve --------------------------------------------------
    // Column c of U from F and the imposed values of the case (fem/imposed_forces.h):
    // the eliminated values go into U, the kept ones into cases_[c]. -108 for a value
    // that is not finite.
    int set_up_case(std::size_t c);
    // Adds the forces of the eliminated values of case c, -K u_e, to its free rows.
    int add_imposed_forces(std::size_t c, unsigned nbr_threads);
    // All columns by the sweeps of the factor (fem/static_direct_solve.h).
    int solve_direct(unsigned nbr_threads);
    // Case by case, in parallel when everything is in memory
    // (fem/static_iterative_solve.h): augmented Lagrange, conjugate gradient or sweeps.
    int solve_per_case(Data& data);
    int solve_case(Data& data, std::size_t c, unsigned nbr_threads, omp_lock_t* lock);
    int solve_case_ALM(Data& data, std::size_t c, double* u, unsigned nbr_threads);
    int solve_case_CG(Data& data, std::size_t c, double* u, unsigned nbr_threads, omp_lock_t* lock);
    // The load case whose column of m is not finite, or -1 (fem/static_energies.h).
    template <class M>
    long first_non_finite_case(M& m) const;
    // Energies of each case (fem/static_energies.h).
    void compute_energies(Data& data);
    // Whether case c moves a DOF by an imposed value (u: its column of U).
    bool imposes_motion(std::size_t c, const double* u) const;

    // Adds multiplier times the internal forces of the models of matrix_code for the
    // solution U into target; -K U is the internal force of a linear model.
    int add_internal_forces(unsigned matrix_code, const DOF_vector& U, DOF_vector& target, double multiplier,
                            const assembly_params& params, unsigned nbr_threads) const;
    // The same for the whole stiffness as Kf holds it: the pass without penalties and
    // the penalty pass.
    int add_stiffness_forces(const DOF_vector& U, DOF_vector& target, double multiplier, unsigned nbr_threads) const {
        int rc = add_internal_forces(stiffness_code_, U, target, multiplier, stiffness_params(), nbr_threads);
        if (!rc) rc = add_internal_forces(fem::matrix_penalty, U, target, multiplier, params_, nbr_threads);
        return rc;
    }

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

    // The imposed values of a case that stay in Kf: positions in the free index.
    struct case_imposed {
        std::vector<std::uint32_t> kept;
        std::vector<double> kept_values;
    };
    struct product_operator;
    struct case_constraints;
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
        // A copy of the host's settings whose hooks go through this object.
        Settings settings_for_workers() {
            Settings s = *host;
            if (s.display_hook) s.display_hook = &display;
            if (s.interrupt_hook) s.interrupt_hook = &interrupt;
            s.pass_thru = this;
            return s;
        }
    };
    // Numbering of the free DOFs from the model, or from a supplied factor.
    int number_from_model(Data& data, std::uint64_t& blocks, std::uint64_t& segments, std::uint64_t& profile);
    int number_from_factor(Data& data, std::uint64_t& blocks, std::uint64_t& segments, std::uint64_t& profile);
    int build_graph();
    void size_matrices(Data& data, std::uint64_t blocks, std::uint64_t segments, std::uint64_t profile);
    // Assembly of matrix_code into a matrix assembler; returns the model's code.
    int assemble_into(unsigned matrix_code, matrix_assembler_base& assembler, const assembly_params& params);
    void assemble_Ks(Data& data);
    void assemble_Kf(Data& data);
    // factor times Ks added into Kf through the IDs of both.
    void scatter_Ks_into_Kf(const sparse_type& Ks, skyline_type& Kf, double factor = 1.0) const;
    void log_Ks_statistics(const sparse_type& Ks) const;
    void log_text_lines(unsigned level, const std::string& text) const;
    template <class Checker>
    void factorize_with(Data& data, Checker& checker, bool forcing);
    int assemble_RHS_columns(matrix_type& F);
    void take_over_F(const Data& data, matrix_type& F) const;
    // -108 with the load case named in the log.
    void set_not_finite(Data& data, long c, int line);
    bool allocate_U(Data& data);
    // Column c of U, made resident; null when it cannot be.
    double* U_column(std::size_t c) {
        return (U_->dense().col(c) || !U_->dense().window(c, 1)) ? U_->dense().col(c) : nullptr;
    }
    // Drops everything the run held.
    void release();

    const Settings& settings() const { return base::settings(); }

    // The matrix of the run's operator: the stiffness, or the conduction of a heat run,
    // whose solution is temperatures (reported as such, with no energy).
    unsigned stiffness_code_ = fem::matrix_K;
    bool temperatures_ = false;
    Ptr<problem_data> problem_;
    numerical_model_base* model_ = nullptr;
    const DOFs_mgr* table_ = nullptr;
    std::size_t nbr_cases_ = 0;
    bool need_F_ = false, need_Kf_ = false, need_U_ = false, need_Ks_ = false;
    bool given_F_ = false, given_Ks_ = false, given_Kf_ = false;
    std::vector<std::vector<std::uint32_t>> imposed_;  // per case, sorted
    std::vector<std::uint32_t> imposed_union_;
    std::vector<std::uint32_t> imposed_all_;
    std::vector<case_imposed> cases_;
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
        this->set_error(data, fem::error_data, "DATA ERROR", 0);
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
    if (!(in & fem::mask_F)) data.F = fem::FEM_matrix();
    if (!(in & fem::mask_Ks)) data.Ks = fem::FEM_SymSparse();
    if (!(in & fem::mask_Kf)) data.Kf = fem::FEM_factor();
}

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::numbering(Data& data) {
    prepare(data);
    collect_imposed_DOFs(data);
    if (this->stop_requested(data)) return;
    number_system(data);
    if (data.error_code) return;
    make_total_index(data);
    // The ordering's many small temporaries are free now: give their pages back to
    // the system before the big matrices are allocated.
    malloc_trim(0);
}

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::log_sizes(Data& data) {
    const unsigned long long cells = static_cast<unsigned long long>(data.nbr_total_DOFs) * nbr_cases_;
    this->log(1, "  Nbr free DOFs          : %10llu\n", static_cast<unsigned long long>(data.nbr_free_DOFs));
    this->log_size(2, "  Size matrix RHS        : ", cells, data.size_RHS);
    // The line shows the Ks this run makes; size_Ks is its size whether or not it does.
    this->log_size(2, "  Size matrix Ks         : ", need_Ks_ ? Ks_nnz_ : 0, need_Ks_ ? data.size_Ks : 0.0);
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
    // The factorisation's work arrays are held on top of these while it runs.
    return (need_Kf_ && !given_Kf_) ? total + data.size_spare : total;
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
    if (!(keep & fem::mask_F)) data.F = fem::FEM_matrix();
    if (!(keep & fem::mask_Ks)) data.Ks = fem::FEM_SymSparse();
    if (!(keep & fem::mask_Kf)) data.Kf = fem::FEM_factor();
    if (!(settings().output_mask & fem::mask_U)) detail::solution_of(data) = fem::FEM_states();
}

template <class Types, class Settings, class Data>
bool solver_static_linear<Types, Settings, Data>::make_resident(Data& data) {
    bool ok = true;
    fem::FEM_states& U = detail::solution_of(data);
    if (U.is_valid() && !U.is_all_incore()) ok = U.force_incore() && ok;
    if (data.F.is_valid() && !data.F.is_all_incore() && !(settings().input_mask & fem::mask_F))
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
    cases_.clear();
}

}  // namespace core
}  // namespace orv

#include "fem/imposed_forces.h"
#include "fem/static_assembly.h"
#include "fem/static_direct_solve.h"
#include "fem/static_energies.h"
#include "fem/static_factorization.h"
#include "fem/static_iterative_solve.h"
#include "fem/static_numbering.h"
#include "fem/static_rhs.h"
#include "fem/static_solve.h"
