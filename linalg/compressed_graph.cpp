#include "linalg/compressed_graph.h"
#include <orv/fem/error_type.h>

#include <algorithm>
#include <cstdint>
#include <new>
#include <utility>
#include <vector>

namespace orv {
namespace core {

namespace {

const unsigned int none = ~0u;

// Sizes `out` to n and copies v into it.
bool to_dense(const std::vector<unsigned int>& v, orv::dense1D<unsigned int, 8>& out) {
    out.clear();
    if (!out.resize(v.size())) return false;
    if (!v.empty()) std::copy(v.begin(), v.end(), out.data());
    return true;
}

}  // namespace

int build_clique_graph(unsigned int n, const orv::dense1D<unsigned int, 8>& group_ptr,
                       const orv::dense1D<unsigned int, 8>& group_ids, orv::dense1D<unsigned int, 8>& xadj,
                       orv::dense1D<unsigned int, 8>& adjncy) {
    xadj.clear();
    adjncy.clear();
    const std::size_t g = group_ptr.size() ? group_ptr.size() - 1 : 0;
    for (std::size_t k = 0; k < g; ++k)
        if (group_ptr[k] > group_ptr[k + 1] || group_ptr[k + 1] > group_ids.size()) return fem::error_data;
    if (g && group_ptr[0] != 0) return fem::error_data;
    for (std::size_t k = 0; k < (g ? group_ptr[g] : 0u); ++k)
        if (group_ids[k] >= n) return fem::error_data;
    try {
        // Groups of each vertex, two passes.
        std::vector<unsigned int> vptr(std::size_t(n) + 1, 0);
        for (std::size_t k = 0; k < g; ++k)
            for (unsigned int e = group_ptr[k]; e < group_ptr[k + 1]; ++e) ++vptr[group_ids[e] + 1];
        for (unsigned int v = 0; v < n; ++v) vptr[v + 1] += vptr[v];
        std::vector<unsigned int> vgrp(vptr[n]);
        {
            std::vector<unsigned int> fill(vptr.begin(), vptr.end() - 1);
            for (std::size_t k = 0; k < g; ++k)
                for (unsigned int e = group_ptr[k]; e < group_ptr[k + 1]; ++e)
                    vgrp[fill[group_ids[e]]++] = static_cast<unsigned int>(k);
        }
        // Count the distinct neighbours of each vertex with a mark array, then fill.
        std::vector<unsigned int> mark(n, none);
        auto each_neighbour = [&](unsigned int v, auto&& visit) {
            mark[v] = v;
            for (unsigned int q = vptr[v]; q < vptr[v + 1]; ++q) {
                const unsigned int k = vgrp[q];
                for (unsigned int e = group_ptr[k]; e < group_ptr[k + 1]; ++e) {
                    const unsigned int u = group_ids[e];
                    if (mark[u] != v) {
                        mark[u] = v;
                        visit(u);
                    }
                }
            }
        };
        std::vector<unsigned int> ptr(std::size_t(n) + 1, 0);
        for (unsigned int v = 0; v < n; ++v) {
            unsigned int deg = 0;
            each_neighbour(v, [&](unsigned int) { ++deg; });
            if (deg > 0xFFFFFFFFu - ptr[v]) throw std::bad_alloc();
            ptr[v + 1] = ptr[v] + deg;
        }
        std::vector<unsigned int> adj(ptr[n]);
        std::fill(mark.begin(), mark.end(), none);
        for (unsigned int v = 0; v < n; ++v) {
            unsigned int* row = adj.data() + ptr[v];
            unsigned int len = 0;
            each_neighbour(v, [&](unsigned int u) { row[len++] = u; });
            std::sort(row, row + len);
        }
        if (!to_dense(ptr, xadj) || !to_dense(adj, adjncy)) throw std::bad_alloc();
    } catch (const std::bad_alloc&) {
        xadj.clear_hard();
        adjncy.clear_hard();
        return fem::error_memory;
    }
    return 0;
}

int compress_graph(const orv::dense1D<unsigned int, 8>& xadj, const orv::dense1D<unsigned int, 8>& adjncy,
                   compressed_graph& out) {
    out.clear();
    const unsigned int n = xadj.size() ? static_cast<unsigned int>(xadj.size() - 1) : 0u;
    try {
        // Key of a vertex: itself plus the sum of its neighbours, that is the sum of its
        // closed neighbourhood. Equal closed neighbourhoods give equal keys.
        std::vector<std::pair<std::uint64_t, unsigned int>> keys(n);
        for (unsigned int v = 0; v < n; ++v) {
            std::uint64_t k = v;
            for (unsigned int e = xadj[v]; e < xadj[v + 1]; ++e) k += adjncy[e];
            keys[v] = std::make_pair(k, v);
        }
        std::sort(keys.begin(), keys.end());

        std::vector<unsigned int> dof_to_super(n, none);
        std::vector<unsigned int> mark(n, none);
        std::vector<unsigned int> super_ptr(1, 0);
        std::vector<unsigned int> members;
        members.reserve(n);
        for (unsigned int pos = 0; pos < n; ++pos) {
            const unsigned int v = keys[pos].second;
            if (dof_to_super[v] != none) continue;
            const unsigned int s = static_cast<unsigned int>(super_ptr.size() - 1);
            dof_to_super[v] = s;
            members.push_back(v);
            // Mark the closed neighbourhood of the starting vertex with its position.
            mark[v] = pos;
            for (unsigned int e = xadj[v]; e < xadj[v + 1]; ++e) mark[adjncy[e]] = pos;
            const unsigned int deg = xadj[v + 1] - xadj[v];
            for (unsigned int q = pos + 1; q < n && keys[q].first == keys[pos].first; ++q) {
                const unsigned int t = keys[q].second;
                if (dof_to_super[t] != none || xadj[t + 1] - xadj[t] != deg) continue;
                bool same = true;
                for (unsigned int e = xadj[t]; e < xadj[t + 1] && same; ++e) same = mark[adjncy[e]] == pos;
                if (!same) continue;
                dof_to_super[t] = s;
                members.push_back(t);
            }
            super_ptr.push_back(static_cast<unsigned int>(members.size()));
        }

        // Reduced adjacency from each supervariable's first member: count, then fill,
        // each neighbour supervariable once.
        const unsigned int ns = static_cast<unsigned int>(super_ptr.size() - 1);
        std::vector<unsigned int> sx(std::size_t(ns) + 1, 0);
        std::vector<unsigned int> smark(ns, none);
        for (unsigned int s = 0; s < ns; ++s) {
            const unsigned int r = members[super_ptr[s]];
            smark[s] = s;
            unsigned int deg = 0;
            for (unsigned int e = xadj[r]; e < xadj[r + 1]; ++e) {
                const unsigned int t = dof_to_super[adjncy[e]];
                if (smark[t] != s) {
                    smark[t] = s;
                    ++deg;
                }
            }
            sx[s + 1] = sx[s] + deg;
        }
        std::vector<unsigned int> sadj(sx[ns]);
        std::fill(smark.begin(), smark.end(), none);
        for (unsigned int s = 0; s < ns; ++s) {
            const unsigned int r = members[super_ptr[s]];
            smark[s] = s;
            unsigned int* row = sadj.data() + sx[s];
            unsigned int len = 0;
            for (unsigned int e = xadj[r]; e < xadj[r + 1]; ++e) {
                const unsigned int t = dof_to_super[adjncy[e]];
                if (smark[t] != s) {
                    smark[t] = s;
                    row[len++] = t;
                }
            }
            std::sort(row, row + len);
        }
        if (!to_dense(sx, out.xadj) || !to_dense(sadj, out.adjncy) || !to_dense(dof_to_super, out.dof_to_super) ||
            !to_dense(super_ptr, out.super_ptr) || !to_dense(members, out.super_members))
            throw std::bad_alloc();
    } catch (const std::bad_alloc&) {
        out.clear();
        return fem::error_memory;
    }
    return 0;
}

}  // namespace core
}  // namespace orv
