// The public matrices: accessors and their error paths, views, growth, copies and the
// complex forms; the symmetric sparse matrix; the factor's file, saved and loaded.
#include <gtest/gtest.h>

#include <orv/fem/error_type.h>

#include <complex>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <orv/fem/FEM_SymSparse.h>
#include <orv/fem/FEM_Zmatrix.h>
#include <orv/fem/FEM_factor.h>
#include <orv/fem/FEM_matrix.h>

#include "common/literal_lists.h"
#include "common/scratch_files.h"
#include "factor_checker.h"
#include "linalg/FEM_matrix_impl.h"
#include "linalg/dense2D_OOC.h"
#include "linalg/indexed_sym.h"
#include "linalg/symmetric_L_D_Lt.h"

using namespace orv;
using namespace orv::fem;
using orv::test::list_of;
using orv::test::scratch;
using orv::test::slurp;
using orv::test::spit;
using orv::test::vec_of;

namespace {

// The value that get_val reads at (row, col); a refused read leaves it zero.
template <class T = double, class M>
T val(M& m, std::uint64_t row, std::uint64_t col) {
    T v{};
    m.get_val(row, col, v);
    return v;
}

// The value of type T at byte offset `at` of a file's bytes.
template <class T>
T read_at(const std::string& bytes, std::size_t at) {
    T v;
    std::memcpy(&v, bytes.data() + at, sizeof v);
    return v;
}

// Node 2: displacements 18, 19, 20 and rotation 21; node 5: displacement x (45).
FEM_matrix sample(std::uint64_t cols) {
    FEM_matrix m(list_of({18, 19, 20, 21, 45}), cols, 0.0);
    for (std::uint64_t c = 0; c < cols; ++c) {
        const unsigned ids[5] = {18, 19, 20, 21, 45};
        for (unsigned k = 0; k < 5; ++k) m.set_val(ids[k], c, 100.0 * double(c) + ids[k]);
    }
    return m;
}

}  // namespace

TEST(FEM_matrix, values_rows_and_their_range_errors) {
    FEM_matrix m = sample(3);
    EXPECT_EQ(m.rows(), 5u);
    EXPECT_EQ(m.cols(), 3u);
    EXPECT_EQ(m.row_pos(21), 3u);
    EXPECT_EQ(m.row_pos(22), ~std::uint64_t(0));
    EXPECT_EQ(m.row_pos(0x100000000ull + 18), ~std::uint64_t(0));

    double v = 7.0;
    EXPECT_EQ(m.get_val(20, 2, v), 0);
    EXPECT_EQ(v, 220.0);
    v = 7.0;
    EXPECT_EQ(m.get_val(22, 0, v), error_data);  // unknown ID
    EXPECT_EQ(v, 0.0);
    v = 7.0;
    EXPECT_EQ(m.get_val(18, 3, v), error_data);  // column past the end
    EXPECT_EQ(v, 0.0);

    EXPECT_EQ(m.set_val(18, 3, 1.0), error_data);
    EXPECT_EQ(m.set_val(22, 0, 1.0), no_error);  // unknown ID skipped
    EXPECT_EQ(m.setID_val(22, 0, 1.0), error_data);
    EXPECT_EQ(m.setID_val(45, 1, -4.0), no_error);
    EXPECT_EQ(val(m, 45, 1), -4.0);

    // Rows: capped reads, writes that must fit.
    dense1D<double> row;
    EXPECT_EQ(m.get_row(19, row, 1, 10), 0);
    ASSERT_EQ(row.size(), 2u);
    EXPECT_EQ(row[0], 119.0);
    EXPECT_EQ(row[1], 219.0);
    EXPECT_EQ(m.get_row(19, row, 2), 0);
    ASSERT_EQ(row.size(), 1u);
    EXPECT_EQ(row[0], 219.0);
    EXPECT_EQ(m.get_row(19, row), 0);
    EXPECT_EQ(row.size(), 3u);
    EXPECT_EQ(m.get_row(19, row, 4, 1), error_data);
    EXPECT_EQ(m.get_row(23, row), error_data);
    EXPECT_EQ(m.set_row(20, vec_of({1, 2}), 1), 0);
    EXPECT_EQ(val(m, 20, 2), 2.0);
    EXPECT_EQ(m.set_row(20, vec_of({1, 2}), 2), error_data);
    EXPECT_EQ(m.set_row(23, vec_of({1}), 0), no_error);
    EXPECT_EQ(m.setID_row(23, vec_of({1}), 0), error_data);

    // Columns: a view writes through; copies in and out check their sizes.
    dense1D<double> c1 = m.col(1);
    ASSERT_EQ(c1.size(), 5u);
    c1[0] = 55.0;
    EXPECT_EQ(val(m, 18, 1), 55.0);
    EXPECT_EQ(m.col(3).size(), 0u);
    dense1D<double> c;
    EXPECT_EQ(m.get_col(0, c), 0);
    EXPECT_EQ(c.size(), 5u);
    EXPECT_EQ(c[4], 45.0);
    EXPECT_EQ(m.get_col(3, c), error_data);
    EXPECT_EQ(m.set_col(0, vec_of({1, 2, 3})), error_data);
    EXPECT_EQ(m.set_col(0, vec_of({1, 2, 3, 4, 5})), 0);
    EXPECT_EQ(val(m, 21, 0), 4.0);
}

