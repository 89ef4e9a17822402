// The run frame through a small solver: log lines, stop test, error rules, masks,
// size gate and the catch-all.
#include <gtest/gtest.h>

#include <orv/fem/error_type.h>

#include <omp.h>

#include <chrono>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "common/log_capture.h"
#include "frame/run_log.h"
#include "frame_test_solver.h"

using frame_test::test_solver;
using orv::test::log_capture;

namespace {

// Digits of the times replaced by '#', so that the layout can be compared exactly.
std::string mask_digits(std::string s) {
    for (char& c : s)
        if (c >= '0' && c <= '9') c = '#';
    return s;
}

// A run of the test solver with its log captured.
class FrameRun : public ::testing::Test {
protected:
    void SetUp() override { cap.attach(solver.settings); }
    test_solver solver;
    log_capture cap;
    test_solver::data_type data;
};

}  // namespace

TEST_F(FrameRun, LogLinesOfACleanRunByteForByte) {
    solver.run(data);
    ASSERT_FALSE(data.error_raised());
    ASSERT_FALSE(data.warning_raised());

    const std::string stars(55, '*');
    const std::string title_row = "*        ORV FEM(R) - TEST FRAME (5.5.0.0)            *";
    ASSERT_EQ(title_row.size(), 55u);
    const std::vector<std::pair<unsigned, std::string>> expected = {
        {0, stars},
        {0, "\n"},
        {0, title_row},
        {0, "\n"},
        {0, stars},
        {0, "\n"},
        {2, "Numbering and matrix profiles      :       #.## s.\n"},
        {1, "  Nbr free DOFs          :         ##\n"},
        {2, "  Size matrix S-modes    :         ## doubles (#.## MB)\n"},
        {1, "Step one                           :       #.## s.\n"},
        {1, "Step two                           :       #.## s.\n"},
        {0, "Total computing time               :       #.## s.\n\n"},
    };
    ASSERT_EQ(cap.lines.size(), expected.size()) << cap.all();
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(cap.lines[i].first, expected[i].first) << i;
        // The banner exactly; the other lines with their digits masked.
        const std::string got = i < 6 ? cap.lines[i].second : mask_digits(cap.lines[i].second);
        EXPECT_EQ(got, expected[i].second) << i;
    }
    EXPECT_EQ(cap.lines[7].second, "  Nbr free DOFs          :         12\n");
    EXPECT_EQ(cap.lines[8].second, "  Size matrix S-modes    :         12 doubles (3.00 MB)\n");
    EXPECT_EQ(data.steps_run, 2);
    EXPECT_EQ(data.result.size(), 12u);  // bit 64 is in output_mask: kept
    EXPECT_EQ(data.size_total, 3.0);
}

TEST(RunFrame, BannerRowOfALongerTitle) {
    char row[64];
    orv::core::detail::format_banner_row(row, "ORV FEM(R) - STATIC LINEAR");
    EXPECT_STREQ(row, "*        ORV FEM(R) - STATIC LINEAR (5.5.0.0)         *");
    // A title too long for the row is cut, and the row stays closed by a star.
    orv::core::detail::format_banner_row(row, std::string(80, 'T').c_str());
    EXPECT_EQ(std::string(row).size(), 61u);
    EXPECT_EQ(row[60], '*');
}

TEST(RunFrame, NullDisplayHookFormatsNothing) {
    test_solver::settings_type s;
    int written = -1;
    orv::core::log_line(s, 0, "abc%n", &written);
    EXPECT_EQ(written, -1);  // no hook: the text was never formatted

    log_capture cap;
    s.display_hook = &log_capture::display;
    s.pass_thru = &cap;
    orv::core::log_line(s, 3, "abc%n", &written);
    EXPECT_EQ(written, 3);
    ASSERT_EQ(cap.lines.size(), 1u);
    EXPECT_EQ(cap.lines[0], std::make_pair(3u, std::string("abc")));

    // A whole run without a display hook: runs fully, nothing logged.
    test_solver solver;
    cap.attach(solver.settings, false);
    cap.lines.clear();
    test_solver::data_type data;
    solver.run(data);
    EXPECT_FALSE(data.error_raised());
    EXPECT_EQ(data.steps_run, 2);
    EXPECT_TRUE(cap.lines.empty());
}

