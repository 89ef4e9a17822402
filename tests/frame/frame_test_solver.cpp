// Engine of the frame test solver.
#include "frame_test_solver.h"

#include <new>
#include <stdexcept>

namespace frame_test {

std::atomic<int> engines_destroyed{0};

namespace {

using settings_type = test_solver::settings_type;
using data_type = test_solver::data_type;

constexpr orv::core::solver_identity test_identity = {"test_frame_solver", "ORV FEM(R) - TEST FRAME",
                                                      "tests/test_frame_solver", size_gate_line};

class test_engine : public orv::core::solver_base<settings_type, data_type> {
public:
    explicit test_engine(const settings_type* s) : solver_base(s, test_identity) {}
    ~test_engine() override { ++engines_destroyed; }

protected:
    void start(data_type& data) override { set_context(data.ctx.engine()); }

    void clear_inputs(data_type& data) override {
        if (!(settings().input_mask & 64)) data.result.clear();
    }

    void numbering(data_type& data) override { data.nbr_free_DOFs = 12; }
    double& numbering_time(data_type& data) override { return data.time_numbering; }
    void log_sizes(data_type& data) override {
        log(1, "  Nbr free DOFs          : %10llu\n", static_cast<unsigned long long>(data.nbr_free_DOFs));
        log_size(2, "  Size matrix S-modes    : ", 12, settings().size_MB);
    }
    double needed_size(data_type& data) override {
        data.size_total = settings().size_MB;
        return data.size_total;
    }

    void compute(data_type& data) override {
        step(data, data.time_step1, "Step one                           : %10.2f s.\n", [&] { work(data, 1); });
        step(data, data.time_step2, "Step two                           : %10.2f s.\n", [&] { work(data, 2); });
    }

    void clear_unkept(data_type& data) override {
        if (!((settings().input_mask | settings().output_mask) & 64)) data.result.clear();
    }

private:
    void work(data_type& data, int which) {
        ++data.steps_run;
        const settings_type& s = settings();
        if (which == 1) data.result.assign(data.nbr_free_DOFs, 1.0);
        if (s.warn_step == which) set_warning(data, orv::fem::warning_pivot, "Pivot warning.");
        if (s.fail_step == which) set_error(data, orv::fem::error_pivot, "Pivot error.", fail_line);
        if (s.throw_step == which) {
            if (s.throw_kind == 1) throw std::bad_alloc();
            if (s.throw_kind == 2) throw std::runtime_error("step failed");
            if (s.throw_kind == 3) throw 7;
        }
    }
};

}  // namespace

void test_solver::data_type::clear_data_out() {
    nbr_free_DOFs = 0;
    size_total = 0.0;
    steps_run = 0;
    clear_errors();
    time_numbering = time_step1 = time_step2 = time_total = 0.0;
}

ORV_FEM_HANDLE_IMPL(test_solver, solver_base, orv::core::solver_root)

test_solver::test_solver() : settings() { set_w(static_cast<orv::ref_counted*>(new test_engine(&settings))); }

void test_solver::run(data_type& data) { static_cast<test_engine*>(engine())->run(data, data.ctx); }

}  // namespace frame_test