TEST(FEM_matrix, repeated_IDs_keep_the_first_row) {
    FEM_matrix m(list_of({9, 4, 9, 1}), 2, 3.0);
    EXPECT_EQ(m.rows(), 3u);
    dense1D<unsigned int> ids = m.get_IDs();
    ASSERT_EQ(ids.size(), 3u);
    EXPECT_EQ(ids[0], 9u);
    EXPECT_EQ(ids[1], 4u);
    EXPECT_EQ(ids[2], 1u);
}

TEST(FEM_matrix, nodal_vectors_read_missing_IDs_as_zero) {
    FEM_matrix m = sample(2);
    vector_fixed<double, 3> d;
    EXPECT_EQ(m.get_vector(2, field_displacement, 1, d), 0);
    EXPECT_EQ(d[0], 118.0);
    EXPECT_EQ(d[1], 119.0);
    EXPECT_EQ(d[2], 120.0);
    EXPECT_EQ(m.get_vector(2, field_rotation, 0, d), 0);
    EXPECT_EQ(d[0], 21.0);
    EXPECT_EQ(d[1], 0.0);
    EXPECT_EQ(d[2], 0.0);
    EXPECT_EQ(m.get_vector(7, field_temperature, 0, d), 0);  // no such node: zeros
    EXPECT_EQ(d[0], 0.0);
    EXPECT_EQ(m.get_vector(2, static_cast<field_tag>(8), 0, d), error_data);
    EXPECT_EQ(m.get_vector(2, field_displacement, 2, d), error_data);

    vector_fixed<double, 3> w;
    w[0] = -1;
    w[1] = -2;
    w[2] = -3;
    EXPECT_EQ(m.set_vector(5, field_displacement, 0, w), 0);  // only x exists
    EXPECT_EQ(val(m, 45, 0), -1.0);
    EXPECT_EQ(m.rows(), 5u);

    dense2D<double> all;
    EXPECT_EQ(m.get_vectors(2, field_displacement, 0, all), 0);
    ASSERT_EQ(all.rows(), 3u);
    ASSERT_EQ(all.cols(), 2u);
    EXPECT_EQ(all(2, 0), 20.0);
    EXPECT_EQ(all(0, 1), 118.0);
    EXPECT_EQ(m.get_vectors(2, field_displacement, 3, all), error_data);

    // Displacements added to positions: node 2 moves by alpha * (18, 19, 20) + ..., the
    // rotation and the node past the positions are left out.
    dense2D<double> pos(3, 3, 1.0);
    EXPECT_EQ(m.add_displacements(pos, 0, 0.5), 0);
    EXPECT_EQ(pos(0, 2), 1.0 + 9.0);
    EXPECT_EQ(pos(1, 2), 1.0 + 9.5);
    EXPECT_EQ(pos(2, 2), 1.0 + 10.0);
    EXPECT_EQ(pos(0, 0), 1.0);
    EXPECT_EQ(m.add_displacements(pos, 2, 1.0), error_data);
}

