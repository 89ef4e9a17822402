// Ordering and block profile: supervariables, orderings, heights, blocks, symbolic
// fill, DOF conversion, totals, report lines and the numbering driver.
#include <gtest/gtest.h>

#include <orv/fem/error_type.h>

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "common/log_capture.h"
#include "linalg/block_profile_build.h"
#include "linalg/compressed_graph.h"
#include "linalg/numbering.h"

using namespace orv::core;
using orv::test::log_capture;
typedef orv::dense1D<unsigned int, 8> uvec;

namespace {

uvec make(const std::vector<unsigned int>& v) {
    uvec out;
    out.resize(v.size());
    std::copy(v.begin(), v.end(), out.data());
    return out;
}

std::vector<unsigned int> vec(const uvec& v) { return std::vector<unsigned int>(v.begin(), v.end()); }

// Symmetric graph of n vertices from an edge list.
void graph_from_edges(unsigned int n, const std::vector<std::pair<unsigned, unsigned>>& edges, uvec& xadj, uvec& adj) {
    std::vector<std::set<unsigned int>> rows(n);
    for (auto& e : edges) {
        if (e.first == e.second) continue;
        rows[e.first].insert(e.second);
        rows[e.second].insert(e.first);
    }
    std::vector<unsigned int> x(1, 0), a;
    for (auto& r : rows) {
        a.insert(a.end(), r.begin(), r.end());
        x.push_back(static_cast<unsigned int>(a.size()));
    }
    xadj = make(x);
    adj = make(a);
}

void identity(unsigned int n, uvec& perm, uvec& iperm) {
    std::vector<unsigned int> p(n);
    for (unsigned int i = 0; i < n; ++i) p[i] = i;
    perm = make(p);
    iperm = make(p);
}

std::vector<block_segment> segs(const block_profile& b) {
    return std::vector<block_segment>(b.segments.begin(), b.segments.end());
}

bool is_permutation_of_n(const uvec& perm, const uvec& iperm, std::size_t n) {
    if (perm.size() != n || iperm.size() != n) return false;
    std::vector<char> seen(n, 0);
    for (std::size_t k = 0; k < n; ++k) {
        if (perm[k] >= n || seen[perm[k]] || iperm[perm[k]] != k) return false;
        seen[perm[k]] = 1;
    }
    return true;
}

// Structural checks of a DOF-level profile; returns an empty string when it is sound.
std::string check_structure(const orv::dense1D<block_profile, 8>& blocks, std::size_t n) {
    std::size_t next = 0;
    for (std::size_t b = 0; b < blocks.size(); ++b) {
        const block_profile& bp = blocks[b];
        if (bp.first != next || bp.last <= bp.first) return "blocks not contiguous at " + std::to_string(b);
        next = bp.last;
        const std::size_t own = bp.last - bp.first;
        if (bp.segments.size() < own) return "missing own columns";
        for (std::size_t k = 0; k < bp.segments.size(); ++k) {
            const block_segment& s = bp.segments[k];
            if (k < own) {
                if (s.column != bp.first + k) return "own column out of place";
                if (s.height > s.column - bp.first) return "own segment above the block";
            } else {
                if (s.column < bp.last || s.column >= n) return "extra column out of range";
                if (k > own && s.column <= bp.segments[k - 1].column) return "extras not sorted";
                if (s.height == 0 || s.height > own) return "bad extra height";
            }
        }
    }
    return next == n ? std::string() : std::string("profile does not cover the dimension");
}

// Whether entry (r, c), r < c, lies in the profile.
bool covered(const orv::dense1D<block_profile, 8>& blocks, unsigned int r, unsigned int c) {
    for (std::size_t b = 0; b < blocks.size(); ++b) {
        const block_profile& bp = blocks[b];
        if (r < bp.first || r >= bp.last) continue;
        for (std::size_t k = 0; k < bp.segments.size(); ++k) {
            const block_segment& s = bp.segments[k];
            if (s.column != c) continue;
            const unsigned int top = std::min(bp.last, c);
            return r >= top - s.height && r < top;
        }
        return false;
    }
    return false;
}

// Column structure of the Cholesky factor of a graph in the order perm (position
// level): rows[c] holds the positions r < c with L(c, r) != 0.
std::vector<std::set<unsigned int>> symbolic_factor(const uvec& xadj, const uvec& adj, const uvec& perm,
                                                    const uvec& iperm) {
    const unsigned int n = static_cast<unsigned int>(perm.size());
    std::vector<std::set<unsigned int>> lower(n);  // lower[r]: positions c > r coupled to r
    for (unsigned int k = 0; k < n; ++k)
        for (unsigned int e = xadj[perm[k]]; e < xadj[perm[k] + 1]; ++e)
            if (iperm[adj[e]] > k) lower[k].insert(iperm[adj[e]]);
    std::vector<std::set<unsigned int>> rows(n);
    for (unsigned int r = 0; r < n; ++r) {
        for (unsigned int c : lower[r]) rows[c].insert(r);
        if (lower[r].empty()) continue;
        const unsigned int p = *lower[r].begin();
        for (unsigned int c : lower[r])
            if (c != p) lower[p].insert(c);
    }
    return rows;
}

// Expands a compressed-level graph with vertex sizes to DOF level in the order perm.
void expand_to_DOFs(const uvec& xadj, const uvec& adj, const uvec& perm, const uvec& iperm, const uvec& sizes, uvec& dx,
                    uvec& da, uvec& dperm, uvec& diperm) {
    const unsigned int n = static_cast<unsigned int>(perm.size());
    std::vector<unsigned int> start(n + 1, 0);  // DOF range of vertex v (original numbering)
    for (unsigned int v = 0; v < n; ++v) start[v + 1] = start[v] + sizes[v];
    std::vector<std::pair<unsigned, unsigned>> edges;
    for (unsigned int v = 0; v < n; ++v) {
        for (unsigned int a = start[v]; a < start[v + 1]; ++a)
            for (unsigned int b = a + 1; b < start[v + 1]; ++b) edges.push_back({a, b});
        for (unsigned int e = xadj[v]; e < xadj[v + 1]; ++e)
            for (unsigned int a = start[v]; a < start[v + 1]; ++a)
                for (unsigned int b = start[adj[e]]; b < start[adj[e] + 1]; ++b) edges.push_back({a, b});
    }
    graph_from_edges(start[n], edges, dx, da);
    std::vector<unsigned int> p;
    for (unsigned int k = 0; k < n; ++k)
        for (unsigned int a = start[perm[k]]; a < start[perm[k] + 1]; ++a) p.push_back(a);
    std::vector<unsigned int> ip(p.size());
    for (unsigned int k = 0; k < p.size(); ++k) ip[p[k]] = k;
    dperm = make(p);
    diperm = make(ip);
    (void)iperm;
}

// Node-level profile, DOF conversion, structure and coverage of every factor entry.
void check_profile_covers_factor(const uvec& xadj, const uvec& adj, const uvec& perm, const uvec& iperm,
                                 const uvec& sizes, unsigned int limit) {
    orv::dense1D<block_profile, 8> nodes, dofs;
    ASSERT_EQ(build_node_block_profile(xadj, adj, perm, iperm, sizes, limit, nodes), 0);
    ASSERT_EQ(convert_block_profile_to_DOFs(nodes, perm, sizes, dofs), 0);
    uvec dx, da, dp, dip;
    expand_to_DOFs(xadj, adj, perm, iperm, sizes, dx, da, dp, dip);
    const std::size_t ndof = dp.size();
    ASSERT_EQ(check_structure(dofs, ndof), "");
    for (std::size_t b = 0; b < nodes.size(); ++b) {
        const std::size_t own = nodes[b].last - nodes[b].first;
        EXPECT_LE(own, limit);
    }
    const auto rows = symbolic_factor(dx, da, dp, dip);
    for (unsigned int c = 0; c < ndof; ++c)
        for (unsigned int r : rows[c]) ASSERT_TRUE(covered(dofs, r, c)) << "L(" << c << "," << r << ") not stored";
}

// Five vertices, edges 0-1, 1-2, 0-3, 3-4, 2-4: heights 0 1 1 3 2 in the identity order.
void five_vertex_graph(uvec& xadj, uvec& adj) {
    graph_from_edges(5, {{0, 1}, {1, 2}, {0, 3}, {3, 4}, {2, 4}}, xadj, adj);
}

}  // namespace

