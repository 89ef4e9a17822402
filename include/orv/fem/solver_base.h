// Root of the solver handles, host hooks and the common fields of the run records.
#pragma once

#include <cstdint>

#include <orv/fem/base_class.h>
#include <orv/fem/error_type.h>

namespace orv {
namespace core {
class solver_root;
}
namespace fem {

/// Bits of input_mask and output_mask, one per big object of a run.
enum object_mask : std::uint32_t {
    mask_F = 2,       ///< right-hand sides
    mask_Ks = 16,     ///< sparse stiffness
    mask_Kf = 32,     ///< block-skyline factor
    mask_U = 64,      ///< solution, or static modes
    mask_modes = 128  // dynamic or buckling modes
};

/// Receives each log line; level 0 banners and total time, 1 step times and final
/// quantities, 2 numbering, sizes and pivots, 3 per load case and per iteration.
using display_hook_type = void (*)(void* pass_thru, unsigned level, const char* text);
/// Asked at each step boundary whether to stop the run.
using interrupt_hook_type = bool (*)(void* pass_thru);
/// Kept in the settings and copied with them; called by no run.
using spare_hook_type = void (*)();

/// Root of every solver handle. A solver has a public `settings` member (its
/// settings_type) and `run(data_type&)`, which never throws: failures are stored
/// in the data record.
class solver_base : public base_class {
public:
    ORV_FEM_HANDLE(solver_base, core::solver_root)

    /// Name of the solver as used in its messages ("solver_static_linear").
    const char* name() const;

protected:
    solver_base() = default;
};

}  // namespace fem
}  // namespace orv

/// Common tail of every settings_type, after the solver's own fields:
///   struct settings_type { unsigned input_mask = 0; ...; ORV_FEM_SETTINGS_HOOKS };
/// The hooks and pass_thru belong to the host.
#define ORV_FEM_SETTINGS_HOOKS                                \
    ::orv::fem::display_hook_type display_hook = nullptr;     \
    ::orv::fem::spare_hook_type spare_hook = nullptr;         \
    ::orv::fem::interrupt_hook_type interrupt_hook = nullptr; \
    void* pass_thru = nullptr;

/// Common error fields of every data_type, after its other outputs and before its
/// timings, with error_raised(), warning_raised() and clear_errors() (which
/// clear_data_out calls).
#define ORV_FEM_DATA_ERRORS                                   \
    std::int32_t error_code = 0;                              \
    std::int32_t warning_code = 0;                            \
    char error_name[256] = {};                                \
    char error_msg[256] = {};                                 \
    bool error_raised() const { return error_code != 0; }     \
    bool warning_raised() const { return warning_code != 0; } \
    void clear_errors() {                                     \
        error_code = 0;                                       \
        warning_code = 0;                                     \
        error_name[0] = '\0';                                 \
        error_msg[0] = '\0';                                  \
    }
