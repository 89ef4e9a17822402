// Loads of one load case: records, combinations, assembly, prescribed values; engine
// and public handle.
#include "problem/loads_mgr.h"
#include <orv/fem/error_type.h>

#include <algorithm>
#include <new>
#include <stdexcept>

#include <orv/fem/context.h>
#include <orv/fem/loads_mgr.h>

#include "frame/context_type.h"
#include "model/element_workspace.h"
#include "model/numerical_model_base.h"
#include "model/numerical_models_mgr.h"
#include "model/vector_assembler.h"
#include "problem/DOFs_mgr.h"
#include "problem/evolution_funcs_mgr.h"

namespace orv {
namespace core {

namespace {

constexpr int ok = 0;
constexpr int error_data = fem::error_data;
constexpr int error_memory = fem::error_memory;

// Number of values a load carries, bounded by what it has.
std::size_t significant(const elementary_load& load) {
    return std::min<std::size_t>(load.nbr_significant_values(), load.values.size());
}

// A copy of the load on its own storage, so that later changes of the caller's list
// (or the scaling of a combination) do not reach the stored record.
elementary_load deep_copy(const elementary_load& load) {
    elementary_load c;
    c.kind = load.kind;
    c.type = load.type;
    c.evolution_func_ID = load.evolution_func_ID;
    if (!c.values.copy(load.values)) throw std::bad_alloc();
    return c;
}

}  // namespace

loads_mgr::loads_mgr(context_type* ctx) : context_(ctx) {}

loads_mgr::~loads_mgr() = default;

double loads_mgr::evolution_value(std::uint32_t ID, double t) const {
    const context_type* c = context_.get();
    return c && c->evolution_funcs() ? c->evolution_funcs()->val(ID, t) : 1.0;
}

// --- Neumann records ---------------------------------------------------------------

int loads_mgr::record_DOF_load(std::uint32_t ID, double value, std::uint32_t evol) {
    if (value == 0.0) return ok;
    try {
        Neumann_.push_back(DOF_record{ID, evol, value});
    } catch (...) {
        return error_memory;
    }
    return ok;
}

int loads_mgr::record_DOF_loads(const unsigned* IDs, std::size_t nbr_IDs, const double* values, std::size_t nbr_values,
                                std::uint32_t evol) {
    if (nbr_IDs != nbr_values) return error_data;
    for (std::size_t i = 0; i < nbr_IDs; ++i)
        if (const int code = record_DOF_load(IDs[i], values[i], evol)) return code;
    return ok;
}

int loads_mgr::record_DOF_loads(const unsigned* IDs, std::size_t nbr_IDs, const double* values, std::size_t nbr_values,
                                const unsigned* evols, std::size_t nbr_evols) {
    if (nbr_IDs != nbr_values || nbr_IDs != nbr_evols) return error_data;
    for (std::size_t i = 0; i < nbr_IDs; ++i)
        if (const int code = record_DOF_load(IDs[i], values[i], evols[i])) return code;
    return ok;
}

int loads_mgr::record_nodal_load(std::uint64_t node, fem::field_tag tag, unsigned comp, double value,
                                 std::uint32_t evol) {
    const std::uint64_t ID = DOFs_mgr::ID(node, tag, comp);
    if (ID > 0xFFFFFFFFu) return error_data;
    return record_DOF_load(static_cast<std::uint32_t>(ID), value, evol);
}

int loads_mgr::record_nodal_load(std::uint64_t node, const double F[3], const double M[3], std::uint32_t evol) {
    // A node past the last one that can have DOFs gives the base ID 0.
    const std::uint32_t base = node < DOFs_mgr::max_nodes ? static_cast<std::uint32_t>(node * DOFs_mgr::stride) : 0u;
    for (unsigned c = 0; c < 3; ++c)
        if (const int code = record_DOF_load(base + c, F[c], evol)) return code;
    for (unsigned c = 0; c < 3; ++c)
        if (const int code = record_DOF_load(base + 3 + c, M[c], evol)) return code;
    return ok;
}

// --- Dirichlet records -------------------------------------------------------------

int loads_mgr::record_DOF_prescribed_value(std::uint32_t ID, double value, std::uint32_t evol) {
    try {
        Dirichlet_.push_back(DOF_record{ID, evol, value});
    } catch (...) {
        return error_memory;
    }
    return ok;
}

int loads_mgr::record_DOF_prescribed_values(const unsigned* IDs, std::size_t nbr_IDs, const double* values,
                                            std::size_t nbr_values, std::uint32_t evol) {
    if (nbr_IDs != nbr_values) return error_data;
    for (std::size_t i = 0; i < nbr_IDs; ++i)
        if (const int code = record_DOF_prescribed_value(IDs[i], values[i], evol)) return code;
    return ok;
}

int loads_mgr::record_DOF_prescribed_values(const unsigned* IDs, std::size_t nbr_IDs, const double* values,
                                            std::size_t nbr_values, const unsigned* evols, std::size_t nbr_evols) {
    if (nbr_IDs != nbr_values || nbr_IDs != nbr_evols) return error_data;
    for (std::size_t i = 0; i < nbr_IDs; ++i)
        if (const int code = record_DOF_prescribed_value(IDs[i], values[i], evols[i])) return code;
    return ok;
}

int loads_mgr::record_nodal_prescribed_value(std::uint64_t node, fem::field_tag tag, unsigned comp, double value,
                                             std::uint32_t evol) {
    const std::uint64_t ID = DOFs_mgr::ID(node, tag, comp);
    if (ID > 0xFFFFFFFFu) return error_data;
    return record_DOF_prescribed_value(static_cast<std::uint32_t>(ID), value, evol);
}

int loads_mgr::record_nodal_prescribed_values(std::uint64_t node, const double U[3], const double R[3],
                                              std::uint32_t evol) {
    if (node >= DOFs_mgr::max_nodes) return error_data;
    const std::uint32_t base = static_cast<std::uint32_t>(node * DOFs_mgr::stride);
    try {
        Dirichlet_.reserve(Dirichlet_.size() + 6);
    } catch (...) {
        return error_memory;
    }
    for (unsigned c = 0; c < 3; ++c) Dirichlet_.push_back(DOF_record{base + c, evol, U[c]});
    for (unsigned c = 0; c < 3; ++c) Dirichlet_.push_back(DOF_record{base + 3 + c, evol, R[c]});
    return ok;
}

// --- Elementary loads ----------------------------------------------------------------

void loads_mgr::record_simple(std::uint32_t NM_ID, std::uint32_t FE_ID, const elementary_load& load) {
    // A repeated load on a series of elements shares its record: only the last three
    // records are searched, which is where such a series puts them.
    std::size_t pos = NM_loads_.size();
    const std::size_t first = NM_loads_.size() > 3 ? NM_loads_.size() - 3 : 0;
    for (std::size_t i = first; i < NM_loads_.size(); ++i) {
        if (NM_loads_[i].same_as(load)) {
            pos = i;
            break;
        }
    }
    if (pos >= 0xFFFFFFFFu) throw std::bad_alloc();  // positions are 32-bit
    const bool append = pos == NM_loads_.size();
    if (append) NM_loads_.push_back(deep_copy(load));

    // Enter the position under the key; undo the append if that fails.
    try {
        const NM_load_key key{NM_ID, FE_ID};
        auto it = index_.find(key);
        if (it == index_.end()) {
            keys_.push_back(key);
            try {
                positions_.emplace_back();
                try {
                    it = index_.emplace(key, static_cast<std::uint32_t>(keys_.size() - 1)).first;
                } catch (...) {
                    positions_.pop_back();
                    throw;
                }
            } catch (...) {
                keys_.pop_back();
                throw;
            }
        }
        positions_[it->second].push_back(static_cast<std::uint32_t>(pos));
    } catch (...) {
        if (append) NM_loads_.pop_back();
        throw;
    }
}

int loads_mgr::record_NM_load_checked(std::uint32_t NM_ID, std::uint32_t FE_ID, const elementary_load& load) {
    if (NM_ID > 0xFFFFFFFEu || FE_ID > 0xFFFFFFFEu || load.is_zero()) return ok;
    try {
        const numerical_models_mgr* models = context_ ? context_->models() : nullptr;
        numerical_model_base* model = models ? models->get_NM(NM_ID) : nullptr;
        if (model && !model->is_simple()) {
            std::vector<Ptr<numerical_model_base>> simple;
            model->collect_simple_models(simple);
            for (const auto& m : simple)
                if (m) record_simple(m->ID(), FE_ID, load);
            return ok;
        }
        // A simple model, or an ID that names no model yet: stored as given.
        record_simple(NM_ID, FE_ID, load);
    } catch (...) {
        return error_memory;
    }
    return ok;
}

int loads_mgr::record_NM_load(std::uint32_t NM_ID, std::uint32_t FE_ID, const elementary_load& load,
                              std::uint32_t evol) {
    elementary_load l(load.kind, load.type, load.values);  // shares the values until stored
    l.evolution_func_ID = evol;
    return record_NM_load_checked(NM_ID, FE_ID, l);
}

bool loads_mgr::reserve_NM_Neumann_loads(std::size_t n) {
    try {
        NM_loads_.reserve(n);
    } catch (...) {
        return false;
    }
    return true;
}

bool loads_mgr::reserve_node_Neumann_loads(std::size_t n) {
    try {
        Neumann_.reserve(n);
    } catch (...) {
        return false;
    }
    return true;
}

bool loads_mgr::reserve_node_Dirichlet_loads(std::size_t n) {
    try {
        Dirichlet_.reserve(n);
    } catch (...) {
        return false;
    }
    return true;
}

void loads_mgr::clear() {
    index_.clear();
    keys_.clear();
    positions_.clear();
    NM_loads_.clear();
    Neumann_.clear();
    Dirichlet_.clear();
}

// --- Combinations ------------------------------------------------------------------

void loads_mgr::add(const loads_mgr& other, double coefficient) {
    if (coefficient == 0.0) return;
    if (&other == this) {
        // Adding a case to itself: work from a snapshot, the lists grow meanwhile.
        loads_mgr snapshot(context_.get());
        snapshot.add(other, 1.0);
        add(snapshot, coefficient);
        return;
    }
    // Throws std::length_error past the largest count a vector of loads can hold.
    const std::size_t needed = NM_loads_.size() + other.NM_loads_.size();
    if (needed < NM_loads_.size() || needed > NM_loads_.max_size()) throw std::length_error("vector too long");
    NM_loads_.reserve(needed);
    Neumann_.reserve(Neumann_.size() + other.Neumann_.size());
    Dirichlet_.reserve(Dirichlet_.size() + other.Dirichlet_.size());

    for (std::size_t k = 0; k < other.keys_.size(); ++k) {
        const NM_load_key& key = other.keys_[k];
        for (std::uint32_t p : other.positions_[k]) {
            elementary_load l = deep_copy(other.NM_loads_[p]);
            const std::size_t n = significant(l);
            for (std::size_t i = 0; i < n; ++i) l.values[i] *= coefficient;
            if (key.NM_ID > 0xFFFFFFFEu || key.FE_ID > 0xFFFFFFFEu || l.is_zero()) continue;
            record_simple(key.NM_ID, key.FE_ID, l);
        }
    }
    for (const DOF_record& r : other.Neumann_) {
        const double v = r.value * coefficient;
        if (v != 0.0) Neumann_.push_back(DOF_record{r.ID, r.evolution_func_ID, v});
    }
    for (const DOF_record& r : other.Dirichlet_)
        Dirichlet_.push_back(DOF_record{r.ID, r.evolution_func_ID, r.value * coefficient});
}

// --- Assembly ---------------------------------------------------------------------

namespace {

// Restores the fields of the assembly arguments that a loads assembly changes.
struct args_guard {
    explicit args_guard(assembly_args& a) : args(a), element(a.element), elements(a.elements), factor(a.factor) {}
    ~args_guard() {
        args.element = element;
        args.elements = elements;
        args.factor = factor;
    }
    assembly_args& args;
    const std::uint32_t element;
    const dense1D<unsigned int>* const elements;
    const double factor;
};

bool nothing_to_assemble(const assembly_args& args) {
    return args.element == 0xFFFFFFFFu || args.factor == 0.0 || !args.vector_assembler ||
           args.vector_assembler->is_null();
}

}  // namespace

int loads_mgr::assemble_entry(assembly_args& args, std::uint32_t NM_ID, std::uint32_t FE_ID,
                              const std::vector<std::uint32_t>& positions) const {
    const numerical_models_mgr* models = context_ ? context_->models() : nullptr;
    numerical_model_base* model = models ? models->get_NM(NM_ID) : nullptr;
    if (!model) return ok;
    const double factor = args.factor;
    for (std::uint32_t p : positions) {
        const elementary_load& record = NM_loads_[p];
        const double f = evolution_value(record.evolution_func_ID, args.params.time);
        if (f == 0.0) continue;
        args.element = FE_ID;
        args.factor = factor * f;
        int rc;
        try {
            rc = model->assemble_load(record, args);
        } catch (const std::bad_alloc&) {
            rc = error_memory;
        } catch (...) {
            rc = fem::error_internal;
        }
        args.factor = factor;
        if (rc) return rc;
    }
    return ok;
}

int loads_mgr::assemble(assembly_args& args) const {
    if (nothing_to_assemble(args)) return ok;
    {
        args_guard guard(args);
        args.elements = nullptr;  // the element of each key decides
        for (std::size_t k = 0; k < keys_.size(); ++k)
            if (const int rc = assemble_entry(args, keys_[k].NM_ID, keys_[k].FE_ID, positions_[k])) return rc;
    }
    assemble_Neumann(*args.vector_assembler, args.params.time, args.params.load_factor, args.factor);
    return ok;
}

int loads_mgr::assemble(assembly_args& args, std::uint32_t NM_ID) const {
    if (nothing_to_assemble(args)) return ok;
    args_guard guard(args);
    if (const std::vector<std::uint32_t>* all = find(NM_ID, all_elements))
        if (const int rc = assemble_entry(args, NM_ID, all_elements, *all)) return rc;
    const dense1D<unsigned int>* list = guard.elements;
    if (!list) return ok;
    args.elements = nullptr;
    for (std::size_t i = 0; i < list->size(); ++i) {
        const std::uint32_t e = (*list)[i];
        if (e >= all_elements) continue;
        if (const std::vector<std::uint32_t>* positions = find(NM_ID, e))
            if (const int rc = assemble_entry(args, NM_ID, e, *positions)) return rc;
    }
    return ok;
}

// --- Table and prescribed values -----------------------------------------------------

const std::vector<std::uint32_t>* loads_mgr::find(std::uint32_t NM_ID, std::uint32_t FE_ID) const {
    const auto it = index_.find(NM_load_key{NM_ID, FE_ID});
    return it == index_.end() ? nullptr : &positions_[it->second];
}

std::size_t loads_mgr::nbr_NM_entries() const {
    std::size_t n = 0;
    for (const auto& p : positions_) n += p.size();
    return n;
}

void loads_mgr::get_prescribed_DOFs(std::vector<std::uint32_t>& ids) const {
    const std::size_t start = ids.size();
    for (const DOF_record& r : Dirichlet_) ids.push_back(r.ID);
    std::sort(ids.begin() + static_cast<std::ptrdiff_t>(start), ids.end());
    ids.erase(std::unique(ids.begin() + static_cast<std::ptrdiff_t>(start), ids.end()), ids.end());
}

void loads_mgr::get_prescribed_values(double t, std::vector<std::pair<std::uint32_t, double>>& out) const {
    out.clear();
    out.reserve(Dirichlet_.size());
    for (const DOF_record& r : Dirichlet_) out.emplace_back(r.ID, r.value * evolution_value(r.evolution_func_ID, t));
    // Stable: among the records of one DOF the last recorded stays last.
    std::stable_sort(out.begin(), out.end(),
                     [](const std::pair<std::uint32_t, double>& a, const std::pair<std::uint32_t, double>& b) {
                         return a.first < b.first;
                     });
    std::size_t n = 0;
    for (std::size_t i = 0; i < out.size(); ++i) {
        if (n > 0 && out[n - 1].first == out[i].first)
            out[n - 1] = out[i];
        else
            out[n++] = out[i];
    }
    out.resize(n);
}

}  // namespace core
}  // namespace orv