TEST(Ordering, SupervariablesOfThreeNodes) {
    // Node A = DOFs 0..2, B = 3..5, C = 6..7; elements {A, B} and {B, C}.
    uvec gp = make({0, 6, 11});
    uvec gi = make({0, 1, 2, 3, 4, 5, 3, 4, 5, 6, 7});
    uvec xadj, adj;
    ASSERT_EQ(build_clique_graph(8, gp, gi, xadj, adj), 0);
    EXPECT_EQ(vec(xadj), (std::vector<unsigned>{0, 5, 10, 15, 22, 29, 36, 40, 44}));
    EXPECT_EQ(std::vector<unsigned>(adj.begin() + 36, adj.end()), (std::vector<unsigned>{3, 4, 5, 7, 3, 4, 5, 6}));
    compressed_graph g;
    ASSERT_EQ(compress_graph(xadj, adj, g), 0);
    // Keys 15 (A), 25 (C), 28 (B): supervariables in that order.
    ASSERT_EQ(g.nbr_super(), 3u);
    EXPECT_EQ(vec(g.dof_to_super), (std::vector<unsigned>{0, 0, 0, 2, 2, 2, 1, 1}));
    EXPECT_EQ(vec(g.super_ptr), (std::vector<unsigned>{0, 3, 5, 8}));
    EXPECT_EQ(vec(g.super_members), (std::vector<unsigned>{0, 1, 2, 6, 7, 3, 4, 5}));
    EXPECT_EQ(vec(g.xadj), (std::vector<unsigned>{0, 1, 2, 4}));
    EXPECT_EQ(vec(g.adjncy), (std::vector<unsigned>{2, 2, 0, 1}));
}

