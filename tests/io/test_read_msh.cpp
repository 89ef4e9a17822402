// MSH 4.1 reader on small files written by Gmsh (tests/data/io, made from the .geo
// files there): every shape, node order, physical groups, ASCII against binary, and
// every truncation and a few corruptions of a file.
#include <algorithm>
#include <random>

#include "io/io_test_utils.h"

namespace orv_io_test {
namespace {

mesh read_ok(const std::string& name) {
    mesh m;
    read_error error;
    EXPECT_EQ(read_msh(data_path(name).c_str(), m, &error), no_error) << error.text;
    return m;
}

TEST(ReadMsh, EveryShapeInTheLibraryOrder) {
    struct case_type {
        const char* file;
        element_type type;
        std::size_t nbr_elements;
    };
    const case_type cases[] = {
        {"cube_tet4.msh", FE_tetra4, 0},   {"cube_tet10.msh", FE_tetra10, 0},     {"hex8.msh", FE_hexa8, 2},
        {"hex20.msh", FE_hexa20, 2},       {"hex27_bin.msh", FE_hexa27, 2},       {"wedge6.msh", FE_wedge6, 2},
        {"wedge15.msh", FE_wedge15, 2},    {"wedge18.msh", FE_wedge18, 2},        {"hybrid.msh", FE_pyramid5, 1},
        {"hybrid13.msh", FE_pyramid13, 1}, {"hybrid14_bin.msh", FE_pyramid14, 1}, {"square2.msh", FE_faceT6, 0},
        {"square2.msh", FE_faceQ9, 1},     {"square8.msh", FE_faceQ8, 1},         {"square2.msh", FE_edge3, 1},
        {"line4.msh", FE_edge4, 3},
    };
    for (const case_type& c : cases) {
        SCOPED_TRACE(c.file);
        const mesh m = read_ok(c.file);
        const element_block* b = find_block(m, c.type);
        ASSERT_NE(b, nullptr);
        if (c.nbr_elements > 0)
            EXPECT_EQ(b->connectivity.cols(), c.nbr_elements);
        else
            EXPECT_GT(b->connectivity.cols(), 0u);
        for (const element_block& block : m.blocks) check_block(m, block);
    }
}

TEST(ReadMsh, PhysicalGroupsAreNamedSets) {
    const mesh m = read_ok("cube_tet4.msh");
    const element_block* tets = find_block(m, FE_tetra4);
    ASSERT_NE(tets, nullptr);
    int checked = 0;
    for (const element_set& s : m.element_sets)
        if (s.name == "solid") {
            EXPECT_EQ(s.dim, 3);
            EXPECT_EQ(s.elements.size(), tets->connectivity.cols());
            ++checked;
        }
    // "bottom" is the face z = 0; the unnamed group 7 is the face z = 1 and takes its tag
    for (const node_set& s : m.node_sets) {
        if (s.name != "bottom" && s.name != "7") continue;
        const double z = s.name == "bottom" ? 0.0 : 1.0;
        std::vector<unsigned> on_face;
        for (unsigned j = 0; j < m.positions.cols(); ++j)
            if (std::abs(m.positions(2, j) - z) < 1e-12) on_face.push_back(j);
        EXPECT_EQ(s.dim, 2);
        EXPECT_EQ(s.nodes, on_face) << s.name;
        ++checked;
    }
    EXPECT_EQ(checked, 3);
}

void expect_same(const mesh& a, const mesh& b) {
    ASSERT_EQ(a.positions.cols(), b.positions.cols());
    for (std::size_t j = 0; j < a.positions.cols(); ++j)
        for (unsigned i = 0; i < 3; ++i) ASSERT_EQ(a.positions(i, j), b.positions(i, j));
    EXPECT_EQ(a.node_ids, b.node_ids);
    ASSERT_EQ(a.blocks.size(), b.blocks.size());
    for (std::size_t k = 0; k < a.blocks.size(); ++k) {
        ASSERT_EQ(a.blocks[k].connectivity.cols(), b.blocks[k].connectivity.cols());
        for (std::size_t e = 0; e < a.blocks[k].connectivity.cols(); ++e)
            for (std::size_t i = 0; i < a.blocks[k].connectivity.rows(); ++i)
                ASSERT_EQ(a.blocks[k].connectivity(i, e), b.blocks[k].connectivity(i, e));
    }
    ASSERT_EQ(a.node_sets.size(), b.node_sets.size());
    for (std::size_t k = 0; k < a.node_sets.size(); ++k) EXPECT_EQ(a.node_sets[k].nodes, b.node_sets[k].nodes);
}

// Binary content, and nodes saved with their parametric coordinates, read as the
// plain ASCII file.
TEST(ReadMsh, BinaryAndParametricGiveTheSameMesh) {
    expect_same(read_ok("cube_tet4.msh"), read_ok("cube_tet4_bin.msh"));
    expect_same(read_ok("hex8.msh"), read_ok("hex8_param_bin.msh"));
}

// Every prefix of a file that stops before its closing "$EndElements" fails with a
// located message and leaves the record as it was.
void check_truncations(const std::string& name) {
    const std::string full = slurp(data_path(name));
    const std::size_t valid_from = full.rfind("$EndElements") + std::string("$EndElements").size();
    const std::string path = scratch("truncated.msh");
    for (std::size_t length = 0; length < valid_from; ++length) {
        spit(path, full.substr(0, length));
        mesh m = sentinel_mesh();
        read_error error;
        const error_type code = read_msh(path.c_str(), m, &error);
        ASSERT_NE(code, no_error) << name << " cut at " << length;
        ASSERT_TRUE(is_sentinel(m)) << name << " cut at " << length;
        const bool located =
            error.text.find(", line ") != std::string::npos || error.text.find(", byte ") != std::string::npos;
        ASSERT_TRUE(located && error.text.find(path) == 0) << length << ": " << error.text;
    }
    spit(path, full.substr(0, valid_from));
    mesh m;
    EXPECT_EQ(read_msh(path.c_str(), m), no_error);
    std::remove(path.c_str());
}

TEST(ReadMsh, EveryTruncationFailsCleanly) {
    check_truncations("hex8.msh");
    check_truncations("hex27_bin.msh");
}

// Random bytes overwritten in an ASCII and a binary file (fixed seed): a read either
// succeeds or fails with a located message and the record untouched, never a crash.
TEST(ReadMsh, RandomCorruptionNeverCrashes) {
    std::mt19937 random(1);
    const std::string path = scratch("random.msh");
    for (const char* name : {"hex8.msh", "hex27_bin.msh"}) {
        const std::string full = slurp(data_path(name));
        for (int trial = 0; trial < 400; ++trial) {
            std::string text = full;
            for (int k = 0; k < 3; ++k) text[random() % text.size()] = static_cast<char>(random() % 256);
            spit(path, text);
            mesh m = sentinel_mesh();
            read_error error;
            if (read_msh(path.c_str(), m, &error) == no_error) continue;
            ASSERT_TRUE(is_sentinel(m)) << name << " trial " << trial;
            ASSERT_EQ(error.text.find(path), 0u) << error.text;
        }
    }
    std::remove(path.c_str());
}

TEST(ReadMsh, CorruptContentIsLocated) {
    const std::string full = slurp(data_path("hex8.msh"));
    const std::string path = scratch("corrupt.msh");
    struct case_type {
        std::string from, to;
        error_type code;
        const char* message;
    };
    // the first element block of hex8.msh is "2 1 3 2" (quadrangles of surface 1)
    const std::size_t block = full.find("\n2 1 3 2\n", full.find("$Elements"));
    ASSERT_NE(block, std::string::npos);
    const std::size_t block_line = std::count(full.begin(), full.begin() + block + 1, '\n') + 1;
    const case_type cases[] = {
        {"$MeshFormat\n4.1", "$MeshFormat\n2.2", error_data, "line 2: MSH version 2.2"},
        {"\n2 1 3 2\n", "\n2 1 21 2\n", error_element_type, "element type 21 has no shape"},
        {"$EndNodes", "$EndNode", error_data, "expected $EndNodes"},
        // a node number that no $Nodes block defines
        {"\n1 1 9 10 4 ", "\n1 999 9 10 4 ", error_connectivity, "unknown node 999"},
    };
    for (const case_type& c : cases) {
        std::string text = full;
        text.replace(text.find(c.from), c.from.size(), c.to);
        spit(path, text);
        mesh m = sentinel_mesh();
        read_error error;
        EXPECT_EQ(read_msh(path.c_str(), m, &error), c.code) << c.to;
        EXPECT_NE(error.text.find(c.message), std::string::npos) << error.text;
        EXPECT_TRUE(is_sentinel(m));
        if (c.code == error_element_type) {
            EXPECT_EQ(error.line, block_line);
        }
    }
    mesh m = sentinel_mesh();
    read_error error;
    EXPECT_EQ(read_msh(scratch("absent.msh").c_str(), m, &error), error_file);
    EXPECT_EQ(read_msh(nullptr, m), error_file);
    EXPECT_TRUE(is_sentinel(m));
    std::remove(path.c_str());
}

}  // namespace
}  // namespace orv_io_test