TEST(FEM_matrix, column_views_are_capped_and_share_values) {
    FEM_matrix m = sample(4);
    FEM_matrix v(m, 3, 2);
    EXPECT_EQ(v.cols(), 1u);
    EXPECT_EQ(v.rows(), 5u);
    double x;
    EXPECT_EQ(val(v, 19, 0), 319.0);
    v.set_val(19, 0, -1.0);
    EXPECT_EQ(val(m, 19, 3), -1.0);

    FEM_matrix none(m, 7, 2);
    EXPECT_EQ(none.cols(), 0u);
    EXPECT_EQ(none.get_val(19, 0, x), error_data);

    FEM_matrix mid(m, 1, 2);
    dense2D<double> raw = mid.as_raw_matrix();
    ASSERT_EQ(raw.rows(), 5u);
    ASSERT_EQ(raw.cols(), 2u);
    EXPECT_EQ(raw(1, 0), 119.0);
    EXPECT_EQ(raw(1, 1), 219.0);
    EXPECT_TRUE(mid.is_all_incore());
}

TEST(FEM_matrix, zero_columns_answer_an_empty_raw_view) {
    FEM_matrix z(list_of({1, 2, 3}), 0, 1.0);
    EXPECT_EQ(z.rows(), 3u);
    EXPECT_EQ(z.cols(), 0u);
    dense2D<double> raw = z.as_raw_matrix();
    EXPECT_EQ(raw.rows() * raw.cols(), 0u);
    EXPECT_EQ(z.col(0).size(), 0u);
    double v = 1;
    EXPECT_EQ(z.get_val(1, 0, v), error_data);
    EXPECT_TRUE(z.is_all_incore());
    EXPECT_TRUE(z.force_incore());

    FEM_matrix empty;
    EXPECT_TRUE(empty.is_valid());
    EXPECT_EQ(empty.rows(), 0u);
    EXPECT_EQ(empty.as_raw_matrix().rows() * empty.as_raw_matrix().cols(), 0u);
}

TEST(FEM_matrix, growth_copies_and_arithmetic) {
    FEM_matrix m = sample(2);
    // Other order and a row this matrix lacks: rows are matched by ID.
    FEM_matrix o(list_of({45, 99, 18}), 1, 0.0);
    o.set_val(45, 0, 4.5);
    o.set_val(99, 0, 9.9);
    o.set_val(18, 0, 1.8);
    EXPECT_EQ(m.push_back(o), 0);
    EXPECT_EQ(m.cols(), 3u);
    EXPECT_EQ(val(m, 45, 2), 4.5);
    EXPECT_EQ(val(m, 18, 2), 1.8);
    EXPECT_EQ(val(m, 19, 2), 0.0);
    EXPECT_EQ(val(m, 19, 1), 119.0);
    EXPECT_EQ(m.push_back(m), 0);  // appending itself doubles the columns
    EXPECT_EQ(m.cols(), 6u);
    EXPECT_EQ(val(m, 45, 5), 4.5);
    EXPECT_EQ(m.pop_back(4), 0);
    EXPECT_EQ(m.cols(), 2u);
    EXPECT_EQ(m.pop_back(9), 0);
    EXPECT_EQ(m.cols(), 0u);

    // Value copy against sharing.
    FEM_matrix a = sample(2), b, s;
    EXPECT_EQ(b.copy(a), 0);
    s.shallow_copy(a);
    a.set_val(18, 0, -7.0);
    EXPECT_EQ(val(b, 18, 0), 18.0);
    EXPECT_EQ(val(s, 18, 0), -7.0);
    EXPECT_EQ(b.copy(b), 0);
    EXPECT_EQ(b.copy(2.5), 0);
    EXPECT_EQ(val(b, 45, 1), 2.5);
    b.clear();
    EXPECT_EQ(b.rows(), 0u);
    EXPECT_TRUE(b.is_valid());

    // axpy on common IDs only; columns must agree.
    FEM_matrix y = sample(2);
    FEM_matrix x(list_of({21, 7}), 2, 1.0);
    EXPECT_EQ(y.axpy(2.0, x), 0);
    EXPECT_EQ(val(y, 21, 1), 121.0 + 2.0);
    EXPECT_EQ(val(y, 20, 1), 120.0);
    FEM_matrix x3(list_of({21}), 3, 1.0);
    EXPECT_EQ(y.axpy(1.0, x3), error_data);
}

