// Elastic laws whose stiffness is given directly: the columns of a skyline of the
// symmetric N x N matrix D, then a tail of values whose first three are the thermal
// strains per degree of the first three strain slots.
#pragma once

#include <cstddef>

#include "laws/law_base.h"
#include "orvmath1/dense1D.h"
#include "orvmath1/vector_fixed.h"

namespace orv {
namespace core {

// Base is the law family (law_solid_stiff, law_shell_stiff). Column j (0 to N - 1)
// holds heights[j] values, 1 <= heights[j] <= j + 1: the terms of rows
// j - heights[j] + 1 to j, top down; the terms above them are 0. The data vector is
// these columns one after the other, then Tail values.
template <class Base, unsigned N, std::size_t Tail>
class law_skyline : public Base {
public:
    using tangent_type = typename Base::tangent_type;

    law_skyline() {
        for (unsigned j = 0; j < N; ++j) heights_[j] = j + 1;
    }

    // Sets the heights then the data; -1 for heights out of range (nothing kept).
    int init(const vector_fixed<unsigned int, N>& heights, const dense1D<double>& data) {
        for (unsigned j = 0; j < N; ++j) {
            if (heights[j] < 1 || heights[j] > j + 1) {
                this->data_.clear_hard();
                return this->init_code_ = law_bad_size;
            }
        }
        heights_ = heights;
        return Base::init(data);
    }
    using Base::init;

    bool check_size(const dense1D<double>& data) const override { return data.size() == nbr_matrix_values() + Tail; }
    int fill_D(const dense1D<double>& data, tangent_type& D) const override {
        D.fill(0.0);
        if (!check_size(data)) return law_bad_size;
        std::size_t k = 0;
        for (unsigned j = 0; j < N; ++j)
            for (unsigned i = j + 1 - heights_[j]; i <= j; ++i) D(i, j) = data[k++];
        return law_ok;
    }
    void get_alphas(const dense1D<double>& data, double alpha[3]) const override {
        const std::size_t n = nbr_matrix_values();
        for (unsigned k = 0; k < 3; ++k) alpha[k] = data[n + k];
    }

    const vector_fixed<unsigned int, N>& heights() const { return heights_; }
    // Number of matrix values of the skyline.
    std::size_t nbr_matrix_values() const {
        std::size_t n = 0;
        for (unsigned j = 0; j < N; ++j) n += heights_[j];
        return n;
    }

private:
    vector_fixed<unsigned int, N> heights_;
};

}  // namespace core
}  // namespace orv
