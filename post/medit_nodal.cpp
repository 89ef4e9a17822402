// Nodal text files: header "dim values nodes 2", one line of "%E " values per node.
#include <orv/fem/field_tag.h>
#include <orv/fem/medit_nodal.h>

#include <algorithm>
#include <cstdint>

namespace orv {
namespace fem {

namespace {

constexpr int header_constant = 2;

// Opens `path` for writing, runs write(file) and closes it; error_file when it cannot
// be opened. A write whose checks fail writes nothing, so the file is left empty.
template <class Write>
error_type to_path(const char* path, Write write) {
    if (!path) return error_file;
    std::FILE* file = std::fopen(path, "w");
    if (!file) return error_file;
    const error_type rc = write(file);
    return std::fclose(file) == 0 || rc ? rc : error_file;
}

}  // namespace

error_type medit_nodal(std::FILE* file, unsigned dim, const FEM_matrix& U, FEM_matrix::index_type col, field_tag tag,
                       unsigned max_values, unsigned nbr_nodes) {
    if (!file) return error_file;
    if (col >= U.cols()) return error_data;
    unsigned first = 0, end = 0;  // DOF positions of the field
    if (tag == field_displacement) first = 0, end = 3;
    if (tag == field_rotation) first = 3, end = 6;
    if (tag == field_temperature) first = 6, end = 7;
    const unsigned count = std::min(end - first, max_values);
    std::fprintf(file, "%u %u %u %d\n", dim, count, nbr_nodes, header_constant);
    for (std::uint64_t node = 0; node < nbr_nodes; ++node) {
        for (unsigned p = first; p < first + count; ++p) {
            double v = 0.0;
            U.get_val(node * fem::DOFs_per_node + p, col, v);  // a DOF without a row stays 0
            std::fprintf(file, "%E ", v);
        }
        std::fputc('\n', file);
    }
    return no_error;
}

error_type medit_nodal(const char* path, unsigned dim, const FEM_matrix& U, FEM_matrix::index_type col, field_tag tag,
                       unsigned max_values, unsigned nbr_nodes) {
    if (path && col >= U.cols()) return error_data;
    return to_path(path, [&](std::FILE* f) { return medit_nodal(f, dim, U, col, tag, max_values, nbr_nodes); });
}

error_type medit_nodal(std::FILE* file, unsigned dim, const FEM_matrix& values, unsigned values_per_node,
                       unsigned block) {
    if (!file) return error_file;
    const std::uint64_t first = std::uint64_t(block) * values_per_node;
    if (first + values_per_node > values.cols()) return error_data;
    const dense1D<unsigned int> IDs = values.get_IDs();
    const std::uint64_t rows = values.rows();
    std::fprintf(file, "%u %u %llu %d\n", dim, values_per_node, static_cast<unsigned long long>(rows), header_constant);
    dense1D<double> row;
    for (std::uint64_t r = 0; r < rows; ++r) {
        if (values.get_row(IDs[r], row, first, values_per_node)) row.clear();
        for (unsigned k = 0; k < values_per_node; ++k) std::fprintf(file, "%E ", k < row.size() ? row[k] : 0.0);
        std::fputc('\n', file);
    }
    return no_error;
}

error_type medit_nodal(const char* path, unsigned dim, const FEM_matrix& values, unsigned values_per_node,
                       unsigned block) {
    if (path && std::uint64_t(block) * values_per_node + values_per_node > values.cols()) return error_data;
    return to_path(path, [&](std::FILE* f) { return medit_nodal(f, dim, values, values_per_node, block); });
}

}  // namespace fem
}  // namespace orv
