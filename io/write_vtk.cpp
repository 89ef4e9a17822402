// VTK XML writers: UnstructuredGrid files with raw appended binary data (each array
// a 64-bit byte count followed by its values in the machine's byte order), and the
// collection files that list them. A file is written under a temporary name and
// renamed when complete, so that a failed write never leaves a half file in place of
// a good one.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include <orv/fem/io/mesh_io.h>

#include "io/mesh_builder.h"

namespace orv {
namespace fem {
namespace io {
namespace {

// Number of nodes of the VTK cell written for a shape.
unsigned vtk_nbr_nodes(element_type type) { return type == FE_pyramid14 ? 13u : nbr_nodes(type); }

std::string xml_escape(const std::string& s) {
    std::string out;
    for (char c : s) {
        switch (c) {
            case '&': out += "&amp;"; break;
            case '<': out += "&lt;"; break;
            case '>': out += "&gt;"; break;
            case '"': out += "&quot;"; break;
            default: out += c;
        }
    }
    return out;
}

std::size_t nbr_cells(const mesh& m) {
    std::size_t n = 0;
    for (const element_block& b : m.blocks) n += b.connectivity.cols();
    return n;
}

bool valid_fields(const std::vector<vtk_field>& fields, std::size_t cols) {
    for (const vtk_field& f : fields)
        if (f.name.empty() || f.values.rows() == 0 || f.values.rows() > 9 || f.values.cols() != cols) return false;
    return true;
}

bool valid(const mesh& m, const vtk_frame& frame) {
    const std::size_t nbr_points = m.positions.cols();
    if (m.positions.rows() != 3 && nbr_points != 0) return false;
    for (const element_block& b : m.blocks) {
        if (vtk_cell_type(b.type) == 0 || b.connectivity.rows() != nbr_nodes(b.type)) return false;
        for (std::size_t e = 0; e < b.connectivity.cols(); ++e)
            for (std::size_t i = 0; i < b.connectivity.rows(); ++i)
                if (b.connectivity(i, e) >= nbr_points) return false;
    }
    return valid_fields(frame.point_data, nbr_points) && valid_fields(frame.cell_data, nbr_cells(m));
}

// The appended data block and the XML that points into it.
class vtu_document {
public:
    std::string xml, data;