TEST(Ordering, CompressionKeepsDistinctNeighbourhoodsApart) {
    // A path 0-1-2-3: no two vertices share a closed neighbourhood; an isolated vertex 4.
    uvec xadj, adj;
    graph_from_edges(5, {{0, 1}, {1, 2}, {2, 3}}, xadj, adj);
    compressed_graph g;
    ASSERT_EQ(compress_graph(xadj, adj, g), 0);
    EXPECT_EQ(g.nbr_super(), 5u);
    EXPECT_EQ(g.adjncy.size(), adj.size());
    // Bad group input is refused.
    uvec gp = make({0, 2}), gi = make({0, 9});
    EXPECT_EQ(build_clique_graph(5, gp, gi, xadj, adj), orv::fem::error_data);
    EXPECT_EQ(xadj.size(), 0u);
}

TEST(Ordering, HeightsBlocksAndFillOnAFiveVertexGraph) {
    uvec xadj, adj, perm, iperm, h;
    five_vertex_graph(xadj, adj);
    identity(5, perm, iperm);
    ASSERT_EQ(compute_first_neighbour_heights(xadj, adj, perm, iperm, h), 0);
    EXPECT_EQ(vec(h), (std::vector<unsigned>{0, 1, 1, 3, 2}));
    uvec ones = make({1, 1, 1, 1, 1});

    // One block without a limit: the plain skyline.
    orv::dense1D<block_profile, 8> nodes;
    ASSERT_EQ(build_node_block_profile(xadj, adj, perm, iperm, ones, 600, nodes), 0);
    ASSERT_EQ(nodes.size(), 1u);
    EXPECT_EQ(segs(nodes[0]), (std::vector<block_segment>{{0, 0}, {1, 1}, {2, 1}, {3, 3}, {4, 2}}));

    // Two columns a block: columns 2, 3 and 4 cross the tops of their blocks.
    ASSERT_EQ(build_node_block_profile(xadj, adj, perm, iperm, ones, 2, nodes), 0);
    ASSERT_EQ(nodes.size(), 3u);
    EXPECT_EQ(nodes[0].first, 0u);
    EXPECT_EQ(nodes[0].last, 2u);
    EXPECT_EQ(segs(nodes[0]), (std::vector<block_segment>{{0, 0}, {1, 1}, {2, 1}, {3, 2}}));
    // Column 4 enters block 1 twice (heights 1 and 2): one segment, the larger height.
    // Column 3 gets height 1 from the fill of block 0's extras.
    EXPECT_EQ(segs(nodes[1]), (std::vector<block_segment>{{2, 0}, {3, 1}, {4, 2}}));
    EXPECT_EQ(segs(nodes[2]), (std::vector<block_segment>{{4, 0}}));

    orv::dense1D<block_profile, 8> dofs;
    ASSERT_EQ(convert_block_profile_to_DOFs(nodes, perm, ones, dofs), 0);
    block_profile_totals t;
    ASSERT_EQ(compute_block_profile_totals(dofs, t), 0);
    EXPECT_EQ(t.dimension, 5u);
    EXPECT_EQ(t.nbr_blocks, 3u);
    EXPECT_EQ(t.nbr_segments, 8u);
    EXPECT_EQ(t.profile, 12u);
    EXPECT_EQ(t.max_extra_segments, 2u);
    EXPECT_EQ(t.max_block_bytes, 112u);  // block 0: (6 values + 2 * 4 segments) * 8

    log_capture log;
    report_block_profile(t, &log_capture::display, &log);
    report_numerical_fill(t, 2, &log_capture::display, &log);
    const std::vector<std::pair<unsigned, std::string>> expected = {
        {2, "  dimension              :          5\n"}, {2, "  profile                :         12 (0.00 MB)\n"},
        {2, "  nbr blocks             :          3\n"}, {2, "  max extra segments     :          2\n"},
        {2, "  symbolic fill-ins      :    80.00 %\n"}, {2, "  zeros                  :          2\n"},
        {2, "  non zeros              :         10\n"}, {2, "  numerical fill-ins     :    66.67 % (83.33 %)\n"}};
    EXPECT_EQ(log.lines, expected);
}

