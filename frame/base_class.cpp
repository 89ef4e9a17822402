// Counting rules of the public handle root.
#include <orv/fem/base_class.h>

namespace orv {
namespace fem {

base_class::base_class(void* w) : w_(w) {
    if (w_) engine_root()->add_ref();
}

base_class::base_class(const base_class& other) : w_(other.w_) {
    if (w_) engine_root()->add_ref();
}

base_class::~base_class() { clear_w(); }

base_class& base_class::operator=(const base_class& other) {
    set_w(other.w_);
    return *this;
}

void base_class::set_w(void* w) {
    if (w) static_cast<ref_counted*>(w)->add_ref();
    ref_counted* old = engine_root();
    w_ = w;
    if (old) old->release();
}

void base_class::clear_w() {
    ref_counted* old = engine_root();
    w_ = nullptr;
    if (old) old->release();
}

}  // namespace fem
}  // namespace orv
