// Engine frame shared by every run: the outer sequence of run() and the inner frame
// of a solve. A solver supplies its identity, its records and its steps.
#pragma once

#include <orv/fem/error_type.h>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <new>
#include <type_traits>
#include <utility>

#include "frame/context_type.h"
#include "frame/run_log.h"
#include "orvmath1/ref_counted.h"

namespace orv {
namespace core {

// What a solver is called in its banner and messages.
struct solver_identity {
    const char* name;    // in messages: "solver_static_linear"
    const char* title;   // banner: "ORV FEM(R) - STATIC LINEAR"
    const char* source;  // in error_msg: "fem/solver_static_linear"
    int size_gate_line;  // line number of the "Insufficient memory." failure
};

// Non-template root of the solver engines: identity and the context of the run.
class solver_root : public ref_counted {
public:
    explicit solver_root(const solver_identity& id) : id_(id) {}

    const solver_identity& identity() const { return id_; }
    const char* name() const { return id_.name; }

    // The context of the problem being solved; null outside a run.
    context_type* context() const { return context_.get(); }
    void set_context(context_type* c) { context_ = c; }

    // Thread count and cache size of the context; 1 and 0x100000 without one.
    unsigned nbr_threads() const;
    std::uint64_t LLC_size() const;
    // Size limit of a run in MB; process_mgr::no_size_limit without a context.
    std::uint64_t max_total_size() const;

protected:
    // For a run that is another run's engine under its own name (the steady heat run).
    void set_identity(const solver_identity& id) { id_ = id; }

private:
    solver_identity id_;
    Ptr<context_type> context_;
};

namespace detail {
template <class S, class = void>
struct has_output_mask : std::false_type {};
template <class S>
struct has_output_mask<S, std::void_t<decltype(std::declval<const S&>().output_mask)>> : std::true_type {};
// A record whose invalid_reason() names what makes it invalid, in the run's words.
template <class D, class = void>
struct has_invalid_reason : std::false_type {};
template <class D>
struct has_invalid_reason<D, std::void_t<decltype(std::declval<const D&>().invalid_reason())>> : std::true_type {};
}  // namespace detail

// Frame of one kind of run over its settings and data records.
//
// Settings: a settings_type with the ORV_FEM_SETTINGS_HOOKS tail and valid(); an
//   output_mask member, when present, makes output_mask == 0 a dry run.
// Data: a data_type with the ORV_FEM_DATA_ERRORS fields, time_total, valid() and
//   clear_data_out().
//
// The engine keeps the address of the settings member of the handle that made it.
template <class Settings, class Data>
class solver_base : public solver_root {
public:
    using settings_type = Settings;
    using data_type = Data;

    solver_base(const Settings* settings, const solver_identity& id) : solver_root(id), settings_(settings) {}

    const Settings& settings() const { return *settings_; }

    // Outer sequence of run(). `held` are handles (or anything with get_w()) whose
    // engine objects must stay alive for the whole call: the problem and the big
    // objects of data. Never throws.
    template <class... Held>
    void run(Data& data, const Held&... held) noexcept;

    // --- tools of the steps -------------------------------------------------
    bool stop_requested(Data& data) const { return core::stop_requested(*settings_, data); }
    // Error located in this solver's source file.
    void set_error(Data& data, int code, const char* name, int line) const {
        core::set_error(data, code, name, id_source(), line);
    }
    void set_warning(Data& data, int code, const char* name) const { core::set_warning(data, code, name); }
    [[gnu::format(printf, 3, 4)]] void log(unsigned level, const char* format, ...) const {
        if (!settings_->display_hook) return;
        va_list args;
        va_start(args, format);
        vlog_line(*settings_, level, format, args);
        va_end(args);
    }
    void log_size(unsigned level, const char* label, unsigned long long count, double MB,
                  const char* unit = "doubles") const {
        core::log_size_line(*settings_, level, label, count, MB, unit);
    }

