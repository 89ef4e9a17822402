// A host of the installed library: reads a two-element mesh from an input deck, solves
// nothing, and checks what the readers and the core report. Exit code 0 on success.
#include <cstdio>
#include <cstring>
#include <string>

#include <orv/fem/context.h>
#include <orv/fem/element_type.h>
#include <orv/fem/io/mesh_io.h>
#include <orv/fem/version.h>

int main(int argc, char** argv) {
    const std::string folder = argc > 1 ? argv[1] : ".";
    const std::string deck = folder + "/consumer.inp";
    std::FILE* f = std::fopen(deck.c_str(), "w");
    if (f == nullptr) return 2;
    std::fputs(
        "*NODE, NSET=ALL\n1, 0, 0, 0\n2, 1, 0, 0\n3, 1, 1, 0\n4, 0, 1, 0\n5, 2, 0, 0\n6, 2, 1, 0\n"
        "*ELEMENT, TYPE=CPS4, ELSET=PLATE\n1, 1, 2, 3, 4\n2, 2, 5, 6, 3\n",
        f);
    std::fclose(f);

    orv::fem::context ctx;
    orv::fem::io::mesh mesh;
    orv::fem::io::read_error error;
    const orv::fem::error_type code = orv::fem::io::read_deck(deck.c_str(), mesh, &error);
    std::printf("ORV FEM %s: read_deck %d, %zu nodes, %zu blocks %s\n", orv::fem::version::text(),
                static_cast<int>(code), mesh.positions.cols(), mesh.blocks.size(), error.text.c_str());
    const bool ok = code == orv::fem::no_error && mesh.positions.cols() == 6 && mesh.blocks.size() == 1 &&
                    mesh.blocks[0].type == orv::fem::FE_faceQ4 && mesh.blocks[0].connectivity.cols() == 2;
    return ok ? 0 : 1;
}
