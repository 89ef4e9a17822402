// Public handle of the symmetric sparse matrix with DOF IDs.
#include <orv/fem/FEM_SymSparse.h>

#include <cstdio>
#include <new>

#include "linalg/FEM_binary_io.h"
#include "linalg/indexed_sym.h"
#include "linalg/vector_fast.h"

namespace orv {
namespace fem {

namespace {

typedef core::FEM_SymSparse_engine engine_type;
typedef core::vector_fast<unsigned> ID_list;

// The ID list of a vector of IDs (first occurrences), null when memory fails.
Ptr<ID_list> make_IDs(const dense1D<unsigned int>& IDs) {
    Ptr<ID_list> ids(new (std::nothrow) ID_list());
    if (!ids || (IDs.size() && !ids->init(IDs.begin(), IDs.end()))) return Ptr<ID_list>();
    return ids;
}

}  // namespace

ORV_FEM_HANDLE_IMPL(FEM_SymSparse, base_class, core::FEM_SymSparse_engine)

FEM_SymSparse::FEM_SymSparse() { set_w(static_cast<ref_counted*>(new (std::nothrow) engine_type())); }

FEM_SymSparse::FEM_SymSparse(const dense1D<unsigned int>& IDs, const symmetric_sparse<double>& values)
    : FEM_SymSparse() {
    init(IDs, values);
}

FEM_SymSparse::FEM_SymSparse(core::FEM_SymSparse_engine* e) { set_w(static_cast<ref_counted*>(e)); }

error_type FEM_SymSparse::init(const dense1D<unsigned int>& IDs, const symmetric_sparse<double>& values) {
    if (!engine()) return error_data;
    if (!values.is_valid()) return error_data;
    Ptr<ID_list> ids = make_IDs(IDs);
    if (!ids) return error_memory;
    if (ids->size() != IDs.size() || ids->size() != values.dim()) return error_data;
    engine()->matrix() = values;
    engine()->set_IDs(ids);
    return no_error;
}

FEM_SymSparse::index_type FEM_SymSparse::dim() const { return engine() ? engine()->matrix().dim() : 0; }

dense1D<unsigned int> FEM_SymSparse::get_IDs() const {
    if (!engine() || !engine()->get_IDs()) return dense1D<unsigned int>();
    return engine()->get_IDs()->list();
}

error_type FEM_SymSparse::set_IDs(const dense1D<unsigned int>& IDs) {
    if (!engine()) return error_data;
    Ptr<ID_list> ids = make_IDs(IDs);
    if (!ids) return error_memory;
    if (ids->size() != IDs.size() || ids->size() != engine()->matrix().dim()) return error_data;
    engine()->set_IDs(ids);
    return no_error;
}

FEM_SymSparse::index_type FEM_SymSparse::pos(index_type ID) const {
    if (!engine() || ID > 0xFFFFFFFFull) return ~index_type(0);
    const std::uint32_t p = engine()->position(static_cast<unsigned>(ID));
    return p == engine_type::npos ? ~index_type(0) : index_type(p);
}

error_type FEM_SymSparse::get_val(index_type i, index_type j, double& value) const {
    value = 0.0;
    if (!engine()) return error_data;
    const std::size_t n = engine()->matrix().dim();
    if (i >= n || j >= n) return error_data;
    return static_cast<error_type>(engine()->matrix().get(std::size_t(i), std::size_t(j), value));
}

error_type FEM_SymSparse::set_val(index_type i, index_type j, double value) {
    if (!engine()) return error_data;
    const std::size_t n = engine()->matrix().dim();
    if (i >= n || j >= n) return error_data;
    double* p = engine()->matrix().find(std::size_t(i), std::size_t(j));
    if (!p) return error_data;
    *p = value;
    return no_error;
}

error_type FEM_SymSparse::getID_val(index_type ID_i, index_type ID_j, double& value) const {
    value = 0.0;
    const index_type i = pos(ID_i), j = pos(ID_j);
    if (i == ~index_type(0) || j == ~index_type(0)) return error_data;
    return get_val(i, j, value);
}

error_type FEM_SymSparse::setID_val(index_type ID_i, index_type ID_j, double value) {
    const index_type i = pos(ID_i), j = pos(ID_j);
    if (i == ~index_type(0) || j == ~index_type(0)) return error_data;
    return set_val(i, j, value);
}

symmetric_sparse<double> FEM_SymSparse::as_raw_matrix() const {
    return engine() ? engine()->matrix() : symmetric_sparse<double>();
}

error_type FEM_SymSparse::copy(const FEM_SymSparse& other) {
    if (!engine() || !other.engine()) return error_data;
    if (engine() == other.engine()) return no_error;
    symmetric_sparse<double> m;
    if (!m.copy(other.engine()->matrix())) return error_memory;
    engine()->matrix() = m;
    engine()->set_IDs(other.engine()->get_IDs());
    return no_error;
}

void FEM_SymSparse::shallow_copy(const FEM_SymSparse& other) {
    if (!engine() || !other.engine() || engine() == other.engine()) return;
    engine()->matrix() = other.engine()->matrix();
    engine()->set_IDs(other.engine()->get_IDs());
}

void FEM_SymSparse::clear() {
    if (!engine()) return;
    engine()->matrix().clear();
    engine()->set_IDs(Ptr<ID_list>());
}

error_type FEM_SymSparse::save(const char* file) const {
    if (!engine() || !file) return static_cast<error_type>(-1);
    core::binary_writer out(file);
    const symmetric_sparse<double>& m = engine()->matrix();
    const ID_list* ids = engine()->get_IDs().get();
    out.items(ids ? ids->data() : nullptr, ids ? ids->size() : 0);
    out.items(m.data(), m.size());
    out.items(m.pointers().data(), m.pointers().size());
    out.items(m.columns().data(), m.columns().size());
    return static_cast<error_type>(out.close());
}

}  // namespace fem
}  // namespace orv