    template <class T>
    void array(const char* type, const std::string& name, unsigned components, const std::vector<T>& values,
               const char* indent) {
        xml += std::string(indent) + "<DataArray type=\"" + type + "\"";
        if (!name.empty()) xml += " Name=\"" + xml_escape(name) + "\"";
        xml += " NumberOfComponents=\"" + std::to_string(components) + "\" format=\"appended\" offset=\"" +
               std::to_string(data.size()) + "\"/>\n";
        const std::uint64_t bytes = values.size() * sizeof(T);
        data.append(reinterpret_cast<const char*>(&bytes), sizeof bytes);
        data.append(reinterpret_cast<const char*>(values.data()), bytes);
    }
    void field(const vtk_field& f, const char* indent) {
        std::vector<double> v(f.values.rows() * f.values.cols());
        for (std::size_t j = 0; j < f.values.cols(); ++j)
            for (std::size_t i = 0; i < f.values.rows(); ++i) v[j * f.values.rows() + i] = f.values(i, j);
        array("Float64", f.name, static_cast<unsigned>(f.values.rows()), v, indent);
    }
};

std::string vtu_text(const mesh& m, const vtk_frame& frame) {
    const std::size_t nbr_points = m.positions.cols(), cells = nbr_cells(m);
    const std::uint16_t probe = 1;
    const bool little = *reinterpret_cast<const unsigned char*>(&probe) == 1;
    vtu_document d;
    d.xml = std::string("<?xml version=\"1.0\"?>\n<VTKFile type=\"UnstructuredGrid\" version=\"1.0\" byte_order=\"") +
            (little ? "LittleEndian" : "BigEndian") + "\" header_type=\"UInt64\">\n  <UnstructuredGrid>\n" +
            "    <Piece NumberOfPoints=\"" + std::to_string(nbr_points) + "\" NumberOfCells=\"" +
            std::to_string(cells) + "\">\n";
    d.xml += "      <PointData>\n";
    for (const vtk_field& f : frame.point_data) d.field(f, "        ");
    d.xml += "      </PointData>\n      <CellData>\n";
    for (const vtk_field& f : frame.cell_data) d.field(f, "        ");
    d.xml += "      </CellData>\n      <Points>\n";
    std::vector<double> xyz(3 * nbr_points);
    for (std::size_t j = 0; j < nbr_points; ++j)
        for (unsigned i = 0; i < 3; ++i) xyz[3 * j + i] = m.positions(i, j);
    d.array("Float64", "Points", 3, xyz, "        ");
    d.xml += "      </Points>\n      <Cells>\n";
    std::vector<std::int64_t> connectivity, offsets;
    std::vector<std::uint8_t> types;
    for (const element_block& b : m.blocks) {
        const unsigned char* order = nullptr;
        const unsigned type = vtk_cell_type(b.type, &order), per = vtk_nbr_nodes(b.type);
        for (std::size_t e = 0; e < b.connectivity.cols(); ++e) {
            for (unsigned k = 0; k < per; ++k) connectivity.push_back(b.connectivity(order[k], e));
            offsets.push_back(static_cast<std::int64_t>(connectivity.size()));
            types.push_back(static_cast<std::uint8_t>(type));
        }
    }
    d.array("Int64", "connectivity", 1, connectivity, "        ");
    d.array("Int64", "offsets", 1, offsets, "        ");
    d.array("UInt8", "types", 1, types, "        ");
    d.xml += "      </Cells>\n    </Piece>\n  </UnstructuredGrid>\n  <AppendedData encoding=\"raw\">\n   _";
    d.xml += d.data;
    d.xml += "\n  </AppendedData>\n</VTKFile>\n";
    return d.xml;
}

// Writes text to path through a temporary file in the same folder.
error_type write_file(const std::string& path, const std::string& text) {
    const std::string temporary = path + ".part";
    std::FILE* f = std::fopen(temporary.c_str(), "wb");
    if (f == nullptr) return error_file;
    const bool written = std::fwrite(text.data(), 1, text.size(), f) == text.size();
    const bool closed = std::fclose(f) == 0;
    if (!written || !closed || std::rename(temporary.c_str(), path.c_str()) != 0) {
        std::remove(temporary.c_str());
        return error_file;
    }
    return no_error;
}

}  // namespace

error_type write_vtu(const char* path, const mesh& m, const vtk_frame& frame) noexcept {
    return detail::guarded([&]() -> error_type {
        if (path == nullptr) return error_file;
        if (!valid(m, frame)) return error_data;
        return write_file(path, vtu_text(m, frame));
    });
}

error_type write_vtu_series(const char* base, const mesh& m, const std::vector<vtk_frame>& frames) noexcept {
    return detail::guarded([&]() -> error_type {
        if (base == nullptr || *base == '\0') return error_file;
        for (const vtk_frame& frame : frames)
            if (!valid(m, frame)) return error_data;
        const std::string stem(base);
        const std::size_t slash = stem.find_last_of('/');
        const std::string local = slash == std::string::npos ? stem : stem.substr(slash + 1);
        std::string pvd = "<?xml version=\"1.0\"?>\n<VTKFile type=\"Collection\" version=\"0.1\">\n  <Collection>\n";
        for (std::size_t k = 0; k < frames.size(); ++k) {
            char suffix[32];
            std::snprintf(suffix, sizeof suffix, "_%04zu.vtu", k);
            const error_type code = write_file(stem + suffix, vtu_text(m, frames[k]));
            if (code != no_error) return code;
            char value[40];
            std::snprintf(value, sizeof value, "%.17g", frames[k].value);
            pvd += std::string("    <DataSet timestep=\"") + value + "\" group=\"\" part=\"0\" file=\"" +
                   xml_escape(local + suffix) + "\"/>\n";
        }
        pvd += "  </Collection>\n</VTKFile>\n";
        return write_file(stem + ".pvd", pvd);
    });
}

}  // namespace io
}  // namespace fem
}  // namespace orv