TEST(FEM_matrix, narrowing_between_matrices_and_states) {
    FEM_matrix plain = sample(1);
    FEM_states narrowed(static_cast<const base_class&>(plain));
    EXPECT_FALSE(narrowed.is_valid());
    EXPECT_EQ(narrowed.obj_type_id(), FEM_states::type_id());

    FEM_states s(list_of({18, 19}), 3, 1.0);
    FEM_matrix wide(static_cast<const base_class&>(s));
    EXPECT_TRUE(wide.is_valid());
    EXPECT_EQ(wide.cols(), 3u);
    EXPECT_EQ(wide.obj_type_id(), FEM_states::type_id());
}

TEST(FEM_states, per_column_stress_and_step_values) {
    context ctx;
    FEM_states s(list_of({18, 19}), 3, 1.0);
    stress_mgr sm(ctx);
    EXPECT_EQ(s.set_stress_mgr(1, sm), 0);
    EXPECT_EQ(s.set_stress_mgr(3, sm), error_data);
    EXPECT_EQ(s.set_step_value(2, 0.25), 0);
    stress_mgr got;
    EXPECT_EQ(s.get_stress_mgr(1, got), 0);
    EXPECT_EQ(got.get_w(), sm.get_w());
    EXPECT_EQ(s.get_stress_mgr(0, got), 0);
    EXPECT_FALSE(got.is_valid());
    EXPECT_EQ(s.get_stress_mgr(3, got), error_data);

    // One column as states of its own, sharing values.
    FEM_states one = s.get_state(1);
    ASSERT_TRUE(one.is_valid());
    EXPECT_EQ(one.cols(), 1u);
    EXPECT_EQ(one.get_stress_mgr(0, got), 0);
    EXPECT_EQ(got.get_w(), sm.get_w());
    one.set_val(19, 0, 8.0);
    double v;
    EXPECT_EQ(val(s, 19, 1), 8.0);
    FEM_states two;
    EXPECT_EQ(s.get_state(2, two), 0);
    EXPECT_EQ(two.get_step_value(0, v), 0);
    EXPECT_EQ(v, 0.25);
    EXPECT_EQ(s.get_state(3, two), error_data);
    EXPECT_FALSE(s.get_state(3).is_valid());

    // Appending states carries their per-column data along.
    FEM_states t;
    EXPECT_EQ(t.copy(s), 0);
    EXPECT_EQ(t.push_back(s), 0);
    EXPECT_EQ(t.cols(), 6u);
    EXPECT_EQ(t.get_step_value(5, v), 0);
    EXPECT_EQ(v, 0.25);
    EXPECT_EQ(t.get_stress_mgr(4, got), 0);
    EXPECT_EQ(got.get_w(), sm.get_w());
    EXPECT_EQ(t.pop_back(4), 0);
    EXPECT_EQ(t.get_step_value(2, v), error_data);
}

