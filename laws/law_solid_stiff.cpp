// Elastic laws of solids: isotropic, orthotropic in a local basis, and skyline.
#include "laws/law_solid_stiff.h"

#include "problem/bases_mgr.h"

namespace orv {
namespace core {

int isotropic_D(double E, double nu, symmetric_fixed<double, 6>& D) {
    D.fill(0.0);
    if (nu == -1.0 || nu == 0.5) return law_bad_size;
    const double lambda = nu * E / ((1.0 - 2.0 * nu) * (1.0 + nu));
    const double mu = E / (2.0 * nu + 2.0);
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < i; ++j) D(i, j) = lambda;
        D(i, i) = lambda + 2.0 * mu;
        D(i + 3, i + 3) = mu;
    }
    return law_ok;
}

// --- law_solid_stiff ---------------------------------------------------------

bool law_solid_stiff::get_material_frame(const vector_fixed<double, 3>&, matrix_fixed<double, 3, 3>&) const {
    return false;
}

int law_solid_stiff::get_D(const law_key& key, tangent_type& D) const { return elastic_get_D(*this, key, D); }

int law_solid_stiff::compute(const law_key& key, const strain_type& strain, tangent_type& D, stress_type& stress,
                             double& energy, double*, unsigned) const {
    return elastic_compute(*this, key, strain, D, stress, energy);
}

int law_solid_stiff::thermal_correction(const law_key& key, strain_type& strain, double temperature) const {
    return elastic_thermal_correction(*this, key, strain, temperature);
}

// --- law_solid_StVenant --------------------------------------------------------

bool law_solid_StVenant::check_size(const dense1D<double>& data) const { return data.size() == 3; }

int law_solid_StVenant::fill_D(const dense1D<double>& data, tangent_type& D) const {
    return isotropic_D(data[0], data[1], D);
}

void law_solid_StVenant::get_alphas(const dense1D<double>& data, double alpha[3]) const {
    alpha[0] = alpha[1] = alpha[2] = data[2];
}

// --- law_solid_orthotropic -----------------------------------------------------

namespace {

struct orthotropic_constants {
    double E1, E2, E3, nu12, nu13, nu23, G12, G13, G23;
    double nu21, nu31, nu32, delta;

    explicit orthotropic_constants(const double* d)
        : E1(d[0]), E2(d[1]), E3(d[2]), nu12(d[3]), nu13(d[4]), nu23(d[5]), G12(d[6]), G13(d[7]), G23(d[8]) {
        nu21 = E1 != 0.0 ? nu12 * E2 / E1 : 0.0;
        nu31 = E1 != 0.0 ? nu13 * E3 / E1 : 0.0;
        nu32 = E2 != 0.0 ? nu23 * E3 / E2 : 0.0;
        delta = 1.0 - nu12 * nu21 - nu13 * nu31 - nu23 * nu32 - 2.0 * nu21 * nu32 * nu13;
    }
    bool usable() const { return E1 != 0.0 && E2 != 0.0 && E3 != 0.0 && delta != 0.0; }
};

}  // namespace

law_solid_orthotropic::law_solid_orthotropic() = default;
law_solid_orthotropic::~law_solid_orthotropic() = default;

int law_solid_orthotropic::init(const dense1D<double>& data, bases_mgr* bases, std::uint32_t basis_ID) {
    bases_ = bases;
    basis_ID_ = basis_ID;
    return law_solid_stiff::init(data);
}

bool law_solid_orthotropic::check_size(const dense1D<double>& data) const { return data.size() == 18; }

int law_solid_orthotropic::normalize(dense1D<double>& data) const {
    if (!check_size(data)) return law_bad_size;
    const orthotropic_constants c(data.data());
    set_if_different(data, 9, c.nu21);
    set_if_different(data, 10, c.nu31);
    set_if_different(data, 11, c.nu32);
    set_if_different(data, 12, c.delta);
    set_if_different(data, 13, 0.0);
    set_if_different(data, 14, 0.0);
    return law_ok;
}

bool law_solid_orthotropic::get_material_frame(const vector_fixed<double, 3>& position,
                                               matrix_fixed<double, 3, 3>& R) const {
    const basis_base* b = bases_ ? bases_->get(basis_ID_) : nullptr;
    if (!b) return false;
    b->get_basis(position, R);
    return true;
}

int law_solid_orthotropic::fill_D(const dense1D<double>& data, tangent_type& D) const {
    D.fill(0.0);
    if (data.size() < 18) return law_bad_size;
    // The closed inverse of the compliance; the derived values are recomputed here
    // from the nine constants so that D never depends on stale ones.
    const orthotropic_constants c(data.data());
    if (!c.usable()) return law_bad_size;
    const double k = 1.0 / c.delta;
    D(0, 0) = c.E1 * (1.0 - c.nu23 * c.nu32) * k;
    D(1, 1) = c.E2 * (1.0 - c.nu13 * c.nu31) * k;
    D(2, 2) = c.E3 * (1.0 - c.nu12 * c.nu21) * k;
    D(1, 0) = c.E1 * (c.nu21 + c.nu31 * c.nu23) * k;
    D(2, 0) = c.E1 * (c.nu31 + c.nu21 * c.nu32) * k;
    D(2, 1) = c.E2 * (c.nu32 + c.nu12 * c.nu31) * k;
    D(3, 3) = c.G12;
    D(4, 4) = c.G13;
    D(5, 5) = c.G23;
    return law_ok;
}

void law_solid_orthotropic::get_alphas(const dense1D<double>& data, double alpha[3]) const {
    alpha[0] = data[15];
    alpha[1] = data[16];
    alpha[2] = data[17];
}

}  // namespace core
}  // namespace orv
