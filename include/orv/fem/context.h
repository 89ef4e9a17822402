// Working environment of a set of analyses: registries, factors, threads and memory limits.
#pragma once

#include <orv/fem/base_class.h>
#include <orv/fem/error_type.h>

namespace orv {
namespace core {
class context_type;
}
namespace fem {

class numerical_models_mgr;
class evolution_funcs_mgr;
class bases_mgr;

/// Handle on a context. The default constructor makes a new context; copies share it.
/// Setters are not synchronised with a running solve: change a context between runs.
/// An empty handle (memory failed, or a narrowing from another class) ignores the
/// setters, its getters give 0 and set_max_incore_size gives -101.
class context : public base_class {
public:
    ORV_FEM_HANDLE(context, core::context_type)

    /// A new context with the detected threads and cache and the default factors.
    context();

    /// Threads of the parallel regions: 0 gives 1, otherwise at most the runtime's maximum.
    void set_max_threads(unsigned n);
    /// Threads of the parallel regions in force.
    unsigned get_max_threads() const;
    /// Physical cores found on this machine (at least 1).
    unsigned get_nbr_physical_cores() const;

    /// Last-level cache size in bytes used to block the factorisation; floor 102400.
    void set_LLC_size(unsigned bytes);
    /// Last-level cache size in bytes in force.
    unsigned get_LLC_size() const;

    /// Limit of a run's sum of matrix sizes in MB; 0 removes the limit.
    void set_max_total_size(unsigned long long MB);
    /// The limit in MB; all bits set when there is none.
    unsigned long long get_max_total_size() const;

    /// In-core budget of out-of-core objects, in MB, and the folder of their
    /// temporary files. MB 0 or 0xFFFFFFFF keeps everything in memory.
    /// folder: directory of the temporary files, "/tmp" when null.
    /// prefix: start of the temporary file names, "orv_" when null; a part up to a
    ///         last '/' names a sub-folder of folder (which must exist).
    /// Returns 0, or -151 when the folder cannot hold temporary files (then no
    /// budget is set and everything stays in memory).
    error_type set_max_incore_size(unsigned MB, const char* folder = nullptr, const char* prefix = nullptr);
    /// Same as set_max_incore_size.
    error_type memory_management(unsigned MB, const char* folder = nullptr, const char* prefix = nullptr);
    /// Budget of the out-of-core manager in MB, 0 when there is none.
    unsigned long long get_max_incore_size() const;

    /// Penalties of links, rigid bodies and penalty-mode models: in each class of DOF
    /// (displacements, rotations, temperature) the penalty is this multiplier (default
    /// 10000) times the root mean square of the penalised diagonal of Kf, clamped into
    /// [min, max]. The penalty and drilling setters store the value as it is, no test.
    void set_raw_penalty_factor(double f);
    /// The penalty multiplier.
    double get_raw_penalty_factor() const;
    /// Lower clamp of the penalties (default 1).
    void set_min_penalty_factor(double f);
    /// Lower clamp of the penalties.
    double get_min_penalty_factor() const;
    /// Upper clamp of the penalties (default the largest finite double).
    void set_max_penalty_factor(double f);
    /// Upper clamp of the penalties.
    double get_max_penalty_factor() const;
    /// Factor of the drilling-rotation penalty of shells, relative to the element's
    /// stiffness (default 0.001); 0 removes the term.
    void set_shell_drilling_factor(double f);
    /// Factor of the drilling-rotation penalty of shells.
    double get_shell_drilling_factor() const;

    /// A new handle on the context's registry of numerical models.
    numerical_models_mgr the_NM_mgr() const;
    /// A new handle on the context's local bases.
    bases_mgr the_bases_mgr() const;
    /// A new handle on the context's evolution functions.
    evolution_funcs_mgr the_evol_funcs_mgr() const;
};

}  // namespace fem
}  // namespace orv
