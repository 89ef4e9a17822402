// Error and warning setters, stop test and log lines shared by every run.
//
// Settings is any settings_type with the ORV_FEM_SETTINGS_HOOKS tail; Data any
// record with the ORV_FEM_DATA_ERRORS fields.
#pragma once

#include <omp.h>
#include <orv/fem/error_type.h>

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace orv {
namespace core {

// Seconds since the epoch, millisecond resolution.
double now_seconds();

namespace detail {

// Copies text into a 256-byte field, always NUL-terminated.
inline void copy_text(char (&field)[256], const char* text) {
    std::snprintf(field, sizeof field, "%s", text ? text : "");
}

template <class Data>
void store_error(Data& data, int code, const char* name, const char* msg) {
    if (data.error_code != 0) return;
    data.error_code = code;
    copy_text(data.error_name, name);
    copy_text(data.error_msg, msg);
}

template <class Data>
void store_error_at(Data& data, int code, const char* name, const char* source, int line) {
    if (data.error_code != 0) return;
    data.error_code = code;
    copy_text(data.error_name, name);
    std::snprintf(data.error_msg, sizeof data.error_msg, "File = %s, Line #%d.", source ? source : "", line);
}

void format_banner_row(char (&row)[64], const char* title);

}  // namespace detail

// First error wins: does nothing when error_code is already set. Otherwise stores
// code and name and writes "File = <source>, Line #<line>." into error_msg. Inside a
// parallel region the store is serialised so that workers cannot mix their texts.
template <class Data>
void set_error(Data& data, int code, const char* name, const char* source, int line) {
    if (omp_in_parallel()) {
#pragma omp critical(orv_run_error)
        detail::store_error_at(data, code, name, source, line);
    } else {
        detail::store_error_at(data, code, name, source, line);
    }
}

// As set_error, with a free message instead of the source location ("" for memory
// and internal errors).
template <class Data>
void set_error_msg(Data& data, int code, const char* name, const char* msg) {
    if (omp_in_parallel()) {
#pragma omp critical(orv_run_error)
        detail::store_error(data, code, name, msg);
    } else {
        detail::store_error(data, code, name, msg);
    }
}

// Stored only while neither an error nor a warning stands; clears error_msg.
template <class Data>
void set_warning(Data& data, int code, const char* name) {
    auto store = [&] {
        if (data.error_code != 0 || data.warning_code != 0) return;
        data.warning_code = code;
        detail::copy_text(data.error_name, name);
        data.error_msg[0] = '\0';
    };
    if (omp_in_parallel()) {
#pragma omp critical(orv_run_error)
        store();
    } else {
        store();
    }
}

// True when an error stands or the run was interrupted; otherwise asks
// interrupt_hook, and when it answers true sets warning -10 and answers true.
template <class Settings, class Data>
bool stop_requested(const Settings& settings, Data& data) {
    if (data.error_code != 0 || data.warning_code == fem::warning_interrupted) return true;
    if (settings.interrupt_hook && settings.interrupt_hook(settings.pass_thru)) {
        // The interruption replaces an earlier warning, so that the run stops for good.
        data.warning_code = fem::warning_interrupted;
        data.error_name[0] = '\0';
        data.error_msg[0] = '\0';
        return true;
    }
    return false;
}

// Formats into a 256-byte buffer and hands the text to display_hook. Nothing is
// formatted when there is no hook.
template <class Settings>
void vlog_line(const Settings& settings, unsigned level, const char* format, va_list args) {
    if (!settings.display_hook) return;
    char text[256];
    std::vsnprintf(text, sizeof text, format, args);
    settings.display_hook(settings.pass_thru, level, text);
}

template <class Settings>
[[gnu::format(printf, 3, 4)]] void log_line(const Settings& settings, unsigned level, const char* format, ...) {
    if (!settings.display_hook) return;
    va_list args;
    va_start(args, format);
    vlog_line(settings, level, format, args);
    va_end(args);
}

// Counts at or above this limit would overflow 8 * count.
constexpr unsigned long long size_line_limit = 0x1FFFFFFFFFFFFFFFull;

// label + "%10llu doubles (%.2f MB)\n", or label + "more than %.2lf GB !\n" with
// 2^34 when count reaches size_line_limit. unit is "doubles" or "complexes".
template <class Settings>
void log_size_line(const Settings& settings, unsigned level, const char* label, unsigned long long count, double MB,
                   const char* unit = "doubles") {
    if (!settings.display_hook) return;
    if (count >= size_line_limit)
        log_line(settings, level, "%smore than %.2lf GB !\n", label, 17179869184.0);
    else
        log_line(settings, level, "%s%10llu %s (%.2f MB)\n", label, count, unit, MB);
}

// Three rows of 55 characters at level 0, each followed by a line "\n": stars; the
// title at column 9 with the version in brackets behind it; stars.
template <class Settings>
void log_banner(const Settings& settings, const char* title) {
    if (!settings.display_hook) return;
    char stars[64];
    std::memset(stars, '*', 55);
    stars[55] = '\0';
    char row[64];
    detail::format_banner_row(row, title);
    const char* rows[3] = {stars, row, stars};
    for (const char* r : rows) {
        settings.display_hook(settings.pass_thru, 0, r);
        settings.display_hook(settings.pass_thru, 0, "\n");
    }
}

}  // namespace core
}  // namespace orv
