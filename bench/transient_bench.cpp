// Benchmark of a whole Newmark run on the clamped cube of hexa8 elements under a step
// load on its top face, and the same mesh through an external solver (CalculiX,
// *DYNAMIC, DIRECT with ALPHA = 0, which is Newmark's average acceleration) for the
// ratio of whole-run times and the displacement of the top face's centre.
//
// usage: transient_bench [--n N] [--steps S] [--threads T] [--reps R] [--ccx PATH]
//                        [--keep DIR]
//
// The mesh: n^3 unit-cube elements (mm), steel (E = 210000 MPa, nu = 0.3, density
// 7.85e-9 t/mm^3), the face z = 0 clamped, a traction of total magnitude 1 N in -z on
// the face z = n applied at t = 0 and held; S steps (default 200) of a twentieth of
// the first period of the cube of side 20 (1.8e-6 s).
#include <omp.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <orv/fem/DOFs_mgr.h>
#include <orv/fem/context.h>
#include <orv/fem/element_type.h>
#include <orv/fem/law_scalar.h>
#include <orv/fem/law_solid_stiff.h>
#include <orv/fem/model_solid.h>
#include <orv/fem/model_solid_mass.h>
#include <orv/fem/numerical_model_composite.h>
#include <orv/fem/numerical_model_mass.h>
#include <orv/fem/numerical_model_stiff.h>
#include <orv/fem/problem_data.h>
#include <orv/fem/solver_Newmark.h>

#include "bench/bench_peer.h"

using namespace orv;
using namespace orv::bench;

