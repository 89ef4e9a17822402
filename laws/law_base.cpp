// Data vector, per-element data and their checks, common to all laws.
#include "laws/law_base.h"

#include <cmath>
#include <limits>

namespace orv {
namespace core {

namespace {

std::size_t hash_of(std::uint32_t element, std::uint32_t point) {
    return 3u * static_cast<std::size_t>(element) + 5u * static_cast<std::size_t>(point);
}

bool same_values(const dense1D<double>& a, const dense1D<double>& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (!(a[i] == b[i])) return false;
    return true;
}

}  // namespace

law_base::~law_base() = default;

bool law_base::make_finite(dense1D<double>& data) {
    bool finite = true;
    for (std::size_t i = 0; i < data.size(); ++i) {
        if (!std::isfinite(data[i])) {
            data[i] = 0.0;
            finite = false;
        }
    }
    return finite;
}

bool law_base::pad(dense1D<double>& data, std::size_t n) {
    if (data.size() >= n) return true;
    return data.resize(n, 0.0);
}

int law_base::init(double value) {
    dense1D<double> d(1, value);
    if (d.size() != 1) return init_code_ = law_memory;
    return init(d);
}

int law_base::init(const dense1D<double>& data) {
    dense1D<double> d;
    if (!d.copy(data) && !data.empty()) {
        data_.clear_hard();
        return init_code_ = law_memory;
    }
    const int code = normalize(d);
    if (code < 0) {
        data_.clear_hard();
        return init_code_ = code;
    }
    const bool finite = make_finite(d);
    data_ = d;
    return init_code_ = finite ? law_ok : law_not_finite;
}

int law_base::normalize(dense1D<double>& data) const { return check_size(data) ? law_ok : law_bad_size; }

void law_base::get_limits(double& min, double& max) const {
    min = -std::numeric_limits<double>::max();
    max = std::numeric_limits<double>::max();
}

const law_base::entry* law_base::find(std::uint32_t element, std::uint32_t point) const {
    if (nbr_entries_ == 0) return nullptr;
    const std::size_t mask = entries_.size() - 1;
    for (std::size_t i = hash_of(element, point) & mask;; i = (i + 1) & mask) {
        const entry& e = entries_[i];
        if (!e.used) return nullptr;
        if (e.element == element && e.point == point) return &e;
    }
}

dense1D<double> law_base::get_data_ref(const law_key& key) const {
    const entry* e = find(key.element, key.point);
    if (!e && key.point != law_all_points) e = find(key.element, law_all_points);
    return e ? e->data : data_;
}

bool law_base::has_element_data(const law_key& key) const { return find(key.element, key.point) != nullptr; }

int law_base::get_element_data(const law_key& key, dense1D<double>& data) const {
    data = get_data_ref(key);
    return normalize(data);
}

bool law_base::grow(std::size_t capacity) {
    std::size_t c = 16;
    while (c < capacity) c *= 2;
    if (c <= entries_.size()) return true;
    try {
        std::vector<entry> bigger(c);
        const std::size_t mask = c - 1;
        for (entry& e : entries_) {
            if (!e.used) continue;
            std::size_t i = hash_of(e.element, e.point) & mask;
            while (bigger[i].used) i = (i + 1) & mask;
            bigger[i] = std::move(e);
        }
        entries_.swap(bigger);
    } catch (...) {
        return false;
    }
    return true;
}

bool law_base::reserve_elements(std::size_t n) {
    if (n > std::numeric_limits<std::size_t>::max() / 4) return false;
    return grow(2 * n);
}

void law_base::clear_element_data() {
    entries_.clear();
    nbr_entries_ = 0;
}

int law_base::store_element_data(const law_key& key, const dense1D<double>& data) {
    dense1D<double> d;
    if (!d.copy(data) && !data.empty()) return law_memory;
    if (const entry* found = find(key.element, key.point)) {
        const_cast<entry*>(found)->data = d;
        return law_ok;
    }
    // Doubling when the table would become more than half full.
    if (2 * (nbr_entries_ + 1) > entries_.size() && !grow(2 * entries_.size() > 32 ? 2 * entries_.size() : 32))
        return law_memory;
    const std::size_t mask = entries_.size() - 1;
    std::size_t i = hash_of(key.element, key.point) & mask;
    while (entries_[i].used) i = (i + 1) & mask;
    entry& e = entries_[i];
    e.element = key.element;
    e.point = key.point;
    e.data = d;
    e.used = true;
    ++nbr_entries_;
    return law_ok;
}

int law_base::set_element_by_element(std::uint32_t element, std::uint32_t point, const dense1D<double>& data) {
    if (data_.empty()) return init(data);
    dense1D<double> d;
    if (!d.copy(data) && !data.empty()) return law_memory;
    const int code = normalize(d);
    if (code < 0) return law_bad_size;
    law_key key;
    key.element = element;
    key.point = point;
    if (same_values(d, data_)) {
        // Nothing to keep; an entry the element had goes back to the base values.
        return has_element_data(key) ? store_element_data(key, data_) : law_ok;
    }
    if (!make_finite(d)) return law_not_finite;
    return store_element_data(key, d);
}

}  // namespace core
}  // namespace orv
