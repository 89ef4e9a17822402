// The law of plane strain and axisymmetric models, built on a solid law.
#pragma once

#include "laws/law_2d.h"
#include "laws/law_solid_stiff.h"

namespace orv {
namespace core {

// Plane strain and axisymmetric models evaluate the 3-D law that the caller gave on
// the six-slot strain of their physics (plane strain E11, E22, 0, 2 E12, 0, 0;
// axisymmetric E11 radial, E22 axial, E33 hoop, 2 E12, 0, 0). This law holds that
// solid law by a counted reference and forwards everything to it, the data and the
// per-element data included, so that what the caller sets on its law is seen here.
// Its own data vector stays empty. The thickness is 1 (per unit of thickness).
class law_solid_stiff_2d : public law_2d {
public:
    typedef law_3d::strain_type strain_type;
    typedef law_3d::stress_type stress_type;
    typedef law_3d::tangent_type tangent_type;

    // solid must not be null.
    explicit law_solid_stiff_2d(law_solid_stiff* solid);
    ~law_solid_stiff_2d() override;

    const law_solid_stiff* solid() const { return solid_.get(); }

    int init(double value) override { return solid_->init(value); }
    int init(const dense1D<double>& data) override { return solid_->init(data); }
    dense1D<double> get_data_ref(const law_key& key) const override { return solid_->get_data_ref(key); }
    bool check_size(const dense1D<double>& data) const override { return solid_->check_size(data); }
    int normalize(dense1D<double>& data) const override { return solid_->normalize(data); }
    void get_limits(double& min, double& max) const override { solid_->get_limits(min, max); }
    int set_element_by_element(std::uint32_t element, std::uint32_t point, const dense1D<double>& data) override {
        return solid_->set_element_by_element(element, point, data);
    }
    bool has_element_data(const law_key& key) const override { return solid_->has_element_data(key); }
    int store_element_data(const law_key& key, const dense1D<double>& data) override {
        return solid_->store_element_data(key, data);
    }
    int get_element_data(const law_key& key, dense1D<double>& data) const override {
        return solid_->get_element_data(key, data);
    }
    unsigned nbr_states() const override { return solid_->nbr_states(); }

    double thickness(const law_key&) const override { return 1.0; }
    std::size_t thickness_index() const override { return static_cast<std::size_t>(-1); }

    bool get_material_frame(const vector_fixed<double, 3>& position, matrix_fixed<double, 3, 3>& R) const {
        return solid_->get_material_frame(position, R);
    }
    int get_D(const law_key& key, tangent_type& D) const { return solid_->get_D(key, D); }
    int compute(const law_key& key, const strain_type& strain, tangent_type& D, stress_type& stress, double& energy,
                double* states, unsigned flags) const {
        return solid_->compute(key, strain, D, stress, energy, states, flags);
    }
    int thermal_correction(const law_key& key, strain_type& strain, double temperature) const {
        return solid_->thermal_correction(key, strain, temperature);
    }

private:
    Ptr<law_solid_stiff> solid_;
};

}  // namespace core
}  // namespace orv