TEST_F(FrameRun, InterruptAtOnceIsAWarningWithTotalTime) {
    cap.interrupt_after = 0;
    cap.sleep_ms = 20;
    solver.run(data);
    EXPECT_FALSE(data.error_raised());
    EXPECT_TRUE(data.warning_raised());
    EXPECT_EQ(data.warning_code, orv::fem::warning_interrupted);
    EXPECT_STREQ(data.error_name, "");
    EXPECT_STREQ(data.error_msg, "");
    EXPECT_EQ(data.steps_run, 0);
    EXPECT_EQ(data.nbr_free_DOFs, 0u);  // numbering skipped too
    EXPECT_EQ(cap.interrupts, 1);       // once stopped, the hook is not asked again
    EXPECT_GE(data.time_total, 0.015);
    EXPECT_TRUE(cap.starts("Total computing time"));
    EXPECT_FALSE(cap.starts("Step one"));
}

TEST_F(FrameRun, InterruptBetweenStepsKeepsWhatWasDone) {
    cap.interrupt_after = 3;  // asked before numbering, gate, step one, then step two
    solver.run(data);
    EXPECT_EQ(data.warning_code, orv::fem::warning_interrupted);
    EXPECT_EQ(data.steps_run, 1);
    EXPECT_TRUE(cap.starts("Step one"));
    EXPECT_FALSE(cap.starts("Step two"));
    EXPECT_TRUE(cap.starts("Total computing time"));
}

TEST_F(FrameRun, FirstErrorWinsAndStopsTheRun) {
    solver.settings.fail_step = 1;
    solver.run(data);
    EXPECT_TRUE(data.error_raised());
    EXPECT_EQ(data.error_code, orv::fem::error_pivot);
    EXPECT_STREQ(data.error_name, "Pivot error.");
    EXPECT_STREQ(data.error_msg, "File = tests/test_frame_solver, Line #42.");
    EXPECT_EQ(data.steps_run, 1);
    EXPECT_TRUE(cap.starts("Total computing time"));

    // A second failure, and a later exception, leave the first one standing.
    orv::core::set_error(data, orv::fem::error_convergence, "Convergence error.", "x", 1);
    orv::core::set_error_msg(data, orv::fem::error_internal, "INTERNAL ERROR", "");
    EXPECT_EQ(data.error_code, orv::fem::error_pivot);
    EXPECT_STREQ(data.error_name, "Pivot error.");
    EXPECT_STREQ(data.error_msg, "File = tests/test_frame_solver, Line #42.");

    solver.settings.throw_step = 1;
    solver.settings.throw_kind = 2;
    solver.run(data);
    EXPECT_EQ(data.error_code, orv::fem::error_pivot);
    EXPECT_STREQ(data.error_name, "Pivot error.");
}

TEST_F(FrameRun, WarningRules) {
    // A warning does not stop the run.
    solver.settings.warn_step = 1;
    solver.run(data);
    EXPECT_FALSE(data.error_raised());
    EXPECT_EQ(data.warning_code, orv::fem::warning_pivot);
    EXPECT_STREQ(data.error_name, "Pivot warning.");
    EXPECT_STREQ(data.error_msg, "");
    EXPECT_EQ(data.steps_run, 2);

    // A second warning is dropped.
    orv::core::set_warning(data, orv::fem::warning_missing_modes, "Potentially missing modes.");
    EXPECT_EQ(data.warning_code, orv::fem::warning_pivot);
    EXPECT_STREQ(data.error_name, "Pivot warning.");

    // A warning after an error is dropped; an error after a warning is kept.
    solver.settings.warn_step = 2;
    solver.settings.fail_step = 1;
    solver.run(data);
    EXPECT_EQ(data.error_code, orv::fem::error_pivot);
    EXPECT_EQ(data.warning_code, 0);
    EXPECT_EQ(data.steps_run, 1);
    orv::core::set_warning(data, orv::fem::warning_pivot, "Pivot warning.");
    EXPECT_EQ(data.warning_code, 0);
    EXPECT_STREQ(data.error_name, "Pivot error.");

    solver.settings.warn_step = 1;
    solver.settings.fail_step = 2;
    solver.run(data);
    EXPECT_EQ(data.warning_code, orv::fem::warning_pivot);
    EXPECT_EQ(data.error_code, orv::fem::error_pivot);
    EXPECT_STREQ(data.error_name, "Pivot error.");
    EXPECT_EQ(data.steps_run, 2);
}

