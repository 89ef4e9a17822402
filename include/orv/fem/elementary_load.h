// Load records: a load on the elements of a numerical model, and a value on one DOF.
#pragma once

#include <cstdint>

#include <orvmath1/dense1D.h>

namespace orv {
namespace fem {

/// A load on elements of a numerical model (a pressure, a line force, a body force, a
/// heat flux...). The element kernels give each kind and type its meaning.
///
/// kind: a bit field. kind & 0xF8 names the field and sense:
///   24 a force on displacements (field_displacement + 8), 40 a moment (field_rotation
///   + 8), 64 a heat exchange (convection models), 72 a heat flux or source
///   (field_temperature + 8); 16 and 32 with kind & 0x700 == 0x400 are inertial loads
///   taken by mass models. Bits 0-2 and 8-10 refine these.
/// type: the low 7 bits are the sub-kind; 3 is a scalar load.
/// evolution_func_ID: the evolution function that scales the load, 0xFFFFFFFF for none;
///   loads_mgr::record_NM_load sets it from its argument.
/// values: one significant value for a heat load (kind & 0xF8 of 64 or 72) or a scalar
///   load (type 3), three for any other.
struct elementary_load {
    /// kind of a force on displacements.
    static constexpr std::uint32_t kind_force = 24;
    /// kind of a moment on rotations.
    static constexpr std::uint32_t kind_moment = 40;
    /// kind of a heat exchange (convection models).
    static constexpr std::uint32_t kind_heat_exchange = 64;
    /// kind of a heat flux or source.
    static constexpr std::uint32_t kind_heat_flux = 72;
    /// kind & 0x700 of an inertial load, taken by mass models.
    static constexpr std::uint32_t kind_inertial = 0x400;
    /// type & 0x7F of a scalar load.
    static constexpr std::uint32_t type_scalar = 3;

    /// Field, sense and refinement bits (see above).
    std::uint32_t kind = 0;
    /// Sub-kind in the low 7 bits.
    std::uint32_t type = 0;
    /// The evolution function that scales the load, 0xFFFFFFFF for none.
    std::uint32_t evolution_func_ID = 0xFFFFFFFFu;
    /// The load values (1 or 3 significant).
    dense1D<double> values;

    elementary_load() = default;
    /// Shares the values.
    elementary_load(std::uint32_t kind_, std::uint32_t type_, const dense1D<double>& values_)
        : kind(kind_), type(type_), values(values_) {}

    /// Number of the values that carry the load: 1 or 3.
    unsigned nbr_significant_values() const {
        const std::uint32_t k = kind & 0xF8u;
        const bool one = k == kind_heat_exchange || k == kind_heat_flux || (type & 0x7Fu) == type_scalar;
        return one ? 1u : 3u;
    }
    /// True when every value is 0.0 (or there is none).
    bool is_zero() const {
        for (std::size_t i = 0; i < values.size(); ++i)
            if (values[i] != 0.0) return false;
        return true;
    }
    /// Same kind, type, evolution function and exactly the same values.
    bool same_as(const elementary_load& o) const {
        if (kind != o.kind || type != o.type || evolution_func_ID != o.evolution_func_ID ||
            values.size() != o.values.size())
            return false;
        for (std::size_t i = 0; i < values.size(); ++i)
            if (!(values[i] == o.values[i])) return false;
        return true;
    }
};

/// A value on one DOF: a force (Neumann record) or a prescribed value (Dirichlet
/// record), at an evolution of 1.0.
struct DOF_record {
    std::uint32_t ID;                 ///< the DOF, node * 9 + position
    std::uint32_t evolution_func_ID;  ///< 0xFFFFFFFF for none
    double value;                     ///< the force or the prescribed value
};

static_assert(sizeof(DOF_record) == 16, "DOF_record is 16 bytes");
static_assert(sizeof(elementary_load) == 40, "elementary_load is 40 bytes with its list");

}  // namespace fem
}  // namespace orv
