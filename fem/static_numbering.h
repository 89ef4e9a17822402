// Steps 1 to 4 of the linear static run: needs, imposed DOFs, numbering and sizes.
#pragma once

#include <orv/fem/error_type.h>
#include "fem/solver_static_linear.h"
#include "linalg/sparse_pattern.h"

namespace orv {
namespace core {

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::prepare(Data& data) {
    const Settings& s = settings();
    given_F_ = (s.input_mask & fem::mask_F) != 0 && data.F.engine() != nullptr;
    given_Ks_ = (s.input_mask & fem::mask_Ks) != 0 && data.Ks.engine() != nullptr;
    given_Kf_ = (s.input_mask & fem::mask_Kf) != 0 && data.Kf.engine() != nullptr;
    nbr_cases_ = given_F_ ? static_cast<std::size_t>(data.F.cols()) : problem_->nbr_load_cases();
    const std::uint32_t out = s.output_mask;
    if (out == 0) {
        need_F_ = need_Kf_ = need_U_ = need_Ks_ = true;
    } else {
        need_F_ = (out & (fem::mask_F | fem::mask_U)) != 0;
        need_Kf_ = (out & (fem::mask_Kf | fem::mask_U)) != 0;
        need_U_ = (out & fem::mask_U) != 0;
        need_Ks_ = (out & fem::mask_Ks) != 0;
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
int solver_static_linear<Types, Settings, Data>::build_graph() {
    const DOF_filter free_filter{table_, true};
    graph_ptr_.clear();
    graph_IDs_.clear();
    if (!graph_ptr_.push_back(0u)) return fem::error_memory;
    const int rc = model_->get_DOFs_graph(*table_, numerical_model_base::all_elements, stiffness_code_, graph_ptr_,
                                          graph_IDs_, free_filter);
    have_graph_ = rc == 0;
    return rc;
}

// The factor's index is the free index, in the factor's order; the graph is only
// needed for Ks.
template <class Types, class Settings, class Data>
int solver_static_linear<Types, Settings, Data>::number_from_factor(Data& data, std::uint64_t& blocks,
                                                                    std::uint64_t& segments, std::uint64_t& profile) {
    const FEM_factor_engine* Kf = data.Kf.engine();
    free_IDs_ = Kf->get_IDs() ? Kf->get_IDs() : Ptr<DOF_index>(new DOF_index());
    const skyline_factor& m = Kf->matrix();
    if (m.dimension() && !m.factored()) {
        // A factor kept from a run whose factorisation failed holds no usable factors.
        this->set_error(data, fem::error_data, "DATA ERROR", line_Kf_not_factored);
        return fem::error_data;
    }
    blocks = m.nbr_blocks();
    segments = m.nbr_segments();
    profile = m.profile();
    const int rc = need_Ks_ ? build_graph() : 0;
    if (rc) this->set_error(data, rc, "K assembly error.", line_Ks_allocation);
    return rc;
}

// The DOFs of the model less those imposed in every case, then their order and block
// profile when a matrix is needed.
template <class Types, class Settings, class Data>
int solver_static_linear<Types, Settings, Data>::number_from_model(Data& data, std::uint64_t& blocks,
                                                                   std::uint64_t& segments, std::uint64_t& profile) {
    const DOF_filter free_filter{table_, true};
    Ptr<DOF_index> candidates(new DOF_index());
    const std::uint64_t by_elements = 32ull * model_->nbr_elements();
    const std::uint64_t by_nodes = 6ull * table_->nbr_nodes();
    const std::uint64_t by_table = table_->size();
    candidates->reserve(static_cast<std::size_t>(std::min(by_elements, std::min(by_nodes, by_table))));
    int rc = model_->get_DOFs(*table_, numerical_model_base::all_elements, stiffness_code_, *candidates, free_filter);
    if (rc) {
        this->set_error(data, rc, "K assembly error.", line_Ks_allocation);
        return rc;
    }
    Ptr<DOF_index> free(new DOF_index());
    free->reserve(candidates->size());
    for (const unsigned id : *candidates)
        if (!std::binary_search(imposed_all_.begin(), imposed_all_.end(), id))
            if (free->insert(id).first == DOF_index::npos) throw std::bad_alloc();
    free_IDs_ = free;
    if (!(need_Ks_ || need_Kf_) || free_IDs_->size() == 0) return 0;
    rc = build_graph();
    if (rc == 0)
        rc = number_free_DOFs(graph_ptr_, graph_IDs_, *free_IDs_, numbering_, false,
                              numbering_nested_dissection_postordered, block_profile_limit);
    if (rc) {
        this->set_error(data, rc, rc == fem::error_memory ? "Matrix allocation error." : "K assembly error.",
                        line_Kf_allocation);
        return rc;
    }
    blocks = numbering_.totals.nbr_blocks;
    segments = numbering_.totals.nbr_segments;
    profile = numbering_.totals.profile;
    return 0;
}

// size_Kf from the layout of the block matrix, size_spare from the work arrays of its
// factorisation; size_Ks from the pattern of the graph, whether or not Ks is kept (the
// pattern itself is only built when it is).
template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::size_matrices(Data& data, std::uint64_t blocks,
                                                                std::uint64_t segments, std::uint64_t profile) {
    const std::uint64_t rows = free_IDs_->size();
    data.size_Kf = symmetric_hybrid_OOC<double>::layout_MB(rows, blocks, segments, profile);
    Kf_profile_ = profile;
    // The work arrays of the factorisation, which the size gate counts beside Kf.
    data.size_spare = double(skyline_factor::factor_work_bytes(numbering_.blocks.data(), numbering_.blocks.size(),
                                                               profile, int(this->nbr_threads()))) /
                      1048576.0;
    if (have_graph_ && rows > 0) {
        if (need_Ks_) {
            build_sparse_pattern(graph_ptr_, graph_IDs_, *free_IDs_, Ks_pattern_);
            Ks_nnz_ = Ks_pattern_.nbr_entries();
        } else {
            Ks_nnz_ = count_sparse_pattern(graph_ptr_, graph_IDs_, *free_IDs_);
        }
    }
    if (rows == 0 || Ks_nnz_ == 0)
        data.size_Ks = 0.0;
    else if (Ks_nnz_ >= size_line_limit)
        data.size_Ks = 17592186044416.0;  // 2^44
    else
        data.size_Ks = (4.0 * double(rows + 18 + Ks_nnz_) + 8.0 * double(Ks_nnz_)) / 1048576.0;
}

template <class Types, class Settings, class Data>
void solver_static_linear<Types, Settings, Data>::number_system(Data& data) {
    numbering_.clear();
    Ks_nnz_ = Kf_profile_ = 0;
    std::uint64_t blocks = 0, segments = 0, profile = 0;
    const int rc = given_Kf_ ? number_from_factor(data, blocks, segments, profile)
                             : number_from_model(data, blocks, segments, profile);
    if (rc) return;
    size_matrices(data, blocks, segments, profile);
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

}  // namespace core
}  // namespace orv
