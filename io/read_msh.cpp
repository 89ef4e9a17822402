// Reader of Gmsh MSH 4.1 files, ASCII and binary. The file is read whole; a cursor
// walks it, reading numbers as text or as raw bytes by the file's mode, so that the
// section logic is written once for both.
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <map>
#include <new>
#include <set>
#include <utility>

#include "io/mesh_builder.h"
#include "io/node_order.h"

namespace orv {
namespace fem {
namespace io {
namespace detail {
namespace {

class msh_cursor {
public:
    // The cursor keeps the file's mode in the file's record, so that a message says
    // lines in text and bytes in binary content.
    msh_cursor(source_file& file, unsigned index) : binary(file.binary), text_(file.text), file_(index) {}

    bool& binary;
    bool swap = false;
    unsigned size_bytes = 8;

    // The position of the next thing to read (in text, past the blanks before it).
    source_pos here() {
        if (!binary) skip_space();
        return source_pos{file_, pos_};
    }
    bool at_end() {
        skip_space();
        return pos_ >= text_.size();
    }
    [[noreturn]] void fail(const std::string& what) { mesh_builder::fail(error_data, here(), what); }

    // A word of text (section headers and the words of ASCII content).
    std::string word(const char* what) {
        skip_space();
        const std::size_t start = pos_;
        while (pos_ < text_.size() && !std::isspace(static_cast<unsigned char>(text_[pos_]))) ++pos_;
        if (start == pos_) fail(std::string("truncated file, expected ") + what);
        return text_.substr(start, pos_ - start);
    }
    void expect(const char* keyword) {
        const std::size_t start = pos_;
        if (word(keyword) != keyword) {
            pos_ = start;
            skip_space();
            fail(std::string("expected ") + keyword);
        }
    }
    // The rest of the current line, for a physical name in quotes.
    std::string rest_of_line() {
        const std::size_t start = pos_;
        while (pos_ < text_.size() && text_[pos_] != '\n') ++pos_;
        return text_.substr(start, pos_ - start);
    }
    // Steps over the newline that ends a binary header before its raw data.
    void end_text_line() {
        while (pos_ < text_.size() && text_[pos_] != '\n') ++pos_;
        if (pos_ >= text_.size()) fail("truncated file");
        ++pos_;
    }
    // Moves past "$End<name>" for a section that is not read.
    void skip_section(const std::string& name) {
        const std::string end = "$End" + name;
        const std::size_t found = text_.find(end, pos_);
        if (found == std::string::npos) fail("missing " + end);
        pos_ = found + end.size();
    }

    // Integers and sizes: text words, or raw 4-byte ints and size_t of the file's
    // data size.
    long long integer(const char* what) {
        if (binary) return static_cast<int>(raw<std::uint32_t>(what));
        return parse_integer(what);
    }
    std::uint64_t size(const char* what) {
        if (binary) return size_bytes == 8 ? raw<std::uint64_t>(what) : raw<std::uint32_t>(what);
        const std::size_t start = pos_;
        const long long v = parse_integer(what);
        if (v < 0) {
            pos_ = start;
            skip_space();
            fail(std::string("negative ") + what);
        }
        return static_cast<std::uint64_t>(v);
    }
    double real(const char* what) {
        if (binary) {
            const std::uint64_t bits = raw<std::uint64_t>(what);
            double v;
            std::memcpy(&v, &bits, sizeof v);
            return v;
        }
        const std::size_t start = pos_;
        const std::string w = word(what);
        char* end = nullptr;
        const double v = std::strtod(w.c_str(), &end);
        if (end != w.c_str() + w.size()) {
            pos_ = start;
            skip_space();
            fail(std::string("bad number for ") + what);
        }
        return v;
    }
    // Bytes left; a count larger than what they can hold is a truncated file.
    std::uint64_t left() const { return text_.size() - pos_; }

private:
    const std::string& text_;
    unsigned file_;
    std::size_t pos_ = 0;

