// Loads of a load case: records, merging of repeated elementary loads, loads on a
// composite, combinations, prescribed values and the assembly of nodal loads.
#include <gtest/gtest.h>

#include <orv/fem/error_type.h>

#include <cstdint>
#include <limits>
#include <map>
#include <stdexcept>
#include <utility>
#include <vector>

#include <orv/fem/context.h>
#include <orv/fem/evolution_funcs_mgr.h>
#include <orv/fem/loads_mgr.h>

#include "common/literal_lists.h"
#include "frame/context_type.h"
#include "model/element_workspace.h"
#include "model/numerical_model_base.h"
#include "model/numerical_model_composite.h"
#include "model/vector_assembler.h"
#include "problem/loads_mgr.h"

using orv::dense1D;
using orv::core::DOF_record;
using orv::core::elementary_load;
using orv::core::loads_mgr;
using orv::test::vec_of;

namespace {

const std::uint32_t none = 0xFFFFFFFFu;
const std::uint32_t all = 0xFFFFFFFEu;

elementary_load force(double fx, double fy, double fz) {
    return elementary_load(elementary_load::kind_force, 0, vec_of({fx, fy, fz}));
}

// A simple model with a number of elements and nothing else: enough for the registry.
class plain_model : public orv::core::numerical_model_base {
public:
    plain_model(orv::core::context_type* ctx, std::uint32_t n) : numerical_model_base(ctx), n_(n) { register_self(n); }
    std::uint32_t nbr_elements() const override { return n_; }

private:
    std::uint32_t n_;
};

// A model whose element e carries the three values of a force load on the
// displacements of node first_node + e. It takes force loads only; element `fail`
// reports an element error.
class load_model : public orv::core::numerical_model_base {
public:
    load_model(orv::core::context_type* ctx, std::uint32_t n, std::uint32_t first_node, std::uint32_t fail = none)
        : numerical_model_base(ctx), n_(n), first_node_(first_node), fail_(fail) {
        register_self(n);
    }
    std::uint32_t nbr_elements() const override { return n_; }
    bool accepts_load(const elementary_load& r) const override {
        return (r.kind & 0xF8u) == elementary_load::kind_force;
    }
    int compute_load(const elementary_load& r, orv::core::element_workspace& ws) override {
        if (ws.element_ID == fail_) return orv::fem::error_element;
        if (ws.element_ID >= n_) return orv::fem::error_index;
        const unsigned node = first_node_ + ws.element_ID;
        const unsigned ids[3] = {9 * node, 9 * node + 1, 9 * node + 2};
        if (!ws.set_DOFs(ids, 3) || !ws.init_vector()) return orv::fem::error_memory;
        for (std::size_t k = 0; k < 3 && k < r.values.size(); ++k) ws.vector[k] = r.values[k];
        return 0;
    }

private:
    std::uint32_t n_, first_node_, fail_;
};

// A right-hand side on the DOFs 0 to n-1.
struct rhs {
    explicit rhs(unsigned n) : ids(new orv::core::DOF_index()) {
        std::vector<unsigned> all(n);
        for (unsigned i = 0; i < n; ++i) all[i] = i;
        ids->init(all.data(), all.data() + n);
        vec.init(ids, 0.0);
    }
    double operator[](unsigned id) const { return *vec.find(id); }
    // Entries other than the listed ones are all zero.
    bool zero_except(std::initializer_list<unsigned> nonzero) const {
        for (unsigned i = 0; i < vec.size(); ++i) {
            bool listed = false;
            for (unsigned k : nonzero) listed = listed || k == i;
            if (!listed && vec[i] != 0.0) return false;
        }
        return true;
    }
    orv::Ptr<orv::core::DOF_index> ids;
    orv::core::DOF_vector vec;
};

// Collects what an assembly adds, by DOF.
struct recording_assembler {
    std::map<std::uint32_t, double> added;
    std::vector<std::uint32_t> order;
    void add_DOF(std::uint32_t ID, double value) {
        added[ID] += value;
        order.push_back(ID);
    }
};

}  // namespace

