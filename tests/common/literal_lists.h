// Containers from literal lists, for small hand-written test data.
#pragma once

#include <cstddef>
#include <initializer_list>

#include "orvmath1/dense1D.h"
#include "orvmath1/dense2D.h"

namespace orv {
namespace test {

// DOF IDs, indices or offsets, in the order given.
inline dense1D<unsigned int> list_of(std::initializer_list<unsigned int> v) {
    dense1D<unsigned int> out(v.size());
    std::size_t k = 0;
    for (unsigned int x : v) out[k++] = x;
    return out;
}

// Values in the order given.
inline dense1D<double> vec_of(std::initializer_list<double> v) {
    dense1D<double> out(v.size());
    std::size_t k = 0;
    for (double x : v) out[k++] = x;
    return out;
}

// A rows x cols matrix given row after row.
inline dense2D<double> matrix_of(std::size_t rows, std::size_t cols, std::initializer_list<double> v) {
    dense2D<double> m(rows, cols);
    std::size_t n = 0;
    for (double x : v) {
        m(n / cols, n % cols) = x;
        ++n;
    }
    return m;
}

}  // namespace test
}  // namespace orv
