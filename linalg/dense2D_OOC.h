// Dense matrix of results (one column per load case, mode or step), in memory or
// partly on disk behind a window of resident columns.
#pragma once

#include <algorithm>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <new>
#include <string>
#include <vector>

#include "linalg/OOC_mgr.h"
#include "orvmath1/dense1D.h"
#include "orvmath1/dense2D.h"
#include "orvmath1/ref_counted.h"

namespace orv {
namespace core {

// Shared state of a dense2D_OOC<T>: the whole matrix's shape, the resident window of
// columns and, once a budget below the whole size is granted, the temporary file.
//
// Ownership: `cache` owns the memory of the window; `window` is a view on it. The
// proxy lives as long as a matrix (or a view on some of its columns) refers to it.
// While no manager is set the whole matrix is resident for good.
template <class T>
class dense2D_proxy_data : public ref_counted {
public:
    std::uint64_t rows = 0;
    std::uint64_t columns = 0;
    std::uint64_t first_resident = 0;  // first column in memory
    std::uint64_t min_columns = 1;     // fewest columns the matrix needs in memory
    std::uint64_t budget_bytes = 0;    // what the manager granted
    orv::dense1D<T, 8> cache;          // memory of the window
    orv::dense2D<T> window;            // resident columns, a view on cache
    std::uint64_t n_resident = 0;      // columns in window
    int file = -1;
    std::string file_name;
    bool read_only = false;     // the window was not written: no write-back when it moves
    std::vector<bool> written;  // per column: it exists in the file
    T fill_value = T();         // what an unwritten column reads as
    Ptr<OOC_mgr> mgr;           // null for plain in-core objects

    bool all_resident() const noexcept { return n_resident == columns; }
};

// A view on columns [start, start + cols) of a shared dense2D_proxy_data: copies and
// column views share the proxy, like dense2D views share their storage.
//
// Columns are reached through the window: col(c) is a pointer into memory only while
// column c is resident, and window(c, n) makes a run of columns resident. With the
// matrix fully resident (the case of every matrix today) the window is all columns.
// Failures are negative codes (-199 memory, -200 a column cannot be made resident,
// -154 when the budget cannot be had) or false results; nothing throws.
template <class T>
class dense2D_OOC {
public:
    typedef T value_type;
    typedef dense2D_proxy_data<T> proxy_type;

    dense2D_OOC() noexcept = default;
    dense2D_OOC(const dense2D_OOC&) noexcept = default;
    dense2D_OOC& operator=(const dense2D_OOC&) noexcept = default;
    virtual ~dense2D_OOC() = default;

    // A new rows x cols matrix, every value set to fill_value. A matrix of at most 128
    // elements never takes a manager. Returns 0 or -199 (the matrix is then empty).
    int init(std::size_t rows, std::size_t cols, const T& fill_value,
             const Ptr<OOC_mgr>& mgr = Ptr<OOC_mgr>()) noexcept;
    // A resident matrix that takes over (shares) the given dense matrix as its window.
    int init(const orv::dense2D<T>& values, const Ptr<OOC_mgr>& mgr = Ptr<OOC_mgr>()) noexcept;

    // A view on columns [first, first + n) of this one, capped to the columns that
    // exist; shares the proxy.
    dense2D_OOC sub_columns(std::size_t first, std::size_t n) const noexcept {
        dense2D_OOC v(*this);
        if (first > cols_) first = cols_;
        if (n > cols_ - first) n = cols_ - first;
        v.start_ += first;
        v.cols_ = n;
        return v;
    }

    std::size_t rows() const noexcept { return rows_; }
    std::size_t cols() const noexcept { return cols_; }
    // First column of this view in the proxy.
    std::size_t start_column() const noexcept { return start_; }
    const Ptr<proxy_type>& proxy() const noexcept { return proxy_; }
    bool is_valid() const noexcept { return bool(proxy_); }

    // All of this view's columns are in memory.
    bool is_all_incore() const noexcept {
        if (!proxy_) return true;
        if (proxy_->all_resident()) return true;
        return start_ >= proxy_->first_resident && start_ + cols_ <= proxy_->first_resident + proxy_->n_resident;
    }
    // Makes the whole matrix resident for good. False when it cannot be had in memory.
    bool force_incore() noexcept;

    // Makes columns [c, c + n) of this view resident (n is capped to the view). Returns
    // 0, -101 when c is past the view, or the code of a failed transfer.
    int window(std::size_t c, std::size_t n) noexcept;
    // Column c of this view when resident, else null.
    T* col(std::size_t c) noexcept { return const_cast<T*>(static_cast<const dense2D_OOC*>(this)->col(c)); }
    const T* col(std::size_t c) const noexcept {
        if (!proxy_ || c >= cols_) return nullptr;
        const std::uint64_t g = start_ + c;
        if (g < proxy_->first_resident || g >= proxy_->first_resident + proxy_->n_resident) return nullptr;
        return proxy_->window.col(std::size_t(g - proxy_->first_resident));
    }
    // Column c as a vector view when resident, else an empty view.
    orv::dense1D<T, 8> column(std::size_t c) const noexcept {
        if (!col(c)) return orv::dense1D<T, 8>();
        const std::size_t g = std::size_t(start_ + c - proxy_->first_resident);
        return proxy_->window.column(g);
    }
    // The columns of this view that are resident, as a dense view (empty for none).
    orv::dense2D<T> as_raw_matrix() const noexcept;

    // Element (i, j): 0 and the value; -101 out of range (value T()); a transfer code.
    int get_val(std::size_t i, std::size_t j, T& v) const noexcept;
    int set_val(std::size_t i, std::size_t j, const T& v) noexcept;
    int add_val(std::size_t i, std::size_t j, const T& v) noexcept;

    // Copies column c out (resized to rows()) or in (v must have rows() entries).
    int get_col(std::size_t c, orv::dense1D<T, 8>& v) const noexcept;
    int set_col(std::size_t c, const orv::dense1D<T, 8>& v) noexcept;

    // Sets every value of the view.
    int fill(const T& v) noexcept;
    // Deep copy of o into a new proxy of this object (o is left as it is). Returns 0 or
    // -199, in which case this matrix is unchanged.
    int copy(const dense2D_OOC& o) noexcept;
    // Appends the columns of o (same number of rows, or this empty) as a new proxy.
    // Returns 0, -101 on a row count mismatch, -199.
    int push_back(const dense2D_OOC& o) noexcept;
    // Appends n columns set to v.
    int push_back_n(std::size_t n, const T& v) noexcept;
    // Removes the last n columns of this view (all when n is larger).
    void pop_back(std::size_t n) noexcept;
    // Empty matrix, proxy let go.
    void clear() noexcept {
        proxy_.reset();
        rows_ = cols_ = start_ = 0;
    }
    void clear_hard() noexcept { clear(); }

private:
    // Proxy of `rows x cols` values in memory, filled with v.
    static Ptr<proxy_type> make_proxy(std::size_t rows, std::size_t cols, const T& v, const Ptr<OOC_mgr>& mgr) noexcept;
    // Makes column c resident and gives its address, null when it cannot be.
    T* col_ptr(std::size_t c) noexcept {
        if (c >= cols_) return nullptr;
        if (T* p = col(c)) return p;
        return window(c, 1) == 0 ? col(c) : nullptr;
    }

    Ptr<proxy_type> proxy_;
    std::size_t rows_ = 0;
    std::size_t cols_ = 0;
    std::size_t start_ = 0;
};

extern template class dense2D_OOC<double>;
extern template class dense2D_OOC<std::complex<double>>;

}  // namespace core
}  // namespace orv
