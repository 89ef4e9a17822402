// Defaults of the model contract and the element assembly loops.
#include "model/numerical_model_base.h"
#include <orv/fem/error_type.h>
#include <orv/fem/field_tag.h>

#include <omp.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>
#include <vector>

#include <orv/fem/DOFs_mgr.h>
#include <orv/fem/numerical_model_base.h>

#include "frame/context_type.h"
#include "linalg/parallel_first_error.h"
#include "model/element_workspace.h"
#include "model/internal_states.h"
#include "model/matrix_assembler.h"
#include "model/numerical_models_mgr.h"
#include "model/vector_assembler.h"
#include "problem/stress_mgr.h"

namespace orv {
namespace core {

// --- element workspace ---------------------------------------------------------------

element_workspace::element_workspace(const assembly_args& args, std::uint32_t model)
    : pos(args.pos),
      U(args.U),
      dU(args.dU),
      model_ID(model),
      params(args.params),
      matrix_level(args.matrix_level),
      vector_level(args.vector_level) {
    if (!args.matrix_assembler || args.matrix_assembler->is_null()) matrix_level = 0;
    if (!args.vector_assembler || args.vector_assembler->is_null()) vector_level = 0;
    if (args.stresses) stresses = args.stresses->stress_mgr_for(model);
    if (args.stresses_state) stresses_state = args.stresses_state->stress_mgr_for(model);
}

void element_workspace::reset() {
    sym.matrix().clear();
    sym.set_IDs(Ptr<DOF_index>());
    sparse.matrix().clear();
    sparse.set_IDs(Ptr<DOF_index>());
    diag.clear();
    gen.clear();
    vector.clear();
    for (double& r : results) r = 0.0;
    flags[1] = 1;
}

void element_workspace::reset_vector() { vector.clear(); }

bool element_workspace::set_DOFs(const unsigned int* ids, std::size_t n) {
    try {
        sort_scratch.assign(ids, ids + n);
    } catch (const std::bad_alloc&) {
        return false;
    }
    std::sort(sort_scratch.begin(), sort_scratch.end());
    // The list is reused when nothing else holds it (the element results drop theirs at
    // each reset), so that the loop does not allocate once the longest element is seen.
    if (!DOFs || DOFs->ref_count() != 1) {
        Ptr<DOF_index> list(new (std::nothrow) DOF_index());
        if (!list) return false;
        DOFs = list;
    }
    DOFs->clear();
    for (unsigned int id : sort_scratch)
        if (DOFs->insert(id).first == DOF_index::npos) {
            DOFs.reset();
            return false;
        }
    return true;
}

bool element_workspace::init_sym() {
    const std::size_t n = DOFs ? DOFs->size() : 0;
    if (!sym.matrix().resize(n, 0.0)) return false;
    sym.set_IDs(DOFs);
    return true;
}

bool element_workspace::init_vector() { return vector.init(DOFs, 0.0); }

// --- model base ----------------------------------------------------------------------

numerical_model_base::numerical_model_base(context_type* ctx) : context_(ctx) {}

numerical_model_base::~numerical_model_base() = default;

double numerical_model_base::evolution_value(double t) const {
    if (!context_ || !context_->evolution_funcs()) return 1.0;
    return context_->evolution_funcs()->val(evolution_func_ID_, t);
}

std::uint32_t numerical_model_base::register_self(std::uint32_t nbr_elements) {
    if (!context_ || !context_->models()) return no_ID;
    return context_->models()->register_model(this, nbr_elements);
}

Ptr<ref_counted> numerical_model_base::get_physics_model() const { return Ptr<ref_counted>(); }
unsigned numerical_model_base::get_family_code() const { return 0; }
unsigned numerical_model_base::get_physics_code() const { return 0; }
unsigned numerical_model_base::get_server_code() const { return 0; }

void numerical_model_base::get_mesh(dense2D<unsigned int>& connectivity, fem::element_type& type) const {
    connectivity.clear();
    type = fem::FE_none;
}

fem::element_type numerical_model_base::get_FE_type() const {
    dense2D<unsigned int> c;
    fem::element_type type = fem::FE_none;
    get_mesh(c, type);
    return type;
}

unsigned numerical_model_base::get_dim() const { return fem::element_dim(get_FE_type()); }

std::uint32_t numerical_model_base::nbr_elements() const {
    dense2D<unsigned int> c;
    fem::element_type type = fem::FE_none;
    get_mesh(c, type);
    return static_cast<std::uint32_t>(c.cols());
}

double numerical_model_base::get_size(const dense2D<double>&) const { return 0.0; }
bool numerical_model_base::is_simple() const { return true; }

void numerical_model_base::collect_simple_models(std::vector<Ptr<numerical_model_base>>& list) {
    list.push_back(Ptr<numerical_model_base>(this));
}

bool numerical_model_base::accepts_load(const elementary_load&) const { return true; }
bool numerical_model_base::has_matrix(unsigned) const { return true; }
double numerical_model_base::get_element_value(std::uint32_t) const { return 0.0; }
void numerical_model_base::add_element_value(std::uint32_t, const assembly_params&, dense1D<double>&) const {}

int numerical_model_base::get_element_basis(const dense2D<double>&, std::uint32_t, matrix_fixed<double, 3, 3>&) const {
    return fem::error_index;
}
int numerical_model_base::get_local_basis(const dense2D<double>&, std::uint32_t, matrix_fixed<double, 3, 3>&) const {
    return fem::error_index;
}

void numerical_model_base::set_transformer(const Ptr<ref_counted>& transformer) { transformer_ = transformer; }

int numerical_model_base::set_hard_offsets(const dense2D<double>&, std::uint32_t, const dense2D<double>&, bool,
                                           const dense1D<unsigned int>&) {
    return fem::error_data;
}
int numerical_model_base::set_hard_offsets(const vector_fixed<double, 3>&, const dense1D<unsigned int>&) {
    return fem::error_data;
}

int numerical_model_base::get_DOFs(const DOFs_mgr&, std::uint32_t, unsigned, dense1D<unsigned int>&,
                                   const DOF_filter&) const {
    return 0;
}

int numerical_model_base::get_DOFs(const DOFs_mgr& table, std::uint32_t element, unsigned matrix_code,
                                   vector_fast<unsigned int>& set, const DOF_filter& filter) const {
    // Through the plain list, so that a model needs to give only that one.
    dense1D<unsigned int> list;
    const int rc = get_DOFs(table, element, matrix_code, list, filter);
    if (rc) return rc;
    for (std::size_t k = 0; k < list.size(); ++k)
        if (set.insert(list[k]).first == DOF_index::npos) return fem::error_memory;
    return 0;
}

int numerical_model_base::element_range(std::uint32_t element, std::uint32_t& first, std::uint32_t& end) const {
    first = 0;
    end = nbr_elements();
    if (element == all_elements) return 0;
    if (element >= end) return fem::error_index;
    first = element;
    end = element + 1;
    return 0;
}

int numerical_model_base::get_DOFs_graph(const DOFs_mgr& table, std::uint32_t element, unsigned matrix_code,
                                         dense1D<unsigned int>& offsets, dense1D<unsigned int>& ids,
                                         const DOF_filter& filter) const {
    std::uint32_t first, end;
    if (const int rc = element_range(element, first, end)) return rc;
    for (std::uint32_t e = first; e < end; ++e) {
        const std::size_t before = ids.size();
        const int rc = get_DOFs(table, e, matrix_code, ids, filter);
        if (rc) return rc;
        if (ids.size() > before && !offsets.push_back(static_cast<unsigned int>(ids.size()))) return fem::error_memory;
    }
    return 0;
}

int numerical_model_base::get_FEs_of_DOFs(const DOFs_mgr& table, std::uint32_t element, unsigned matrix_code,
                                          const vector_fast<unsigned int>& rows, dense1D<unsigned int>* offsets,
                                          std::vector<FE_ID_pair>* pairs, dense1D<unsigned int>& scratch) const {
    if (!has_matrix(matrix_code)) return 0;
    const std::uint32_t n = nbr_elements();
    const std::uint32_t first = element == all_elements ? 0 : element;
    const std::uint32_t end = element == all_elements ? n : std::min<std::uint32_t>(n, element + 1);
    const DOF_filter all;
    for (std::uint32_t e = first; e < end; ++e) {
        scratch.clear();
        const int rc = get_DOFs(table, e, matrix_code, scratch, all);
        if (rc) return rc;
        for (std::size_t k = 0; k < scratch.size(); ++k) {
            const std::uint32_t row = rows.find(scratch[k]);
            if (row == DOF_index::npos) continue;
            const FE_ID_pair p = {ID_, e};
            if (offsets) {
                if (row >= offsets->size()) continue;
                unsigned int& cursor = (*offsets)[row];
                if (pairs && cursor < pairs->size()) (*pairs)[cursor] = p;
                ++cursor;
            } else if (pairs) {
                pairs->push_back(p);
            }
        }
    }
    return 0;
}

int numerical_model_base::get_FEs_of_DOFs(const DOFs_mgr& table, std::uint32_t element, unsigned matrix_code,
                                          const vector_fast<unsigned int>& rows, dense1D<unsigned int>& offsets,
                                          std::vector<FE_ID_pair>& pairs) const {
    const std::size_t n = rows.size();
    pairs.clear();
    if (!offsets.resize(n + 2)) return fem::error_memory;
    offsets.fill(0);
    dense1D<unsigned int> scratch;
    // Counting pass: the count of row r goes to offsets[r + 2].
    dense1D<unsigned int> counts = offsets.sub_vector(2, n);
    int rc = get_FEs_of_DOFs(table, element, matrix_code, rows, &counts, nullptr, scratch);
    if (rc) return rc;
    for (std::size_t i = 2; i < n + 2; ++i) offsets[i] += offsets[i - 1];
    pairs.resize(offsets[n + 1]);
    // Filling pass: offsets[r + 1] is the cursor of row r and ends at the start of r + 1.
    dense1D<unsigned int> cursors = offsets.sub_vector(1, n);
    rc = get_FEs_of_DOFs(table, element, matrix_code, rows, &cursors, &pairs, scratch);
    if (rc) return rc;
    offsets.resize(n + 1);
    return 0;
}

namespace {

// The connectivity of m and the range [first, end) of its columns that `element`
// names (all_elements: every one); -102 past the last element.
int element_columns(const numerical_model_base& m, std::uint32_t element, dense2D<unsigned int>& c, std::size_t& first,
                    std::size_t& end) {
    fem::element_type type = fem::FE_none;
    m.get_mesh(c, type);
    first = 0;
    end = c.cols();
    if (element == numerical_model_base::all_elements) return 0;
    if (element >= c.cols()) return fem::error_index;
    first = element;
    end = std::size_t(element) + 1;
    return 0;
}

}  // namespace

int numerical_model_base::get_nodes(std::uint32_t element, vector_fast<unsigned int>& set) const {
    dense2D<unsigned int> c;
    std::size_t first, end;
    if (const int rc = element_columns(*this, element, c, first, end)) return rc;
    for (std::size_t e = first; e < end; ++e)
        for (std::size_t i = 0; i < c.rows(); ++i) {
            const unsigned int node = c(i, e);
            if (node == 0xFFFFFFFFu) continue;
            if (set.insert(node).first == DOF_index::npos) return fem::error_memory;
        }
    return 0;
}

int numerical_model_base::get_nodes_graph(std::uint32_t element, dense1D<unsigned int>& offsets,
                                          dense1D<unsigned int>& ids) const {
    dense2D<unsigned int> c;
    std::size_t first, end;
    if (const int rc = element_columns(*this, element, c, first, end)) return rc;
    if (element == all_elements &&
        (!ids.reserve(ids.size() + c.rows() * c.cols(), 2) || !offsets.reserve(offsets.size() + c.cols(), 2)))
        return fem::error_memory;
    for (std::size_t e = first; e < end; ++e) {
        for (std::size_t i = 0; i < c.rows(); ++i) {
            const unsigned int node = c(i, e);
            if (node != 0xFFFFFFFFu && !ids.push_back(node)) return fem::error_memory;
        }
        if (!offsets.push_back(static_cast<unsigned int>(ids.size()))) return fem::error_memory;
    }
    return 0;
}

bool numerical_model_base::has_internal_states() const { return false; }

int numerical_model_base::get_internal_states_layout(internal_states_layout& layout) const {
    layout.record_size = 0;
    layout.values.clear_hard();
    layout.offsets = dense1D<unsigned int>();
    return layout.offsets.push_back(0) ? 0 : fem::error_memory;
}

int numerical_model_base::set_element_states(std::uint32_t, const dense1D<double>&) { return 0; }

int numerical_model_base::get_element_states(std::uint32_t, dense1D<double>& values) const {
    values.clear();
    return 0;
}

void numerical_model_base::reset_internal_states() {}

int numerical_model_base::set_internal_states(const internal_states& states) {
    if (!has_internal_states()) return 0;
    const internal_states_layout* layout = states.get(ID_);
    if (!layout) return 0;
    const std::uint32_t n = nbr_elements();
    for (std::uint32_t e = 0; e < n; ++e) {
        const int rc = set_element_states(e, layout->row(e));
        if (rc) return rc;
    }
    return 0;
}

int numerical_model_base::get_internal_states(Ptr<internal_states>& states) const {
    if (!has_internal_states()) return 0;
    internal_states_layout layout;
    int rc = get_internal_states_layout(layout);
    if (rc) return rc;
    const std::size_t total = layout.offsets.size() ? layout.offsets.back() : 0;
    if (layout.values.size() < total && !layout.values.resize(total, 0.0)) return fem::error_memory;
    if (!states) {
        states = new (std::nothrow) internal_states();
        if (!states) return fem::error_memory;
    }
    dense1D<double> values;
    for (std::size_t e = 0; e < layout.nbr_rows(); ++e) {
        dense1D<double> row = layout.row(e);
        if (row.size() == 0) continue;
        rc = get_element_states(static_cast<std::uint32_t>(e), values);
        if (rc) return rc;
        if (values.size() != row.size()) continue;
        for (std::size_t k = 0; k < row.size(); ++k) row[k] = values[k];
    }
    return states->set(ID_, layout) ? 0 : fem::error_memory;
}

int numerical_model_base::compute_matrix(unsigned, element_workspace& workspace) {
    workspace.reset();
    return 0;
}

int numerical_model_base::compute_load(const elementary_load&, element_workspace& workspace) {
    workspace.reset_vector();
    return 0;
}

int numerical_model_base::compute_projection(unsigned, unsigned, bool, element_workspace& workspace) {
    workspace.reset();
    return 0;
}

int numerical_model_base::assemble_matrix(unsigned matrix_code, assembly_args& args) {
    return assemble_kind(assemble_matrices, matrix_code, nullptr, 0, 0, args);
}

int numerical_model_base::assemble_load(const elementary_load& record, assembly_args& args) {
    return assemble_kind(assemble_loads, 0, &record, 0, 0, args);
}

int numerical_model_base::assemble_projection(unsigned field, unsigned component, assembly_args& args) {
    return assemble_kind(assemble_projections, fem::matrix_nodal, nullptr, field, component, args);
}

int numerical_model_base::get_output_shape(unsigned, unsigned& type, unsigned& rows, unsigned& cols) const {
    type = rows = cols = 0;
    return fem::error_element_type;
}

int numerical_model_base::get_stresses(std::uint32_t, const dense2D<double>&, const dense1D<double>&,
                                       const vector_fast<unsigned int>*, unsigned, dense2D<double>& out) const {
    out.clear();
    return fem::error_data;
}

// --- assembly loop -------------------------------------------------------------------

namespace {

// Adds what one element left in its workspace. A load adds only the vector.
int add_element(const numerical_model_base& model, element_workspace& ws, assembly_args& args, int kind) {
    const double f = args.factor;
    int rc = 0;
    if (kind != assemble_loads) {
        matrix_assembler_base* ma = args.matrix_assembler;
        const bool symmetric = ws.flags[1] != 0;
        if (ma) {
            if (ws.sym.matrix().dim() > 0 && (rc = ma->add_sym(f, ws.sym, symmetric))) return rc;
            if (ws.sparse.matrix().dim() > 0 && ws.sparse.matrix().nbr_entries() > 0 &&
                (rc = ma->add_sparse(f, ws.sparse, symmetric)))
                return rc;
            if (ws.diag.size() > 0 && (rc = ma->add_diag(f, ws.diag))) return rc;
            if (ws.gen.rows() * ws.gen.cols() > 0 && (rc = ma->add_gen(f, ws.gen))) return rc;
        }
    }
    if (ws.vector.size() > 0 && args.vector_assembler &&
        (rc = args.vector_assembler->add(f, ws.vector, model.ID(), ws.element_ID)))
        return rc;
    if (kind == assemble_loads) return 0;
    const double energy = f * ws.results[0];
    if (energy != 0.0 && args.element_energies && model.get_context()) {
        const std::uint32_t first = model.get_context()->models()->global_FE_ID(model.ID());
        if (first != numerical_model_base::no_ID) {
            const std::size_t g = std::size_t(first) + ws.element_ID;
            if (g < args.element_energies->size()) (*args.element_energies)[g] += energy;
        }
    }
    for (unsigned i = 0; i < nbr_element_results; ++i)
        if (i < 2 || f != 0.0) args.accumulators[i] += f * ws.results[i];
    return 0;
}

}  // namespace

int numerical_model_base::assemble_kind(int kind, unsigned matrix_code, const elementary_load* record, unsigned field,
                                        unsigned component, assembly_args& args) {
    if (kind == assemble_matrices && !has_matrix(matrix_code) && matrix_code != fem::matrix_nodal) return 0;
    if (kind == assemble_loads && !accepts_load(*record)) return 0;
    const double f = evolution_value(args.params.time);
    const double scale = kind == assemble_loads ? f * args.params.load_factor * args.factor : args.factor * f;
    if (scale == 0.0) return 0;

    // The element range: the list, else all elements, else the one element.
    const dense1D<unsigned int>* list = (args.elements && args.elements->size()) ? args.elements : nullptr;
    std::size_t count = 1;
    std::uint32_t first = args.element;
    if (list)
        count = list->size();
    else if (args.element == all_elements) {
        count = nbr_elements();
        first = 0;
    }
    auto element_at = [&](std::size_t k) -> std::uint32_t {
        return list ? (*list)[k] : static_cast<std::uint32_t>(first + k);
    };

    const double saved = args.factor;
    args.factor = scale;

    // One element: computed into ws, 0 or an error code.
    auto compute = [&](element_workspace& ws, std::uint32_t e) -> int {
        ws.element_ID = e;
        ws.reset();
        return guarded([&] {
            switch (kind) {
                case assemble_matrices: return compute_matrix(matrix_code, ws);
                case assemble_loads: return compute_load(*record, ws);
                default: return compute_projection(field, component, true, ws);
            }
        });
    };
    auto add = [&](element_workspace& ws) -> int {
        return guarded([&] { return add_element(*this, ws, args, kind); });
    };

    int first_error = 0;
    const int nbr_threads = static_cast<int>(args.params.nbr_threads);
    if (nbr_threads > 1 && count >= std::size_t(nbr_threads)) {
        // Elements are computed in batches by whichever thread is free, each into a
        // workspace of its own, then added in element order by one thread: the sums do
        // not depend on the number of threads. Batches rather than an element-by-element
        // hand-over keep the threads from waiting on each other at every element, which
        // costs dearly on a loaded machine. The first failure in element order wins;
        // later elements are not added.
        const std::size_t batch = std::min<std::size_t>(count, 32 * std::size_t(nbr_threads));
        std::vector<std::unique_ptr<element_workspace>> pool(batch);
        for (auto& w : pool) w.reset(new element_workspace(args, ID_));
        std::vector<int> codes(batch, 0);
        for (std::size_t start = 0; start < count && !first_error; start += batch) {
            const long m = static_cast<long>(std::min(batch, count - start));
#pragma omp parallel for schedule(dynamic, 1) num_threads(nbr_threads)
            for (long k = 0; k < m; ++k)
                codes[std::size_t(k)] = compute(*pool[std::size_t(k)], element_at(start + std::size_t(k)));
            for (long k = 0; k < m && !first_error; ++k) {
                int rc = codes[std::size_t(k)];
                if (rc == 0) rc = add(*pool[std::size_t(k)]);
                first_error = rc;
            }
        }
    } else {
        element_workspace ws(args, ID_);
        for (std::size_t k = 0; k < count && !first_error; ++k) {
            int rc = compute(ws, element_at(k));
            if (rc == 0) rc = add(ws);
            first_error = rc;
        }
    }
    args.factor = saved;
    return first_error;
}

}  // namespace core

namespace fem {

ORV_FEM_HANDLE_IMPL(numerical_model_base, base_class, core::numerical_model_base)

numerical_model_base::numerical_model_base() = default;

unsigned numerical_model_base::ID() const { return engine() ? engine()->ID() : 0xFFFFFFFFu; }

element_type numerical_model_base::get_FE_type() const { return engine() ? engine()->get_FE_type() : FE_none; }

void numerical_model_base::get_mesh(dense2D<unsigned int>& connectivity, element_type& type) const {
    if (engine()) return engine()->get_mesh(connectivity, type);
    connectivity.clear();
    type = FE_none;
}

namespace {
// The list of a set, sorted.
dense1D<unsigned int> sorted_list(const core::vector_fast<unsigned int>& set) {
    dense1D<unsigned int> out;
    if (!out.copy(set.list())) return dense1D<unsigned int>();
    std::sort(out.begin(), out.end());
    return out;
}
}  // namespace

namespace {
// A bare holder of an engine pointer, for narrowing it to the handle class it belongs to.
struct engine_holder : base_class {
    explicit engine_holder(void* w) : base_class(w) {}
};
}  // namespace

physics_model_base numerical_model_base::get_physics_model() const {
    if (!engine()) return physics_model_base();
    const Ptr<ref_counted> p = engine()->get_physics_model();
    if (!p) return physics_model_base();
    return physics_model_base(engine_holder(p.get()));
}

dense1D<unsigned int> numerical_model_base::get_nodes(unsigned element) const {
    core::vector_fast<unsigned int> set;
    if (!engine() || engine()->get_nodes(element, set)) return dense1D<unsigned int>();
    return sorted_list(set);
}

dense1D<unsigned int> numerical_model_base::get_DOFs(unsigned physics, const DOFs_mgr& table, unsigned state,
                                                     unsigned element) const {
    core::numerical_model_base* m = engine();
    if (!m) return dense1D<unsigned int>();
    const core::DOFs_mgr empty;
    const core::DOFs_mgr& t = table.engine() ? *table.engine() : empty;
    core::DOF_filter filter;
    if (state < 2) {
        filter.DOFs = &t;
        filter.state = state == 1;
    }
    core::vector_fast<unsigned int> set;
    try {
        if (m->get_DOFs(t, element, physics, set, filter)) return dense1D<unsigned int>();
    } catch (...) {
        return dense1D<unsigned int>();
    }
    return sorted_list(set);
}

error_type numerical_model_base::get_element_basis(const dense2D<double>& pos, unsigned element,
                                                   matrix_fixed<double, 3, 3>& R) const {
    if (!engine()) return error_data;
    return static_cast<error_type>(engine()->get_element_basis(pos, element, R));
}

error_type numerical_model_base::get_element_basis(const dense2D<double>& pos, unsigned element,
                                                   const dense2D<double>& U, unsigned column,
                                                   matrix_fixed<double, 3, 3>& R) const {
    if (!engine()) return error_data;
    if (column >= U.cols()) return error_data;
    dense2D<double> moved;
    if (!moved.copy(pos)) return error_memory;
    for (std::size_t node = 0; node < moved.cols(); ++node)
        for (std::size_t c = 0; c < 3 && c < moved.rows(); ++c) {
            const std::size_t row = node * fem::DOFs_per_node + c;
            if (row < U.rows()) moved(c, node) += U(row, column);
        }
    return static_cast<error_type>(engine()->get_element_basis(moved, element, R));
}

error_type numerical_model_base::get_local_basis(const dense2D<double>& pos, unsigned element,
                                                 matrix_fixed<double, 3, 3>& R) const {
    if (!engine()) return error_data;
    return static_cast<error_type>(engine()->get_local_basis(pos, element, R));
}

void numerical_model_base::set_evolution_func_ID(unsigned ID) {
    if (engine()) engine()->set_evolution_func_ID(ID);
}
unsigned numerical_model_base::get_evolution_func_ID() const {
    return engine() ? engine()->get_evolution_func_ID() : 0xFFFFFFFFu;
}

error_type numerical_model_base::set_hard_offsets(const dense2D<double>& pos, unsigned element,
                                                  const dense2D<double>& offsets, bool local,
                                                  const dense1D<unsigned int>& DOFs) {
    bool all_zero = true;
    for (std::size_t j = 0; j < offsets.cols() && all_zero; ++j)
        for (std::size_t i = 0; i < offsets.rows() && all_zero; ++i) all_zero = offsets(i, j) == 0.0;
    if (all_zero) return no_error;
    if (!engine() || offsets.rows() != 3 || offsets.cols() != nbr_nodes(engine()->get_FE_type())) return error_data;
    return static_cast<error_type>(engine()->set_hard_offsets(pos, element, offsets, local, DOFs));
}

error_type numerical_model_base::set_hard_offsets(const dense2D<double>& pos, unsigned element,
                                                  const vector_fixed<double, 3>& offset_1,
                                                  const vector_fixed<double, 3>& offset_2, bool local,
                                                  const dense1D<unsigned int>& DOFs) {
    dense2D<double> offsets(3, 2);
    if (offsets.rows() != 3) return error_memory;
    for (std::size_t i = 0; i < 3; ++i) {
        offsets(i, 0) = offset_1[i];
        offsets(i, 1) = offset_2[i];
    }
    return set_hard_offsets(pos, element, offsets, local, DOFs);
}

error_type numerical_model_base::set_hard_offsets(const vector_fixed<double, 3>& offset,
                                                  const dense1D<unsigned int>& DOFs) {
    if (offset[0] == 0.0 && offset[1] == 0.0 && offset[2] == 0.0) return no_error;
    if (!engine()) return error_data;
    return static_cast<error_type>(engine()->set_hard_offsets(offset, DOFs));
}

}  // namespace fem
}  // namespace orv
