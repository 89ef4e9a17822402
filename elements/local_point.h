// A point in the reference coordinates of an element: an integration point of a rule,
// or a tying point of an assumed-strain formulation.
#pragma once

namespace elfes {

// Tags of the two constructors that make a point outside any rule.
struct on_triangle_t {};  // identifiers from 200, as the triangle rules
struct on_face_t {};      // identifiers from 350, a face family of its own
constexpr on_triangle_t on_triangle{};
constexpr on_face_t on_face{};

// Identifier, weight and reference coordinates (xi, eta, zeta); the coordinates a
// shape of lower dimension does not use stay 0. The identifier is the index of the
// point in its rule plus the base of the rule family; it names a point together with
// the element's shape (the pyramid and wedge rules share a base).
struct local_point {
    unsigned ID;
    double weight;
    double coord[3];

    constexpr local_point() : ID(0), weight(0.0), coord{0.0, 0.0, 0.0} {}
    constexpr local_point(unsigned id, double w, double xi, double eta = 0.0, double zeta = 0.0)
        : ID(id), weight(w), coord{xi, eta, zeta} {}
    constexpr local_point(on_triangle_t, unsigned index, double w, double xi, double eta)
        : ID(200 + index), weight(w), coord{xi, eta, 0.0} {}
    constexpr local_point(on_face_t, unsigned index, double w, double xi, double eta)
        : ID(350 + index), weight(w), coord{xi, eta, 0.0} {}

    constexpr double xi() const { return coord[0]; }
    constexpr double eta() const { return coord[1]; }
    constexpr double zeta() const { return coord[2]; }
};

}  // namespace elfes