TEST(LoadsMgr, NeumannZeroIsDroppedDirichletZeroIsKept) {
    loads_mgr l;
    EXPECT_EQ(l.record_DOF_load(5, 0.0, none), 0);
    EXPECT_EQ(l.Neumann().size(), 0u);
    EXPECT_EQ(l.record_DOF_prescribed_value(5, 0.0, none), 0);
    ASSERT_EQ(l.Dirichlet().size(), 1u);
    EXPECT_EQ(l.Dirichlet()[0].ID, 5u);
    EXPECT_EQ(l.Dirichlet()[0].value, 0.0);
    EXPECT_EQ(l.Dirichlet()[0].evolution_func_ID, none);

    EXPECT_EQ(l.record_DOF_load(7, -2.5, 3), 0);
    ASSERT_EQ(l.Neumann().size(), 1u);
    EXPECT_EQ(l.Neumann()[0].ID, 7u);
    EXPECT_EQ(l.Neumann()[0].evolution_func_ID, 3u);
    EXPECT_EQ(l.Neumann()[0].value, -2.5);
}

TEST(LoadsMgr, ListFormsCheckLengths) {
    loads_mgr l;
    const unsigned ids[] = {1, 2, 3};
    const double values[] = {1.0, 0.0, 3.0};
    const unsigned evols[] = {0, 1, 2};
    EXPECT_EQ(l.record_DOF_loads(ids, 3, values, 2, none), orv::fem::error_data);
    EXPECT_EQ(l.record_DOF_loads(ids, 3, values, 3, evols, 2), orv::fem::error_data);
    EXPECT_EQ(l.record_DOF_prescribed_values(ids, 2, values, 3, none), orv::fem::error_data);
    EXPECT_EQ(l.record_DOF_prescribed_values(ids, 3, values, 3, evols, 1), orv::fem::error_data);
    EXPECT_EQ(l.Neumann().size() + l.Dirichlet().size(), 0u);

    EXPECT_EQ(l.record_DOF_loads(ids, 3, values, 3, evols, 3), 0);
    ASSERT_EQ(l.Neumann().size(), 2u);  // the 0.0 is dropped
    EXPECT_EQ(l.Neumann()[1].ID, 3u);
    EXPECT_EQ(l.Neumann()[1].evolution_func_ID, 2u);
    EXPECT_EQ(l.record_DOF_prescribed_values(ids, 3, values, 3, 9), 0);
    ASSERT_EQ(l.Dirichlet().size(), 3u);
    EXPECT_EQ(l.Dirichlet()[1].value, 0.0);
    EXPECT_EQ(l.Dirichlet()[2].evolution_func_ID, 9u);
}

TEST(LoadsMgr, NodalRecords) {
    loads_mgr l;
    const double F[3] = {1.0, 0.0, -2.0};
    const double zero[3] = {0.0, 0.0, 0.0};
    EXPECT_EQ(l.record_nodal_load(4, F, zero, none), 0);
    ASSERT_EQ(l.Neumann().size(), 2u);  // M zero: no moment; F's 0.0 dropped
    EXPECT_EQ(l.Neumann()[0].ID, 36u);
    EXPECT_EQ(l.Neumann()[1].ID, 38u);
    EXPECT_EQ(l.Neumann()[1].value, -2.0);

    const double M[3] = {0.0, 5.0, 0.0};
    EXPECT_EQ(l.record_nodal_load(2, zero, M, none), 0);
    ASSERT_EQ(l.Neumann().size(), 3u);
    EXPECT_EQ(l.Neumann()[2].ID, 2u * 9 + 4);

    // A node without DOFs puts its values on the IDs of node 0.
    EXPECT_EQ(l.record_nodal_load(477218588u, F, zero, none), 0);
    EXPECT_EQ(l.Neumann()[3].ID, 0u);
    EXPECT_EQ(l.Neumann()[4].ID, 2u);

    EXPECT_EQ(l.record_nodal_load(3, orv::fem::field_temperature, 2, 7.0, 1), 0);
    EXPECT_EQ(l.Neumann().back().ID, 3u * 9 + 6);
    EXPECT_EQ(l.record_nodal_load(3, orv::fem::field_rotation, 1, 0.0, 1), 0);
    EXPECT_EQ(l.Neumann().size(), 6u);
    // An ID that does not fit 32 bits is refused.
    EXPECT_EQ(l.record_nodal_load(1000000000u, orv::fem::field_displacement, 0, 1.0, none), orv::fem::error_data);
    EXPECT_EQ(l.record_nodal_prescribed_value(1000000000u, orv::fem::field_displacement, 0, 1.0, none),
              orv::fem::error_data);

    // Prescribed values: always all six, zeros included.
    const double U[3] = {0.0, 0.5, 0.0};
    EXPECT_EQ(l.record_nodal_prescribed_values(1, U, zero, 4), 0);
    ASSERT_EQ(l.Dirichlet().size(), 6u);
    for (unsigned i = 0; i < 6; ++i) {
        EXPECT_EQ(l.Dirichlet()[i].ID, 9u + i);
        EXPECT_EQ(l.Dirichlet()[i].evolution_func_ID, 4u);
    }
    EXPECT_EQ(l.Dirichlet()[1].value, 0.5);
    EXPECT_EQ(l.record_nodal_prescribed_values(477218588u, U, zero, 4), orv::fem::error_data);
    EXPECT_EQ(l.record_nodal_prescribed_value(2, orv::fem::field_rotation, 2, 0.0, none), 0);
    EXPECT_EQ(l.Dirichlet().back().ID, 2u * 9 + 5);
}

