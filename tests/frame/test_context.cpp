// Context setters, detected resources and the out-of-core manager's folder checks.
#include <gtest/gtest.h>

#include <omp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <orv/fem/DOFs_mgr.h>
#include <orv/fem/context.h>

#include <cstdlib>
#include <limits>
#include <string>

#include "frame/context_type.h"

namespace {

// A fresh private folder under /tmp, removed at the end of the test.
struct temp_folder {
    std::string path;
    temp_folder() {
        char name[] = "/tmp/orv_ctx_XXXXXX";
        const char* p = mkdtemp(name);
        path = p ? p : "";
    }
    ~temp_folder() {
        if (!path.empty()) rmdir((path + "/sub").c_str()), rmdir(path.c_str());
    }
};

}  // namespace

TEST(Context, DetectedResources) {
    orv::fem::context ctx;
    const unsigned procs = static_cast<unsigned>(omp_get_num_procs());
    const unsigned cores = ctx.get_nbr_physical_cores();
    EXPECT_GE(cores, 1u);
    EXPECT_LE(cores, procs);
    EXPECT_GE(ctx.get_max_threads(), 1u);
    EXPECT_LE(ctx.get_max_threads(), cores);
    EXPECT_LE(ctx.get_max_threads(), static_cast<unsigned>(omp_get_max_threads()));
    EXPECT_GE(ctx.get_LLC_size(), 102400u);
    const orv::core::process_mgr& pm = *ctx.engine()->process();
    if (pm.hyper_threading()) {
        EXPECT_LT(cores, procs);
    } else {
        EXPECT_EQ(cores, procs);
    }
}

TEST(Context, ThreadAndCacheSetters) {
    orv::fem::context ctx;
    ctx.set_max_threads(0);
    EXPECT_EQ(ctx.get_max_threads(), 1u);
    ctx.set_max_threads(1000);
    EXPECT_EQ(ctx.get_max_threads(), static_cast<unsigned>(omp_get_max_threads()));

    ctx.set_LLC_size(1);
    EXPECT_EQ(ctx.get_LLC_size(), 102400u);
    ctx.set_LLC_size(102399);
    EXPECT_EQ(ctx.get_LLC_size(), 102400u);
    ctx.set_LLC_size(102401);
    EXPECT_EQ(ctx.get_LLC_size(), 102401u);
}

TEST(Context, TotalSizeLimit) {
    orv::fem::context ctx;
    const unsigned long long none = ~0ull;
    EXPECT_EQ(ctx.get_max_total_size(), none);
    ctx.set_max_total_size(1);
    EXPECT_EQ(ctx.get_max_total_size(), 1ull);
    ctx.set_max_total_size(0);
    EXPECT_EQ(ctx.get_max_total_size(), none);
}

TEST(Context, CopiesShareAndContextsShareNothing) {
    orv::fem::context a;
    orv::fem::context b(a);
    orv::fem::context c;
    b.set_max_threads(1);
    a.set_LLC_size(200000);
    EXPECT_EQ(a.get_max_threads(), 1u);
    EXPECT_EQ(b.get_LLC_size(), 200000u);
    c.set_LLC_size(300000);
    EXPECT_EQ(a.get_LLC_size(), 200000u);
    EXPECT_NE(a.engine()->models(), c.engine()->models());
    EXPECT_NE(a.engine()->bases(), c.engine()->bases());
    EXPECT_NE(a.engine()->evolution_funcs(), c.engine()->evolution_funcs());
    EXPECT_NE(a.engine()->models(), nullptr);
    EXPECT_EQ(a.engine()->models(), b.engine()->models());
}