TEST(FEM_Zmatrix, complex_values_parts_and_mixed_axpy) {
    typedef std::complex<double> cd;
    FEM_Zmatrix z(list_of({0, 1, 2}), 2, cd(1.0, -1.0));
    EXPECT_EQ(z.set_val(1, 1, cd(3.0, 4.0)), 0);
    cd v;
    EXPECT_EQ(z.get_val(1, 1, v), 0);
    EXPECT_EQ(v, cd(3.0, 4.0));
    EXPECT_EQ(z.get_val(5, 0, v), error_data);
    EXPECT_EQ(v, cd());

    FEM_matrix re = z.real(), im = z.imag();
    EXPECT_EQ(val(re, 1, 1), 3.0);
    EXPECT_EQ(val(im, 1, 1), 4.0);
    EXPECT_EQ(val(im, 2, 0), -1.0);

    FEM_matrix r(list_of({1}), 2, 2.0);
    EXPECT_EQ(z.axpy(cd(0.0, 1.0), r), 0);  // += 2i on ID 1
    EXPECT_EQ(val<cd>(z, 1, 1), cd(3.0, 6.0));
    EXPECT_EQ(z.axpy(0.5, r), 0);  // += 1
    EXPECT_EQ(val<cd>(z, 1, 0), cd(1.0 + 1.0, -1.0 + 2.0));
    FEM_Zmatrix w(list_of({2}), 2, cd(0.0, 2.0));
    EXPECT_EQ(z.axpy(cd(0.0, 1.0), w), 0);  // += i * 2i = -2
    EXPECT_EQ(val<cd>(z, 2, 0), cd(-1.0, -1.0));
    EXPECT_EQ(z.axpy(1.0, FEM_Zmatrix(list_of({2}), 3, cd())), error_data);

    dense1D<cd> nodal;
    EXPECT_EQ(z.get_vector(0, field_displacement, 1, nodal), 0);
    ASSERT_EQ(nodal.size(), 3u);
    EXPECT_EQ(nodal[1], cd(3.0 + 1.0, 6.0));

    FEM_Zmatrix view(z, 1, 5);
    EXPECT_EQ(view.cols(), 1u);
    EXPECT_EQ(view.as_raw_matrix().cols(), 1u);
}

// --- FEM_SymSparse -------------------------------------------------------------------

namespace {

// 4 x 4, upper triangle by rows: (0,0)=4 (0,2)=1 (1,1)=5 (1,3)=2 (2,2)=6 (3,3)=7.
symmetric_sparse<double> sample_sparse() {
    dense1D<unsigned int> ptr = list_of({0, 2, 4, 5, 6});
    dense1D<unsigned int> col = list_of({0, 2, 1, 3, 2, 3});
    symmetric_sparse<double> m;
    m.init(ptr, col, 0.0);
    const double v[6] = {4, 1, 5, 2, 6, 7};
    for (std::size_t k = 0; k < 6; ++k) m[k] = v[k];
    return m;
}

}  // namespace

