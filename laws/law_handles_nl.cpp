// Public handles of the non-linear elastic 1-D laws and the asymmetric plastic pairs.
#include <orv/fem/context.h>
#include <orv/fem/law_scalar_nl.h>

#include "frame/raw_handle.h"
#include "laws/law_handle_impl.h"
#include "laws/law_scalar_nl.h"

namespace orv {
namespace fem {

namespace {

// d followed by the two columns of table (abscissas, then ordinates) into law.
int init_with_table(law_base& law, dense1D<double> d, const dense2D<double>& table) {
    if (!law.get_w()) return -1;
    if (table.cols() != 2 || table.rows() == 0) return law.init(dense1D<double>());
    for (std::size_t c = 0; c < 2; ++c)
        for (std::size_t r = 0; r < table.rows(); ++r)
            if (!d.push_back(table(r, c))) return error_memory;
    return law.init(d);
}

// The two sides of a pair: -101 for an empty pair handle.
template <class Side>
error_type set_sides(core::law_scalar_ep_unsym* pair, const Side& traction, const Side& compression) {
    if (!pair) return error_data;
    pair->set_laws(Ptr<core::law_scalar_ep>(traction.engine()), Ptr<core::law_scalar_ep>(compression.engine()));
    return no_error;
}

template <class Side>
Side side_of(const core::law_scalar_ep_unsym* pair, bool traction) {
    if (!pair) return Side();
    const Ptr<core::law_scalar_ep>& p = traction ? pair->traction_law() : pair->compression_law();
    return p ? Side(detail::raw_handle(static_cast<ref_counted*>(p.get()))) : Side();
}

}  // namespace

ORV_FEM_LAW_HANDLE_IMPL(law_scalar_pow, law_scalar)
int law_scalar_pow::init(double a, double b) { return law_base::init(detail::law_values({a, b})); }
int law_scalar_pow::init(double a, double b, double c, double lower, double upper) {
    return law_base::init(detail::law_values({a, b, c, lower, upper}));
}

ORV_FEM_LAW_HANDLE_IMPL(law_scalar_nl, law_scalar)
int law_scalar_nl::init(const dense2D<double>& table, double low, double high) {
    const int rc = init_with_table(*this, dense1D<double>(), table);
    if (rc == 0 && engine()) engine()->set_limits(low, high);
    return rc;
}

ORV_FEM_LAW_HANDLE_IMPL(law_rod_nl, law_rod)
int law_rod_nl::init(double E, double area, double alpha, const dense2D<double>& table) {
    return init_with_table(*this, detail::law_values({E, area, alpha, 0.0}), table);
}

#define ORV_FEM_UNSYM_IMPL(X, Side)                                        \
    ORV_FEM_LAW_HANDLE_IMPL(X, law_scalar)                                 \
    error_type X::init(const Side& traction, const Side& compression) {    \
        return set_sides(engine(), traction, compression);                 \
    }                                                                      \
    Side X::traction_law() const { return side_of<Side>(engine(), true); } \
    Side X::compression_law() const { return side_of<Side>(engine(), false); }
ORV_FEM_UNSYM_IMPL(law_scalar_ep_perfect_unsym, law_scalar_ep_perfect)
ORV_FEM_UNSYM_IMPL(law_scalar_ep_piecewise_linear_unsym, law_scalar_ep_piecewise_linear)
#undef ORV_FEM_UNSYM_IMPL

}  // namespace fem
}  // namespace orv