TEST(Context, InCoreLimitMakesAndDropsTheManager) {
    temp_folder tmp;
    ASSERT_FALSE(tmp.path.empty());
    orv::fem::context ctx;
    EXPECT_EQ(ctx.engine()->OOC(), nullptr);
    EXPECT_EQ(ctx.set_max_incore_size(100, tmp.path.c_str(), nullptr), orv::fem::no_error);
    const orv::core::OOC_mgr* ooc = ctx.engine()->OOC();
    ASSERT_NE(ooc, nullptr);
    EXPECT_EQ(ooc->budget_bytes(), 100ull * 1048576ull);
    EXPECT_EQ(ctx.get_max_incore_size(), 100ull);
    EXPECT_EQ(ooc->directory(), tmp.path);
    EXPECT_EQ(ooc->file_stem(), "orv_");
    EXPECT_GT(ooc->free_disk_bytes(), 0ull);
    EXPECT_EQ(ooc->nbr_files(), 0ull);

    // An object that still refers to the old manager keeps it alive.
    orv::Ptr<orv::core::OOC_mgr> kept(ctx.engine()->OOC());
    EXPECT_EQ(ctx.set_max_incore_size(0, tmp.path.c_str(), nullptr), orv::fem::no_error);
    EXPECT_EQ(ctx.engine()->OOC(), nullptr);
    EXPECT_EQ(ctx.get_max_incore_size(), 0ull);
    EXPECT_EQ(kept->budget_bytes(), 100ull * 1048576ull);
    EXPECT_EQ(kept->ref_count(), 1u);

    // 0xFFFFFFFF also means "all in memory"; the largest other value is not clamped.
    EXPECT_EQ(ctx.set_max_incore_size(0xFFFFFFFFu, tmp.path.c_str(), nullptr), 0);
    EXPECT_EQ(ctx.engine()->OOC(), nullptr);
    EXPECT_EQ(ctx.set_max_incore_size(0xFFFFFFFEu, tmp.path.c_str(), nullptr), 0);
    EXPECT_EQ(ctx.engine()->OOC()->budget_bytes(), 0xFFFFFFFEull << 20);
}

TEST(Context, DefaultFolderAndPrefixWithSubFolder) {
    temp_folder tmp;
    ASSERT_EQ(mkdir((tmp.path + "/sub").c_str(), 0700), 0);
    orv::fem::context ctx;
    ASSERT_EQ(ctx.memory_management(8, nullptr, nullptr), 0);
    EXPECT_EQ(ctx.engine()->OOC()->directory(), "/tmp");
    ASSERT_EQ(ctx.set_max_incore_size(8, (tmp.path + "/").c_str(), "sub/run_"), 0);
    EXPECT_EQ(ctx.engine()->OOC()->directory(), tmp.path + "/sub");
    EXPECT_EQ(ctx.engine()->OOC()->file_stem(), "run_");
}

TEST(Context, UnusableFolderGives151AndNoBudget) {
    temp_folder tmp;
    orv::fem::context ctx;
    ASSERT_EQ(ctx.set_max_incore_size(10, tmp.path.c_str(), nullptr), 0);
    const std::string missing = tmp.path + "/missing";
    EXPECT_EQ(ctx.set_max_incore_size(10, missing.c_str(), nullptr), orv::fem::error_temp_file);
    EXPECT_EQ(ctx.engine()->OOC(), nullptr);
    EXPECT_EQ(ctx.get_max_incore_size(), 0ull);
    // memory_management is the same operation.
    EXPECT_EQ(ctx.memory_management(10, missing.c_str(), nullptr), orv::fem::error_temp_file);
    EXPECT_EQ(ctx.memory_management(10, tmp.path.c_str(), "nosuchdir/x"), orv::fem::error_temp_file);
    // A regular file is not a folder.
    EXPECT_EQ(ctx.set_max_incore_size(10, "/etc/hostname", nullptr), orv::fem::error_temp_file);
    // A path that does not fit the 256-character buffer.
    const std::string long_prefix(300, 'p');
    EXPECT_EQ(ctx.set_max_incore_size(10, tmp.path.c_str(), long_prefix.c_str()), orv::fem::error_temp_file);
    EXPECT_EQ(ctx.engine()->OOC(), nullptr);
    // A folder without write permission (root ignores permissions: skip then).
    if (geteuid() != 0) {
        ASSERT_EQ(chmod(tmp.path.c_str(), 0500), 0);
        EXPECT_EQ(ctx.set_max_incore_size(10, tmp.path.c_str(), nullptr), orv::fem::error_temp_file);
        chmod(tmp.path.c_str(), 0700);
    }
}

TEST(Context, OOCFileCountUnderThreads) {
    orv::core::OOC_mgr mgr;
    ASSERT_EQ(mgr.init(1, "/tmp", nullptr), 0);
#pragma omp parallel for num_threads(2)
    for (int i = 0; i < 1000; ++i) mgr.count_file();
    EXPECT_EQ(mgr.nbr_files(), 1000ull);
}

// A context handle narrowed from a handle of another class is empty: no call on it
// may reach a missing engine.
TEST(Context, EmptyHandleIsInert) {
    orv::fem::DOFs_mgr table;
    orv::fem::context empty(table);
    EXPECT_FALSE(empty.is_valid());
    empty.set_max_threads(4);
    empty.set_raw_penalty_factor(1.0);
    EXPECT_EQ(empty.get_max_threads(), 0u);
    EXPECT_EQ(empty.get_raw_penalty_factor(), 0.0);
    EXPECT_EQ(empty.get_max_incore_size(), 0ull);
    EXPECT_EQ(empty.set_max_incore_size(10, "/tmp", nullptr), orv::fem::error_data);
}