TEST(FEM_SymSparse, symmetric_access_pattern_and_range) {
    FEM_SymSparse s(list_of({10, 11, 12, 13}), sample_sparse());
    ASSERT_EQ(s.dim(), 4u);
    for (std::uint64_t i = 0; i < 4; ++i)
        for (std::uint64_t j = 0; j < 4; ++j) {
            double a = -1, b = -2;
            EXPECT_EQ(s.get_val(i, j, a), 0);
            EXPECT_EQ(s.get_val(j, i, b), 0);
            EXPECT_EQ(a, b);
        }
    double v = -1;
    EXPECT_EQ(s.get_val(2, 0, v), 0);
    EXPECT_EQ(v, 1.0);
    EXPECT_EQ(s.get_val(0, 1, v), 0);  // outside the pattern
    EXPECT_EQ(v, 0.0);
    v = -1;
    EXPECT_EQ(s.get_val(4, 0, v), error_data);
    EXPECT_EQ(v, 0.0);
    EXPECT_EQ(s.set_val(3, 1, 9.0), 0);
    EXPECT_EQ(val(s, 1, 3), 9.0);
    EXPECT_EQ(s.set_val(0, 3, 1.0), error_data);  // no room outside the pattern
    EXPECT_EQ(s.set_val(0, 4, 1.0), error_data);
    EXPECT_EQ(s.pos(12), 2u);
    EXPECT_EQ(s.pos(14), ~std::uint64_t(0));
    EXPECT_EQ(s.setID_val(12, 10, 3.0), 0);
    EXPECT_EQ(s.getID_val(10, 12, v), 0);
    EXPECT_EQ(v, 3.0);
    EXPECT_EQ(s.setID_val(14, 10, 3.0), error_data);

    // init checks the dimension against the IDs, repeated IDs included.
    FEM_SymSparse t;
    EXPECT_EQ(t.init(list_of({1, 2, 3}), sample_sparse()), error_data);
    EXPECT_EQ(t.init(list_of({1, 2, 3, 1}), sample_sparse()), error_data);
    EXPECT_EQ(t.dim(), 0u);
    EXPECT_EQ(t.set_IDs(list_of({1})), error_data);

    // Copies: deep against shared.
    FEM_SymSparse c, sh;
    EXPECT_EQ(c.copy(s), 0);
    sh.shallow_copy(s);
    s.set_val(0, 0, -4.0);
    EXPECT_EQ(val(c, 0, 0), 4.0);
    EXPECT_EQ(val(sh, 0, 0), -4.0);
    c.clear();
    EXPECT_EQ(c.dim(), 0u);
}

TEST(FEM_SymSparse, save_writes_the_counted_arrays) {
    FEM_SymSparse s(list_of({10, 11, 12, 13}), sample_sparse());
    const std::string path = scratch("sparse.bin");
    ASSERT_EQ(s.save(path.c_str()), 0);
    const std::string bytes = slurp(path);
    std::remove(path.c_str());
    // 4 counts, 4 IDs, 6 doubles, 5 pointers, 6 columns: each array after its count.
    ASSERT_EQ(bytes.size(), 4 * 8 + 4 * 4 + 6 * 8 + 5 * 4 + 6 * 4);
    const std::size_t ids = 0, vals = ids + 8 + 16, ptrs = vals + 8 + 48, cols = ptrs + 8 + 20;
    EXPECT_EQ(read_at<std::uint64_t>(bytes, ids), 4u);
    EXPECT_EQ(read_at<std::uint32_t>(bytes, ids + 8 + 3 * 4), 13u);
    EXPECT_EQ(read_at<std::uint64_t>(bytes, vals), 6u);
    EXPECT_EQ(read_at<double>(bytes, vals + 8 + 4 * 8), 6.0);
    EXPECT_EQ(read_at<std::uint64_t>(bytes, ptrs), 5u);
    EXPECT_EQ(read_at<std::uint32_t>(bytes, ptrs + 8 + 4 * 4), 6u);
    EXPECT_EQ(read_at<std::uint64_t>(bytes, cols), 6u);
    EXPECT_EQ(read_at<std::uint32_t>(bytes, cols + 8 + 3 * 4), 3u);

    EXPECT_EQ(s.save("/nonexistent_dir_orv/x.bin"), -1);
}

// --- FEM_factor ----------------------------------------------------------------------