TEST(Ordering, SupervariablesOfDifferentSizesAtDOFLevel) {
    // Path of three supervariables of 2, 1 and 3 DOFs.
    uvec xadj, adj, perm, iperm;
    graph_from_edges(3, {{0, 1}, {1, 2}}, xadj, adj);
    identity(3, perm, iperm);
    uvec sizes = make({2, 1, 3});
    orv::dense1D<block_profile, 8> nodes, dofs;
    ASSERT_EQ(build_node_block_profile(xadj, adj, perm, iperm, sizes, 600, nodes), 0);
    ASSERT_EQ(convert_block_profile_to_DOFs(nodes, perm, sizes, dofs), 0);
    ASSERT_EQ(dofs.size(), 1u);
    EXPECT_EQ(dofs[0].first, 0u);
    EXPECT_EQ(dofs[0].last, 6u);
    // Own columns reach up to the earlier DOFs of their own supervariable.
    EXPECT_EQ(segs(dofs[0]), (std::vector<block_segment>{{0, 0}, {1, 1}, {2, 2}, {3, 1}, {4, 2}, {5, 3}}));
    block_profile_totals t;
    ASSERT_EQ(compute_block_profile_totals(dofs, t), 0);
    EXPECT_EQ(t.profile, 15u);

    // An extra column of a 3-DOF supervariable gives three DOF segments of one height.
    uvec x2, a2, p2, ip2;
    graph_from_edges(5, {{0, 1}, {1, 2}, {0, 3}, {3, 4}, {2, 4}}, x2, a2);
    identity(5, p2, ip2);
    uvec s2 = make({1, 2, 1, 1, 3});
    ASSERT_EQ(build_node_block_profile(x2, a2, p2, ip2, s2, 2, nodes), 0);
    ASSERT_EQ(convert_block_profile_to_DOFs(nodes, p2, s2, dofs), 0);
    ASSERT_EQ(dofs.size(), 3u);
    // Block 1 holds vertices 2, 3 (DOFs 3, 4) and the extra vertex 4 (DOFs 5..7),
    // height 2 at vertex level, that is rows 3 and 4.
    EXPECT_EQ(segs(dofs[1]), (std::vector<block_segment>{{3, 0}, {4, 1}, {5, 2}, {6, 2}, {7, 2}}));
    EXPECT_EQ(check_structure(dofs, 8), "");
}

