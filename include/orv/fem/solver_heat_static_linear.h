// Steady heat: K T = Q for any number of load cases, K the conduction (and
// convection) matrix of the heat models, Q the heat loads on the temperature DOFs
// (slot 6), T the temperatures. The run is the linear static run on the conduction
// matrix: the same settings, the same record with U holding the temperatures and no
// energies.
#pragma once

#include <orv/fem/solver_base.h>
#include <orv/fem/solver_static_linear.h>

namespace orv {
namespace core {
class solver_root;
}
namespace fem {

/// Set `settings`, build a data_type from the problem (its models must answer the
/// conduction matrix, matrix code 5), call run(), read the temperatures in U and the
/// error fields from the record. run() never throws.
class solver_heat_static_linear : public solver_base {
public:
    /// The settings of the linear static run.
    typedef solver_static_linear::settings_type settings_type;
    /// The record of the linear static run; U holds the temperatures, energy stays empty.
    typedef solver_static_linear::data_type data_type;

    ORV_FEM_HANDLE(solver_heat_static_linear, core::solver_root)

    solver_heat_static_linear();
    /// Runs the analysis on data; never throws, failures go to its error fields.
    void run(data_type& data);

    /// Settings of the next run.
    settings_type settings;
};

}  // namespace fem
}  // namespace orv
