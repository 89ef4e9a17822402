// Codes of the matrices a run asks its models for.
#pragma once

namespace orv {
namespace fem {

/// Which matrix an assembly asks a model for.
enum matrix_code_type : unsigned {
    matrix_K = 1,           ///< stiffness
    matrix_M = 2,           ///< mass
    matrix_C = 3,           ///< damping
    matrix_gyroscopic = 4,  ///< gyroscopic
    matrix_conduction = 5,  ///< heat conduction
    matrix_capacity = 6,    ///< heat capacity
    matrix_penalty = 7,     ///< penalty stiffness of links, rigid bodies and penalised models
    matrix_penalty_2 = 8,   ///< second penalty pass
    matrix_nodal = 9        ///< nodal matrix of the least-squares run
};

}  // namespace fem
}  // namespace orv
