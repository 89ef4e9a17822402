// Mass physics of the mesh engine: lines, surfaces, solids and axisymmetric sections
// with a density law, and the mass server that integrates rho N_i N_j over one
// element. The density is per unit of the element's own measure: per length on
// edges, per area on faces, per volume on solids and axisymmetric sections (whose
// weight carries 2 pi r).
#pragma once

#include <orv/fem/error_type.h>
#include <orv/fem/matrix_code.h>

#include <cmath>
#include <cstdint>

#include "elements/element_family_table.h"
#include "elements/mesh_kinematics.h"
#include "elements/physics_model_base.h"
#include "elements/shape_table.h"
#include "elements/stiffness_server.h"
#include "laws/law_scalar.h"

namespace orv {
namespace core {

// A physics of one scalar law whose element matrix is a nodal matrix spread on its
// DOF slots: the masses (density, matrix code 2) and the heat physics (conductivity,
// capacity or convection coefficient on the temperature slot, matrix codes 5 and 6).
// It has no strain and no mesh_material: the law is read directly by the server.
class mass_physics : public physics_model_base {
public:
    mass_physics(unsigned family, const Ptr<law_scalar>& density, unsigned matrix_code = fem::matrix_M)
        : physics_model_base(family, family), density_(density), matrix_code_(matrix_code) {
        set_material(Ptr<mesh_material>(), Ptr<ref_counted>(density.get()));
    }
    // The law's value: density, conductivity, capacity or convection coefficient.
    const law_scalar* density() const { return density_.get(); }
    // The matrix the physics answers.
    unsigned matrix_code() const { return matrix_code_; }

private:
    Ptr<law_scalar> density_;
    unsigned matrix_code_;
};

// How a mass physics measures its elements.
enum class mass_measure { line, surface, solid, axi };

// Gradient: the element matrix is w c (grad N_i . grad N_j) (heat conduction) instead
// of w c N_i N_j.
template <unsigned Family, mass_measure Measure, unsigned MatrixCode = fem::matrix_M, bool Gradient = false>
class mass_displacement : public mass_physics {
public:
    static constexpr unsigned family_code = Family;
    static constexpr bool axi = Measure == mass_measure::axi;
    static constexpr bool gradient = Gradient;
    // An axisymmetric section reads its nodes in the (r, z) plane of its two DOF slots;
    // the others use the three coordinates, whatever slots carry the mass.
    static constexpr bool planar = axi;

    explicit mass_displacement(const Ptr<law_scalar>& density) : mass_physics(Family, density, MatrixCode) {}

    template <class Table, unsigned NN>
    static void geometry(const Table& t, unsigned p, const double (*X)[3], point_geometry<NN>& geo) {
        if constexpr (Measure == mass_measure::line)
            line_geometry(t, p, X, geo);
        else if constexpr (Measure == mass_measure::surface)
            surface_geometry(t, p, X, geo);
        else if constexpr (Measure == mass_measure::solid)
            solid_geometry(t, p, X, geo);
        else
            planar_geometry(t, p, X, geo);
    }
};

using mass_displacement_1d = mass_displacement<20000u, mass_measure::line>;
using mass_displacement_2d = mass_displacement<21000u, mass_measure::surface>;
using mass_displacement_3d = mass_displacement<22000u, mass_measure::solid>;
using mass_axi3d = mass_displacement<26000u, mass_measure::axi>;

// Heat: conduction k on the conduction matrix (code 5), capacity c on the capacity
// matrix (code 6), convection h to the surroundings at temperature 0 on the
// conduction side (code 5), all on the temperature slot.
using heat_conduction_1d = mass_displacement<40000u, mass_measure::line, fem::matrix_conduction, true>;
using heat_conduction_2d = mass_displacement<41000u, mass_measure::surface, fem::matrix_conduction, true>;
using heat_conduction_3d = mass_displacement<42000u, mass_measure::solid, fem::matrix_conduction, true>;
using heat_capacity_1d = mass_displacement<50000u, mass_measure::line, fem::matrix_capacity>;
using heat_capacity_2d = mass_displacement<51000u, mass_measure::surface, fem::matrix_capacity>;
using heat_capacity_3d = mass_displacement<52000u, mass_measure::solid, fem::matrix_capacity>;
using heat_convection_1d = mass_displacement<60000u, mass_measure::line, fem::matrix_conduction>;
using heat_convection_2d = mass_displacement<61000u, mass_measure::surface, fem::matrix_conduction>;

// The mass server of one physics, shape and point set: the shape tabulated at the
// points of the mass rule. Read only after construction.
template <class Physics, class Shape, class PointSet, class Formulation = regular_formulation>
class mass_server {
public:
    using physics_type = Physics;
    using shape_type = Shape;
    static constexpr unsigned NN = Shape::nbr_nodes;
    static constexpr bool planar = Physics::planar;

