// Benchmark of a whole linear static run on a clamped cube of hexa8 elements, phase by
// phase, and the same mesh run through an external solver (CalculiX, element C3D8,
// full 2x2x2 integration like ours) for the ratio of whole-run times and the largest
// difference between the two displacement fields.
//
// usage: static_bench [--n N] [--nx N] [--ny N] [--nz N] [--threads T] [--reps R]
//                     [--ccx PATH] [--keep DIR] [--quiet]
//
// The mesh: nx * ny * nz unit-cube elements, E = 1, nu = 0.3, nodes numbered x fastest
// (node = i + (nx + 1) * (j + (ny + 1) * k)), the face z = 0 clamped, a uniform traction
// of total magnitude 1 in -z on the face z = nz as consistent nodal loads (a quarter of
// each element face's share on each of its corners).
#include <omp.h>
#include <orv/fem/error_type.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <orv/fem/DOFs_mgr.h>
#include <orv/fem/context.h>
#include <orv/fem/element_type.h>
#include <orv/fem/law_solid_stiff.h>
#include <orv/fem/model_solid.h>
#include <orv/fem/numerical_model_stiff.h>
#include <orv/fem/problem_data.h>
#include <orv/fem/solver_static_linear.h>

#include "bench/bench_peer.h"
#include "orvmath1/dense1D.h"
#include "orvmath1/dense2D.h"

using namespace orv;
using namespace orv::bench;

