// Out-of-core manager: budget and temporary folder.
#include "linalg/OOC_mgr.h"
#include <orv/fem/error_type.h>

#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <limits>

namespace orv {
namespace core {

OOC_mgr::OOC_mgr() { omp_init_lock(&lock_); }

OOC_mgr::~OOC_mgr() { omp_destroy_lock(&lock_); }

int OOC_mgr::init(unsigned MB, const char* folder, const char* prefix) {
    budget_bytes_ = 0;
    free_disk_bytes_ = 0;
    directory_.clear();
    file_stem_.clear();

    std::string dir = folder && *folder ? folder : "/tmp";
    std::string stem = prefix ? prefix : "orv_";
    const std::size_t slash = stem.rfind('/');
    if (slash != std::string::npos) {
        if (dir.back() != '/') dir += '/';
        dir += stem.substr(0, slash);
        stem.erase(0, slash + 1);
    }
    while (dir.size() > 1 && dir.back() == '/') dir.pop_back();
    // The full name of a file is directory + '/' + stem + 6 unique characters.
    if (dir.size() + 1 + stem.size() + 6 >= max_path) return fem::error_temp_file;

    struct stat st;
    if (stat(dir.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) return fem::error_temp_file;
    if (access(dir.c_str(), W_OK | X_OK) != 0) return fem::error_temp_file;
    struct statvfs vfs;
    if (statvfs(dir.c_str(), &vfs) != 0) return fem::error_temp_file;

    free_disk_bytes_ = static_cast<std::uint64_t>(vfs.f_bavail) * vfs.f_frsize;
    directory_ = dir;
    file_stem_ = stem;
    // MB * 2^20 cannot exceed 64 bits for a 32-bit MB; the clamp keeps that explicit.
    const std::uint64_t max_MB = std::numeric_limits<std::uint64_t>::max() >> 20;
    budget_bytes_ = MB > max_MB ? std::numeric_limits<std::uint64_t>::max() : static_cast<std::uint64_t>(MB) << 20;
    return 0;
}

std::uint64_t OOC_mgr::nbr_files() const {
    std::uint64_t n;
#pragma omp atomic read
    n = nbr_files_;
    return n;
}

void OOC_mgr::count_file() {
#pragma omp atomic
    ++nbr_files_;
}

}  // namespace core
}  // namespace orv
