// Scratch files of the tests: a private name, the whole content read and written as
// bytes.
#pragma once

#include <gtest/gtest.h>

#include <unistd.h>

#include <fstream>
#include <sstream>
#include <string>

namespace orv {
namespace test {

// A scratch file name unique to this process, in memory-backed /dev/shm when there is
// one (the truncation tests write thousands of small files).
inline std::string scratch(const std::string& name) {
    const std::string folder = ::access("/dev/shm", W_OK) == 0 ? std::string("/dev/shm/") : ::testing::TempDir();
    return folder + "orv_test_" + std::to_string(::getpid()) + "_" + name;
}

inline std::string slurp(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

inline void spit(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << bytes;
}

}  // namespace test
}  // namespace orv
