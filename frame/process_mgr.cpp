// Detection of cores, hyper-threading and last-level cache from the Linux sysfs tree.
#include "frame/process_mgr.h"

#include <omp.h>
#include <unistd.h>
#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#endif

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <string>
#include <utility>

namespace orv {
namespace core {

namespace {

// Reads the first line of a small sysfs file; false when it cannot be read.
bool read_line(const std::string& path, std::string& line) {
    std::FILE* f = std::fopen(path.c_str(), "r");
    if (!f) return false;
    char buf[128];
    const bool ok = std::fgets(buf, sizeof buf, f) != nullptr;
    std::fclose(f);
    if (!ok) return false;
    line = buf;
    while (!line.empty() && (line.back() == '\n' || line.back() == ' ')) line.pop_back();
    return true;
}

bool read_long(const std::string& path, long& value) {
    std::string line;
    if (!read_line(path, line) || line.empty()) return false;
    char* end = nullptr;
    value = std::strtol(line.c_str(), &end, 10);
    return end != line.c_str();
}

// Cache size text such as "32768K" or "2M" in bytes; 0 when unreadable.
std::uint64_t parse_size(const std::string& text) {
    char* end = nullptr;
    const unsigned long long v = std::strtoull(text.c_str(), &end, 10);
    if (end == text.c_str()) return 0;
    switch (*end) {
        case 'K': return v << 10;
        case 'M': return v << 20;
        case 'G': return v << 30;
        default: return v;
    }
}

struct topology {
    std::uint32_t logical = 0;   // online logical processors seen in sysfs
    std::uint32_t physical = 0;  // distinct (package, core) pairs among them
    std::uint64_t LLC = 0;       // size of the highest cache level of cpu0, bytes
};

topology read_topology() {
    topology t;
    std::set<std::pair<long, long>> cores;
    const long nconf = sysconf(_SC_NPROCESSORS_CONF);
    for (long cpu = 0; cpu < std::max(nconf, 1L); ++cpu) {
        const std::string base = "/sys/devices/system/cpu/cpu" + std::to_string(cpu);
        long online = 1;
        if (read_long(base + "/online", online) && online == 0) continue;
        long package = 0, core = 0;
        if (!read_long(base + "/topology/physical_package_id", package) || !read_long(base + "/topology/core_id", core))
            continue;
        ++t.logical;
        cores.insert({package, core});
    }
    t.physical = static_cast<std::uint32_t>(cores.size());

    int best_level = 0;
    for (int index = 0; index < 16; ++index) {
        const std::string base = "/sys/devices/system/cpu/cpu0/cache/index" + std::to_string(index);
        long level = 0;
        std::string type, size;
        if (!read_long(base + "/level", level)) break;
        if (!read_line(base + "/type", type) || type == "Instruction") continue;
        if (!read_line(base + "/size", size)) continue;
        const std::uint64_t bytes = parse_size(size);
        if (bytes && level >= best_level) {
            best_level = static_cast<int>(level);
            t.LLC = bytes;
        }
    }
    return t;
}

// Largest data or unified cache reported by the processor's deterministic cache
// leaves (4 on Intel, 0x8000001D on AMD); 0 when there is none.
std::uint64_t cpuid_LLC() {
#if defined(__x86_64__) || defined(__i386__)
    unsigned a = 0, b = 0, c = 0, d = 0;
    const unsigned max_leaf = __get_cpuid_max(0, nullptr);
    const unsigned max_ext = __get_cpuid_max(0x80000000u, nullptr);
    unsigned leaf = 0;
    if (max_leaf >= 4)
        leaf = 4;
    else if (max_ext >= 0x8000001Du)
        leaf = 0x8000001Du;
    if (!leaf) return 0;
    std::uint64_t best = 0;
    unsigned best_level = 0;
    for (unsigned sub = 0; sub < 16; ++sub) {
        __cpuid_count(leaf, sub, a, b, c, d);
        const unsigned type = a & 0x1Fu;  // 0 none, 1 data, 2 instruction, 3 unified
        if (type == 0) break;
        if (type == 2) continue;
        const unsigned level = (a >> 5) & 0x7u;
        const std::uint64_t ways = ((b >> 22) & 0x3FFu) + 1;
        const std::uint64_t partitions = ((b >> 12) & 0x3FFu) + 1;
        const std::uint64_t line = (b & 0xFFFu) + 1;
        const std::uint64_t sets = std::uint64_t(c) + 1;
        if (level >= best_level) {
            best_level = level;
            best = ways * partitions * line * sets;
        }
    }
    return best;
#else
    return 0;
#endif
}

}  // namespace

process_mgr::process_mgr() {
    const int procs = omp_get_num_procs();
    logical_processors_ = procs > 0 ? static_cast<std::uint32_t>(procs) : 1;
    const topology t = read_topology();
    if (t.physical > 0) {
        // Hyper-threading: more logical processors than cores behind them.
        hyper_threading_ = t.logical > t.physical;
        physical_cores_ = std::min(t.physical, logical_processors_);
    } else {
        physical_cores_ = logical_processors_;
    }
    physical_cores_ = std::max<std::uint32_t>(physical_cores_, 1);
    const int runtime_max = omp_get_max_threads();
    max_threads_ = std::min<std::uint32_t>(physical_cores_, runtime_max > 0 ? runtime_max : 1);
    // The cache from sysfs, else from the processor itself, else one MiB per
    // logical processor.
    std::uint64_t LLC = t.LLC ? t.LLC : cpuid_LLC();
    LLC_size_ = LLC ? LLC : std::uint64_t(logical_processors_) << 20;
}

void process_mgr::set_max_threads(std::uint32_t n) {
    const int runtime_max = omp_get_max_threads();
    const std::uint32_t cap = runtime_max > 0 ? static_cast<std::uint32_t>(runtime_max) : 1;
    max_threads_ = n == 0 ? 1 : std::min(n, cap);
}

void process_mgr::set_LLC_size(std::uint64_t bytes) { LLC_size_ = std::max(bytes, min_LLC_size); }

void process_mgr::set_max_total_size(std::uint64_t MB) { max_total_size_ = MB == 0 ? no_size_limit : MB; }

}  // namespace core
}  // namespace orv
