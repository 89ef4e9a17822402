// Processor resources of a context: cores, threads, cache and the run size limit.
#pragma once

#include <cstdint>

#include "orvmath1/ref_counted.h"

namespace orv {
namespace core {

// Values found on the machine at construction, then set by the host between runs.
// Read-only while a run works.
class process_mgr : public ref_counted {
public:
    // Smallest cache size accepted, in bytes.
    static constexpr std::uint64_t min_LLC_size = 102400;
    // max_total_size with all bits set: no limit.
    static constexpr std::uint64_t no_size_limit = ~std::uint64_t(0);

    process_mgr();

    std::uint32_t nbr_physical_cores() const { return physical_cores_; }
    std::uint32_t nbr_logical_processors() const { return logical_processors_; }
    bool hyper_threading() const { return hyper_threading_; }

    std::uint32_t max_threads() const { return max_threads_; }
    // 0 gives 1, otherwise n capped by the runtime's maximum thread count.
    void set_max_threads(std::uint32_t n);

    std::uint64_t LLC_size() const { return LLC_size_; }
    // Values below min_LLC_size are raised to it.
    void set_LLC_size(std::uint64_t bytes);

    // Limit of a run's sum of sizes in MB, no_size_limit when none.
    std::uint64_t max_total_size() const { return max_total_size_; }
    // 0 means no limit.
    void set_max_total_size(std::uint64_t MB);

private:
    std::uint32_t physical_cores_ = 1;
    std::uint32_t logical_processors_ = 1;
    bool hyper_threading_ = false;
    std::uint32_t max_threads_ = 1;
    std::uint64_t max_total_size_ = no_size_limit;
    std::uint64_t LLC_size_ = 0x100000;
};

}  // namespace core
}  // namespace orv
