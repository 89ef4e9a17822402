// Accumulation of nodes, elements and sets by the file's numbers, and their
// resolution into a mesh record.
#include "io/mesh_builder.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <sstream>
#include <unordered_set>

namespace orv {
namespace fem {
namespace io {
namespace detail {

std::size_t source_file::line_of(std::uint64_t offset) const {
    const std::size_t end = static_cast<std::size_t>(std::min<std::uint64_t>(offset, text.size()));
    return 1 + static_cast<std::size_t>(std::count(text.begin(), text.begin() + end, '\n'));
}

bool load_file(const std::string& path, std::string& text) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    std::ostringstream buffer;
    buffer << in.rdbuf();
    if (in.bad()) return false;
    text = buffer.str();
    return true;
}

std::string upper(std::string s) {
    for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return s;
}

void mesh_builder::add_node(std::uint64_t id, double x, double y, double z, source_pos where) {
    if (!std::isfinite(x) || !std::isfinite(y) || !std::isfinite(z))
        fail(error_data, where, "node " + std::to_string(id) + " has a coordinate that is not finite");
    const unsigned column = static_cast<unsigned>(node_ids_.size());
    if (!node_index_.emplace(id, column).second)
        fail(error_data, where, "node " + std::to_string(id) + " defined twice");
    node_ids_.push_back(id);
    xyz_.insert(xyz_.end(), {x, y, z});
}

void mesh_builder::add_element(element_type type, const std::string& label, std::uint64_t id,
                               const std::uint64_t* node_ids, source_pos where) {
    auto found =
        block_index_.emplace(std::make_pair(static_cast<unsigned>(type), label), static_cast<unsigned>(blocks_.size()));
    if (found.second) blocks_.push_back(block_data{type, label, {}, {}, {}});
    block_data& b = blocks_[found.first->second];
    const element_ref ref{found.first->second, static_cast<unsigned>(b.element_ids.size())};
    if (!element_index_.emplace(id, ref).second)
        fail(error_data, where, "element " + std::to_string(id) + " defined twice");
    b.node_ids.insert(b.node_ids.end(), node_ids, node_ids + nbr_nodes(type));
    b.element_ids.push_back(id);
    b.where.push_back(where);
}

template <class Id>
mesh_builder::set_data<Id>& mesh_builder::set_for(std::vector<set_data<Id>>& sets, std::map<set_key, unsigned>& index,
                                                  const std::string& name, int dim) {
    auto found = index.emplace(set_key(name, dim), static_cast<unsigned>(sets.size()));
    if (found.second) sets.push_back(set_data<Id>{name, dim, {}, {}});
    return sets[found.first->second];
}

void mesh_builder::add_to_node_set(const std::string& name, int dim, std::uint64_t node_id, source_pos where) {
    set_data<std::uint64_t>& s = set_for(node_sets_, node_set_index_, name, dim);
    s.ids.push_back(node_id);
    s.where.push_back(where);
}

void mesh_builder::add_to_element_set(const std::string& name, int dim, std::uint64_t element_id, source_pos where) {
    set_data<std::uint64_t>& s = set_for(element_sets_, element_set_index_, name, dim);
    s.ids.push_back(element_id);
    s.where.push_back(where);
}

bool mesh_builder::has_node_set(const std::string& name, int dim) const {
    return node_set_index_.count(set_key(name, dim)) != 0;
}

bool mesh_builder::has_element_set(const std::string& name, int dim) const {
    return element_set_index_.count(set_key(name, dim)) != 0;
}

void mesh_builder::copy_node_set(const std::string& from, const std::string& to, int dim, source_pos where) {
    const std::vector<std::uint64_t> ids = node_sets_[node_set_index_.at(set_key(from, dim))].ids;
    for (std::uint64_t id : ids) add_to_node_set(to, dim, id, where);
}

void mesh_builder::copy_element_set(const std::string& from, const std::string& to, int dim, source_pos where) {
    const std::vector<std::uint64_t> ids = element_sets_[element_set_index_.at(set_key(from, dim))].ids;
    for (std::uint64_t id : ids) add_to_element_set(to, dim, id, where);
}

unsigned mesh_builder::node_column(std::uint64_t id, source_pos where) const {
    auto it = node_index_.find(id);
    if (it == node_index_.end()) fail(error_connectivity, where, "unknown node " + std::to_string(id));
    return it->second;
}

void mesh_builder::finish(mesh& out) const {
    mesh m;
    const std::size_t n = node_ids_.size();
    if (!m.positions.resize(3, n)) throw std::bad_alloc();
    for (std::size_t j = 0; j < n; ++j)
        for (unsigned i = 0; i < 3; ++i) m.positions(i, j) = xyz_[3 * j + i];
    m.node_ids = node_ids_;

    for (const block_data& b : blocks_) {
        element_block eb;
        eb.type = b.type;
        eb.label = b.label;
        eb.element_ids = b.element_ids;
        const unsigned per = nbr_nodes(b.type);
        if (!eb.connectivity.resize(per, b.element_ids.size())) throw std::bad_alloc();
        for (std::size_t e = 0; e < b.element_ids.size(); ++e)
            for (unsigned i = 0; i < per; ++i) eb.connectivity(i, e) = node_column(b.node_ids[e * per + i], b.where[e]);
        m.blocks.push_back(std::move(eb));
    }

    for (const set_data<std::uint64_t>& s : node_sets_) {
        node_set ns{s.name, s.dim, {}};
        for (std::size_t k = 0; k < s.ids.size(); ++k) ns.nodes.push_back(node_column(s.ids[k], s.where[k]));
        std::sort(ns.nodes.begin(), ns.nodes.end());
        ns.nodes.erase(std::unique(ns.nodes.begin(), ns.nodes.end()), ns.nodes.end());
        m.node_sets.push_back(std::move(ns));
    }
    for (const set_data<std::uint64_t>& s : element_sets_) {
        element_set es{s.name, s.dim, {}};
        std::unordered_set<std::uint64_t> seen;
        for (std::size_t k = 0; k < s.ids.size(); ++k) {
            auto it = element_index_.find(s.ids[k]);
            if (it == element_index_.end())
                fail(error_connectivity, s.where[k], "unknown element " + std::to_string(s.ids[k]));
            if (seen.insert(s.ids[k]).second) es.elements.push_back(it->second);
        }
        m.element_sets.push_back(std::move(es));
    }
    out = std::move(m);
}

void mesh_builder::describe(const read_fault& fault, read_error* error) const {
    if (error == nullptr) return;
    read_error e;
    e.offset = fault.where.offset;
    if (fault.where.file < files.size()) {
        const source_file& f = files[fault.where.file];
        e.file = f.path;
        if (!f.binary) e.line = f.line_of(fault.where.offset);
    }
    if (e.file.empty()) {
        e.text = fault.what;
        *error = std::move(e);
        return;
    }
    e.text = e.file + (e.line > 0 ? ", line " + std::to_string(e.line) : ", byte " + std::to_string(e.offset)) + ": " +
             fault.what;
    *error = std::move(e);
}

}  // namespace detail
}  // namespace io
}  // namespace fem
}  // namespace orv
