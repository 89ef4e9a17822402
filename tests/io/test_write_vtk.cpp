// VTK writers: a file is read back by a small parser of its appended arrays; the
// cells' node orders are checked against VTK's own layout (corners, then each mid
// node at the centre of the corners it belongs to, and the documented orientation).
#include <cstring>
#include <map>

#include "io/io_test_utils.h"

namespace orv_io_test {
namespace {

// The appended arrays of a .vtu file by name, as raw bytes.
std::map<std::string, std::string> appended_arrays(const std::string& text) {
    std::map<std::string, std::string> out;
    const std::size_t data = text.find('_', text.find("<AppendedData")) + 1;
    std::size_t pos = 0;
    while ((pos = text.find("<DataArray", pos)) != std::string::npos && pos < data) {
        const std::size_t name = text.find("Name=\"", pos) + 6, offset = text.find("offset=\"", pos) + 8;
        const std::string key = text.substr(name, text.find('"', name) - name);
        const std::size_t at = data + std::stoul(text.substr(offset, text.find('"', offset) - offset));
        std::uint64_t bytes;
        std::memcpy(&bytes, text.data() + at, 8);
        out[key] = text.substr(at + 8, bytes);
        pos = offset;
    }
    return out;
}

template <class T>
std::vector<T> values(const std::string& bytes) {
    std::vector<T> v(bytes.size() / sizeof(T));
    std::memcpy(v.data(), bytes.data(), v.size() * sizeof(T));
    return v;
}

// One element of a shape on its reference nodes, moved off the origin.
template <class Shape>
void add_reference_element(mesh& m, element_type type, std::vector<double>& xyz) {
    element_block b;
    b.type = type;
    b.connectivity.resize(Shape::nbr_nodes, 1);
    for (unsigned i = 0; i < Shape::nbr_nodes; ++i) {
        double r[3] = {0, 0, 0};
        Shape::node_position(i, r);
        b.connectivity(i, 0) = static_cast<unsigned>(xyz.size() / 3);
        xyz.insert(xyz.end(), {r[0] + 3.0 * m.blocks.size(), 2.0 * r[1] + 1.0, r[2]});
    }
    m.blocks.push_back(b);
}

mesh sample_mesh() {
    mesh m;
    std::vector<double> xyz;
    add_reference_element<elfes::tetra10>(m, FE_tetra10, xyz);
    add_reference_element<elfes::wedge18>(m, FE_wedge18, xyz);
    add_reference_element<elfes::pyramid14>(m, FE_pyramid14, xyz);
    add_reference_element<elfes::hexa27>(m, FE_hexa27, xyz);
    add_reference_element<elfes::faceT6>(m, FE_faceT6, xyz);
    m.positions.resize(3, xyz.size() / 3);
    for (std::size_t j = 0; j < xyz.size() / 3; ++j)
        for (unsigned i = 0; i < 3; ++i) m.positions(i, j) = xyz[3 * j + i];
    return m;
}

double det(const double* a, const double* b, const double* c, const double* d) {
    double u[3], v[3], w[3];
    for (int k = 0; k < 3; ++k) u[k] = b[k] - a[k], v[k] = c[k] - a[k], w[k] = d[k] - a[k];
    return u[0] * (v[1] * w[2] - v[2] * w[1]) - u[1] * (v[0] * w[2] - v[2] * w[0]) + u[2] * (v[0] * w[1] - v[1] * w[0]);
}

TEST(WriteVtk, CellsFieldsAndNodeOrdersReadBack) {
    const mesh m = sample_mesh();
    const std::size_t nbr_points = m.positions.cols();
    vtk_frame frame;
    frame.point_data.push_back(vtk_field{"U & V", dense2D<double>(3, nbr_points)});
    for (std::size_t j = 0; j < nbr_points; ++j)
        for (unsigned i = 0; i < 3; ++i) frame.point_data[0].values(i, j) = 10.0 * j + i;
    frame.cell_data.push_back(vtk_field{"S", dense2D<double>(1, 5)});
    for (unsigned c = 0; c < 5; ++c) frame.cell_data[0].values(0, c) = 0.5 * c;
    const std::string path = scratch("cells.vtu");
    ASSERT_EQ(write_vtu(path.c_str(), m, frame), no_error);
    const std::string text = slurp(path);
    EXPECT_NE(text.find("Name=\"U &amp; V\" NumberOfComponents=\"3\""), std::string::npos);
    auto arrays = appended_arrays(text);
    const std::vector<double> points = values<double>(arrays["Points"]), u = values<double>(arrays["U &amp; V"]),
                              s = values<double>(arrays["S"]);
    const std::vector<std::int64_t> connectivity = values<std::int64_t>(arrays["connectivity"]),
                                    offsets = values<std::int64_t>(arrays["offsets"]);
    const std::vector<std::uint8_t> types = values<std::uint8_t>(arrays["types"]);
    ASSERT_EQ(points.size(), 3 * nbr_points);
    EXPECT_EQ(points[3 * 11 + 1], m.positions(1, 11));
    EXPECT_EQ(u[3 * 7 + 2], 72.0);
    EXPECT_EQ(s, (std::vector<double>{0, 0.5, 1, 1.5, 2}));
    EXPECT_EQ(types, (std::vector<std::uint8_t>{24, 32, 27, 29, 22}));
    EXPECT_EQ(offsets, (std::vector<std::int64_t>{10, 28, 41, 68, 74}));

    // VTK's layouts: corners, mid nodes as centres of corner groups, sign of the volume
    struct layout {
        unsigned corners;
        std::vector<std::vector<int>> mids;
        int a, b, c, d, sign;  // det(b - a, c - a, d - a) has this sign
    };
    const std::vector<layout> layouts = {
        {4, {{0, 1}, {1, 2}, {0, 2}, {0, 3}, {1, 3}, {2, 3}}, 0, 1, 2, 3, 1},
        {6,
         {{0, 1},
          {1, 2},
          {2, 0},
          {3, 4},
          {4, 5},
          {5, 3},
          {0, 3},
          {1, 4},
          {2, 5},
          {0, 1, 4, 3},
          {1, 2, 5, 4},
          {2, 0, 3, 5}},
         0,
         1,
         2,
         3,
         -1},
        {5, {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {0, 4}, {1, 4}, {2, 4}, {3, 4}}, 0, 1, 3, 4, 1},
        {8,
         {{0, 1},
          {1, 2},
          {2, 3},
          {3, 0},
          {4, 5},
          {5, 6},
          {6, 7},
          {7, 4},
          {0, 4},
          {1, 5},
          {2, 6},
          {3, 7},
          {0, 3, 7, 4},
          {1, 2, 6, 5},
          {0, 1, 5, 4},
          {3, 2, 6, 7},
          {0, 1, 2, 3},
          {4, 5, 6, 7},
          {0, 1, 2, 3, 4, 5, 6, 7}},
         0,
         1,
         3,
         4,
         1},
    };
    for (std::size_t c = 0; c < layouts.size(); ++c) {
        const std::int64_t* cell = connectivity.data() + (c == 0 ? 0 : offsets[c - 1]);
        auto x = [&](int k) { return &points[3 * cell[k]]; };
        const layout& l = layouts[c];
        for (std::size_t k = 0; k < l.mids.size(); ++k)
            for (int i = 0; i < 3; ++i) {
                double centre = 0.0;
                for (int corner : l.mids[k]) centre += x(corner)[i] / l.mids[k].size();
                EXPECT_NEAR(x(l.corners + k)[i], centre, 1e-12) << "cell " << c << " node " << l.corners + k;
            }
        EXPECT_GT(l.sign * det(x(l.a), x(l.b), x(l.c), x(l.d)), 0.0) << "cell " << c;
    }
    std::remove(path.c_str());
}

TEST(WriteVtk, SeriesOfFramesAndBadInput) {
    const mesh m = sample_mesh();
    std::vector<vtk_frame> frames(3);
    for (std::size_t k = 0; k < frames.size(); ++k) {
        frames[k].value = 0.25 * (k + 1);
        frames[k].point_data.push_back(vtk_field{"T", dense2D<double>(1, m.positions.cols(), double(k))});
    }
    const std::string base = scratch("steps");
    ASSERT_EQ(write_vtu_series(base.c_str(), m, frames), no_error);
    const std::string pvd = slurp(base + ".pvd"), local = base.substr(base.rfind('/') + 1);
    const char* times[] = {"0.25", "0.5", "0.75"};
    for (std::size_t k = 0; k < frames.size(); ++k) {
        const std::string name = local + "_000" + std::to_string(k) + ".vtu";
        EXPECT_NE(pvd.find(std::string("timestep=\"") + times[k] + "\" group=\"\" part=\"0\" file=\"" + name),
                  std::string::npos)
            << pvd;
        EXPECT_EQ(values<double>(appended_arrays(slurp(base + "_000" + std::to_string(k) + ".vtu"))["T"])[5],
                  double(k));
        std::remove((base + "_000" + std::to_string(k) + ".vtu").c_str());
    }
    std::remove((base + ".pvd").c_str());

    // a field of the wrong size, a node past the points, an unwritable path: no file
    const std::string bad = scratch("bad");
    frames[1].point_data[0].values.resize(1, 3);
    EXPECT_EQ(write_vtu_series(bad.c_str(), m, frames), error_data);
    EXPECT_FALSE(std::ifstream(bad + "_0000.vtu").good());
    mesh broken = m;
    broken.blocks[0].connectivity = dense2D<unsigned>(10, 1, 999u);
    EXPECT_EQ(write_vtu((bad + ".vtu").c_str(), broken, vtk_frame()), error_data);
    EXPECT_FALSE(std::ifstream(bad + ".vtu").good());
    EXPECT_EQ(write_vtu("/nonexistent-folder/x.vtu", m, vtk_frame()), error_file);
    EXPECT_EQ(write_vtu(nullptr, m, vtk_frame()), error_file);
}

// DOF IDs are node * 9 + position: node 0 has ux, uy; node 1 a rotation about z and
// a temperature; node 3 is past the 3 points (fictitious) and is left out.
TEST(WriteVtk, ResultsMatrixGivesOneFramePerColumn) {
    const unsigned ids[] = {0, 1, 9 + 5, 9 + 6, 27};
    orv::dense1D<unsigned> IDs(5);
    for (unsigned r = 0; r < 5; ++r) IDs[r] = ids[r];
    FEM_matrix U(IDs, 2);
    for (unsigned c = 0; c < 2; ++c)
        for (unsigned id : ids) ASSERT_EQ(U.set_val(id, c, 100.0 * c + id), no_error);
    std::vector<vtk_frame> frames(1);
    ASSERT_EQ(nodal_frames(U, 3, "U", {0.5, 2.0}, frames), no_error);
    ASSERT_EQ(frames.size(), 3u);
    EXPECT_EQ(frames[1].value, 0.5);
    const vtk_frame& f = frames[2];
    EXPECT_EQ(f.value, 2.0);
    ASSERT_EQ(f.point_data.size(), 3u);
    EXPECT_EQ(f.point_data[0].name + "|" + f.point_data[1].name + "|" + f.point_data[2].name,
              "U|U rotation|U temperature");
    EXPECT_EQ(f.point_data[0].values.cols(), 3u);
    EXPECT_EQ(f.point_data[0].values(1, 0), 101.0);
    EXPECT_EQ(f.point_data[0].values(0, 1), 0.0);
    EXPECT_EQ(f.point_data[1].values(2, 1), 114.0);
    EXPECT_EQ(f.point_data[2].values(0, 1), 115.0);
    EXPECT_EQ(nodal_frames(U, 3, "U", {1.0}, frames), error_data);
    EXPECT_EQ(frames.size(), 3u);
}

}  // namespace
}  // namespace orv_io_test
