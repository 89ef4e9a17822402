// Root of the public material laws: the data vector and per-element data.
#pragma once

#include <cstddef>

#include <orv/fem/base_class.h>
#include <orv/fem/error_type.h>

#include <orvmath1/dense1D.h>

namespace orv {
namespace core {
class law_base;
}
namespace fem {

class context;

/// Handle on a material law; copies share it, and models share laws by reference.
///
/// All the parameters of a law live in one vector of doubles, in the host's units
/// (each law's header lists its values). init returns:
///    0  the data are kept;
///   -1  the number of values is not one the law accepts (the data are then empty),
///       or the handle is empty;
///   -2  a value is not finite: it is stored as 0, the others are kept.
/// Values that make no material (a Poisson ratio of exactly 0.5 for a solid, for
/// instance) are accepted by init and make the evaluations of the law fail instead.
///
/// Per-element data: a law can take other values for one element, or for one point
/// of one element, of the models that use it (element numbers are the global ones of
/// the context's numerical_models_mgr). They must all be set before a run.
class law_base : public base_class {
public:
    ORV_FEM_HANDLE(law_base, core::law_base)

    /// Point value meaning every point of the element.
    static constexpr unsigned all_points = 0xFFFFFFFFu;

    /// A data vector of one value.
    int init(double value);
    /// The data vector: 0, -1 or -2 as above, -199 on memory.
    int init(const dense1D<double>& data);
    /// A copy of the law's data vector, normalised (padded, derived values filled);
    /// empty for an empty handle or a law without data.
    dense1D<double> get_data() const;
    /// The code of the law's last init, the one a constructor ran included (their
    /// codes are otherwise lost): 0, -1 or -2 as above, -199 on memory, 0 when no
    /// init has run; -1 for an empty handle.
    int get_init_code() const;

    /// Gives an element (or one point of it) its own data, checked as init does: -1
    /// for a refused size (or an empty handle), -2 for a value that is not finite
    /// (nothing stored), -199 on memory. Data equal to the law's own store nothing.
    /// A law that has no data yet takes them as its own (init). Not thread safe.
    int set_element_by_element(unsigned element, const dense1D<double>& data);
    /// The same for one point of the element.
    int set_element_by_element(unsigned element, unsigned point, const dense1D<double>& data);
    /// True when the element (or that point of it) has data of its own.
    bool has_element_data(unsigned element, unsigned point = all_points) const;
    /// Room for n per-element entries; false on memory or for an empty handle.
    bool reserve_elements(std::size_t n);
    /// Bounds of the values the law accepts; the whole range of doubles by default.
    void get_limits(double& min, double& max) const;

protected:
    law_base() = default;
};

}  // namespace fem
}  // namespace orv

/// Creation members of a concrete law handle X with engine class Engine:
///   X()                      an empty handle
///   X(ctx)                   create(ctx)
///   X(ctx, data)             create(ctx) then init(data), whose code get_init_code()
///                            gives
///   create(ctx)              a new law: 0, -101 for an empty context, -199 on memory
#define ORV_FEM_LAW_HANDLE(X, Engine)                                \
    ORV_FEM_HANDLE(X, Engine)                                        \
    X();                                                             \
    explicit X(::orv::fem::context& ctx);                            \
    X(::orv::fem::context& ctx, const ::orv::dense1D<double>& data); \
    ::orv::fem::error_type create(::orv::fem::context& ctx);         \
    using law_base::init;
