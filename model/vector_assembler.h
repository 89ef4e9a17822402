// Vector assemblers: what happens to an element's vector on its way to a global target.
#pragma once

#include <complex>
#include <cstdint>
#include <vector>

#include "model/Lagrange_states.h"
#include "model/element_matrix_types.h"
#include "model/map_DOFs.h"

namespace orv {
namespace core {

// Adds element vectors and single DOF values, times a multiplier, on the intersection
// of the element's DOF list with the target's index. Not thread safe: one assembler
// per assembly (a load case loop gives each thread its own).
class vector_assembler_base {
public:
    virtual ~vector_assembler_base();
    // True when nothing can be added: a zero multiplier or a target without entries.
    virtual bool is_null() const = 0;
    // Adds value * multiplier at the entry of ID; an ID that the index doesn't hold is
    // dropped, and a zero product does nothing.
    virtual void add_DOF(std::uint32_t ID, double value) = 0;
    // The vector of element FE_ID of model NM_ID. Returns 0 or a memory error.
    virtual int add(double factor, const DOF_vector& element_vector, std::uint32_t NM_ID, std::uint32_t FE_ID) = 0;
    // The same, without any record of the model.
    virtual int add_plain(double factor, const DOF_vector& element_vector) = 0;
};

class vector_null_assembler : public vector_assembler_base {
public:
    bool is_null() const override { return true; }
    void add_DOF(std::uint32_t, double) override {}
    int add(double, const DOF_vector&, std::uint32_t, std::uint32_t) override { return 0; }
    int add_plain(double, const DOF_vector&) override { return 0; }
};

// Target: an indexed1D of real (T = double) or complex values.
template <class T = double>
class vector_assembler : public vector_assembler_base {
public:
    typedef indexed1D<DOF_index, dense1D<T>> target_type;

    vector_assembler(target_type& target, T multiplier) : target_(&target), multiplier_(multiplier) {}

    bool is_null() const override { return multiplier_ == T(0.0) || !target_->get_IDs() || target_->size() == 0; }
    T multiplier() const { return multiplier_; }

    void add_DOF(std::uint32_t ID, double value) override {
        const T p = value * multiplier_;
        if (p == T(0.0)) return;
        if (T* e = target_->find(ID)) *e += p;
    }
    int add(double factor, const DOF_vector& v, std::uint32_t, std::uint32_t) override { return add_plain(factor, v); }
    int add_plain(double factor, const DOF_vector& v) override {
        const T f = factor * multiplier_;
        if (f == T(0.0) || !v.get_IDs() || v.size() == 0 || !target_->get_IDs()) return 0;
        map_DOFs(target_->get_IDs().get(), v.get_IDs().get(), pairs_);
        target_type& t = *target_;
        for (const DOF_pair& p : pairs_) {
            if (p.first >= t.size() || p.second >= v.size()) continue;
            const double x = v[p.second];
            if (x != 0.0) t[p.first] += f * x;
        }
        return 0;
    }

private:
    target_type* target_;
    T multiplier_;
    std::vector<DOF_pair> pairs_;
};

// A real vector assembler that also records, per model, the internal forces of the
// constraint models in a Lagrange_states (for the augmented Lagrange iterations).
class vector_assembler_Lagrange : public vector_assembler<double> {
public:
    vector_assembler_Lagrange(target_type& target, double multiplier, Lagrange_states* states)
        : vector_assembler<double>(target, multiplier), states_(states) {}

    // Not null as long as a Lagrange_states is attached, even with an empty target.
    bool is_null() const override { return states_ ? false : vector_assembler<double>::is_null(); }
    int add(double factor, const DOF_vector& v, std::uint32_t NM_ID, std::uint32_t FE_ID) override;
    Lagrange_states* states() const { return states_; }

private:
    Lagrange_states* states_;
};

}  // namespace core
}  // namespace orv