// --- Public handle -------------------------------------------------------------------

namespace orv {
namespace fem {

ORV_FEM_HANDLE_IMPL(loads_mgr, base_class, core::loads_mgr)

namespace {

error_type code(int c) { return static_cast<error_type>(c); }

}  // namespace

loads_mgr::loads_mgr() = default;

loads_mgr::loads_mgr(context& ctx) { create(ctx); }

error_type loads_mgr::create(context& ctx) {
    clear_w();
    core::context_type* c = ctx.engine();
    if (!c) return error_data;
    core::loads_mgr* e = new (std::nothrow) core::loads_mgr(c);
    if (!e) return error_memory;
    set_w(static_cast<ref_counted*>(e));
    return no_error;
}

error_type loads_mgr::record_DOF_load(unsigned ID, double value, unsigned evol) {
    core::loads_mgr* e = engine();
    return e ? code(e->record_DOF_load(ID, value, evol)) : error_data;
}

error_type loads_mgr::record_DOF_loads(const dense1D<unsigned>& IDs, const dense1D<double>& values, unsigned evol) {
    core::loads_mgr* e = engine();
    if (!e) return error_data;
    return code(e->record_DOF_loads(IDs.data(), IDs.size(), values.data(), values.size(), evol));
}

error_type loads_mgr::record_DOF_loads(const dense1D<unsigned>& IDs, const dense1D<double>& values,
                                       const dense1D<unsigned>& evols) {
    core::loads_mgr* e = engine();
    if (!e) return error_data;
    return code(e->record_DOF_loads(IDs.data(), IDs.size(), values.data(), values.size(), evols.data(), evols.size()));
}

error_type loads_mgr::record_nodal_load(unsigned node, field_tag tag, unsigned comp, double value, unsigned evol) {
    core::loads_mgr* e = engine();
    return e ? code(e->record_nodal_load(node, tag, comp, value, evol)) : error_data;
}

error_type loads_mgr::record_nodal_load(unsigned node, const vector_fixed<double, 3>& F,
                                        const vector_fixed<double, 3>& M, unsigned evol) {
    core::loads_mgr* e = engine();
    return e ? code(e->record_nodal_load(node, F.data(), M.data(), evol)) : error_data;
}

error_type loads_mgr::record_DOF_prescribed_value(unsigned ID, double value, unsigned evol) {
    core::loads_mgr* e = engine();
    return e ? code(e->record_DOF_prescribed_value(ID, value, evol)) : error_data;
}

error_type loads_mgr::record_DOF_prescribed_values(const dense1D<unsigned>& IDs, const dense1D<double>& values,
                                                   unsigned evol) {
    core::loads_mgr* e = engine();
    if (!e) return error_data;
    return code(e->record_DOF_prescribed_values(IDs.data(), IDs.size(), values.data(), values.size(), evol));
}

error_type loads_mgr::record_DOF_prescribed_values(const dense1D<unsigned>& IDs, const dense1D<double>& values,
                                                   const dense1D<unsigned>& evols) {
    core::loads_mgr* e = engine();
    if (!e) return error_data;
    return code(e->record_DOF_prescribed_values(IDs.data(), IDs.size(), values.data(), values.size(), evols.data(),
                                                evols.size()));
}

error_type loads_mgr::record_nodal_prescribed_value(unsigned node, field_tag tag, unsigned comp, double value,
                                                    unsigned evol) {
    core::loads_mgr* e = engine();
    return e ? code(e->record_nodal_prescribed_value(node, tag, comp, value, evol)) : error_data;
}

error_type loads_mgr::record_nodal_prescribed_values(unsigned node, const vector_fixed<double, 3>& U,
                                                     const vector_fixed<double, 3>& R, unsigned evol) {
    core::loads_mgr* e = engine();
    return e ? code(e->record_nodal_prescribed_values(node, U.data(), R.data(), evol)) : error_data;
}

error_type loads_mgr::record_NM_load(unsigned NM_ID, unsigned FE_ID, const elementary_load& load, unsigned evol) {
    core::loads_mgr* e = engine();
    return e ? code(e->record_NM_load(NM_ID, FE_ID, load, evol)) : error_data;
}

bool loads_mgr::reserve_NM_Neumann_loads(std::size_t n) {
    core::loads_mgr* e = engine();
    return e && e->reserve_NM_Neumann_loads(n);
}

bool loads_mgr::reserve_node_Neumann_loads(std::size_t n) {
    core::loads_mgr* e = engine();
    return e && e->reserve_node_Neumann_loads(n);
}

bool loads_mgr::reserve_node_Dirichlet_loads(std::size_t n) {
    core::loads_mgr* e = engine();
    return e && e->reserve_node_Dirichlet_loads(n);
}

void loads_mgr::clear() {
    if (core::loads_mgr* e = engine()) e->clear();
}

error_type loads_mgr::add(const loads_mgr& other, double coefficient) {
    core::loads_mgr* e = engine();
    const core::loads_mgr* o = other.engine();
    if (!e || !o) return error_data;
    // Both stay alive for the call, whatever the host does with its handles.
    const Ptr<core::loads_mgr> keep_e(e);
    const Ptr<core::loads_mgr> keep_o(const_cast<core::loads_mgr*>(o));
    try {
        e->add(*o, coefficient);
    } catch (...) {
        return error_memory;
    }
    return no_error;
}

std::size_t loads_mgr::nbr_node_Neumann_loads() const {
    const core::loads_mgr* e = engine();
    return e ? e->Neumann().size() : 0;
}

std::size_t loads_mgr::nbr_node_Dirichlet_loads() const {
    const core::loads_mgr* e = engine();
    return e ? e->Dirichlet().size() : 0;
}

std::size_t loads_mgr::nbr_NM_loads() const {
    const core::loads_mgr* e = engine();
    return e ? e->NM_loads().size() : 0;
}

std::size_t loads_mgr::nbr_NM_load_entries() const {
    const core::loads_mgr* e = engine();
    return e ? e->nbr_NM_entries() : 0;
}

error_type loads_mgr::get_node_Neumann_load(std::size_t i, DOF_record& record) const {
    const core::loads_mgr* e = engine();
    if (!e || i >= e->Neumann().size()) return error_data;
    record = e->Neumann()[i];
    return no_error;
}

error_type loads_mgr::get_node_Dirichlet_load(std::size_t i, DOF_record& record) const {
    const core::loads_mgr* e = engine();
    if (!e || i >= e->Dirichlet().size()) return error_data;
    record = e->Dirichlet()[i];
    return no_error;
}

}  // namespace fem
}  // namespace orv
