// A function of one variable given by a table of points, read by linear interpolation.
#pragma once

#include <orvmath1/dense1D.h>

namespace orv {
namespace fem {

/// Value class over two lists x (ascending) and y of the same length. Copies share the
/// lists, which the class never changes in place: init() makes new copies.
///
/// Reading at x: linear interpolation between the two points around x. Below the
/// first abscissa the first segment goes on (extrapolation); above the last one the
/// last value holds. An empty table reads 0.0 everywhere.
class oneD_table {
public:
    /// Empty table.
    oneD_table() = default;
    /// The constant c: the single point (0.0, c); empty for a c that is not finite.
    explicit oneD_table(double c);
    /// As init().
    oneD_table(const dense1D<double>& x, const dense1D<double>& y);

    /// Replaces the table by copies of both lists. The abscissas are taken as
    /// ascending and their order is not checked; a y shorter than x holds its last
    /// value past its end. False (and an empty table) when a value is not finite (NaN
    /// or infinite) or when the memory cannot be had.
    bool init(const dense1D<double>& x, const dense1D<double>& y);

    /// The value at x.
    double operator()(double x) const;
    /// Element by element; an empty result when the memory cannot be had.
    dense1D<double> operator()(const dense1D<double>& x) const;

    /// The abscissas (shared).
    const dense1D<double>& get_x() const { return x_; }
    /// The values (shared).
    const dense1D<double>& get_y() const { return y_; }
    /// True for a table without points.
    bool empty() const { return x_.empty(); }

private:
    dense1D<double> x_;
    dense1D<double> y_;
};

}  // namespace fem
}  // namespace orv
