// Engine side of the description of one problem: positions, DOFs, model, load cases.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <vector>

#include "orvmath1/dense2D.h"
#include "orvmath1/ref_counted.h"

namespace orv {
namespace core {

class context_type;
class DOFs_mgr;
class loads_mgr;
class stress_super_mgr;
class numerical_model_base;

// What a run is told about a problem besides its settings. Built and filled by the
// host, then read by any number of runs, which write none of it. There is one stress
// manager per load case, always. The lock is for exclusive access by the engine; no
// public operation takes it.
class problem_data : public ref_counted {
public:
    static constexpr std::uint32_t no_ID = 0xFFFFFFFFu;

    // An empty problem on the context (which may be null: such a problem holds
    // nothing). Holds a new, empty DOF table.
    explicit problem_data(context_type* ctx);
    ~problem_data() override;
    problem_data(const problem_data&) = delete;
    problem_data& operator=(const problem_data&) = delete;

    // Fills the problem: the model ID, a shared reference to `DOFs` (grown with fixed
    // DOFs to the columns of `pos`), `pos` (brought to 3 rows in place, new entries
    // 0.0, then shared), and nbr_load_cases empty load and stress managers. Without a
    // context only the reset happens. Returns 0, or -199 when memory fails (the problem
    // is then left reset).
    int init(dense2D<double>& pos, DOFs_mgr* DOFs, std::uint32_t NM_ID, std::size_t nbr_load_cases);

    // Fills this (fresh) problem with the load cases of `src` combined: new case k is
    // the sum over source cases i of load_coeffs(i, k) times case i (stress_coeffs for
    // the stresses; a missing column counts as zeros). A coefficient of 0.0 skips its
    // source. Returns 0; -101 when a coefficient matrix is not empty and its rows
    // differ from the source's number of cases; -199 when memory fails.
    int combine(const problem_data& src, const dense2D<double>& load_coeffs, const dense2D<double>& stress_coeffs);

    context_type* get_context() const { return context_.get(); }
    std::uint32_t NM_ID() const { return NM_ID_; }
    DOFs_mgr* get_DOFs() const { return DOFs_.get(); }
    const dense2D<double>& get_pos() const { return pos_; }
    // Replaces pos with the shape rules of init; -199 when memory fails.
    int set_pos(dense2D<double>& pos);

    std::size_t nbr_load_cases() const { return loads_.size(); }
    // The manager of case i, null past the end.
    loads_mgr* get_loads(std::size_t i) const { return i < loads_.size() ? loads_[i].get() : no_loads_.get(); }
    stress_super_mgr* get_stresses(std::size_t i) const {
        return i < stresses_.size() ? stresses_[i].get() : no_stresses_.get();
    }
    // Share `mgr` as the manager of case i; an index past the end is ignored.
    void set_loads(std::size_t i, loads_mgr* mgr);
    void set_stresses(std::size_t i, stress_super_mgr* mgr);

    // The model of NM_ID in the context's registry, or null.
    numerical_model_base* get_model() const;
    // The problem names a model that exists.
    bool valid() const { return get_model() != nullptr; }

    std::mutex& lock() { return lock_; }

private:
    void reset_all();
    // Brings the caller's pos to 3 rows, grows the table, and shares pos.
    int take_pos(dense2D<double>& pos);

    Ptr<context_type> context_;
    dense2D<double> pos_;
    Ptr<DOFs_mgr> DOFs_;
    std::uint32_t NM_ID_ = no_ID;
    std::vector<Ptr<loads_mgr>> loads_;
    std::vector<Ptr<stress_super_mgr>> stresses_;
    Ptr<loads_mgr> no_loads_;
    Ptr<stress_super_mgr> no_stresses_;
    std::mutex lock_;
};

}  // namespace core
}  // namespace orv
