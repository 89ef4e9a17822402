// Pieces shared by the benchmarks that run a model through our library and through
// an external solver (CalculiX, `ccx`): clocks and memory figures of this process,
// medians, the clamped hexa8 cube, its input deck, and the runs of `ccx` in a folder.
#pragma once

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "orvmath1/dense2D.h"

namespace orv {
namespace bench {

inline double now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

inline double cpu_seconds(const rusage& ru) {
    return double(ru.ru_utime.tv_sec) + 1e-6 * double(ru.ru_utime.tv_usec) + double(ru.ru_stime.tv_sec) +
           1e-6 * double(ru.ru_stime.tv_usec);
}

// Processor time of this process (all its threads) so far.
inline double process_cpu() {
    rusage ru;
    return getrusage(RUSAGE_SELF, &ru) == 0 ? cpu_seconds(ru) : 0.0;
}

// One-minute load average of the machine, -1 when unknown: the figures are only
// meaningful when it stays well under the thread count of the machine.
inline double load_average() {
    std::ifstream f("/proc/loadavg");
    double l = -1.0;
    if (!(f >> l)) return -1.0;
    return l;
}

// A "Vm..." figure of /proc/self/status in MB, -1 when unknown.
inline double proc_status_MB(const char* key) {
    std::ifstream f("/proc/self/status");
    std::string line;
    const std::string k = std::string(key) + ":";
    while (std::getline(f, line))
        if (line.compare(0, k.size(), k) == 0) return std::atof(line.c_str() + k.size()) / 1024.0;  // kB
    return -1.0;
}

inline double median(std::vector<double> v) {
    if (v.empty()) return 0.0;
    std::sort(v.begin(), v.end());
    const std::size_t m = v.size() / 2;
    return v.size() % 2 ? v[m] : 0.5 * (v[m - 1] + v[m]);
}

// The structured mesh and its load.
struct cube_mesh {
    unsigned nx, ny, nz;
    unsigned Nx, Ny, Nz;
    dense2D<double> pos;         // 3 x nodes
    dense2D<unsigned int> conn;  // 8 x elements, 0-based nodes
    std::vector<double> load_z;  // force in z on each node (0 where none)

    cube_mesh(unsigned nx_, unsigned ny_, unsigned nz_)
        : nx(nx_),
          ny(ny_),
          nz(nz_),
          Nx(nx_ + 1),
          Ny(ny_ + 1),
          Nz(nz_ + 1),
          pos(3, std::size_t(nx_ + 1) * (ny_ + 1) * (nz_ + 1), 0.0),
          conn(8, std::size_t(nx_) * ny_ * nz_, 0u),
          load_z(std::size_t(nx_ + 1) * (ny_ + 1) * (nz_ + 1), 0.0) {
        for (unsigned k = 0; k < Nz; ++k)
            for (unsigned j = 0; j < Ny; ++j)
                for (unsigned i = 0; i < Nx; ++i) {
                    const unsigned v = node(i, j, k);
                    pos(0, v) = i;
                    pos(1, v) = j;
                    pos(2, v) = k;
                }
        // Corners counter-clockwise on the lower face, then on the upper face.
        static const unsigned corner[8][3] = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0},
                                              {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}};
        std::size_t e = 0;
        for (unsigned k = 0; k < nz; ++k)
            for (unsigned j = 0; j < ny; ++j)
                for (unsigned i = 0; i < nx; ++i, ++e)
                    for (unsigned a = 0; a < 8; ++a)
                        conn(a, e) = node(i + corner[a][0], j + corner[a][1], k + corner[a][2]);
        const double q = -1.0 / (double(nx) * ny);
        for (unsigned j = 0; j < ny; ++j)
            for (unsigned i = 0; i < nx; ++i)
                for (unsigned a = 0; a < 4; ++a) load_z[node(i + (a & 1), j + ((a >> 1) & 1), nz)] += q / 4.0;
    }
    unsigned node(unsigned i, unsigned j, unsigned k) const { return i + Nx * (j + Ny * k); }
    unsigned nbr_nodes() const { return Nx * Ny * Nz; }
    unsigned nbr_elements() const { return nx * ny * nz; }
    bool clamped(unsigned v) const { return v < Nx * Ny; }  // k == 0
};

struct log_lines {
    std::vector<std::pair<unsigned, std::string>> lines;
    std::vector<std::pair<double, double>> memory;  // VmRSS and VmHWM at each line, MB
    static void hook(void* p, unsigned level, const char* text) {
        log_lines* l = static_cast<log_lines*>(p);
        l->lines.emplace_back(level, text ? text : "");
        l->memory.emplace_back(proc_status_MB("VmRSS"), proc_status_MB("VmHWM"));
    }
};

