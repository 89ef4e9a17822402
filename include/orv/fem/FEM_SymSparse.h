// Public symmetric sparse matrix whose rows and columns carry DOF IDs.
#pragma once

#include <cstdint>

#include <orv/fem/base_class.h>
#include <orv/fem/error_type.h>

#include <orvmath1/dense1D.h>
#include <orvmath1/symmetric_sparse.h>

namespace orv {
namespace core {
template <class T>
class vector_fast;
template <class I, class S>
class indexed_sym;
typedef indexed_sym<vector_fast<unsigned>, symmetric_sparse<double>> FEM_SymSparse_engine;
}  // namespace core
namespace fem {

/// A symmetric_sparse<double> (upper triangle by rows) with an ID for each row and
/// column. Entries are addressed by positions i, j in either order; an index at or
/// beyond dim() gives -101, a position outside the stored pattern reads 0.0 with 0.
/// Copies of the handle share the matrix; copy() duplicates it.
class FEM_SymSparse : public base_class {
public:
    ORV_FEM_HANDLE(FEM_SymSparse, core::FEM_SymSparse_engine)

    /// Positions and DOF IDs.
    typedef std::uint64_t index_type;

    /// An empty matrix of dimension 0.
    FEM_SymSparse();
    /// init(IDs, values); an empty matrix when that fails.
    FEM_SymSparse(const dense1D<unsigned int>& IDs, const symmetric_sparse<double>& values);
    /// Adopts an engine object (null gives an empty handle).
    explicit FEM_SymSparse(core::FEM_SymSparse_engine* engine);

    /// Shares values. -101 when the matrix is not a consistent compressed profile or its
    /// dimension differs from the number of IDs (a repeated ID counts once); -199.
    error_type init(const dense1D<unsigned int>& IDs, const symmetric_sparse<double>& values);

    /// Dimension (rows = columns); 0 for an empty handle.
    index_type dim() const;
    /// The DOF IDs of the rows in row order (shared); empty when none were set.
    dense1D<unsigned int> get_IDs() const;
    /// Replaces the IDs; -101 when their number (without repeats) differs from dim().
    error_type set_IDs(const dense1D<unsigned int>& IDs);
    /// Position of an ID, ~0 if absent.
    index_type pos(index_type ID) const;

    /// Value at positions i, j (value set to 0.0 first); -101 past dim().
    error_type get_val(index_type i, index_type j, double& value) const;
    /// -101 also for a position outside the stored pattern, which has no room.
    error_type set_val(index_type i, index_type j, double value);
    /// By IDs; an unknown ID gives -101.
    error_type getID_val(index_type ID_i, index_type ID_j, double& value) const;
    /// By IDs; an unknown ID gives -101.
    error_type setID_val(index_type ID_i, index_type ID_j, double value);

    /// The values and profile, shared.
    symmetric_sparse<double> as_raw_matrix() const;

    /// Value copy (IDs shared); self-copy does nothing.
    error_type copy(const FEM_SymSparse& other);
    /// This matrix shares other's values, profile and IDs.
    void shallow_copy(const FEM_SymSparse& other);
    /// Dimension 0, IDs dropped; the handle stays valid.
    void clear();

    /// Writes the matrix to a file in the native binary layout: IDs, values, row
    /// pointers, column indices, each as a 64-bit count and the items. 0, -1 for a
    /// stream error.
    error_type save(const char* file) const;
};

}  // namespace fem
}  // namespace orv