TEST_F(FrameRun, OutputMaskZeroIsADryRun) {
    solver.settings.output_mask = 0;
    data.ctx.set_max_total_size(1);  // a dry run is not gated
    solver.run(data);
    EXPECT_FALSE(data.error_raised());
    EXPECT_EQ(data.nbr_free_DOFs, 12u);  // numbering done
    EXPECT_EQ(data.steps_run, 0);        // nothing computed
    EXPECT_TRUE(data.result.empty());
    EXPECT_EQ(data.time_total, 0.0);
    EXPECT_TRUE(cap.starts("  Size matrix S-modes    : "));
    EXPECT_FALSE(cap.starts("Total computing time"));
}

TEST(RunFrame, MasksDecideWhatSurvives) {
    test_solver solver;
    test_solver::data_type data;
    solver.settings.output_mask = 2;
    solver.run(data);
    EXPECT_TRUE(data.result.empty());  // made by step one, not kept

    solver.settings.input_mask = 64;  // the caller's object is kept as it is
    data.result.assign(5, 2.0);
    solver.settings.output_mask = 2;
    solver.run(data);
    EXPECT_EQ(data.result.size(), 12u);
}

TEST_F(FrameRun, SizeGateAgainstTheContextLimit) {
    data.ctx.set_max_total_size(1);
    solver.run(data);  // needs 3 MB
    EXPECT_EQ(data.error_code, orv::fem::error_memory_limit);
    EXPECT_STREQ(data.error_name, "Insufficient memory.");
    EXPECT_STREQ(data.error_msg, "File = tests/test_frame_solver, Line #77.");
    EXPECT_EQ(data.steps_run, 0);
    EXPECT_EQ(data.size_total, 3.0);
    EXPECT_TRUE(cap.starts("Total computing time"));

    data.ctx.set_max_total_size(3);  // equal to the need: passes
    solver.run(data);
    EXPECT_FALSE(data.error_raised());
    EXPECT_EQ(data.steps_run, 2);

    data.ctx.set_max_total_size(1);
    data.ctx.set_max_total_size(0);  // no limit
    solver.settings.size_MB = 1e12;
    solver.run(data);
    EXPECT_FALSE(data.error_raised());
}

TEST(RunFrame, ExceptionsBecomeErrorCodes) {
    struct expectation {
        int kind;
        int code;
        const char* name;
    };
    const expectation cases[] = {{1, orv::fem::error_memory, "MEMORY ERROR"},
                                 {2, orv::fem::error_internal, "INTERNAL ERROR"},
                                 {3, orv::fem::error_internal, "INTERNAL ERROR"}};
    for (const auto& c : cases) {
        test_solver solver;
        log_capture cap;
        cap.attach(solver.settings);
        solver.settings.throw_step = 2;
        solver.settings.throw_kind = c.kind;
        test_solver::data_type data;
        EXPECT_NO_THROW(solver.run(data));
        EXPECT_EQ(data.error_code, c.code) << c.kind;
        EXPECT_STREQ(data.error_name, c.name);
        EXPECT_STREQ(data.error_msg, "");
        EXPECT_EQ(data.steps_run, 2);
        // The frame was left by the exception: no closing line.
        EXPECT_FALSE(cap.starts("Total computing time"));
    }
}

TEST_F(FrameRun, RefusedInputHasNoBanner) {
    data.has_model = false;
    data.error_code = -5;  // stale outputs are cleared first
    data.time_step1 = 9.0;
    solver.run(data);
    EXPECT_EQ(data.error_code, orv::fem::error_data);
    EXPECT_STREQ(data.error_name, "DATA ERROR");
    EXPECT_STREQ(data.error_msg, "ORV test_frame_solver: invalid data.");
    EXPECT_EQ(data.time_step1, 0.0);
    EXPECT_TRUE(cap.lines.empty());
    EXPECT_EQ(cap.interrupts, 0);

    data.has_model = true;
    solver.settings.accept = false;
    solver.run(data);
    EXPECT_EQ(data.error_code, orv::fem::error_data);
    EXPECT_STREQ(data.error_name, "SETTINGS ERROR");
    EXPECT_STREQ(data.error_msg, "ORV test_frame_solver: invalid settings.");
    EXPECT_TRUE(cap.lines.empty());

    // A record without a context is invalid data too.
    solver.settings.accept = true;
    data.ctx.clear_w();
    solver.run(data);
    EXPECT_STREQ(data.error_name, "DATA ERROR");
}

