// Non-template parts of the run frame: clock, banner row, solver root and handle.
#include <orv/fem/solver_base.h>
#include <orv/fem/version.h>

#include <chrono>
#include <cstring>

#include "frame/solver_base.h"

namespace orv {
namespace core {

double now_seconds() {
    using namespace std::chrono;
    const auto ms = duration_cast<milliseconds>(system_clock::now().time_since_epoch());
    return static_cast<double>(ms.count()) * 1e-3;
}

namespace detail {

void format_banner_row(char (&row)[64], const char* title) {
    // "*", blanks up to column 9, the title, a blank, "(version)", blanks, "*" at 54.
    constexpr int width = 55;
    char middle[64];
    const int n = std::snprintf(middle, sizeof middle, "%s (%s)", title ? title : "", fem::version::text());
    int len = n < 0 ? 0 : n;
    if (len > 60 - 9) len = 60 - 9;  // a title too long for the row is cut
    std::memset(row, ' ', sizeof row);
    row[0] = '*';
    std::memcpy(row + 9, middle, static_cast<std::size_t>(len));
    const int last = 9 + len < width - 1 ? width - 1 : 9 + len;
    row[last] = '*';
    row[last + 1] = '\0';
}

}  // namespace detail

unsigned solver_root::nbr_threads() const { return context_ ? context_->process()->max_threads() : 1u; }

std::uint64_t solver_root::LLC_size() const { return context_ ? context_->process()->LLC_size() : 0x100000u; }

std::uint64_t solver_root::max_total_size() const {
    return context_ ? context_->process()->max_total_size() : process_mgr::no_size_limit;
}

}  // namespace core

namespace fem {

ORV_FEM_HANDLE_IMPL(solver_base, base_class, core::solver_root)

const char* solver_base::name() const { return engine()->name(); }

}  // namespace fem
}  // namespace orv
