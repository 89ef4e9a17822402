// Description of one problem: positions, DOF table, model, load and stress cases.
#include "problem/problem_data.h"
#include <orv/fem/error_type.h>

#include <new>

#include <orv/fem/problem_data.h>

#include "frame/context_type.h"
#include "model/numerical_model_base.h"
#include "model/numerical_models_mgr.h"
#include "problem/DOFs_mgr.h"
#include "problem/loads_mgr.h"
#include "problem/stress_mgr.h"

namespace orv {
namespace core {

problem_data::problem_data(context_type* ctx) : context_(ctx), DOFs_(new DOFs_mgr()) {}

problem_data::~problem_data() = default;

void problem_data::reset_all() {
    NM_ID_ = no_ID;
    pos_ = dense2D<double>();
    // The table that was held stays the caller's: the problem lets go of it.
    DOFs_ = new DOFs_mgr();
    loads_.clear();
    stresses_.clear();
}

int problem_data::take_pos(dense2D<double>& pos) {
    const std::size_t cols = pos.cols();
    if (DOFs_ && cols > DOFs_->nbr_nodes()) DOFs_->resize(static_cast<std::uint32_t>(cols), false);
    if (pos.rows() != 3) {
        dense2D<double> p(3, cols, 0.0);
        if (p.rows() != 3 && cols != 0) return fem::error_memory;
        for (std::size_t j = 0; j < cols; ++j)
            for (std::size_t i = 0; i < 3 && i < pos.rows(); ++i) p(i, j) = pos(i, j);
        pos = p;
    }
    pos_ = pos;
    return 0;
}

int problem_data::init(dense2D<double>& pos, DOFs_mgr* DOFs, std::uint32_t NM_ID, std::size_t nbr_load_cases) {
    reset_all();
    if (!context_) return 0;
    try {
        NM_ID_ = NM_ID;
        if (DOFs) DOFs_ = DOFs;
        int rc = take_pos(pos);
        if (rc) {
            reset_all();
            return rc;
        }
        loads_.reserve(nbr_load_cases);
        stresses_.reserve(nbr_load_cases);
        for (std::size_t i = 0; i < nbr_load_cases; ++i) {
            loads_.push_back(Ptr<loads_mgr>(new loads_mgr(context_.get())));
            stresses_.push_back(Ptr<stress_super_mgr>(new stress_super_mgr(context_.get())));
        }
        return 0;
    } catch (const std::bad_alloc&) {
        reset_all();
        return fem::error_memory;
    }
}

int problem_data::combine(const problem_data& src, const dense2D<double>& load_coeffs,
                          const dense2D<double>& stress_coeffs) {
    const std::size_t n_src = src.nbr_load_cases();
    const bool loads_empty = load_coeffs.rows() * load_coeffs.cols() == 0;
    const bool stress_empty = stress_coeffs.rows() * stress_coeffs.cols() == 0;
    if ((!loads_empty && load_coeffs.rows() != n_src) || (!stress_empty && stress_coeffs.rows() != n_src))
        return fem::error_data;
    reset_all();
    context_ = src.context_;
    NM_ID_ = src.NM_ID_;
    DOFs_ = src.DOFs_;
    if (!pos_.copy(src.pos_)) return fem::error_memory;
    if (loads_empty) return 0;
    try {
        const std::size_t n = load_coeffs.cols();
        loads_.reserve(n);
        stresses_.reserve(n);
        for (std::size_t k = 0; k < n; ++k) {
            Ptr<loads_mgr> loads(new loads_mgr(context_.get()));
            Ptr<stress_super_mgr> stresses(new stress_super_mgr(context_.get()));
            for (std::size_t i = 0; i < n_src; ++i) {
                const double c = load_coeffs(i, k);
                if (c != 0.0 && src.loads_[i]) loads->add(*src.loads_[i], c);
                const double s = (!stress_empty && k < stress_coeffs.cols()) ? stress_coeffs(i, k) : 0.0;
                if (s != 0.0 && src.stresses_[i]) {
                    const int rc = stresses->add(*src.stresses_[i], s);
                    if (rc) return rc;
                }
            }
            loads_.push_back(loads);
            stresses_.push_back(stresses);
        }
        return 0;
    } catch (const std::bad_alloc&) {
        return fem::error_memory;
    }
}

int problem_data::set_pos(dense2D<double>& pos) {
    try {
        return take_pos(pos);
    } catch (const std::bad_alloc&) {
        return fem::error_memory;
    }
}

void problem_data::set_loads(std::size_t i, loads_mgr* mgr) {
    if (i < loads_.size()) loads_[i] = mgr;
}

void problem_data::set_stresses(std::size_t i, stress_super_mgr* mgr) {
    if (i < stresses_.size()) stresses_[i] = mgr;
}

numerical_model_base* problem_data::get_model() const {
    if (!context_ || !context_->models()) return nullptr;
    return context_->models()->get_NM(NM_ID_);
}

}  // namespace core

namespace fem {

ORV_FEM_HANDLE_IMPL(problem_data, base_class, core::problem_data)

problem_data::problem_data() = default;

problem_data::problem_data(context& ctx) { create(ctx); }

problem_data::problem_data(context& ctx, dense2D<double>& pos, DOFs_mgr& DOFs, unsigned NM_ID,
                           std::size_t nbr_load_cases) {
    if (create(ctx) == no_error) init(pos, DOFs, NM_ID, nbr_load_cases);
}

problem_data::problem_data(const problem_data& src, const dense2D<double>& coeffs)
    : problem_data(src, coeffs, coeffs) {}

problem_data::problem_data(const problem_data& src, const dense2D<double>& load_coeffs,
                           const dense2D<double>& stress_coeffs) {
    if (!src.engine()) return;
    try {
        Ptr<core::problem_data> p(new core::problem_data(src.engine()->get_context()));
        if (p->combine(*src.engine(), load_coeffs, stress_coeffs) == 0) set_w(static_cast<ref_counted*>(p.get()));
    } catch (...) {
        // Left empty.
    }
}

error_type problem_data::create(context& ctx) {
    core::problem_data* p = new (std::nothrow) core::problem_data(ctx.engine());
    if (!p) return error_memory;
    set_w(static_cast<ref_counted*>(p));
    return no_error;
}

void problem_data::init(dense2D<double>& pos, DOFs_mgr& DOFs, unsigned NM_ID, std::size_t nbr_load_cases) {
    if (engine()) engine()->init(pos, DOFs.engine(), NM_ID, nbr_load_cases);
}

unsigned problem_data::NM_ID() const { return engine() ? engine()->NM_ID() : 0xFFFFFFFFu; }

DOFs_mgr problem_data::get_DOFs_mgr() const {
    DOFs_mgr h;
    if (engine()) h.set_w(static_cast<ref_counted*>(engine()->get_DOFs()));
    return h;
}

dense2D<double> problem_data::get_pos_matrix() const { return engine() ? engine()->get_pos() : dense2D<double>(); }

void problem_data::set_pos_matrix(dense2D<double>& pos) {
    if (engine()) engine()->set_pos(pos);
}

unsigned problem_data::nbr_load_cases() const {
    return engine() ? static_cast<unsigned>(engine()->nbr_load_cases()) : 0u;
}

loads_mgr problem_data::get_loads_mgr(std::size_t i) const {
    loads_mgr h;
    if (engine())
        if (core::loads_mgr* m = engine()->get_loads(i)) h.set_w(static_cast<ref_counted*>(m));
    return h;
}

stress_mgr problem_data::get_stress_mgr(std::size_t i) const {
    stress_mgr h;
    if (engine())
        if (core::stress_super_mgr* m = engine()->get_stresses(i)) h.set_w(static_cast<ref_counted*>(m));
    return h;
}

void problem_data::set_loads_mgr(std::size_t i, loads_mgr& mgr) {
    if (engine()) engine()->set_loads(i, mgr.engine());
}

void problem_data::set_stress_mgr(std::size_t i, stress_mgr& mgr) {
    if (engine()) engine()->set_stresses(i, mgr.engine());
}

bool problem_data::valid() const { return engine() && engine()->valid(); }

}  // namespace fem
}  // namespace orv