TEST(RunFrame, RunKeepsItsObjectsAliveWhenAHookDropsThem) {
    frame_test::engines_destroyed = 0;
    {
        test_solver solver;
        log_capture cap;
        cap.attach(solver.settings);
        test_solver::data_type data;
        data.ctx.set_max_total_size(1000);
        cap.drop = &solver;     // the only handle on the engine
        cap.drop2 = &data.ctx;  // the only handle on the context
        solver.run(data);
        EXPECT_FALSE(solver.is_valid());
        EXPECT_FALSE(data.ctx.is_valid());
        EXPECT_FALSE(data.error_raised());
        EXPECT_EQ(data.steps_run, 2);                 // the run went on to the end
        EXPECT_EQ(frame_test::engines_destroyed, 1);  // and released the engine after
    }
    EXPECT_EQ(frame_test::engines_destroyed, 1);
}

TEST(RunFrame, SolverHandlesShareTheEngineButNotTheSettings) {
    frame_test::engines_destroyed = 0;
    {
        test_solver a;
        a.settings.fail_step = 1;
        test_solver b(a);
        EXPECT_EQ(a.get_w(), b.get_w());
        EXPECT_EQ(b.settings.fail_step, 1);  // the bytes were copied
        b.settings.fail_step = 0;
        test_solver::data_type data;
        b.run(data);  // the engine reads the settings of the handle that made it
        EXPECT_EQ(data.error_code, orv::fem::error_pivot);
        EXPECT_STREQ(a.name(), "test_frame_solver");
        orv::fem::solver_base root(b);
        EXPECT_TRUE(root.is_valid());
        EXPECT_EQ(root.obj_type_id(), a.obj_type_id());
        EXPECT_NE(root.obj_type_id(), orv::fem::solver_base::type_id());
    }
    EXPECT_EQ(frame_test::engines_destroyed, 1);
}

TEST(RunFrame, SizeLines) {
    test_solver::settings_type s;
    log_capture cap;
    s.display_hook = &log_capture::display;
    s.pass_thru = &cap;
    orv::core::log_size_line(s, 2, "  Size matrix Ks         : ", 1234, 0.0094);
    orv::core::log_size_line(s, 2, "  Size matrix Kf         : ", 0x1FFFFFFFFFFFFFFEull, 1.0);
    orv::core::log_size_line(s, 2, "  Size matrix Kf         : ", 0x1FFFFFFFFFFFFFFFull, 1.0);
    orv::core::log_size_line(s, 2, "  Size matrix Z          : ", 7, 1.5, "complexes");
    ASSERT_EQ(cap.lines.size(), 4u);
    EXPECT_EQ(cap.lines[0].second, "  Size matrix Ks         :       1234 doubles (0.01 MB)\n");
    EXPECT_EQ(cap.lines[1].second, "  Size matrix Kf         : 2305843009213693950 doubles (1.00 MB)\n");
    EXPECT_EQ(cap.lines[2].second, "  Size matrix Kf         : more than 17179869184.00 GB !\n");
    EXPECT_EQ(cap.lines[3].second, "  Size matrix Z          :          7 complexes (1.50 MB)\n");
    EXPECT_EQ(cap.lines[2].first, 2u);
}

TEST(RunFrame, SetErrorFromParallelWorkersKeepsOnePair) {
    for (int round = 0; round < 50; ++round) {
        test_solver::data_type data;
#pragma omp parallel num_threads(4)
        {
            const int t = omp_get_thread_num();
            orv::core::set_error(data, -300 - t, "worker", "src", t);
        }
        ASSERT_LE(data.error_code, -300);
        const int t = -300 - data.error_code;
        EXPECT_EQ(std::string(data.error_msg), "File = src, Line #" + std::to_string(t) + ".");
    }
}

TEST(RunFrame, ClockHasMillisecondSteps) {
    const double a = orv::core::now_seconds();
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    const double b = orv::core::now_seconds();
    EXPECT_GT(a, 1.6e9);  // seconds since the epoch
    EXPECT_GE(b - a, 0.029);
    EXPECT_LT(b - a, 5.0);
    const double ms = a * 1000.0;
    EXPECT_NEAR(ms, static_cast<double>(static_cast<long long>(ms + 0.5)), 1e-3);
}
