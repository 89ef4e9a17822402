// Signed error and warning codes of the library. 0 is success.
#pragma once

#include <cstdint>

namespace orv {
namespace fem {

/// Public functions return these codes directly; runs store them in their data record
/// (errors in error_code, warnings in warning_code). A lower layer may also return
/// codes outside this list; they are passed on as they are.
enum error_type : std::int32_t {
    no_error = 0,

    // Warnings (warning_code).
    warning_interrupted = -10,    ///< stopped by interrupt_hook, no text
    warning_pivot = -11,          ///< "Pivot warning."
    warning_missing_modes = -13,  ///< "Potentially missing modes."

    // Errors (error_code).
    error_data = -101,          ///< "DATA ERROR" / "SETTINGS ERROR"; index out of range
    error_index = -102,         ///< index past the end of an engine table
    error_element_type = -104,  ///< unknown or unsupported element type
    error_connectivity = -105,  ///< connectivity does not match the element type
    error_element = -106,       ///< an element failed while it was integrated
    error_pivot = -107,         ///< "Pivot error."
    error_not_finite = -108,    ///< "INF or NaN detected."
    error_convergence = -109,   ///< "Convergence error."
    error_file = -150,          ///< output file handle is null
    error_temp_file = -151,     ///< temporary folder or file cannot be obtained
    error_memory_limit = -154,  ///< "Insufficient memory."
    error_memory = -199,        ///< "MEMORY ERROR" / "Matrix allocation error."
    error_internal = -200       // "INTERNAL ERROR"
};

}  // namespace fem
}  // namespace orv
