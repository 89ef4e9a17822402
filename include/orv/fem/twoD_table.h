// A function of two variables given on a grid, read by bilinear interpolation.
#pragma once

#include <cstddef>

#include <orvmath1/dense1D.h>
#include <orvmath1/dense2D.h>

namespace orv {
namespace fem {

/// Value class over two non-decreasing lists x and y of finite values and a matrix z
/// of finite values with a row per x and a column per y. A table whose data fail these rules is empty; an empty table
/// reads 0.0 everywhere. Copies share the data, which the class never changes in place.
///
/// Reading at (x, y): bilinear interpolation in the cell around the point. Below the
/// first abscissa of a list the first cell goes on (extrapolation); above the last one
/// the values of the last row or column hold.
class twoD_table {
public:
    /// Empty table.
    twoD_table() = default;
    /// As init().
    twoD_table(const dense1D<double>& x, const dense1D<double>& y, const dense2D<double>& z);
    /// Reads the table from a text file:
    ///   list x, list y, matrix z
    /// A list is an optional count (a size hint only), then "[", values separated by
    /// white space, "]". The matrix is its row count, its column count, an optional
    /// "[", the rows*cols values row after row, and one closing delimiter character.
    /// Values are finite decimal numbers. A file that cannot be opened, that does not
    /// follow this form, or whose data fail the rules of init() gives an empty table.
    explicit twoD_table(const char* path);

    /// Empties the table, then takes copies of the data if z has x.size() rows and
    /// y.size() columns, both lists are non-decreasing (a NaN counts as a descent)
    /// and every value of x, y and z is finite. Returns whether the data were taken.
    bool init(const dense1D<double>& x, const dense1D<double>& y, const dense2D<double>& z);
    /// Empties the table.
    void clear();

    /// The value at (x, y): bilinear interpolation, with the same extrapolation as
    /// oneD_table in each direction; 0.0 for an empty table.
    double operator()(double x, double y) const;

    /// The abscissas, one per row of z (shared).
    const dense1D<double>& get_x() const { return x_; }
    /// The ordinates, one per column of z (shared).
    const dense1D<double>& get_y() const { return y_; }
    /// The values, x.size() x y.size() (shared).
    const dense2D<double>& get_z() const { return z_; }
    /// True for a table without values.
    bool empty() const { return z_.rows() * z_.cols() == 0; }

private:
    dense1D<double> x_;
    dense1D<double> y_;
    dense2D<double> z_;
};

}  // namespace fem
}  // namespace orv