TEST(LoadsMgr, RepeatedElementLoadsShareOneRecord) {
    loads_mgr l;
    const elementary_load p = force(0.0, 0.0, -3.0);
    for (std::uint32_t e = 1; e <= 3; ++e) EXPECT_EQ(l.record_NM_load(0, e, p, none), 0);
    EXPECT_EQ(l.NM_loads().size(), 1u);
    EXPECT_EQ(l.nbr_NM_entries(), 3u);
    EXPECT_EQ(l.nbr_NM_keys(), 3u);
    ASSERT_NE(l.find(0, 2), nullptr);
    EXPECT_EQ((*l.find(0, 2))[0], 0u);
    EXPECT_EQ(l.find(0, 4), nullptr);

    // Another evolution function or other values make a new record...
    l.record_NM_load(0, 4, p, 2);
    l.record_NM_load(0, 5, force(0.0, 0.0, -3.5), none);
    EXPECT_EQ(l.NM_loads().size(), 3u);
    EXPECT_EQ(l.NM_loads()[1].evolution_func_ID, 2u);
    // ... and the first one is still among the last three, so it is found again.
    l.record_NM_load(0, 6, p, none);
    EXPECT_EQ(l.NM_loads().size(), 3u);
    EXPECT_EQ((*l.find(0, 6))[0], 0u);
    // One other load later it is four records back, out of reach, and is stored anew.
    l.record_NM_load(0, 7, force(1.0, 0.0, 0.0), none);
    l.record_NM_load(0, 10, p, none);
    EXPECT_EQ(l.NM_loads().size(), 5u);
    EXPECT_EQ((*l.find(0, 10))[0], 4u);

    // The same key twice keeps both positions, in order.
    l.record_NM_load(0, 1, force(9.0, 0.0, 0.0), none);
    ASSERT_EQ(l.find(0, 1)->size(), 2u);
    EXPECT_EQ((*l.find(0, 1))[1], 5u);
    // Table order is the order of first record of the keys.
    EXPECT_EQ(l.NM_key(0).FE_ID, 1u);
    EXPECT_EQ(l.NM_key(l.nbr_NM_keys() - 1).FE_ID, 10u);
}

TEST(LoadsMgr, ElementLoadsThatRecordNothing) {
    loads_mgr l;
    EXPECT_EQ(l.record_NM_load(0, 1, force(0.0, 0.0, 0.0), none), 0);
    EXPECT_EQ(l.record_NM_load(none, 1, force(1.0, 0.0, 0.0), none), 0);
    EXPECT_EQ(l.record_NM_load(0, none, force(1.0, 0.0, 0.0), none), 0);
    EXPECT_EQ(l.record_NM_load(0, 1, elementary_load(), none), 0);
    EXPECT_EQ(l.NM_loads().size(), 0u);
    EXPECT_EQ(l.nbr_NM_entries(), 0u);
    EXPECT_EQ(l.record_NM_load(0, all, force(1.0, 0.0, 0.0), none), 0);
    EXPECT_EQ(l.nbr_NM_entries(), 1u);
}

