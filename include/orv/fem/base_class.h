// Root of every public handle: one counted pointer to an engine object.
#pragma once

#include <typeinfo>

#include <orvmath1/ref_counted.h>

namespace orv {
namespace fem {

/// A handle holds one pointer to an engine object and shares it on copy.
/// The pointer passed to set_w (and returned by get_w) is always the address of
/// the object's ref_counted part, i.e. static_cast<ref_counted*>(engine).
/// Every change of pointee takes the new reference before it drops the old one,
/// so that `a = a` and aliasing are safe.
class base_class {
public:
    /// Drops this handle's reference; the last one destroys the engine object.
    virtual ~base_class();

    /// Shares other's engine object (the new reference is taken first).
    base_class& operator=(const base_class& other);

    /// Replaces the pointee (increment first); null clears.
    void set_w(void* w);
    /// Drops the pointee; the handle becomes empty.
    void clear_w();
    /// True when the handle holds an engine object.
    bool is_valid() const { return w_ != nullptr; }
    /// The untyped engine pointer (address of its ref_counted part), or null.
    void* get_w() const { return w_; }

protected:
    base_class() = default;
    /// Takes a reference on w (the address of its ref_counted part); null gives an
    /// empty handle.
    explicit base_class(void* w);
    /// Shares other's engine object.
    base_class(const base_class& other);

    /// The engine object as its counted root, or null.
    ref_counted* engine_root() const { return static_cast<ref_counted*>(w_); }

private:
    void* w_ = nullptr;
};

}  // namespace fem
}  // namespace orv

/// Identity members of a concrete handle class X whose engine class is Engine
/// (Engine may be an incomplete, forward-declared class here). Put it in the public
/// part of the class declaration:
///   class DOFs_mgr : public base_class {
///   public:
///       ORV_FEM_HANDLE(DOFs_mgr, core::DOFs_mgr)
///       DOFs_mgr();
///       ...
///   };
/// It declares sharing copy and move (a moved-from handle keeps its share), the
/// narrowing constructor from any handle, type_id(), obj_type_id() and a typed
/// engine accessor. Define them in the .cpp with ORV_FEM_HANDLE_IMPL.
#define ORV_FEM_HANDLE(X, Engine)                                           \
    X(const X&) = default;                                                  \
    X(X&&) = default;                                                       \
    X& operator=(const X&) = default;                                       \
    X& operator=(X&&) = default;                                            \
    ~X() override = default;                                                \
    /* Narrowing: a pointee that is not an Engine gives an empty handle. */ \
    explicit X(const ::orv::fem::base_class& other);                        \
    /* Type record of the engine class of this handle class. */             \
    static const std::type_info& type_id();                                 \
    /* Type record of the pointee; type_id() when the handle is empty. */   \
    virtual const std::type_info& obj_type_id() const;                      \
    /* The engine object, or null. */                                       \
    Engine* engine() const;

/// Definitions for ORV_FEM_HANDLE. Base is the direct base handle class of X
/// (base_class, solver_base, ...), which must have an accessible default
/// constructor. Engine must be complete here and derive from ref_counted
/// without virtual inheritance.
#define ORV_FEM_HANDLE_IMPL(X, Base, Engine)                                                \
    X::X(const ::orv::fem::base_class& other) : Base() {                                    \
        Engine* e = dynamic_cast<Engine*>(static_cast<::orv::ref_counted*>(other.get_w())); \
        set_w(static_cast<::orv::ref_counted*>(e));                                         \
    }                                                                                       \
    const std::type_info& X::type_id() { return typeid(Engine); }                           \
    const std::type_info& X::obj_type_id() const {                                          \
        const ::orv::ref_counted* p = engine_root();                                        \
        return p ? typeid(*p) : type_id();                                                  \
    }                                                                                       \
    Engine* X::engine() const { return static_cast<Engine*>(engine_root()); }
