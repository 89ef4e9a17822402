// Table of the degrees of freedom: which DOF IDs exist and which are free.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <orv/fem/field_tag.h>

#include "orvmath1/ref_counted.h"

namespace orv {
namespace core {

// A node owns nine DOF IDs, node * 9 + position: 0-2 displacements, 3-5 rotations,
// 6 temperature, 7-8 reserved. The table keeps one bit per DOF of the real nodes
// (set: free, clear: fixed). Fictitious nodes follow the real ones: fictitious node k
// has number nbr_nodes() + k and a master real node; its DOFs are always free.
// Operations that take an ID or node out of range return -101 and change nothing.
class DOFs_mgr : public ref_counted {
public:
    static constexpr unsigned stride = 9;
    // Node number meaning "no node".
    static constexpr std::uint32_t no_node = 0xFFFFFFFFu;
    // First node number with no DOFs: node * 9 must stay inside 32 bits.
    static constexpr std::uint32_t max_nodes = 477218588u;

    DOFs_mgr() = default;
    DOFs_mgr(std::uint32_t nbr_nodes, bool state) { resize(nbr_nodes, state); }

    // ID of a component of a field; 0xFFFFFFFF for a tag outside the three fields.
    static std::uint64_t ID(std::uint64_t node, fem::field_tag tag, unsigned comp);

    // Sets the table to nbr_nodes real nodes (at most max_nodes); new bits take state.
    void resize(std::uint32_t nbr_nodes, bool state);
    void clear();

    std::uint32_t nbr_nodes() const { return static_cast<std::uint32_t>(nbr_bits_ / stride); }
    std::uint32_t nbr_fictitious_nodes() const { return static_cast<std::uint32_t>(masters_.size()); }
    std::uint64_t nbr_fictitious_DOFs() const { return std::uint64_t(stride) * masters_.size(); }
    // Every ID in use, real and fictitious.
    std::uint64_t size() const { return nbr_bits_ + nbr_fictitious_DOFs(); }
    // Bits of the real nodes equal to state, reserved positions included.
    std::uint64_t nbr_DOFs(bool state) const;
    // Appends the real-node IDs whose bit equals state, ascending.
    void copy_IDs(std::vector<std::uint32_t>& ids, bool state) const;

    int get(std::uint64_t ID, bool& state) const;
    int get(std::uint64_t node, fem::field_tag tag, unsigned comp, bool& state) const {
        return get(ID(node, tag, comp), state);
    }
    // node = ID / 9 (its master when to_master and the node is fictitious); tag from
    // ID % 9; comp = ID % 3.
    void get_info(std::uint64_t ID, std::uint32_t& node, fem::field_tag& tag, unsigned& comp, bool to_master) const;

    int set(std::uint64_t ID, bool state);
    int set(std::uint64_t node, fem::field_tag tag, unsigned comp, bool state);
    int set(std::uint64_t node, fem::field_tag tag, bool state);
    int set(std::uint64_t node, fem::field_tag tag, unsigned comp1, unsigned comp2, bool state);

    // Free state as models read it: an ID past the real nodes counts as free.
    bool is_free(std::uint64_t ID) const { return ID >= nbr_bits_ || bit(ID); }
    bool is_selected(std::uint64_t ID, bool state) const { return is_free(ID) == state; }

    // Appends a fictitious node of the given master; returns its node number.
    std::uint32_t add_fictitious_node(std::uint32_t master);
    // Master of a fictitious node; no_node when node is not fictitious.
    std::uint32_t master(std::uint64_t node) const;
    const std::vector<std::uint32_t>& masters() const { return masters_; }

private:
    bool bit(std::uint64_t i) const { return (bits_[i >> 5] >> (i & 31)) & 1u; }
    void put(std::uint64_t i, bool state) {
        const std::uint32_t m = 1u << (i & 31);
        if (state)
            bits_[i >> 5] |= m;
        else
            bits_[i >> 5] &= ~m;
    }

    std::vector<std::uint32_t> bits_;  // packed, bit ID of word ID / 32
    std::uint64_t nbr_bits_ = 0;       // always 9 * real nodes
    std::vector<std::uint32_t> masters_;
};

// What a model lists: the DOFs whose free state equals `state` in `DOFs`.
// A filter without a table selects every DOF.
struct DOF_filter {
    const DOFs_mgr* DOFs = nullptr;
    bool state = true;
};

inline bool is_selected(std::uint64_t ID, const DOF_filter& filter) {
    return !filter.DOFs || filter.DOFs->is_selected(ID, filter.state);
}

}  // namespace core
}  // namespace orv
