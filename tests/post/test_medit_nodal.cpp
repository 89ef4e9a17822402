// Nodal text files: header, values per node, round trip, error paths.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include <orv/fem/medit_nodal.h>

using namespace orv;

namespace {

std::string read_all(std::FILE* f) {
    std::rewind(f);
    std::string s;
    for (int c; (c = std::fgetc(f)) != EOF;) s += static_cast<char>(c);
    return s;
}

// Two nodes with all nine DOF positions, value node * 100 + position + column / 10.
fem::FEM_matrix two_nodes(unsigned cols) {
    dense1D<unsigned int> IDs;
    for (unsigned id = 0; id < 18; ++id) IDs.push_back(id);
    fem::FEM_matrix U(IDs, cols);
    for (unsigned id = 0; id < 18; ++id)
        for (unsigned c = 0; c < cols; ++c) U.set_val(id, c, (id / 9) * 100 + id % 9 + c / 10.0);
    return U;
}

}  // namespace

TEST(MeditNodal, FieldFormRoundTrip) {
    const fem::FEM_matrix U = two_nodes(2);
    std::FILE* f = std::tmpfile();
    ASSERT_TRUE(f);
    // Three nodes asked, the third has no rows: its values are zeros.
    ASSERT_EQ(fem::medit_nodal(f, 3, U, 1, fem::field_rotation, 2, 3), fem::no_error);
    std::rewind(f);
    int dim, count, nodes, two;
    ASSERT_EQ(std::fscanf(f, "%d %d %d %d", &dim, &count, &nodes, &two), 4);
    EXPECT_EQ(dim, 3);
    EXPECT_EQ(count, 2);  // two of the three rotations
    EXPECT_EQ(nodes, 3);
    EXPECT_EQ(two, 2);
    const double expected[] = {3.1, 4.1, 103.1, 104.1, 0.0, 0.0};
    for (double e : expected) {
        double v;
        ASSERT_EQ(std::fscanf(f, "%lf", &v), 1);
        EXPECT_NEAR(v, e, 1e-5 * (1 + e));
    }
    std::fclose(f);
}

TEST(MeditNodal, StrideFormAndZeroNodes) {
    const fem::FEM_matrix U = two_nodes(4);
    std::FILE* f = std::tmpfile();
    ASSERT_EQ(fem::medit_nodal(f, 2, U, 2, 1), fem::no_error);  // columns 2 and 3 of 18 rows
    const std::string text = read_all(f);
    EXPECT_EQ(text.substr(0, text.find('\n')), "2 2 18 2");
    // Row of ID 10 (node 1, position 1): 101 plus the column tenths.
    EXPECT_NE(text.find("\n2.000000E-01 3.000000E-01 \n"), std::string::npos);
    EXPECT_NE(text.find("\n1.012000E+02 1.013000E+02 \n"), std::string::npos);
    std::fclose(f);

    f = std::tmpfile();
    ASSERT_EQ(fem::medit_nodal(f, 3, U, 0, fem::field_displacement, 3, 0), fem::no_error);
    EXPECT_EQ(read_all(f), "3 3 0 2\n");
    std::fclose(f);
}

TEST(MeditNodal, ErrorPaths) {
    const fem::FEM_matrix U = two_nodes(2);
    EXPECT_EQ(fem::medit_nodal(static_cast<std::FILE*>(nullptr), 3, U, 0, fem::field_displacement, 3, 2),
              fem::error_file);
    EXPECT_EQ(fem::medit_nodal("/nonexistent-folder/x.bb", 3, U, 0, fem::field_displacement, 3, 2), fem::error_file);
    std::FILE* f = std::tmpfile();
    EXPECT_EQ(fem::medit_nodal(f, 3, U, 2, fem::field_displacement, 3, 2), fem::error_data);
    EXPECT_EQ(fem::medit_nodal(f, 3, U, 2, 1), fem::error_data);  // needs 4 columns
    EXPECT_EQ(read_all(f), "");                                   // nothing written on a refused call
    std::fclose(f);
}