namespace {

// A factor of a random sparse SPD matrix of dimension n, in blocks of at most 6
// columns, with the IDs 1000 + 3 k.
FEM_factor make_factor(std::size_t n, unsigned seed) {
    using namespace orv::core;
    const orv::core::testing::dense_sym A = orv::core::testing::random_matrix(n, 0.15, false, seed);
    symmetric_hybrid_OOC<double> S;
    EXPECT_EQ(orv::core::testing::make_skyline(A, 6, S), 0);
    FEM_factor f;
    FEM_factor_engine* e = f.engine();
    e->matrix() = skyline_factor(S);
    pivot_check_positive<dummy_verboser> check;
    EXPECT_EQ(e->matrix().factorize(check), 0);
    dense1D<unsigned int> ids(n);
    for (std::size_t k = 0; k < n; ++k) ids[k] = unsigned(1000 + 3 * k);
    EXPECT_EQ(f.set_IDs(ids), 0);
    return f;
}

std::vector<double> solve_with(const FEM_factor& f, unsigned seed) {
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    std::vector<double> b(f.dim());
    for (double& x : b) x = u(rng);
    f.engine()->matrix().solve(b.data());
    return b;
}

}  // namespace

TEST(FEM_factor, save_then_load_solves_to_the_same_bits) {
    FEM_factor f = make_factor(40, 3);
    ASSERT_EQ(f.dim(), 40u);
    ASSERT_GT(f.engine()->matrix().nbr_blocks(), 2u);
    const std::string path = scratch("factor.bin");
    ASSERT_EQ(f.save(path.c_str()), 0);

    FEM_factor g;
    ASSERT_EQ(g.load(path.c_str()), 0);
    EXPECT_EQ(g.dim(), 40u);
    dense1D<unsigned int> a = f.get_IDs(), b = g.get_IDs();
    ASSERT_EQ(a.size(), b.size());
    EXPECT_TRUE(std::equal(a.begin(), a.end(), b.begin()));
    EXPECT_EQ(g.engine()->matrix().nbr_blocks(), f.engine()->matrix().nbr_blocks());

    const std::vector<double> x1 = solve_with(f, 11), x2 = solve_with(g, 11);
    ASSERT_EQ(x1.size(), x2.size());
    EXPECT_EQ(std::memcmp(x1.data(), x2.data(), x1.size() * sizeof(double)), 0);

    // Saving the loaded factor gives the same file.
    const std::string again = scratch("factor2.bin");
    ASSERT_EQ(g.save(again.c_str()), 0);
    EXPECT_EQ(slurp(path), slurp(again));
    std::remove(again.c_str());
    std::remove(path.c_str());

    // Sharing and clearing.
    FEM_factor h;
    h.shallow_copy(g);
    EXPECT_EQ(h.dim(), 40u);
    g.clear();
    EXPECT_EQ(g.dim(), 0u);
    EXPECT_EQ(h.dim(), 40u);
    EXPECT_EQ(h.set_IDs(list_of({1, 2})), error_data);
}

TEST(FEM_factor, empty_factor_round_trip) {
    FEM_factor f;
    const std::string path = scratch("empty.bin");
    ASSERT_EQ(f.save(path.c_str()), 0);
    EXPECT_EQ(slurp(path).size(), 16u);
    FEM_factor g = make_factor(5, 1);
    EXPECT_EQ(g.load(path.c_str()), 0);
    EXPECT_EQ(g.dim(), 0u);
    std::remove(path.c_str());
}

