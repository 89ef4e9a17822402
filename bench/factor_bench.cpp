// Benchmark of the sparse direct solver on a Matrix Market SPD matrix: ordering and
// block profile, assembly into the block-skyline matrix, LDLt factorisation, one
// solve and one of ten right-hand sides at once, with flop counts, residual, peak
// memory and an optional comparison with the figures of another solver on the same
// matrix.
//
// usage: factor_bench A.mtx [--rhs b.mtx] [--threads T] [--reps R] [--peer FILE]
//                    [--mode M] [--limit L] [--cache BYTES] [--quiet] [--order-only]
//                    [--write-perm FILE] [--write-solution FILE] [--sweep-reps N]
#include <omp.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "linalg/block_profile_build.h"
#include "linalg/numbering.h"
#include "linalg/pivot_checkers.h"
#include "linalg/symmetric_L_D_Lt.h"
#include "linalg/symmetric_hybrid_OOC.h"
#include "linalg/vector_fast.h"

using namespace orv::core;
typedef orv::dense1D<unsigned int, 8> uvec;

namespace {

double now() { return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(); }

// Processor time of the process, all threads together.
double cpu_now() {
    timespec ts;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
    return double(ts.tv_sec) + 1e-9 * double(ts.tv_nsec);
}

double median(std::vector<double> v) {
    if (v.empty()) return 0.0;
    std::sort(v.begin(), v.end());
    const std::size_t m = v.size() / 2;
    return v.size() % 2 ? v[m] : 0.5 * (v[m - 1] + v[m]);
}

double peak_MB() {
    std::ifstream f("/proc/self/status");
    std::string line;
    while (std::getline(f, line))
        if (line.compare(0, 6, "VmHWM:") == 0) return std::strtod(line.c_str() + 6, nullptr) / 1024.0;
    return 0.0;
}

struct coo_matrix {
    std::size_t n = 0;
    unsigned int dofs_per_node = 1;
    std::vector<unsigned int> row, col;  // 0-based, row >= col
    std::vector<double> val;
};

std::string slurp(const char* path) {
    std::ifstream f(path, std::ios::binary);
    if (!f) return std::string();
    std::ostringstream s;
    s << f.rdbuf();
    return s.str();
}

// Coordinate real symmetric, lower triangle, 1-based.
bool read_matrix(const char* path, coo_matrix& A) {
    const std::string text = slurp(path);
    if (text.empty()) return false;
    const char* p = text.c_str();
    if (std::strncmp(p, "%%MatrixMarket matrix coordinate real symmetric", 47) != 0) return false;
    // Comment lines, one of them may give the block size.
    while (*p == '%') {
        const char* eol = std::strchr(p, '\n');
        if (!eol) return false;
        const std::string line(p, eol);
        const std::size_t k = line.find("dofs_per_node");
        if (k != std::string::npos) A.dofs_per_node = unsigned(std::atoi(line.c_str() + k + 13));
        p = eol + 1;
    }
    char* end;
    const unsigned long rows = std::strtoul(p, &end, 10);
    const unsigned long cols = std::strtoul(end, &end, 10);
    const unsigned long nnz = std::strtoul(end, &end, 10);
    if (rows != cols || rows == 0) return false;
    A.n = rows;
    A.row.resize(nnz);
    A.col.resize(nnz);
    A.val.resize(nnz);
    for (unsigned long k = 0; k < nnz; ++k) {
        const unsigned long i = std::strtoul(end, &end, 10), j = std::strtoul(end, &end, 10);
        const char* before = end;
        A.val[k] = std::strtod(end, &end);
        if (end == before || i == 0 || j == 0 || i > rows || j > rows) return false;
        A.row[k] = unsigned(std::max(i, j) - 1);
        A.col[k] = unsigned(std::min(i, j) - 1);
    }
    if (A.dofs_per_node == 0 || A.n % A.dofs_per_node) A.dofs_per_node = 1;
    return true;
}

// Array real general, one column.
bool read_rhs(const char* path, std::size_t n, std::vector<double>& b) {
    const std::string text = slurp(path);
    if (text.empty()) return false;
    const char* p = text.c_str();
    while (*p == '%') {
        const char* eol = std::strchr(p, '\n');
        if (!eol) return false;
        p = eol + 1;
    }
    char* end;
    const unsigned long rows = std::strtoul(p, &end, 10);
    const unsigned long cols = std::strtoul(end, &end, 10);
    if (rows != n || cols != 1) return false;
    b.resize(n);
    for (std::size_t k = 0; k < n; ++k) b[k] = std::strtod(end, &end);
    return true;
}

void mult(const coo_matrix& A, const std::vector<double>& x, std::vector<double>& y) {
    y.assign(A.n, 0.0);
    for (std::size_t k = 0; k < A.val.size(); ++k) {
        const unsigned int i = A.row[k], j = A.col[k];
        y[i] += A.val[k] * x[j];
        if (i != j) y[j] += A.val[k] * x[i];
    }
}

// Element-like groups from the pattern: the DOFs of each coupled pair of nodes (and of
// each node alone), with the DOF index as its ID.
void pattern_groups(const coo_matrix& A, uvec& ptr, uvec& ids) {
    const unsigned int d = A.dofs_per_node;
    std::vector<std::uint64_t> pairs(A.val.size());
    for (std::size_t k = 0; k < A.val.size(); ++k) pairs[k] = (std::uint64_t(A.row[k] / d) << 32) | (A.col[k] / d);
    std::sort(pairs.begin(), pairs.end());
    pairs.erase(std::unique(pairs.begin(), pairs.end()), pairs.end());
    ptr.clear();
    ids.clear();
    ptr.reserve(pairs.size() + 1);
    ids.reserve(pairs.size() * 2 * d);
    ptr.push_back(0u);
    for (std::uint64_t pr : pairs) {
        const unsigned int I = unsigned(pr >> 32), J = unsigned(pr & 0xFFFFFFFFu);
        for (unsigned int c = 0; c < d; ++c) ids.push_back(I * d + c);
        if (J != I)
            for (unsigned int c = 0; c < d; ++c) ids.push_back(J * d + c);
        ptr.push_back(unsigned(ids.size()));
    }
}

// Operations of the block-skyline factorisation on this profile, multiply and add
// counted apart: the left-looking dots of the own columns, the diagonal pass, the
// solve of the extra segments against the block's L and the outer products sent to
// later blocks.
double skyline_flops(const orv::dense1D<block_profile, 8>& blocks) {
    double flops = 0;
    std::vector<unsigned int> h_own;
    std::vector<double> he;
    for (std::size_t b = 0; b < blocks.size(); ++b) {
        const block_profile& bp = blocks[b];
        const unsigned int first = bp.first, own = bp.last - bp.first;
        h_own.resize(own);
        for (unsigned int k = 0; k < own; ++k) h_own[k] = bp.segments[k].height;
        for (unsigned int k = 0; k < own; ++k) {
            const unsigned int j = first + k, h = h_own[k], top = j - h;
            double f = 0;
            for (unsigned int i = top + 1; i < j; ++i) f += std::min(i - top, h_own[i - first]);
            flops += 2.0 * f + 3.0 * h + 1.0;
        }
        he.clear();
        for (std::size_t k = own; k < bp.segments.size(); ++k) {
            const unsigned int h = bp.segments[k].height, top = bp.last - h;
            double f = 0;
            for (unsigned int i = top + 1; i < bp.last; ++i) f += std::min(i - top, h_own[i - first]);
            flops += 2.0 * f + h;  // the solve, then the scaling by 1 / D
            he.push_back(h);
        }
        // Outer products: every pair a <= b of extras shares min(h_a, h_b) rows.
        std::sort(he.begin(), he.end());
        const std::size_t e = he.size();
        for (std::size_t i = 0; i < e; ++i) flops += (2.0 * he[i] + 1.0) * double(e - i);
    }
    return flops;
}

// Column counts of the exact Cholesky factor in the elimination order pos[] (row
// subtrees on the elimination tree): returns sum c_j^2 and sets sum c_j.
double exact_factor_flops(const coo_matrix& A, const std::vector<unsigned int>& pos, double& nnz_L) {
    const std::size_t n = A.n;
    std::vector<unsigned int> cnt(n + 1, 0);
    for (std::size_t k = 0; k < A.val.size(); ++k)
        if (A.row[k] != A.col[k]) ++cnt[std::max(pos[A.row[k]], pos[A.col[k]]) + 1];
    for (std::size_t i = 0; i < n; ++i) cnt[i + 1] += cnt[i];
    std::vector<unsigned int> lower(cnt[n]);
    {
        std::vector<unsigned int> at(cnt.begin(), cnt.end() - 1);
        for (std::size_t k = 0; k < A.val.size(); ++k)
            if (A.row[k] != A.col[k]) {
                const unsigned int a = pos[A.row[k]], c = pos[A.col[k]];
                lower[at[std::max(a, c)]++] = std::min(a, c);
            }
    }
    const unsigned int none = ~0u;
    std::vector<unsigned int> parent(n, none), ancestor(n, none);
    for (unsigned int i = 0; i < n; ++i)
        for (unsigned int e = cnt[i]; e < cnt[i + 1]; ++e) {
            unsigned int j = lower[e];
            while (ancestor[j] != none && ancestor[j] != i) {
                const unsigned int next = ancestor[j];
                ancestor[j] = i;
                j = next;
            }
            if (ancestor[j] == none) {
                ancestor[j] = i;
                parent[j] = i;
            }
        }
    std::vector<unsigned int> colcount(n, 1), mark(n, none);
    for (unsigned int i = 0; i < n; ++i) {
        mark[i] = i;
        for (unsigned int e = cnt[i]; e < cnt[i + 1]; ++e)
            for (unsigned int j = lower[e]; j != none && mark[j] != i; j = parent[j]) {
                mark[j] = i;
                ++colcount[j];
            }
    }
    double s = 0, s2 = 0;
    for (unsigned int c : colcount) {
        s += c;
        s2 += double(c) * c;
    }
    nnz_L = s;
    return s2;
}

void print_hook(void*, unsigned int, const char* text) { std::fputs(text, stdout); }

// Value of "key": in a JSON line, as text (quotes removed), empty if absent.
std::string json_field(const std::string& line, const std::string& key) {
    const std::string k = "\"" + key + "\":";
    const std::size_t p = line.find(k);
    if (p == std::string::npos) return std::string();
    std::size_t b = p + k.size(), e;
    if (line[b] == '"') {
        e = line.find('"', b + 1);
        return line.substr(b + 1, e - b - 1);
    }
    e = line.find_first_of(",}", b);
    return line.substr(b, e - b);
}

struct peer_figures {
    bool found = false;
    double factor_s = 0, nnzL_native = 0, flops = 0, peak_rss_mb = 0;
};

peer_figures read_peer(const char* path, int threads) {
    peer_figures f;
    std::ifstream in(path);
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] != '{') continue;
        if (json_field(line, "solver") != "cholmod_super" || json_field(line, "status") != "ok") continue;
        if (std::atoi(json_field(line, "blas_threads").c_str()) != threads) continue;
        f.found = true;
        f.factor_s = std::atof(json_field(line, "factor_s").c_str());
        f.nnzL_native = std::atof(json_field(line, "nnzL_native").c_str());
        f.flops = std::atof(json_field(line, "flops").c_str());
        f.peak_rss_mb = std::atof(json_field(line, "peak_rss_mb").c_str());
    }
    return f;
}

