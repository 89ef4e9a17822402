// Reference domains of the element shapes for the element tests: random interior
// points and exact integrals of monomials.
#pragma once

#include <random>

namespace elements_test {

enum class domain { edge, triangle, quad, tetra, pyramid, wedge, hexa };

// The domain of a shape, from its element_type value.
constexpr domain domain_of(unsigned element_type_value) {
    return element_type_value <= 4    ? domain::edge
           : element_type_value <= 8  ? domain::triangle
           : element_type_value <= 11 ? domain::quad
           : element_type_value <= 15 ? domain::tetra
           : element_type_value <= 18 ? domain::pyramid
           : element_type_value <= 21 ? domain::wedge
                                      : domain::hexa;
}

// A point strictly inside the domain (the pyramid's points stay below zeta = 0.8, away
// from the apex where the rational shapes are singular).
inline void sample(domain d, std::mt19937& rng, double* x) {
    std::uniform_real_distribution<double> u(0.02, 0.98), s(-0.98, 0.98);
    x[0] = x[1] = x[2] = 0.0;
    switch (d) {
        case domain::edge: x[0] = s(rng); break;
        case domain::quad: x[0] = s(rng), x[1] = s(rng); break;
        case domain::hexa: x[0] = s(rng), x[1] = s(rng), x[2] = s(rng); break;
        case domain::triangle:
        case domain::wedge: {
            double a = u(rng), b = u(rng);
            if (a + b > 1.0) a = 1.0 - a, b = 1.0 - b;
            x[0] = a, x[1] = b;
            if (d == domain::wedge) x[2] = s(rng);
            break;
        }
        case domain::tetra: {
            double a, b, c;
            do a = u(rng), b = u(rng), c = u(rng);
            while (a + b + c > 0.98);
            x[0] = a, x[1] = b, x[2] = c;
            break;
        }
        case domain::pyramid: {
            const double z = 0.8 * u(rng);
            x[0] = (1.0 - z) * s(rng), x[1] = (1.0 - z) * s(rng), x[2] = z;
            break;
        }
    }
}

inline double factorial(unsigned n) {
    double f = 1.0;
    for (unsigned k = 2; k <= n; ++k) f *= k;
    return f;
}

// Integral of t^a on [-1, 1].
inline double edge_integral(unsigned a) { return a % 2 ? 0.0 : 2.0 / (a + 1); }

// Integral of xi^a eta^b over the triangle xi, eta >= 0, xi + eta <= 1.
inline double triangle_integral(unsigned a, unsigned b) { return factorial(a) * factorial(b) / factorial(a + b + 2); }

// Integral of xi^a eta^b zeta^c over the unit tetrahedron.
inline double tetra_integral(unsigned a, unsigned b, unsigned c) {
    return factorial(a) * factorial(b) * factorial(c) / factorial(a + b + c + 3);
}

// Integral of xi^a eta^b zeta^c over the pyramid: at height zeta the section is the
// square [-(1 - zeta), 1 - zeta]^2, so the integral is
// E(a) E(b) * int_0^1 zeta^c (1 - zeta)^(a + b + 2).
inline double pyramid_integral(unsigned a, unsigned b, unsigned c) {
    const unsigned m = a + b + 2;
    return edge_integral(a) * edge_integral(b) * factorial(c) * factorial(m) / factorial(c + m + 1);
}

}  // namespace elements_test
