#include "linalg/dense2D_OOC.h"
#include <orv/fem/error_type.h>

namespace orv {
namespace core {

template <class T>
Ptr<dense2D_proxy_data<T>> dense2D_OOC<T>::make_proxy(std::size_t rows, std::size_t cols, const T& v,
                                                      const Ptr<OOC_mgr>& mgr) noexcept {
    Ptr<proxy_type> px(new (std::nothrow) proxy_type());
    if (!px) return px;
    orv::dense2D<T> w;
    if (!w.resize(rows, cols, v) || w.rows() != rows || w.cols() != cols) return Ptr<proxy_type>();
    try {
        px->written.assign(cols, false);
    } catch (...) {
        return Ptr<proxy_type>();
    }
    px->rows = rows;
    px->columns = cols;
    px->first_resident = 0;
    px->min_columns = 1;
    px->cache = w;
    px->window = w;
    px->n_resident = cols;
    px->fill_value = v;
    px->budget_bytes = std::uint64_t(rows) * cols * sizeof(T);
    // Small matrices live in memory without a manager. The disk side is not there yet:
    // a larger one keeps the manager for the budget but stays fully resident.
    if (std::uint64_t(rows) * cols > 128) px->mgr = mgr;
    return px;
}

template <class T>
int dense2D_OOC<T>::init(std::size_t rows, std::size_t cols, const T& fill_value, const Ptr<OOC_mgr>& mgr) noexcept {
    if (cols != 0 && rows > std::size_t(-1) / sizeof(T) / cols) return fem::error_memory;
    Ptr<proxy_type> px = make_proxy(rows, cols, fill_value, mgr);
    if (!px) {
        clear();
        return fem::error_memory;
    }
    proxy_ = px;
    rows_ = rows;
    cols_ = cols;
    start_ = 0;
    return 0;
}

template <class T>
int dense2D_OOC<T>::init(const orv::dense2D<T>& values, const Ptr<OOC_mgr>& mgr) noexcept {
    Ptr<proxy_type> px(new (std::nothrow) proxy_type());
    if (!px) return fem::error_memory;
    try {
        px->written.assign(values.cols(), false);
    } catch (...) {
        return fem::error_memory;
    }
    px->rows = values.rows();
    px->columns = values.cols();
    px->cache = values;
    px->window = values;
    px->n_resident = values.cols();
    px->budget_bytes = std::uint64_t(values.rows()) * values.cols() * sizeof(T);
    if (std::uint64_t(values.rows()) * values.cols() > 128) px->mgr = mgr;
    proxy_ = px;
    rows_ = values.rows();
    cols_ = values.cols();
    start_ = 0;
    return 0;
}

template <class T>
bool dense2D_OOC<T>::force_incore() noexcept {
    if (!proxy_) return true;
    if (!proxy_->all_resident()) return false;  // no disk side yet: a spilled matrix cannot come back
    proxy_->min_columns = proxy_->columns ? proxy_->columns : 1;
    return true;
}

template <class T>
int dense2D_OOC<T>::window(std::size_t c, std::size_t n) noexcept {
    if (c > cols_ || (c == cols_ && cols_ != 0)) return fem::error_data;
    if (n > cols_ - c) n = cols_ - c;
    if (!proxy_ || n == 0) return 0;
    const std::uint64_t g0 = start_ + c, g1 = g0 + n;
    if (g0 >= proxy_->first_resident && g1 <= proxy_->first_resident + proxy_->n_resident) return 0;
    return fem::error_internal;  // columns outside the window need the disk side
}

template <class T>
orv::dense2D<T> dense2D_OOC<T>::as_raw_matrix() const noexcept {
    if (!proxy_ || rows_ == 0 || cols_ == 0) return orv::dense2D<T>();
    const std::uint64_t r0 = proxy_->first_resident, r1 = r0 + proxy_->n_resident;
    const std::uint64_t a = std::max<std::uint64_t>(start_, r0), b = std::min<std::uint64_t>(start_ + cols_, r1);
    if (a >= b) return orv::dense2D<T>();
    return proxy_->window.sub_matrix(0, std::size_t(a - r0), rows_, std::size_t(b - a));
}

template <class T>
int dense2D_OOC<T>::get_val(std::size_t i, std::size_t j, T& v) const noexcept {
    v = T();
    if (i >= rows_ || j >= cols_) return fem::error_data;
    const T* p = const_cast<dense2D_OOC*>(this)->col_ptr(j);
    if (!p) return fem::error_internal;
    v = p[i];
    return 0;
}

template <class T>
int dense2D_OOC<T>::set_val(std::size_t i, std::size_t j, const T& v) noexcept {
    if (i >= rows_ || j >= cols_) return fem::error_data;
    T* p = col_ptr(j);
    if (!p) return fem::error_internal;
    p[i] = v;
    proxy_->read_only = false;
    return 0;
}

template <class T>
int dense2D_OOC<T>::add_val(std::size_t i, std::size_t j, const T& v) noexcept {
    if (i >= rows_ || j >= cols_) return fem::error_data;
    T* p = col_ptr(j);
    if (!p) return fem::error_internal;
    p[i] += v;
    proxy_->read_only = false;
    return 0;
}

template <class T>
int dense2D_OOC<T>::get_col(std::size_t c, orv::dense1D<T, 8>& v) const noexcept {
    if (c >= cols_) return fem::error_data;
    const T* p = const_cast<dense2D_OOC*>(this)->col_ptr(c);
    if (!p) return fem::error_internal;
    if (!v.resize(rows_)) return fem::error_memory;
    std::copy(p, p + rows_, v.data());
    return 0;
}

template <class T>
int dense2D_OOC<T>::set_col(std::size_t c, const orv::dense1D<T, 8>& v) noexcept {
    if (c >= cols_ || v.size() != rows_) return fem::error_data;
    T* p = col_ptr(c);
    if (!p) return fem::error_internal;
    std::copy(v.data(), v.data() + rows_, p);
    proxy_->read_only = false;
    return 0;
}

template <class T>
int dense2D_OOC<T>::fill(const T& v) noexcept {
    for (std::size_t c = 0; c < cols_; ++c) {
        T* p = col_ptr(c);
        if (!p) return fem::error_internal;
        std::fill(p, p + rows_, v);
    }
    if (proxy_) proxy_->read_only = false;
    return 0;
}

template <class T>
int dense2D_OOC<T>::copy(const dense2D_OOC& o) noexcept {
    if (this == &o) return 0;
    const dense2D_OOC src(o);  // keeps o's proxy alive whatever happens to ours
    Ptr<proxy_type> px = make_proxy(src.rows_, src.cols_, src.proxy_ ? src.proxy_->fill_value : T(),
                                    src.proxy_ ? src.proxy_->mgr : Ptr<OOC_mgr>());
    if (!px) return fem::error_memory;
    for (std::size_t c = 0; c < src.cols_; ++c) {
        const T* s = const_cast<dense2D_OOC&>(src).col_ptr(c);
        if (!s) return fem::error_internal;
        std::copy(s, s + src.rows_, px->window.col(c));
    }
    proxy_ = px;
    rows_ = src.rows_;
    cols_ = src.cols_;
    start_ = 0;
    return 0;
}

template <class T>
int dense2D_OOC<T>::push_back(const dense2D_OOC& o) noexcept {
    if (o.cols_ == 0) return 0;
    if (cols_ != 0 && o.rows_ != rows_) return fem::error_data;
    const dense2D_OOC src(o);  // o may be this very object
    const std::size_t rows = src.rows_, old = cols_;
    Ptr<proxy_type> px =
        make_proxy(rows, old + src.cols_, proxy_ ? proxy_->fill_value : T(), proxy_ ? proxy_->mgr : src.proxy_->mgr);
    if (!px) return fem::error_memory;
    for (std::size_t c = 0; c < old; ++c) {
        const T* s = col_ptr(c);
        if (!s) return fem::error_internal;
        std::copy(s, s + rows, px->window.col(c));
    }
    for (std::size_t c = 0; c < src.cols_; ++c) {
        const T* s = const_cast<dense2D_OOC&>(src).col_ptr(c);
        if (!s) return fem::error_internal;
        std::copy(s, s + rows, px->window.col(old + c));
    }
    proxy_ = px;
    rows_ = rows;
    cols_ = old + src.cols_;
    start_ = 0;
    return 0;
}

template <class T>
int dense2D_OOC<T>::push_back_n(std::size_t n, const T& v) noexcept {
    if (n == 0) return 0;
    dense2D_OOC extra;
    if (extra.init(rows_, n, v, proxy_ ? proxy_->mgr : Ptr<OOC_mgr>())) return fem::error_memory;
    return push_back(extra);
}

template <class T>
void dense2D_OOC<T>::pop_back(std::size_t n) noexcept {
    if (n > cols_) n = cols_;
    cols_ -= n;  // the proxy keeps its columns: other views on it stay whole
}

template class dense2D_OOC<double>;
template class dense2D_OOC<std::complex<double>>;

}  // namespace core
}  // namespace orv