// The mesh part of a deck: nodes and elements 1-based, the clamped face as the node
// set FIXED held in 1 to 3, the material (E, nu and, when rho > 0, the density) and
// the solid section. The caller writes the step.
inline void write_mesh_deck(FILE* f, const cube_mesh& m, double E, double nu, double rho) {
    std::fprintf(f, "** clamped cube %u x %u x %u of C3D8, E = %g, nu = %g\n", m.nx, m.ny, m.nz, E, nu);
    std::fprintf(f, "*NODE, NSET=NALL\n");
    for (unsigned v = 0; v < m.nbr_nodes(); ++v)
        std::fprintf(f, "%u, %.17g, %.17g, %.17g\n", v + 1, m.pos(0, v), m.pos(1, v), m.pos(2, v));
    std::fprintf(f, "*ELEMENT, TYPE=C3D8, ELSET=EALL\n");
    for (unsigned e = 0; e < m.nbr_elements(); ++e) {
        std::fprintf(f, "%u", e + 1);
        for (unsigned a = 0; a < 8; ++a) std::fprintf(f, ", %u", m.conn(a, e) + 1);
        std::fprintf(f, "\n");
    }
    std::fprintf(f, "*NSET, NSET=FIXED\n");
    unsigned count = 0;
    for (unsigned v = 0; v < m.nbr_nodes(); ++v)
        if (m.clamped(v)) std::fprintf(f, "%u%s", v + 1, (++count % 16) ? ", " : ",\n");
    if (count % 16) std::fprintf(f, "\n");
    std::fprintf(f, "*MATERIAL, NAME=MAT\n*ELASTIC\n%.12g, %.12g\n", E, nu);  // fields of 20 characters at most
    if (rho > 0) std::fprintf(f, "*DENSITY\n%.12g\n", rho);
    std::fprintf(f, "*SOLID SECTION, ELSET=EALL, MATERIAL=MAT\n");
    std::fprintf(f, "*BOUNDARY\nFIXED, 1, 3\n");
}

// Runs `ccx -i job` in dir with the thread variables set to threads; the wall clock of
// the process, or a negative value on failure. cpu: its processor time.
inline double run_ccx(const std::string& ccx, const std::string& dir, unsigned threads, double& cpu) {
    const std::string t = std::to_string(threads);
    std::fflush(stdout);
    std::fflush(stderr);
    const double t0 = now();
    const pid_t pid = fork();
    if (pid < 0) return -1.0;
    if (pid == 0) {
        if (chdir(dir.c_str()) != 0) _exit(126);
        const char* vars[] = {"OMP_NUM_THREADS",     "CCX_NPROC_EQUATION_SOLVER",
                              "CCX_NPROC_STIFFNESS", "CCX_NPROC_RESULTS",
                              "NUMBER_OF_CPUS",      "OPENBLAS_NUM_THREADS"};
        for (const char* v : vars) setenv(v, t.c_str(), 1);
        FILE* out = std::freopen("job.log", "w", stdout);
        if (!out) _exit(126);
        if (dup2(fileno(stdout), 2) < 0) _exit(126);
        execl(ccx.c_str(), ccx.c_str(), "-i", "job", static_cast<char*>(nullptr));
        _exit(127);
    }
    int status = 0;
    rusage ru;
    if (wait4(pid, &status, 0, &ru) < 0) return -1.0;
    const double wall = now() - t0;
    cpu = cpu_seconds(ru);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) return -1.0;
    return wall;
}

// Line of the ccx log that names what it used, for the report.
inline std::string grep_log(const std::string& path, const char* key) {
    std::ifstream f(path);
    std::string line;
    while (std::getline(f, line))
        if (line.find(key) != std::string::npos) {
            const std::size_t a = line.find_first_not_of(" \t");
            return a == std::string::npos ? std::string() : line.substr(a);
        }
    return std::string();
}

inline std::string json_escape(const std::string& s) {
    std::string o;
    for (char c : s) {
        if (c == '"' || c == '\\') o += '\\';
        if (c == '\n') {
            o += "\\n";
            continue;
        }
        o += c;
    }
    return o;
}

// The runs of ccx on one deck: a folder (`keep`, or a temporary one removed after),
// the deck written by write(path), reps runs timed, then read(dir) on the results.
// status: "ok" or what failed; wall and cpu: the figures of each run.
struct ccx_runs {
    std::string status = "not run";
    std::vector<double> wall, cpu;
    std::string solver_line;  // what the ccx log says it factored with

    void run(const std::string& ccx, const std::string& keep, const char* prefix, unsigned threads, unsigned reps,
             const std::function<bool(const std::string&)>& write,
             const std::function<bool(const std::string&)>& read) {
        std::string dir = keep;
        bool temp_dir = false;
        if (dir.empty()) {
            std::string tmpl = std::string("/tmp/") + prefix + "_XXXXXX";
            if (mkdtemp(&tmpl[0])) dir = tmpl, temp_dir = true;
        } else {
            mkdir(dir.c_str(), 0755);
        }
        if (dir.empty() || !write(dir + "/job.inp")) {
            status = "cannot write the deck in " + (dir.empty() ? std::string("/tmp") : dir);
            return;
        }
        status = "ok";
        for (unsigned rep = 0; rep < reps; ++rep) {
            std::remove((dir + "/job.dat").c_str());
            double c = 0.0;
            const double w = run_ccx(ccx, dir, threads, c);
            if (w < 0) {
                status = "ccx failed, see " + dir + "/job.log";
                return;  // the folder stays for a look
            }
            wall.push_back(w);
            cpu.push_back(c);
        }
        if (!read(dir)) {
            status = "cannot read the results of " + dir + "/job.dat";
            return;
        }
        solver_line = grep_log(dir + "/job.log", "Factoring the system of equations");
        const std::string cpus = grep_log(dir + "/job.log", "cpu(s) for spooles");
        if (!cpus.empty()) solver_line += "; " + cpus;
        if (temp_dir) {
            for (const char* f : {"job.inp", "job.dat", "job.log", "job.sta", "job.cvg", "job.frd", "spooles.out",
                                  "job.12d", "job.eig"})
                std::remove((dir + "/" + f).c_str());
            rmdir(dir.c_str());
        }
    }
};

}  // namespace bench
}  // namespace orv