namespace {

struct options {
    unsigned nx = 20, ny = 20, nz = 20;
    unsigned threads = 1;
    unsigned reps = 3;
    std::string ccx;
    std::string keep;
    bool quiet = false;
};

[[noreturn]] void usage() {
    std::fprintf(stderr,
                 "usage: static_bench [--n N] [--nx N] [--ny N] [--nz N] [--threads T] [--reps R]\n"
                 "                    [--ccx PATH] [--keep DIR] [--quiet]\n");
    std::exit(2);
}

// ---------------------------------------------------------------------------------
// Our side.

struct our_result {
    bool ok = false;
    std::string status;  // "ok" or the error
    double time_numbering = 0, time_assembly = 0, time_factor = 0, time_RHS = 0, time_solve = 0, time_total = 0;
    double wall_setup = 0;  // law, physics, mesh model, DOF table, loads, problem record
    double wall_run = 0;    // the run() call
    double cpu_run = 0;     // processor time of the run() call, all threads
    std::uint32_t nbr_free_DOFs = 0;
    double size_Kf = 0, energy = 0, pivot_min = 0, pivot_max = 0;
    double size_total = 0, size_spare = 0;                 // the run's own figures
    double hwm_before = 0, hwm_after = 0, rss_before = 0;  // the process's, MB
    std::vector<double> U;                                 // 3 per node, clamped nodes 0
    log_lines log;
};

our_result run_ours(const cube_mesh& m, unsigned threads) {
    our_result r;
    const double t0 = now();
    fem::context ctx;
    ctx.set_max_threads(threads);
    fem::law_solid_StVenant law(ctx);
    if (!law.is_valid()) {
        r.status = "law_solid_StVenant could not be created";
        return r;
    }
    if (int rc = law.init(1.0, 0.3, 0.0)) {
        r.status = "law_solid_StVenant::init returned " + std::to_string(rc);
        return r;
    }
    fem::model_solid_lin physics;
    if (fem::error_type rc = physics.init(law)) {
        r.status = "model_solid_lin::init returned " + std::to_string(rc);
        return r;
    }
    fem::numerical_model_stiff_lin mesh;
    if (fem::error_type rc = mesh.init(ctx, physics, m.conn, fem::FE_hexa8)) {
        r.status = "numerical_model_stiff_lin::init returned " + std::to_string(rc);
        return r;
    }
    const unsigned nodes = m.nbr_nodes();
    fem::DOFs_mgr table(nodes, false);
    for (unsigned v = 0; v < nodes; ++v)
        if (!m.clamped(v)) table.set(v, fem::field_displacement, true);
    dense2D<double> pos = m.pos;
    fem::problem_data problem(ctx, pos, table, mesh.ID(), 1);
    fem::loads_mgr loads = problem.get_loads_mgr(0);
    for (unsigned v = 0; v < nodes; ++v)
        if (m.load_z[v] != 0.0 && !m.clamped(v)) loads.record_nodal_load(v, fem::field_displacement, 2, m.load_z[v]);
    r.wall_setup = now() - t0;

    fem::solver_static_linear solver;
    solver.settings.output_mask = 64;
    solver.settings.display_hook = &log_lines::hook;
    solver.settings.pass_thru = &r.log;
    fem::solver_static_linear::data_type data(problem);
    const double c1 = process_cpu();
    r.hwm_before = proc_status_MB("VmHWM");
    r.rss_before = proc_status_MB("VmRSS");
    const double t1 = now();
    solver.run(data);
    r.hwm_after = proc_status_MB("VmHWM");
    r.wall_run = now() - t1;
    r.cpu_run = process_cpu() - c1;

    r.time_numbering = data.time_numbering;
    r.time_assembly = data.time_assembly;
    r.time_factor = data.time_factor;
    r.time_RHS = data.time_RHS;
    r.time_solve = data.time_solve;
    r.time_total = data.time_total;
    r.nbr_free_DOFs = data.nbr_free_DOFs;
    r.size_Kf = data.size_Kf;
    r.size_total = data.size_total;
    r.size_spare = data.size_spare;
    r.pivot_min = data.pivot_min;
    r.pivot_max = data.pivot_max;
    if (data.energy.size() > 0) r.energy = data.energy[0];
    if (data.error_code != 0) {
        r.status = "run error " + std::to_string(data.error_code) + " " + data.error_name + " " + data.error_msg;
        return r;
    }
    if (data.U.cols() != 1) {
        r.status = "run returned no displacement column";
        return r;
    }
    r.U.assign(3 * std::size_t(nodes), 0.0);
    for (unsigned v = 0; v < nodes; ++v) {
        if (m.clamped(v)) continue;
        for (unsigned d = 0; d < 3; ++d) {
            double u = 0.0;
            if (data.U.get_val(9ull * v + d, 0, u) != 0) {
                r.status = "no displacement for DOF " + std::to_string(9ull * v + d);
                return r;
            }
            r.U[3 * std::size_t(v) + d] = u;
        }
    }
    r.ok = true;
    r.status = data.warning_code ? "ok, warning " + std::to_string(data.warning_code) : "ok";
    return r;
}

// ---------------------------------------------------------------------------------
// The external solver.

// The deck: the mesh, the top loads as concentrated loads in z, one linear static
// step with the displacements printed to the .dat file.
bool write_deck(const cube_mesh& m, const std::string& path) {
    FILE* f = std::fopen(path.c_str(), "w");
    if (!f) return false;
    write_mesh_deck(f, m, 1.0, 0.3, 0.0);
    std::fprintf(f, "*STEP\n*STATIC\n*CLOAD\n");
    for (unsigned v = 0; v < m.nbr_nodes(); ++v)
        if (m.load_z[v] != 0.0 && !m.clamped(v)) std::fprintf(f, "%u, 3, %.17g\n", v + 1, m.load_z[v]);
    std::fprintf(f, "*NODE PRINT, NSET=NALL\nU\n*END STEP\n");
    return std::fclose(f) == 0;
}

// Reads the displacement block of the .dat file: lines "node ux uy uz" after the line
// that starts with "displacements".
bool read_dat(const std::string& path, unsigned nodes, std::vector<double>& U) {
    std::ifstream f(path);
    if (!f) return false;
    U.assign(3 * std::size_t(nodes), 0.0);
    std::vector<char> seen(nodes, 0);
    std::string line;
    bool in_block = false;
    unsigned found = 0;
    while (std::getline(f, line)) {
        if (line.find("displacements") != std::string::npos) {
            in_block = true;
            continue;
        }
        if (!in_block) continue;
        std::istringstream s(line);
        long node;
        double u[3];
        if (!(s >> node >> u[0] >> u[1] >> u[2])) {
            if (found > 0 && line.find_first_not_of(" \t\r") != std::string::npos) in_block = false;
            continue;
        }
        if (node < 1 || node > long(nodes)) return false;
        if (!seen[node - 1]) ++found;
        seen[node - 1] = 1;
        for (int d = 0; d < 3; ++d) U[3 * std::size_t(node - 1) + d] = u[d];
    }
    return found == nodes;
}

}  // namespace

