#include "linalg/symmetric_hybrid_OOC.h"
#include <orv/fem/error_type.h>

#include <omp.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <new>
#include <utility>
#include <vector>

#include "linalg/dense_kernels.h"

namespace orv {
namespace core {

namespace {

const std::uint64_t u64_max = std::numeric_limits<std::uint64_t>::max();

// a + b saturating at 2^64 - 1.
inline std::uint64_t sat_add(std::uint64_t a, std::uint64_t b) { return a > u64_max - b ? u64_max : a + b; }

}  // namespace

template <class T>
int symmetric_hybrid_OOC<T>::init(const orv::dense1D<block_profile, 8>& profiles, T fill_value,
                                  const Ptr<OOC_mgr>& mgr) {
    return init(profiles.data(), profiles.size(), fill_value, mgr);
}

template <class T>
void symmetric_hybrid_OOC<T>::clear() {
    proxy_.reset();
    block_of_.clear_hard();
    parent_.clear_hard();
}

template <class T>
int symmetric_hybrid_OOC<T>::init(const block_profile* profiles, std::size_t n_profiles, T fill_value,
                                  const Ptr<OOC_mgr>& mgr) {
    clear();
    // Check the profile and compute the totals.
    std::uint64_t profile = 0, nbr_segments = 0, max_extra = 0, max_block_bytes = 0;
    std::size_t dim = 0;
    for (std::size_t b = 0; b < n_profiles; ++b) {
        const block_profile& p = profiles[b];
        if (p.first != dim || p.last < p.first) return fem::error_data;
        const std::size_t n_own = p.last - p.first;
        if (p.segments.size() < n_own) return fem::error_data;
        std::uint64_t values = n_own;
        for (std::size_t k = 0; k < p.segments.size(); ++k) {
            const block_segment& s = p.segments[k];
            if (k < n_own) {
                if (s.column != p.first + k || s.height > k) return fem::error_data;
            } else {
                if (s.column < p.last || s.height > n_own) return fem::error_data;
                if (k > n_own && s.column <= p.segments[k - 1].column) return fem::error_data;
            }
            values = sat_add(values, s.height);
        }
        profile = sat_add(profile, values);
        nbr_segments += p.segments.size();
        max_extra = std::max<std::uint64_t>(max_extra, p.segments.size() - n_own);
        const std::uint64_t bytes = sat_add(values, 2 * std::uint64_t(p.segments.size()));
        max_block_bytes = std::max(max_block_bytes, bytes > u64_max / 8 ? u64_max : bytes * 8);
        dim = p.last;
    }
    const std::uint64_t total = sat_add(profile, 2 * nbr_segments);
    if (profile == u64_max || max_block_bytes == u64_max || total > u64_max / 8) return fem::error_memory;
    if (dim >= std::size_t(~0u)) return fem::error_data;

    Ptr<proxy_type> px(new (std::nothrow) proxy_type());
    if (!px) return fem::error_memory;
    px->n_blocks = n_profiles;
    px->profile = profile;
    px->nbr_segments = nbr_segments;
    px->max_extra_segments = max_extra;
    px->total_bytes = total * 8;
    px->fill_value = fill_value;
    // A small matrix stays in core for good, without a manager. The budget of a larger
    // one is granted by the manager; until the disk side is there it is all in core.
    if (dim > 32) px->mgr = mgr;
    px->budget_bytes = px->total_bytes;
    px->assembly_closed = true;

    if (!px->buffer.resize(std::size_t(profile), fill_value)) return fem::error_memory;
    px->resident_values = px->buffer;
    if (!px->segment_store.resize(std::size_t(nbr_segments))) return fem::error_memory;
    if (!px->resident.resize(n_profiles, block_type())) return fem::error_memory;
    if (!px->value_offsets.resize(n_profiles + 1) || !px->segment_offsets.resize(n_profiles + 1) ||
        !px->n_own_table.resize(n_profiles))
        return fem::error_memory;
    try {
        px->ever_written.assign(n_profiles, false);
    } catch (...) {
        return fem::error_memory;
    }
    orv::dense1D<unsigned int, 8> block_of, parent;
    if (!block_of.resize(dim) || !parent.resize(n_profiles)) return fem::error_memory;

    std::size_t voff = 0, soff = 0;
    for (std::size_t b = 0; b < n_profiles; ++b) {
        const block_profile& p = profiles[b];
        const std::size_t n_own = p.last - p.first, ns = p.segments.size();
        std::size_t nv = n_own;
        for (std::size_t k = 0; k < ns; ++k) nv += p.segments[k].height;
        px->value_offsets[b] = voff * 8;
        px->segment_offsets[b] = soff * 16;
        px->n_own_table[b] = n_own;
        block_type& blk = px->resident[b];
        blk.n_own = n_own;
        blk.values = px->resident_values.sub_vector(voff, nv);
        blk.segments = px->segment_store.sub_vector(soff, ns);
        T* run = blk.values.data() + n_own;
        for (std::size_t k = 0; k < ns; ++k) {
            run += p.segments[k].height;
            blk.segments[k].column = p.segments[k].column;
            blk.segments[k].end = run;
        }
        for (std::size_t r = p.first; r < p.last; ++r) block_of[r] = unsigned(b);
        voff += nv;
        soff += ns;
    }
    px->value_offsets[n_profiles] = voff * 8;
    px->segment_offsets[n_profiles] = soff * 16;
    for (std::size_t b = 0; b < n_profiles; ++b) {
        const block_profile& p = profiles[b];
        const std::size_t n_own = p.last - p.first;
        parent[b] = p.segments.size() > n_own ? block_of[p.segments[n_own].column] : ~0u;
    }
    px->first_resident = 0;
    px->n_resident = n_profiles;
    proxy_ = px;
    block_of_ = block_of;
    parent_ = parent;
    return 0;
}

template <class T>
void symmetric_hybrid_OOC<T>::fill(T v) {
    if (!proxy_) return;
    proxy_->fill_value = v;
    for_each_block(true, [&](std::uint64_t, block_type& blk) {
        blk.values.fill(v);
        return 0;
    });
}

template <class T>
int symmetric_hybrid_OOC<T>::window(std::uint64_t b, bool, std::uint64_t& w0, std::uint64_t& w1) {
    if (!proxy_ || b >= proxy_->n_blocks) return fem::error_internal;
    w0 = proxy_->first_resident;
    w1 = w0 + proxy_->n_resident;
    if (b < w0 || b >= w1) return fem::error_internal;  // blocks outside a full window need the disk side
    return 0;
}

template <class T>
int symmetric_hybrid_OOC<T>::get_val(std::size_t r, std::size_t c, T& v) const {
    v = T();
    const std::size_t n = dimension();
    if (r >= n || c >= n) return fem::error_data;
    if (r > c) std::swap(r, c);
    const std::uint64_t b = block_of_[r];
    symmetric_hybrid_OOC& self = const_cast<symmetric_hybrid_OOC&>(*this);
    std::uint64_t w0, w1;
    if (self.window(b, true, w0, w1)) return fem::error_internal;
    const block_type& blk = proxy_->block(b);
    if (r == c) {
        v = blk.diag()[r - blk.first()];
        return 0;
    }
    const T* p = blk.entry(r, c);
    if (p) v = *p;
    return 0;
}

template <class T>
T symmetric_hybrid_OOC<T>::get_val(std::size_t r, std::size_t c) const {
    T v;
    get_val(r, c, v);
    return v;
}

template <class T>
int symmetric_hybrid_OOC<T>::writable_entry(std::size_t r, std::size_t c, T*& p) {
    p = nullptr;
    const std::size_t n = dimension();
    if (r >= n || c >= n) return fem::error_data;
    if (r > c) std::swap(r, c);
    const std::uint64_t b = block_of_[r];
    std::uint64_t w0, w1;
    if (window(b, true, w0, w1)) return fem::error_internal;
    block_type& blk = proxy_->block(b);
    p = (r == c) ? blk.diag() + (r - blk.first()) : blk.entry(r, c);
    if (!p) return fem::error_index;
    proxy_->ever_written[b] = true;
    return 0;
}

template <class T>
int symmetric_hybrid_OOC<T>::set_val(std::size_t r, std::size_t c, T v) {
    T* p;
    const int rc = writable_entry(r, c, p);
    if (!rc) *p = v;
    return rc;
}

template <class T>
int symmetric_hybrid_OOC<T>::add_val(std::size_t r, std::size_t c, T v) {
    T* p;
    const int rc = writable_entry(r, c, p);
    if (!rc) *p += v;
    return rc;
}

// Adds factor * value for the entries (column, value) of one row, columns ascending
// and >= row, into the row's block in one sweep over its segment table.
template <class T>
int symmetric_hybrid_OOC<T>::row_pour(std::size_t row, const std::pair<std::size_t, T>* entries, std::size_t n,
                                      T factor) {
    const std::uint64_t b = block_of_[row];
    std::uint64_t w0, w1;
    if (window(b, true, w0, w1)) return fem::error_internal;
    block_type& blk = proxy_->block(b);
    proxy_->ever_written[b] = true;
    const std::size_t first = blk.first(), last = blk.last();
    const segment_type* tab = blk.table();
    const std::size_t ns = blk.nbr_segments();
    std::size_t k = std::size_t(blk.n_own);  // cursor in the extra segments
    int rc = 0;
    for (std::size_t e = 0; e < n; ++e) {
        const std::size_t c = entries[e].first;
        const T v = entries[e].second;
        T* p = nullptr;
        if (c == row) {
            p = blk.diag() + (row - first);
        } else if (c < last) {
            const std::size_t s = c - first;
            if (c - row <= blk.seg_height(s)) p = tab[s].end - (c - row);
        } else {
            if (k < ns && tab[k].column != c) {
                const segment_type* q =
                    std::lower_bound(tab + k, tab + ns, std::uint64_t(c),
                                     [](const segment_type& s, std::uint64_t v2) { return s.column < v2; });
                k = std::size_t(q - tab);
            }
            if (k < ns && tab[k].column == c && last - row <= blk.seg_height(k)) p = tab[k].end - (last - row);
        }
        if (p)
            *p = v * factor + *p;
        else
            rc = fem::error_index;
    }
    return rc;
}

namespace {

// Element rows in matrix order: the pairs (matrix position, element index) of the
// rows that are in the matrix, sorted by position.
bool sorted_positions(const unsigned int* pos, std::size_t n, std::size_t dim,
                      std::vector<std::pair<std::size_t, std::size_t>>& order, int& rc) {
    order.clear();
    order.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
        if (pos[i] == ~0u) continue;
        if (pos[i] >= dim) {
            rc = fem::error_data;
            continue;
        }
        order.emplace_back(pos[i], i);
    }
    std::sort(order.begin(), order.end());
    return true;
}

}  // namespace

template <class T>
int symmetric_hybrid_OOC<T>::add_packed(T alpha, const T* packed, std::size_t n, const unsigned int* pos, bool skew) {
    if (alpha == T(0) || n == 0 || !proxy_) return 0;
    int rc = 0;
    std::vector<std::pair<std::size_t, std::size_t>> order;
    std::vector<std::pair<std::size_t, T>> row;
    try {
        sorted_positions(pos, n, dimension(), order, rc);
        row.reserve(order.size());
    } catch (...) {
        return fem::error_memory;
    }
    std::size_t lo = 0;
    for (std::size_t a = 0; a < order.size(); ++a) {
        const std::size_t p = order[a].first, i = order[a].second;
        if (order[lo].first != p) lo = a;
        row.clear();
        for (std::size_t b = lo; b < order.size(); ++b) {
            const std::size_t j = order[b].second;
            T v;
            if (i >= j)
                v = packed[(i + 1) * i / 2 + j];
            else
                v = skew ? -packed[(j + 1) * j / 2 + i] : packed[(j + 1) * j / 2 + i];
            if (v == T(0)) continue;
            row.emplace_back(order[b].first, v);
        }
        if (row.empty()) continue;
        const int r = row_pour(p, row.data(), row.size(), alpha);
        if (r && !rc) rc = r;
    }
    return rc;
}

template <class T>
int symmetric_hybrid_OOC<T>::add(T alpha, const orv::symmetric_full<T>& B, const unsigned int* pos, bool skew) {
    return add_packed(alpha, B.data(), B.dim(), pos, skew);
}

template <class T>
int symmetric_hybrid_OOC<T>::add(T alpha, const orv::symmetric_sparse<T>& B, const unsigned int* pos, bool skew) {
    const std::size_t n = B.dim();
    if (alpha == T(0) || n == 0 || !proxy_) return 0;
    const unsigned int* ptr = B.pointers().data();
    const unsigned int* col = B.columns().data();
    const T* val = B.data();
    int rc = 0;
    std::vector<std::pair<std::size_t, std::size_t>> order;
    std::vector<std::pair<std::size_t, T>> row;
    // Both triangles of B, row by row: (column, value).
    std::vector<std::size_t> full_ptr;
    std::vector<std::pair<std::size_t, T>> full;
    try {
        sorted_positions(pos, n, dimension(), order, rc);
        full_ptr.assign(n + 1, 0);
        for (std::size_t i = 0; i < n; ++i)
            for (std::size_t k = ptr[i]; k < ptr[i + 1]; ++k) {
                ++full_ptr[i + 1];
                if (col[k] != i) ++full_ptr[col[k] + 1];
            }
        for (std::size_t i = 0; i < n; ++i) full_ptr[i + 1] += full_ptr[i];
        full.resize(full_ptr[n]);
        std::vector<std::size_t> fill(full_ptr.begin(), full_ptr.end() - 1);
        for (std::size_t i = 0; i < n; ++i)
            for (std::size_t k = ptr[i]; k < ptr[i + 1]; ++k) {
                const std::size_t j = col[k];
                full[fill[i]++] = std::make_pair(j, val[k]);
                if (j != i) full[fill[j]++] = std::make_pair(i, skew ? -val[k] : val[k]);
            }
        row.reserve(n);
    } catch (...) {
        return fem::error_memory;
    }
    for (std::size_t a = 0; a < order.size(); ++a) {
        const std::size_t p = order[a].first, i = order[a].second;
        row.clear();
        for (std::size_t k = full_ptr[i]; k < full_ptr[i + 1]; ++k) {
            const std::size_t j = full[k].first;
            if (pos[j] == ~0u || pos[j] < p || pos[j] >= dimension() || full[k].second == T(0)) continue;
            row.emplace_back(pos[j], full[k].second);
        }
        if (row.empty()) continue;
        std::sort(row.begin(), row.end(), [](const std::pair<std::size_t, T>& x, const std::pair<std::size_t, T>& y) {
            return x.first < y.first;
        });
        const int r = row_pour(p, row.data(), row.size(), alpha);
        if (r && !rc) rc = r;
    }
    return rc;
}

namespace {

// y += alpha * A_block * x for one block.
template <class T>
void block_mult_add(const symmetric_skyline_block<T>& blk, T alpha, const T* x, T* y, int n_threads = 1) {
    const std::size_t first = blk.first(), last = blk.last(), n_own = std::size_t(blk.n_own);
    const T* d = blk.diag();
    for (std::size_t i = 0; i < n_own; ++i) y[first + i] += alpha * d[i] * x[first + i];
    const std::size_t ns = blk.nbr_segments();
    const T* begin = d + n_own;
    for (std::size_t k = 0; k < ns; ++k) {
        const T* end = blk.table()[k].end;
        const std::size_t h = std::size_t(end - begin);
        if (h) {
            const std::size_t c = std::size_t(blk.table()[k].column);
            const std::size_t r0 = (k < n_own ? c : last) - h;
            y[c] += alpha * kernels::dot_parallel(begin, x + r0, h, n_threads);
            kernels::axpy(h, alpha * x[c], begin, y + r0);
        }
        begin = end;
    }
}

}  // namespace

template <class T>
void symmetric_hybrid_OOC<T>::mult_add(T alpha, const T* x, T* y, int n_threads) const {
    if (!proxy_ || alpha == T(0)) return;
    for_each_block(true, [&](std::uint64_t, const block_type& blk) {
        block_mult_add(blk, alpha, x, y, n_threads);
        return 0;
    });
}

template <class T>
void symmetric_hybrid_OOC<T>::mult_add(T alpha, const T* X, std::size_t ldx, T* Y, std::size_t ldy,
                                       std::size_t n_columns, int n_threads) const {
    if (!proxy_ || alpha == T(0) || n_columns == 0) return;
    const int t = int(std::min<std::size_t>(n_columns, std::size_t(std::max(n_threads, 1))));
    if (all_incore()) {
        // All blocks in memory: one region, each thread sweeps the blocks for its columns.
#pragma omp parallel num_threads(t) if (t > 1)
        {
            const std::size_t p = std::size_t(omp_get_thread_num()), np = std::size_t(omp_get_num_threads());
            const std::size_t j0 = n_columns * p / np, j1 = n_columns * (p + 1) / np;
            for (std::uint64_t b = 0; b < nbr_blocks(); ++b)
                for (std::size_t j = j0; j < j1; ++j) block_mult_add(block(b), alpha, X + j * ldx, Y + j * ldy);
        }
        return;
    }
    for_each_block(true, [&](std::uint64_t, const block_type& blk) {
#pragma omp parallel for num_threads(t) schedule(static) if (t > 1)
        for (std::ptrdiff_t j = 0; j < std::ptrdiff_t(n_columns); ++j)
            block_mult_add(blk, alpha, X + std::size_t(j) * ldx, Y + std::size_t(j) * ldy);
        return 0;
    });
}

template <class T>
void symmetric_hybrid_OOC<T>::mult_add(T alpha, const orv::dense2D<T>& X, orv::dense2D<T>& Y, int n_threads) const {
    const std::size_t nc = std::min(X.cols(), Y.cols());
    if (X.rows() < dimension() || Y.rows() < dimension()) return;
    mult_add(alpha, X.col(0), X.ld(), Y.col(0), Y.ld(), nc, n_threads);
}

template <class T>
T symmetric_hybrid_OOC<T>::xT_A_x(const T* x, int) const {
    const std::size_t n = dimension();
    if (n == 0) return T(0);
    if (n <= 3) {
        // A00 x0^2 + (2 A01 x0 + A11 x1) x1 + (2 A02 x0 + 2 A12 x1 + A22 x2) x2
        T s = get_val(0, 0) * x[0] * x[0];
        if (n > 1) s += (2 * get_val(0, 1) * x[0] + get_val(1, 1) * x[1]) * x[1];
        if (n > 2) s += (2 * get_val(0, 2) * x[0] + 2 * get_val(1, 2) * x[1] + get_val(2, 2) * x[2]) * x[2];
        return s;
    }
    T diag = 0, off = 0;
    for_each_block(true, [&](std::uint64_t, const block_type& blk) {
        const std::size_t first = blk.first(), last = blk.last(), n_own = std::size_t(blk.n_own);
        const T* d = blk.diag();
        for (std::size_t i = 0; i < n_own; ++i) diag += d[i] * x[first + i] * x[first + i];
        const T* begin = d + n_own;
        for (std::size_t k = 0; k < blk.nbr_segments(); ++k) {
            const T* end = blk.table()[k].end;
            const std::size_t h = std::size_t(end - begin);
            if (h) {
                const std::size_t c = std::size_t(blk.table()[k].column);
                off += x[c] * kernels::dot(begin, x + (k < n_own ? c : last) - h, h);
            }
            begin = end;
        }
        return 0;
    });
    return diag + 2 * off;
}

template <class T>
std::uint64_t symmetric_hybrid_OOC<T>::count_zeros() const {
    std::uint64_t z = 0;
    if (!proxy_ || !proxy_->all_resident()) return 0;
    for_each_block(true, [&](std::uint64_t, const block_type& blk) {
        const T* v = blk.values.data();
        for (std::size_t i = 0; i < blk.values.size(); ++i) z += (v[i] == T(0));
        return 0;
    });
    return z;
}

template <class T>
skyline_report symmetric_hybrid_OOC<T>::report() const {
    skyline_report r;
    const double n = double(dimension());
    r.dimension = dimension();
    r.profile = profile();
    r.nbr_blocks = nbr_blocks();
    r.max_extra_segments = max_extra_segments();
    r.symbolic_fill = n > 0 ? 2.0 * double(r.profile) / ((n + 1) * n) * 100.0 : 0.0;
    if (proxy_ && proxy_->all_resident() && r.dimension > 0) {
        r.numeric = true;
        r.zeros = count_zeros();
        r.non_zeros = r.profile - r.zeros;
        r.numerical_fill = 2.0 * double(r.non_zeros) / ((n + 1) * n) * 100.0;
        r.numerical_fill_ratio = double(r.non_zeros) * 100.0 / double(std::max<std::uint64_t>(r.profile, 1));
    }
    return r;
}

template <class T>
std::string symmetric_hybrid_OOC<T>::report_text(bool with_numbers) const {
    const skyline_report r = report();
    std::string s;
    char buf[256];
    auto line = [&](const char* fmt, auto... v) {
        std::snprintf(buf, sizeof buf, fmt, v...);
        s += buf;
    };
    line("  dimension              : %10llu\n", (unsigned long long)r.dimension);
    line("  profile                : %10llu (%.2f MB)\n", (unsigned long long)r.profile,
         double(r.profile) * 7.62939453125e-06);
    line("  nbr blocks             : %10llu\n", (unsigned long long)r.nbr_blocks);
    line("  max extra segments     : %10llu\n", (unsigned long long)r.max_extra_segments);
    if (r.dimension == 0) return s;
    line("  symbolic fill-ins      : %8.2f %%\n", r.symbolic_fill);
    if (with_numbers && r.numeric) {
        line("  zeros                  : %10llu\n", (unsigned long long)r.zeros);
        line("  non zeros              : %10llu\n", (unsigned long long)r.non_zeros);
        line("  numerical fill-ins     : %8.2f %% (%.2f %%)\n", r.numerical_fill, r.numerical_fill_ratio);
    }
    return s;
}

template class symmetric_hybrid_OOC<double>;

}  // namespace core
}  // namespace orv
