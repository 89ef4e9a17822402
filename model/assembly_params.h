// The values that a run passes to every assembly.
#pragma once

#include <cstdint>

namespace orv {
namespace core {

// Filled once by a run and handed through all assemblies, down to the laws.
// Seven 8-byte values.
struct assembly_params {
    // Abscissa at which evolution functions are evaluated.
    double time = 1.0;
    // Penalties of translational, rotational and temperature constraints; 0 until the
    // run has measured the diagonal of Kf.
    double penalty_displacement = 0.0;
    double penalty_rotation = 0.0;
    // Multiplies the external loads only.
    double load_factor = 1.0;
    double penalty_temperature = 0.0;
    // Step counters handed to the laws.
    std::uint32_t law_step[2] = {1, 0};
    // Threads of the element loops, in the low half.
    std::uint32_t nbr_threads = 1;
    std::uint32_t nbr_threads_high = 0;
};

static_assert(sizeof(assembly_params) == 56, "assembly_params is seven 8-byte values");

}  // namespace core
}  // namespace orv
