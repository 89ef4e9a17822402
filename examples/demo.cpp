// Demo: the library's first contact with a host.
//
// What it shows
//   The version, the processor resources a context finds (physical cores, the threads it
//   will use, the last-level cache that the factorisation tiles to), and a DOF table:
//   nodes whose fields are free or blocked, a fictitious node hanging on a master (as a
//   hinge makes one), and the DOF ID node * 9 + position that every record uses.
//
// How to build and run it
//   cmake --build build --target demo && ./build/demo
//   The numbered examples (ex01_truss, ex03_cantilever, ...) then solve problems.
//
// What it prints
//   The version and resources, then the table's counts, its fixed IDs and what one ID
//   of the fictitious node means. It checks the table against what it set (the six
//   blocked IDs, the master and field of the fictitious node's ID) and exits with 1 if
//   they disagree.
#include <orv/fem/DOFs_mgr.h>
#include <orv/fem/context.h>
#include <orv/fem/version.h>

#include <cstdio>
#include <vector>

using namespace orv::fem;

int main() {
    // 1. Version and processor resources.
    std::printf("ORV FEM %s\n\n", version::text());
    context ctx;
    std::printf("Physical cores   : %u\n", ctx.get_nbr_physical_cores());
    std::printf("Max threads      : %u\n", ctx.get_max_threads());
    std::printf("LLC size         : %u bytes\n\n", ctx.get_LLC_size());

    // 2. Four nodes with displacements and rotations, all free; node 0 clamped, node 3's
    //    rotations blocked, and a fictitious node hanging on node 2.
    DOFs_mgr dofs(4, true);
    dofs.set(0, field_displacement, false);
    dofs.set(3, field_rotation, false);
    const unsigned hinge = dofs.add_fictitious_node(2);

    std::printf("DOF table\n");
    std::printf("  real nodes       : %u\n", dofs.nbr_nodes());
    std::printf("  fictitious nodes : %u (node %u, master 2)\n", dofs.nbr_fictitious_nodes(), hinge);
    std::printf("  IDs in use       : %llu\n", dofs.size());
    std::printf("  free / fixed     : %llu / %llu\n", dofs.nbr_DOFs(true), dofs.nbr_DOFs(false));

    std::vector<unsigned> fixed;
    dofs.copy_IDs(fixed, false);
    std::printf("  fixed IDs        :");
    for (unsigned id : fixed) std::printf(" %u", id);
    std::printf("\n");

    // 3. What an ID of the fictitious node means: its field, component and master.
    unsigned node = 0, comp = 0;
    field_tag tag = field_displacement;
    const unsigned long long id = DOFs_mgr::ID(hinge, field_rotation, 2);
    dofs.get_info(id, node, tag, comp, true);
    bool free_state = false;
    dofs.get(id, free_state);
    std::printf("  ID %-14llu: rotation %u of node %u, master %u, %s\n", id, comp, hinge, node,
                free_state ? "free" : "fixed");

    // 4. Check: node 0's displacements (IDs 0, 1, 2) and node 3's rotations (30, 31,
    //    32) are the only fixed IDs; the fictitious node's rotation is free, on master 2.
    const bool ok = dofs.nbr_DOFs(false) == 6 && fixed.size() == 6 && fixed.front() == 0 && fixed.back() == 32 &&
                    node == 2 && tag == field_rotation && comp == 2 && free_state;
    std::printf("\n%s\n", ok ? "The table holds what was set." : "THE TABLE DISAGREES WITH WHAT WAS SET.");
    return ok ? 0 : 1;
}
