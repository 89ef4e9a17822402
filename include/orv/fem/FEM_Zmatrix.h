// Public complex matrices of results (harmonic responses) and their states.
#pragma once

#include <complex>
#include <cstdint>

#include <orv/fem/FEM_matrix.h>
#include <orv/fem/base_class.h>
#include <orv/fem/error_type.h>
#include <orv/fem/field_tag.h>
#include <orv/fem/stress_mgr.h>

#include <orvmath1/dense1D.h>
#include <orvmath1/dense2D.h>

namespace orv {
namespace core {
typedef indexed2D_row<vector_fast<unsigned>, dense2D_OOC<std::complex<double>>> indexed_Zdense_OOC;
typedef FEM_matrix_impl<indexed_Zdense_OOC> FEM_Zmatrix_engine;
typedef FEM_states<indexed_Zdense_OOC> FEM_Zstates_engine;
}  // namespace core
namespace fem {

class FEM_Zstates;

/// The complex form of FEM_matrix: the same operations with std::complex<double>
/// values, plus the real and imaginary parts and the mixed axpy forms.
class FEM_Zmatrix : public base_class {
public:
    ORV_FEM_HANDLE(FEM_Zmatrix, core::FEM_Zmatrix_engine)

    /// Row IDs, row positions and column indices.
    typedef std::uint64_t index_type;
    /// The value type.
    typedef std::complex<double> value_type;

    /// Empty matrix (0 rows, 0 columns).
    FEM_Zmatrix();
    /// One row per distinct ID (first occurrences, in the given order), `columns`
    /// columns set to `value`.
    FEM_Zmatrix(const dense1D<unsigned int>& IDs, index_type columns, value_type value = value_type());
    /// A view on the columns [first_col, first_col + n_cols) of other, capped to the
    /// columns that exist; it shares other's values and IDs.
    FEM_Zmatrix(const FEM_Zmatrix& other, index_type first_col, index_type n_cols);
    /// other's IDs with the given values (shared), which must have other's row count;
    /// otherwise the matrix is empty.
    FEM_Zmatrix(const FEM_Zmatrix& other, const dense2D<value_type>& values);
    /// Adopts an engine object (null gives an empty handle).
    explicit FEM_Zmatrix(core::FEM_Zmatrix_engine* engine);

    /// Number of rows (DOF IDs).
    index_type rows() const;
    /// Number of columns.
    index_type cols() const;
    /// Position of an ID, ~0 when the matrix has no such row.
    index_type row_pos(index_type ID) const;
    /// The row IDs in row order (shared list).
    dense1D<unsigned int> get_IDs() const;

    /// Value by ID and column; -101 for a column out of range (value set to 0 first).
    error_type get_val(index_type ID, index_type col, value_type& value) const;
    /// Sets a value; an unknown ID is skipped (0), a column past the end gives -101.
    error_type set_val(index_type ID, index_type col, value_type value);
    /// As set_val, but an unknown ID gives -101.
    error_type setID_val(index_type ID, index_type col, value_type value);

    /// Columns [first, first + n) of a row, capped to the end; -101 for an unknown ID.
    error_type get_row(index_type ID, dense1D<value_type>& v, index_type first, index_type n) const;
    /// Columns [col, cols()) of a row.
    error_type get_row(index_type ID, dense1D<value_type>& v, index_type col) const;
    /// All columns of a row.
    error_type get_row(index_type ID, dense1D<value_type>& v) const;
    /// Writes v into columns [col, col + v.size()), which must exist (-101); an unknown
    /// ID is skipped (0).
    error_type set_row(index_type ID, const dense1D<value_type>& v, index_type col);
    /// As set_row, but an unknown ID gives -101.
    error_type setID_row(index_type ID, const dense1D<value_type>& v, index_type col);

    /// A view on column c while it is in memory, else empty.
    dense1D<value_type> col(index_type c) const;
    /// Copy of column c; -101 when c is out of range.
    error_type get_col(index_type c, dense1D<value_type>& v) const;
    /// Writes column c; v must have rows() values (-101).
    error_type set_col(index_type c, const dense1D<value_type>& v);

