// Public real matrices of results: one row per DOF ID, one column per load case, mode
// or time step; and the states, which add per-column stress data and step values.
#pragma once

#include <cstdint>

#include <orv/fem/base_class.h>
#include <orv/fem/error_type.h>
#include <orv/fem/field_tag.h>
#include <orv/fem/stress_mgr.h>

#include <orvmath1/dense1D.h>
#include <orvmath1/dense2D.h>
#include <orvmath1/vector_fixed.h>

namespace orv {
namespace core {
template <class T>
class vector_fast;
template <class T>
class dense2D_OOC;
template <class I, class M>
class indexed2D_row;
template <class M>
class FEM_matrix_impl;
template <class M>
class FEM_states;
typedef indexed2D_row<vector_fast<unsigned>, dense2D_OOC<double>> indexed_dense_OOC;
typedef FEM_matrix_impl<indexed_dense_OOC> FEM_matrix_engine;
typedef FEM_states<indexed_dense_OOC> FEM_states_engine;
}  // namespace core
namespace fem {

class FEM_states;

/// A real matrix whose rows carry DOF IDs. Rows are addressed by ID (or by position
/// where the name says so), columns by index; all of them as 64-bit unsigned.
/// Copies of the handle share the matrix; copy() duplicates it.
///
/// Errors: -101 when an ID or a column is out of range, -199 when memory fails, -200
/// when a column cannot be brought into memory. A getter sets its output to 0.0 first.
/// The default constructor makes an empty matrix (0 rows, 0 columns).
class FEM_matrix : public base_class {
public:
    ORV_FEM_HANDLE(FEM_matrix, core::FEM_matrix_engine)

    /// Row IDs, row positions and column indices.
    typedef std::uint64_t index_type;

    FEM_matrix();
    /// One row per distinct ID (first occurrences, in the given order), `columns`
    /// columns set to `value`.
    FEM_matrix(const dense1D<unsigned int>& IDs, index_type columns, double value = 0.0);
    /// A view on the columns [first_col, first_col + n_cols) of other, capped to the
    /// columns that exist. It shares other's values and IDs.
    FEM_matrix(const FEM_matrix& other, index_type first_col, index_type n_cols);
    /// other's IDs with the given values (shared), which must have other's row count;
    /// otherwise the matrix is empty.
    FEM_matrix(const FEM_matrix& other, const dense2D<double>& values);
    /// Adopts an engine object (null gives an empty handle).
    explicit FEM_matrix(core::FEM_matrix_engine* engine);

    /// Number of rows (DOF IDs).
    index_type rows() const;
    /// Number of columns.
    index_type cols() const;
    /// Position of an ID, ~0 when the matrix has no such row.
    index_type row_pos(index_type ID) const;
    /// The row IDs in row order (shared list).
    dense1D<unsigned int> get_IDs() const;

    /// Values by ID and column.
    error_type get_val(index_type ID, index_type col, double& value) const;
    /// An unknown ID is skipped (0); a column past the end gives -101.
    error_type set_val(index_type ID, index_type col, double value);
    /// As set_val, but an unknown ID gives -101.
    error_type setID_val(index_type ID, index_type col, double value);

    /// Columns [first, first + n) of a row, capped to the end; -101 for an unknown ID.
    error_type get_row(index_type ID, dense1D<double>& v, index_type first, index_type n) const;
    /// Columns [col, cols()) of a row.
    error_type get_row(index_type ID, dense1D<double>& v, index_type col) const;
    /// All columns of a row.
    error_type get_row(index_type ID, dense1D<double>& v) const;
    /// Writes v into columns [col, col + v.size()), which must exist. An unknown ID is
    /// skipped (0).
    error_type set_row(index_type ID, const dense1D<double>& v, index_type col);
    /// As set_row, but an unknown ID gives -101.
    error_type setID_row(index_type ID, const dense1D<double>& v, index_type col);

    /// A view on column c while it is in memory, else empty.
    dense1D<double> col(index_type c) const;
    /// Copy of column c; -101 when c is out of range.
    error_type get_col(index_type c, dense1D<double>& v) const;
    /// v must have rows() values.
    error_type set_col(index_type c, const dense1D<double>& v);

