// A small solver built on the run frame, with switches that drive each path of it.
#pragma once

#include <orv/fem/context.h>
#include <orv/fem/solver_base.h>

#include <atomic>
#include <vector>

#include "frame/solver_base.h"

namespace frame_test {

// Engine destructions, to check that the run keeps its engine alive.
extern std::atomic<int> engines_destroyed;

class test_solver : public orv::fem::solver_base {
public:
    struct settings_type {
        unsigned input_mask = 0;
        unsigned output_mask = 64;  // 64: keep the result vector
        int fail_step = 0;          // step (1 or 2) that raises error_pivot
        int warn_step = 0;          // step (1 or 2) that raises warning_pivot
        int throw_step = 0;         // step (1 or 2) that throws throw_kind
        int throw_kind = 0;         // 1 std::bad_alloc, 2 std::runtime_error, 3 an int
        double size_MB = 3.0;       // size the numbering step reports
        bool accept = true;         // valid()
        ORV_FEM_SETTINGS_HOOKS

        bool valid() const { return accept; }
        void reset() { *this = settings_type(); }
    };

    struct data_type {
        // Inputs.
        orv::fem::context ctx;
        bool has_model = true;
        // Outputs.
        unsigned nbr_free_DOFs = 0;
        double size_total = 0.0;
        std::vector<double> result;  // the "big object", bit 64
        int steps_run = 0;
        ORV_FEM_DATA_ERRORS
        double time_numbering = 0.0;
        double time_step1 = 0.0;
        double time_step2 = 0.0;
        double time_total = 0.0;

        bool valid() const { return has_model && ctx.is_valid(); }
        void clear_data_out();
    };

    ORV_FEM_HANDLE(test_solver, orv::core::solver_root)

    test_solver();
    void run(data_type& data);

    settings_type settings;
};

// Line of the size gate in this solver's messages.
constexpr int size_gate_line = 77;
// Line of the failure raised by fail_step.
constexpr int fail_line = 42;

}  // namespace frame_test