TEST(LoadsMgr, StoredValuesAreTheManagersOwn) {
    loads_mgr l;
    elementary_load p = force(1.0, 2.0, 3.0);
    l.record_NM_load(0, 0, p, 5);
    p.values[0] = 100.0;
    EXPECT_EQ(l.NM_loads()[0].values[0], 1.0);
    EXPECT_EQ(l.NM_loads()[0].evolution_func_ID, 5u);
    EXPECT_EQ(p.evolution_func_ID, none);  // the caller's record is not touched
}

TEST(LoadsMgr, LoadOnACompositeIsStoredUnderItsSimpleModels) {
    orv::fem::context ctx;
    orv::core::context_type* c = ctx.engine();
    auto* a = new plain_model(c, 4);
    auto* b = new plain_model(c, 2);
    auto* inner = new orv::core::numerical_model_composite(c);
    auto* outer = new orv::core::numerical_model_composite(c);
    ASSERT_TRUE(inner->insert(b->ID()));
    ASSERT_TRUE(inner->insert(1000));  // an absent model is skipped
    ASSERT_TRUE(outer->insert(a->ID()));
    ASSERT_TRUE(outer->insert(inner->ID()));

    loads_mgr l(c);
    EXPECT_EQ(l.record_NM_load(outer->ID(), 1, force(0.0, 1.0, 0.0), none), 0);
    EXPECT_EQ(l.nbr_NM_keys(), 2u);
    EXPECT_NE(l.find(a->ID(), 1), nullptr);
    EXPECT_NE(l.find(b->ID(), 1), nullptr);
    EXPECT_EQ(l.find(outer->ID(), 1), nullptr);
    EXPECT_EQ(l.find(inner->ID(), 1), nullptr);
    EXPECT_EQ(l.NM_loads().size(), 1u);  // one record shared by both keys

    // A simple model, and an ID that names no model, are stored as given.
    l.record_NM_load(a->ID(), all, force(0.0, 1.0, 0.0), none);
    l.record_NM_load(4711, 0, force(0.0, 1.0, 0.0), none);
    EXPECT_NE(l.find(a->ID(), all), nullptr);
    EXPECT_NE(l.find(4711, 0), nullptr);
}

TEST(LoadsMgr, CombinationScalesEveryRecord) {
    loads_mgr src;
    src.record_NM_load(0, 1, force(1.0, 2.0, 3.0), none);
    // A scalar load and a heat flux carry one significant value.
    elementary_load scalar(elementary_load::kind_force, elementary_load::type_scalar, vec_of({2.0, 7.0, 7.0}));
    src.record_NM_load(0, 2, scalar, 1);
    elementary_load flux(elementary_load::kind_heat_flux, 0, vec_of({4.0, 7.0}));
    src.record_NM_load(1, all, flux, none);
    src.record_DOF_load(10, 1.5, none);
    src.record_DOF_prescribed_value(11, 0.0, none);
    src.record_DOF_prescribed_value(12, 2.0, 3);

    loads_mgr dst;
    dst.add(src, -2.0);
    ASSERT_EQ(dst.NM_loads().size(), 3u);
    const elementary_load& f = dst.NM_loads()[(*dst.find(0, 1))[0]];
    EXPECT_EQ(f.values[0], -2.0);
    EXPECT_EQ(f.values[1], -4.0);
    EXPECT_EQ(f.values[2], -6.0);
    const elementary_load& s = dst.NM_loads()[(*dst.find(0, 2))[0]];
    EXPECT_EQ(s.values[0], -4.0);
    EXPECT_EQ(s.values[1], 7.0);
    EXPECT_EQ(s.values[2], 7.0);
    EXPECT_EQ(s.evolution_func_ID, 1u);
    const elementary_load& h = dst.NM_loads()[(*dst.find(1, all))[0]];
    EXPECT_EQ(h.values[0], -8.0);
    EXPECT_EQ(h.values[1], 7.0);
    ASSERT_EQ(dst.Neumann().size(), 1u);
    EXPECT_EQ(dst.Neumann()[0].value, -3.0);
    ASSERT_EQ(dst.Dirichlet().size(), 2u);
    EXPECT_EQ(dst.Dirichlet()[0].value, 0.0);
    EXPECT_EQ(dst.Dirichlet()[1].value, -4.0);
    EXPECT_EQ(dst.Dirichlet()[1].evolution_func_ID, 3u);
    // The source is unchanged.
    EXPECT_EQ(src.NM_loads()[0].values[0], 1.0);
    EXPECT_EQ(src.Neumann()[0].value, 1.5);

    // Adding the same case again merges with the last records, and the table grows.
    dst.add(src, -2.0);
    EXPECT_EQ(dst.NM_loads().size(), 3u);
    EXPECT_EQ(dst.nbr_NM_entries(), 6u);
    EXPECT_EQ(dst.Neumann().size(), 2u);
    EXPECT_EQ(dst.Dirichlet().size(), 4u);

    // A case added to itself doubles.
    loads_mgr self;
    self.record_DOF_load(1, 1.0, none);
    self.record_NM_load(0, 0, force(1.0, 0.0, 0.0), none);
    self.add(self, 1.0);
    EXPECT_EQ(self.Neumann().size(), 2u);
    EXPECT_EQ(self.nbr_NM_entries(), 2u);
}

