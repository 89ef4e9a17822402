// Engine base of the runs that work on the stiffness (or conduction) matrix K of the
// linear static run and a second matrix B on the same free DOFs: the eigen runs (B
// the mass, or -Kg) and the transient runs (B the mass or the heat capacity). It
// holds B, its pattern and size, and fills Kf with a combination of K and B.
#pragma once

#include <cstddef>
#include <cstdint>

#include <orv/fem/solver_static_linear.h>

#include "fem/solver_static_linear.h"
#include "linalg/sparse_pattern.h"

namespace orv {
namespace core {

// A run's settings record with the settings of the static steps at the linear static
// run's defaults, taken from its settings record so that the two never drift apart.
template <class Public>
struct static_steps_settings : Public {
    static const fem::solver_static_linear::settings_type& static_defaults() {
        static const fem::solver_static_linear::settings_type defaults;
        return defaults;
    }
    std::uint32_t use_ALM = static_defaults().use_ALM;
    std::uint32_t max_iters_CG = static_defaults().max_iters_CG;
    std::uint32_t max_iters_ALM = static_defaults().max_iters_ALM;
    double tol_ALM = static_defaults().tol_ALM;
    double tol_CG = static_defaults().tol_CG;
    double ALM_floor = static_defaults().ALM_floor;
    bool force_positive_pivots = static_defaults().force_positive_pivots;
};

namespace pencil_detail {

// y += A x for the upper-triangle storage of a symmetric matrix.
inline void sparse_mult_add(const symmetric_sparse<double>& A, const double* x, double* y) {
    const auto& ptr = A.pointers();
    const auto& col = A.columns();
    for (std::size_t r = 0; r < A.dim(); ++r)
        for (std::size_t k = ptr[r]; k < ptr[r + 1]; ++k) {
            const std::size_t c = col[k];
            y[r] += A[k] * x[c];
            if (c != r) y[c] += A[k] * x[r];
        }
}

}  // namespace pencil_detail

template <class Types, class Settings, class Data>
class solver_pencil_base : public solver_static_linear<Types, Settings, Data> {
    typedef solver_static_linear<Types, Settings, Data> base;

public:
    typedef typename base::sparse_type sparse_type;
    typedef typename base::skyline_type skyline_type;

    // B_label: the size line of B in the log.
    solver_pencil_base(const Settings* settings, const solver_identity& id, const char* B_label)
        : base(settings, id), B_label_(B_label) {}

protected:
    // The record's fields of B: its size in MB and its matrix.
    virtual double& size_of_B(Data& data) = 0;
    virtual fem::FEM_SymSparse& record_of_B(Data& data) = 0;

    void log_sizes(Data& data) override;
    double needed_size(Data& data) override;
    // B stays in the record when the masks keep Ks.
    void clear_unkept(Data& data) override;
    bool make_resident(Data& data) override;

    // The numbering of the static run with Ks and Kf always made and the static
    // solution when need_U, then the pattern of B on the coupling graph of
    // matrix_code (or its diagonal alone) and its size. A failure of the graph is set
    // with error_text at line.
    void number_with_B(Data& data, unsigned matrix_code, bool coupled, bool need_U, const char* error_text, int line);
    // The pattern of B on the free DOFs: the coupling graph of matrix_code, or the
    // diagonal alone; B_nnz_ its entries. Returns the model's code.
    int make_B_pattern(unsigned matrix_code, bool coupled);
    // Allocates B on its pattern and publishes it in `out`; false (error set) when
    // memory fails.
    bool allocate_B(Data& data, fem::FEM_SymSparse& out, int line);
    // B allocated (published in `out`; a failure at alloc_line) and assembled from its
    // matrix code at matrix_level (a failure with error_text at line), the time going
    // to time_assembly under `title`. False when the run has an error after it.
    bool assemble_B(Data& data, fem::FEM_SymSparse& out, int matrix_level, const char* title, const char* error_text,
                    int alloc_line, int line);
    // Kf := k Ks + b B, not factored.
    void fill_Kf(double k, double b);
    void release_B();

    const Settings& settings() const { return base::settings(); }

