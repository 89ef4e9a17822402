// Native binary files of the public matrices: counted arrays in the machine's byte
// order, no header and no padding.
#pragma once

#include <cstdint>
#include <cstdio>

namespace orv {
namespace core {

// Writes items and counted arrays; the first failure sticks and close() reports it.
class binary_writer {
public:
    explicit binary_writer(const char* path) : file_(path ? std::fopen(path, "wb") : nullptr), ok_(file_ != nullptr) {}
    ~binary_writer() {
        if (file_) std::fclose(file_);
    }
    binary_writer(const binary_writer&) = delete;
    binary_writer& operator=(const binary_writer&) = delete;

    bool ok() const { return ok_; }
    void raw(const void* p, std::size_t bytes) {
        if (ok_ && bytes && std::fwrite(p, 1, bytes, file_) != bytes) ok_ = false;
    }
    template <class T>
    void item(const T& v) {
        raw(&v, sizeof(T));
    }
    // A 64-bit count, then the n items.
    template <class T>
    void items(const T* p, std::size_t n) {
        item(std::uint64_t(n));
        if (n) raw(p, n * sizeof(T));
    }
    // 0, or -1 when any write or the close failed.
    int close() {
        if (file_ && std::fclose(file_) != 0) ok_ = false;
        file_ = nullptr;
        return ok_ ? 0 : -1;
    }

private:
    std::FILE* file_;
    bool ok_;
};

// Reads what binary_writer wrote. It knows the bytes left in the file, so that a count
// read from a damaged file is refused before anything is allocated for it.
class binary_reader {
public:
    explicit binary_reader(const char* path) : file_(path ? std::fopen(path, "rb") : nullptr) {
        if (!file_) return;
        long size = -1;
        if (std::fseek(file_, 0, SEEK_END) == 0) size = std::ftell(file_);
        if (size < 0 || std::fseek(file_, 0, SEEK_SET) != 0) {
            std::fclose(file_);
            file_ = nullptr;
            return;
        }
        left_ = std::uint64_t(size);
    }
    ~binary_reader() {
        if (file_) std::fclose(file_);
    }
    binary_reader(const binary_reader&) = delete;
    binary_reader& operator=(const binary_reader&) = delete;

    bool is_open() const { return file_ != nullptr; }
    std::uint64_t bytes_left() const { return left_; }
    // False at the end of the file or on a read error.
    bool raw(void* p, std::uint64_t bytes) {
        if (!file_ || bytes > left_) return false;
        if (bytes && std::fread(p, 1, std::size_t(bytes), file_) != bytes) return false;
        left_ -= bytes;
        return true;
    }
    template <class T>
    bool item(T& v) {
        return raw(&v, sizeof(T));
    }
    // A count of items of `item_bytes` each; false when the file cannot hold them.
    bool count(std::uint64_t& n, std::uint64_t item_bytes) {
        if (!item(n)) return false;
        return item_bytes == 0 || n <= left_ / item_bytes;
    }

private:
    std::FILE* file_;
    std::uint64_t left_ = 0;
};

}  // namespace core
}  // namespace orv
