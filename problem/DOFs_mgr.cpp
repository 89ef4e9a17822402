// Table of the degrees of freedom, engine and public handle.
#include "problem/DOFs_mgr.h"
#include <orv/fem/error_type.h>

#include <orv/fem/DOFs_mgr.h>

#include <algorithm>

namespace orv {
namespace core {

namespace {
constexpr std::uint64_t bad_ID = 0xFFFFFFFFu;
constexpr int index_error = fem::error_data;

// First position of a field in a node's block; -1 for a tag outside the three fields.
int field_offset(fem::field_tag tag) {
    switch (tag) {
        case fem::field_displacement: return 0;
        case fem::field_rotation: return 3;
        case fem::field_temperature: return 6;
    }
    return -1;
}
}  // namespace

std::uint64_t DOFs_mgr::ID(std::uint64_t node, fem::field_tag tag, unsigned comp) {
    const int offset = field_offset(tag);
    if (offset < 0) return bad_ID;
    if (tag == fem::field_temperature) return node * stride + 6;
    return node * stride + static_cast<std::uint64_t>(offset) + comp;
}

void DOFs_mgr::resize(std::uint32_t nbr_nodes, bool state) {
    nbr_nodes = std::min(nbr_nodes, max_nodes);
    const std::uint64_t new_bits = std::uint64_t(nbr_nodes) * stride;
    const std::uint64_t old_bits = nbr_bits_;
    bits_.resize(static_cast<std::size_t>((new_bits + 31) / 32), 0u);
    nbr_bits_ = new_bits;
    for (std::uint64_t i = old_bits; i < new_bits; ++i) put(i, state);
}

void DOFs_mgr::clear() {
    bits_.clear();
    nbr_bits_ = 0;
    masters_.clear();
}

std::uint64_t DOFs_mgr::nbr_DOFs(bool state) const {
    std::uint64_t ones = 0;
    const std::uint64_t full = nbr_bits_ / 32;
    for (std::uint64_t w = 0; w < full; ++w) ones += __builtin_popcount(bits_[w]);
    const unsigned tail = static_cast<unsigned>(nbr_bits_ % 32);
    if (tail) ones += __builtin_popcount(bits_[full] & ((1u << tail) - 1u));
    return state ? ones : nbr_bits_ - ones;
}

void DOFs_mgr::copy_IDs(std::vector<std::uint32_t>& ids, bool state) const {
    const std::uint64_t n = nbr_DOFs(state);
    ids.reserve(ids.size() + static_cast<std::size_t>(n));
    for (std::uint64_t i = 0; i < nbr_bits_; ++i)
        if (bit(i) == state) ids.push_back(static_cast<std::uint32_t>(i));
}

int DOFs_mgr::get(std::uint64_t ID, bool& state) const {
    if (ID >= size()) return index_error;
    state = is_free(ID);
    return 0;
}

void DOFs_mgr::get_info(std::uint64_t ID, std::uint32_t& node, fem::field_tag& tag, unsigned& comp,
                        bool to_master) const {
    const std::uint64_t n = ID / stride;
    node = static_cast<std::uint32_t>(n);
    if (to_master) {
        const std::uint32_t m = master(n);
        if (m != no_node) node = m;
    }
    const unsigned r = static_cast<unsigned>(ID % stride);
    tag = r < 3 ? fem::field_displacement : r < 6 ? fem::field_rotation : fem::field_temperature;
    comp = static_cast<unsigned>(ID % 3);
}

int DOFs_mgr::set(std::uint64_t ID, bool state) {
    if (ID >= nbr_bits_) return index_error;
    put(ID, state);
    return 0;
}

int DOFs_mgr::set(std::uint64_t node, fem::field_tag tag, unsigned comp, bool state) {
    return set(ID(node, tag, comp), state);
}

int DOFs_mgr::set(std::uint64_t node, fem::field_tag tag, bool state) {
    const int offset = field_offset(tag);
    if (offset < 0 || node >= nbr_nodes()) return index_error;
    const unsigned count = tag == fem::field_temperature ? 1 : 3;
    for (unsigned c = 0; c < count; ++c) put(node * stride + offset + c, state);
    return 0;
}

int DOFs_mgr::set(std::uint64_t node, fem::field_tag tag, unsigned comp1, unsigned comp2, bool state) {
    if (comp1 > 2 || comp2 > 2 || field_offset(tag) < 0 || node >= nbr_nodes()) return index_error;
    put(ID(node, tag, comp1), state);
    put(ID(node, tag, comp2), state);
    return 0;
}

std::uint32_t DOFs_mgr::add_fictitious_node(std::uint32_t master) {
    const std::uint32_t node = nbr_nodes() + nbr_fictitious_nodes();
    masters_.push_back(master);
    return node;
}

std::uint32_t DOFs_mgr::master(std::uint64_t node) const {
    const std::uint64_t real = nbr_nodes();
    if (node < real || node - real >= masters_.size()) return no_node;
    return masters_[static_cast<std::size_t>(node - real)];
}

}  // namespace core

namespace fem {

ORV_FEM_HANDLE_IMPL(DOFs_mgr, base_class, core::DOFs_mgr)

DOFs_mgr::DOFs_mgr() : base_class(static_cast<ref_counted*>(new core::DOFs_mgr())) {}

DOFs_mgr::DOFs_mgr(unsigned nbr_nodes, bool state) : DOFs_mgr() { resize(nbr_nodes, state); }

unsigned long long DOFs_mgr::ID(unsigned long long node, field_tag tag, unsigned comp) {
    return core::DOFs_mgr::ID(node, tag, comp);
}

void DOFs_mgr::resize(unsigned nbr_nodes, bool state) {
    // A table that cannot grow stays as it was.
    try {
        engine()->resize(nbr_nodes, state);
    } catch (...) {}
}

void DOFs_mgr::clear() { engine()->clear(); }

unsigned DOFs_mgr::nbr_nodes() const { return engine()->nbr_nodes(); }
unsigned DOFs_mgr::nbr_fictitious_nodes() const { return engine()->nbr_fictitious_nodes(); }
unsigned long long DOFs_mgr::nbr_fictitious_DOFs() const { return engine()->nbr_fictitious_DOFs(); }
unsigned long long DOFs_mgr::size() const { return engine()->size(); }
unsigned long long DOFs_mgr::nbr_DOFs(bool state) const { return engine()->nbr_DOFs(state); }

error_type DOFs_mgr::copy_IDs(std::vector<unsigned>& ids, bool state) const {
    try {
        engine()->copy_IDs(ids, state);
    } catch (...) {
        return error_memory;
    }
    return no_error;
}

error_type DOFs_mgr::get(unsigned long long ID, bool& state) const {
    return static_cast<error_type>(engine()->get(ID, state));
}
error_type DOFs_mgr::get(unsigned long long node, field_tag tag, unsigned comp, bool& state) const {
    return static_cast<error_type>(engine()->get(node, tag, comp, state));
}
void DOFs_mgr::get_info(unsigned long long ID, unsigned& node, field_tag& tag, unsigned& comp, bool to_master) const {
    std::uint32_t n = 0;
    engine()->get_info(ID, n, tag, comp, to_master);
    node = n;
}

error_type DOFs_mgr::set(unsigned long long ID, bool state) {
    return static_cast<error_type>(engine()->set(ID, state));
}
error_type DOFs_mgr::set(unsigned long long node, field_tag tag, unsigned comp, bool state) {
    return static_cast<error_type>(engine()->set(node, tag, comp, state));
}
error_type DOFs_mgr::set(unsigned long long node, field_tag tag, bool state) {
    return static_cast<error_type>(engine()->set(node, tag, state));
}
error_type DOFs_mgr::set(unsigned long long node, field_tag tag, unsigned comp1, unsigned comp2, bool state) {
    return static_cast<error_type>(engine()->set(node, tag, comp1, comp2, state));
}

unsigned DOFs_mgr::add_fictitious_node(unsigned master) { return engine()->add_fictitious_node(master); }

}  // namespace fem
}  // namespace orv
