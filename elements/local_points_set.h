// Compile-time point sets: one rule of a family with its size fixed as template
// arguments. A set is a table built once, at compile time; a server copies it and
// tabulates its shape functions at those points.
#pragma once

#include <array>

#include "elements/gauss_rules.h"

namespace elfes {

namespace points_detail {

template <class Rule, unsigned N>
constexpr std::array<local_point, N> table1() {
    std::array<local_point, N> t{};
    for (unsigned i = 0; i < N; ++i) t[i] = Rule::point(N, i);
    return t;
}

template <class Rule, unsigned N1, unsigned N2>
constexpr std::array<local_point, N1 * N2> table2() {
    std::array<local_point, N1 * N2> t{};
    for (unsigned i = 0; i < N1 * N2; ++i) t[i] = Rule::point(N1, N2, i);
    return t;
}

template <class Rule, unsigned N1, unsigned N2, unsigned N3>
constexpr std::array<local_point, N1 * N2 * N3> table3() {
    std::array<local_point, N1 * N2 * N3> t{};
    for (unsigned i = 0; i < N1 * N2 * N3; ++i) t[i] = Rule::point(N1, N2, N3, i);
    return t;
}

}  // namespace points_detail

// One rule of a single-size family: Gauss_edge, Gauss_faceT, Gauss_tetra, Gauss_pyramid.
template <class Rule, unsigned N>
struct local_points_set {
    static_assert(Rule::is_rule(N), "the rule family has no rule of this size");
    using rule_type = Rule;
    static constexpr unsigned dim = Rule::dim;
    static constexpr unsigned size = N;
    static constexpr std::array<local_point, N> points = points_detail::table1<Rule, N>();
    static constexpr const local_point& point(unsigned index) { return points[index]; }
};

// Product of two rules: Gauss_faceQ (n1 along xi, n2 along eta) and Gauss_wedge
// (n1 along zeta, n2 the triangle rule).
template <class Rule, unsigned N1, unsigned N2>
struct local_points_set_prod2 {
    static_assert(Rule::is_rule(N1, N2), "the rule family has no rule of these sizes");
    using rule_type = Rule;
    static constexpr unsigned dim = Rule::dim;
    static constexpr unsigned size = N1 * N2;
    static constexpr std::array<local_point, N1* N2> points = points_detail::table2<Rule, N1, N2>();
    static constexpr const local_point& point(unsigned index) { return points[index]; }
};

// Product of three edge rules: Gauss_hexa.
template <class Rule, unsigned N1, unsigned N2, unsigned N3>
struct local_points_set_prod3 {
    static_assert(Rule::is_rule(N1, N2, N3), "the rule family has no rule of these sizes");
    using rule_type = Rule;
    static constexpr unsigned dim = Rule::dim;
    static constexpr unsigned size = N1 * N2 * N3;
    static constexpr std::array<local_point, N1* N2* N3> points = points_detail::table3<Rule, N1, N2, N3>();
    static constexpr const local_point& point(unsigned index) { return points[index]; }
};

}  // namespace elfes