TEST(LoadsMgr, ZeroCoefficientLeavesTheTargetUntouched) {
    loads_mgr src;
    src.record_NM_load(0, 1, force(1.0, 2.0, 3.0), none);
    src.record_DOF_load(10, 1.5, none);
    src.record_DOF_prescribed_value(11, 1.0, none);
    loads_mgr dst;
    dst.record_DOF_load(3, 1.0, none);
    dst.add(src, 0.0);
    EXPECT_EQ(dst.NM_loads().size(), 0u);
    EXPECT_EQ(dst.nbr_NM_entries(), 0u);
    EXPECT_EQ(dst.Neumann().size(), 1u);
    EXPECT_EQ(dst.Dirichlet().size(), 0u);
}

TEST(LoadsMgr, NeumannAssemblyUsesEvolutionAndFactors) {
    orv::fem::context ctx;
    orv::fem::evolution_funcs_mgr funcs = ctx.the_evol_funcs_mgr();
    const unsigned lin = funcs.create_linear(2.0);  // 2t
    const unsigned off = funcs.create_cste(0.0);

    loads_mgr l(ctx.engine());
    l.record_DOF_load(4, 3.0, none);  // no function: 1.0
    l.record_DOF_load(5, 1.0, lin);
    l.record_DOF_load(6, 1.0, off);
    l.record_DOF_load(4, 0.5, 77);  // an ID past the functions: 1.0

    recording_assembler va;
    l.assemble_Neumann(va, 1.5, 2.0, -1.0);
    EXPECT_EQ(va.added[4], (3.0 + 0.5) * -2.0);
    EXPECT_EQ(va.added[5], 2.0 * 1.5 * -2.0);
    EXPECT_EQ(va.added[6], 0.0);
    EXPECT_EQ(va.order.size(), 4u);  // in record order
    EXPECT_EQ(va.order[1], 5u);

    recording_assembler none_added;
    l.assemble_Neumann(none_added, 1.5, 0.0, 1.0);
    EXPECT_TRUE(none_added.order.empty());

    // Without a context every function reads 1.0.
    loads_mgr bare;
    bare.record_DOF_load(5, 1.0, lin);
    recording_assembler vb;
    bare.assemble_Neumann(vb, 1.5, 1.0, 1.0);
    EXPECT_EQ(vb.added[5], 1.0);
}

TEST(LoadsMgr, PrescribedValuesAtATime) {
    orv::fem::context ctx;
    const unsigned lin = ctx.the_evol_funcs_mgr().create_linear(10.0);
    loads_mgr l(ctx.engine());
    l.record_DOF_prescribed_value(20, 1.0, none);
    l.record_DOF_prescribed_value(3, 0.5, lin);
    l.record_DOF_prescribed_value(20, 2.0, none);  // the later record counts
    l.record_DOF_prescribed_value(7, 0.0, none);

    std::vector<std::uint32_t> ids = {99};
    l.get_prescribed_DOFs(ids);
    EXPECT_EQ(ids, (std::vector<std::uint32_t>{99, 3, 7, 20}));

    std::vector<std::pair<std::uint32_t, double>> v;
    l.get_prescribed_values(0.2, v);
    ASSERT_EQ(v.size(), 3u);
    EXPECT_EQ(v[0], std::make_pair(3u, 1.0));
    EXPECT_EQ(v[1], std::make_pair(7u, 0.0));
    EXPECT_EQ(v[2], std::make_pair(20u, 2.0));

    l.clear();
    l.get_prescribed_values(0.2, v);
    EXPECT_TRUE(v.empty());
    EXPECT_EQ(l.Neumann().size() + l.NM_loads().size() + l.nbr_NM_keys(), 0u);
}

