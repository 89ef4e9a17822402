// Small vector of N numbers held by value.
#pragma once

#include <cassert>
#include <cmath>
#include <cstddef>
#include <initializer_list>

namespace orv {

/// A plain value: the numbers live inside the object, copies are independent. A
/// default-constructed vector is zero.
template <class T, std::size_t N>
class vector_fixed {
public:
    /// The element type.
    typedef T value_type;

    /// The zero vector.
    vector_fixed() noexcept { fill(T()); }
    /// Every element set to value.
    explicit vector_fixed(const T& value) noexcept { fill(value); }
    /// The first min(N, list size) numbers from the list, the others zero.
    vector_fixed(std::initializer_list<T> list) noexcept {
        fill(T());
        std::size_t i = 0;
        for (const T& x : list) {
            if (i == N) break;
            v_[i++] = x;
        }
    }

    /// Sets every element and returns the value.
    const T& operator=(const T& value) noexcept {
        fill(value);
        return value;
    }
    /// Sets every element.
    void fill(const T& value) noexcept {
        for (std::size_t i = 0; i < N; ++i) v_[i] = value;
    }

    /// N.
    static constexpr std::size_t size() noexcept { return N; }
    /// The elements.
    T* data() noexcept { return v_; }
    /// The elements.
    const T* data() const noexcept { return v_; }
    /// Start of the elements.
    T* begin() noexcept { return v_; }
    /// End of the elements.
    T* end() noexcept { return v_ + N; }
    /// Start of the elements.
    const T* begin() const noexcept { return v_; }
    /// End of the elements.
    const T* end() const noexcept { return v_ + N; }
    /// Element i, checked by assert only.
    T& operator[](std::size_t i) noexcept {
        assert(i < N);
        return v_[i];
    }
    /// Element i, checked by assert only.
    const T& operator[](std::size_t i) const noexcept {
        assert(i < N);
        return v_[i];
    }
    /// Element i, as operator[].
    T& operator()(std::size_t i) noexcept { return (*this)[i]; }
    /// Element i, as operator[].
    const T& operator()(std::size_t i) const noexcept { return (*this)[i]; }

    /// Adds o element by element.
    vector_fixed& operator+=(const vector_fixed& o) noexcept {
        for (std::size_t i = 0; i < N; ++i) v_[i] += o.v_[i];
        return *this;
    }
    /// Subtracts o element by element.
    vector_fixed& operator-=(const vector_fixed& o) noexcept {
        for (std::size_t i = 0; i < N; ++i) v_[i] -= o.v_[i];
        return *this;
    }
    /// Multiplies every element by s.
    vector_fixed& operator*=(const T& s) noexcept {
        for (std::size_t i = 0; i < N; ++i) v_[i] *= s;
        return *this;
    }
    /// Sum.
    friend vector_fixed operator+(vector_fixed a, const vector_fixed& b) noexcept { return a += b; }
    /// Difference.
    friend vector_fixed operator-(vector_fixed a, const vector_fixed& b) noexcept { return a -= b; }
    /// Product by a scalar.
    friend vector_fixed operator*(vector_fixed a, const T& s) noexcept { return a *= s; }
    /// Product by a scalar.
    friend vector_fixed operator*(const T& s, vector_fixed a) noexcept { return a *= s; }
    /// True when every element is equal.
    friend bool operator==(const vector_fixed& a, const vector_fixed& b) noexcept {
        for (std::size_t i = 0; i < N; ++i)
            if (!(a.v_[i] == b.v_[i])) return false;
        return true;
    }
    /// True when some element differs.
    friend bool operator!=(const vector_fixed& a, const vector_fixed& b) noexcept { return !(a == b); }

    /// Scalar product.
    T dot(const vector_fixed& o) const noexcept {
        T s = T();
        for (std::size_t i = 0; i < N; ++i) s += v_[i] * o.v_[i];
        return s;
    }
    /// Euclidean norm.
    T norm() const noexcept { return std::sqrt(dot(*this)); }

private:
    T v_[N];
};

/// Cross product of two 3-vectors.
template <class T>
vector_fixed<T, 3> cross(const vector_fixed<T, 3>& a, const vector_fixed<T, 3>& b) noexcept {
    return vector_fixed<T, 3>{a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

extern template class vector_fixed<double, 2>;
extern template class vector_fixed<double, 3>;
extern template class vector_fixed<double, 6>;

}  // namespace orv
