// Collects what a reader finds (nodes and elements by the file's numbers, named sets)
// and turns it into a mesh record in one step at the end, so that a failure anywhere
// leaves the host's record as it was. Readers report faults by throwing read_fault,
// which the public entry points turn into an error_type.
#pragma once

#include <cstdint>
#include <map>
#include <new>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include <orv/fem/io/mesh_io.h>

namespace orv {
namespace fem {
namespace io {
namespace detail {

// Where something was read: a file (index into mesh_builder::files) and a byte offset.
struct source_pos {
    unsigned file = 0;
    std::uint64_t offset = 0;
};

struct read_fault {
    error_type code;
    source_pos where;
    std::string what;
};

// The text of a file and the questions a message asks of it.
struct source_file {
    std::string path;
    std::string text;
    bool binary = false;  // offsets are reported as bytes
    std::size_t line_of(std::uint64_t offset) const;
};

// Reads a whole file; false when it cannot be opened or read.
bool load_file(const std::string& path, std::string& text);

class mesh_builder {
public:
    std::vector<source_file> files;

    // A node by the file's number; a repeated number is a fault.
    void add_node(std::uint64_t id, double x, double y, double z, source_pos where);
    // An element of a shape whose nodes are already in the library's order.
    void add_element(element_type type, const std::string& label, std::uint64_t id, const std::uint64_t* node_ids,
                     source_pos where);
    // Members of a named set by the file's numbers. `key` merges sets: the name as
    // written for a physical group, the upper-case name for a deck.
    void add_to_node_set(const std::string& name, int dim, std::uint64_t node_id, source_pos where);
    void add_to_element_set(const std::string& name, int dim, std::uint64_t element_id, source_pos where);
    bool has_node_set(const std::string& name, int dim) const;
    bool has_element_set(const std::string& name, int dim) const;
    // Every member of another set (a deck names sets inside sets).
    void copy_node_set(const std::string& from, const std::string& to, int dim, source_pos where);
    void copy_element_set(const std::string& from, const std::string& to, int dim, source_pos where);
    bool element_known(std::uint64_t id) const { return element_index_.count(id) != 0; }

    // Resolves every number and fills `out`; throws read_fault on an unknown number.
    void finish(mesh& out) const;
    // The message of a fault, and the record of where it was.
    void describe(const read_fault& fault, read_error* error) const;

    [[noreturn]] static void fail(error_type code, source_pos where, std::string what) {
        throw read_fault{code, where, std::move(what)};
    }

private:
    struct block_data {
        element_type type;
        std::string label;
        std::vector<std::uint64_t> node_ids;  // nbr_nodes(type) per element
        std::vector<std::uint64_t> element_ids;
        std::vector<source_pos> where;
    };
    template <class Id>
    struct set_data {
        std::string name;
        int dim;
        std::vector<Id> ids;
        std::vector<source_pos> where;
    };
    typedef std::pair<std::string, int> set_key;

    std::vector<double> xyz_;
    std::vector<std::uint64_t> node_ids_;
    std::unordered_map<std::uint64_t, unsigned> node_index_;
    std::vector<block_data> blocks_;
    std::map<std::pair<unsigned, std::string>, unsigned> block_index_;
    std::unordered_map<std::uint64_t, element_ref> element_index_;
    std::vector<set_data<std::uint64_t>> node_sets_, element_sets_;
    std::map<set_key, unsigned> node_set_index_, element_set_index_;

    template <class Id>
    static set_data<Id>& set_for(std::vector<set_data<Id>>& sets, std::map<set_key, unsigned>& index,
                                 const std::string& name, int dim);
    unsigned node_column(std::uint64_t id, source_pos where) const;
};

// Runs the body of a public call: an allocation failure becomes error_memory and any
// other exception error_internal, so that nothing escapes to the host.
template <class F>
error_type guarded(F&& body) noexcept {
    try {
        return body();
    } catch (const std::bad_alloc&) {
        return error_memory;
    } catch (...) {
        return error_internal;
    }
}

// Runs a reader on a fresh builder and fills `out` only when all of it succeeded; a
// fault gives its code and, in `error`, its message.
template <class F>
error_type run_reader(mesh& out, read_error* error, F&& read) noexcept {
    return guarded([&]() -> error_type {
        mesh_builder builder;
        try {
            read(builder);
            builder.finish(out);
            return no_error;
        } catch (const read_fault& fault) {
            builder.describe(fault, error);
            return fault.code;
        }
    });
}

// Upper-case copy of an ASCII string.
std::string upper(std::string s);

}  // namespace detail
}  // namespace io
}  // namespace fem
}  // namespace orv