namespace {

constexpr double E = 210000.0, nu = 0.3, rho = 7.85e-9, dt = 1.8e-6;

struct options {
    unsigned n = 20, steps = 200, threads = 1, reps = 3;
    std::string ccx, keep;
};

[[noreturn]] void usage() {
    std::fprintf(stderr,
                 "usage: transient_bench [--n N] [--steps S] [--threads T] [--reps R] [--ccx PATH] [--keep DIR]\n");
    std::exit(2);
}

struct our_result {
    std::string status = "not run";
    double time_assembly = 0, time_factor = 0, time_solve = 0, time_total = 0, cpu = 0;
    std::vector<double> w;  // z displacement of the watched node at each step
};

our_result run_ours(const cube_mesh& m, unsigned threads, unsigned steps, unsigned watched) {
    our_result r;
    fem::context ctx;
    ctx.set_max_threads(threads);
    fem::law_solid_StVenant law(ctx, E, nu, 0.0);
    fem::law_scalar density(ctx, rho);
    fem::numerical_model_stiff_lin stiffness(ctx, fem::model_solid_lin(law), m.conn, fem::FE_hexa8);
    fem::numerical_model_mass mass(ctx, fem::model_solid_mass(density), m.conn, fem::FE_hexa8);
    fem::numerical_model_composite model(ctx);
    if (!stiffness.is_valid() || !mass.is_valid() || model.insert(stiffness.ID(), mass.ID()) != fem::no_error) {
        r.status = "the models could not be made";
        return r;
    }
    const unsigned nodes = m.nbr_nodes();
    fem::DOFs_mgr table(nodes, false);
    for (unsigned v = 0; v < nodes; ++v)
        if (!m.clamped(v)) table.set(v, fem::field_displacement, true);
    dense2D<double> pos = m.pos;
    fem::problem_data problem(ctx, pos, table, model.ID(), 1);
    for (unsigned v = 0; v < nodes; ++v)
        if (m.load_z[v] != 0.0 && !m.clamped(v))
            problem.get_loads_mgr(0).record_nodal_load(v, fem::field_displacement, 2, m.load_z[v]);
    fem::solver_Newmark solver;
    solver.settings.dt = dt;
    solver.settings.t_end = dt * steps;
    fem::solver_Newmark::data_type data(problem);
    const double c0 = process_cpu();
    solver.run(data);
    r.cpu = process_cpu() - c0;
    r.time_assembly = data.time_assembly;
    r.time_factor = data.time_factor;
    r.time_solve = data.time_solve;
    r.time_total = data.time_total;
    if (data.error_code) {
        r.status = "run error " + std::to_string(data.error_code) + " " + data.error_name + " " + data.error_msg;
        return r;
    }
    for (std::size_t s = 0; s < data.times.size(); ++s) {
        double w = 0.0;
        data.U.get_val(9ull * watched + 2, s, w);
        r.w.push_back(w);
    }
    r.status = "ok";
    return r;
}

bool write_deck(const cube_mesh& m, unsigned steps, unsigned watched, const std::string& path) {
    FILE* f = std::fopen(path.c_str(), "w");
    if (!f) return false;
    write_mesh_deck(f, m, E, nu, rho);
    std::fprintf(f, "*NSET, NSET=WATCH\n%u\n", watched + 1);
    std::fprintf(f, "*STEP, INC=%u\n*DYNAMIC, DIRECT, ALPHA=0.0\n%.12g, %.12g\n*CLOAD\n", steps + 10, dt, dt * steps);
    for (unsigned v = 0; v < m.nbr_nodes(); ++v)
        if (m.load_z[v] != 0.0 && !m.clamped(v)) std::fprintf(f, "%u, 3, %.17g\n", v + 1, m.load_z[v]);
    std::fprintf(f, "*NODE PRINT, NSET=WATCH\nU\n*END STEP\n");
    return std::fclose(f) == 0;
}

// The z displacement of the watched node at each increment of job.dat.
bool read_history(const std::string& path, std::vector<double>& w) {
    std::ifstream in(path);
    std::string line;
    w.clear();
    bool next = false;
    while (std::getline(in, line)) {
        if (line.find("displacements") != std::string::npos) {
            next = true;
            continue;
        }
        std::istringstream s(line);
        long node;
        double u[3];
        if (next && (s >> node >> u[0] >> u[1] >> u[2])) {
            w.push_back(u[2]);
            next = false;
        }
    }
    return !w.empty();
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
            o.n = unsigned(std::atoi(val().c_str()));
        else if (a == "--steps")
            o.steps = unsigned(std::atoi(val().c_str()));
        else if (a == "--threads")
            o.threads = unsigned(std::atoi(val().c_str()));
        else if (a == "--reps")
            o.reps = unsigned(std::atoi(val().c_str()));
        else if (a == "--ccx")
            o.ccx = val();
        else if (a == "--keep")
            o.keep = val();
        else
            usage();
    }
    if (o.n < 1 || o.n > 200 || o.steps < 1 || o.threads < 1 || o.reps < 1) usage();
    omp_set_num_threads(int(o.threads));
    const cube_mesh m(o.n, o.n, o.n);
    const unsigned watched = m.node(o.n / 2, o.n / 2, o.n);
    std::printf("transient_bench: hexa8 cube %u^3, %u steps of %g s, %u thread(s), %u rep(s)\n", o.n, o.steps, dt,
                o.threads, o.reps);
    std::vector<double> ta, tf, ts, tt;
    our_result ours;
    for (unsigned rep = 0; rep < o.reps; ++rep) {
        ours = run_ours(m, o.threads, o.steps, watched);
        if (ours.status != "ok") break;
        ta.push_back(ours.time_assembly);
        tf.push_back(ours.time_factor);
        ts.push_back(ours.time_solve);
        tt.push_back(ours.time_total);
    }
    std::printf(
        "ours: %s; median of %zu: assembly %.3f s, factorisations %.3f s, time loop %.3f s (%.2f ms a step), "
        "total %.3f s\n",
        ours.status.c_str(), tt.size(), median(ta), median(tf), median(ts), 1e3 * median(ts) / o.steps, median(tt));
    ccx_runs peer;
    std::vector<double> wc;
    if (!o.ccx.empty()) {
        peer.run(
            o.ccx, o.keep, "transient_bench", o.threads, o.reps,
            [&](const std::string& p) { return write_deck(m, o.steps, watched, p); },
            [&](const std::string& dir) { return read_history(dir + "/job.dat", wc); });
        if (peer.status == "ok")
            std::printf("ccx (median of %zu): wall %.3f s, cpu %.3f s, %zu increments\n", peer.wall.size(),
                        median(peer.wall), median(peer.cpu), wc.size());
        else
            std::printf("ccx: %s\n", peer.status.c_str());
    }
    double worst = 0.0, scale = 0.0;
    const std::size_t common = std::min(ours.w.size(), wc.size());
    for (std::size_t s = 0; s < common; ++s) {
        worst = std::max(worst, std::fabs(ours.w[s] - wc[s]));
        scale = std::max(scale, std::fabs(wc[s]));
    }
    for (std::size_t s = 0; s < ours.w.size(); s += s < 4 ? 1 : 20) {
        std::printf("step %4zu: ours %.9e", s + 1, ours.w[s]);
        if (s < wc.size()) std::printf(", ccx %.6e", wc[s]);
        std::printf("\n");
    }
    const double ratio = peer.status == "ok" && median(peer.wall) > 0 ? median(tt) / median(peer.wall) : 0.0;
    if (common)
        std::printf(
            "ratio ours total / ccx wall: %.3f; largest difference of the watched w over %zu steps %.3e (of "
            "%.3e)\n",
            ratio, common, worst, scale);
    std::printf(
        "{\"bench\":\"transient_bench\",\"n\":%u,\"steps\":%u,\"threads\":%u,\"ours_status\":\"%s\",\"time_total\":%."
        "4f,"
        "\"time_solve\":%.4f,\"ccx_status\":\"%s\",\"ccx_wall\":%.4f,\"ratio\":%.4f,\"max_diff\":%.3e}\n",
        o.n, o.steps, o.threads, json_escape(ours.status).c_str(), median(tt), median(ts),
        json_escape(peer.status).c_str(), median(peer.wall), ratio, worst);
    return ours.status == "ok" && (o.ccx.empty() || peer.status == "ok") ? 0 : 1;
}
