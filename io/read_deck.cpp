// Reader of the mesh part of input decks: keyword lines start with '*', comment lines
// with '**', data lines are comma-separated. Keywords that do not describe the mesh
// are skipped with their data lines.
#include <cerrno>
#include <cstdlib>
#include <new>

#include "io/mesh_builder.h"
#include "io/node_order.h"

namespace orv {
namespace fem {
namespace io {
namespace detail {
namespace {

const unsigned max_include_depth = 16;

std::string trim(const std::string& s) {
    const std::size_t a = s.find_first_not_of(" \t\r");
    if (a == std::string::npos) return std::string();
    return s.substr(a, s.find_last_not_of(" \t\r") - a + 1);
}

// Comma-separated fields; a trailing comma gives no empty last field.
std::vector<std::string> fields(const std::string& line) {
    std::vector<std::string> out;
    std::size_t start = 0;
    while (true) {
        const std::size_t comma = line.find(',', start);
        out.push_back(trim(line.substr(start, comma == std::string::npos ? std::string::npos : comma - start)));
        if (comma == std::string::npos) break;
        start = comma + 1;
    }
    if (out.size() > 1 && out.back().empty()) out.pop_back();
    return out;
}

bool parse_id(const std::string& s, std::uint64_t& v) {
    if (s.empty() || s[0] == '-' || s[0] == '+') return false;
    char* end = nullptr;
    errno = 0;
    const unsigned long long x = std::strtoull(s.c_str(), &end, 10);
    if (end != s.c_str() + s.size() || errno != 0) return false;
    v = x;
    return true;
}

struct keyword_line {
    std::string name;                           // upper case, without '*'
    std::map<std::string, std::string> params;  // upper-case keys, values as written
};

class deck_reader {
public:
    explicit deck_reader(mesh_builder& b) : b_(b) {}

    void read_file(const std::string& path, unsigned depth, source_pos from);

private:
    mesh_builder& b_;
    // The keyword in force and what it collects.
    enum mode_type { mode_skip, mode_node, mode_element, mode_nset, mode_elset } mode_ = mode_skip;
    std::string set_name_, type_name_;
    bool generate_ = false;
    shape_order shape_;
    std::vector<std::string> pending_;  // fields of an element that continues
    source_pos pending_at_;
    std::uint64_t nbr_generated_ = 0;