int main(int argc, char** argv) {
    options o;
    for (int k = 1; k < argc; ++k) {
        const std::string a = argv[k];
        auto val = [&]() -> std::string {
            if (k + 1 >= argc) usage();
            return argv[++k];
        };
        if (a == "--n")
            o.nx = o.ny = o.nz = unsigned(std::atoi(val().c_str()));
        else if (a == "--nx")
            o.nx = unsigned(std::atoi(val().c_str()));
        else if (a == "--ny")
            o.ny = unsigned(std::atoi(val().c_str()));
        else if (a == "--nz")
            o.nz = unsigned(std::atoi(val().c_str()));
        else if (a == "--threads")
            o.threads = unsigned(std::atoi(val().c_str()));
        else if (a == "--reps")
            o.reps = unsigned(std::atoi(val().c_str()));
        else if (a == "--ccx")
            o.ccx = val();
        else if (a == "--keep")
            o.keep = val();
        else if (a == "--quiet")
            o.quiet = true;
        else
            usage();
    }
    if (o.nx < 1 || o.ny < 1 || o.nz < 1 || o.nx > 400 || o.ny > 400 || o.nz > 400 || o.threads < 1 || o.reps < 1)
        usage();
    omp_set_num_threads(int(o.threads));

    const double load_before = load_average();
    const cube_mesh m(o.nx, o.ny, o.nz);
    std::printf(
        "static_bench: hexa8 cube %u x %u x %u, %u nodes, %u elements, %u free DOFs expected, "
        "%u thread(s), %u rep(s)\n",
        o.nx, o.ny, o.nz, m.nbr_nodes(), m.nbr_elements(), 3 * (m.nbr_nodes() - m.Nx * m.Ny), o.threads, o.reps);

    // Our side, reps times from scratch.
    std::vector<double> tn, ta, tf, tr, ts, tt, ws, wr, cr;
    our_result ours, first;
    for (unsigned rep = 0; rep < o.reps; ++rep) {
        our_result r = run_ours(m, o.threads);
        if (rep == 0) first = r;
        if (rep == 0 && !o.quiet) {
            for (const auto& l : r.log.lines)
                if (l.first <= 2 && l.second.find_first_not_of(" \r\n") != std::string::npos)
                    std::printf("  [%u] (RSS %7.1f MB, HWM %7.1f MB) %s%s", l.first,
                                r.log.memory[std::size_t(&l - r.log.lines.data())].first,
                                r.log.memory[std::size_t(&l - r.log.lines.data())].second, l.second.c_str(),
                                (!l.second.empty() && l.second.back() == '\n') ? "" : "\n");
        }
        if (!r.ok) {
            ours = std::move(r);
            break;
        }
        tn.push_back(r.time_numbering);
        ta.push_back(r.time_assembly);
        tf.push_back(r.time_factor);
        tr.push_back(r.time_RHS);
        ts.push_back(r.time_solve);
        tt.push_back(r.time_total);
        ws.push_back(r.wall_setup);
        wr.push_back(r.wall_run);
        cr.push_back(r.cpu_run);
        ours = std::move(r);
    }
    if (ours.ok) {
        // The high-water mark only grows: the first run of the process is the one that
        // shows what a run adds on top of the set-up.
        std::printf(
            "ours memory (first run): sizes total %.1f MB + factor work %.1f MB = %.1f MB; VmRSS before "
            "%.1f MB, VmHWM before %.1f MB, after %.1f MB, peak growth over VmRSS %.1f MB\n",
            first.size_total, first.size_spare, first.size_total + first.size_spare, first.rss_before, first.hwm_before,
            first.hwm_after, first.hwm_after - first.rss_before);
        std::printf("ours: %u free DOFs, size Kf %.1f MB, pivots [%.3e, %.3e], energy %.9e\n", ours.nbr_free_DOFs,
                    ours.size_Kf, ours.pivot_min, ours.pivot_max, ours.energy);
        std::printf(
            "ours (median of %zu): numbering %.3f s, assembly %.3f s, factor %.3f s, RHS %.3f s, "
            "solve %.3f s, total %.3f s; run() wall %.3f s, cpu %.3f s; setup wall %.3f s\n",
            tt.size(), median(tn), median(ta), median(tf), median(tr), median(ts), median(tt), median(wr), median(cr),
            median(ws));
    } else {
        std::printf("ours: NOT RUNNABLE: %s\n", ours.status.c_str());
    }

    // The external solver.
    ccx_runs peer;
    std::vector<double> Uc;
    if (!o.ccx.empty()) {
        peer.run(
            o.ccx, o.keep, "static_bench", o.threads, o.reps, [&](const std::string& p) { return write_deck(m, p); },
            [&](const std::string& dir) { return read_dat(dir + "/job.dat", m.nbr_nodes(), Uc); });
        if (peer.status == "ok")
            std::printf("ccx (median of %zu): wall %.3f s, cpu %.3f s%s%s\n", peer.wall.size(), median(peer.wall),
                        median(peer.cpu), peer.solver_line.empty() ? "" : "; log: ", peer.solver_line.c_str());
        else
            std::printf("ccx: %s\n", peer.status.c_str());
    }
    const std::string& ccx_status = peer.status;
    const std::vector<double>&cw = peer.wall, &cc = peer.cpu;

    // Comparison.
    double ratio = 0.0, ratio_cpu = 0.0, max_abs = 0.0, max_ref = 0.0, max_rel = 0.0;
    const bool compared = ours.ok && ccx_status == "ok";
    if (compared) {
        ratio = median(cw) > 0 ? median(tt) / median(cw) : 0.0;
        ratio_cpu = median(cc) > 0 ? median(cr) / median(cc) : 0.0;
        for (std::size_t i = 0; i < Uc.size(); ++i) {
            max_abs = std::max(max_abs, std::fabs(ours.U[i] - Uc[i]));
            max_ref = std::max(max_ref, std::fabs(Uc[i]));
        }
        max_rel = max_ref > 0 ? max_abs / max_ref : 0.0;
        std::printf(
            "ratio ours total / ccx wall: %.3f (processor time: %.3f); max |u_ours - u_ccx| %.3e, "
            "relative to max |u| (%.6e): %.3e\n",
            ratio, ratio_cpu, max_abs, max_ref, max_rel);
    }

    const double load_after = load_average();
    std::printf("load average (1 min) before %.2f, after %.2f\n", load_before, load_after);
    std::printf(
        "{\"bench\":\"static_bench\",\"nx\":%u,\"ny\":%u,\"nz\":%u,\"threads\":%u,\"reps\":%u,"
        "\"ours_status\":\"%s\",\"free_dofs\":%u,\"time_numbering\":%.4f,\"time_assembly\":%.4f,"
        "\"time_factor\":%.4f,\"time_RHS\":%.4f,\"time_solve\":%.4f,\"time_total\":%.4f,"
        "\"run_wall\":%.4f,\"run_cpu\":%.4f,\"setup_wall\":%.4f,\"size_Kf_MB\":%.2f,"
        "\"ccx_status\":\"%s\",\"ccx_wall\":%.4f,\"ccx_cpu\":%.4f,\"ratio\":%.4f,\"ratio_cpu\":%.4f,"
        "\"max_abs_diff\":%.4e,\"max_rel_diff\":%.4e,\"max_disp\":%.6e,"
        "\"load_before\":%.2f,\"load_after\":%.2f}\n",
        o.nx, o.ny, o.nz, o.threads, o.reps, json_escape(ours.status).c_str(), ours.nbr_free_DOFs, median(tn),
        median(ta), median(tf), median(tr), median(ts), median(tt), median(wr), median(cr), median(ws), ours.size_Kf,
        json_escape(ccx_status).c_str(), median(cw), median(cc), ratio, ratio_cpu, max_abs, max_rel, max_ref,
        load_before, load_after);
    return ours.ok && (o.ccx.empty() || ccx_status == "ok") ? 0 : 1;
}
