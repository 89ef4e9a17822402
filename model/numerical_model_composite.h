// A model made of other models of the same context, named by their IDs.
#pragma once

#include <cstdint>
#include <mutex>

#include "model/numerical_model_base.h"

namespace orv {
namespace core {

// Groups models by ID into one, so that a problem with one model ID can hold a whole
// structure. The composite keeps IDs, not references: it finds its children in the
// registry at each call, and a child that is not there is skipped. Its own evolution
// function is a factor on top of its children's. Duplicated IDs are kept (the child is
// then added twice). A composite that contains itself recurses without end.
//
// insert() takes the list's lock; the assembly threads only read the list.
class numerical_model_composite : public numerical_model_base {
public:
    // Registers itself with one element.
    explicit numerical_model_composite(context_type* ctx);
    ~numerical_model_composite() override;

    // Appends IDs; no check that a model exists or is already there. False when memory
    // fails.
    bool insert(std::uint32_t ID);
    bool insert(const dense1D<unsigned int>& IDs);
    bool reserve(std::size_t n);
    std::uint32_t size() const { return static_cast<std::uint32_t>(NM_IDs_.size()); }
    std::uint32_t get_NM_ID(std::uint32_t i) const { return i < NM_IDs_.size() ? NM_IDs_[i] : no_ID; }
    // The list, shared.
    const dense1D<unsigned int>& get_NM_IDs() const { return NM_IDs_; }
    // Child i, null past the end or when the registry has no such model.
    numerical_model_base* get_NM(std::uint32_t i) const;

    std::uint32_t nbr_elements() const override;
    double get_size(const dense2D<double>& pos) const override;
    bool is_simple() const override { return false; }
    void collect_simple_models(std::vector<Ptr<numerical_model_base>>& list) override;
    double get_element_value(std::uint32_t element) const override;
    void set_transformer(const Ptr<ref_counted>& transformer) override;

    int get_DOFs(const DOFs_mgr& table, std::uint32_t element, unsigned matrix_code, dense1D<unsigned int>& list,
                 const DOF_filter& filter) const override;
    int get_DOFs(const DOFs_mgr& table, std::uint32_t element, unsigned matrix_code, vector_fast<unsigned int>& set,
                 const DOF_filter& filter) const override;
    int get_DOFs_graph(const DOFs_mgr& table, std::uint32_t element, unsigned matrix_code,
                       dense1D<unsigned int>& offsets, dense1D<unsigned int>& ids,
                       const DOF_filter& filter) const override;
    // The two-pass form of the base class calls this one, so it needs no override.
    int get_FEs_of_DOFs(const DOFs_mgr& table, std::uint32_t element, unsigned matrix_code,
                        const vector_fast<unsigned int>& rows, dense1D<unsigned int>* offsets,
                        std::vector<FE_ID_pair>* pairs, dense1D<unsigned int>& scratch) const override;
    using numerical_model_base::get_FEs_of_DOFs;
    int get_nodes(std::uint32_t element, vector_fast<unsigned int>& set) const override;
    int get_nodes_graph(std::uint32_t element, dense1D<unsigned int>& offsets,
                        dense1D<unsigned int>& ids) const override;

    void reset_internal_states() override;
    int set_internal_states(const internal_states& states) override;
    int get_internal_states(Ptr<internal_states>& states) const override;

    int assemble_matrix(unsigned matrix_code, assembly_args& args) override;
    int assemble_load(const elementary_load& record, assembly_args& args) override;
    int assemble_projection(unsigned field, unsigned component, assembly_args& args) override;

    int get_output_shape(unsigned output_code, unsigned& type, unsigned& rows, unsigned& cols) const override;

private:
    // Calls f(child) for each present child in list order; stops at the first non-zero
    // result and returns it.
    template <class F>
    int for_each_child(F f) const;

    dense1D<unsigned int> NM_IDs_;
    std::mutex lock_;
};

}  // namespace core
}  // namespace orv