TEST(Ordering, DenseElementBeyondTheBlockLimit) {
    // A complete graph of 700 vertices in the identity order: block 0 takes 600
    // columns, the other 100 cross its top and become its extra segments.
    const unsigned int n = 700;
    std::vector<unsigned int> x(1, 0), a;
    for (unsigned int v = 0; v < n; ++v) {
        for (unsigned int u = 0; u < n; ++u)
            if (u != v) a.push_back(u);
        x.push_back(static_cast<unsigned int>(a.size()));
    }
    uvec xadj = make(x), adj = make(a), perm, iperm;
    identity(n, perm, iperm);
    uvec sizes;
    sizes.resize(n, 1u);
    orv::dense1D<block_profile, 8> nodes, dofs;
    ASSERT_EQ(build_node_block_profile(xadj, adj, perm, iperm, sizes, block_profile_limit, nodes), 0);
    ASSERT_EQ(nodes.size(), 2u);
    EXPECT_EQ(nodes[0].last, 600u);
    ASSERT_EQ(nodes[0].segments.size(), 700u);
    for (unsigned int c = 600; c < 700; ++c) EXPECT_EQ(nodes[0].segments[c].height, 600u);
    ASSERT_EQ(nodes[1].segments.size(), 100u);
    for (unsigned int k = 0; k < 100; ++k) EXPECT_EQ(nodes[1].segments[k].height, k);
    ASSERT_EQ(convert_block_profile_to_DOFs(nodes, perm, sizes, dofs), 0);
    block_profile_totals t;
    ASSERT_EQ(compute_block_profile_totals(dofs, t), 0);
    EXPECT_EQ(t.profile, 700u * 701u / 2u);  // the whole lower triangle
    EXPECT_EQ(t.max_extra_segments, 100u);
}

TEST(Ordering, DisconnectedComponentsNeverShareABlock) {
    // Two chains of 2-DOF nodes, IDs node * 9 + {0, 1}; chain 1 uses nodes 0..9,
    // chain 2 nodes 20..29.
    std::vector<unsigned int> gp(1, 0), gi, free_ids;
    for (unsigned int chain = 0; chain < 2; ++chain)
        for (unsigned int k = 0; k < 9; ++k) {
            const unsigned int a = 20 * chain + k, b = a + 1;
            for (unsigned int id : {a * 9, a * 9 + 1, b * 9, b * 9 + 1}) gi.push_back(id);
            gp.push_back(static_cast<unsigned int>(gi.size()));
        }
    for (unsigned int chain = 0; chain < 2; ++chain)
        for (unsigned int k = 0; k < 10; ++k) {
            free_ids.push_back((20 * chain + k) * 9);
            free_ids.push_back((20 * chain + k) * 9 + 1);
        }
    vector_fast<unsigned int> free_DOFs(free_ids.data(), free_ids.data() + free_ids.size());
    numbering_output out;
    ASSERT_EQ(number_free_DOFs(make(gp), make(gi), free_DOFs, out), 0);
    ASSERT_EQ(free_DOFs.size(), 40u);
    EXPECT_EQ(check_structure(out.blocks, 40), "");
    for (std::size_t b = 0; b < out.blocks.size(); ++b) {
        const block_profile& bp = out.blocks[b];
        const bool chain2 = free_DOFs[bp.first] / 9 >= 20;
        for (unsigned int r = bp.first; r < bp.last; ++r) EXPECT_EQ(free_DOFs[r] / 9 >= 20, chain2);
        for (std::size_t k = 0; k < bp.segments.size(); ++k)
            EXPECT_EQ(free_DOFs[bp.segments[k].column] / 9 >= 20, chain2);
    }
    // The two DOFs of a node stay together.
    for (unsigned int k = 0; k < 40; k += 2) EXPECT_EQ(free_DOFs[k] / 9, free_DOFs[k + 1] / 9);
}

