// Bodies shared by the public matrix and state handles of real and complex values
// (FEM_matrix and FEM_states, FEM_Zmatrix and FEM_Zstates): they differ only in the
// value type, so one template serves both.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

#include <orv/fem/error_type.h>
#include <orv/fem/stress_mgr.h>

#include "linalg/FEM_matrix_impl.h"
#include "problem/stress_mgr.h"

namespace orv {
namespace fem {
namespace detail {

// M: the matrix handle, E: its engine.
template <class M, class E>
struct matrix_handle_ops {
    typedef typename M::index_type index_type;
    typedef typename E::value_type value_type;

    // New engines for the constructors of M; null when memory fails, empty when the
    // arguments do not fit.
    static E* filled(const dense1D<unsigned int>& IDs, index_type columns, value_type value) {
        E* e = new (std::nothrow) E();
        if (e && columns < (index_type(1) << 48)) e->init(IDs, std::size_t(columns), value);
        return e;
    }
    static E* sub_columns(const M& other, index_type first_col, index_type n_cols) {
        E* e = new (std::nothrow) E();
        const E* o = other.engine();
        if (e && o) {
            const std::size_t c = o->cols();
            e->dense() = o->dense().sub_columns(first_col > c ? c : std::size_t(first_col),
                                                n_cols > c ? c : std::size_t(n_cols));
            e->set_IDs(o->get_IDs());
        }
        return e;
    }
    static E* with_values(const M& other, const dense2D<value_type>& values) {
        E* e = new (std::nothrow) E();
        const E* o = other.engine();
        if (e && o && values.rows() == o->rows() && e->dense().init(values) == 0)
            e->set_IDs(o->get_IDs());
        else if (e)
            e->clear();
        return e;
    }

    static index_type row_pos(const M& self, index_type ID) {
        const std::uint32_t r = self.engine() ? self.engine()->row_of(ID) : E::npos;
        return r == E::npos ? ~index_type(0) : index_type(r);
    }

    static dense1D<unsigned int> get_IDs(const M& self) {
        if (!self.engine() || !self.engine()->get_IDs()) return dense1D<unsigned int>();
        return self.engine()->get_IDs()->list();
    }

    static error_type get_val(const M& self, index_type ID, index_type col, value_type& value) {
        value = value_type();
        if (!self.engine()) return error_data;
        return static_cast<error_type>(self.engine()->get_val(ID, col, value));
    }

    // by_ID: a missing ID is added (setID_*), else it is an error.
    static error_type set_val(M& self, index_type ID, index_type col, value_type value, bool by_ID) {
        if (!self.engine()) return error_data;
        return static_cast<error_type>(self.engine()->set_val(ID, col, value, by_ID));
    }

    static error_type get_row(const M& self, index_type ID, dense1D<value_type>& v, index_type first, index_type n) {
        if (!self.engine()) return error_data;
        return static_cast<error_type>(self.engine()->get_row(ID, v, first, n));
    }

    static error_type set_row(M& self, index_type ID, const dense1D<value_type>& v, index_type col, bool by_ID) {
        if (!self.engine()) return error_data;
        return static_cast<error_type>(self.engine()->set_row(ID, v, col, by_ID));
    }

    static dense1D<value_type> col(const M& self, index_type c) {
        if (!self.engine() || c >= self.engine()->cols()) return dense1D<value_type>();
        return self.engine()->dense().column(std::size_t(c));
    }

    static error_type get_col(const M& self, index_type c, dense1D<value_type>& v) {
        if (!self.engine() || c >= self.engine()->cols()) return error_data;
        return static_cast<error_type>(self.engine()->dense().get_col(std::size_t(c), v));
    }

    static error_type set_col(M& self, index_type c, const dense1D<value_type>& v) {
        if (!self.engine() || c >= self.engine()->cols()) return error_data;
        return static_cast<error_type>(self.engine()->dense().set_col(std::size_t(c), v));
    }

    static error_type push_back(M& self, const M& other) {
        if (!self.engine() || !other.engine()) return error_data;
        return static_cast<error_type>(self.engine()->push_back(*other.engine()));
    }

    static error_type pop_back(M& self, index_type n) {
        if (!self.engine()) return error_data;
        self.engine()->pop_back(n > self.engine()->cols() ? self.engine()->cols() : std::size_t(n));
        return no_error;
    }

