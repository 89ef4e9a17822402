// A small model written against the model contract: two-node springs on the x DOF.
#pragma once

#include <orv/fem/error_type.h>

#include <omp.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "frame/context_type.h"
#include "model/element_workspace.h"
#include "model/numerical_model_base.h"

namespace orv {
namespace test {

// Element e joins nodes a[e] and b[e] with a spring of stiffness k[e] along x (DOF
// node * 9). It answers matrix codes 1 (stiffness) and, when `penalty` is set, 7: it
// is then a link whose stiffness is the run's displacement penalty and which is silent
// in the stiffness pass. The internal force is K u and the energy u'Ku / 2. A load of
// kind 24 puts values[0] / 2 on each node of the element. Elements listed in
// `failing` fail with error_element.
class spring_model : public core::numerical_model_base {
public:
    spring_model(core::context_type* ctx, std::vector<unsigned> a, std::vector<unsigned> b, std::vector<double> k,
                 bool penalty = false)
        : core::numerical_model_base(ctx), a_(std::move(a)), b_(std::move(b)), k_(std::move(k)), penalty_(penalty) {
        register_self(static_cast<std::uint32_t>(k_.size()));
    }

    std::vector<unsigned> failing;
    // A delay that depends on the element, to scramble the completion order.
    bool scramble = false;
    mutable std::atomic<int> computed{0};
    // Elements computed inside a parallel region.
    mutable std::atomic<int> computed_in_parallel{0};

    using core::numerical_model_base::get_DOFs;

    std::uint32_t nbr_elements() const override { return static_cast<std::uint32_t>(k_.size()); }
    bool has_matrix(unsigned code) const override { return code == 1 || (penalty_ && code == 7); }
    bool accepts_load(const core::elementary_load& r) const override { return (r.kind & 0xF8u) == 24; }

    void get_mesh(dense2D<unsigned int>& c, fem::element_type& type) const override {
        c.resize(2, k_.size());
        for (std::size_t e = 0; e < k_.size(); ++e) {
            c(0, e) = a_[e];
            c(1, e) = b_[e];
        }
        type = fem::FE_edge2;
    }

    int get_DOFs(const core::DOFs_mgr&, std::uint32_t element, unsigned code, dense1D<unsigned int>& list,
                 const core::DOF_filter& filter) const override {
        if (!has_matrix(code)) return 0;
        std::uint32_t first = 0, end = nbr_elements();
        if (element != all_elements) {
            if (element >= end) return orv::fem::error_index;
            first = element;
            end = element + 1;
        }
        for (std::uint32_t e = first; e < end; ++e)
            for (unsigned id : {a_[e] * 9, b_[e] * 9})
                if (core::is_selected(id, filter)) list.push_back(id);
        return 0;
    }

    int compute_matrix(unsigned code, core::element_workspace& ws) override {
        const std::uint32_t e = ws.element_ID;
        if (e >= nbr_elements()) {
            ws.reset();
            return orv::fem::error_index;
        }
        ++computed;
        if (omp_in_parallel()) ++computed_in_parallel;
        if (scramble) std::this_thread::sleep_for(std::chrono::microseconds(((e * 7919u) % 13u) * 150u));
        for (unsigned f : failing)
            if (f == e) {
                ws.reset();
                return orv::fem::error_element;
            }
        double k = k_[e];
        if (penalty_) k = code == 7 ? ws.params.penalty_displacement : 0.0;
        const unsigned ids[2] = {a_[e] * 9, b_[e] * 9};
        if (!ws.set_DOFs(ids, 2) || !ws.init_sym()) return orv::fem::error_memory;
        if (ws.matrix_level) {
            ws.sym.matrix()(0, 0) = k;
            ws.sym.matrix()(1, 1) = k;
            ws.sym.matrix()(1, 0) = -k;
        }
        if (ws.U) {
            const double* u0 = ws.U->find((*ws.DOFs)[0]);
            const double* u1 = ws.U->find((*ws.DOFs)[1]);
            const double d = (u1 ? *u1 : 0.0) - (u0 ? *u0 : 0.0);
            ws.results[0] = 0.5 * k * d * d;
            ws.results[1] = 1.0;
            if (ws.vector_level) {
                if (!ws.init_vector()) return orv::fem::error_memory;
                ws.vector[0] = -k * d;
                ws.vector[1] = k * d;
            }
        }
        return 0;
    }

    int compute_load(const core::elementary_load& r, core::element_workspace& ws) override {
        ws.reset_vector();
        const std::uint32_t e = ws.element_ID;
        if (e >= nbr_elements()) return orv::fem::error_index;
        const unsigned ids[2] = {a_[e] * 9, b_[e] * 9};
        if (!ws.set_DOFs(ids, 2) || !ws.init_vector()) return orv::fem::error_memory;
        ws.vector[0] = ws.vector[1] = 0.5 * r.values[0];
        return 0;
    }

private:
    std::vector<unsigned> a_, b_;
    std::vector<double> k_;
    bool penalty_;
};

}  // namespace test
}  // namespace orv
