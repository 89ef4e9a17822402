// The shape-independent part of the mesh models and their creation path.
#include "elements/numerical_model_stiff_mesh.h"
#include <orv/fem/field_tag.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <new>

#include <orv/fem/error_type.h>

#include "elements/element_family_table.h"
#include "frame/context_type.h"
#include "model/numerical_models_mgr.h"

namespace orv {
namespace core {

stiff_mesh_base::stiff_mesh_base(context_type* ctx, const Ptr<physics_model_base>& physics,
                                 const dense2D<unsigned int>& connectivity, fem::element_type type)
    : numerical_model_base(ctx),
      physics_(physics),
      connectivity_(connectivity),
      type_(type),
      bad_(connectivity.cols(), 0) {}

void stiff_mesh_base::mark_element(std::uint32_t element, double min_detJ, unsigned nn, const double (*X)[3],
                                   unsigned dim) {
    if (element >= bad_.size()) return;
    double lo[3], hi[3];
    for (unsigned c = 0; c < 3; ++c) lo[c] = hi[c] = X[0][c];
    for (unsigned i = 1; i < nn; ++i)
        for (unsigned c = 0; c < 3; ++c) {
            lo[c] = std::min(lo[c], X[i][c]);
            hi[c] = std::max(hi[c], X[i][c]);
        }
    double size = 0.0;
    for (unsigned c = 0; c < 3; ++c) size += (hi[c] - lo[c]) * (hi[c] - lo[c]);
    size = std::sqrt(size);
    const double scale = dim == 1 ? size : dim == 2 ? size * size : size * size * size;
    bad_[element] = !(min_detJ > fem::bad_jacobian_ratio * scale) ? 1 : 0;
}

// The scratch matrix of the kept fields: width + 2 rows, one column per point; rows
// width and width + 1 of column 0 hold the element and the model ID.
namespace {
constexpr unsigned fields_scratch = 6;
}

bool stiff_mesh_base::keep_fields(element_workspace& ws, const double* fields, unsigned width, unsigned np) const {
    dense2D<double>& m = ws.scratch[fields_scratch];
    if (!m.resize(width + 2, np)) return false;
    for (unsigned p = 0; p < np; ++p)
        for (unsigned k = 0; k < width; ++k) m(k, p) = fields[p * width + k];
    m(width, 0) = ws.element_ID;
    m(width + 1, 0) = ID();
    return true;
}

bool stiff_mesh_base::kept_fields(const element_workspace& ws, unsigned width, unsigned np, double* out) const {
    const dense2D<double>& m = ws.scratch[fields_scratch];
    if (m.rows() != width + 2 || m.cols() != np || m(width, 0) != ws.element_ID || m(width + 1, 0) != ID())
        return false;
    for (unsigned p = 0; p < np; ++p)
        for (unsigned k = 0; k < width; ++k) out[p * width + k] = m(k, p);
    return true;
}

bool stiff_mesh_base::get_bad_elements(dense1D<unsigned int>& list) const {
    for (std::size_t e = 0; e < bad_.size(); ++e)
        if (bad_[e] && !list.push_back(static_cast<unsigned int>(e))) return false;
    return true;
}

std::uint32_t stiff_mesh_base::nbr_bad_elements() const {
    std::uint32_t n = 0;
    for (unsigned char b : bad_) n += b;
    return n;
}

std::uint64_t log_bad_elements(numerical_model_base& model, fem::display_hook_type hook, void* pass_thru) {
    std::vector<Ptr<numerical_model_base>> models;
    model.collect_simple_models(models);
    std::uint64_t count = 0;
    char line[256];
    for (const Ptr<numerical_model_base>& m : models) {
        const auto* mesh = dynamic_cast<const stiff_mesh_base*>(m.get());
        if (!mesh || mesh->nbr_bad_elements() == 0) continue;
        dense1D<unsigned int> bad;
        if (!mesh->get_bad_elements(bad)) return count + mesh->nbr_bad_elements();
        for (std::size_t k = 0; k < bad.size(); ++k, ++count) {
            if (count >= 10 || !hook) continue;
            std::snprintf(line, sizeof line,
                          "  Bad element: model %u, element %u (Jacobian determinant not positive or tiny)\n",
                          mesh->ID(), bad[k]);
            hook(pass_thru, 1, line);
        }
    }
    if (count && hook) {
        std::snprintf(line, sizeof line, "  Nbr bad elements       : %10llu\n", static_cast<unsigned long long>(count));
        hook(pass_thru, 1, line);
    }
    return count;
}

Ptr<ref_counted> stiff_mesh_base::get_physics_model() const { return Ptr<ref_counted>(physics_.get()); }
unsigned stiff_mesh_base::get_family_code() const { return physics_ ? physics_->get_family_code() : 0; }
unsigned stiff_mesh_base::get_physics_code() const { return physics_ ? physics_->get_physics_code() : 0; }
unsigned stiff_mesh_base::get_server_code() const { return get_physics_code() + static_cast<unsigned>(type_); }

void stiff_mesh_base::get_mesh(dense2D<unsigned int>& connectivity, fem::element_type& type) const {
    connectivity = connectivity_;
    type = type_;
}

double stiff_mesh_base::get_size(const dense2D<double>& pos) const {
    double lo[3], hi[3];
    bool any = false;
    const std::size_t rows = std::min<std::size_t>(3, pos.rows());
    for (std::size_t e = 0; e < connectivity_.cols(); ++e)
        for (std::size_t i = 0; i < connectivity_.rows(); ++i) {
            const unsigned node = connectivity_(i, e);
            if (node >= pos.cols()) continue;
            for (std::size_t c = 0; c < 3; ++c) {
                const double x = c < rows ? pos(c, node) : 0.0;
                if (!any) lo[c] = hi[c] = x;
                lo[c] = std::min(lo[c], x);
                hi[c] = std::max(hi[c], x);
            }
            any = true;
        }
    if (!any) return 0.0;
    double s = 0.0;
    for (int c = 0; c < 3; ++c) s += (hi[c] - lo[c]) * (hi[c] - lo[c]);
    return std::sqrt(s);
}

bool stiff_mesh_base::accepts_load(const fem::elementary_load& record) const {
    if ((record.kind & 0xF8u) != fem::elementary_load::kind_force) return false;
    if ((record.kind & 0x700u) == fem::elementary_load::kind_inertial) return false;
    const bool pressure = (record.type & 0x7Fu) == fem::elementary_load::type_scalar;
    return !pressure || (physics_ && physics_->get_family_code() == mechanical_membrane::family_code);
}

int stiff_mesh_base::get_DOFs(const DOFs_mgr&, std::uint32_t element, unsigned matrix_code, dense1D<unsigned int>& list,
                              const DOF_filter& filter) const {
    if (!has_matrix(matrix_code) || !physics_) return 0;
    std::uint32_t first, end;
    if (const int rc = element_range(element, first, end)) return rc;
    const unsigned nd = physics_->nbr_DOF_slots();
    for (std::uint32_t e = first; e < end; ++e)
        for (std::size_t i = 0; i < connectivity_.rows(); ++i) {
            const unsigned node = connectivity_(i, e);
            if (node == 0xFFFFFFFFu) return fem::error_element_type;
            if (node > 0xFFFFFFFEu / fem::DOFs_per_node) return fem::error_connectivity;  // no DOF ID of 32 bits
            for (unsigned k = 0; k < nd; ++k) {
                const unsigned ID = node * fem::DOFs_per_node + physics_->DOF_slot(k);
                if (is_selected(ID, filter) && !list.push_back(ID)) return fem::error_memory;
            }
        }
    return 0;
}

int stiff_mesh_base::get_element_basis(const dense2D<double>& pos, std::uint32_t element,
                                       matrix_fixed<double, 3, 3>& R) const {
    if (element >= nbr_elements()) return fem::error_index;
    if (connectivity_.rows() < 3) return fem::error_data;
    double x[3][3];
    for (unsigned i = 0; i < 3; ++i) {
        const unsigned node = connectivity_(i, element);
        if (node >= pos.cols()) return fem::error_connectivity;
        for (unsigned c = 0; c < 3; ++c) {
            x[i][c] = c < pos.rows() ? pos(c, node) : 0.0;
            if (!std::isfinite(x[i][c])) return fem::error_connectivity;
        }
    }
    const double a[3] = {x[0][0] - x[2][0], x[0][1] - x[2][1], x[0][2] - x[2][2]};
    const double b[3] = {x[1][0] - x[2][0], x[1][1] - x[2][1], x[1][2] - x[2][2]};
    double T[3][3];
    if (!triad_from(a, b, T)) return fem::error_data;
    for (unsigned i = 0; i < 3; ++i)
        for (unsigned j = 0; j < 3; ++j) R(i, j) = T[j][i];
    return 0;
}

std::uint32_t stiff_mesh_base::global_element(std::uint32_t element) const {
    const context_type* ctx = get_context();
    if (!ctx || !ctx->models()) return element;
    const std::uint32_t first = ctx->models()->global_FE_ID(ID());
    return first == no_ID ? element : first + element;
}

bool stiff_mesh_base::has_internal_states() const {
    return physics_ && physics_->material() && physics_->material()->has_states();
}

int stiff_mesh_base::prepare_element(element_workspace& ws, unsigned nn, unsigned nd, unsigned* nodes, double (*X)[3],
                                     unsigned* local, bool planar) const {
    ws.model_ID = ID();
    for (unsigned i = 0; i < nn; ++i) nodes[i] = 0xFFFFFFFFu;
    const std::uint32_t e = ws.element_ID;
    if (e >= nbr_elements() || connectivity_.rows() != nn) {
        ws.reset();
        return fem::error_index;
    }
    unsigned largest = 0;
    for (unsigned i = 0; i < nn; ++i) {
        nodes[i] = connectivity_(i, e);
        largest = std::max(largest, nodes[i]);
    }
    const dense2D<double>* pos = ws.pos;
    if (!pos || largest >= pos->cols() || pos->rows() < 3 || !physics_ || physics_->nbr_DOF_slots() != nd) {
        ws.reset();
        return fem::error_connectivity;
    }
    // Coordinates that are not finite would poison the element's matrix: refused as
    // a node without usable coordinates.
    for (unsigned i = 0; i < nn; ++i)
        for (unsigned c = 0; c < 3; ++c)
            if (!std::isfinite((*pos)(c, nodes[i]))) {
                ws.reset();
                return fem::error_connectivity;
            }
    const unsigned row0 = planar ? physics_->DOF_slot(0) % 3 : 0;
    const unsigned row1 = planar ? physics_->DOF_slot(1) % 3 : 1;
    for (unsigned i = 0; i < nn; ++i) {
        if (planar) {
            X[i][0] = (*pos)(row0, nodes[i]);
            X[i][1] = (*pos)(row1, nodes[i]);
            X[i][2] = 0.0;
        } else {
            for (unsigned c = 0; c < 3; ++c) X[i][c] = (*pos)(c, nodes[i]);
        }
    }
    unsigned ids[27 * physics_model_base::max_DOF_slots];
    const unsigned n = nn * nd;
    for (unsigned i = 0; i < nn; ++i)
        for (unsigned k = 0; k < nd; ++k) ids[i * nd + k] = nodes[i] * fem::DOFs_per_node + physics_->DOF_slot(k);
    if (!ws.set_DOFs(ids, n)) {
        ws.reset();
        return fem::error_memory;
    }
    for (unsigned a = 0; a < n; ++a) local[a] = ws.DOFs->find(ids[a]);
    return 0;
}

bool stiff_mesh_base::gather_element(const element_workspace& ws, unsigned nn, unsigned nd, const unsigned* nodes,
                                     double* u) const {
    if (!ws.U) return false;
    for (unsigned i = 0; i < nn; ++i)
        for (unsigned k = 0; k < nd; ++k) {
            const double* v = ws.U->find(nodes[i] * fem::DOFs_per_node + physics_->DOF_slot(k));
            u[i * nd + k] = v ? *v : 0.0;
        }
    return true;
}

void stiff_mesh_base::scatter_matrix(element_workspace& ws, unsigned n, const unsigned* local, const double* K) {
    symmetric_full<double>& M = ws.sym.matrix();
    for (unsigned a = 0; a < n; ++a)
        for (unsigned b = 0; b <= a; ++b) {
            const double v = K[a * n + b];
            // two local DOFs on one global DOF (a repeated node) meet both triangles
            M(local[a], local[b]) += (a != b && local[a] == local[b]) ? 2.0 * v : v;
        }
}

void stiff_mesh_base::scatter_vector(element_workspace& ws, unsigned n, const unsigned* local, const double* f) {
    for (unsigned a = 0; a < n; ++a) ws.vector[local[a]] += f[a];
}

int stiff_mesh_base::add_nodal_matrix(element_workspace& ws, unsigned nn, const unsigned* nodes,
                                      const double* M) const {
    if (!ws.set_DOFs(nodes, nn)) {
        ws.reset();
        return fem::error_memory;
    }
    const std::size_t m = ws.DOFs->size();
    dense1D<unsigned int> ptr, col;
    if (!ptr.push_back(0)) return fem::error_memory;
    for (std::size_t r = 0; r < m; ++r) {
        for (std::size_t c = r; c < m; ++c)
            if (!col.push_back(static_cast<unsigned>(c))) return fem::error_memory;
        if (!ptr.push_back(static_cast<unsigned>(col.size()))) return fem::error_memory;
    }
    if (!ws.sparse.matrix().init(ptr, col, 0.0)) return fem::error_memory;
    ws.sparse.set_IDs(ws.DOFs);
    for (unsigned i = 0; i < nn; ++i)
        for (unsigned j = 0; j <= i; ++j) {
            std::uint32_t pi = ws.DOFs->find(nodes[i]), pj = ws.DOFs->find(nodes[j]);
            if (pi > pj) std::swap(pi, pj);
            double* p = ws.sparse.matrix().find(pi, pj);
            if (p) *p += (i != j && pi == pj) ? 2.0 * M[i * nn + j] : M[i * nn + j];
        }
    return 0;
}

namespace {

const char* physics_name(unsigned family) {
    switch (family) {
        case 2000: return "mechanical_displacement_1d";
        case 4000: return "mechanical_displacement_3d";
        case 9000: return "mechanical_membrane";
        case 10000: return "mechanical_plane_strain";
        case 15000: return "mechanical_displacement_axi3d";
        case 16000: return "mechanical_displacement_axi_torsion";
        default: return "";
    }
}

unsigned instance_bit(const physics_model_base& ph) {
    const unsigned k = ph.get_kinematics();
    if (k == kinematics_lin) return elfes::instance_lin;
    if (k == kinematics_gnld) return elfes::instance_gnld;
    if (k == kinematics_gnls) return ph.get_family_code() == 15000 ? elfes::instance_gnl : elfes::instance_gnls;
    // the finite axisymmetric code is 15100, not 15300
    if (k == kinematics_gnl) return ph.get_family_code() == 15000 ? 0u : elfes::instance_gnl;
    return 0;
}

}  // namespace

int adopt_mesh(numerical_model_base* m, Ptr<numerical_model_base>& model) {
    if (!m) return fem::error_element_type;
    model = Ptr<numerical_model_base>(m);
    if (m->ID() == numerical_model_base::no_ID) {
        model.reset();
        return fem::error_memory;
    }
    return fem::no_error;
}

int create_stiff_mesh(context_type* ctx, const Ptr<physics_model_base>& physics,
                      const dense2D<unsigned int>& connectivity, fem::element_type type,
                      Ptr<numerical_model_base>& model) {
    model.reset();
    if (!physics || !physics->is_ready()) return fem::error_data;
    if (!elfes::find_family_entry(physics_name(physics->get_family_code()), type, instance_bit(*physics)))
        return fem::error_element_type;
    if (connectivity.rows() != fem::nbr_nodes(type)) return fem::error_connectivity;
    numerical_model_base* m = nullptr;
    try {
        switch (fem::element_dim(type)) {
            case 1: m = create_stiff_mesh_edge(ctx, physics, connectivity, type); break;
            case 2: m = create_stiff_mesh_face(ctx, physics, connectivity, type); break;
            case 3:
                switch (elfes::rule_family_of(type)) {
                    case elfes::rule_kind::tetra: m = create_stiff_mesh_tetra(ctx, physics, connectivity, type); break;
                    case elfes::rule_kind::pyramid:
                        m = create_stiff_mesh_pyramid(ctx, physics, connectivity, type);
                        break;
                    case elfes::rule_kind::wedge: m = create_stiff_mesh_wedge(ctx, physics, connectivity, type); break;
                    case elfes::rule_kind::hexa: m = create_stiff_mesh_hexa(ctx, physics, connectivity, type); break;
                    default: break;
                }
                break;
            default: break;
        }
    } catch (const std::bad_alloc&) {
        return fem::error_memory;
    }
    return adopt_mesh(m, model);
}

}  // namespace core
}  // namespace orv
