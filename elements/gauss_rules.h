// Numerical integration rules on the reference domains of the element shapes.
//
// Each rule family is a stateless type. A family with one size parameter keeps all its
// rules in one flat table (point i of rule n at start(n) + i); the product families
// (quadrilateral, hexahedron, wedge) combine the edge and triangle rules. A point's
// identifier is its index in the rule plus the family base.
#pragma once

#include "elements/local_point.h"

namespace elfes {

namespace gauss_tables {

// Gauss-Legendre on [-1, 1], n = 1 to 6: the centre first if any, then the pairs
// (-a, +a) from the inside out.
inline constexpr double edge_abscissa[21] = {0.0,
                                             -0.577350269189626,
                                             0.577350269189626,
                                             0.0,
                                             -0.774596669241483,
                                             0.774596669241483,
                                             -0.339981043584856,
                                             0.339981043584856,
                                             -0.861136311594053,
                                             0.861136311594053,
                                             0.0,
                                             -0.538469310105683,
                                             0.538469310105683,
                                             -0.906179845938664,
                                             0.906179845938664,
                                             -0.238619186083197,
                                             0.238619186083197,
                                             -0.661209386466265,
                                             0.661209386466265,
                                             -0.932469514203152,
                                             0.932469514203152};

inline constexpr double edge_weight[21] = {2.0,
                                           1.0,
                                           1.0,
                                           0.888888888888889,
                                           0.555555555555556,
                                           0.555555555555556,
                                           0.652145154862546,
                                           0.652145154862546,
                                           0.347854845137454,
                                           0.347854845137454,
                                           0.568888888888889,
                                           0.478628670499366,
                                           0.478628670499366,
                                           0.236926885056189,
                                           0.236926885056189,
                                           0.467913934572691,
                                           0.467913934572691,
                                           0.360761573048139,
                                           0.360761573048139,
                                           0.171324492379170,
                                           0.171324492379170};

// Triangle xi, eta >= 0, xi + eta <= 1; n = 1, 3, 4, 6, 7; weights sum to the area 0.5.
constexpr double t3 = 1.0 / 3.0, t6 = 1.0 / 6.0;
constexpr double ta = 0.445948490915965, tb = 0.10810301816807;
constexpr double tc = 0.091576213509771, td = 0.816847572980459;
constexpr double te = 0.470142064105115, tf = 0.05971587178977;
constexpr double tg = 0.101286507323456, th = 0.797426985353088;

inline constexpr double faceT_xi[21] = {t3, t6, 2.0 / 3.0, t6, t3, 0.2, 0.6, 0.2, ta, tb, ta,
                                        tc, td, tc,        t3, te, tf,  te,  tg,  th, tg};
inline constexpr double faceT_eta[21] = {t3, t6, t6, 2.0 / 3.0, t3, 0.2, 0.2, 0.6, ta, ta, tb,
                                         tc, tc, td, t3,        te, te,  tf,  tg,  tg, th};
inline constexpr double faceT_weight[21] = {0.5,
                                            t6,
                                            t6,
                                            t6,
                                            -0.28125,
                                            0.260416666666667,
                                            0.260416666666667,
                                            0.260416666666667,
                                            0.111690794839005,
                                            0.111690794839005,
                                            0.111690794839005,
                                            0.054975871827661,
                                            0.054975871827661,
                                            0.054975871827661,
                                            0.1125,
                                            0.066197076394253,
                                            0.066197076394253,
                                            0.066197076394253,
                                            0.062969590272413,
                                            0.062969590272413,
                                            0.062969590272413};

// Tetrahedron; n = 1, 4, 5, 11; table weights sum to 1 (scaled by the volume 1/6).
constexpr double q4 = 0.25;
constexpr double qa = 0.585410196624969, qb = 0.138196601125011;
constexpr double qc = 0.785714285714286, qd = 0.0714285714285714;
constexpr double qe = 0.100596423833201, qf = 0.399403576166799;

inline constexpr double tetra_xi[21] = {q4, qa, qb, qb, qb, q4, 0.5, t6, t6, t6, q4,
                                        qc, qd, qd, qd, qe, qf, qf,  qf, qe, qe};
inline constexpr double tetra_eta[21] = {q4, qb, qb, qb, qa, q4, t6, 0.5, t6, t6, q4,
                                         qd, qd, qd, qc, qf, qe, qf, qe,  qf, qe};
inline constexpr double tetra_zeta[21] = {q4, qb, qb, qa, qb, q4, t6, t6, 0.5, t6, q4,
                                          qd, qd, qc, qd, qf, qf, qe, qe, qe,  qf};
inline constexpr double tetra_weight[21] = {1.0,
                                            0.25,
                                            0.25,
                                            0.25,
                                            0.25,
                                            -0.8,
                                            0.45,
                                            0.45,
                                            0.45,
                                            0.45,
                                            -0.0789333333333333,
                                            0.0457333333333333,
                                            0.0457333333333333,
                                            0.0457333333333333,
                                            0.0457333333333333,
                                            0.149333333333333,
                                            0.149333333333333,
                                            0.149333333333333,
                                            0.149333333333333,
                                            0.149333333333333,
                                            0.149333333333333};

// Pyramid (base [-1, 1]^2 at zeta = 0, apex (0, 0, 1)); n = 1, 8, 27; table weights
// sum to 1 (scaled by the volume 4/3). The 8- and 27-point rules are layers in zeta,
// each a tensor grid in (xi, eta) with xi running fastest.
// 2 x 2 layers: one weight per point.
inline constexpr double pyramid8_zeta[2] = {0.122514822655441, 0.544151844011225};
inline constexpr double pyramid8_a[2] = {0.506616303349787, 0.263184055569714};
inline constexpr double pyramid8_weight[2] = {0.174410588440131, 0.075589411559869};

// 3 x 3 layers: (p, q, p / q, s, q / p, q, p) with corners p, edges q, centre s.
inline constexpr double pyramid27_zeta[3] = {0.0729940240731498, 0.347003766038352, 0.705002209888498};
inline constexpr double pyramid27_a[3] = {0.718055741319889, 0.505808707853925, 0.228504305653967};
inline constexpr double pyramid27_pqs[3][3] = {{0.036374157653909, 0.0581986522462543, 0.0931178435940069},
                                               {0.0338533030694135, 0.0541652849110615, 0.0866644558576984},
                                               {0.00693303310383813, 0.011092852966141, 0.0177485647458256}};

struct pyramid_flat {
    double xi[36], eta[36], zeta[36], weight[36];
};

constexpr pyramid_flat make_pyramid_flat() {
    pyramid_flat t{};
    t.xi[0] = 0.0;
    t.eta[0] = 0.0;
    t.zeta[0] = 0.25;
    t.weight[0] = 1.0;
    unsigned k = 1;
    for (unsigned layer = 0; layer < 2; ++layer)
        for (unsigned j = 0; j < 2; ++j)
            for (unsigned i = 0; i < 2; ++i, ++k) {
                const double a = pyramid8_a[layer];
                t.xi[k] = i == 0 ? -a : a;
                t.eta[k] = j == 0 ? -a : a;
                t.zeta[k] = pyramid8_zeta[layer];
                t.weight[k] = pyramid8_weight[layer];
            }
    for (unsigned layer = 0; layer < 3; ++layer)
        for (unsigned j = 0; j < 3; ++j)
            for (unsigned i = 0; i < 3; ++i, ++k) {
                const double a = pyramid27_a[layer];
                const double* pqs = pyramid27_pqs[layer];
                t.xi[k] = i == 0 ? -a : (i == 1 ? 0.0 : a);
                t.eta[k] = j == 0 ? -a : (j == 1 ? 0.0 : a);
                t.zeta[k] = pyramid27_zeta[layer];
                // corner p, edge middle q, centre s
                const unsigned centred = (i == 1 ? 1u : 0u) + (j == 1 ? 1u : 0u);
                t.weight[k] = pqs[centred];
            }
    return t;
}

inline constexpr pyramid_flat pyramid = make_pyramid_flat();

}  // namespace gauss_tables

// Gauss-Legendre on the edge [-1, 1]: n = 1 to 6 points.
struct Gauss_edge {
    static constexpr unsigned base_ID = 100;
    static constexpr unsigned dim = 1;
    static constexpr bool is_rule(unsigned n) { return n >= 1 && n <= 6; }
    static constexpr unsigned start(unsigned n) { return (n - 1) * n / 2; }
    // Point i of the n-point rule; an unknown rule or index gives a zero-weight point.
    static constexpr local_point point(unsigned n, unsigned i) {
        if (!is_rule(n) || i >= n) return local_point();
        const unsigned k = start(n) + i;
        return local_point(base_ID + i, gauss_tables::edge_weight[k], gauss_tables::edge_abscissa[k]);
    }
};

// Triangle rules: n = 1, 3, 4, 6, 7 points; weights sum to 0.5.
struct Gauss_faceT {
    static constexpr unsigned base_ID = 200;
    static constexpr unsigned dim = 2;
    static constexpr bool is_rule(unsigned n) { return n == 1 || n == 3 || n == 4 || n == 6 || n == 7; }
    static constexpr unsigned start(unsigned n) { return n == 1 ? 0 : n == 3 ? 1 : n == 4 ? 4 : n == 6 ? 8 : 14; }
    static constexpr local_point point(unsigned n, unsigned i) {
        if (!is_rule(n) || i >= n) return local_point();
        const unsigned k = start(n) + i;
        return local_point(base_ID + i, gauss_tables::faceT_weight[k], gauss_tables::faceT_xi[k],
                           gauss_tables::faceT_eta[k]);
    }
};

// Tetrahedron rules: n = 1, 4, 5, 11 points; weights sum to the volume 1/6.
struct Gauss_tetra {
    static constexpr unsigned base_ID = 400;
    static constexpr unsigned dim = 3;
    static constexpr bool is_rule(unsigned n) { return n == 1 || n == 4 || n == 5 || n == 11; }
    static constexpr unsigned start(unsigned n) { return n == 1 ? 0 : n == 4 ? 1 : n == 5 ? 5 : 10; }
    static constexpr local_point point(unsigned n, unsigned i) {
        if (!is_rule(n) || i >= n) return local_point();
        const unsigned k = start(n) + i;
        return local_point(base_ID + i, gauss_tables::tetra_weight[k] * (1.0 / 6.0), gauss_tables::tetra_xi[k],
                           gauss_tables::tetra_eta[k], gauss_tables::tetra_zeta[k]);
    }
};

// Pyramid rules: n = 1, 8, 27 points; weights sum to the volume 4/3.
// The base 500 is shared with the wedge rules: an identifier names a point only
// together with the element's shape.
struct Gauss_pyramid {
    static constexpr unsigned base_ID = 500;
    static constexpr unsigned dim = 3;
    static constexpr bool is_rule(unsigned n) { return n == 1 || n == 8 || n == 27; }
    static constexpr unsigned start(unsigned n) { return n == 1 ? 0 : n == 8 ? 1 : 9; }
    static constexpr local_point point(unsigned n, unsigned i) {
        if (!is_rule(n) || i >= n) return local_point();
        const unsigned k = start(n) + i;
        return local_point(base_ID + i, gauss_tables::pyramid.weight[k] * (4.0 / 3.0), gauss_tables::pyramid.xi[k],
                           gauss_tables::pyramid.eta[k], gauss_tables::pyramid.zeta[k]);
    }
};

// Product of two edge rules on [-1, 1]^2: xi index = i mod n1 (fastest), eta = i div n1.
struct Gauss_faceQ {
    static constexpr unsigned base_ID = 300;
    static constexpr unsigned dim = 2;
    static constexpr bool is_rule(unsigned n1, unsigned n2) {
        return Gauss_edge::is_rule(n1) && Gauss_edge::is_rule(n2);
    }
    static constexpr local_point point(unsigned n1, unsigned n2, unsigned i) {
        if (!is_rule(n1, n2) || i >= n1 * n2) return local_point();
        const local_point a = Gauss_edge::point(n1, i % n1);
        const local_point b = Gauss_edge::point(n2, i / n1);
        return local_point(base_ID + i, a.weight * b.weight, a.coord[0], b.coord[0]);
    }
};

// Product of an edge rule along zeta and a triangle rule: the triangle index
// i mod n_tri runs fastest, the edge index is i div n_tri. Weights sum to 1.
struct Gauss_wedge {
    static constexpr unsigned base_ID = 500;
    static constexpr unsigned dim = 3;
    static constexpr bool is_rule(unsigned n_edge, unsigned n_tri) {
        return Gauss_edge::is_rule(n_edge) && Gauss_faceT::is_rule(n_tri);
    }
    static constexpr local_point point(unsigned n_edge, unsigned n_tri, unsigned i) {
        if (!is_rule(n_edge, n_tri) || i >= n_edge * n_tri) return local_point();
        const local_point t = Gauss_faceT::point(n_tri, i % n_tri);
        const local_point e = Gauss_edge::point(n_edge, i / n_tri);
        return local_point(base_ID + i, t.weight * e.weight, t.coord[0], t.coord[1], e.coord[0]);
    }
};

// Product of three edge rules on [-1, 1]^3: xi = i mod n1, eta = (i div n1) mod n2,
// zeta = i div (n1 n2).
struct Gauss_hexa {
    static constexpr unsigned base_ID = 700;
    static constexpr unsigned dim = 3;
    static constexpr bool is_rule(unsigned n1, unsigned n2, unsigned n3) {
        return Gauss_edge::is_rule(n1) && Gauss_edge::is_rule(n2) && Gauss_edge::is_rule(n3);
    }
    static constexpr local_point point(unsigned n1, unsigned n2, unsigned n3, unsigned i) {
        if (!is_rule(n1, n2, n3) || i >= n1 * n2 * n3) return local_point();
        const local_point a = Gauss_edge::point(n1, i % n1);
        const local_point b = Gauss_edge::point(n2, (i / n1) % n2);
        const local_point c = Gauss_edge::point(n3, i / (n1 * n2));
        return local_point(base_ID + i, a.weight * b.weight * c.weight, a.coord[0], b.coord[0], c.coord[0]);
    }
};

}  // namespace elfes
