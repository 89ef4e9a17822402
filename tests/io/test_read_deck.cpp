// Input deck reader: one element of every type written in the deck's node order from
// hand-placed coordinates, sets with GENERATE and set names, *INCLUDE, and the error
// paths with their lines.
#include <map>
#include <utility>

#include "io/io_test_utils.h"

namespace orv_io_test {
namespace {

typedef std::vector<std::pair<int, int>> pairs;  // mid-nodes by their corner pair (1-based)

struct deck_element {
    const char* type;
    element_type expected;
    std::vector<std::vector<double>> corners;
    pairs mids;
};

std::string number(double v) {
    char b[32];
    std::snprintf(b, sizeof b, "%g", v);
    return b;
}

TEST(ReadDeck, EveryTypeInTheLibraryOrder) {
    const std::vector<std::vector<double>> tri = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}},
                                           quad = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}},
                                           tet = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}},
                                           wedge = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {0, 1, 1}},
                                           hex = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0},
                                                  {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}},
                                           bar = {{0, 0, 0}, {2, 1, 0}};
    const pairs tri6 = {{1, 2}, {2, 3}, {3, 1}}, quad8 = {{1, 2}, {2, 3}, {3, 4}, {4, 1}};
    const std::vector<deck_element> elements = {
        {"C3D4", FE_tetra4, tet, {}},
        {"C3D10", FE_tetra10, tet, {{1, 2}, {2, 3}, {3, 1}, {1, 4}, {2, 4}, {3, 4}}},
        {"C3D6", FE_wedge6, wedge, {}},
        {"C3D15", FE_wedge15, wedge, {{1, 2}, {2, 3}, {3, 1}, {4, 5}, {5, 6}, {6, 4}, {1, 4}, {2, 5}, {3, 6}}},
        {"C3D8", FE_hexa8, hex, {}},
        {"C3D20",
         FE_hexa20,
         hex,
         {{1, 2}, {2, 3}, {3, 4}, {4, 1}, {5, 6}, {6, 7}, {7, 8}, {8, 5}, {1, 5}, {2, 6}, {3, 7}, {4, 8}}},
        {"c3d20r",
         FE_hexa20,
         hex,
         {{1, 2}, {2, 3}, {3, 4}, {4, 1}, {5, 6}, {6, 7}, {7, 8}, {8, 5}, {1, 5}, {2, 6}, {3, 7}, {4, 8}}},
        {"CPS3", FE_faceT3, tri, {}},
        {"CPE6", FE_faceT6, tri, tri6},
        {"CAX4", FE_faceQ4, quad, {}},
        {"S8", FE_faceQ8, quad, quad8},
        {"S6", FE_faceT6, tri, tri6},
        {"T3D2", FE_edge2, bar, {}},
        {"B31", FE_edge2, bar, {}},
        {"B32", FE_edge3, bar, {}},  // its middle node is written between the ends below
    };
    std::string deck = "*HEADING\nevery element type\n";
    unsigned node = 1, id = 1;
    for (const deck_element& d : elements) {
        std::vector<std::vector<double>> x = d.corners;
        for (const auto& p : d.mids) {
            std::vector<double> mid(3);
            for (unsigned k = 0; k < 3; ++k) mid[k] = 0.5 * (x[p.first - 1][k] + x[p.second - 1][k]);
            x.push_back(mid);
        }
        if (std::string(d.type) == "B32") x.insert(x.begin() + 1, {1.0, 0.5, 0.0});
        deck += "*NODE\n";
        for (const auto& p : x)
            deck += std::to_string(node++) + ", " + number(p[0]) + ", " + number(p[1]) + ", " + number(p[2]) + "\n";
        deck += std::string("*Element, Type=") + d.type + "\n" + std::to_string(id++);
        for (std::size_t i = 0; i < x.size(); ++i)  // 15 nodes on a line at most, then a continuation
            deck += (i == 15 ? ",\n" : ", ") + std::to_string(node - x.size() + i);
        deck += "\n";
    }
    const std::string path = scratch("types.inp");
    spit(path, deck);
    mesh m;
    read_error error;
    ASSERT_EQ(read_deck(path.c_str(), m, &error), no_error) << error.text;
    ASSERT_EQ(m.blocks.size(), elements.size());
    for (std::size_t k = 0; k < elements.size(); ++k) {
        EXPECT_EQ(m.blocks[k].type, elements[k].expected) << elements[k].type;
        EXPECT_EQ(m.blocks[k].element_ids, std::vector<std::uint64_t>{k + 1});
        check_block(m, m.blocks[k]);
    }
    std::remove(path.c_str());
}