TEST(Ordering, NoFreeDOF) {
    vector_fast<unsigned int> free_DOFs;
    numbering_output out;
    out.blocks.resize(3);  // stale content is cleared
    out.totals.dimension = 7;
    uvec gp = make({0, 2}), gi = make({9, 10});
    ASSERT_EQ(number_free_DOFs(gp, gi, free_DOFs, out), 0);
    EXPECT_EQ(out.blocks.size(), 0u);
    EXPECT_EQ(out.totals.dimension, 0u);
    EXPECT_EQ(out.pattern.dim(), 0u);
    log_capture log;
    report_block_profile(out.totals, &log_capture::display, &log);
    report_numerical_fill(out.totals, 0, &log_capture::display, &log);
    ASSERT_EQ(log.lines.size(), 4u);
    EXPECT_EQ(log.lines[0].second, "  dimension              :          0\n");
    EXPECT_EQ(log.lines[3].second, "  max extra segments     :          0\n");
}

TEST(Ordering, EliminationTreeAndPostorder) {
    uvec xadj, adj, perm, iperm, parent;
    graph_from_edges(4, {{0, 2}, {1, 3}}, xadj, adj);
    identity(4, perm, iperm);
    ASSERT_EQ(compute_elimination_tree(xadj, adj, perm, iperm, parent), 0);
    EXPECT_EQ(vec(parent), (std::vector<unsigned>{2, 3, ~0u, ~0u}));
    ASSERT_EQ(postorder_numbering(xadj, adj, perm, iperm), 0);
    EXPECT_EQ(vec(perm), (std::vector<unsigned>{0, 2, 1, 3}));
    EXPECT_EQ(vec(iperm), (std::vector<unsigned>{0, 2, 1, 3}));

    // A path eliminated from one end is a chain: parent k + 1, order unchanged.
    graph_from_edges(5, {{0, 1}, {1, 2}, {2, 3}, {3, 4}}, xadj, adj);
    identity(5, perm, iperm);
    ASSERT_EQ(compute_elimination_tree(xadj, adj, perm, iperm, parent), 0);
    EXPECT_EQ(vec(parent), (std::vector<unsigned>{1, 2, 3, 4, ~0u}));
    // Fill makes 0's parent 1 even when 0 only touches 4 later on: edges 0-4, 1-4.
    graph_from_edges(5, {{0, 4}, {1, 4}, {1, 2}}, xadj, adj);
    ASSERT_EQ(compute_elimination_tree(xadj, adj, perm, iperm, parent), 0);
    EXPECT_EQ(vec(parent), (std::vector<unsigned>{4, 2, 4, ~0u, ~0u}));
}

