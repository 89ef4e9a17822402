// Engine side of the loads of one load case.
#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

#include <orv/fem/field_tag.h>

#include "orvmath1/ref_counted.h"
#include "problem/elementary_load.h"

namespace orv {
namespace core {

class context_type;
class evolution_funcs_mgr;
struct assembly_args;

// Key of an elementary load: the model and the element it is recorded on.
struct NM_load_key {
    std::uint32_t NM_ID;
    std::uint32_t FE_ID;
    bool operator==(const NM_load_key& o) const { return NM_ID == o.NM_ID && FE_ID == o.FE_ID; }
};

// FNV-1a over the eight bytes of the key, low byte of NM_ID first.
struct NM_load_key_hash {
    std::size_t operator()(const NM_load_key& k) const noexcept {
        std::uint64_t h = 14695981039346656037ull;
        const std::uint32_t words[2] = {k.NM_ID, k.FE_ID};
        for (std::uint32_t w : words) {
            for (int b = 0; b < 4; ++b) {
                h ^= (w >> (8 * b)) & 0xFFu;
                h *= 1099511628211ull;
            }
        }
        return static_cast<std::size_t>(h);
    }
};

// The loads of one load case: forces on DOFs (Neumann records), prescribed values of
// DOFs (Dirichlet records), and elementary loads on elements of numerical models.
//
// Elementary loads are stored once in NM_loads and referred to from a table keyed by
// (model, element); a load repeated on a run of elements shares one record. Loads
// recorded on a composite are stored under each of its simple models.
//
// Records are written while the problem is built and only read by the runs, which
// may assemble several load cases (each its own loads_mgr) at once.
class loads_mgr : public ref_counted {
public:
    static constexpr std::uint32_t no_ID = 0xFFFFFFFFu;
    static constexpr std::uint32_t all_elements = 0xFFFFFFFEu;

    // ctx: the context whose models and evolution functions the loads refer to; it
    // may be null (no composite is then resolved and every function reads 1.0).
    explicit loads_mgr(context_type* ctx = nullptr);
    ~loads_mgr() override;

    context_type* get_context() const { return context_.get(); }

    // Neumann records. A value of exactly 0.0 records nothing. The list forms return
    // -101 (and record nothing) when the lengths differ. Return 0 or -199 (memory).
    int record_DOF_load(std::uint32_t ID, double value, std::uint32_t evol);
    int record_DOF_loads(const unsigned* IDs, std::size_t nbr_IDs, const double* values, std::size_t nbr_values,
                         std::uint32_t evol);
    int record_DOF_loads(const unsigned* IDs, std::size_t nbr_IDs, const double* values, std::size_t nbr_values,
                         const unsigned* evols, std::size_t nbr_evols);
    // -101 when the ID of (node, tag, comp) does not fit 32 bits.
    int record_nodal_load(std::uint64_t node, fem::field_tag tag, unsigned comp, double value, std::uint32_t evol);
    // Force F on the node's displacements if F is not all zero, moment M on its
    // rotations if M is not all zero. A node without DOFs (477218588 or more) puts
    // its values on the IDs of node 0.
    int record_nodal_load(std::uint64_t node, const double F[3], const double M[3], std::uint32_t evol);

    // Dirichlet records: always kept, a prescribed 0.0 being a support.
    int record_DOF_prescribed_value(std::uint32_t ID, double value, std::uint32_t evol);
    int record_DOF_prescribed_values(const unsigned* IDs, std::size_t nbr_IDs, const double* values,
                                     std::size_t nbr_values, std::uint32_t evol);
    int record_DOF_prescribed_values(const unsigned* IDs, std::size_t nbr_IDs, const double* values,
                                     std::size_t nbr_values, const unsigned* evols, std::size_t nbr_evols);
    // -101 when the ID of (node, tag, comp) does not fit 32 bits.
    int record_nodal_prescribed_value(std::uint64_t node, fem::field_tag tag, unsigned comp, double value,
                                      std::uint32_t evol);
    // The six values U (displacements) and R (rotations), always all six. -101 for a
    // node without DOFs.
    int record_nodal_prescribed_values(std::uint64_t node, const double U[3], const double R[3], std::uint32_t evol);

    // An elementary load on element FE_ID (or all_elements) of model NM_ID, scaled by
    // the evolution function evol (which replaces load.evolution_func_ID). Nothing is
    // recorded for an ID of 0xFFFFFFFF or a load whose values are all 0.0. The values
    // are copied. Returns 0 or -199.
    int record_NM_load(std::uint32_t NM_ID, std::uint32_t FE_ID, const elementary_load& load, std::uint32_t evol);

