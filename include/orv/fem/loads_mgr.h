// The loads of one load case: forces and prescribed values on DOFs, loads on elements.
#pragma once

#include <cstddef>

#include <orv/fem/base_class.h>
#include <orv/fem/elementary_load.h>
#include <orv/fem/error_type.h>
#include <orv/fem/field_tag.h>

#include <orvmath1/dense1D.h>
#include <orvmath1/vector_fixed.h>

namespace orv {
namespace core {
class loads_mgr;
}
namespace fem {

class context;

/// Handle on the loads of one load case; copies share the records. A problem_data
/// keeps one per load case.
///
/// Every record takes, as its last argument, the evolution function that scales it
/// (0xFFFFFFFF or any ID that names no function: a constant 1.0). A DOF ID is node * 9
/// + position (0-2 displacements, 3-5 rotations, 6 temperature). Nothing checks that a
/// DOF or an element exists: a record that the system does not have finds no entry at
/// assembly and has no effect.
///
/// Neumann records (forces) of exactly 0.0 are dropped; Dirichlet records (prescribed
/// values) are always kept, a prescribed 0.0 being a support. Where a DOF has several
/// prescribed values in one load case, the last recorded counts.
/// A prescribed value counts whether the DOF is free or blocked in the DOF table: a
/// blocked DOF takes it in this case (and 0 in the cases that do not prescribe it);
/// see DOFs_mgr.h for how the free system is formed.
class loads_mgr : public base_class {
public:
    ORV_FEM_HANDLE(loads_mgr, core::loads_mgr)

    /// Empty handle.
    loads_mgr();
    /// New, empty loads on the context.
    explicit loads_mgr(context& ctx);
    /// New, empty loads on the context: 0, -101 for an empty context, -199 on memory.
    error_type create(context& ctx);

    /// Forces. The list forms return -101 and record nothing when the lengths differ.
    error_type record_DOF_load(unsigned ID, double value, unsigned evol = 0xFFFFFFFFu);
    /// Forces on a list of DOF IDs, one evolution function for all.
    error_type record_DOF_loads(const dense1D<unsigned>& IDs, const dense1D<double>& values,
                                unsigned evol = 0xFFFFFFFFu);
    /// Forces on a list of DOF IDs, one evolution function each.
    error_type record_DOF_loads(const dense1D<unsigned>& IDs, const dense1D<double>& values,
                                const dense1D<unsigned>& evols);
    /// -101 when the ID of (node, tag, comp) is past 32 bits.
    error_type record_nodal_load(unsigned node, field_tag tag, unsigned comp, double value,
                                 unsigned evol = 0xFFFFFFFFu);
    /// Force F on the node's displacements if F is not all zero, moment M on its
    /// rotations if M is not all zero. A node of 477218588 or more (which has no DOFs)
    /// puts its values on IDs 0 to 5.
    error_type record_nodal_load(unsigned node, const vector_fixed<double, 3>& F, const vector_fixed<double, 3>& M,
                                 unsigned evol = 0xFFFFFFFFu);

    /// Prescribed values.
    error_type record_DOF_prescribed_value(unsigned ID, double value, unsigned evol = 0xFFFFFFFFu);
    /// Prescribed values on a list of DOF IDs, one evolution function for all; -101
    /// when the lengths differ.
    error_type record_DOF_prescribed_values(const dense1D<unsigned>& IDs, const dense1D<double>& values,
                                            unsigned evol = 0xFFFFFFFFu);
    /// Prescribed values on a list of DOF IDs, one evolution function each; -101 when
    /// the lengths differ.
    error_type record_DOF_prescribed_values(const dense1D<unsigned>& IDs, const dense1D<double>& values,
                                            const dense1D<unsigned>& evols);
    /// Prescribed value of one component of a node's field; -101 when its ID is past
    /// 32 bits.
    error_type record_nodal_prescribed_value(unsigned node, field_tag tag, unsigned comp, double value,
                                             unsigned evol = 0xFFFFFFFFu);
    /// All six: U on the node's displacements, R on its rotations. -101 for a node of
    /// 477218588 or more.
    error_type record_nodal_prescribed_values(unsigned node, const vector_fixed<double, 3>& U,
                                              const vector_fixed<double, 3>& R, unsigned evol = 0xFFFFFFFFu);

    /// A load on element FE_ID of model NM_ID; FE_ID 0xFFFFFFFE means all its
    /// elements. A load on a composite is stored under each simple model of it. The
    /// load's own evolution_func_ID is replaced by evol; its values are copied. An ID of
    /// 0xFFFFFFFF, or a load whose values are all 0.0, records nothing.
    error_type record_NM_load(unsigned NM_ID, unsigned FE_ID, const elementary_load& load, unsigned evol = 0xFFFFFFFFu);

    /// Room for records; false when the memory cannot be had.
    bool reserve_NM_Neumann_loads(std::size_t n);
    /// Room for n nodal forces.
    bool reserve_node_Neumann_loads(std::size_t n);
    /// Room for n prescribed values.
    bool reserve_node_Dirichlet_loads(std::size_t n);
    /// Empties every list.
    void clear();

    /// Adds coefficient times the loads of other: every value is scaled (of an
    /// elementary load, its significant values only). A coefficient of 0.0 changes
    /// nothing. 0, -101 for an empty handle, -199 on memory.
    error_type add(const loads_mgr& other, double coefficient);

    /// Counts of the records.
    std::size_t nbr_node_Neumann_loads() const;
    /// Number of prescribed-value records.
    std::size_t nbr_node_Dirichlet_loads() const;
    /// Distinct elementary load records, and (model, element) entries referring to them.
    std::size_t nbr_NM_loads() const;
    /// Number of (model, element) entries referring to them.
    std::size_t nbr_NM_load_entries() const;
    /// Record i; -101 past the end.
    error_type get_node_Neumann_load(std::size_t i, DOF_record& record) const;
    /// Prescribed-value record i; -101 past the end.
    error_type get_node_Dirichlet_load(std::size_t i, DOF_record& record) const;
};

}  // namespace fem
}  // namespace orv