    // Value copy: the source is made resident first; a target that cannot be had in
    // memory is cleared (error_memory).
    static error_type copy(M& self, const M& other) {
        if (!self.engine() || !other.engine()) return error_data;
        if (self.engine() == other.engine()) return no_error;
        other.engine()->dense().force_incore();
        const int rc = self.engine()->copy_from(*other.engine());
        if (rc == 0 && !self.engine()->dense().force_incore()) {
            self.engine()->clear();
            return error_memory;
        }
        if (rc) self.engine()->clear();
        return static_cast<error_type>(rc);
    }

    static error_type fill(M& self, value_type value) {
        if (!self.engine()) return error_data;
        return static_cast<error_type>(self.engine()->dense().fill(value));
    }

    static void shallow_copy(M& self, const M& other) {
        if (!self.engine() || !other.engine() || self.engine() == other.engine()) return;
        self.engine()->dense() = other.engine()->dense();
        self.engine()->set_IDs(other.engine()->get_IDs());
    }
};

// S: the state handle, M: its matrix handle base, E: the state engine.
template <class S, class M, class E>
struct states_handle_ops {
    typedef typename M::index_type index_type;

    // The engine of a column view of other, or null when memory fails.
    static E* view_engine(const S& other, index_type first_col, index_type n_cols) {
        E* e = new (std::nothrow) E();
        const E* o = other.engine();
        if (e && o) {
            const std::size_t c = o->cols();
            if (e->view_of(*o, first_col > c ? c : std::size_t(first_col), n_cols > c ? c : std::size_t(n_cols)))
                e->clear();
        }
        return e;
    }

    static error_type get_state(const S& self, index_type col, S& out) {
        if (!self.engine() || col >= self.engine()->cols()) {
            out.clear_w();
            return error_data;
        }
        out = self.get_state(col);
        return out.rows() == self.rows() ? no_error : error_memory;
    }

    static error_type get_stress_mgr(const S& self, index_type col, stress_mgr& out) {
        out.clear_w();
        if (!self.engine() || col >= self.engine()->cols()) return error_data;
        Ptr<core::stress_super_mgr> s = self.engine()->stress_of(std::size_t(col));
        if (s) out.set_w(static_cast<ref_counted*>(s.get()));
        return no_error;
    }

    static error_type set_stress_mgr(S& self, index_type col, const stress_mgr& in) {
        if (!self.engine() || col >= self.engine()->cols()) return error_data;
        return static_cast<error_type>(
            self.engine()->set_stress(std::size_t(col), Ptr<core::stress_super_mgr>(in.engine())));
    }

    static error_type get_step_value(const S& self, index_type col, double& value) {
        value = 0.0;
        if (!self.engine() || col >= self.engine()->cols()) return error_data;
        value = self.engine()->step_of(std::size_t(col));
        return no_error;
    }

    static error_type set_step_value(S& self, index_type col, double value) {
        if (!self.engine() || col >= self.engine()->cols()) return error_data;
        return static_cast<error_type>(self.engine()->set_step(std::size_t(col), value));
    }

    // Value copy; the stress managers are shared.
    static error_type copy(S& self, const S& other) {
        if (!self.engine() || !other.engine()) return error_data;
        if (self.engine() == other.engine()) return no_error;
        const error_type rc = self.M::copy(static_cast<const M&>(other));
        if (rc) return rc;
        try {
            self.engine()->stresses = other.engine()->stresses;
            self.engine()->steps = other.engine()->steps;
        } catch (...) {
            return error_memory;
        }
        self.engine()->trim();
        return no_error;
    }

    // Appends the columns of other, with their stresses and steps when it holds states.
    static error_type push_back(S& self, const M& other) {
        if (!self.engine() || !other.engine()) return error_data;
        const std::size_t old = self.engine()->cols();
        const E* o = S(other).engine();  // null for a plain matrix
        const error_type rc = self.M::push_back(other);
        if (rc) return rc;
        if (o) {
            for (std::size_t k = 0; old + k < self.engine()->cols(); ++k) {
                if (o->stress_of(k)) self.engine()->set_stress(old + k, o->stress_of(k));
                if (o->step_of(k) != 0.0) self.engine()->set_step(old + k, o->step_of(k));
            }
        }
        return no_error;
    }

    static error_type pop_back(S& self, index_type n) {
        const error_type rc = self.M::pop_back(n);
        if (self.engine()) self.engine()->trim();
        return rc;
    }

    static void clear(S& self) {
        if (!self.engine()) return;
        self.engine()->clear();
        self.engine()->stresses.clear();
        self.engine()->steps.clear();
    }
};

}  // namespace detail
}  // namespace fem
}  // namespace orv