TEST(ReadDeck, SetsAndIncludes) {
    const std::string nodes = scratch("nodes.inp"), main = scratch("main.inp");
    spit(nodes, "*NODE, NSET=Nall\n1, 0, 0\n2, 1, 0\n3, 2, 0\n4, 0, 1\n5, 1, 1\n6, 2, 1\n");
    spit(main, "*HEADING\nplate\n** a comment\n*INCLUDE, INPUT=" + nodes.substr(nodes.rfind('/') + 1) +
                   "\n*ELEMENT, TYPE=CPS4, ELSET=PLATE\n1, 1, 2, 5, 4\n2, 2, 3, 6, 5\n"
                   "*Nset, nset=LEFT\n1, 4,\n*NSET, NSET=Right, GENERATE\n3, 6, 3\n*NSET, NSET=EDGES\nleft, RIGHT\n"
                   "*ELSET, ELSET=SECOND, GENERATE\n2, 2\n*MATERIAL, NAME=STEEL\n*ELASTIC\n210000, 0.3\n");
    mesh m;
    read_error error;
    ASSERT_EQ(read_deck(main.c_str(), m, &error), no_error) << error.text;
    EXPECT_EQ(m.positions.cols(), 6u);
    EXPECT_EQ(m.positions(0, 2), 2.0);
    EXPECT_EQ(m.positions(2, 5), 0.0);
    std::map<std::string, std::vector<unsigned>> node_sets;
    for (const node_set& s : m.node_sets) node_sets[s.name] = s.nodes;
    const std::map<std::string, std::vector<unsigned>> expected = {
        {"NALL", {0, 1, 2, 3, 4, 5}}, {"LEFT", {0, 3}}, {"RIGHT", {2, 5}}, {"EDGES", {0, 2, 3, 5}}};
    EXPECT_EQ(node_sets, expected);
    ASSERT_EQ(m.element_sets.size(), 2u);
    EXPECT_EQ(m.element_sets[0].name, "PLATE");
    EXPECT_EQ(m.element_sets[0].elements, (std::vector<element_ref>{{0, 0}, {0, 1}}));
    EXPECT_EQ(m.element_sets[1].elements, (std::vector<element_ref>{{0, 1}}));
    std::remove(nodes.c_str());
    std::remove(main.c_str());
}

TEST(ReadDeck, BadDecksAreLocatedAndChangeNothing) {
    const std::string path = scratch("bad.inp"), inner = scratch("inner.inp");
    const std::string inner_name = inner.substr(inner.rfind('/') + 1);
    spit(inner, "*NODE\n1, 0, 0, 0\n2, zero, 0, 0\n");
    struct case_type {
        std::string deck;
        error_type code;
        std::string message;
    };
    const case_type cases[] = {
        {"*NODE\n1, 0, 0\n*ELEMENT, TYPE=C3D27\n", error_element_type, "line 3: element type C3D27 has no shape"},
        {"*ELEMENT\n", error_data, "line 1: *ELEMENT without TYPE"},
        {"*NODE\n1, 0, 0, 0\n*ELEMENT, TYPE=T3D2\n1, 1, 2\n", error_connectivity, "line 4: unknown node 2"},
        {"*NODE\n1, 0\n2, 1\n*ELEMENT, TYPE=T3D2\n1, 1\n*NSET, NSET=A\n1\n", error_data,
         "line 5: element 1 has too few nodes"},
        {"*NODE\n1, 0\n2, 1\n*ELEMENT, TYPE=T3D2\n1, 1, 2, 2\n", error_data, "line 5: element 1 has too many nodes"},
        {"*NODE\n1, 0, 0, 0\n1, 1, 0, 0\n", error_data, "line 3: node 1 defined twice"},
        {"*NODE\n1, 0, 1e999, 0\n", error_data, "line 2: node 1 has a coordinate that is not finite"},
        {"*NODE\n1, 0\n*NSET, NSET=A\nB\n", error_data, "line 4: unknown set B"},
        {"*NODE\n1, 0\n*NSET, NSET=A, GENERATE\n5, 1\n", error_data, "line 4: empty GENERATE range"},
        {"*NODE\n1, 0\n*ELSET, ELSET=A\n3\n", error_connectivity, "line 4: unknown element 3"},
        {"*INCLUDE, INPUT=absent.inp\n", error_file,
         "line 1: " + path.substr(0, path.rfind('/') + 1) + "absent.inp cannot be read"},
        {"*INCLUDE, INPUT=" + inner_name + "\n", error_data, inner + ", line 3: bad coordinate zero"},
        {"*INCLUDE, INPUT=" + path.substr(path.rfind('/') + 1) + "\n", error_data, "nested too deeply"},
    };
    for (const case_type& c : cases) {
        spit(path, c.deck);
        mesh m = sentinel_mesh();
        read_error error;
        EXPECT_EQ(read_deck(path.c_str(), m, &error), c.code) << c.deck;
        EXPECT_NE(error.text.find(c.message), std::string::npos) << error.text;
        EXPECT_TRUE(is_sentinel(m)) << c.deck;
    }
    mesh m = sentinel_mesh();
    EXPECT_EQ(read_deck(scratch("absent.inp").c_str(), m), error_file);
    EXPECT_EQ(read_deck(nullptr, m), error_file);
    EXPECT_TRUE(is_sentinel(m));
    std::remove(path.c_str());
    std::remove(inner.c_str());
}

}  // namespace
}  // namespace orv_io_test
