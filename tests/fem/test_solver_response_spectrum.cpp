// Response spectrum: the complete quadratic correlation against its equal-damping
// textbook form, peaks of one and two modes, the correction pseudo mode, bad input.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include <orv/fem/solver_response_spectrum.h>

using namespace orv;
using fem::solver_response_spectrum;

namespace {

dense1D<double> list(std::initializer_list<double> v) {
    dense1D<double> out;
    for (double x : v) out.push_back(x);
    return out;
}

void keep_log(void* pass, unsigned, const char* text) { *static_cast<std::string*>(pass) += text; }

// Equal damping z, r = f_i / f_j: 8 z^2 (1 + r) r^1.5 / ((1 - r^2)^2 + 4 z^2 r (1 + r)^2).
double cqc_equal_damping(double r, double z) {
    return 8 * z * z * (1 + r) * std::pow(r, 1.5) / ((1 - r * r) * (1 - r * r) + 4 * z * z * r * (1 + r) * (1 + r));
}

}  // namespace

TEST(SpectrumCombination, CompleteQuadraticCorrelation) {
    const fem::spectrum_combination_cqc damped(fem::oneD_table(0.05));
    const symmetric_full<double> rho = damped(list({2.0, 4.0, 4.0, 10.0}));
    ASSERT_EQ(rho.dim(), 4u);
    EXPECT_NEAR(rho(0, 0), 1.0, 1e-15);
    EXPECT_NEAR(rho(1, 2), 1.0, 1e-15);  // equal frequencies
    EXPECT_NEAR(rho(0, 1), cqc_equal_damping(0.5, 0.05), 1e-14);
    EXPECT_NEAR(rho(3, 0), cqc_equal_damping(0.2, 0.05), 1e-14);

    // Damping that varies with frequency keeps the matrix symmetric by construction;
    // rho of (i, j) equals rho computed with the modes swapped.
    dense1D<double> fx = list({0.0, 10.0}), zy = list({0.02, 0.2});
    const fem::spectrum_combination_cqc varying(fem::oneD_table(fx, zy));
    const symmetric_full<double> a = varying(list({3.0, 5.0})), b = varying(list({5.0, 3.0}));
    EXPECT_NEAR(a(0, 1), b(0, 1), 1e-15);
    EXPECT_GT(a(0, 1), 0.0);

    // No damping: distinct modes do not correlate, equal ones fully.
    const symmetric_full<double> undamped = fem::spectrum_combination_cqc()(list({1.0, 1.5, 1.5}));
    EXPECT_EQ(undamped(0, 1), 0.0);
    EXPECT_EQ(undamped(1, 2), 1.0);
    EXPECT_EQ(fem::spectrum_combination()(list({1.0})).dim(), 0u);  // empty handle
}

TEST(ResponseSpectrum, PeaksOfModes) {
    solver_response_spectrum run;
    solver_response_spectrum::data_type d;
    // One mode: the peak is |participation x modal value|, whatever the rule.
    d.frequencies = list({2.0});
    d.participation = dense2D<double>(1, 1, -3.0);
    d.modal_results = dense2D<double>(2, 1, 0.0);
    d.modal_results(0, 0) = 0.5, d.modal_results(1, 0) = -2.0;
    d.combination = fem::spectrum_combination_cqc(fem::oneD_table(0.05));
    run.run(d);
    ASSERT_EQ(d.error_code, 0);
    EXPECT_DOUBLE_EQ(d.peaks(0, 0), 1.5);
    EXPECT_DOUBLE_EQ(d.peaks(1, 0), 6.0);

    // Two modes, two directions, two components (stride 2). Undamped and well apart:
    // square root of the sum of squares; equal frequencies: the absolute sum.
    run.settings.stride = 2;
    d.frequencies = list({1.0, 7.0});
    d.participation = dense2D<double>(2, 2, 1.0);
    d.participation(1, 1) = 2.0;
    d.modal_results = dense2D<double>(1, 4, 0.0);
    d.modal_results(0, 0) = 3.0, d.modal_results(0, 2) = 4.0;   // component 0 of modes 0, 1
    d.modal_results(0, 1) = 1.0, d.modal_results(0, 3) = -1.0;  // component 1
    d.combination = fem::spectrum_combination_cqc();
    run.run(d);
    ASSERT_EQ(d.error_code, 0);
    EXPECT_DOUBLE_EQ(d.peaks(0, 0), 5.0);              // direction 0, component 0
    EXPECT_DOUBLE_EQ(d.peaks(0, 2), std::sqrt(73.0));  // direction 1: 3 and 8
    EXPECT_DOUBLE_EQ(d.peaks(0, 3), std::sqrt(5.0));   // direction 1, component 1: 1 and -2
    d.frequencies = list({7.0, 7.0});
    run.run(d);
    EXPECT_DOUBLE_EQ(d.peaks(0, 3), 1.0);  // |1 - 2|
}

TEST(ResponseSpectrum, CorrectionPseudoModeAndLog) {
    solver_response_spectrum run;
    std::string log;
    run.settings.display_hook = keep_log;
    run.settings.pass_thru = &log;
    solver_response_spectrum::data_type d;
    d.frequencies = list({1.0});
    d.participation = dense2D<double>(1, 1, 1.0);
    d.modal_results = dense2D<double>(1, 1, 3.0);
    d.static_results = dense2D<double>(1, 1, 4.0);
    run.run(d);
    ASSERT_EQ(d.error_code, 0);
    EXPECT_DOUBLE_EQ(d.peaks(0, 0), 5.0);
    EXPECT_EQ(d.nbr_static_modes, 1u);
    EXPECT_NE(log.find("ORV FEM(R) - SEISMIC SPECTRUM COMBINATION"), std::string::npos);
    EXPECT_NE(log.find("Dir #0, Component #0\n"), std::string::npos);
    EXPECT_NE(log.find("Correction pseudo mode (norm2) = 80.00 %\n"), std::string::npos);
    EXPECT_NE(log.find("Dynamic modes                      : 1\n"), std::string::npos);
    EXPECT_NE(log.find("Static modes                       : 1\n"), std::string::npos);

    run.settings.use_static_correction = 0;
    run.run(d);
    EXPECT_DOUBLE_EQ(d.peaks(0, 0), 3.0);
    EXPECT_EQ(d.nbr_static_modes, 0u);
}

TEST(ResponseSpectrum, BadInput) {
    solver_response_spectrum run;
    solver_response_spectrum::data_type d;
    d.frequencies = list({1.0, 2.0});
    d.participation = dense2D<double>(1, 1, 1.0);
    run.run(d);
    EXPECT_EQ(d.error_code, fem::error_data);
    EXPECT_STREQ(d.error_msg, "ORV solver_response_spectrum: invalid data.");

    d.PF_div_omega2();  // sizes disagree: nothing changes, the sentence goes to error_name
    EXPECT_EQ(d.participation(0, 0), 1.0);
    EXPECT_STREQ(d.error_name, "ORV solver_response_spectrum::PF_div_omega2: PF and frequencies size mismatch.");

    d.frequencies = list({0.5});
    d.PF_div_omega2();
    EXPECT_NEAR(d.participation(0, 0), 1.0 / (4 * M_PI * M_PI * 0.25), 1e-15);

    d.modal_results = dense2D<double>(3, 2, 1.0);  // one mode needs one column
    run.run(d);
    EXPECT_EQ(d.error_code, fem::error_data);
    EXPECT_STREQ(d.error_msg, "ORV solver_response_spectrum: stride error.");

    run.settings.stride = 0;
    run.run(d);
    EXPECT_STREQ(d.error_name, "SETTINGS ERROR");
}