    const char* B_label_;
    unsigned B_code_ = 0;  // the matrix code of B
    symmetric_sparse<double> B_pattern_;
    std::uint64_t B_nnz_ = 0;
    Ptr<sparse_type> B_;
};

template <class Types, class Settings, class Data>
void solver_pencil_base<Types, Settings, Data>::number_with_B(Data& data, unsigned matrix_code, bool coupled,
                                                              bool need_U, const char* error_text, int line) {
    release_B();
    this->prepare(data);
    this->need_Ks_ = this->need_Kf_ = true;
    if (need_U) this->need_U_ = this->need_F_ = true;
    this->collect_imposed_DOFs(data);
    if (this->stop_requested(data)) return;
    this->number_system(data);
    if (data.error_code) return;
    this->make_total_index(data);
    const std::size_t n = this->free_IDs_->size();
    B_code_ = matrix_code;
    if (const int rc = make_B_pattern(matrix_code, coupled)) return this->set_error(data, rc, error_text, line);
    size_of_B(data) = n ? (4.0 * double(n + 18 + B_nnz_) + 8.0 * double(B_nnz_)) / 1048576.0 : 0.0;
}

template <class Types, class Settings, class Data>
void solver_pencil_base<Types, Settings, Data>::log_sizes(Data& data) {
    base::log_sizes(data);
    this->log_size(2, B_label_, B_nnz_, size_of_B(data));
}

template <class Types, class Settings, class Data>
double solver_pencil_base<Types, Settings, Data>::needed_size(Data& data) {
    const double need = base::needed_size(data);
    data.size_total += size_of_B(data);
    return need + size_of_B(data);
}

template <class Types, class Settings, class Data>
void solver_pencil_base<Types, Settings, Data>::clear_unkept(Data& data) {
    base::clear_unkept(data);
    const std::uint32_t keep = settings().input_mask | settings().output_mask;
    if (!(keep & fem::mask_Ks)) record_of_B(data) = fem::FEM_SymSparse();
}

template <class Types, class Settings, class Data>
bool solver_pencil_base<Types, Settings, Data>::make_resident(Data& data) {
    release_B();
    return base::make_resident(data);
}

template <class Types, class Settings, class Data>
int solver_pencil_base<Types, Settings, Data>::make_B_pattern(unsigned matrix_code, bool coupled) {
    const std::size_t n = this->free_IDs_->size();
    B_nnz_ = 0;
    if (!n) return 0;
    dense1D<unsigned int, 8> ptr, ids;
    if (!ptr.push_back(0u)) throw std::bad_alloc();
    if (coupled) {
        const DOF_filter free_filter{this->table_, true};
        const int rc = this->model_->get_DOFs_graph(*this->table_, numerical_model_base::all_elements, matrix_code, ptr,
                                                    ids, free_filter);
        if (rc) return rc;
    }
    // Without groups every row has only its diagonal.
    build_sparse_pattern(ptr, ids, *this->free_IDs_, B_pattern_);
    B_nnz_ = B_pattern_.nbr_entries();
    return 0;
}

template <class Types, class Settings, class Data>
bool solver_pencil_base<Types, Settings, Data>::allocate_B(Data& data, fem::FEM_SymSparse& out, int line) {
    Ptr<sparse_type> B(new sparse_type(this->free_IDs_));
    if (this->free_IDs_->size() && !B->matrix().init(B_pattern_.pointers(), B_pattern_.columns(), 0.0)) {
        this->set_error(data, fem::error_memory, "Matrix allocation error.", line);
        return false;
    }
    B_ = B;
    out = fem::FEM_SymSparse(B.get());
    B_pattern_ = symmetric_sparse<double>();
    return true;
}

template <class Types, class Settings, class Data>
void solver_pencil_base<Types, Settings, Data>::fill_Kf(double k, double b) {
    skyline_factor& K = this->Kf_->matrix();
    K.fill(0.0);
    K.set_unfactored();
    skyline_type view(this->free_IDs_, static_cast<const symmetric_hybrid_OOC<double>&>(K));
    if (k != 0.0) this->scatter_Ks_into_Kf(*this->Ks_, view, k);
    if (b != 0.0) this->scatter_Ks_into_Kf(*B_, view, b);
}

template <class Types, class Settings, class Data>
bool solver_pencil_base<Types, Settings, Data>::assemble_B(Data& data, fem::FEM_SymSparse& out, int matrix_level,
                                                           const char* title, const char* error_text, int alloc_line,
                                                           int line) {
    if (data.error_code || this->stop_requested(data)) return false;
    this->step(data, data.time_assembly, title, [&] {
        if (!allocate_B(data, out, alloc_line)) return;
        if (this->free_IDs_->size() == 0) return;
        matrix_sym_assembler<sparse_type> a(*B_, 1.0);
        assembly_args args;
        args.params = this->stiffness_params();
        args.matrix_assembler = &a;
        args.matrix_level = matrix_level;
        args.pos = &this->problem_->get_pos();
        const int rc = this->model_->assemble_matrix(B_code_, args);
        if (rc) this->set_error(data, rc, error_text, line);
    });
    return !data.error_code;
}

template <class Types, class Settings, class Data>
void solver_pencil_base<Types, Settings, Data>::release_B() {
    B_pattern_ = symmetric_sparse<double>();
    B_nnz_ = 0;
    B_.reset();
}

}  // namespace core
}  // namespace orv
