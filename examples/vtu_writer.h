// Writer of a VTK XML UnstructuredGrid file (.vtu, ASCII): node positions, cells of
// one VTK cell type, and any number of 3-component point arrays (displacements of
// load cases, for instance). ParaView and other VTK readers open it as is.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "orvmath1/dense2D.h"

namespace orv {
namespace examples {

// VTK cell type numbers of the shapes the examples write.
enum vtk_cell_type : unsigned { vtk_tetra = 10, vtk_hexahedron = 12, vtk_wedge = 13, vtk_quadratic_tetra = 24 };

// A named 3-component field on the points: 3 rows, one column per point.
struct vtu_point_array {
    std::string name;
    const dense2D<double>* values = nullptr;
};

// Writes pos (3 rows, one column per point) and connectivity (one column per cell, the
// cell's nodes in VTK order, 0-based point numbers) to path. Every array must have one
// column per point. Returns 0, -1 when the sizes disagree or a node number is past the
// points, -2 when the file cannot be written.
inline int write_vtu(const char* path, const dense2D<double>& pos, const dense2D<unsigned int>& connectivity,
                     vtk_cell_type cell_type, const std::vector<vtu_point_array>& arrays) {
    const std::size_t nbr_points = pos.cols(), nbr_cells = connectivity.cols(), per_cell = connectivity.rows();
    if (path == nullptr || pos.rows() != 3 || (nbr_cells > 0 && per_cell == 0)) return -1;
    for (std::size_t c = 0; c < nbr_cells; ++c)
        for (std::size_t i = 0; i < per_cell; ++i)
            if (connectivity(i, c) >= nbr_points) return -1;
    for (const vtu_point_array& a : arrays)
        if (a.values == nullptr || a.values->rows() != 3 || a.values->cols() != nbr_points) return -1;

    std::FILE* f = std::fopen(path, "w");
    if (f == nullptr) return -2;
    std::fprintf(f, "<?xml version=\"1.0\"?>\n");
    std::fprintf(f, "<VTKFile type=\"UnstructuredGrid\" version=\"0.1\" byte_order=\"LittleEndian\">\n");
    std::fprintf(f, "  <UnstructuredGrid>\n");
    std::fprintf(f, "    <Piece NumberOfPoints=\"%zu\" NumberOfCells=\"%zu\">\n", nbr_points, nbr_cells);
    // %.17g keeps every double exactly through a text round trip
    auto write_columns = [f](const dense2D<double>& m) {
        for (std::size_t p = 0; p < m.cols(); ++p)
            std::fprintf(f, "          %.17g %.17g %.17g\n", m(0, p), m(1, p), m(2, p));
    };
    if (!arrays.empty()) {
        std::fprintf(f, "      <PointData Vectors=\"%s\">\n", arrays.front().name.c_str());
        for (const vtu_point_array& a : arrays) {
            std::fprintf(f, "        <DataArray type=\"Float64\" Name=\"%s\" NumberOfComponents=\"3\" format=\"ascii\">\n",
                         a.name.c_str());
            write_columns(*a.values);
            std::fprintf(f, "        </DataArray>\n");
        }
        std::fprintf(f, "      </PointData>\n");
    }
    std::fprintf(f, "      <Points>\n");
    std::fprintf(f, "        <DataArray type=\"Float64\" NumberOfComponents=\"3\" format=\"ascii\">\n");
    write_columns(pos);
    std::fprintf(f, "        </DataArray>\n");
    std::fprintf(f, "      </Points>\n");
    std::fprintf(f, "      <Cells>\n");
    std::fprintf(f, "        <DataArray type=\"Int64\" Name=\"connectivity\" format=\"ascii\">\n");
    for (std::size_t c = 0; c < nbr_cells; ++c) {
        std::fprintf(f, "         ");
        for (std::size_t i = 0; i < per_cell; ++i) std::fprintf(f, " %u", connectivity(i, c));
        std::fprintf(f, "\n");
    }
    std::fprintf(f, "        </DataArray>\n");
    std::fprintf(f, "        <DataArray type=\"Int64\" Name=\"offsets\" format=\"ascii\">\n");
    for (std::size_t c = 0; c < nbr_cells; ++c) std::fprintf(f, "          %zu\n", (c + 1) * per_cell);
    std::fprintf(f, "        </DataArray>\n");
    std::fprintf(f, "        <DataArray type=\"UInt8\" Name=\"types\" format=\"ascii\">\n");
    for (std::size_t c = 0; c < nbr_cells; ++c) std::fprintf(f, "          %u\n", static_cast<unsigned>(cell_type));
    std::fprintf(f, "        </DataArray>\n");
    std::fprintf(f, "      </Cells>\n");
    std::fprintf(f, "    </Piece>\n");
    std::fprintf(f, "  </UnstructuredGrid>\n");
    std::fprintf(f, "</VTKFile>\n");
    const bool ok = std::ferror(f) == 0;
    return (std::fclose(f) == 0 && ok) ? 0 : -2;
}

}  // namespace examples
}  // namespace orv
