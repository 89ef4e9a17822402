// Public table of the degrees of freedom.
#pragma once

#include <vector>

#include <orv/fem/base_class.h>
#include <orv/fem/error_type.h>
#include <orv/fem/field_tag.h>

namespace orv {
namespace core {
class DOFs_mgr;
}
namespace fem {

/// Handle on a DOF table; copies share the table. A DOF ID is node * 9 + position:
/// 0-2 displacements, 3-5 rotations, 6 temperature, 7-8 reserved. `state` is true for
/// free. Fictitious nodes (numbers from nbr_nodes() on) have only DOFs, always free.
///
/// Blocked DOFs and prescribed values. A DOF blocked here (state false) has no
/// equation: it is held at 0 in every load case that does not prescribe it, and takes
/// the value of a load case that prescribes it (loads_mgr), with the forces that value
/// exerts on the free DOFs. A free DOF that some load case prescribes is held at that
/// value in that case; when every case prescribes it, it leaves the system like a
/// blocked one, otherwise it stays in the factorised matrix and is met by iterations
/// in the cases that prescribe it, and is free in the others. A free DOF that no
/// element touches has no equation and no effect.
///
/// Ownership. A problem_data shares this table (it is the caller's, not a copy), and
/// a run reads it from its first step to its end without a lock: the host must not
/// change it (set, resize, clear, add_fictitious_node) while a run that uses it is in
/// progress. Changes made between runs count for the next run.
class DOFs_mgr : public base_class {
public:
    ORV_FEM_HANDLE(DOFs_mgr, core::DOFs_mgr)

    /// Empty table, 0 nodes.
    DOFs_mgr();
    /// nbr_nodes real nodes, every DOF set to state.
    DOFs_mgr(unsigned nbr_nodes, bool state);

    /// DOF IDs per node: 9.
    static unsigned stride() { return 9; }
    /// The same as stride().
    static unsigned DOF_STRIDE() { return 9; }
    /// node*9 + comp (displacement), node*9 + 3 + comp (rotation), node*9 + 6
    /// (temperature, comp ignored); 0xFFFFFFFF for any other tag.
    static unsigned long long ID(unsigned long long node, field_tag tag, unsigned comp);

    /// nbr_nodes real nodes: new DOFs take state, old ones keep theirs; fictitious
    /// nodes are kept (and renumbered, since they follow the real ones).
    void resize(unsigned nbr_nodes, bool state);
    /// No real nodes, no fictitious nodes.
    void clear();

    /// Number of real nodes.
    unsigned nbr_nodes() const;
    /// Number of fictitious nodes.
    unsigned nbr_fictitious_nodes() const;
    /// DOF IDs of the fictitious nodes: 9 per node.
    unsigned long long nbr_fictitious_DOFs() const;
    /// Every ID in use: 9 * (real + fictitious nodes).
    unsigned long long size() const;
    /// Real-node DOFs equal to state, reserved positions included.
    unsigned long long nbr_DOFs(bool state) const;
    /// Appends the real-node IDs equal to state, ascending; ids is not cleared.
    error_type copy_IDs(std::vector<unsigned>& ids, bool state) const;

    /// -101 when ID >= size(); a fictitious DOF is free.
    error_type get(unsigned long long ID, bool& state) const;
    /// The same by node, field and component.
    error_type get(unsigned long long node, field_tag tag, unsigned comp, bool& state) const;
    /// node = ID / 9, or its master when to_master and it is fictitious; tag from ID % 9;
    /// comp = ID % 3.
    void get_info(unsigned long long ID, unsigned& node, field_tag& tag, unsigned& comp, bool to_master = false) const;

    /// -101 unless the ID belongs to a real node.
    error_type set(unsigned long long ID, bool state);
    /// The same by node, field and component.
    error_type set(unsigned long long node, field_tag tag, unsigned comp, bool state);
    /// All components of the field (one for temperature).
    error_type set(unsigned long long node, field_tag tag, bool state);
    /// Two components; -101 when one exceeds 2.
    error_type set(unsigned long long node, field_tag tag, unsigned comp1, unsigned comp2, bool state);

    /// Appends a fictitious node of the real node master; returns its node number.
    unsigned add_fictitious_node(unsigned master);
};

}  // namespace fem
}  // namespace orv
