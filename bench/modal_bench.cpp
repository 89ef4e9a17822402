// Benchmark of a whole modal run on a clamped cube of hexa8 elements: the lowest
// modes, time per phase and memory, and the same mesh through an external solver
// (CalculiX, C3D8 and *FREQUENCY) for the ratio of whole-run times and the agreement
// of the frequencies.
//
// usage: modal_bench [--n N] [--modes M] [--threads T] [--reps R] [--ccx PATH]
//                    [--keep DIR] [--log]
//
// The mesh: n^3 unit-cube elements (mm), steel (E = 210000 MPa, nu = 0.3, density
// 7.85e-9 t/mm^3), the face z = 0 clamped (see bench_peer.h). The external solver
// factors K - M (its shift is 1): with these units the lowest modes lie far above
// that shift, so it finds them.
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
#include <orv/fem/solver_modal.h>

#include "bench/bench_peer.h"

using namespace orv;
using namespace orv::bench;

namespace {

constexpr double E = 210000.0, nu = 0.3, rho = 7.85e-9;

struct options {
    unsigned n = 20, modes = 10, threads = 1, reps = 3;
    std::string ccx, keep;
    bool log = false;  // our log at levels 0 to 2
};

[[noreturn]] void usage() {
    std::fprintf(stderr, "usage: modal_bench [--n N] [--modes M] [--threads T] [--reps R] [--ccx PATH] [--keep DIR] [--log]\n");
    std::exit(2);
}

struct our_result {
    std::string status = "not run";
    double time_numbering = 0, time_assembly = 0, time_factor = 0, time_solve = 0, time_total = 0;
    double wall_run = 0, cpu_run = 0, hwm_growth = 0;
    std::uint32_t nbr_free_DOFs = 0;
    std::vector<double> frequencies;
};

void print_log(void*, unsigned level, const char* text) {
    if (level <= 2) std::printf("  %s", text);
}

our_result run_ours(const cube_mesh& m, unsigned threads, unsigned modes, bool log) {
    our_result r;
    fem::context ctx;
    ctx.set_max_threads(threads);
    fem::law_solid_StVenant law(ctx, E, nu, 0.0);
    fem::model_solid_lin physics(law);
    fem::numerical_model_stiff_lin stiffness(ctx, physics, m.conn, fem::FE_hexa8);
    fem::law_scalar density(ctx, rho);
    fem::model_solid_mass mass_physics(density);
    fem::numerical_model_mass mass(ctx, mass_physics, m.conn, fem::FE_hexa8);
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
    fem::problem_data problem(ctx, pos, table, model.ID(), 0);

    fem::solver_modal solver;
    solver.settings.max_modes = modes;
    solver.settings.output_mask = 128;
    if (log) solver.settings.display_hook = print_log;
    fem::solver_modal::data_type data(problem);
    const double rss = proc_status_MB("VmRSS"), c0 = process_cpu(), t0 = now();
    solver.run(data);
    r.wall_run = now() - t0;
    r.cpu_run = process_cpu() - c0;
    r.hwm_growth = proc_status_MB("VmHWM") - rss;
    r.time_numbering = data.time_numbering;
    r.time_assembly = data.time_assembly;
    r.time_factor = data.time_factor;
    r.time_solve = data.time_solve;
    r.time_total = data.time_total;
    r.nbr_free_DOFs = data.nbr_free_DOFs;
    if (data.error_code) {
        r.status = "run error " + std::to_string(data.error_code) + " " + data.error_name + " " + data.error_msg;
        return r;
    }
    for (std::size_t i = 0; i < data.frequencies.size(); ++i) r.frequencies.push_back(data.frequencies[i]);
    r.status = data.warning_code ? "ok, warning " + std::to_string(data.warning_code) : "ok";
    return r;
}

bool write_deck(const cube_mesh& m, unsigned modes, const std::string& path) {
    FILE* f = std::fopen(path.c_str(), "w");
    if (!f) return false;
    write_mesh_deck(f, m, E, nu, rho);
    std::fprintf(f, "*STEP\n*FREQUENCY\n%u\n*END STEP\n", modes);
    return std::fclose(f) == 0;
}

// The frequencies in cycles per time of the eigenvalue table of the .dat file: lines
// "mode eigenvalue rad/time cycles/time imaginary" after its title.
bool read_frequencies(const std::string& path, std::vector<double>& f) {
    std::ifstream in(path);
    std::string line;
    bool in_table = false;
    f.clear();
    while (std::getline(in, line)) {
        if (line.find("E I G E N V A L U E   O U T P U T") != std::string::npos) {
            in_table = true;
            continue;
        }
        if (!in_table) continue;
        std::istringstream s(line);
        long mode;
        double eig, rad, cycles;
        if (s >> mode >> eig >> rad >> cycles) {
            f.push_back(cycles);
        } else if (!f.empty()) {
            break;
        }
    }
    return !f.empty();
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
        else if (a == "--modes")
            o.modes = unsigned(std::atoi(val().c_str()));
        else if (a == "--threads")
            o.threads = unsigned(std::atoi(val().c_str()));
        else if (a == "--reps")
            o.reps = unsigned(std::atoi(val().c_str()));
        else if (a == "--ccx")
            o.ccx = val();
        else if (a == "--keep")
            o.keep = val();
        else if (a == "--log")
            o.log = true;
        else
            usage();
    }
    if (o.n < 1 || o.n > 200 || o.modes < 1 || o.threads < 1 || o.reps < 1) usage();
    omp_set_num_threads(int(o.threads));
    const double load_before = load_average();
    const cube_mesh m(o.n, o.n, o.n);
    std::printf("modal_bench: hexa8 cube %u^3, %u nodes, %u lowest modes, %u thread(s), %u rep(s)\n", o.n,
                m.nbr_nodes(), o.modes, o.threads, o.reps);

