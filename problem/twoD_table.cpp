// Two-variable table and its text reader.
#include "problem/twoD_table.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

#include "problem/evolution_func.h"

namespace orv {
namespace fem {

namespace {

// True when the list never descends; a NaN counts as a descent.
bool non_decreasing(const dense1D<double>& v) {
    for (std::size_t i = 0; i < v.size(); ++i) {
        if (std::isnan(v[i])) return false;
        if (i > 0 && v[i] < v[i - 1]) return false;
    }
    return true;
}

// Reader of the text form of a table over a buffer that holds the whole file.
class table_reader {
public:
    table_reader(const char* first, const char* last) : p_(first), end_(last) {}

    // [count] "[" values "]"
    bool list(std::vector<double>& out) {
        skip_space();
        if (p_ != end_ && *p_ != '[') {
            std::uint64_t count;  // a size hint: not used for any decision
            if (!integer(count)) return false;
            skip_space();
        }
        if (p_ == end_ || *p_ != '[') return false;
        ++p_;
        for (;;) {
            skip_space();
            if (p_ == end_) return false;
            if (*p_ == ']') {
                ++p_;
                return true;
            }
            double v;
            if (!number(v)) return false;
            out.push_back(v);
        }
    }

    // rows cols ["["] values delimiter; z is filled row after row.
    bool matrix(dense2D<double>& z) {
        std::uint64_t rows, cols;
        skip_space();
        if (!integer(rows)) return false;
        skip_space();
        if (!integer(cols)) return false;
        skip_space();
        if (p_ != end_ && *p_ == '[') ++p_;
        // Each value takes at least one character: a count beyond what is left of
        // the file cannot be met, and is refused before any allocation.
        const std::uint64_t left = static_cast<std::uint64_t>(end_ - p_);
        if (rows != 0 && cols > left / rows) return false;
        if (!z.resize(static_cast<std::size_t>(rows), static_cast<std::size_t>(cols))) return false;
        for (std::size_t i = 0; i < rows; ++i) {
            for (std::size_t j = 0; j < cols; ++j) {
                skip_space();
                if (!number(z(i, j))) return false;
            }
        }
        // The closing delimiter: any one character, which must be there.
        skip_space();
        if (p_ == end_) return false;
        ++p_;
        return true;
    }

private:
    static bool space(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v'; }
    void skip_space() {
        while (p_ != end_ && space(*p_)) ++p_;
    }

    // Optional sign, then decimal digits. A negative count is read and refused.
    bool integer(std::uint64_t& v) {
        const char* q = p_;
        bool negative = false;
        if (q != end_ && (*q == '+' || *q == '-')) negative = *q++ == '-';
        const auto r = std::from_chars(q, end_, v);
        if (r.ec != std::errc() || r.ptr == q) return false;
        if (negative && v != 0) return false;
        p_ = r.ptr;
        return true;
    }

    // A finite decimal number with an optional leading '+'.
    bool number(double& v) {
        const char* q = p_;
        if (q != end_ && *q == '+') {
            ++q;
            if (q != end_ && *q == '-') return false;  // "+-" is no number
        }
        const auto r = std::from_chars(q, end_, v, std::chars_format::general);
        if (r.ec != std::errc() || r.ptr == q || !std::isfinite(v)) return false;
        p_ = r.ptr;
        return true;
    }

    const char* p_;
    const char* end_;
};

bool to_dense(const std::vector<double>& v, dense1D<double>& out) {
    if (!out.resize(v.size())) return false;
    for (std::size_t i = 0; i < v.size(); ++i) out[i] = v[i];
    return true;
}

}  // namespace

twoD_table::twoD_table(const dense1D<double>& x, const dense1D<double>& y, const dense2D<double>& z) { init(x, y, z); }

twoD_table::twoD_table(const char* path) {
    if (!path) return;
    try {
        std::string text;
        {
            std::ifstream in(path, std::ios::in | std::ios::binary);
            if (!in) return;
            text.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
            if (in.bad()) return;
        }
        table_reader reader(text.data(), text.data() + text.size());
        std::vector<double> x, y;
        dense2D<double> z;
        if (!reader.list(x) || !reader.list(y) || !reader.matrix(z)) return;
        dense1D<double> dx, dy;
        if (!to_dense(x, dx) || !to_dense(y, dy)) return;
        init(dx, dy, z);
    } catch (...) {
        clear();  // memory ran out while reading: the table stays empty
    }
}

void twoD_table::clear() {
    x_.clear_hard();
    y_.clear_hard();
    z_.clear_hard();
}

bool twoD_table::init(const dense1D<double>& x, const dense1D<double>& y, const dense2D<double>& z) {
    clear();
    if (z.rows() != x.size() || z.cols() != y.size()) return false;
    if (!non_decreasing(x) || !non_decreasing(y)) return false;
    // Infinite abscissas and non-finite values would spread into every reading.
    for (std::size_t i = 0; i < x.size(); ++i)
        if (!std::isfinite(x[i])) return false;
    for (std::size_t j = 0; j < y.size(); ++j)
        if (!std::isfinite(y[j])) return false;
    for (std::size_t j = 0; j < z.cols(); ++j)
        for (std::size_t i = 0; i < z.rows(); ++i)
            if (!std::isfinite(z(i, j))) return false;
    dense1D<double> nx, ny;
    dense2D<double> nz;
    if (!nx.copy(x) || !ny.copy(y) || !nz.resize(z.rows(), z.cols())) return false;
    for (std::size_t j = 0; j < z.cols(); ++j)
        for (std::size_t i = 0; i < z.rows(); ++i) nz(i, j) = z(i, j);
    x_ = nx;
    y_ = ny;
    z_ = nz;
    return true;
}

double twoD_table::operator()(double x, double y) const {
    if (empty()) return 0.0;
    std::size_t i, j;
    double wx, wy;
    core::detail::locate(x_.data(), x_.size(), x, i, wx);
    core::detail::locate(y_.data(), y_.size(), y, j, wy);
    const bool next_i = i + 1 < z_.rows();
    const bool next_j = j + 1 < z_.cols();
    const double z00 = z_(i, j);
    const double z10 = next_i ? z_(i + 1, j) : z00;
    const double z01 = next_j ? z_(i, j + 1) : z00;
    const double z11 = next_i && next_j ? z_(i + 1, j + 1) : z00;
    const double low = z00 + (z10 - z00) * wx;
    const double high = z01 + (z11 - z01) * wx;
    return low + (high - low) * wy;
}

}  // namespace fem
}  // namespace orv