int usage() {
    std::fprintf(stderr,
                 "usage: factor_bench A.mtx [--rhs b.mtx] [--threads T] [--reps R] [--peer FILE] [--mode M]\n"
                 "                    [--limit L] [--cache BYTES] [--quiet] [--order-only] [--write-perm FILE]\n"
                 "                    [--write-solution FILE] [--sweep-reps N]\n");
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    const char* mtx = nullptr;
    const char* rhs = nullptr;
    const char* peer = nullptr;
    const char* perm_file = nullptr;
    const char* solution_file = nullptr;
    int sweep_reps = 0;
    int threads = 1, reps = 3;
    unsigned int mode = 5, limit = block_profile_limit;
    long cache = sysconf(_SC_LEVEL3_CACHE_SIZE);
    bool quiet = false, order_only = false;
    for (int a = 1; a < argc; ++a) {
        const std::string s = argv[a];
        const bool more = a + 1 < argc;
        if (s == "--rhs" && more)
            rhs = argv[++a];
        else if (s == "--threads" && more)
            threads = std::max(1, std::atoi(argv[++a]));
        else if (s == "--reps" && more)
            reps = std::max(1, std::atoi(argv[++a]));
        else if (s == "--peer" && more)
            peer = argv[++a];
        else if (s == "--mode" && more)
            mode = unsigned(std::atoi(argv[++a]));
        else if (s == "--limit" && more)
            limit = unsigned(std::max(1, std::atoi(argv[++a])));
        else if (s == "--cache" && more)
            cache = std::atol(argv[++a]);
        else if (s == "--quiet")
            quiet = true;
        else if (s == "--order-only")
            order_only = true;
        else if (s == "--write-perm" && more)
            perm_file = argv[++a];
        else if (s == "--write-solution" && more)
            solution_file = argv[++a];
        else if (s == "--sweep-reps" && more)
            sweep_reps = std::max(0, std::atoi(argv[++a]));
        else if (s[0] != '-' && !mtx)
            mtx = argv[a];
        else
            return usage();
    }
    if (!mtx) return usage();
    if (cache <= 0) cache = long(threads) << 20;  // 1 MiB a thread when unknown
    omp_set_num_threads(threads);

    coo_matrix A;
    double t0 = now();
    if (!read_matrix(mtx, A)) {
        std::fprintf(stderr, "factor_bench: cannot read %s as a symmetric coordinate matrix\n", mtx);
        return 1;
    }
    std::vector<double> b;
    if (rhs) {
        if (!read_rhs(rhs, A.n, b)) {
            std::fprintf(stderr, "factor_bench: cannot read %s as an array of %zu values\n", rhs, A.n);
            return 1;
        }
    } else {
        mult(A, std::vector<double>(A.n, 1.0), b);
    }
    std::printf("matrix %s: n = %zu, nnz(lower) = %zu, dofs per node %u, read in %.2f s\n", mtx, A.n, A.val.size(),
                A.dofs_per_node, now() - t0);

    t0 = now();
    uvec gptr, gids;
    pattern_groups(A, gptr, gids);
    const double t_groups = now() - t0;
    std::printf("element groups: %zu (node pairs), %zu DOF entries, built in %.2f s\n", gptr.size() - 1, gids.size(),
                t_groups);

    std::vector<double> t_order, t_assemble, t_factor, t_factor_cpu, t_solve, t_solve10;
    std::vector<double> x(A.n, 0.0);
    block_profile_totals totals;
    double flops_skyline = 0, flops_kernel = 0, nnz_L_exact = 0, flops_cj2 = 0;
    std::size_t nbr_blocks = 0;
    double pivot_min = 0, pivot_max = 0;
    for (int rep = 0; rep < reps; ++rep) {
        std::vector<unsigned int> all(A.n);
        for (std::size_t k = 0; k < A.n; ++k) all[k] = unsigned(k);
        vector_fast<unsigned int> free_DOFs(all.data(), all.data() + all.size());
        numbering_output out;

        t0 = now();
        int rc = number_free_DOFs(gptr, gids, free_DOFs, out, false, mode, limit);
        t_order.push_back(now() - t0);
        if (rc) {
            std::fprintf(stderr, "factor_bench: numbering failed (%d)\n", rc);
            return 1;
        }
        std::vector<unsigned int> pos(A.n);
        for (std::size_t k = 0; k < A.n; ++k) pos[k] = free_DOFs.find(unsigned(k));
        if (rep == 0) {
            totals = out.totals;
            nbr_blocks = out.blocks.size();
            if (!quiet) report_block_profile(totals, &print_hook, nullptr);
            flops_skyline = skyline_flops(out.blocks);
            flops_cj2 = exact_factor_flops(A, pos, nnz_L_exact);
            if (perm_file) {
                // Elimination order as new -> old, 0-based, one a line.
                std::FILE* f = std::fopen(perm_file, "w");
                if (!f) {
                    std::fprintf(stderr, "factor_bench: cannot write %s\n", perm_file);
                    return 1;
                }
                for (std::size_t k = 0; k < A.n; ++k) std::fprintf(f, "%u\n", free_DOFs[k]);
                std::fclose(f);
            }
        }
        if (order_only) continue;

        t0 = now();
        skyline_factor F;
        {
            symmetric_hybrid_OOC<double> K;
            rc = K.init(out.blocks, 0.0, orv::Ptr<OOC_mgr>());
            if (rc) {
                std::fprintf(stderr, "factor_bench: matrix allocation failed (%d)\n", rc);
                return 1;
            }
            for (std::size_t k = 0; k < A.val.size(); ++k) {
                rc = K.add_val(pos[A.row[k]], pos[A.col[k]], A.val[k]);
                if (rc) {
                    std::fprintf(stderr, "factor_bench: entry (%u, %u) outside the profile\n", A.row[k], A.col[k]);
                    return 1;
                }
            }
            F = K;
        }
        t_assemble.push_back(now() - t0);
        out.blocks.clear_hard();
        if (rep == 0 && !quiet) {
            const std::uint64_t zeros = F.count_zeros();
            report_numerical_fill(totals, zeros, &print_hook, nullptr);
        }

        pivot_check_positive<dummy_verboser> checker;
        t0 = now();
        const double c0 = cpu_now();
        rc = F.factorize(checker, std::size_t(cache), threads);
        t_factor.push_back(now() - t0);
        t_factor_cpu.push_back(cpu_now() - c0);
        if (rc) {
            std::fprintf(stderr, "factor_bench: factorisation failed (%d)\n", rc);
            return 1;
        }
        flops_kernel = F.last_flops();
        pivot_min = checker.first;
        pivot_max = checker.second;

        std::vector<double> y(A.n);
        for (std::size_t k = 0; k < A.n; ++k) y[pos[k]] = b[k];
        t0 = now();
        F.solve(y.data(), threads);
        t_solve.push_back(now() - t0);
        for (std::size_t k = 0; k < A.n; ++k) x[k] = y[pos[k]];
        // Ten right-hand sides at once: b scaled by 1 to 10.
        const std::size_t n_rhs = 10;
        std::vector<double> Y(A.n * n_rhs);
        for (std::size_t j = 0; j < n_rhs; ++j)
            for (std::size_t k = 0; k < A.n; ++k) Y[j * A.n + pos[k]] = double(j + 1) * b[k];
        t0 = now();
        F.solve(Y.data(), A.n, n_rhs, threads);
        t_solve10.push_back(now() - t0);
        if (rep + 1 == reps && sweep_reps > 0) {
            // Single-vector sweeps on one thread and on `threads`, interleaved so that
            // a change of the machine's load falls on both.
            std::vector<double> f1, ft, s1, st;
            for (int r = 0; r < sweep_reps; ++r)
                for (int t : {1, threads}) {
                    for (std::size_t k = 0; k < A.n; ++k) y[pos[k]] = b[k];
                    double c = now();
                    F.solve_forward(y.data(), t);
                    (t == 1 ? f1 : ft).push_back(now() - c);
                    for (std::size_t k = 0; k < A.n; ++k) y[pos[k]] = b[k];
                    c = now();
                    F.solve(y.data(), t);
                    (t == 1 ? s1 : st).push_back(now() - c);
                }
            auto spread = [](std::vector<double> v) {
                std::sort(v.begin(), v.end());
                return std::make_pair(v.front(), v.back());
            };
            // The bound of the level-parallel sweeps: each level takes at least its
            // largest block and its values over the threads (values as the work).
            {
                const std::size_t nb = F.nbr_blocks();
                std::vector<std::size_t> level(nb, 0);
                for (std::size_t k = 0; k < nb; ++k)
                    if (F.parent_of(k) != ~0u) level[F.parent_of(k)] = std::max(level[F.parent_of(k)], level[k] + 1);
                const std::size_t n_levels = nb ? *std::max_element(level.begin(), level.end()) + 1 : 0;
                std::vector<double> sum(n_levels, 0.0), big(n_levels, 0.0);
                double total = 0;
                for (std::size_t k = 0; k < nb; ++k) {
                    const double v = double(F.block(k).values.size());
                    sum[level[k]] += v;
                    big[level[k]] = std::max(big[level[k]], v);
                    total += v;
                }
                double bound = 0;
                for (std::size_t l = 0; l < n_levels; ++l) bound += std::max(big[l], sum[l] / threads);
                std::printf("block tree: %zu levels; bound of the level-parallel sweeps' speed-up at %d threads %.2f\n",
                            n_levels, threads, bound > 0 ? total / bound : 1.0);
            }
            std::printf(
                "single-vector sweeps (median of %d, min to max): forward 1 thread %.4f s (%.4f to %.4f), "
                "%d threads %.4f s (%.4f to %.4f); solve 1 thread %.4f s (%.4f to %.4f), %d threads %.4f s "
                "(%.4f to %.4f)\n",
                sweep_reps, median(f1), spread(f1).first, spread(f1).second, threads, median(ft), spread(ft).first,
                spread(ft).second, median(s1), spread(s1).first, spread(s1).second, threads, median(st),
                spread(st).first, spread(st).second);
        }
    }

    if (order_only) {
        std::printf("blocks %zu, stored factor entries %llu, exact nnz(L) %.4g, skyline flops %.4g, sum c_j^2 %.4g\n",
                    nbr_blocks, (unsigned long long)totals.profile, nnz_L_exact, flops_skyline, flops_cj2);
        std::printf("ordering %.3f s (median of %d), peak memory %.1f MB\n", median(t_order), reps, peak_MB());
        return 0;
    }
    if (solution_file) {
        // The solution of the last repetition, raw doubles in the original order, so
        // that runs can be compared bit for bit.
        std::FILE* f = std::fopen(solution_file, "wb");
        if (!f || std::fwrite(x.data(), sizeof(double), x.size(), f) != x.size()) {
            std::fprintf(stderr, "factor_bench: cannot write %s\n", solution_file);
            if (f) std::fclose(f);
            return 1;
        }
        std::fclose(f);
    }
    std::vector<double> Ax;
    mult(A, x, Ax);
    double rn = 0, bn = 0;
    for (std::size_t k = 0; k < A.n; ++k) {
        rn += (Ax[k] - b[k]) * (Ax[k] - b[k]);
        bn += b[k] * b[k];
    }
    const double residual = std::sqrt(rn) / std::max(std::sqrt(bn), 1e-300);
    const double to = median(t_order), ta = median(t_assemble), tf = median(t_factor), ts = median(t_solve);
    const double ts10 = median(t_solve10), tfc = median(t_factor_cpu);
    const double factor_MB = double(totals.profile + 2 * totals.nbr_segments) * 8.0 / 1048576.0;
    const double peak = peak_MB();

    std::printf("blocks %zu, stored factor entries %llu (%.1f MB with the segment tables), exact nnz(L) %.4g\n",
                nbr_blocks, (unsigned long long)totals.profile, factor_MB, nnz_L_exact);
    std::printf("pivots: lowest %.6e, highest %.6e\n", pivot_min, pivot_max);
    std::printf(
        "times (median of %d, %d thread%s): ordering %.3f s, assembly %.3f s, factorisation %.3f s "
        "(processor %.3f s), solve %.4f s, solve of 10 right-hand sides %.4f s\n",
        reps, threads, threads > 1 ? "s" : "", to, ta, tf, tfc, ts, ts10);
    std::printf("flops: skyline %.4g (%.2f GFLOP/s), kernels' own count %.4g, sum c_j^2 %.4g (%.2f GFLOP/s)\n",
                flops_skyline, flops_skyline / tf * 1e-9, flops_kernel, flops_cj2, flops_cj2 / tf * 1e-9);
    std::printf("relative residual %.3e, peak memory %.1f MB\n", residual, peak);

    std::string peer_json;
    if (peer) {
        const peer_figures pf = read_peer(peer, threads);
        if (pf.found) {
            const double peer_MB = pf.nnzL_native * 8.0 / 1048576.0;
            std::printf("peer cholmod_super (%d thread%s): factor %.3f s, factor size %.1f MB, sum c_j^2 %.4g\n",
                        threads, threads > 1 ? "s" : "", pf.factor_s, peer_MB, pf.flops);
            std::printf("ratio ours / peer: factorisation time %.2f, factor memory %.2f\n", tf / pf.factor_s,
                        factor_MB / peer_MB);
            char buf[256];
            std::snprintf(buf, sizeof buf,
                          ",\"peer_factor_s\":%.6g,\"factor_time_ratio\":%.4g,\"peer_factor_MB\":%.6g,"
                          "\"factor_memory_ratio\":%.4g",
                          pf.factor_s, tf / pf.factor_s, peer_MB, factor_MB / peer_MB);
            peer_json = buf;
        } else {
            std::printf("peer: no cholmod_super line for %d thread%s in %s\n", threads, threads > 1 ? "s" : "", peer);
        }
    }

    const char* name = std::strrchr(mtx, '/');
    std::printf(
        "{\"matrix\":\"%s\",\"n\":%zu,\"nnzA_lower\":%zu,\"nbr_blocks\":%zu,\"nnz_L\":%llu,"
        "\"nnz_L_exact\":%.0f,\"factor_MB\":%.6g,\"flops\":%.6g,\"flops_cj2\":%.6g,\"flops_kernel\":%.6g,"
        "\"t_order\":%.6g,\"t_assemble\":%.6g,\"t_factor\":%.6g,\"t_factor_cpu\":%.6g,\"t_solve\":%.6g,\"t_solve10\":%."
        "6g,\"gflops\":%.4g,"
        "\"gflops_cj2\":%.4g,\"residual\":%.3e,\"peak_MB\":%.1f,\"threads\":%d,\"reps\":%d%s}\n",
        name ? name + 1 : mtx, A.n, A.val.size(), nbr_blocks, (unsigned long long)totals.profile, nnz_L_exact,
        factor_MB, flops_skyline, flops_cj2, flops_kernel, to, ta, tf, tfc, ts, ts10, flops_skyline / tf * 1e-9,
        flops_cj2 / tf * 1e-9, residual, peak, threads, reps, peer_json.c_str());
    return 0;
}