    /// Nodal vectors: the three components of a node in a field (field_displacement,
    /// field_rotation, field_temperature; any other tag gives -101). A missing ID reads
    /// 0.0 and is skipped on writing.
    error_type get_vector(index_type node, field_tag tag, index_type col, vector_fixed<double, 3>& v) const;
    /// The vectors of `node` in the columns [first_col, cols()): out is 3 x (cols() -
    /// first_col), one column per matrix column.
    error_type get_vectors(index_type node, field_tag tag, index_type first_col, dense2D<double>& out) const;
    /// Writes the three components of a node in a field; missing IDs are skipped.
    error_type set_vector(index_type node, field_tag tag, index_type col, const vector_fixed<double, 3>& v);

    /// Appends other's columns (rows matched by ID, a missing one reads 0.0).
    error_type push_back(const FEM_matrix& other);
    /// Removes the last n columns (all of them when n exceeds cols()).
    error_type pop_back(index_type n);

    /// Value copy of other (self-copy does nothing). The source is made resident first;
    /// a target that cannot be had in memory is cleared, and -199 is returned.
    error_type copy(const FEM_matrix& other);
    /// Sets every value.
    error_type copy(double value);
    /// Empty matrix; the handle stays valid.
    void clear();
    /// This matrix shares other's values and IDs from now on.
    void shallow_copy(const FEM_matrix& other);

    /// this += alpha * other on the IDs both have; the column counts must agree (-101).
    error_type axpy(double alpha, const FEM_matrix& other);
    /// pos(c, node) += alpha * U(ID, col) for each displacement DOF (ID % 9 < 3), with
    /// node = ID / 9 and c = ID % 9; pos has 3 rows and one column per node, nodes past
    /// its columns are skipped.
    error_type add_displacements(dense2D<double>& pos, index_type col, double alpha) const;

    /// True when every column is in memory.
    bool is_all_incore() const;
    /// Brings the whole matrix into memory for good; false when it cannot.
    bool force_incore();
    /// A view on the columns that are in memory (empty for none, and for a matrix
    /// without columns).
    dense2D<double> as_raw_matrix() const;
};

/// A FEM_matrix with a stress manager and a step value for each column.
class FEM_states : public FEM_matrix {
public:
    ORV_FEM_HANDLE(FEM_states, core::FEM_states_engine)

    /// Empty states.
    FEM_states();
    /// One row per distinct ID, `columns` columns set to `value`, no stress manager.
    FEM_states(const dense1D<unsigned int>& IDs, index_type columns, double value = 0.0);
    /// A view on columns of other, with their stress managers and steps (shared).
    FEM_states(const FEM_states& other, index_type first_col, index_type n_cols);
    /// Adopts an engine object (null gives an empty handle).
    explicit FEM_states(core::FEM_states_engine* engine);

    /// Column col as a FEM_states of its own (a view); empty handle when out of range.
    FEM_states get_state(index_type col) const;
    /// As get_state(col), into out; -101 when col is out of range (out emptied).
    error_type get_state(index_type col, FEM_states& out) const;
    /// The stress manager of a column (an empty handle when none was set).
    error_type get_stress_mgr(index_type col, stress_mgr& out) const;
    /// Sets the stress manager of a column; -101 when col is out of range.
    error_type set_stress_mgr(index_type col, const stress_mgr& in);
    /// Step value of the solver for a column (time, load factor, frequency).
    error_type get_step_value(index_type col, double& value) const;
    /// Sets the step value of a column; -101 when col is out of range.
    error_type set_step_value(index_type col, double value);

    using FEM_matrix::copy;
    /// Value copy, stress managers shared.
    error_type copy(const FEM_states& other);
    /// Appends columns; the new columns of a plain FEM_matrix get no stress manager.
    error_type push_back(const FEM_matrix& other);
    /// Removes the last n columns with their stress managers and steps.
    error_type pop_back(index_type n);
    /// Empty states, stress managers and steps dropped; the handle stays valid.
    void clear();
};

}  // namespace fem
}  // namespace orv