TEST(FEM_factor, duplicated_IDs_truncation_and_garbage_are_refused) {
    FEM_factor f = make_factor(30, 5);
    const std::string path = scratch("bad.bin");
    ASSERT_EQ(f.save(path.c_str()), 0);
    const std::string good = slurp(path);

    FEM_factor g = make_factor(7, 2);
    const std::vector<double> before = solve_with(g, 4);

    // The second ID made equal to the first: the list is shorter than its count.
    std::string dup = good;
    std::memcpy(dup.data() + 8 + 4, dup.data() + 8, 4);
    spit(path, dup);
    EXPECT_EQ(g.load(path.c_str()), -2);

    // Every truncation is a stream error.
    for (std::size_t len = 0; len < good.size(); ++len) {
        spit(path, std::string(good.begin(), good.begin() + std::ptrdiff_t(len)));
        ASSERT_EQ(g.load(path.c_str()), -1) << "length " << len;
    }
    // A wrong block count.
    std::string blocks = good;
    const std::size_t at = 8 + 30 * 4;
    const std::uint64_t nb = read_at<std::uint64_t>(blocks, at) - 1;
    std::memcpy(blocks.data() + at, &nb, 8);
    spit(path, blocks);
    const int rc = g.load(path.c_str());
    EXPECT_TRUE(rc == -1 || rc == -2) << rc;

    // Garbage and bit flips never crash; a failed load leaves the factor as it was.
    std::mt19937 rng(17);
    for (int trial = 0; trial < 300; ++trial) {
        std::string bytes;
        if (trial % 2) {
            bytes.resize(rng() % 600);
            for (char& c : bytes) c = char(rng());
        } else {
            bytes = good;
            for (int k = 0; k < 3; ++k) bytes[rng() % bytes.size()] ^= char(1u << (rng() % 8));
        }
        spit(path, bytes);
        FEM_factor t = make_factor(7, 2);
        const int r = t.load(path.c_str());
        EXPECT_TRUE(r == 0 || r == -1 || r == -2 || r == error_memory) << r;
        if (r != 0) {
            const std::vector<double> after = solve_with(t, 4);
            EXPECT_EQ(std::memcmp(before.data(), after.data(), before.size() * sizeof(double)), 0);
        }
    }
    EXPECT_EQ(g.dim(), 7u);
    EXPECT_EQ(g.load("/nonexistent_dir_orv/none.bin"), -1);
    std::remove(path.c_str());
}

TEST(dense2D_OOC, views_windows_and_growth) {
    core::dense2D_OOC<double> m;
    ASSERT_EQ(m.init(3, 4, 1.0), 0);
    EXPECT_TRUE(m.is_all_incore());
    EXPECT_EQ(m.set_val(2, 3, 5.0), 0);
    EXPECT_EQ(m.set_val(3, 0, 5.0), error_data);
    double v = 9;
    EXPECT_EQ(m.get_val(0, 4, v), error_data);
    EXPECT_EQ(v, 0.0);

    core::dense2D_OOC<double> s = m.sub_columns(2, 5);
    EXPECT_EQ(s.cols(), 2u);
    EXPECT_EQ(s.col(1), m.col(3));
    EXPECT_EQ(s.col(2), nullptr);
    EXPECT_EQ(s.window(0, 9), 0);
    EXPECT_EQ(s.window(2, 1), error_data);
    EXPECT_EQ(s.get_val(2, 1, v), 0);
    EXPECT_EQ(v, 5.0);

    core::dense2D_OOC<double> other;
    other.init(2, 1, 0.0);
    EXPECT_EQ(m.push_back(other), error_data);
    EXPECT_EQ(m.push_back_n(2, 7.0), 0);
    EXPECT_EQ(m.cols(), 6u);
    EXPECT_EQ(val(m, 1, 5), 7.0);
    EXPECT_EQ(val(m, 2, 3), 5.0);
    // The view keeps the old proxy and its values.
    EXPECT_EQ(s.get_val(2, 1, v), 0);
    EXPECT_EQ(v, 5.0);
    m.pop_back(5);
    EXPECT_EQ(m.as_raw_matrix().cols(), 1u);
    EXPECT_TRUE(m.force_incore());

    // A matrix over given values shares them.
    dense2D<std::complex<double>> d(2, 2, std::complex<double>(1.0, 2.0));
    core::dense2D_OOC<std::complex<double>> z;
    ASSERT_EQ(z.init(d), 0);
    z.set_val(1, 1, std::complex<double>(0.0, -1.0));
    EXPECT_EQ(d(1, 1), std::complex<double>(0.0, -1.0));
    dense1D<std::complex<double>> c;
    EXPECT_EQ(z.get_col(0, c), 0);
    EXPECT_EQ(c[1], std::complex<double>(1.0, 2.0));
    EXPECT_EQ(z.set_col(0, dense1D<std::complex<double>>(3)), error_data);
}