    void keyword(const keyword_line& k, source_pos at, unsigned file, unsigned depth);
    void data(const std::vector<std::string>& f, source_pos at);
    void node_line(const std::vector<std::string>& f, source_pos at);
    void element_fields(const std::vector<std::string>& f, source_pos at);
    void set_line(const std::vector<std::string>& f, source_pos at, bool nodes);
    void close_element() {
        if (!pending_.empty())
            mesh_builder::fail(error_data, pending_at_, "element " + pending_[0] + " has too few nodes");
    }
};

keyword_line parse_keyword(const std::string& line) {
    keyword_line k;
    std::vector<std::string> f = fields(line.substr(1));
    k.name = upper(f[0]);
    for (std::size_t i = 1; i < f.size(); ++i) {
        const std::size_t eq = f[i].find('=');
        if (eq == std::string::npos)
            k.params[upper(f[i])] = std::string();
        else
            k.params[upper(trim(f[i].substr(0, eq)))] = trim(f[i].substr(eq + 1));
    }
    return k;
}

void deck_reader::read_file(const std::string& path, unsigned depth, source_pos from) {
    if (depth > max_include_depth) mesh_builder::fail(error_data, from, "*INCLUDE nested too deeply");
    const unsigned file = static_cast<unsigned>(b_.files.size());
    b_.files.push_back(source_file{path, {}, false});
    std::string text;
    if (!load_file(path, text)) mesh_builder::fail(error_file, from, path + " cannot be read");
    b_.files[file].text = std::move(text);

    std::size_t pos = 0;
    while (pos < b_.files[file].text.size()) {
        const std::string& t = b_.files[file].text;  // a nested include may move the vector, not the text
        std::size_t end = t.find('\n', pos);
        if (end == std::string::npos) end = t.size();
        const std::string line = trim(t.substr(pos, end - pos));
        const source_pos at{file, pos};
        pos = end + 1;
        if (line.empty() || line.compare(0, 2, "**") == 0) continue;
        if (line[0] == '*') {
            close_element();
            keyword(parse_keyword(line), at, file, depth);
        } else {
            data(fields(line), at);
        }
    }
    close_element();
    mode_ = mode_skip;
}

void deck_reader::keyword(const keyword_line& k, source_pos at, unsigned file, unsigned depth) {
    auto param = [&k](const char* key) {
        auto it = k.params.find(key);
        return it == k.params.end() ? std::string() : it->second;
    };
    mode_ = mode_skip;
    set_name_ = std::string();
    generate_ = k.params.count("GENERATE") != 0;
    if (k.name == "NODE") {
        mode_ = mode_node;
        set_name_ = upper(param("NSET"));
    } else if (k.name == "ELEMENT") {
        type_name_ = upper(param("TYPE"));
        if (type_name_.empty()) mesh_builder::fail(error_data, at, "*ELEMENT without TYPE");
        shape_ = deck_shape(type_name_);
        if (shape_.type == FE_none)
            mesh_builder::fail(error_element_type, at, "element type " + type_name_ + " has no shape in the library");
        mode_ = mode_element;
        set_name_ = upper(param("ELSET"));
    } else if (k.name == "NSET" || k.name == "ELSET") {
        set_name_ = upper(param(k.name == "NSET" ? "NSET" : "ELSET"));
        if (set_name_.empty()) mesh_builder::fail(error_data, at, "*" + k.name + " without a set name");
        mode_ = k.name == "NSET" ? mode_nset : mode_elset;
    } else if (k.name == "INCLUDE") {
        std::string input = param("INPUT");
        if (input.size() >= 2 && input.front() == '"' && input.back() == '"') input = input.substr(1, input.size() - 2);
        if (input.empty()) mesh_builder::fail(error_data, at, "*INCLUDE without INPUT");
        const std::string& here = b_.files[file].path;
        const std::size_t slash = here.find_last_of('/');
        if (input[0] != '/' && slash != std::string::npos) input = here.substr(0, slash + 1) + input;
        read_file(input, depth + 1, at);
    }
}

void deck_reader::data(const std::vector<std::string>& f, source_pos at) {
    switch (mode_) {
        case mode_node: node_line(f, at); break;
        case mode_element: element_fields(f, at); break;
        case mode_nset: set_line(f, at, true); break;
        case mode_elset: set_line(f, at, false); break;
        case mode_skip: break;
    }
}

void deck_reader::node_line(const std::vector<std::string>& f, source_pos at) {
    std::uint64_t id;
    if (!parse_id(f[0], id)) mesh_builder::fail(error_data, at, "bad node number " + f[0]);
    if (f.size() > 4) mesh_builder::fail(error_data, at, "more than 3 coordinates");
    double x[3] = {0.0, 0.0, 0.0};
    for (std::size_t i = 1; i < f.size(); ++i) {
        char* end = nullptr;
        x[i - 1] = std::strtod(f[i].c_str(), &end);
        if (f[i].empty() || end != f[i].c_str() + f[i].size())
            mesh_builder::fail(error_data, at, "bad coordinate " + f[i]);
    }
    b_.add_node(id, x[0], x[1], x[2], at);
    if (!set_name_.empty()) b_.add_to_node_set(set_name_, -1, id, at);
}

// Fields of elements; an element whose nodes do not fit on one line continues on the
// next ones.
void deck_reader::element_fields(const std::vector<std::string>& f, source_pos at) {
    if (pending_.empty()) pending_at_ = at;
    pending_.insert(pending_.end(), f.begin(), f.end());
    if (pending_.size() < shape_.nbr_file_nodes + 1) return;
    if (pending_.size() > shape_.nbr_file_nodes + 1)
        mesh_builder::fail(error_data, at, "element " + pending_[0] + " has too many nodes for " + type_name_);
    std::uint64_t id, file_nodes[27], library_nodes[27];
    if (!parse_id(pending_[0], id)) mesh_builder::fail(error_data, pending_at_, "bad element number " + pending_[0]);
    for (unsigned i = 0; i < shape_.nbr_file_nodes; ++i)
        if (!parse_id(pending_[i + 1], file_nodes[i]))
            mesh_builder::fail(error_data, at, "bad node number " + pending_[i + 1]);
    for (unsigned i = 0; i < shape_.nbr_file_nodes; ++i) library_nodes[i] = file_nodes[shape_.order[i]];
    b_.add_element(shape_.type, type_name_, id, library_nodes, pending_at_);
    if (!set_name_.empty()) b_.add_to_element_set(set_name_, -1, id, pending_at_);
    pending_.clear();
}

void deck_reader::set_line(const std::vector<std::string>& f, source_pos at, bool nodes) {
    auto add = [&](std::uint64_t id) {
        if (nodes)
            b_.add_to_node_set(set_name_, -1, id, at);
        else
            b_.add_to_element_set(set_name_, -1, id, at);
    };
    if (generate_) {
        std::uint64_t v[3] = {0, 0, 1};
        if (f.size() < 2 || f.size() > 3) mesh_builder::fail(error_data, at, "GENERATE needs first, last[, increment]");
        for (std::size_t i = 0; i < f.size(); ++i)
            if (!parse_id(f[i], v[i])) mesh_builder::fail(error_data, at, "bad number " + f[i]);
        if (v[2] == 0 || v[1] < v[0]) mesh_builder::fail(error_data, at, "empty GENERATE range");
        // a range cannot name more members than the file can define
        nbr_generated_ += (v[1] - v[0]) / v[2] + 1;
        if (nbr_generated_ > (std::uint64_t(1) << 26)) mesh_builder::fail(error_data, at, "GENERATE range too long");
        for (std::uint64_t id = v[0]; id <= v[1]; id += v[2]) {
            add(id);
            if (v[1] - id < v[2]) break;
        }
        return;
    }
    for (const std::string& item : f) {
        if (item.empty()) continue;
        std::uint64_t id;
        if (parse_id(item, id)) {
            add(id);
            continue;
        }
        const std::string name = upper(item);
        if (nodes ? !b_.has_node_set(name, -1) : !b_.has_element_set(name, -1))
            mesh_builder::fail(error_data, at, "unknown set " + item);
        if (nodes)
            b_.copy_node_set(name, set_name_, -1, at);
        else
            b_.copy_element_set(name, set_name_, -1, at);
    }
}

}  // namespace
}  // namespace detail

error_type read_deck(const char* path, mesh& out, read_error* error) noexcept {
    using namespace detail;
    return run_reader(out, error, [path](mesh_builder& builder) {
        if (path == nullptr) mesh_builder::fail(error_file, source_pos{~0u, 0}, "no file name");
        deck_reader(builder).read_file(path, 0, source_pos{~0u, 0});
    });
}

}  // namespace io
}  // namespace fem
}  // namespace orv
