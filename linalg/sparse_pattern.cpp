#include "linalg/sparse_pattern.h"

#include <algorithm>
#include <new>
#include <vector>

namespace orv {
namespace core {

namespace {

// The pattern row by row without a list per row: the groups of each position (a
// compressed list), then for row r the columns > r of its groups, marked once by a
// stamp. visit(r, columns) gets the distinct columns of row r, unsorted, without r.
class pattern_walker {
public:
    pattern_walker(const dense1D<unsigned int, 8>& ptr, const dense1D<unsigned int, 8>& ids,
                   const vector_fast<unsigned int>& index)
        : n_(index.size()) {
        const std::size_t groups = ptr.size() ? ptr.size() - 1 : 0;
        pos_.assign(ids.size(), npos);
        start_.assign(n_ + 1, 0);
        for (std::size_t g = 0; g < groups; ++g)
            for (std::size_t k = ptr[g]; k < ptr[g + 1] && k < ids.size(); ++k) {
                pos_[k] = index.find(ids[k]);
                if (pos_[k] != npos) ++start_[pos_[k] + 1];
            }
        for (std::size_t r = 0; r < n_; ++r) start_[r + 1] += start_[r];
        group_of_.assign(start_[n_], 0);
        std::vector<std::size_t> fill(start_.begin(), start_.end() - 1);
        for (std::size_t g = 0; g < groups; ++g)
            for (std::size_t k = ptr[g]; k < ptr[g + 1] && k < ids.size(); ++k)
                if (pos_[k] != npos) group_of_[fill[pos_[k]]++] = static_cast<unsigned int>(g);
    }

    template <class Visit>
    void walk(const dense1D<unsigned int, 8>& ptr, const dense1D<unsigned int, 8>& ids, Visit&& visit) {
        std::vector<std::size_t> stamp(n_, ~std::size_t(0));
        std::vector<unsigned int> columns;
        for (std::size_t r = 0; r < n_; ++r) {
            columns.clear();
            for (std::size_t q = start_[r]; q < start_[r + 1]; ++q) {
                const unsigned int g = group_of_[q];
                for (std::size_t k = ptr[g]; k < ptr[g + 1] && k < ids.size(); ++k) {
                    const std::uint32_t c = pos_[k];
                    if (c == npos || c <= r || stamp[c] == r) continue;
                    stamp[c] = r;
                    columns.push_back(c);
                }
            }
            visit(r, columns);
        }
    }

private:
    static constexpr std::uint32_t npos = vector_fast<unsigned int>::npos;
    std::size_t n_;
    std::vector<std::uint32_t> pos_;  // position of each listed ID, npos if absent
    std::vector<std::size_t> start_;  // groups of position r: group_of_[start_[r] ..]
    std::vector<unsigned int> group_of_;
};

}  // namespace

std::uint64_t count_sparse_pattern(const dense1D<unsigned int, 8>& ptr, const dense1D<unsigned int, 8>& ids,
                                   const vector_fast<unsigned int>& index) {
    std::uint64_t total = 0;
    pattern_walker(ptr, ids, index).walk(ptr, ids, [&](std::size_t, const std::vector<unsigned int>& columns) {
        total += 1 + columns.size();
    });
    return total;
}

void build_sparse_pattern(const dense1D<unsigned int, 8>& ptr, const dense1D<unsigned int, 8>& ids,
                          const vector_fast<unsigned int>& index, symmetric_sparse<double>& out) {
    pattern_walker walker(ptr, ids, index);
    std::uint64_t total = 0;
    walker.walk(ptr, ids, [&](std::size_t, const std::vector<unsigned int>& cols) { total += 1 + cols.size(); });
    dense1D<unsigned int, 8> pointers, columns;
    if (!pointers.reserve(index.size() + 1) || !columns.reserve(std::size_t(total))) throw std::bad_alloc();
    pointers.push_back(0u);
    std::vector<unsigned int> row;
    walker.walk(ptr, ids, [&](std::size_t r, const std::vector<unsigned int>& cols) {
        row.assign(cols.begin(), cols.end());
        row.push_back(static_cast<unsigned int>(r));
        std::sort(row.begin(), row.end());
        for (const unsigned int c : row)
            if (!columns.push_back(c)) throw std::bad_alloc();
        pointers.push_back(static_cast<unsigned int>(columns.size()));
    });
    if (!out.init(pointers, columns, 0.0)) throw std::bad_alloc();
}

}  // namespace core
}  // namespace orv
