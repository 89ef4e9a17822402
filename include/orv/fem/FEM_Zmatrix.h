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

// The complex form of FEM_matrix: the same operations with std::complex<double>
// values, plus the real and imaginary parts and the mixed axpy forms.
class FEM_Zmatrix : public base_class {
public:
    ORV_FEM_HANDLE(FEM_Zmatrix, core::FEM_Zmatrix_engine)

    typedef std::uint64_t index_type;
    typedef std::complex<double> value_type;

    FEM_Zmatrix();
    FEM_Zmatrix(const dense1D<unsigned int>& IDs, index_type columns, value_type value = value_type());
    FEM_Zmatrix(const FEM_Zmatrix& other, index_type first_col, index_type n_cols);
    FEM_Zmatrix(const FEM_Zmatrix& other, const dense2D<value_type>& values);
    explicit FEM_Zmatrix(core::FEM_Zmatrix_engine* engine);

    index_type rows() const;
    index_type cols() const;
    index_type row_pos(index_type ID) const;
    dense1D<unsigned int> get_IDs() const;

    error_type get_val(index_type ID, index_type col, value_type& value) const;
    error_type set_val(index_type ID, index_type col, value_type value);
    error_type setID_val(index_type ID, index_type col, value_type value);

    error_type get_row(index_type ID, dense1D<value_type>& v, index_type first, index_type n) const;
    error_type get_row(index_type ID, dense1D<value_type>& v, index_type col) const;
    error_type get_row(index_type ID, dense1D<value_type>& v) const;
    error_type set_row(index_type ID, const dense1D<value_type>& v, index_type col);
    error_type setID_row(index_type ID, const dense1D<value_type>& v, index_type col);

    dense1D<value_type> col(index_type c) const;
    error_type get_col(index_type c, dense1D<value_type>& v) const;
    error_type set_col(index_type c, const dense1D<value_type>& v);

    // The three components of a node in a field, as a vector of 3 values.
    error_type get_vector(index_type node, field_tag tag, index_type col, dense1D<value_type>& v) const;
    error_type get_vectors(index_type node, field_tag tag, index_type first_col, dense2D<value_type>& out) const;
    // v must have 3 values.
    error_type set_vector(index_type node, field_tag tag, index_type col, const dense1D<value_type>& v);

    error_type push_back(const FEM_Zmatrix& other);
    error_type pop_back(index_type n);

    error_type copy(const FEM_Zmatrix& other);
    error_type copy(value_type value);
    void clear();
    void shallow_copy(const FEM_Zmatrix& other);

    // this += alpha * other on the IDs both have; the column counts must agree (-101).
    error_type axpy(double alpha, const FEM_Zmatrix& other);
    error_type axpy(double alpha, const FEM_matrix& other);
    error_type axpy(value_type alpha, const FEM_Zmatrix& other);
    error_type axpy(value_type alpha, const FEM_matrix& other);

    // Real and imaginary parts as new real matrices with the same IDs.
    FEM_matrix real() const;
    FEM_matrix imag() const;

    bool is_all_incore() const;
    bool force_incore();
    dense2D<value_type> as_raw_matrix() const;
};

// A FEM_Zmatrix with a stress manager and a step value for each column.
class FEM_Zstates : public FEM_Zmatrix {
public:
    ORV_FEM_HANDLE(FEM_Zstates, core::FEM_Zstates_engine)

    FEM_Zstates();
    FEM_Zstates(const dense1D<unsigned int>& IDs, index_type columns, value_type value = value_type());
    FEM_Zstates(const FEM_Zstates& other, index_type first_col, index_type n_cols);
    explicit FEM_Zstates(core::FEM_Zstates_engine* engine);

    FEM_Zstates get_state(index_type col) const;
    error_type get_state(index_type col, FEM_Zstates& out) const;
    error_type get_stress_mgr(index_type col, stress_mgr& out) const;
    error_type set_stress_mgr(index_type col, const stress_mgr& in);
    error_type get_step_value(index_type col, double& value) const;
    error_type set_step_value(index_type col, double value);

    using FEM_Zmatrix::copy;
    error_type copy(const FEM_Zstates& other);
    error_type push_back(const FEM_Zmatrix& other);
    error_type pop_back(index_type n);
    void clear();
};

}  // namespace fem
}  // namespace orv