    bool reserve_NM_Neumann_loads(std::size_t n);
    bool reserve_node_Neumann_loads(std::size_t n);
    bool reserve_node_Dirichlet_loads(std::size_t n);

    // Empties all the lists.
    void clear();

    // Adds coefficient times the loads of other (which may be this object). A
    // coefficient of 0.0 does nothing. Throws std::length_error when the elementary
    // loads would outgrow what a vector can hold, and std::bad_alloc when memory fails
    // (then part of other may have been added).
    void add(const loads_mgr& other, double coefficient);

    // Adds the loads of this case to the vector assembler of args, in this order:
    // 1. each elementary load of the table, in table order, through assemble_load of
    //    the model it is recorded on (absent models are skipped), with args.element
    //    set to the element of its key and args.factor multiplied by the load's own
    //    evolution function at args.params.time (a load whose function is 0.0 there is
    //    skipped). The model applies its own evolution function and load_factor. The
    //    element kernels must therefore not apply the record's evolution function
    //    again;
    // 2. the Neumann records, each times its evolution function, load_factor and
    //    args.factor.
    // Nothing is done when args.element is 0xFFFFFFFF, args.factor is 0.0 or the
    // vector assembler is null. args comes back as it was given. Returns 0 or the
    // first error of a model (-199 and -200 for an exception in a model).
    int assemble(assembly_args& args) const;
    // The elementary loads of model NM_ID alone, for a run restricted to the list of
    // elements args.elements (of that model): first those recorded under
    // all_elements, assembled over the list (over all elements when there is no
    // list), then for each element e of the list those recorded under e. Neumann
    // records are not assembled here. Same early returns and result as assemble().
    int assemble(assembly_args& args, std::uint32_t NM_ID) const;

    // The Neumann part of assemble(): for each record, add_DOF(ID, value * f(time) *
    // scale) on any assembler that has add_DOF(unsigned, double). scale is
    // load_factor * factor; nothing is done when it is 0.0.
    template <class Assembler>
    void assemble_Neumann(Assembler& assembler, double time, double load_factor, double factor) const {
        if (load_factor * factor == 0.0) return;
        for (const DOF_record& r : Neumann_)
            assembler.add_DOF(r.ID, r.value * evolution_value(r.evolution_func_ID, time) * load_factor * factor);
    }

    // Value of an evolution function of the context at t; 1.0 when it names none.
    double evolution_value(std::uint32_t ID, double t) const;

    // The sorted DOF IDs of the Dirichlet records, without duplicates, appended to ids.
    void get_prescribed_DOFs(std::vector<std::uint32_t>& ids) const;
    // The prescribed values at time t, value * f(t), sorted by DOF ID; where a DOF has
    // several records the last one counts. out is replaced.
    void get_prescribed_values(double t, std::vector<std::pair<std::uint32_t, double>>& out) const;

    const std::vector<DOF_record>& Neumann() const { return Neumann_; }
    const std::vector<DOF_record>& Dirichlet() const { return Dirichlet_; }
    const std::vector<elementary_load>& NM_loads() const { return NM_loads_; }

    // The table of elementary loads, in table order: keys in the order of their first
    // record, and under each key its positions in NM_loads in the order recorded.
    std::size_t nbr_NM_keys() const { return keys_.size(); }
    const NM_load_key& NM_key(std::size_t i) const { return keys_[i]; }
    const std::vector<std::uint32_t>& NM_positions(std::size_t i) const { return positions_[i]; }
    // Positions recorded under a key; null when the key has none.
    const std::vector<std::uint32_t>* find(std::uint32_t NM_ID, std::uint32_t FE_ID) const;
    // Number of (key, position) entries of the table.
    std::size_t nbr_NM_entries() const;

private:
    // Steps after the lookup of the model: merge with one of the last three loads or
    // append, then enter the position under the key. May throw std::bad_alloc.
    void record_simple(std::uint32_t NM_ID, std::uint32_t FE_ID, const elementary_load& load);
    int record_NM_load_checked(std::uint32_t NM_ID, std::uint32_t FE_ID, const elementary_load& load);
    int assemble_entry(assembly_args& args, std::uint32_t NM_ID, std::uint32_t FE_ID,
                       const std::vector<std::uint32_t>& positions) const;

    Ptr<context_type> context_;
    // Table of the elementary loads: keys_[i] holds the positions positions_[i];
    // index_ finds a key's slot.
    std::unordered_map<NM_load_key, std::uint32_t, NM_load_key_hash> index_;
    std::vector<NM_load_key> keys_;
    std::vector<std::vector<std::uint32_t>> positions_;
    std::vector<elementary_load> NM_loads_;
    std::vector<DOF_record> Neumann_;
    std::vector<DOF_record> Dirichlet_;
};

}  // namespace core
}  // namespace orv
