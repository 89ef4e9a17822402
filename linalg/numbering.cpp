#include "linalg/numbering.h"
#include <orv/fem/error_type.h>

#include <metis.h>

#include <algorithm>
#include <cstdint>
#include <new>
#include <random>
#include <vector>

namespace orv {
namespace core {

namespace {

const unsigned int none = ~0u;

bool valid_graph(const orv::dense1D<unsigned int, 8>& xadj, const orv::dense1D<unsigned int, 8>& adjncy) {
    if (xadj.size() == 0) return true;
    const std::size_t n = xadj.size() - 1;
    if (xadj[0] != 0 || xadj[n] > adjncy.size()) return false;
    for (std::size_t v = 0; v < n; ++v)
        if (xadj[v] > xadj[v + 1]) return false;
    for (std::size_t e = 0; e < xadj[n]; ++e)
        if (adjncy[e] >= n) return false;
    return true;
}

bool valid_order(std::size_t n, const orv::dense1D<unsigned int, 8>& perm, const orv::dense1D<unsigned int, 8>& iperm) {
    if (perm.size() != n || iperm.size() != n) return false;
    for (std::size_t k = 0; k < n; ++k)
        if (perm[k] >= n || iperm[perm[k]] != k) return false;
    return true;
}

int metis_order(const orv::dense1D<unsigned int, 8>& xadj, const orv::dense1D<unsigned int, 8>& adjncy,
                const orv::dense1D<unsigned int, 8>& weights, orv::dense1D<unsigned int, 8>& perm,
                orv::dense1D<unsigned int, 8>& iperm) {
    const std::size_t n = perm.size();
    if (n > 0x7FFFFFFFu || xadj[n] > 0x7FFFFFFFu) return fem::error_data;
    std::vector<idx_t> mx(xadj.begin(), xadj.end());
    std::vector<idx_t> ma(adjncy.begin(), adjncy.begin() + xadj[n]);
    std::vector<idx_t> mw;
    if (weights.size() == n) mw.assign(weights.begin(), weights.end());
    std::vector<idx_t> mp(n), mi(n);
    idx_t nv = static_cast<idx_t>(n);
    if (ma.empty()) ma.push_back(0);  // METIS reads the array even with no edge
    const int rc =
        METIS_NodeND(&nv, mx.data(), ma.data(), mw.empty() ? nullptr : mw.data(), nullptr, mp.data(), mi.data());
    if (rc == METIS_ERROR_MEMORY) return fem::error_memory;
    if (rc != METIS_OK) return fem::error_internal;
    for (std::size_t k = 0; k < n; ++k) {
        perm[k] = static_cast<unsigned int>(mp[k]);
        iperm[k] = static_cast<unsigned int>(mi[k]);
    }
    return valid_order(n, perm, iperm) ? 0 : fem::error_internal;
}

}  // namespace

int compute_numbering(unsigned int mode, const orv::dense1D<unsigned int, 8>& xadj,
                      const orv::dense1D<unsigned int, 8>& adjncy, const orv::dense1D<unsigned int, 8>& weights,
                      orv::dense1D<unsigned int, 8>& perm, orv::dense1D<unsigned int, 8>& iperm) {
    perm.clear();
    iperm.clear();
    if (!valid_graph(xadj, adjncy)) return fem::error_data;
    if (mode >= 1 && mode <= 3) return fem::error_data;
    const std::size_t n = xadj.size() ? xadj.size() - 1 : 0;
    if (!perm.resize(n) || !iperm.resize(n)) {
        perm.clear_hard();
        iperm.clear_hard();
        return fem::error_memory;
    }
    for (std::size_t k = 0; k < n; ++k) perm[k] = iperm[k] = static_cast<unsigned int>(k);
    if (n == 0 || mode > 5) return 0;
    int rc = 0;
    try {
        if (mode == 0) {
            std::mt19937 mt(1u);
            for (std::size_t i = 0; i + 1 < n; ++i) {
                const std::size_t j = static_cast<std::uint32_t>(mt()) % (i + 2);
                std::swap(perm[i + 1], perm[j]);
            }
            for (std::size_t k = 0; k < n; ++k) iperm[perm[k]] = static_cast<unsigned int>(k);
            return 0;
        }
        rc = metis_order(xadj, adjncy, weights, perm, iperm);
        if (rc == 0 && mode == 5) rc = postorder_numbering(xadj, adjncy, perm, iperm);
    } catch (const std::bad_alloc&) {
        rc = fem::error_memory;
    }
    if (rc) {
        perm.clear_hard();
        iperm.clear_hard();
    }
    return rc;
}

int compute_elimination_tree(const orv::dense1D<unsigned int, 8>& xadj, const orv::dense1D<unsigned int, 8>& adjncy,
                             const orv::dense1D<unsigned int, 8>& perm, const orv::dense1D<unsigned int, 8>& iperm,
                             orv::dense1D<unsigned int, 8>& parent) {
    parent.clear();
    if (!valid_graph(xadj, adjncy)) return fem::error_data;
    const std::size_t n = xadj.size() ? xadj.size() - 1 : 0;
    if (!valid_order(n, perm, iperm)) return fem::error_data;
    orv::dense1D<unsigned int, 8> ancestor;
    if (!parent.resize(n, none) || !ancestor.resize(n, none)) {
        parent.clear_hard();
        return fem::error_memory;
    }
    for (std::size_t k = 0; k < n; ++k) {
        const unsigned int v = perm[k];
        for (unsigned int e = xadj[v]; e < xadj[v + 1]; ++e) {
            unsigned int j = iperm[adjncy[e]];
            if (j >= k) continue;
            // Climb to the root of j's current subtree, pointing the path at k.
            while (ancestor[j] != none && ancestor[j] != k) {
                const unsigned int next = ancestor[j];
                ancestor[j] = static_cast<unsigned int>(k);
                j = next;
            }
            if (ancestor[j] == none) {
                ancestor[j] = static_cast<unsigned int>(k);
                parent[j] = static_cast<unsigned int>(k);
            }
        }
    }
    return 0;
}

int postorder_numbering(const orv::dense1D<unsigned int, 8>& xadj, const orv::dense1D<unsigned int, 8>& adjncy,
                        orv::dense1D<unsigned int, 8>& perm, orv::dense1D<unsigned int, 8>& iperm) {
    orv::dense1D<unsigned int, 8> parent;
    int rc = compute_elimination_tree(xadj, adjncy, perm, iperm, parent);
    if (rc) return rc;
    const std::size_t n = perm.size();
    try {
        // Child lists in ascending order.
        std::vector<unsigned int> head(n, none), next(n, none);
        std::vector<unsigned int> stack;
        stack.reserve(n);
        for (std::size_t k = n; k-- > 0;) {
            if (parent[k] == none) continue;
            next[k] = head[parent[k]];
            head[parent[k]] = static_cast<unsigned int>(k);
        }
        for (std::size_t k = 0; k < n; ++k)
            if (parent[k] == none) stack.push_back(static_cast<unsigned int>(k));
        // Depth first from the last root, writing the order from the end backwards.
        std::vector<unsigned int> order(n);
        std::size_t pos = n;
        while (!stack.empty()) {
            const unsigned int k = stack.back();
            stack.pop_back();
            order[--pos] = perm[k];
            for (unsigned int c = head[k]; c != none; c = next[c]) stack.push_back(c);
        }
        if (pos != 0) return fem::error_internal;
        for (std::size_t k = 0; k < n; ++k) {
            perm[k] = order[k];
            iperm[order[k]] = static_cast<unsigned int>(k);
        }
    } catch (const std::bad_alloc&) {
        return fem::error_memory;
    }
    return 0;
}

int build_DOF_pattern(const compressed_graph& g, const orv::dense1D<unsigned int, 8>& perm,
                      const orv::dense1D<unsigned int, 8>& iperm, orv::dense1D<unsigned int, 8>& pointers,
                      orv::dense1D<unsigned int, 8>& columns) {
    pointers.clear();
    columns.clear();
    const std::size_t ns = g.nbr_super();
    if (!valid_order(ns, perm, iperm) || !valid_graph(g.xadj, g.adjncy) ||
        (g.xadj.size() != ns + 1 && !(ns == 0 && g.xadj.size() == 0)))
        return fem::error_data;
    try {
        std::vector<std::uint64_t> offset(ns + 1, 0);
        for (std::size_t k = 0; k < ns; ++k) offset[k + 1] = offset[k] + g.super_size(perm[k]);
        if (offset[ns] > 0xFFFFFFFFull) return fem::error_data;
        // Count, then fill: the rows of supervariable position k share the later
        // neighbour positions.
        std::vector<unsigned int> later;
        std::uint64_t total = 0;
        for (int pass = 0; pass < 2; ++pass) {
            if (pass == 1) {
                if (total > 0xFFFFFFFFull) throw std::bad_alloc();
                if (!pointers.resize(offset[ns] + 1) || !columns.resize(total)) throw std::bad_alloc();
                pointers[0] = 0;
            }
            std::size_t at = 0;
            for (std::size_t k = 0; k < ns; ++k) {
                const unsigned int s = perm[k];
                later.clear();
                std::uint64_t width = 0;
                for (unsigned int e = g.xadj[s]; e < g.xadj[s + 1]; ++e) {
                    const unsigned int q = iperm[g.adjncy[e]];
                    if (q > k) {
                        later.push_back(q);
                        width += offset[q + 1] - offset[q];
                    }
                }
                const unsigned int size = g.super_size(s);
                if (pass == 0) {
                    total += size * width + std::uint64_t(size) * (size + 1) / 2;
                    continue;
                }
                std::sort(later.begin(), later.end());
                for (unsigned int d = 0; d < size; ++d) {
                    const std::uint64_t row = offset[k] + d;
                    for (std::uint64_t c = row; c < offset[k + 1]; ++c) columns[at++] = static_cast<unsigned int>(c);
                    for (unsigned int q : later)
                        for (std::uint64_t c = offset[q]; c < offset[q + 1]; ++c)
                            columns[at++] = static_cast<unsigned int>(c);
                    pointers[row + 1] = static_cast<unsigned int>(at);
                }
            }
        }
    } catch (const std::bad_alloc&) {
        pointers.clear_hard();
        columns.clear_hard();
        return fem::error_memory;
    }
    return 0;
}

int number_free_DOFs(const orv::dense1D<unsigned int, 8>& group_ptr, const orv::dense1D<unsigned int, 8>& group_IDs,
                     vector_fast<unsigned int>& free_DOFs, numbering_output& out, bool with_pattern, unsigned int mode,
                     unsigned int limit) {
    out.clear();
    const std::size_t n = free_DOFs.size();
    if (n == 0) return 0;
    if (n > 0x7FFFFFFFu) return fem::error_data;
    const std::size_t g = group_ptr.size() ? group_ptr.size() - 1 : 0;
    if (g && group_ptr[0] != 0) return fem::error_data;
    for (std::size_t k = 0; k < g; ++k)
        if (group_ptr[k] > group_ptr[k + 1] || group_ptr[k + 1] > group_IDs.size()) return fem::error_data;

    // Element groups as sorted lists of free-DOF positions without duplicates.
    orv::dense1D<unsigned int, 8> gptr, gids;
    if (!gptr.reserve(g + 1) || !gids.reserve(12 * g) || !gptr.push_back(0u)) return fem::error_memory;
    for (std::size_t k = 0; k < g; ++k) {
        const std::size_t start = gids.size();
        for (unsigned int e = group_ptr[k]; e < group_ptr[k + 1]; ++e) {
            const std::uint32_t p = free_DOFs.find(group_IDs[e]);
            if (p != vector_fast<unsigned int>::npos && !gids.push_back(p)) return fem::error_memory;
        }
        unsigned int* b = gids.data() + start;
        unsigned int* e = gids.data() + gids.size();
        std::sort(b, e);
        const std::size_t len = static_cast<std::size_t>(std::unique(b, e) - b);
        gids.resize(start + len);
        if (gids.size() > 0xFFFFFFFFu) return fem::error_memory;
        if (!gptr.push_back(static_cast<unsigned int>(gids.size()))) return fem::error_memory;
    }

    orv::dense1D<unsigned int, 8> xadj, adjncy;
    int rc = build_clique_graph(static_cast<unsigned int>(n), gptr, gids, xadj, adjncy);
    gptr.clear_hard();
    gids.clear_hard();
    if (rc) return rc;
    compressed_graph cg;
    rc = compress_graph(xadj, adjncy, cg);
    xadj.clear_hard();
    adjncy.clear_hard();
    if (rc) return rc;

    const unsigned int ns = cg.nbr_super();
    orv::dense1D<unsigned int, 8> weights;
    if (!weights.resize(ns)) return fem::error_memory;
    for (unsigned int s = 0; s < ns; ++s) weights[s] = cg.super_size(s);

    orv::dense1D<unsigned int, 8> perm, iperm;
    rc = compute_numbering(mode, cg.xadj, cg.adjncy, weights, perm, iperm);
    if (rc) return rc;

    orv::dense1D<block_profile, 8> node_blocks;
    rc = build_node_block_profile(cg.xadj, cg.adjncy, perm, iperm, weights, limit, node_blocks);
    if (rc == 0) rc = convert_block_profile_to_DOFs(node_blocks, perm, weights, out.blocks);
    node_blocks.clear_hard();
    if (rc == 0) rc = compute_block_profile_totals(out.blocks, out.totals);
    if (rc == 0 && with_pattern) {
        orv::dense1D<unsigned int, 8> pointers, columns;
        rc = build_DOF_pattern(cg, perm, iperm, pointers, columns);
        if (rc == 0 && !out.pattern.init(pointers, columns, 0.0)) rc = fem::error_memory;
    }
    if (rc) {
        out.clear();
        return rc;
    }

    // Free DOFs in elimination order: each supervariable's members in their order.
    orv::dense1D<unsigned int, 8> ordered;
    if (!ordered.resize(n)) {
        out.clear();
        return fem::error_memory;
    }
    std::size_t at = 0;
    for (unsigned int k = 0; k < ns; ++k) {
        const unsigned int s = perm[k];
        for (unsigned int m = cg.super_ptr[s]; m < cg.super_ptr[s + 1]; ++m)
            ordered[at++] = free_DOFs[cg.super_members[m]];
    }
    // init builds the new table aside: on failure the caller's list is untouched.
    if (!free_DOFs.init(ordered.begin(), ordered.end())) {
        out.clear();
        return fem::error_memory;
    }
    return 0;
}

}  // namespace core
}  // namespace orv
