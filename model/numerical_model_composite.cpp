// Composite model: forwards the model contract to its children, in the order of its list.
#include "model/numerical_model_composite.h"
#include <orv/fem/error_type.h>

#include <new>

#include <orv/fem/numerical_model_composite.h>

#include "frame/context_type.h"
#include "model/element_workspace.h"
#include "model/internal_states.h"
#include "model/numerical_models_mgr.h"

namespace orv {
namespace core {

numerical_model_composite::numerical_model_composite(context_type* ctx) : numerical_model_base(ctx) {
    register_self(1);
}

numerical_model_composite::~numerical_model_composite() = default;

bool numerical_model_composite::insert(std::uint32_t ID) {
    std::lock_guard<std::mutex> guard(lock_);
    return NM_IDs_.push_back(ID);
}

bool numerical_model_composite::insert(const dense1D<unsigned int>& IDs) {
    const dense1D<unsigned int> src(IDs);  // IDs may be our own list
    std::lock_guard<std::mutex> guard(lock_);
    const std::size_t n = src.size();
    if (!NM_IDs_.reserve(NM_IDs_.size() + n, 2)) return false;
    for (std::size_t i = 0; i < n; ++i) NM_IDs_.push_back(src[i]);
    return true;
}

bool numerical_model_composite::reserve(std::size_t n) {
    std::lock_guard<std::mutex> guard(lock_);
    return NM_IDs_.reserve(n);
}

numerical_model_base* numerical_model_composite::get_NM(std::uint32_t i) const {
    if (i >= NM_IDs_.size() || !get_context()) return nullptr;
    return get_context()->models()->get_NM(NM_IDs_[i]);
}

template <class F>
int numerical_model_composite::for_each_child(F f) const {
    const std::size_t n = NM_IDs_.size();
    for (std::size_t i = 0; i < n; ++i) {
        numerical_model_base* child = get_NM(static_cast<std::uint32_t>(i));
        if (!child) continue;
        const int rc = f(child);
        if (rc) return rc;
    }
    return 0;
}

std::uint32_t numerical_model_composite::nbr_elements() const {
    std::uint32_t sum = 0;
    for_each_child([&](numerical_model_base* c) {
        sum += c->nbr_elements();
        return 0;
    });
    return sum;
}

double numerical_model_composite::get_size(const dense2D<double>& pos) const {
    double size = 0.0;
    for_each_child([&](numerical_model_base* c) {
        const double s = c->get_size(pos);
        if (s > size) size = s;
        return 0;
    });
    return size;
}

void numerical_model_composite::collect_simple_models(std::vector<Ptr<numerical_model_base>>& list) {
    for_each_child([&](numerical_model_base* c) {
        c->collect_simple_models(list);
        return 0;
    });
}

double numerical_model_composite::get_element_value(std::uint32_t element) const {
    double value = 0.0;
    for_each_child([&](numerical_model_base* c) {
        const double v = c->get_element_value(element);
        if (v > value) value = v;
        return 0;
    });
    return value;
}

void numerical_model_composite::set_transformer(const Ptr<ref_counted>& transformer) {
    numerical_model_base::set_transformer(transformer);
    for_each_child([&](numerical_model_base* c) {
        c->set_transformer(transformer);
        return 0;
    });
}

int numerical_model_composite::get_DOFs(const DOFs_mgr& table, std::uint32_t element, unsigned matrix_code,
                                        dense1D<unsigned int>& list, const DOF_filter& filter) const {
    return for_each_child(
        [&](numerical_model_base* c) { return c->get_DOFs(table, element, matrix_code, list, filter); });
}

int numerical_model_composite::get_DOFs(const DOFs_mgr& table, std::uint32_t element, unsigned matrix_code,
                                        vector_fast<unsigned int>& set, const DOF_filter& filter) const {
    return for_each_child(
        [&](numerical_model_base* c) { return c->get_DOFs(table, element, matrix_code, set, filter); });
}

int numerical_model_composite::get_DOFs_graph(const DOFs_mgr& table, std::uint32_t element, unsigned matrix_code,
                                              dense1D<unsigned int>& offsets, dense1D<unsigned int>& ids,
                                              const DOF_filter& filter) const {
    return for_each_child(
        [&](numerical_model_base* c) { return c->get_DOFs_graph(table, element, matrix_code, offsets, ids, filter); });
}

int numerical_model_composite::get_FEs_of_DOFs(const DOFs_mgr& table, std::uint32_t element, unsigned matrix_code,
                                               const vector_fast<unsigned int>& rows, dense1D<unsigned int>* offsets,
                                               std::vector<FE_ID_pair>* pairs, dense1D<unsigned int>& scratch) const {
    return for_each_child([&](numerical_model_base* c) {
        return c->get_FEs_of_DOFs(table, element, matrix_code, rows, offsets, pairs, scratch);
    });
}

int numerical_model_composite::get_nodes(std::uint32_t element, vector_fast<unsigned int>& set) const {
    return for_each_child([&](numerical_model_base* c) { return c->get_nodes(element, set); });
}

int numerical_model_composite::get_nodes_graph(std::uint32_t element, dense1D<unsigned int>& offsets,
                                               dense1D<unsigned int>& ids) const {
    return for_each_child([&](numerical_model_base* c) { return c->get_nodes_graph(element, offsets, ids); });
}

void numerical_model_composite::reset_internal_states() {
    for_each_child([&](numerical_model_base* c) {
        c->reset_internal_states();
        return 0;
    });
}

int numerical_model_composite::set_internal_states(const internal_states& states) {
    return for_each_child([&](numerical_model_base* c) { return c->set_internal_states(states); });
}

int numerical_model_composite::get_internal_states(Ptr<internal_states>& states) const {
    return for_each_child([&](numerical_model_base* c) { return c->get_internal_states(states); });
}

namespace {
// Runs `body` with args.factor scaled by the composite's own evolution function, and
// restores the factor afterwards. A scale of exactly 0.0 skips the children.
template <class F>
int scaled_children(const numerical_model_base& self, assembly_args& args, F body) {
    const double scale = args.factor * self.evolution_value(args.params.time);
    if (scale == 0.0) return 0;
    const double saved = args.factor;
    args.factor = scale;
    const int rc = body();
    args.factor = saved;
    return rc;
}
}  // namespace

int numerical_model_composite::assemble_matrix(unsigned matrix_code, assembly_args& args) {
    return scaled_children(*this, args, [&] {
        return for_each_child([&](numerical_model_base* c) { return c->assemble_matrix(matrix_code, args); });
    });
}

int numerical_model_composite::assemble_load(const elementary_load& record, assembly_args& args) {
    return scaled_children(*this, args, [&] {
        return for_each_child([&](numerical_model_base* c) { return c->assemble_load(record, args); });
    });
}

int numerical_model_composite::assemble_projection(unsigned field, unsigned component, assembly_args& args) {
    return scaled_children(*this, args, [&] {
        return for_each_child([&](numerical_model_base* c) { return c->assemble_projection(field, component, args); });
    });
}

int numerical_model_composite::get_output_shape(unsigned output_code, unsigned& type, unsigned& rows,
                                                unsigned& cols) const {
    type = rows = cols = 0;
    bool found = false;
    return for_each_child([&](numerical_model_base* c) {
        unsigned t = 0, r = 0, k = 0;
        const int rc = c->get_output_shape(output_code, t, r, k);
        if (r == 0) return 0;  // a child without that output is left out
        if (rc) return rc;
        if (!found) {
            found = true;
            type = t;
            rows = r;
            cols = k;
            return 0;
        }
        return t == type ? 0 : fem::error_element_type;
    });
}

}  // namespace core

namespace fem {

ORV_FEM_HANDLE_IMPL(numerical_model_composite, numerical_model_base, core::numerical_model_composite)

numerical_model_composite::numerical_model_composite() = default;

numerical_model_composite::numerical_model_composite(context& ctx) { create(ctx); }

error_type numerical_model_composite::create(context& ctx) {
    if (!ctx.engine()) return error_data;
    try {
        core::numerical_model_composite* e = new core::numerical_model_composite(ctx.engine());
        set_w(static_cast<ref_counted*>(e));
        if (e->ID() == 0xFFFFFFFFu) return error_memory;
        return no_error;
    } catch (const std::bad_alloc&) {
        return error_memory;
    }
}

error_type numerical_model_composite::insert(unsigned ID) {
    if (!engine()) return error_data;
    return engine()->insert(ID) ? no_error : error_memory;
}
error_type numerical_model_composite::insert(unsigned a, unsigned b) {
    const unsigned ids[2] = {a, b};
    return insert(dense1D<unsigned int>(2, const_cast<unsigned*>(ids)));
}
error_type numerical_model_composite::insert(unsigned a, unsigned b, unsigned c) {
    const unsigned ids[3] = {a, b, c};
    return insert(dense1D<unsigned int>(3, const_cast<unsigned*>(ids)));
}
error_type numerical_model_composite::insert(unsigned a, unsigned b, unsigned c, unsigned d) {
    const unsigned ids[4] = {a, b, c, d};
    return insert(dense1D<unsigned int>(4, const_cast<unsigned*>(ids)));
}
error_type numerical_model_composite::insert(const dense1D<unsigned int>& IDs) {
    if (!engine()) return error_data;
    return engine()->insert(IDs) ? no_error : error_memory;
}

bool numerical_model_composite::reserve(unsigned n) { return engine() && engine()->reserve(n); }
unsigned numerical_model_composite::size() const { return engine() ? engine()->size() : 0u; }
unsigned numerical_model_composite::get_NM_ID(unsigned i) const {
    return engine() ? engine()->get_NM_ID(i) : 0xFFFFFFFFu;
}
dense1D<unsigned int> numerical_model_composite::get_NM_IDs() const {
    return engine() ? engine()->get_NM_IDs() : dense1D<unsigned int>();
}

numerical_model_base numerical_model_composite::get_NM(unsigned i) const {
    numerical_model_base h;
    if (!engine()) return h;
    if (core::numerical_model_base* m = engine()->get_NM(i)) h.set_w(static_cast<ref_counted*>(m));
    return h;
}

}  // namespace fem
}  // namespace orv
