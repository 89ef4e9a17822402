#include "orvmath1/vector_num.h"

#include <complex>
#include <cstdlib>

namespace orv {

namespace {
// No user-space mapping on the supported 64-bit platforms can exceed 2^47 bytes;
// larger requests are refused here instead of being handed to the allocator.
constexpr std::size_t max_block_bytes = std::size_t(1) << 47;
}  // namespace

void* __vector_num_alloc(std::size_t bytes) noexcept {
    if (bytes == 0 || bytes > max_block_bytes) return nullptr;
    return std::malloc(bytes);
}

void __vector_num_free(void* block) noexcept { std::free(block); }

template class vector_num<double, 8>;
template class vector_num<unsigned int, 8>;
template class vector_num<std::complex<double>, 8>;

}  // namespace orv