    /// The three components of a node in a field, as a vector of 3 values.
    error_type get_vector(index_type node, field_tag tag, index_type col, dense1D<value_type>& v) const;
    /// The vectors of `node` in the columns [first_col, cols()): out is 3 x (cols() -
    /// first_col), one column per matrix column.
    error_type get_vectors(index_type node, field_tag tag, index_type first_col, dense2D<value_type>& out) const;
    /// v must have 3 values.
    error_type set_vector(index_type node, field_tag tag, index_type col, const dense1D<value_type>& v);

    /// Appends other's columns, rows matched by ID (a missing one reads 0).
    error_type push_back(const FEM_Zmatrix& other);
    /// Removes the last n columns.
    error_type pop_back(index_type n);

    /// Value copy of other (self-copy does nothing); -199 when the target cannot be
    /// had in memory (it is then cleared).
    error_type copy(const FEM_Zmatrix& other);
    /// Sets every value.
    error_type copy(value_type value);
    /// Empty matrix; the handle stays valid.
    void clear();
    /// This matrix shares other's values and IDs from now on.
    void shallow_copy(const FEM_Zmatrix& other);

    /// this += alpha * other on the IDs both have; the column counts must agree (-101).
    error_type axpy(double alpha, const FEM_Zmatrix& other);
    /// this += alpha * other with a real other, on the IDs both have.
    error_type axpy(double alpha, const FEM_matrix& other);
    /// this += alpha * other with a complex factor.
    error_type axpy(value_type alpha, const FEM_Zmatrix& other);
    /// this += alpha * other with a complex factor and a real other.
    error_type axpy(value_type alpha, const FEM_matrix& other);

    /// Real and imaginary parts as new real matrices with the same IDs.
    FEM_matrix real() const;
    /// Imaginary part as a new real matrix with the same IDs.
    FEM_matrix imag() const;

    /// True when every column is in memory.
    bool is_all_incore() const;
    /// Brings the whole matrix into memory for good; false when it cannot.
    bool force_incore();
    /// A view on the columns that are in memory (empty for none).
    dense2D<value_type> as_raw_matrix() const;
};

/// A FEM_Zmatrix with a stress manager and a step value for each column.
class FEM_Zstates : public FEM_Zmatrix {
public:
    ORV_FEM_HANDLE(FEM_Zstates, core::FEM_Zstates_engine)

    /// Empty states.
    FEM_Zstates();
    /// One row per distinct ID, `columns` columns set to `value`, no stress manager.
    FEM_Zstates(const dense1D<unsigned int>& IDs, index_type columns, value_type value = value_type());
    /// A view on columns of other, with their stress managers and steps (shared).
    FEM_Zstates(const FEM_Zstates& other, index_type first_col, index_type n_cols);
    /// Adopts an engine object (null gives an empty handle).
    explicit FEM_Zstates(core::FEM_Zstates_engine* engine);

    /// Column col as a FEM_Zstates of its own (a view); empty when out of range.
    FEM_Zstates get_state(index_type col) const;
    /// As get_state(col), into out; -101 when col is out of range.
    error_type get_state(index_type col, FEM_Zstates& out) const;
    /// The stress manager of a column (an empty handle when none was set).
    error_type get_stress_mgr(index_type col, stress_mgr& out) const;
    /// Sets the stress manager of a column; -101 when col is out of range.
    error_type set_stress_mgr(index_type col, const stress_mgr& in);
    /// Step value of the solver for a column (time, load factor, frequency).
    error_type get_step_value(index_type col, double& value) const;
    /// Sets the step value of a column; -101 when col is out of range.
    error_type set_step_value(index_type col, double value);

    /// The value copies of FEM_Zmatrix.
    using FEM_Zmatrix::copy;
    /// Value copy, stress managers shared.
    error_type copy(const FEM_Zstates& other);
    /// Appends columns; the new columns of a plain FEM_Zmatrix get no stress manager.
    error_type push_back(const FEM_Zmatrix& other);
    /// Removes the last n columns with their stress managers and steps.
    error_type pop_back(index_type n);
    /// Empty states, stress managers and steps dropped; the handle stays valid.
    void clear();
};

}  // namespace fem
}  // namespace orv
