// Out-of-core manager of a context: in-core budget, temporary folder, file count.
#pragma once

#include <omp.h>

#include <cstdint>
#include <string>

#include "orvmath1/ref_counted.h"

namespace orv {
namespace core {

// Made by the context while an in-core limit is set; out-of-core objects keep it
// alive through their own counted reference. All budget changes take lock().
//
// Temporary files live in the folder `folder` (default "/tmp"). Their names start
// with `prefix` (default "orv_"); a part of the prefix up to its last '/' is a
// sub-folder of `folder`. directory() is the folder that really holds the files,
// file_stem() the start of their names.
class OOC_mgr : public ref_counted {
public:
    // Longest temporary path accepted, terminating NUL included.
    static constexpr std::size_t max_path = 256;

    OOC_mgr();
    ~OOC_mgr() override;
    OOC_mgr(const OOC_mgr&) = delete;
    OOC_mgr& operator=(const OOC_mgr&) = delete;

    // Sets the budget (MB * 1048576, clamped to 64 bits) and prepares the temporary
    // folder: it must exist, be a writable directory, and answer a free-space query.
    // Returns 0, or -151 with no budget kept.
    int init(unsigned MB, const char* folder, const char* prefix);

    std::uint64_t budget_bytes() const { return budget_bytes_; }
    const std::string& directory() const { return directory_; }
    const std::string& file_stem() const { return file_stem_; }
    // Free space of the folder in bytes, as found by init.
    std::uint64_t free_disk_bytes() const { return free_disk_bytes_; }

    // Temporary files made so far.
    std::uint64_t nbr_files() const;
    void count_file();

    // Lock of all budget changes.
    void lock() { omp_set_lock(&lock_); }
    void unlock() { omp_unset_lock(&lock_); }

private:
    std::uint64_t budget_bytes_ = 0;
    std::uint64_t free_disk_bytes_ = 0;
    std::uint64_t nbr_files_ = 0;
    std::string directory_;
    std::string file_stem_;
    omp_lock_t lock_;
};

}  // namespace core
}  // namespace orv
