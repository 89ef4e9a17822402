// Results matrices (rows by DOF ID) turned into point fields of VTK frames.
#include <orv/fem/field_tag.h>
#include <orv/fem/io/mesh_io.h>

#include "io/mesh_builder.h"

namespace orv {
namespace fem {
namespace io {
namespace {

// The fields a DOF position (ID % 9) belongs to: displacement 0-2, rotation 3-5,
// temperature 6; 7 and 8 are not written.
struct field_slot {
    const char* suffix;
    unsigned first, components;
};
const field_slot slots[3] = {{"", 0, 3}, {" rotation", 3, 3}, {" temperature", 6, 1}};

int slot_of(unsigned position) { return position < 3 ? 0 : position < 6 ? 1 : position == 6 ? 2 : -1; }

}  // namespace

error_type nodal_frames(const FEM_matrix& results, std::size_t nbr_points, const std::string& name,
                        const std::vector<double>& values, std::vector<vtk_frame>& frames) noexcept {
    return detail::guarded([&]() -> error_type {
        const std::size_t nbr_columns = results.cols();
        if (!values.empty() && values.size() != nbr_columns) return error_data;
        const dense1D<unsigned int> IDs = results.get_IDs();
        bool present[3] = {false, false, false};
        for (std::size_t r = 0; r < IDs.size(); ++r)
            if (IDs[r] / fem::DOFs_per_node < nbr_points && slot_of(IDs[r] % fem::DOFs_per_node) >= 0)
                present[slot_of(IDs[r] % fem::DOFs_per_node)] = true;

        std::vector<vtk_frame> added(nbr_columns);
        dense1D<double> column;
        for (std::size_t c = 0; c < nbr_columns; ++c) {
            const error_type code = results.get_col(c, column);
            if (code != no_error) return code;
            vtk_frame& frame = added[c];
            frame.value = values.empty() ? double(c + 1) : values[c];
            int field_of_slot[3] = {-1, -1, -1};
            for (int k = 0; k < 3; ++k) {
                if (!present[k]) continue;
                field_of_slot[k] = static_cast<int>(frame.point_data.size());
                frame.point_data.push_back(vtk_field{name + slots[k].suffix, dense2D<double>()});
                if (!frame.point_data.back().values.resize(slots[k].components, nbr_points, 0.0))
                    throw std::bad_alloc();
            }
            for (std::size_t r = 0; r < IDs.size(); ++r) {
                const std::size_t node = IDs[r] / fem::DOFs_per_node;
                const int k = slot_of(IDs[r] % fem::DOFs_per_node);
                if (node >= nbr_points || k < 0) continue;
                frame.point_data[field_of_slot[k]].values(IDs[r] % fem::DOFs_per_node - slots[k].first, node) =
                    column[r];
            }
        }
        frames.insert(frames.end(), std::make_move_iterator(added.begin()), std::make_move_iterator(added.end()));
        return no_error;
    });
}

}  // namespace io
}  // namespace fem
}  // namespace orv
