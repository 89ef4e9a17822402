#include "linalg/block_profile_build.h"
#include <orv/fem/error_type.h>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <new>
#include <vector>

#include "linalg/column_height_map.h"

namespace orv {
namespace core {

namespace {

const unsigned int none = ~0u;
const double MB_per_double = 7.62939453125e-06;  // 8 / 2^20

std::uint64_t add_saturated(std::uint64_t a, std::uint64_t b, bool& saturated) {
    if (a > std::numeric_limits<std::uint64_t>::max() - b) {
        saturated = true;
        return std::numeric_limits<std::uint64_t>::max();
    }
    return a + b;
}

bool check_order(const orv::dense1D<unsigned int, 8>& xadj, const orv::dense1D<unsigned int, 8>& adjncy,
                 const orv::dense1D<unsigned int, 8>& perm, const orv::dense1D<unsigned int, 8>& iperm) {
    const std::size_t n = xadj.size() ? xadj.size() - 1 : 0;
    if (perm.size() != n || iperm.size() != n) return false;
    if (n && xadj[n] > adjncy.size()) return false;
    for (std::size_t k = 0; k < n; ++k)
        if (perm[k] >= n || iperm[perm[k]] != k) return false;
    return true;
}

void emit(profile_log_hook hook, void* pass_thru, const char* text) { hook(pass_thru, 2u, text); }

}  // namespace

int compute_first_neighbour_heights(const orv::dense1D<unsigned int, 8>& xadj,
                                    const orv::dense1D<unsigned int, 8>& adjncy,
                                    const orv::dense1D<unsigned int, 8>& perm,
                                    const orv::dense1D<unsigned int, 8>& iperm,
                                    orv::dense1D<unsigned int, 8>& heights) {
    heights.clear();
    if (!check_order(xadj, adjncy, perm, iperm)) return fem::error_data;
    const unsigned int n = static_cast<unsigned int>(perm.size());
    if (!heights.resize(n)) return fem::error_memory;
    for (unsigned int i = 0; i < n; ++i) {
        const unsigned int v = perm[i];
        unsigned int low = i;
        for (unsigned int e = xadj[v]; e < xadj[v + 1]; ++e) low = std::min(low, iperm[adjncy[e]]);
        heights[i] = i - low;
    }
    return 0;
}

int build_node_block_profile(const orv::dense1D<unsigned int, 8>& xadj, const orv::dense1D<unsigned int, 8>& adjncy,
                             const orv::dense1D<unsigned int, 8>& perm, const orv::dense1D<unsigned int, 8>& iperm,
                             const orv::dense1D<unsigned int, 8>& sizes, unsigned int limit,
                             orv::dense1D<block_profile, 8>& blocks) {
    blocks.clear_hard();
    if (!check_order(xadj, adjncy, perm, iperm) || sizes.size() != perm.size() || limit == 0) return fem::error_data;
    const unsigned int n = static_cast<unsigned int>(perm.size());
    if (n == 0) return 0;
    orv::dense1D<unsigned int, 8> h;
    int rc = compute_first_neighbour_heights(xadj, adjncy, perm, iperm, h);
    if (rc) return rc;
    try {
        std::vector<column_height_map> maps;
        std::vector<unsigned int> first, last;
        std::vector<unsigned int> block_of(n, none);
        std::vector<unsigned int> crossing;
        unsigned int count = 0;
        for (unsigned int i = 0; i < n; ++i) {
            // A block opens on a column without entries above its diagonal or when the
            // current one is full; an empty supervariable never opens one.
            const bool open = maps.empty() || ((h[i] == 0 || count == limit) && sizes[perm[i - 1]] > 0);
            if (open) {
                maps.emplace_back();
                first.push_back(i);
                last.push_back(i);
                count = 0;
            }
            const std::size_t b = maps.size() - 1;
            unsigned int hi = h[i];
            if (i - hi < first[b]) {
                // The column's skyline crosses the top of the block: its entries above the
                // block go to earlier blocks as extra segments, below.
                crossing.push_back(i);
                hi = 0;
            }
            maps[b].insert_max(i, hi);
            block_of[i] = static_cast<unsigned int>(b);
            last[b] = i + 1;
            ++count;
        }
        for (unsigned int c : crossing) {
            const unsigned int v = perm[c];
            for (unsigned int e = xadj[v]; e < xadj[v + 1]; ++e) {
                const unsigned int p = iperm[adjncy[e]];
                if (p >= c) continue;
                const unsigned int b = block_of[p];
                maps[b].insert_max(c, std::min(last[b], c) - p);
            }
        }
        std::vector<unsigned int>().swap(crossing);

        // Symbolic fill: the extra columns of a block fill its parent (the block of its
        // first extra column) from that column's row on.
        const std::size_t nb = maps.size();
        if (!blocks.resize(nb)) throw std::bad_alloc();
        std::vector<block_segment> seg;
        for (std::size_t b = 0; b < nb; ++b) {
            maps[b].sorted(seg);
            maps[b].release();
            std::size_t e = 0;
            while (e < seg.size() && seg[e].column < last[b]) ++e;
            if (e < seg.size()) {
                const unsigned int c0 = seg[e].column;
                const unsigned int p = block_of[c0];
                for (std::size_t k = e + 1; k < seg.size(); ++k) {
                    const unsigned int c = seg[k].column;
                    maps[p].insert_max(c, std::min(last[p], c) - c0);
                }
            }
            block_profile& bp = blocks[b];
            bp.first = first[b];
            bp.last = last[b];
            bp.segments.clear_hard();
            if (!bp.segments.resize(seg.size())) throw std::bad_alloc();
            std::copy(seg.begin(), seg.end(), bp.segments.data());
        }
    } catch (const std::bad_alloc&) {
        blocks.clear_hard();
        return fem::error_memory;
    }
    return 0;
}

int convert_block_profile_to_DOFs(const orv::dense1D<block_profile, 8>& node_blocks,
                                  const orv::dense1D<unsigned int, 8>& perm, const orv::dense1D<unsigned int, 8>& sizes,
                                  orv::dense1D<block_profile, 8>& DOF_blocks) {
    DOF_blocks.clear_hard();
    const std::size_t n = perm.size();
    if (sizes.size() != n) return fem::error_data;
    try {
        std::vector<std::uint64_t> offset(n + 1, 0);
        for (std::size_t k = 0; k < n; ++k) {
            if (perm[k] >= n) return fem::error_data;
            offset[k + 1] = offset[k] + sizes[perm[k]];
        }
        if (offset[n] > 0xFFFFFFFFull) return fem::error_data;
        const std::size_t nb = node_blocks.size();
        if (!DOF_blocks.resize(nb)) throw std::bad_alloc();
        for (std::size_t b = 0; b < nb; ++b) {
            const block_profile& nbp = node_blocks[b];
            if (nbp.first > nbp.last || nbp.last > n) {
                DOF_blocks.clear_hard();
                return fem::error_data;
            }
            std::size_t count = 0;
            for (std::size_t k = 0; k < nbp.segments.size(); ++k) {
                const block_segment& s = nbp.segments[k];
                if (s.column >= n || std::min(nbp.last, s.column) < s.height) {
                    DOF_blocks.clear_hard();
                    return fem::error_data;
                }
                count += sizes[perm[s.column]];
            }
            block_profile& out = DOF_blocks[b];
            out.first = static_cast<unsigned int>(offset[nbp.first]);
            out.last = static_cast<unsigned int>(offset[nbp.last]);
            out.segments.clear_hard();
            if (!out.segments.resize(count)) throw std::bad_alloc();
            block_segment* dst = out.segments.data();
            for (std::size_t k = 0; k < nbp.segments.size(); ++k) {
                const block_segment& s = nbp.segments[k];
                const unsigned int top = std::min(nbp.last, s.column);
                const unsigned int rows = static_cast<unsigned int>(offset[top] - offset[top - s.height]);
                const unsigned int sz = sizes[perm[s.column]];
                const bool extra = top >= nbp.last;
                for (unsigned int d = 0; d < sz; ++d) {
                    // An own column also reaches the DOFs before it in its supervariable.
                    *dst++ = block_segment{static_cast<unsigned int>(offset[s.column] + d), extra ? rows : rows + d};
                }
            }
        }
    } catch (const std::bad_alloc&) {
        DOF_blocks.clear_hard();
        return fem::error_memory;
    }
    return 0;
}

int compute_block_profile_totals(const orv::dense1D<block_profile, 8>& blocks, block_profile_totals& t) {
    t = block_profile_totals();
    bool saturated = false;
    t.nbr_blocks = blocks.size();
    for (std::size_t b = 0; b < blocks.size(); ++b) {
        const block_profile& bp = blocks[b];
        const std::uint64_t columns = bp.last - bp.first;
        const std::uint64_t segments = bp.segments.size();
        const std::uint64_t extra = segments > columns ? segments - columns : 0;
        std::uint64_t values = columns;
        for (std::size_t k = 0; k < bp.segments.size(); ++k)
            values = add_saturated(values, bp.segments[k].height, saturated);
        t.dimension += columns;
        t.nbr_segments += segments;
        t.profile = add_saturated(t.profile, values, saturated);
        t.max_extra_segments = std::max(t.max_extra_segments, extra);
        std::uint64_t words = add_saturated(values, 2 * segments, saturated);
        std::uint64_t bytes = std::numeric_limits<std::uint64_t>::max();
        if (words <= bytes / 8)
            bytes = words * 8;
        else
            saturated = true;
        t.max_block_bytes = std::max(t.max_block_bytes, bytes);
    }
    return saturated ? fem::error_memory : 0;
}

void report_block_profile(const block_profile_totals& t, profile_log_hook hook, void* pass_thru) {
    if (!hook) return;
    char line[256];
    std::snprintf(line, sizeof line, "  dimension              : %10llu\n", (unsigned long long)t.dimension);
    emit(hook, pass_thru, line);
    std::snprintf(line, sizeof line, "  profile                : %10llu (%.2f MB)\n", (unsigned long long)t.profile,
                  double(t.profile) * MB_per_double);
    emit(hook, pass_thru, line);
    std::snprintf(line, sizeof line, "  nbr blocks             : %10llu\n", (unsigned long long)t.nbr_blocks);
    emit(hook, pass_thru, line);
    std::snprintf(line, sizeof line, "  max extra segments     : %10llu\n", (unsigned long long)t.max_extra_segments);
    emit(hook, pass_thru, line);
    if (t.dimension == 0) return;
    const double n = double(t.dimension);
    std::snprintf(line, sizeof line, "  symbolic fill-ins      : %8.2f %%\n",
                  2.0 * double(t.profile) / ((n + 1.0) * n) * 100.0);
    emit(hook, pass_thru, line);
}

void report_numerical_fill(const block_profile_totals& t, std::uint64_t zeros, profile_log_hook hook, void* pass_thru) {
    if (!hook || t.dimension == 0) return;
    char line[256];
    const std::uint64_t nonzeros = t.profile >= zeros ? t.profile - zeros : 0;
    const double n = double(t.dimension);
    std::snprintf(line, sizeof line, "  zeros                  : %10llu\n", (unsigned long long)zeros);
    emit(hook, pass_thru, line);
    std::snprintf(line, sizeof line, "  non zeros              : %10llu\n", (unsigned long long)nonzeros);
    emit(hook, pass_thru, line);
    std::snprintf(line, sizeof line, "  numerical fill-ins     : %8.2f %% (%.2f %%)\n",
                  2.0 * double(nonzeros) / ((n + 1.0) * n) * 100.0,
                  double(nonzeros) * 100.0 / double(std::max<std::uint64_t>(t.profile, 1)));
    emit(hook, pass_thru, line);
}

}  // namespace core
}  // namespace orv