    elfes::shape_table<Shape, PointSet> table;

    // The nodal matrix m_ij = integral of rho N_i N_j, or of rho grad N_i . grad N_j
    // for a gradient physics (lower triangle of an NN x NN row-major matrix, added to),
    // rho read from the law at each point of `element` (its global number).
    // error_element when a value is not a positive finite number, or when the
    // element's measure is not positive (a degenerate or inverted element), so that the
    // matrix never loses its definiteness silently.
    int compute(const law_scalar& law, std::uint32_t element, const double (*X)[3], double* m) const {
        double total = 0.0;
        for (unsigned p = 0; p < table.nbr_points; ++p) {
            law_key key;
            key.element = element;
            key.point = table.point[p].ID;
            const dense1D<double> data = law.get_data_ref(key);
            const double rho = data.size() > 0 ? data[0] : 0.0;
            if (!(rho > 0.0) || !std::isfinite(rho)) return fem::error_element;
            point_geometry<NN> geo;
            Physics::geometry(table, p, X, geo);
            const double w = (Physics::axi ? geo.w * elfes::axi_two_pi * geo.r : geo.w) * rho;
            total += w;
            for (unsigned i = 0; i < NN; ++i)
                for (unsigned j = 0; j <= i; ++j) {
                    if constexpr (Physics::gradient)
                        m[i * NN + j] +=
                            w * (geo.g[i][0] * geo.g[j][0] + geo.g[i][1] * geo.g[j][1] + geo.g[i][2] * geo.g[j][2]);
                    else
                        m[i * NN + j] += w * table.N[p][i] * table.N[p][j];
                }
        }
        return total > 0.0 && std::isfinite(total) ? fem::no_error : fem::error_element;
    }

    // f_i += integral of q N_i, times the law's value at each point when a law is
    // given (a convection coefficient times the surroundings' temperature q).
    // error_element when that value is not a positive finite number.
    int load_vector(const law_scalar* law, std::uint32_t element, const double (*X)[3], double q, double* f) const {
        for (unsigned p = 0; p < table.nbr_points; ++p) {
            double c = 1.0;
            if (law) {
                law_key key;
                key.element = element;
                key.point = table.point[p].ID;
                const dense1D<double> data = law->get_data_ref(key);
                c = data.size() > 0 ? data[0] : 0.0;
                if (!(c > 0.0) || !std::isfinite(c)) return fem::error_element;
            }
            const double w = weight(p, X) * c * q;
            for (unsigned i = 0; i < NN; ++i) f[i] += w * table.N[p][i];
        }
        return fem::no_error;
    }

    // The nodal matrix of the least-squares run: the same integral without density.
    void nodal_matrix(const double (*X)[3], double* m) const {
        for (unsigned p = 0; p < table.nbr_points; ++p) {
            const double w = weight(p, X);
            for (unsigned i = 0; i < NN; ++i)
                for (unsigned j = 0; j <= i; ++j) m[i * NN + j] += w * table.N[p][i] * table.N[p][j];
        }
    }

private:
    // The point's weight times the element's measure factor (times 2 pi r on an
    // axisymmetric section).
    double weight(unsigned p, const double (*X)[3]) const {
        point_geometry<NN> geo;
        Physics::geometry(table, p, X, geo);
        return Physics::axi ? geo.w * elfes::axi_two_pi * geo.r : geo.w;
    }
};

}  // namespace core
}  // namespace orv
