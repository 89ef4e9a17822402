// One- and two-variable tables: interpolation, extrapolation, and the text reader on
// well-formed and malformed files.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

#include <orv/fem/oneD_table.h>
#include <orv/fem/twoD_table.h>

#include "common/literal_lists.h"
#include "common/scratch_files.h"

using orv::dense1D;
using orv::dense2D;
using orv::fem::oneD_table;
using orv::fem::twoD_table;
using orv::test::matrix_of;
using orv::test::vec_of;

namespace {

// Table files written to scratch files that the fixture removes afterwards.
class TableFiles : public ::testing::Test {
protected:
    void TearDown() override {
        for (const std::string& f : files_) std::remove(f.c_str());
    }
    std::string write(const std::string& name, const std::string& text) {
        files_.push_back(orv::test::scratch("table_" + name));
        orv::test::spit(files_.back(), text);
        return files_.back();
    }
    std::vector<std::string> files_;
};

// z = x + 10 y on x = {0, 1, 3}, y = {0, 2}: a plane, which bilinear interpolation
// reproduces inside the grid.
const char* plane_text =
    "3 [0 1 3]\n"
    "[0 2]\n"
    "3 2\n"
    "[ 0 20\n"
    "  1 21\n"
    "  3 23 ]\n";

}  // namespace

TEST(OneDTable, InterpolatesExtrapolatesBelowHoldsAbove) {
    oneD_table t(vec_of({0.0, 1.0, 3.0}), vec_of({10.0, 20.0, 0.0}));
    EXPECT_EQ(t(0.0), 10.0);
    EXPECT_EQ(t(0.5), 15.0);
    EXPECT_EQ(t(1.0), 20.0);
    EXPECT_EQ(t(2.0), 10.0);
    EXPECT_EQ(t(3.0), 0.0);
    EXPECT_EQ(t(-1.0), 0.0);  // 10 - 1 * 10: the first segment goes on
    EXPECT_EQ(t(4.0), 0.0);   // last value

    const dense1D<double> r = t(vec_of({-0.5, 0.5, 2.5, 7.0}));
    ASSERT_EQ(r.size(), 4u);
    EXPECT_EQ(r[0], 5.0);
    EXPECT_EQ(r[1], 15.0);
    EXPECT_EQ(r[2], 5.0);
    EXPECT_EQ(r[3], 0.0);
}

TEST(OneDTable, ConstantEmptyAndOwnCopies) {
    oneD_table c(4.25);
    for (double x : {-100.0, 0.0, 0.5, 1e300}) EXPECT_EQ(c(x), 4.25);

    oneD_table e;
    EXPECT_TRUE(e.empty());
    EXPECT_EQ(e(1.0), 0.0);
    EXPECT_EQ(e(vec_of({1.0, 2.0}))[1], 0.0);

    dense1D<double> x = vec_of({0.0, 1.0});
    dense1D<double> y = vec_of({0.0, 2.0});
    oneD_table t(x, y);
    y[1] = 100.0;  // the table holds its own copy
    EXPECT_EQ(t(0.5), 1.0);

    // A y shorter than x holds its last value.
    oneD_table s(vec_of({0.0, 1.0, 2.0}), vec_of({1.0}));
    EXPECT_EQ(s(1.5), 1.0);
    EXPECT_EQ(s(-3.0), 1.0);
}

TEST(TwoDTable, BilinearInsideExtrapolatesBelowHoldsAbove) {
    // z(x, y) = x * y on x = {1, 2}, y = {0, 10}.
    twoD_table t(vec_of({1.0, 2.0}), vec_of({0.0, 10.0}), matrix_of(2, 2, {0.0, 10.0, 0.0, 20.0}));
    ASSERT_FALSE(t.empty());
    EXPECT_EQ(t(1.0, 0.0), 0.0);
    EXPECT_EQ(t(2.0, 10.0), 20.0);
    EXPECT_EQ(t(1.5, 5.0), 7.5);  // bilinear reproduces x * y exactly
    EXPECT_EQ(t(1.25, 2.0), 2.5);
    EXPECT_EQ(t(0.0, 10.0), 0.0);   // below x: the line of the first cell, 10 - 1 * 10
    EXPECT_EQ(t(3.0, 10.0), 20.0);  // above x: the last row holds
    EXPECT_EQ(t(2.0, 20.0), 20.0);  // above y: the last column holds
    EXPECT_EQ(t(5.0, 50.0), 20.0);  // beyond both ends: the corner
    EXPECT_EQ(t(1.5, -10.0), -15.0);

    // A single row: x plays no part.
    twoD_table r(vec_of({1.0}), vec_of({0.0, 1.0}), matrix_of(1, 2, {2.0, 4.0}));
    EXPECT_EQ(r(-5.0, 0.5), 3.0);
    EXPECT_EQ(r(7.0, 0.5), 3.0);
}