    void skip_space() {
        while (pos_ < text_.size() && std::isspace(static_cast<unsigned char>(text_[pos_]))) ++pos_;
    }
    long long parse_integer(const char* what) {
        const std::size_t start = pos_;
        const std::string w = word(what);
        char* end = nullptr;
        errno = 0;
        const long long v = std::strtoll(w.c_str(), &end, 10);
        if (end != w.c_str() + w.size() || errno != 0) {
            pos_ = start;
            skip_space();
            fail(std::string("bad integer for ") + what);
        }
        return v;
    }
    template <class U>
    U raw(const char* what) {
        if (text_.size() - pos_ < sizeof(U)) fail(std::string("truncated file, expected ") + what);
        U v;
        std::memcpy(&v, text_.data() + pos_, sizeof v);
        if (swap) {
            U r = 0;
            for (unsigned i = 0; i < sizeof(U); ++i) r = static_cast<U>((r << 8) | ((v >> (8 * i)) & 0xFF));
            v = r;
        }
        pos_ += sizeof(U);
        return v;
    }
};

// What the reader keeps between sections.
struct msh_state {
    std::map<std::pair<int, int>, std::string> physical_names;      // (dim, tag)
    std::map<std::pair<int, int>, std::vector<int>> entity_groups;  // (dim, entity) -> physical tags
    bool nodes = false, elements = false;
};

void read_format(msh_cursor& c) {
    c.expect("$MeshFormat");
    const source_pos at = c.here();
    const std::string version = c.word("version");
    if (version != "4.1") mesh_builder::fail(error_data, at, "MSH version " + version + " is not read, only 4.1");
    const long long type = c.integer("file type");
    const long long data_size = c.integer("data size");
    if (type != 0 && type != 1) c.fail("file type must be 0 or 1");
    if (data_size != 4 && data_size != 8) c.fail("data size must be 4 or 8");
    c.size_bytes = static_cast<unsigned>(data_size);
    if (type == 1) {
        c.end_text_line();
        c.binary = true;
        const long long one = c.integer("byte order mark");
        if (one != 1) {
            if (one != 0x01000000) c.fail("bad byte order mark");
            c.swap = true;
        }
        c.binary = false;
    }
    c.expect("$EndMeshFormat");
    c.binary = type == 1;
}

// Counts read from the file are checked against the bytes left before anything is
// reserved, so that a corrupt count cannot ask for memory the file cannot fill.
void check_count(msh_cursor& c, std::uint64_t count, const char* what) {
    if (count > c.left()) c.fail(std::string("truncated file, too few bytes for ") + what);
}

void read_physical_names(msh_cursor& c, msh_state& s) {
    const bool binary = c.binary;
    c.binary = false;  // always text
    const std::uint64_t n = c.size("number of physical names");
    check_count(c, n, "physical names");
    for (std::uint64_t k = 0; k < n; ++k) {
        const int dim = static_cast<int>(c.integer("dimension"));
        const int tag = static_cast<int>(c.integer("physical tag"));
        const source_pos at = c.here();
        std::string name = c.rest_of_line();
        const std::size_t open = name.find('"'), close = name.rfind('"');
        if (open == std::string::npos || close == open)
            mesh_builder::fail(error_data, at, "physical name not in quotes");
        s.physical_names[{dim, tag}] = name.substr(open + 1, close - open - 1);
    }
    c.expect("$EndPhysicalNames");
    c.binary = binary;
}

void read_entities(msh_cursor& c, msh_state& s) {
    if (c.binary) c.end_text_line();
    std::uint64_t counts[4];
    for (std::uint64_t& n : counts) n = c.size("number of entities");
    for (int dim = 0; dim < 4; ++dim) {
        check_count(c, counts[dim], "entities");
        for (std::uint64_t k = 0; k < counts[dim]; ++k) {
            const int tag = static_cast<int>(c.integer("entity tag"));
            for (int i = 0; i < (dim == 0 ? 3 : 6); ++i) c.real("entity box");
            const std::uint64_t nbr_groups = c.size("number of physical tags");
            check_count(c, nbr_groups, "physical tags");
            std::vector<int>& groups = s.entity_groups[{dim, tag}];
            for (std::uint64_t g = 0; g < nbr_groups; ++g)
                groups.push_back(static_cast<int>(c.integer("physical tag")));
            if (dim > 0) {
                const std::uint64_t nbr_bounds = c.size("number of bounding entities");
                check_count(c, nbr_bounds, "bounding entities");
                for (std::uint64_t b = 0; b < nbr_bounds; ++b) c.integer("bounding entity");
            }
        }
    }
    c.expect("$EndEntities");
}

// The numbers that open $Nodes and $Elements: blocks, items, smallest and largest tag.
struct section_counts {
    std::uint64_t nbr_blocks, nbr_items;
};

section_counts read_counts(msh_cursor& c, const char* blocks, const char* items) {
    if (c.binary) c.end_text_line();
    section_counts n;
    n.nbr_blocks = c.size(blocks);
    n.nbr_items = c.size(items);
    c.size("minimum tag");
    c.size("maximum tag");
    check_count(c, n.nbr_blocks, blocks);
    return n;
}

void check_total(msh_cursor& c, std::uint64_t read, std::uint64_t header, const char* items) {
    if (read != header)
        c.fail("blocks hold " + std::to_string(read) + " " + items + ", header says " + std::to_string(header));
}

void read_nodes(msh_cursor& c, mesh_builder& builder) {
    const section_counts counts = read_counts(c, "number of node blocks", "number of nodes");
    const std::uint64_t nbr_blocks = counts.nbr_blocks, nbr_total = counts.nbr_items;
    std::uint64_t nbr_read = 0;
    std::vector<std::uint64_t> tags;
    std::vector<source_pos> where;
    for (std::uint64_t b = 0; b < nbr_blocks; ++b) {
        const long long dim = c.integer("entity dimension");
        c.integer("entity tag");
        const long long parametric = c.integer("parametric flag");
        const std::uint64_t n = c.size("number of nodes in block");
        if (dim < 0 || dim > 3 || (parametric != 0 && parametric != 1)) c.fail("bad node block header");
        check_count(c, n, "nodes");
        tags.clear();
        where.clear();
        for (std::uint64_t k = 0; k < n; ++k) {
            where.push_back(c.here());
            tags.push_back(c.size("node tag"));
        }
        const int extra = parametric ? static_cast<int>(dim) : 0;
        for (std::uint64_t k = 0; k < n; ++k) {
            const source_pos at = c.here();
            const double x = c.real("x"), y = c.real("y"), z = c.real("z");
            for (int i = 0; i < extra; ++i) c.real("parametric coordinate");
            builder.add_node(tags[k], x, y, z, at);
        }
        nbr_read += n;
    }
    check_total(c, nbr_read, nbr_total, "nodes");
    c.expect("$EndNodes");
}

void read_elements(msh_cursor& c, const msh_state& s, mesh_builder& builder) {
    const section_counts counts = read_counts(c, "number of element blocks", "number of elements");
    const std::uint64_t nbr_blocks = counts.nbr_blocks, nbr_total = counts.nbr_items;
    std::uint64_t nbr_read = 0;
    std::uint64_t file_nodes[27], library_nodes[27];
    for (std::uint64_t b = 0; b < nbr_blocks; ++b) {
        const int dim = static_cast<int>(c.integer("entity dimension"));
        const int entity = static_cast<int>(c.integer("entity tag"));
        const source_pos type_at = c.here();
        const int type = static_cast<int>(c.integer("element type"));
        const std::uint64_t n = c.size("number of elements in block");
        const shape_order shape = gmsh_shape(type);
        if (shape.type == FE_none)
            mesh_builder::fail(error_element_type, type_at,
                               "element type " + std::to_string(type) + " has no shape in the library");
        check_count(c, n, "elements");
        const std::string label = "gmsh " + std::to_string(type);
        auto groups = s.entity_groups.find({dim, entity});
        for (std::uint64_t k = 0; k < n; ++k) {
            const source_pos at = c.here();
            const std::uint64_t tag = c.size("element tag");
            for (unsigned i = 0; i < shape.nbr_file_nodes; ++i) file_nodes[i] = c.size("element node");
            for (unsigned i = 0; i < shape.nbr_file_nodes; ++i) library_nodes[i] = file_nodes[shape.order[i]];
            builder.add_element(shape.type, label, tag, library_nodes, at);
            if (groups == s.entity_groups.end()) continue;
            for (int g : groups->second) {
                auto named = s.physical_names.find({dim, g});
                const std::string name = named != s.physical_names.end() ? named->second : std::to_string(g);
                builder.add_to_element_set(name, dim, tag, at);
                for (unsigned i = 0; i < shape.nbr_file_nodes; ++i)
                    builder.add_to_node_set(name, dim, file_nodes[i], at);
            }
        }
        nbr_read += n;
    }
    check_total(c, nbr_read, nbr_total, "elements");
    c.expect("$EndElements");
}

void read_sections(msh_cursor& c, mesh_builder& builder) {
    msh_state s;
    read_format(c);
    while (!c.at_end()) {
        const source_pos at = c.here();
        const std::string header = c.word("section");
        if (header.size() < 2 || header[0] != '$')
            mesh_builder::fail(error_data, at, "expected a section, found " + header);
        const std::string name = header.substr(1);
        if (name == "PhysicalNames") {
            read_physical_names(c, s);
        } else if (name == "Entities") {
            read_entities(c, s);
        } else if (name == "PartitionedEntities") {
            mesh_builder::fail(error_data, at, "partitioned meshes are not read");
        } else if (name == "Nodes") {
            if (s.nodes) mesh_builder::fail(error_data, at, "second $Nodes section");
            read_nodes(c, builder);
            s.nodes = true;
        } else if (name == "Elements") {
            if (s.elements) mesh_builder::fail(error_data, at, "second $Elements section");
            read_elements(c, s, builder);
            s.elements = true;
        } else {
            c.skip_section(name);
        }
    }
    if (!s.nodes || !s.elements)
        c.fail(s.nodes ? "truncated file, no $Elements section" : "truncated file, no $Nodes section");
}

}  // namespace
}  // namespace detail

error_type read_msh(const char* path, mesh& out, read_error* error) noexcept {
    using namespace detail;
    return run_reader(out, error, [path](mesh_builder& builder) {
        if (path == nullptr) mesh_builder::fail(error_file, source_pos{~0u, 0}, "no file name");
        builder.files.push_back(source_file{path, {}, false});
        if (!load_file(path, builder.files[0].text))
            mesh_builder::fail(error_file, source_pos{~0u, 0}, std::string(path) + " cannot be read");
        msh_cursor c(builder.files[0], 0);
        read_sections(c, builder);
    });
}

}  // namespace io
}  // namespace fem
}  // namespace orv
