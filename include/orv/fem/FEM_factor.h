// Public handle on the LDLt factors of a matrix with DOF IDs.
#pragma once

#include <cstdint>

#include <orv/fem/base_class.h>
#include <orv/fem/error_type.h>

#include <orvmath1/dense1D.h>

namespace orv {
namespace core {
template <class T>
class vector_fast;
template <class I, class S>
class indexed_sym;
template <class T>
class symmetric_hybrid_OOC;
template <class M>
class symmetric_L_D_Lt;
typedef indexed_sym<vector_fast<unsigned>, symmetric_L_D_Lt<symmetric_hybrid_OOC<double>>> FEM_factor_engine;
}  // namespace core
namespace fem {

/// The factors of a condensed or reusable matrix: a block-skyline LDLt factor with the
/// DOF ID of each of its rows (in the factor's own order). Runs fill it; a host keeps
/// it, saves it and loads it back. Copies of the handle share the factor.
class FEM_factor : public base_class {
public:
    ORV_FEM_HANDLE(FEM_factor, core::FEM_factor_engine)

    /// Positions and DOF IDs.
    typedef std::uint64_t index_type;

    /// An empty factor of dimension 0 (an engine object exists).
    FEM_factor();
    /// Adopts an engine object (null gives an empty handle).
    explicit FEM_factor(core::FEM_factor_engine* engine);

    /// Dimension of the factor; 0 for an empty handle.
    index_type dim() const;
    /// The DOF ID of each row in the factor's order (shared); empty when none were set.
    dense1D<unsigned int> get_IDs() const;
    /// Replaces the IDs; -101 when their number (without repeats) differs from dim().
    error_type set_IDs(const dense1D<unsigned int>& IDs);
    /// Dimension 0, IDs dropped.
    void clear();
    /// This factor shares other's blocks and IDs.
    void shallow_copy(const FEM_factor& other);

    /// Native binary file: IDs, block profiles, then each block's values and segment
    /// table. 0, or -1 for a stream error.
    error_type save(const char* file) const;
    /// Reads a file written by save. 0; -1 for a stream error or a truncated file; -2
    /// when a count disagrees with the IDs or the profile (repeated IDs among them);
    /// -199 for memory. On failure the factor is left as it was.
    error_type load(const char* file);
};

}  // namespace fem
}  // namespace orv