    // One step of the run: skipped when stop_requested; otherwise runs work, adds its
    // wall time to timer and logs that time at level 1 with time_format (a format
    // with one %f, such as "Factorization matrix Kf            : %10.2f s.\n"; null:
    // no line). Returns whether the step ran.
    template <class Work>
    bool step(Data& data, double& timer, const char* time_format, Work&& work) {
        if (stop_requested(data)) return false;
        const double start = now_seconds();
        work();
        const double elapsed = now_seconds() - start;
        timer += elapsed;
        if (time_format) log(1, time_format, elapsed);
        return true;
    }

protected:
    // --- the inner frame, in the order solve() calls them ------------------
    // Look up the model, set the context (set_context), make local objects.
    // Called after the outputs are cleared; an error set here skips every step.
    virtual void start(Data& data) = 0;
    // After the banner and the start time: clear every big object whose bit is not in input_mask.
    virtual void clear_inputs(Data&) {}
    // Numbering and profile: fill the size fields of data (timed, skipped when
    // the run is already stopped).
    virtual void numbering(Data& data) = 0;
    // Timing field of the numbering step.
    virtual double& numbering_time(Data& data) = 0;
    // After the numbering time: "  Nbr free DOFs ..." at level 1 and the size lines
    // at level 2. A dry run (output_mask 0) ends after this.
    virtual void log_sizes(Data&) {}
    // Sum of the needed sizes in MB (the solver stores it in its size_total); the
    // context's limit gates it with -154 "Insufficient memory.".
    virtual double needed_size(Data& data) = 0;
    // The solver's own steps, each through step().
    virtual void compute(Data& data) = 0;
    // Clear what neither output_mask nor input_mask keeps. Runs after a failed or
    // interrupted step too; the total time line follows.
    virtual void clear_unkept(Data&) {}
    // Called by run() after the solve, even a failed one: bring out-of-core results
    // back to memory; false on failure (-199 "MEMORY ERROR").
    virtual bool make_resident(Data&) { return true; }

    // Inner frame of the engine solve; may throw (run() catches).
    virtual void solve(Data& data);

private:
    const char* id_source() const { return identity().source; }
    bool dry_run() const {
        if constexpr (detail::has_output_mask<Settings>::value)
            return settings_->output_mask == 0;
        else
            return false;
    }

    const Settings* settings_;
};

template <class Settings, class Data>
void solver_base<Settings, Data>::solve(Data& data) {
    data.clear_data_out();
    start(data);
    log_banner(*settings_, identity().title);
    const double start_time = now_seconds();
    clear_inputs(data);

    if (!stop_requested(data)) {
        const double t0 = now_seconds();
        numbering(data);
        const double elapsed = now_seconds() - t0;
        numbering_time(data) += elapsed;
        log(2, "Numbering and matrix profiles      : %10.2f s.\n", elapsed);
        log_sizes(data);
    }

    if (dry_run()) return;

    if (!stop_requested(data)) {
        const double needed = needed_size(data);
        const std::uint64_t limit = max_total_size();
        if (limit != process_mgr::no_size_limit && needed > static_cast<double>(limit))
            set_error(data, fem::error_memory_limit, "Insufficient memory.", identity().size_gate_line);
    }

    // The steps test stop_requested themselves; this only spares compute() a call
    // when the run already stands stopped.
    if (data.error_code == 0 && data.warning_code != fem::warning_interrupted) compute(data);
    clear_unkept(data);

    data.time_total = now_seconds() - start_time;
    log(0, "Total computing time               : %10.2f s.\n\n", data.time_total);
}

template <class Settings, class Data>
template <class... Held>
void solver_base<Settings, Data>::run(Data& data, const Held&... held) noexcept {
    // Counted references: nothing used by the run goes away during it, even if a
    // hook drops the caller's handles.
    Ptr<solver_root> self(this);
    Ptr<ref_counted> refs[sizeof...(Held) + 1] = {Ptr<ref_counted>(static_cast<ref_counted*>(held.get_w()))...,
                                                  Ptr<ref_counted>()};

    data.clear_data_out();
    char msg[256];
    if (!settings_->valid()) {
        std::snprintf(msg, sizeof msg, "ORV %s: invalid settings.", name());
        set_error_msg(data, fem::error_data, "SETTINGS ERROR", msg);
    } else if (!data.valid()) {
        const char* reason = "invalid data.";
        if constexpr (detail::has_invalid_reason<Data>::value)
            if (const char* r = data.invalid_reason()) reason = r;
        std::snprintf(msg, sizeof msg, "ORV %s: %s", name(), reason);
        set_error_msg(data, fem::error_data, "DATA ERROR", msg);
    } else {
        try {
            solve(data);
        } catch (const std::bad_alloc&) {
            set_error_msg(data, fem::error_memory, "MEMORY ERROR", "");
        } catch (...) {
            set_error_msg(data, fem::error_internal, "INTERNAL ERROR", "");
        }
        bool resident = false;
        try {
            resident = make_resident(data);
        } catch (...) {}
        if (!resident) set_error_msg(data, fem::error_memory, "MEMORY ERROR", "");
    }
    set_context(nullptr);
    // The references drop in reverse order as the array and self go out of scope.
}

// The engine of a public run handle: it keeps its own copy of the settings, refreshed
// from the handle at each run, so that a copy of the handle never leaves it pointing
// at freed settings. EngineSettings is the public settings record or one that derives
// from it (with the settings of steps the public record does not show).
template <class Engine, class EngineSettings>
class handle_engine : public Engine {
public:
    handle_engine() : Engine(&own_settings_) {}
    template <class Public>
    void set_settings(const Public& s) {
        static_cast<Public&>(own_settings_) = s;
    }

private:
    EngineSettings own_settings_;
};

}  // namespace core
}  // namespace orv
