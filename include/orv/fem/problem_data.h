// Public description of one problem: node positions, DOF table, model ID, load cases.
#pragma once

#include <cstddef>

#include <orv/fem/DOFs_mgr.h>
#include <orv/fem/base_class.h>
#include <orv/fem/context.h>
#include <orv/fem/error_type.h>
#include <orv/fem/loads_mgr.h>
#include <orv/fem/stress_mgr.h>

#include <orvmath1/dense2D.h>

namespace orv {
namespace core {
class problem_data;
}
namespace fem {

/// What a run is given besides its settings. Every solver's data record derives from
/// it. Copies share the problem; the DOF table is the caller's (not a copy), and `pos`
/// (3 rows, one column per real node) is shared with the caller's matrix.
///
/// Ownership during a run. The run holds counted references on the problem, so the
/// host's handles may go out of scope meanwhile, but the positions and the DOF table
/// are the host's storage, read by the run's threads without a lock from its start to
/// its end: the host must not write into `pos` (nor call set_pos_matrix) nor change
/// the DOF table while a run on this problem is in progress. A run never writes
/// either. How a blocked DOF and a prescribed value combine is told in DOFs_mgr.h.
class problem_data : public base_class {
public:
    ORV_FEM_HANDLE(problem_data, core::problem_data)

    /// An empty handle.
    problem_data();
    /// An empty problem on ctx: no model, no positions, no load case, a new DOF table.
    explicit problem_data(context& ctx);
    /// create(ctx), then init(...).
    problem_data(context& ctx, dense2D<double>& pos, DOFs_mgr& DOFs, unsigned NM_ID, std::size_t nbr_load_cases);
    /// Combinations of the load cases of src: new case k is the sum over cases i of src
    /// of coeffs(i, k) times case i, for loads and stresses alike. The new problem has
    /// src's context, model and (shared) DOF table, and a copy of its positions. A
    /// matrix whose rows differ from src's number of cases (and that is not empty)
    /// leaves the handle empty; an empty matrix gives no load case.
    problem_data(const problem_data& src, const dense2D<double>& coeffs);
    /// The same with separate coefficients for the stresses.
    problem_data(const problem_data& src, const dense2D<double>& load_coeffs, const dense2D<double>& stress_coeffs);

    /// A new, empty problem on ctx: 0, -199 on memory.
    error_type create(context& ctx);
    /// Resets the problem, then (with a context) takes the model ID and a reference to
    /// DOFs, grows DOFs with fixed DOFs up to the columns of pos, brings pos to 3 rows
    /// (new entries 0.0, in the caller's matrix) and shares it, and makes
    /// nbr_load_cases empty load and stress managers.
    void init(dense2D<double>& pos, DOFs_mgr& DOFs, unsigned NM_ID, std::size_t nbr_load_cases);

    /// ID of the problem's numerical model; 0xFFFFFFFF for an empty handle.
    unsigned NM_ID() const;
    /// The DOF table (shared).
    DOFs_mgr get_DOFs_mgr() const;
    /// The node positions, 3 rows and one column per node (shared).
    dense2D<double> get_pos_matrix() const;
    /// With the shape rules of init.
    void set_pos_matrix(dense2D<double>& pos);
    /// Number of load cases.
    unsigned nbr_load_cases() const;
    /// The manager of case i; an empty handle past the end.
    loads_mgr get_loads_mgr(std::size_t i) const;
    /// The stress manager of case i; an empty handle past the end.
    stress_mgr get_stress_mgr(std::size_t i) const;
    /// Shares mgr as the manager of case i; an index past the end is ignored.
    void set_loads_mgr(std::size_t i, loads_mgr& mgr);
    /// Shares mgr as the stress manager of case i; an index past the end is ignored.
    void set_stress_mgr(std::size_t i, stress_mgr& mgr);

    /// The problem names a model that exists in its context's registry.
    bool valid() const;
};

}  // namespace fem
}  // namespace orv
