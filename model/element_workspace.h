// What an element computation writes, and what a run passes to an assembly.
#pragma once

#include <cstdint>
#include <vector>

#include "model/assembly_params.h"
#include "model/element_matrix_types.h"
#include "orvmath1/dense1D.h"
#include "orvmath1/dense2D.h"

namespace orv {
namespace core {

class matrix_assembler_base;
class vector_assembler_base;
class stress_super_mgr;
class stress_mgr;

// Number of scalar results of an element (the first is its elastic energy) and of the
// accumulators that sum them.
constexpr unsigned nbr_element_results = 11;

// The argument of the assembly slots: assembly_params and what goes with them.
struct assembly_args {
    assembly_params params;
    // Where matrices and vectors go; null counts as a null assembler.
    matrix_assembler_base* matrix_assembler = nullptr;
    vector_assembler_base* vector_assembler = nullptr;
    // Elements to assemble; when null or empty, `element` decides.
    const dense1D<unsigned int>* elements = nullptr;
    // One element, or all (0xFFFFFFFE).
    std::uint32_t element = 0xFFFFFFFEu;
    // Multiplies everything; a model's evolution function multiplies it in turn.
    double factor = 1.0;
    // Stress data of the load case and of the run's state, null for none.
    const stress_super_mgr* stresses = nullptr;
    const stress_super_mgr* stresses_state = nullptr;
    // 0: no matrix; 1: the matrix of the code; 2: the same, lumped by mass meshes;
    // 3: the second path of the kernels (geometric stiffness with matrix code 1).
    int matrix_level = 1;
    // 0: no vector; 1: the internal force vector.
    int vector_level = 1;
    // Sums of factor times the elements' scalar results.
    double accumulators[nbr_element_results] = {};
    // The problem: node positions (3 rows, one column per node), the solution and its
    // increment; null when the run has none.
    const dense2D<double>* pos = nullptr;
    const DOF_vector* U = nullptr;
    const DOF_vector* dU = nullptr;
    // Energy per element, by global element number (numerical_models_mgr); null
    // when not asked for.
    dense1D<double>* element_energies = nullptr;
};

// One per thread during an assembly. compute_matrix, compute_load and
// compute_projection write an element's results here; the assembly loop adds them.
// A run never reads it.
struct element_workspace {
    // Built from the arguments of an assembly, for model `model_ID`. A null assembler
    // sets its level to 0, so that a model does not form what nobody takes.
    element_workspace(const assembly_args& args, std::uint32_t model_ID);

    // Problem references.
    const dense2D<double>* pos = nullptr;
    const DOF_vector* U = nullptr;
    const DOF_vector* dU = nullptr;
    std::uint32_t model_ID = 0xFFFFFFFFu;
    std::uint32_t element_ID = 0xFFFFFFFFu;

    assembly_params params;
    int matrix_level = 1;
    int vector_level = 1;
    // flags[0]: the law may commit or evaluate shared states; flags[1]: the element
    // matrices are symmetric (clear for a skew matrix). Both 1 by default.
    unsigned char flags[2] = {1, 1};

    // The stress managers of this model for the load case and for the state.
    const stress_mgr* stresses = nullptr;
    const stress_mgr* stresses_state = nullptr;

    // Scratch matrices of the element kernels.
    dense2D<double> scratch[7];

    // Element results, each on its DOF list.
    element_sym_matrix sym;
    element_sparse_matrix sparse;
    DOF_vector diag;
    element_gen_matrix gen;
    DOF_vector vector;
    double results[nbr_element_results] = {};

    // The element's sorted DOF list and its gathered solution, for models that need U.
    Ptr<DOF_index> DOFs;
    dense1D<double> U_element;
    // Scratch of set_DOFs.
    std::vector<unsigned int> sort_scratch;

    // Empties the matrices, the vector and the results.
    void reset();
    // Empties the vector only.
    void reset_vector();
    // Replaces `DOFs` by a fresh sorted list of the given IDs (duplicates dropped);
    // false when memory fails.
    bool set_DOFs(const unsigned int* ids, std::size_t n);
    // Sizes `sym` as a zero matrix on `DOFs`; false when memory fails.
    bool init_sym();
    // Sizes `vector` as a zero vector on `DOFs`; false when memory fails.
    bool init_vector();
};

}  // namespace core
}  // namespace orv
