// Scalar functions of one abscissa (usually time) that scale loads and models.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "orvmath1/ref_counted.h"

namespace orv {
namespace core {

// Root of the evolution functions. val() only reads, so one function may be
// evaluated from several assembly threads at once.
class evolution_func_base : public ref_counted {
public:
    virtual double val(double t) const = 0;
};

// c
class evolution_func_constant : public evolution_func_base {
public:
    explicit evolution_func_constant(double c) : c_(c) {}
    double val(double t) const override;

private:
    double c_;
};

// a * t
class evolution_func_linear : public evolution_func_base {
public:
    explicit evolution_func_linear(double a) : a_(a) {}
    double val(double t) const override;

private:
    double a_;
};

// sin(omega * t + phi)
class evolution_func_sinus : public evolution_func_base {
public:
    evolution_func_sinus(double omega, double phi) : omega_(omega), phi_(phi) {}
    double val(double t) const override;

private:
    double omega_;
    double phi_;
};

// A hat of height 1 centred on t0 whose base is `width` wide. A width that is not
// positive gives a spike: 1 at t0 exactly, 0 everywhere else.
class evolution_func_triangle : public evolution_func_base {
public:
    evolution_func_triangle(double t0, double width);
    double val(double t) const override;

private:
    double t0_;
    double slope_;
};

// The straight segment from (t1, v1) to (t2, v2), closed at t1, open at t2, zero
// outside. Zero throughout when t1 >= t2.
class evolution_func_trapeze : public evolution_func_base {
public:
    evolution_func_trapeze(double t1, double t2, double v1, double v2);
    double val(double t) const override;

private:
    double t1_;
    double t2_;
    double a_;
    double b_;
};

// Piecewise linear through (times[i], values[i]); times are taken as ascending.
// Below the first time the first segment is extended, above the last time the last
// value holds.
class evolution_func_discret : public evolution_func_base {
public:
    evolution_func_discret(std::vector<double> times, std::vector<double> values)
        : times_(std::move(times)), values_(std::move(values)) {}
    double val(double t) const override;

private:
    std::vector<double> times_;
    std::vector<double> values_;
};

// sum of coefficients[i] * terms[i](t). A null term counts as 1.0; no term gives 0.0.
class evolution_func_sum : public evolution_func_base {
public:
    evolution_func_sum(std::vector<Ptr<evolution_func_base>> terms, std::vector<double> coefficients)
        : terms_(std::move(terms)), coefficients_(std::move(coefficients)) {}
    double val(double t) const override;

private:
    std::vector<Ptr<evolution_func_base>> terms_;
    std::vector<double> coefficients_;
};

// product of factors[i](t). A null factor counts as 1.0; no factor gives 0.0.
class evolution_func_mult : public evolution_func_base {
public:
    explicit evolution_func_mult(std::vector<Ptr<evolution_func_base>> factors) : factors_(std::move(factors)) {}
    double val(double t) const override;

private:
    std::vector<Ptr<evolution_func_base>> factors_;
};

namespace detail {

// Locates t in an ascending list of n abscissas: k is the start of the segment
// that serves t and w its relative position on it. Below the list w is negative
// (the first segment is extended); above the list k is the last index and w is 0.
// A segment of zero length gives w = 0. n must be at least 1.
void locate(const double* abscissas, std::size_t n, double t, std::size_t& k, double& w);

}  // namespace detail

}  // namespace core
}  // namespace orv
