// Steps 7 and 8 of the linear static run: stiffness and penalties, and the passes of
// the models that give internal forces.
#pragma once

#include <orv/fem/error_type.h>
#include "fem/solver_static_linear.h"

namespace orv {
namespace core {

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
void solver_static_linear<Types, Settings, Data>::scatter_Ks_into_Kf(const sparse_type& Ks, skyline_type& Kf,
                                                                     double factor) const {
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
            Kf.matrix().add_val(std::max(pos[r], c), std::min(pos[r], c), factor * m[k]);
        }
    }
}

// Ks (when needed and not supplied) and Kf (when needed and not supplied), from the
// models or, for Kf, from Ks; the stiffness pass runs without penalties.
template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::assemble_stiffness(Data& data) {
    if (this->stop_requested(data)) return;
    // DOFs of the models with penalties, on the free index.
    penalised_.clear();
    {
        DOF_index pen;
        const DOF_filter no_filter;
        model_->get_DOFs(*table_, numerical_model_base::all_elements, fem::matrix_penalty, pen, no_filter);
        for (const unsigned id : pen)
            if (free_IDs_->contains(id)) penalised_.push_back(id);
    }
    const core::FEM_SymSparse_engine* given_Ks = data.Ks.engine();
    const bool Ks_given_full = given_Ks && given_Ks->matrix().nbr_entries() > 1;
    if (need_Ks_ && !Ks_given_full)
        assemble_Ks(data);
    else if (Ks_given_full)
        Ks_ = Ptr<sparse_type>(const_cast<core::FEM_SymSparse_engine*>(given_Ks));
    if (need_Kf_ && !given_Kf_)
        assemble_Kf(data);
    else if (given_Kf_)
        Kf_ = Ptr<factor_type>(data.Kf.engine());
    if (Ks_built_ || Kf_built_) log_bad_elements(*model_, settings().display_hook, settings().pass_thru);
    // The element graph, the pattern of Ks and the block profiles have served: the
    // matrices hold their own, and a run that needs a new Kf numbers the system again.
    graph_ptr_.clear_hard();
    graph_IDs_.clear_hard();
    Ks_pattern_ = symmetric_sparse<double>();
    numbering_.clear();
    malloc_trim(0);
}

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::assemble_Ks(Data& data) {
    const bool ran = this->step(data, data.time_assembly, "Numerical assembly matrix Ks       : %10.2f s.\n", [&] {
        Ptr<sparse_type> Ks(new sparse_type(free_IDs_));
        if (free_IDs_->size() && !Ks->matrix().init(Ks_pattern_.pointers(), Ks_pattern_.columns(), 0.0)) {
            this->set_error(data, fem::error_memory, "Matrix allocation error.", line_Ks_allocation);
            return;
        }
        Ks_ = Ks;
        Ks_built_ = true;
        data.Ks = fem::FEM_SymSparse(Ks.get());
        matrix_sym_assembler<sparse_type> a(*Ks_, 1.0);
        const int rc = assemble_into(stiffness_code_, a, stiffness_params());
        if (rc) this->set_error(data, rc, "K assembly error.", line_Ks_assembly);
    });
    if (ran && Ks_) log_Ks_statistics(*Ks_);
}

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::assemble_Kf(Data& data) {
    const bool ran = this->step(data, data.time_assembly, "Numerical assembly matrix Kf       : %10.2f s.\n", [&] {
        Ptr<factor_type> Kf(new factor_type(free_IDs_));
        if (free_IDs_->size()) {
            context_type* ctx = this->context();
            const int rc = Kf->matrix().init(numbering_.blocks, 0.0, Ptr<OOC_mgr>(ctx ? ctx->OOC() : nullptr));
            if (rc) {
                this->set_error(data, fem::error_memory, "Matrix allocation error.", line_Kf_allocation);
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
            const int rc = assemble_into(stiffness_code_, a, stiffness_params());
            if (rc) this->set_error(data, rc, "K assembly error.", line_Kf_assembly);
        } else {
            scatter_Ks_into_Kf(*Ks_, view);
        }
    });
    if (ran && Kf_) log_text_lines(2, Kf_->matrix().report_text(true));
}

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::assemble_penalties(Data& data) {
    if (data.error_code || penalised_.empty()) return;
    // The ALM switch: asked for, or Kf (or Ks) is zero throughout without penalties.
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
            rc = assemble_into(fem::matrix_penalty, a, params_);
            if (rc) this->set_error(data, rc, "K assembly error.", line_Ks_assembly);
        }
        if (!rc && Kf_built_ && Kf_->matrix().dimension()) {
            matrix_sym_assembler<skyline_type> a(view, 1.0);
            rc = assemble_into(fem::matrix_penalty, a, params_);
            if (rc) this->set_error(data, rc, "K assembly error.", line_Kf_assembly);
        }
    });
}

}  // namespace core
}  // namespace orv