TEST(Ordering, ModesGiveValidDeterministicPermutations) {
    // A 6 x 6 x 6 grid graph with 26-neighbour coupling.
    const unsigned int m = 6, n = m * m * m;
    std::vector<std::pair<unsigned, unsigned>> edges;
    auto id = [&](int i, int j, int k) { return static_cast<unsigned>(i + m * (j + m * k)); };
    for (int k = 0; k < int(m); ++k)
        for (int j = 0; j < int(m); ++j)
            for (int i = 0; i < int(m); ++i)
                for (int dk = -1; dk <= 1; ++dk)
                    for (int dj = -1; dj <= 1; ++dj)
                        for (int di = -1; di <= 1; ++di) {
                            const int a = i + di, b = j + dj, c = k + dk;
                            if (a < 0 || b < 0 || c < 0 || a >= int(m) || b >= int(m) || c >= int(m)) continue;
                            edges.push_back({id(i, j, k), id(a, b, c)});
                        }
    uvec xadj, adj, none_w, w;
    graph_from_edges(n, edges, xadj, adj);
    w.resize(n, 3u);
    for (unsigned int mode : {0u, 4u, 5u}) {
        uvec p1, ip1, p2, ip2;
        ASSERT_EQ(compute_numbering(mode, xadj, adj, w, p1, ip1), 0) << mode;
        ASSERT_EQ(compute_numbering(mode, xadj, adj, w, p2, ip2), 0) << mode;
        EXPECT_TRUE(is_permutation_of_n(p1, ip1, n)) << mode;
        EXPECT_EQ(vec(p1), vec(p2)) << mode;
        check_profile_covers_factor(xadj, adj, p1, ip1, w, 40);
    }
    // The shuffle of mode 0 is not the identity, and a weight vector of another length
    // gives the unweighted call.
    uvec p0, ip0, pu, ipu, pw, ipw;
    ASSERT_EQ(compute_numbering(0, xadj, adj, w, p0, ip0), 0);
    unsigned int fixed = 0;
    for (unsigned int k = 0; k < n; ++k) fixed += p0[k] == k;
    EXPECT_LT(fixed, n / 4);
    uvec short_w = make({1, 2, 3});
    ASSERT_EQ(compute_numbering(4, xadj, adj, none_w, pu, ipu), 0);
    ASSERT_EQ(compute_numbering(4, xadj, adj, short_w, pw, ipw), 0);
    EXPECT_EQ(vec(pu), vec(pw));
    // Postordering makes every subtree contiguous: a parent comes after its children
    // and the descendants of k occupy the positions just before k.
    uvec p5, ip5, parent;
    ASSERT_EQ(compute_numbering(5, xadj, adj, w, p5, ip5), 0);
    ASSERT_EQ(compute_elimination_tree(xadj, adj, p5, ip5, parent), 0);
    std::vector<unsigned int> subtree(n, 1);
    for (unsigned int k = 0; k < n; ++k)
        if (parent[k] != ~0u) {
            EXPECT_GT(parent[k], k);
            subtree[parent[k]] += subtree[k];
        }
    for (unsigned int k = 0; k < n; ++k)
        if (parent[k] != ~0u) {
            EXPECT_GE(k + subtree[parent[k]], parent[k] + 1);
        }
    // Unknown modes.
    EXPECT_EQ(compute_numbering(2, xadj, adj, w, p5, ip5), orv::fem::error_data);
    ASSERT_EQ(compute_numbering(9, xadj, adj, w, p5, ip5), 0);
    EXPECT_EQ(p5[7], 7u);
}

TEST(Ordering, RandomGraphsProfileHoldsTheFactor) {
    std::mt19937 rng(7);
    for (int trial = 0; trial < 40; ++trial) {
        const unsigned int n = 5 + rng() % 40;
        std::vector<std::pair<unsigned, unsigned>> edges;
        const unsigned int ne = rng() % (3 * n);
        for (unsigned int e = 0; e < ne; ++e) edges.push_back({unsigned(rng() % n), unsigned(rng() % n)});
        uvec xadj, adj, perm, iperm, w;
        graph_from_edges(n, edges, xadj, adj);
        w.resize(n);
        for (unsigned int v = 0; v < n; ++v) w[v] = 1 + rng() % 3;
        ASSERT_EQ(compute_numbering(trial % 2 ? 0u : 5u, xadj, adj, w, perm, iperm), 0);
        check_profile_covers_factor(xadj, adj, perm, iperm, w, 1 + rng() % 6);
        if (HasFatalFailure()) return;
    }
}