// The handle forwards to the engine tested above: what is checked here is the sharing,
// the public record and the range errors of the handle's own accessors.
TEST(LoadsMgrHandle, SharedRecordsAndRangeErrors) {
    orv::fem::context ctx;
    orv::fem::loads_mgr a(ctx);
    ASSERT_TRUE(a.is_valid());
    orv::fem::loads_mgr shared = a;
    EXPECT_EQ(a.record_nodal_load(2, orv::vector_fixed<double, 3>{1.0, 0.0, 0.0}, orv::vector_fixed<double, 3>{}),
              orv::fem::no_error);
    orv::fem::DOF_record r{};
    EXPECT_EQ(shared.get_node_Neumann_load(0, r), orv::fem::no_error);
    EXPECT_EQ(r.ID, 18u);
    EXPECT_EQ(r.value, 1.0);
    EXPECT_EQ(r.evolution_func_ID, none);
    EXPECT_EQ(shared.get_node_Neumann_load(1, r), orv::fem::error_data);

    orv::dense1D<unsigned> ids(2, 3u);
    orv::dense1D<double> values(3, 1.0);
    EXPECT_EQ(a.record_DOF_loads(ids, values), orv::fem::error_data);

    orv::fem::loads_mgr b(ctx);
    EXPECT_EQ(b.add(a, 0.5), orv::fem::no_error);
    a.clear();
    EXPECT_EQ(shared.nbr_node_Neumann_loads(), 0u);
    EXPECT_EQ(b.get_node_Neumann_load(0, r), orv::fem::no_error);  // b has its own records
    EXPECT_EQ(r.value, 0.5);
}

TEST(LoadsMgrHandle, EmptyHandleRefusesWithoutHarm) {
    orv::fem::loads_mgr h;
    EXPECT_FALSE(h.is_valid());
    EXPECT_EQ(h.record_DOF_load(1, 1.0), orv::fem::error_data);
    EXPECT_EQ(h.record_NM_load(0, 0, force(1.0, 0.0, 0.0)), orv::fem::error_data);
    EXPECT_FALSE(h.reserve_node_Neumann_loads(4));
    EXPECT_EQ(h.nbr_node_Neumann_loads(), 0u);
    h.clear();
    orv::fem::context ctx;
    orv::fem::loads_mgr a(ctx);
    EXPECT_EQ(a.add(h, 1.0), orv::fem::error_data);
    EXPECT_EQ(h.add(a, 1.0), orv::fem::error_data);
    // Narrowing a handle of another class gives an empty handle.
    orv::fem::loads_mgr n(static_cast<const orv::fem::base_class&>(ctx));
    EXPECT_FALSE(n.is_valid());
    EXPECT_EQ(n.obj_type_id(), orv::fem::loads_mgr::type_id());
}

// Two models under a composite: model a (3 elements on nodes 0-2) and model b (2
// elements on nodes 3-4, with its own evolution function 0.5).
class LoadsAssembly : public ::testing::Test {
protected:
    void SetUp() override {
        c = ctx.engine();
        orv::fem::evolution_funcs_mgr funcs = ctx.the_evol_funcs_mgr();
        lin = funcs.create_linear(2.0);  // 2t
        off = funcs.create_cste(0.0);
        const unsigned half = funcs.create_cste(0.5);
        a = new load_model(c, 3, 0);
        b = new load_model(c, 2, 3);
        b->set_evolution_func_ID(half);
        composite = new orv::core::numerical_model_composite(c);
        composite->insert(a->ID());
        composite->insert(b->ID());

        loads = orv::Ptr<loads_mgr>(new loads_mgr(c));
        loads->record_NM_load(composite->ID(), all, force(1.0, 2.0, 3.0), none);
        loads->record_NM_load(a->ID(), 1, force(0.0, 0.0, 10.0), lin);
        loads->record_NM_load(a->ID(), 2, force(0.0, 0.0, 10.0), off);
        elementary_load heat(elementary_load::kind_heat_flux, 0, vec_of({100.0}));
        loads->record_NM_load(a->ID(), 0, heat, none);  // not taken by these models
        loads->record_DOF_load(40, 5.0, lin);
        loads->record_DOF_load(100, 5.0, none);  // not in the system

        args.vector_assembler = &va;
        args.params.time = 1.5;
        args.params.load_factor = 2.0;
        args.factor = 0.5;
    }