    std::vector<double> tn, ta, tf, ts, tt, wr, cr;
    our_result ours;
    for (unsigned rep = 0; rep < o.reps; ++rep) {
        ours = run_ours(m, o.threads, o.modes, o.log && rep == 0);
        if (ours.status.compare(0, 2, "ok") != 0) break;
        tn.push_back(ours.time_numbering);
        ta.push_back(ours.time_assembly);
        tf.push_back(ours.time_factor);
        ts.push_back(ours.time_solve);
        tt.push_back(ours.time_total);
        wr.push_back(ours.wall_run);
        cr.push_back(ours.cpu_run);
    }
    std::printf("ours: %s, %u free DOFs, peak memory growth of the run %.1f MB\n", ours.status.c_str(),
                ours.nbr_free_DOFs, ours.hwm_growth);
    std::printf(
        "ours (median of %zu): numbering %.3f s, assembly %.3f s, factorisations and Sturm counts %.3f s, "
        "eigen stages %.3f s, total %.3f s; run() wall %.3f s, cpu %.3f s\n",
        tt.size(), median(tn), median(ta), median(tf), median(ts), median(tt), median(wr), median(cr));

    ccx_runs peer;
    std::vector<double> fc;
    if (!o.ccx.empty()) {
        peer.run(
            o.ccx, o.keep, "modal_bench", o.threads, o.reps,
            [&](const std::string& p) { return write_deck(m, o.modes, p); },
            [&](const std::string& dir) { return read_frequencies(dir + "/job.dat", fc); });
        if (peer.status == "ok")
            std::printf("ccx (median of %zu): wall %.3f s, cpu %.3f s\n", peer.wall.size(), median(peer.wall),
                        median(peer.cpu));
        else
            std::printf("ccx: %s\n", peer.status.c_str());
    }
    double worst = 0.0;
    std::printf("mode   ours (Hz)        ccx (Hz)         relative difference\n");
    for (std::size_t i = 0; i < ours.frequencies.size(); ++i) {
        const bool have = i < fc.size();
        const double d = have && fc[i] != 0 ? ours.frequencies[i] / fc[i] - 1.0 : 0.0;
        if (have) worst = std::max(worst, std::fabs(d));
        std::printf("%4zu   %.9e  %s  %s\n", i + 1, ours.frequencies[i], have ? std::to_string(fc[i]).c_str() : "-",
                    have ? std::to_string(d).c_str() : "-");
    }
    const double ratio = peer.status == "ok" && median(peer.wall) > 0 ? median(tt) / median(peer.wall) : 0.0;
    if (ratio > 0) std::printf("ratio ours total / ccx wall: %.3f; largest relative difference %.2e\n", ratio, worst);
    std::printf("load average (1 min) before %.2f, after %.2f\n", load_before, load_average());
    std::printf(
        "{\"bench\":\"modal_bench\",\"n\":%u,\"modes\":%u,\"threads\":%u,\"reps\":%u,\"ours_status\":\"%s\","
        "\"time_total\":%.4f,\"time_factor\":%.4f,\"time_solve\":%.4f,\"ccx_status\":\"%s\",\"ccx_wall\":%.4f,"
        "\"ratio\":%.4f,\"max_rel_diff\":%.3e}\n",
        o.n, o.modes, o.threads, o.reps, json_escape(ours.status).c_str(), median(tt), median(tf), median(ts),
        json_escape(peer.status).c_str(), median(peer.wall), ratio, worst);
    return ours.status.compare(0, 2, "ok") == 0 && (o.ccx.empty() || peer.status == "ok") ? 0 : 1;
}
