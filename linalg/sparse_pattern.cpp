#include "linalg/sparse_pattern.h"

#include <algorithm>
#include <new>
#include <vector>

namespace orv {
namespace core {

namespace {

// Sorted, distinct columns of each row (column >= row).
std::vector<std::vector<unsigned int>> pattern_rows(const dense1D<unsigned int, 8>& ptr,
                                                    const dense1D<unsigned int, 8>& ids,
                                                    const vector_fast<unsigned int>& index) {
    const std::size_t n = index.size();
    std::vector<std::vector<unsigned int>> rows(n);
    for (std::size_t r = 0; r < n; ++r) rows[r].push_back(static_cast<unsigned int>(r));
    std::vector<unsigned int> positions;
    const std::size_t groups = ptr.size() ? ptr.size() - 1 : 0;
    for (std::size_t g = 0; g < groups; ++g) {
        positions.clear();
        for (std::size_t k = ptr[g]; k < ptr[g + 1] && k < ids.size(); ++k) {
            const std::uint32_t p = index.find(ids[k]);
            if (p != vector_fast<unsigned int>::npos) positions.push_back(p);
        }
        for (const unsigned int a : positions)
            for (const unsigned int b : positions)
                if (a < b) rows[a].push_back(b);
    }
    for (auto& row : rows) {
        std::sort(row.begin(), row.end());
        row.erase(std::unique(row.begin(), row.end()), row.end());
    }
    return rows;
}

}  // namespace

std::uint64_t count_sparse_pattern(const dense1D<unsigned int, 8>& ptr, const dense1D<unsigned int, 8>& ids,
                                   const vector_fast<unsigned int>& index) {
    std::uint64_t total = 0;
    for (const auto& row : pattern_rows(ptr, ids, index)) total += row.size();
    return total;
}

void build_sparse_pattern(const dense1D<unsigned int, 8>& ptr, const dense1D<unsigned int, 8>& ids,
                          const vector_fast<unsigned int>& index, symmetric_sparse<double>& out) {
    const std::vector<std::vector<unsigned int>> rows = pattern_rows(ptr, ids, index);
    std::size_t total = 0;
    for (const auto& row : rows) total += row.size();
    dense1D<unsigned int, 8> pointers, columns;
    if (!pointers.reserve(rows.size() + 1) || !columns.reserve(total)) throw std::bad_alloc();
    pointers.push_back(0u);
    for (const auto& row : rows) {
        for (const unsigned int c : row) columns.push_back(c);
        pointers.push_back(static_cast<unsigned int>(columns.size()));
    }
    if (!out.init(pointers, columns, 0.0)) throw std::bad_alloc();
}

}  // namespace core
}  // namespace orv