    orv::fem::context ctx;
    orv::core::context_type* c = nullptr;
    unsigned lin = 0, off = 0;
    load_model* a = nullptr;
    load_model* b = nullptr;
    orv::core::numerical_model_composite* composite = nullptr;
    orv::Ptr<loads_mgr> loads;
    rhs F{45};
    orv::core::vector_assembler<double> va{F.vec, 1.0};
    orv::core::assembly_args args;
};

TEST_F(LoadsAssembly, ElementAndNodalLoadsWithTheirFunctionsAndFactors) {
    // load_factor * factor = 1 and t = 1.5: lin is 3.
    ASSERT_EQ(loads->assemble(args), 0);
    const double expected[5][3] = {
        {1.0, 2.0, 3.0}, {1.0, 2.0, 33.0}, {1.0, 2.0, 3.0}, {0.5, 1.0, 1.5}, {0.5, 1.0, 1.5}};
    for (unsigned n = 0; n < 5; ++n)
        for (unsigned k = 0; k < 3; ++k) EXPECT_EQ(F[9 * n + k], expected[n][k]) << n << " " << k;
    EXPECT_EQ(F[40], 15.0);
    EXPECT_TRUE(F.zero_except({0, 1, 2, 9, 10, 11, 18, 19, 20, 27, 28, 29, 36, 37, 38, 40}));
    // The arguments come back as they were given.
    EXPECT_EQ(args.element, all);
    EXPECT_EQ(args.factor, 0.5);
    EXPECT_EQ(args.elements, nullptr);

    // Everything is linear in the global factor.
    rhs G(45);
    orv::core::vector_assembler<double> vb(G.vec, 1.0);
    args.vector_assembler = &vb;
    args.factor = -1.0;
    ASSERT_EQ(loads->assemble(args), 0);
    for (unsigned i = 0; i < 45; ++i) EXPECT_EQ(G[i], -2.0 * F[i]) << i;
}

TEST_F(LoadsAssembly, NothingIsAssembledOnTheEarlyReturns) {
    args.element = none;
    EXPECT_EQ(loads->assemble(args), 0);
    args.element = all;
    args.factor = 0.0;
    EXPECT_EQ(loads->assemble(args), 0);
    args.factor = 1.0;
    args.params.load_factor = 0.0;  // no external load at all
    EXPECT_EQ(loads->assemble(args), 0);
    args.params.load_factor = 1.0;
    orv::core::vector_null_assembler null;
    args.vector_assembler = &null;
    EXPECT_EQ(loads->assemble(args), 0);
    args.vector_assembler = nullptr;
    EXPECT_EQ(loads->assemble(args), 0);
    EXPECT_TRUE(F.zero_except({}));
}

TEST_F(LoadsAssembly, RestrictedToAListOfElements) {
    orv::dense1D<unsigned> elements(1, 1u);
    args.elements = &elements;
    ASSERT_EQ(loads->assemble(args, a->ID()), 0);
    EXPECT_EQ(F[9], 1.0);
    EXPECT_EQ(F[10], 2.0);
    EXPECT_EQ(F[11], 33.0);
    EXPECT_TRUE(F.zero_except({9, 10, 11}));  // no other element, no nodal load
    EXPECT_EQ(args.elements, &elements);
    EXPECT_EQ(args.element, all);
}

TEST_F(LoadsAssembly, AnElementErrorStopsTheAssembly) {
    load_model* bad = new load_model(c, 2, 0, 1);
    loads_mgr l(c);
    l.record_NM_load(bad->ID(), all, force(1.0, 0.0, 0.0), none);
    l.record_DOF_load(5, 1.0, none);
    EXPECT_EQ(l.assemble(args), orv::fem::error_element);
    EXPECT_EQ(F[0], 1.0);  // element 0 came before the failure
    EXPECT_EQ(F[5], 0.0);  // the nodal loads were not reached
    EXPECT_EQ(args.factor, 0.5);
    EXPECT_EQ(args.element, all);
}
