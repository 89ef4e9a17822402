// Small dense matrices held in a std::vector, column-major.
#pragma once

#include <cstddef>
#include <vector>

namespace orv {
namespace core {

// Inverse of the n x n matrix a, in place, by Gauss-Jordan elimination with partial
// pivoting. False (a unchanged in meaning) when it is singular or not finite.
bool invert_small(std::vector<double>& a, std::size_t n);

}  // namespace core
}  // namespace orv