TEST(TwoDTable, RefusesBadData) {
    const dense2D<double> z = matrix_of(2, 2, {1.0, 2.0, 3.0, 4.0});
    twoD_table t;
    EXPECT_TRUE(t.init(vec_of({0.0, 1.0}), vec_of({0.0, 1.0}), z));
    EXPECT_EQ(t(0.0, 1.0), 2.0);

    // Descending y: empty, and reads 0.0. The earlier data are gone too.
    EXPECT_FALSE(t.init(vec_of({0.0, 1.0}), vec_of({1.0, 0.0}), z));
    EXPECT_TRUE(t.empty());
    EXPECT_EQ(t(0.0, 1.0), 0.0);
    EXPECT_EQ(t.get_x().size(), 0u);

    EXPECT_FALSE(t.init(vec_of({1.0, 0.0}), vec_of({0.0, 1.0}), z));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(t.init(vec_of({0.0, nan}), vec_of({0.0, 1.0}), z));
    EXPECT_FALSE(t.init(vec_of({nan, 1.0}), vec_of({0.0, 1.0}), z));
    EXPECT_FALSE(t.init(vec_of({0.0, 1.0, 2.0}), vec_of({0.0, 1.0}), z));  // rows mismatch
    EXPECT_FALSE(t.init(vec_of({0.0, 1.0}), vec_of({0.0}), z));            // columns mismatch
    EXPECT_TRUE(t.empty());

    // Equal abscissas are allowed (non-decreasing).
    EXPECT_TRUE(t.init(vec_of({0.0, 0.0}), vec_of({0.0, 1.0}), z));
    EXPECT_EQ(t(0.0, 0.0), 1.0);
}

TEST_F(TableFiles, ReadsAWellFormedFile) {
    twoD_table t(write("plane.txt", plane_text).c_str());
    ASSERT_FALSE(t.empty());
    ASSERT_EQ(t.get_x().size(), 3u);
    ASSERT_EQ(t.get_y().size(), 2u);
    EXPECT_EQ(t.get_z()(2, 1), 23.0);
    EXPECT_EQ(t(0.0, 0.0), 0.0);
    EXPECT_EQ(t(2.0, 1.0), 12.0);
    EXPECT_EQ(t(0.5, 1.5), 15.5);
    EXPECT_EQ(t(3.0, 2.0), 23.0);

    // Without the optional counts and the matrix's opening bracket, on one line, with
    // signs and exponents.
    twoD_table u(write("compact.txt", "[-1 +1e0][0 2.5E-1]2 2 -3 +4 5 6;").c_str());
    ASSERT_FALSE(u.empty());
    EXPECT_EQ(u.get_x()[0], -1.0);
    EXPECT_EQ(u.get_y()[1], 0.25);
    EXPECT_EQ(u(-1.0, 0.25), 4.0);
    EXPECT_EQ(u(1.0, 0.0), 5.0);

    // A count that does not match the list is only a size hint.
    twoD_table v(write("hint.txt", "7 [0 1] 1 [5] 2 1 [1 2]").c_str());
    ASSERT_FALSE(v.empty());
    EXPECT_EQ(v(0.5, 5.0), 1.5);
}

// Files that stop early (no y, no matrix, too few values, no closing delimiter, no
// text at all) are the truncations of the last test.
TEST_F(TableFiles, MalformedFilesGiveAnEmptyTable) {
    const char* cases[][2] = {
        {"no_open_bracket.txt", "0 1 3]\n[0 2]\n3 2 [0 20 1 21 3 23]"},
        {"no_close_bracket.txt", "[0 1 3\n[0 2]\n3 2 [0 20 1 21 3 23]"},
        {"rows_mismatch.txt", "[0 1 3] [0 2] 2 2 [0 20 1 21]"},
        {"cols_mismatch.txt", "[0 1 3] [0 2] 3 1 [0 1 3]"},
        {"descending_x.txt", "[0 3 1] [0 2] 3 2 [0 20 1 21 3 23]"},
        {"descending_y.txt", "[0 1 3] [2 0] 3 2 [0 20 1 21 3 23]"},
        {"nan_x.txt", "[0 nan 3] [0 2] 3 2 [0 20 1 21 3 23]"},
        {"nan_z.txt", "[0 1 3] [0 2] 3 2 [0 20 nan 21 3 23]"},
        {"inf_z.txt", "[0 1 3] [0 2] 3 2 [0 20 inf 21 3 23]"},
        {"word.txt", "[0 one 3] [0 2] 3 2 [0 20 1 21 3 23]"},
        {"double_sign.txt", "[0 +-1 3] [0 2] 3 2 [0 20 1 21 3 23]"},
        {"negative_rows.txt", "[0 1 3] [0 2] -3 2 [0 20 1 21 3 23]"},
        {"huge_counts.txt", "[0 1 3] [0 2] 4000000000 4000000000 [0 20 1 21 3 23]"},
        {"blank.txt", "  \n\t "},
    };
    for (const auto& c : cases) {
        twoD_table t(write(c[0], c[1]).c_str());
        EXPECT_TRUE(t.empty()) << c[0];
        EXPECT_EQ(t(1.0, 1.0), 0.0) << c[0];
        EXPECT_EQ(t.get_x().size(), 0u) << c[0];
    }
}

TEST_F(TableFiles, UnreadablePathsGiveAnEmptyTable) {
    twoD_table missing(orv::test::scratch("table_does_not_exist.txt").c_str());
    EXPECT_TRUE(missing.empty());
    twoD_table folder(::testing::TempDir().c_str());
    EXPECT_TRUE(folder.empty());
    twoD_table null_path(static_cast<const char*>(nullptr));
    EXPECT_TRUE(null_path.empty());
    EXPECT_EQ(null_path(0.0, 0.0), 0.0);
}

TEST_F(TableFiles, EveryTruncationOfAGoodFileIsRefused) {
    // The table is complete only with the matrix's closing delimiter: every shorter
    // prefix of the file lacks something and must give an empty table.
    const std::string text = plane_text;
    const std::size_t complete = text.rfind(']') + 1;
    for (std::size_t n = 0; n < complete; ++n) {
        twoD_table t(write("prefix.txt", text.substr(0, n)).c_str());
        EXPECT_TRUE(t.empty()) << n;
    }
    twoD_table t(write("prefix.txt", text.substr(0, complete)).c_str());
    EXPECT_FALSE(t.empty());
    EXPECT_EQ(t(3.0, 2.0), 23.0);
}
