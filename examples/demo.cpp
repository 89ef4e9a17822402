// Demonstration of the library: version, processor resources, a small DOF table, then a
// linear static analysis of a built-in truss with its log and results, and a solid hexa8
// cantilever under several load cases against beam theory, written to cantilever.vtu.
#include <orv/fem/DOFs_mgr.h>
#include <orv/fem/context.h>
#include <orv/fem/version.h>

#include "cantilever_demo.h"
#include "static_analysis_demo.h"

#include <cstdio>
#include <vector>

using namespace orv::fem;

int main() {
    std::printf("ORV FEM %s\n\n", version::text());

    context ctx;
    std::printf("Physical cores   : %u\n", ctx.get_nbr_physical_cores());
    std::printf("Max threads      : %u\n", ctx.get_max_threads());
    std::printf("LLC size         : %u bytes\n\n", ctx.get_LLC_size());

    // Four nodes, all free; node 0 clamped, node 3's rotations blocked, and a
    // fictitious node hanging on node 2 (as a hinge would make).
    DOFs_mgr dofs(4, true);
    dofs.set(0, field_displacement, false);
    dofs.set(3, field_rotation, false);
    const unsigned hinge = dofs.add_fictitious_node(2);

    std::printf("DOF table\n");
    std::printf("  real nodes       : %u\n", dofs.nbr_nodes());
    std::printf("  fictitious nodes : %u (node %u, master 2)\n", dofs.nbr_fictitious_nodes(),
                hinge);
    std::printf("  IDs in use       : %llu\n", dofs.size());
    std::printf("  free / fixed     : %llu / %llu\n", dofs.nbr_DOFs(true), dofs.nbr_DOFs(false));

    std::vector<unsigned> fixed;
    dofs.copy_IDs(fixed, false);
    std::printf("  fixed IDs        :");
    for (unsigned id : fixed) std::printf(" %u", id);
    std::printf("\n");

    unsigned node = 0, comp = 0;
    field_tag tag = field_displacement;
    const unsigned long long id = DOFs_mgr::ID(hinge, field_rotation, 2);
    dofs.get_info(id, node, tag, comp, true);
    bool free_state = false;
    dofs.get(id, free_state);
    std::printf("  ID %-14llu: rotation %u of node %u, master %u, %s\n", id, comp, hinge, node,
                free_state ? "free" : "fixed");

    std::printf("\n");
    if (run_static_demo() != 0) return 1;
    std::printf("\n");
    return run_cantilever_demo("cantilever.vtu") == 0 ? 0 : 1;
}