TEST(Ordering, DriverOnAGridOfHexahedra) {
    // 4 x 4 x 3 hexahedra of 3-DOF nodes, the nodes of the bottom layer fixed.
    const unsigned int nx = 4, ny = 4, nz = 3;
    auto node = [&](unsigned i, unsigned j, unsigned k) { return i + (nx + 1) * (j + (ny + 1) * k); };
    std::vector<unsigned int> gp(1, 0), gi, free_ids;
    for (unsigned int k = 0; k < nz; ++k)
        for (unsigned int j = 0; j < ny; ++j)
            for (unsigned int i = 0; i < nx; ++i) {
                for (unsigned int c = 0; c < 8; ++c) {
                    const unsigned int nd = node(i + (c & 1), j + ((c >> 1) & 1), k + (c >> 2));
                    for (unsigned int d = 0; d < 3; ++d) gi.push_back(nd * 9 + d);
                }
                gp.push_back(static_cast<unsigned int>(gi.size()));
            }
    for (unsigned int k = 1; k <= nz; ++k)
        for (unsigned int j = 0; j <= ny; ++j)
            for (unsigned int i = 0; i <= nx; ++i)
                for (unsigned int d = 0; d < 3; ++d) free_ids.push_back(node(i, j, k) * 9 + d);
    const unsigned int ndof = static_cast<unsigned int>(free_ids.size());

    vector_fast<unsigned int> f1(free_ids.data(), free_ids.data() + ndof), f2(f1);
    numbering_output o1, o2;
    ASSERT_EQ(number_free_DOFs(make(gp), make(gi), f1, o1, true, 5, 20), 0);
    ASSERT_EQ(number_free_DOFs(make(gp), make(gi), f2, o2, true, 5, 20), 0);
    // The renumbered list is a permutation of the free DOFs, the same both times.
    std::vector<unsigned int> a(f1.begin(), f1.end()), b(free_ids);
    EXPECT_EQ(a, std::vector<unsigned int>(f2.begin(), f2.end()));
    std::sort(a.begin(), a.end());
    std::sort(b.begin(), b.end());
    EXPECT_EQ(a, b);
    for (unsigned int k = 0; k < ndof; ++k) EXPECT_EQ(f1.find(f1[k]), k);
    EXPECT_EQ(check_structure(o1.blocks, ndof), "");
    ASSERT_EQ(o1.blocks.size(), o2.blocks.size());
    for (std::size_t k = 0; k < o1.blocks.size(); ++k) EXPECT_EQ(segs(o1.blocks[k]), segs(o2.blocks[k]));
    EXPECT_GT(o1.totals.nbr_blocks, 1u);
    EXPECT_EQ(o1.totals.dimension, ndof);

    // The DOF pattern holds exactly the couplings of the elements (and the diagonal).
    ASSERT_TRUE(o1.pattern.is_valid());
    ASSERT_EQ(o1.pattern.dim(), ndof);
    std::set<std::pair<unsigned, unsigned>> expected;
    for (std::size_t g = 0; g + 1 < gp.size(); ++g)
        for (unsigned int p = gp[g]; p < gp[g + 1]; ++p)
            for (unsigned int q = gp[g]; q < gp[g + 1]; ++q) {
                const unsigned int r = f1.find(gi[p]), c = f1.find(gi[q]);
                if (r != ~0u && c != ~0u && r <= c) expected.insert({r, c});
            }
    std::set<std::pair<unsigned, unsigned>> got;
    for (unsigned int r = 0; r < ndof; ++r)
        for (unsigned int e = o1.pattern.pointers()[r]; e < o1.pattern.pointers()[r + 1]; ++e)
            got.insert({r, o1.pattern.columns()[e]});
    EXPECT_EQ(got, expected);
    // Every coupling lies in the profile.
    for (auto& rc : expected)
        if (rc.first != rc.second) {
            EXPECT_TRUE(covered(o1.blocks, rc.first, rc.second));
        }

    // Inconsistent group pointers are refused and leave the free list alone.
    vector_fast<unsigned int> f3(free_ids.data(), free_ids.data() + ndof);
    uvec bad = make({0, 5, 3});
    EXPECT_EQ(number_free_DOFs(bad, make(gi), f3, o2), orv::fem::error_data);
    EXPECT_EQ(o2.blocks.size(), 0u);
    EXPECT_EQ(std::vector<unsigned>(f3.begin(), f3.end()), free_ids);
}

TEST(Ordering, FreeDOFsWithoutElementsAreBlocksOfTheirOwn) {
    // Three free DOFs that no group couples, and a group of DOFs that are not free.
    const unsigned int ids[3] = {27, 28, 29};
    vector_fast<unsigned int> free_DOFs(ids, ids + 3);
    numbering_output out;
    ASSERT_EQ(number_free_DOFs(make({0, 2}), make({5, 6}), free_DOFs, out), 0);
    ASSERT_EQ(out.blocks.size(), 3u);
    EXPECT_EQ(out.totals.profile, 3u);
    EXPECT_EQ(out.totals.nbr_segments, 3u);
    EXPECT_EQ(out.totals.max_block_bytes, 24u);
    EXPECT_EQ(check_structure(out.blocks, 3), "");
    EXPECT_EQ(out.pattern.nbr_entries(), 3u);
    std::vector<unsigned int> got(free_DOFs.begin(), free_DOFs.end());
    std::sort(got.begin(), got.end());
    EXPECT_EQ(got, (std::vector<unsigned int>{27, 28, 29}));
}
