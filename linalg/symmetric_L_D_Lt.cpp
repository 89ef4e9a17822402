#include "linalg/symmetric_L_D_Lt.h"
#include <orv/fem/error_type.h>

#include <omp.h>

#include <algorithm>
#include <cassert>
#include <cstring>
#include <new>
#include <thread>
#include <vector>

#include "linalg/dense_kernels.h"
#include "linalg/parallel_first_error.h"

namespace orv {
namespace core {

namespace {

typedef symmetric_hybrid_OOC<double>::block_type block_type;
typedef block_type::segment_type segment_type;

// Own columns are factored in panels of this many columns; extra segments are
// solved and multiplied in tiles of this many columns.
const std::size_t panel_width = 128;
const std::size_t tile_width = 256;
const std::size_t chunk_width = 64;

// A product of extra columns waiting to be subtracted from the later blocks: rows
// [pa0, pa1) by columns [pb0, pb1) of the unit's extras, with both index lists in
// column order.
struct pending_piece {
    std::size_t pa0 = 0, pa1 = 0, pb0 = 0, pb1 = 0;
    std::vector<double> S;
    std::vector<std::size_t> al, bl;
};
const std::size_t max_pending = 4;

std::size_t bytes_of(const pending_piece& pp) {
    return pp.S.capacity() * sizeof(double) + (pp.al.capacity() + pp.bl.capacity()) * sizeof(std::size_t);
}

// Where the products of a unit go: for each of its extra columns (in the unit's
// sorted order) the global column, the run of later blocks it falls in and its row of
// base addresses (entry of row r of run i at sbase[k][i] + r, null for none); the
// block of each run.
struct scatter_map {
    const std::size_t* scol;
    const std::size_t* srun;
    double* const* const* sbase;
    const std::size_t* run_block;
};

// Subtracts a product from the later blocks. The entry of a pair goes to the segment
// of the later of the two columns, at the row of the earlier one. Walking both lists
// in column order makes the additions run down the target segments.
void scatter(symmetric_hybrid_OOC<double>& A, const scatter_map& sm, const pending_piece& pp) {
    const std::size_t* scol = sm.scol;
    const std::size_t* srun = sm.srun;
    const double* S = pp.S.data();
    const std::size_t wa = pp.pa1 - pp.pa0, pa0 = pp.pa0, pb0 = pp.pb0;
    for (std::size_t bb : pp.bl) {  // column of bb after the row's
        const double* Sc = S + (bb - pb0) * wa - pa0;
        const std::size_t cb = scol[bb];
        double* const* base_b = sm.sbase[bb];
        for (std::size_t a : pp.al) {
            const std::size_t ca = scol[a];
            if (ca >= cb) break;
            double* const t = base_b[srun[a]];
            if (a < bb && t) t[ca] -= Sc[a];
        }
    }
    for (std::size_t a : pp.al) {  // column of a after the row's
        const std::size_t ca = scol[a];
        double* const* base_a = sm.sbase[a];
        const double* Sr = S + (a - pa0) - pb0 * wa;
        for (std::size_t bb : pp.bl) {
            const std::size_t cb = scol[bb];
            if (cb >= ca) break;
            double* const t = base_a[srun[bb]];
            if (a < bb && t) t[cb] -= Sr[bb * wa];
        }
    }
    for (std::size_t bb = std::max(pa0, pb0); bb < std::min(pp.pa1, pp.pb1); ++bb) {
        symmetric_hybrid_OOC<double>::block_type& q = A.block(sm.run_block[srun[bb]]);
        q.diag()[scol[bb] - q.first()] -= S[(bb - pa0) + (bb - pb0) * wa];
    }
}

// The products of a unit that wait for its turn, with a copy of its scatter map (the
// thread's work arrays go on to the next unit).
struct kept_unit {
    std::vector<std::size_t> scol, srun, run_block;
    std::vector<double*> base;
    std::vector<double* const*> sbase;
    std::vector<pending_piece> pieces;
    scatter_map map() const { return scatter_map{scol.data(), srun.data(), sbase.data(), run_block.data()}; }
};

// Work arrays of one thread of a nested region: a tile of U, the products that wait
// for the lock, and those that wait for the unit's turn.
struct inner_work {
    std::vector<double> tileU;
    std::vector<pending_piece> pending;
    std::size_t n_pending = 0;
    std::vector<pending_piece> kept;
};

// A piece of a column of a unit of work: `len` values at `data`, for the rows
// row0 .. row0 + len of the unit.
struct column_piece {
    double* data;
    std::size_t row0;
    std::size_t len;
};

// Work arrays of one thread of the factorisation, grown on demand, kept across
// units. W holds the own columns of a unit as a dense n x n upper triangle, X its
// extra columns as dense n x e columns (zero outside the stored pieces).
struct block_work_arrays {
    std::vector<double> W, X, P, dinv;
    std::vector<std::size_t> top, xtop, ord, smin, tile_top;
    std::vector<std::pair<std::size_t, column_piece>> own_keys, ext_keys;
    std::vector<std::size_t> own_ptr, ext_ptr, ucol;
    std::vector<std::size_t> run_of, run_begin, run_block;
    std::vector<double*> base;
    std::vector<std::size_t> scol, srun;
    std::vector<double* const*> sbase;
    std::vector<inner_work> inner;
    std::size_t map_columns = 0, map_runs = 0;  // e and m of the unit's scatter map
    scatter_map map() const { return scatter_map{scol.data(), srun.data(), sbase.data(), run_block.data()}; }
};

template <class V>
void grow(std::vector<V>& v, std::size_t n) {
    if (v.size() < n) v.resize(n);
}

// State shared by the threads of one factorisation.
struct factor_state {
    symmetric_hybrid_OOC<double>* A = nullptr;
    const pivot_callback* check = nullptr;
    bool serialize_checks = false;
    omp_lock_t lock;  // updates into later blocks and the error word
    int error = 0;
    double flops = 0;

    // Units factored side by side may add into the same entries of a later block.
    // So that the sums do not depend on the threads' timing, the units of a group
    // add their updates in the order of their rank in the group: a unit adds at once
    // while all the units before it are done, and otherwise keeps its products until
    // its turn comes. All of this is under the lock. The kept products are bounded:
    // beyond max_kept_bytes a unit waits for its turn instead of keeping more.
    bool ordered = false;
    std::size_t turn = 0;
    std::vector<char> done;
    std::vector<kept_unit> waiting;
    std::size_t kept_bytes = 0;  // changed atomically

    static const std::size_t max_kept_bytes = std::size_t(64) << 20;
    bool in_turn(std::size_t rank) const { return !ordered || rank == turn; }
    void apply(const scatter_map& sm, std::vector<pending_piece>& pieces) {
        std::size_t b = 0;
        for (const pending_piece& pp : pieces) {
            scatter(*A, sm, pp);
            b += bytes_of(pp);
        }
#pragma omp atomic
        kept_bytes -= b;
        pieces.clear();
    }
    // Called with the lock held by a unit that is about to keep products: while too
    // much is kept already, it gives the lock up in turns until its rank comes (the
    // units before it are all running, so it does come) or an error stops the work.
    bool wait_turn_if_full(std::size_t rank) {
        std::size_t kept;
#pragma omp atomic read
        kept = kept_bytes;
        if (kept <= max_kept_bytes) return in_turn(rank);
        while (!in_turn(rank) && !error) {
            omp_unset_lock(&lock);
            std::this_thread::yield();
            omp_set_lock(&lock);
        }
        return in_turn(rank);
    }
    void begin_group(std::size_t n_units) {
        ordered = n_units > 1;
        turn = 0;
        done.assign(n_units, 0);
        waiting.resize(n_units);
    }
    // A unit has computed all its products: they are added now if its turn has come,
    // and so are the kept ones of the finished units behind it; else they are kept.
    void unit_done(std::size_t rank, block_work_arrays& ws) {
        omp_set_lock(&lock);
        try {
            unit_done_locked(rank, ws);
        } catch (const std::bad_alloc&) {
            if (!error) error = fem::error_memory;
            for (inner_work& iw : ws.inner) iw.kept.clear();
        }
        omp_unset_lock(&lock);
    }
    void unit_done_locked(std::size_t rank, block_work_arrays& ws) {
        if (in_turn(rank)) {
            for (inner_work& iw : ws.inner) apply(ws.map(), iw.kept);
            if (ordered) {
                ++turn;
                for (; turn < done.size() && done[turn]; ++turn) apply(waiting[turn].map(), waiting[turn].pieces);
            }
        } else {
            kept_unit& ku = waiting[rank];
            for (inner_work& iw : ws.inner)
                for (pending_piece& pp : iw.kept) {
                    ku.pieces.emplace_back();
                    std::swap(ku.pieces.back(), pp);
                }
            if (!ku.pieces.empty()) {
                const std::size_t e = ws.map_columns, m = ws.map_runs;
                ku.scol.assign(ws.scol.begin(), ws.scol.begin() + std::ptrdiff_t(e));
                ku.srun.assign(ws.srun.begin(), ws.srun.begin() + std::ptrdiff_t(e));
                ku.run_block.assign(ws.run_block.begin(), ws.run_block.begin() + std::ptrdiff_t(m));
                ku.base.assign(ws.base.begin(), ws.base.begin() + std::ptrdiff_t(e * m));
                ku.sbase.resize(e);
                for (std::size_t k = 0; k < e; ++k) ku.sbase[k] = ku.base.data() + (ws.sbase[k] - ws.base.data());
            }
            for (inner_work& iw : ws.inner) iw.kept.clear();
            done[rank] = 1;
        }
    }
    // After the group's barrier: what is still kept (units that finished while an
    // earlier one was running) goes in rank order.
    void end_group() {
        for (kept_unit& ku : waiting) {
            if (!error && !ku.pieces.empty()) apply(ku.map(), ku.pieces);
            ku = kept_unit();
        }
        ordered = false;
        kept_bytes = 0;
    }

    bool check_pivot(double& d, std::size_t pos) {
        if (!serialize_checks) return (*check)(d, pos);
        bool ok;
#pragma omp critical(orv_ldlt_pivot)
        ok = (*check)(d, pos);
        return ok;
    }
    void set_error(int rc) {
        omp_set_lock(&lock);
        if (!error) error = rc;
        omp_unset_lock(&lock);
    }
};

// Factors the own columns of the block held in ws.W (n x n, leading dimension n):
// left-looking over panels; the part of a panel above its diagonal block is one
// triangular solve with the columns already done, the diagonal block is updated by
// one product and finished column by column, where the pivots are checked.
int factor_own(factor_state& st, block_work_arrays& ws, std::size_t n, std::size_t first_row, int inner,
               double& flops) {
    double* W = ws.W.data();
    double* dinv = ws.dinv.data();
    const std::size_t* top = ws.top.data();
    for (std::size_t k0 = 0; k0 < n; k0 += panel_width) {
        const std::size_t k1 = std::min(n, k0 + panel_width), w = k1 - k0;
        std::size_t t = k0;
        for (std::size_t j = k0; j < k1; ++j) t = std::min(t, top[j]);
        if (t < k0) {
            const std::size_t m = k0 - t;
            double* Y = W + t + k0 * n;
            grow(ws.P, m * w);
            double* P = ws.P.data();
            // The panel's columns are split among the threads of a nested region when
            // the part above the diagonal block is long.
            const int parts = (inner > 1 && m >= 256) ? std::min(inner, 4) : 1;
#pragma omp parallel num_threads(parts) if (parts > 1)
            {
                const std::size_t p = std::size_t(omp_get_thread_num()), np = std::size_t(omp_get_num_threads());
                const std::size_t j0 = w * p / np, j1 = w * (p + 1) / np;
                kernels::trsm('L', 'U', 'T', 'U', int(m), int(j1 - j0), 1.0, W + t + t * n, int(n), Y + j0 * n, int(n));
                for (std::size_t j = j0; j < j1; ++j) {
                    double* y = Y + j * n;
                    double* pp = P + j * m;
                    for (std::size_t r = 0; r < m; ++r) {
                        pp[r] = y[r];
                        y[r] *= dinv[t + r];
                    }
                }
#pragma omp barrier
                kernels::gemm('T', 'N', int(w), int(j1 - j0), int(m), -1.0, Y, int(n), P + j0 * m, int(m), 1.0,
                              W + k0 + (k0 + j0) * n, int(n));
            }
            flops += double(m) * double(m) * double(w) + 2.0 * double(w) * double(w) * double(m);
        }
        for (std::size_t j = k0; j < k1; ++j) {
            double* u = W + j * n;
            const std::size_t s = std::max(top[j], k0);
            for (std::size_t r = s + 1; r < j; ++r) {
                const std::size_t lo = std::max(s, top[r]);
                u[r] -= kernels::dot(W + lo + r * n, u + lo, r - lo);
                flops += 2.0 * double(r - lo);
            }
            double d = u[j];
            for (std::size_t r = s; r < j; ++r) {
                const double y = u[r], v = y * dinv[r];
                d -= y * v;
                u[r] = v;
            }
            if (!st.check_pivot(d, first_row + j)) return fem::error_pivot;
            dinv[j] = 1.0 / d;
        }
    }
    return 0;
}

// The work of one unit, the consecutive blocks [b0, b1) (often a single block),
// factored as one dense row range: factor of the own columns, then the solve of the
// extra columns with the unit's U and the updates of the later blocks. The own
// columns of the unit are the own columns of its blocks and the extra segments of
// its blocks that fall inside it; its extra columns are the union of the extra
// segments beyond it. inner = threads for the nested regions of this unit.
int block_work(factor_state& st, std::uint64_t b0, std::uint64_t b1, block_work_arrays& ws, int inner,
               std::size_t rank) {
    symmetric_hybrid_OOC<double>& A = *st.A;
    const std::size_t f = A.block(b0).first(), l = A.block(b1 - 1).last();
    const std::size_t n = l - f;
    double flops = 0;
    if (n == 0) return 0;

    // Pieces of the own columns (CSR by local column) and of the extra columns.
    ws.own_keys.clear();
    ws.ext_keys.clear();
    for (std::uint64_t b = b0; b < b1; ++b) {
        const block_type& blk = A.block(b);
        const std::size_t bl = blk.last(), bn = std::size_t(blk.n_own);
        const segment_type* tab = blk.table();
        for (std::size_t k = 0; k < blk.nbr_segments(); ++k) {
            const std::size_t c = std::size_t(tab[k].column), h = blk.seg_height(k);
            const std::size_t end_row = (k < bn ? c : bl) - f;
            const column_piece pc{blk.seg_begin(k), end_row - h, h};
            if (c < l)
                ws.own_keys.emplace_back(c - f, pc);
            else
                ws.ext_keys.emplace_back(c, pc);
        }
    }
    auto by_key = [](const std::pair<std::size_t, column_piece>& x, const std::pair<std::size_t, column_piece>& y) {
        return x.first < y.first;
    };
    std::stable_sort(ws.own_keys.begin(), ws.own_keys.end(), by_key);
    std::stable_sort(ws.ext_keys.begin(), ws.ext_keys.end(), by_key);
    grow(ws.own_ptr, n + 1);
    {
        std::size_t k = 0;
        for (std::size_t j = 0; j <= n; ++j) {
            ws.own_ptr[j] = k;
            while (k < ws.own_keys.size() && ws.own_keys[k].first == j) ++k;
        }
    }
    ws.ucol.clear();
    ws.ext_ptr.clear();
    for (std::size_t k = 0; k < ws.ext_keys.size(); ++k)
        if (k == 0 || ws.ext_keys[k].first != ws.ext_keys[k - 1].first) {
            ws.ucol.push_back(ws.ext_keys[k].first);
            ws.ext_ptr.push_back(k);
        }
    ws.ext_ptr.push_back(ws.ext_keys.size());
    const std::size_t e = ws.ucol.size();
    const std::pair<std::size_t, column_piece>* opc = ws.own_keys.data();
    const std::pair<std::size_t, column_piece>* xpc = ws.ext_keys.data();
    const std::size_t* optr = ws.own_ptr.data();
    const std::size_t* xptr = ws.ext_ptr.data();

    // Lowest top of the extra columns: the solve of the extras reads the triangle of U
    // from there on, which must therefore be zero above the data.
    grow(ws.top, n);
    grow(ws.smin, n + 1);
    grow(ws.dinv, n);
    grow(ws.W, n * n);
    grow(ws.xtop, e);
    std::size_t* top = ws.top.data();
    std::size_t* xtop = ws.xtop.data();
    std::size_t xmin = n;
    for (std::size_t k = 0; k < e; ++k) {
        std::size_t t = n;
        for (std::size_t q = xptr[k]; q < xptr[k + 1]; ++q)
            if (xpc[q].second.len) t = std::min(t, xpc[q].second.row0);
        xtop[k] = t;
        xmin = std::min(xmin, t);
    }
    for (std::size_t j = 0; j < n; ++j) {
        std::size_t t = j;
        for (std::size_t q = optr[j]; q < optr[j + 1]; ++q)
            if (opc[q].second.len) t = std::min(t, opc[q].second.row0);
        top[j] = t;
    }
    ws.smin[n] = n;
    for (std::size_t j = n; j-- > 0;) ws.smin[j] = std::min(ws.smin[j + 1], top[j]);

    // Own columns into W: zero from the lowest row a panel or the extras read, then the
    // pieces and the diagonal.
    double* W = ws.W.data();
    for (std::uint64_t b = b0; b < b1; ++b) {
        const block_type& blk = A.block(b);
        const std::size_t bf = blk.first() - f;
        for (std::size_t i = 0; i < std::size_t(blk.n_own); ++i) {
            const std::size_t j = bf + i;
            double* col = W + j * n;
            const std::size_t z = std::min(ws.smin[(j / panel_width) * panel_width], xmin);
            if (j > z) std::memset(col + z, 0, (j - z) * sizeof(double));
            col[j] = blk.diag()[i];
        }
    }
    for (std::size_t j = 0; j < n; ++j)
        for (std::size_t q = optr[j]; q < optr[j + 1]; ++q) {
            const column_piece& pc = opc[q].second;
            if (pc.len) std::memcpy(W + j * n + pc.row0, pc.data, pc.len * sizeof(double));
        }
    int rc = factor_own(st, ws, n, f, inner, flops);
    // U and 1/D back into the blocks (also after a rejected pivot: the factor is not
    // usable then, but the blocks stay consistent).
    for (std::size_t j = 0; j < n; ++j)
        for (std::size_t q = optr[j]; q < optr[j + 1]; ++q) {
            const column_piece& pc = opc[q].second;
            if (pc.len) std::memcpy(pc.data, W + j * n + pc.row0, pc.len * sizeof(double));
        }
    for (std::uint64_t b = b0; b < b1; ++b) {
        block_type& blk = A.block(b);
        const std::size_t bf = blk.first() - f;
        for (std::size_t i = 0; i < std::size_t(blk.n_own); ++i) blk.diag()[i] = ws.dinv[bf + i];
    }
    if (rc) return rc;
    if (e == 0) {
#pragma omp atomic
        st.flops += flops;
        return 0;
    }

    // Extra columns into X (n x e), longest first, so that a tile of columns has
    // nearly one top; each column is zero from the lowest top of its tile. Column k
    // of X is the extra column ord[k]. Tiles of 256 columns; narrower when that leaves
    // threads of a nested region idle.
    std::size_t tw = tile_width;
    if (inner > 1 && e < 2 * std::size_t(inner) * tile_width)
        tw = std::max<std::size_t>(chunk_width, (e + 2 * std::size_t(inner) - 1) / (2 * std::size_t(inner)));
    const std::size_t nt = (e + tw - 1) / tw;
    grow(ws.X, n * e);
    grow(ws.ord, e);
    grow(ws.tile_top, nt);
    double* X = ws.X.data();
    std::size_t* ord = ws.ord.data();
    for (std::size_t k = 0; k < e; ++k) ord[k] = k;
    std::stable_sort(ord, ord + e, [&](std::size_t x, std::size_t y) { return xtop[x] < xtop[y]; });
    {
        std::vector<std::size_t>& tmp = ws.smin;  // reused as scratch
        grow(tmp, e);
        for (std::size_t k = 0; k < e; ++k) tmp[k] = xtop[ord[k]];
        for (std::size_t k = 0; k < e; ++k) xtop[k] = tmp[k];
    }
    for (std::size_t ti = 0; ti < nt; ++ti) {
        const std::size_t a0 = ti * tw, a1 = std::min(e, a0 + tw);
        const std::size_t t = xtop[a0];
        ws.tile_top[ti] = t;
        for (std::size_t k = a0; k < a1; ++k) {
            double* col = X + k * n;
            if (n > t) std::memset(col + t, 0, (n - t) * sizeof(double));
            for (std::size_t q = xptr[ord[k]]; q < xptr[ord[k] + 1]; ++q) {
                const column_piece& pc = xpc[q].second;
                if (pc.len) std::memcpy(col + pc.row0, pc.data, pc.len * sizeof(double));
            }
        }
    }

    // Targets of the updates: runs of extra columns that fall in one later block, and
    // for each extra column k and each run i up to its own, the base address such that
    // entry (row r of run i, column of k) lies at base + r.
    ws.run_of.clear();
    ws.run_begin.clear();
    ws.run_block.clear();
    grow(ws.run_of, e);
    for (std::size_t k = 0; k < e; ++k) {
        const std::size_t q = A.block_of(ws.ucol[k]);
        if (ws.run_block.empty() || ws.run_block.back() != q) {
            ws.run_begin.push_back(k);
            ws.run_block.push_back(q);
        }
        ws.run_of[k] = ws.run_block.size() - 1;
    }
    const std::size_t m = ws.run_block.size();
    grow(ws.base, e * m);
    for (std::size_t i = 0; i < m; ++i) {
        const block_type& q = A.block(ws.run_block[i]);
        const std::size_t qf = q.first(), ql = q.last(), qn = std::size_t(q.n_own), qs = q.nbr_segments();
        const segment_type* qt = q.table();
        std::size_t cur = qn;
        for (std::size_t k = ws.run_begin[i]; k < e; ++k) {
            const std::size_t c = ws.ucol[k];
            double* base = nullptr;
            if (c < ql) {
                base = qt[c - qf].end - c;
            } else {
                if (cur < qs && qt[cur].column != c)
                    cur = std::size_t(
                        std::lower_bound(qt + cur, qt + qs, std::uint64_t(c),
                                         [](const segment_type& s, std::uint64_t v) { return s.column < v; }) -
                        qt);
                // A unit of several blocks may pair columns that no row of the
                // matrix couples: their product is exactly zero and has no place.
                if (cur < qs && qt[cur].column == c) base = qt[cur].end - ql;
            }
            ws.base[k * m + i] = base;
        }
    }

    // Solve of the extra tiles with U^T (unit lower): X := U^-T X, that is D U_x.
    const int t_inner = int(std::min<std::size_t>(std::size_t(std::max(inner, 1)), nt));
    if (ws.inner.size() < std::size_t(std::max(t_inner, 1))) ws.inner.resize(std::size_t(std::max(t_inner, 1)));
    double fl_extra = 0;
#pragma omp parallel for num_threads(t_inner) schedule(dynamic, 1) if (t_inner > 1) reduction(+ : fl_extra)
    for (std::ptrdiff_t ti = 0; ti < std::ptrdiff_t(nt); ++ti) {
        const std::size_t a0 = std::size_t(ti) * tw, a1 = std::min(e, a0 + tw);
        const std::size_t t = ws.tile_top[std::size_t(ti)];
        if (t < n) {
            kernels::trsm('L', 'U', 'T', 'U', int(n - t), int(a1 - a0), 1.0, W + t + t * n, int(n), X + t + a0 * n,
                          int(n));
            fl_extra += double(n - t) * double(n - t) * double(a1 - a0);
        }
    }
    flops += fl_extra;

    // Updates: for each tile T of extra columns, U_T = D^-1 X_T goes back into the
    // segments, and the products S = X_A^T U_T of all tiles A <= T are subtracted
    // from the later blocks, under the lock.
    const double* dinv = ws.dinv.data();
    // Per column of X: its global column, the run of its target block and its row of
    // base addresses.
    grow(ws.scol, e);
    grow(ws.srun, e);
    grow(ws.sbase, e);
    for (std::size_t k = 0; k < e; ++k) {
        ws.scol[k] = ws.ucol[ord[k]];
        ws.srun[k] = ws.run_of[ord[k]];
        ws.sbase[k] = ws.base.data() + ord[k] * m;
    }
    const std::size_t* scol = ws.scol.data();
    ws.map_columns = e;
    ws.map_runs = m;
    const scatter_map smap = ws.map();
    double fl_upd = 0;
#pragma omp parallel for num_threads(t_inner) schedule(dynamic, 1) if (t_inner > 1) reduction(+ : fl_upd)
    for (std::ptrdiff_t tr = 0; tr < std::ptrdiff_t(nt); ++tr) {
        const std::size_t ti = nt - 1 - std::size_t(tr);  // the largest products first
        inner_work& iw = ws.inner[std::size_t(omp_get_thread_num())];
        const std::size_t s0 = ti * tw, s1 = std::min(e, s0 + tw), w = s1 - s0;
        const std::size_t tt = ws.tile_top[ti];
        const std::size_t hT = n - tt;
        grow(iw.tileU, hT * w);
        double* U = iw.tileU.data();
        for (std::size_t k = s0; k < s1; ++k) {
            const double* x = X + k * n + tt;
            double* u = U + (k - s0) * hT;
            for (std::size_t r = 0; r < hT; ++r) u[r] = x[r] * dinv[tt + r];
            for (std::size_t q = xptr[ord[k]]; q < xptr[ord[k] + 1]; ++q) {
                const column_piece& pc = xpc[q].second;
                if (pc.len) std::memcpy(pc.data, u + (pc.row0 - tt), pc.len * sizeof(double));
            }
        }
        if (hT == 0) continue;
        // Pieces of the product: whole tiles A < T, and for A == T the upper part in
        // chunks of columns, so that only the diagonal chunks are computed twice.
        // Products wait in a few buffers while another thread holds the lock.
        auto flush = [&](bool wait) {
            if (iw.n_pending == 0) return;
            if (wait)
                omp_set_lock(&st.lock);
            else if (!omp_test_lock(&st.lock))
                return;
            const bool now = st.in_turn(rank) || st.wait_turn_if_full(rank);
            if (now)
                for (std::size_t k = 0; k < iw.n_pending; ++k) scatter(A, smap, iw.pending[k]);
            omp_unset_lock(&st.lock);
            if (!now) {
                std::size_t added = 0;
                for (std::size_t k = 0; k < iw.n_pending; ++k) {
                    iw.kept.emplace_back();
                    std::swap(iw.kept.back(), iw.pending[k]);
                    added += bytes_of(iw.kept.back());
                }
#pragma omp atomic
                st.kept_bytes += added;
            }
            iw.n_pending = 0;
        };
        auto piece = [&](std::size_t pa0, std::size_t pa1, std::size_t pb0, std::size_t pb1) {
            std::size_t ta = n, tb = n;
            for (std::size_t k = pa0; k < pa1; ++k) ta = std::min(ta, xtop[k]);
            for (std::size_t k = pb0; k < pb1; ++k) tb = std::min(tb, xtop[k]);
            const std::size_t r0 = std::max(ta, tb);
            if (r0 >= n) return;
            if (iw.n_pending == max_pending) flush(true);
            if (iw.pending.size() <= iw.n_pending) iw.pending.resize(iw.n_pending + 1);
            pending_piece& pp = iw.pending[iw.n_pending];
            const std::size_t wa = pa1 - pa0;
            pp.pa0 = pa0;
            pp.pa1 = pa1;
            pp.pb0 = pb0;
            pp.pb1 = pb1;
            grow(pp.S, wa * (pb1 - pb0));
            kernels::gemm('T', 'N', int(wa), int(pb1 - pb0), int(n - r0), 1.0, X + r0 + pa0 * n, int(n),
                          U + (r0 - tt) + (pb0 - s0) * hT, int(hT), 0.0, pp.S.data(), int(wa));
            fl_upd += 2.0 * double(wa) * double(pb1 - pb0) * double(n - r0);
            pp.al.resize(wa);
            pp.bl.resize(pb1 - pb0);
            for (std::size_t a = pa0; a < pa1; ++a) pp.al[a - pa0] = a;
            for (std::size_t b2 = pb0; b2 < pb1; ++b2) pp.bl[b2 - pb0] = b2;
            auto by_column = [&](std::size_t x, std::size_t y) { return scol[x] < scol[y]; };
            std::sort(pp.al.begin(), pp.al.end(), by_column);
            std::sort(pp.bl.begin(), pp.bl.end(), by_column);
            ++iw.n_pending;
            flush(false);
        };
        for (std::size_t ai = 0; ai < ti; ++ai) piece(ai * tw, (ai + 1) * tw, s0, s1);
        for (std::size_t c0 = s0; c0 < s1; c0 += chunk_width)
            piece(s0, std::min(s1, c0 + chunk_width), c0, std::min(s1, c0 + chunk_width));
        flush(true);
    }
    flops += fl_upd;
#pragma omp atomic
    st.flops += flops;
    return 0;
}

// Units of work: runs of consecutive blocks factored together. Small blocks next to
// each other mostly send their updates to the same columns; together they send them
// once, and their dense kernels work on larger arrays. A block joins the unit before
// it when the unit stays within unit_rows rows and the number of columns the joined
// unit updates, squared, is not above the sum of the squares of the two apart.
const std::size_t unit_rows = 384;

// What a unit is told about each unit it forms: nothing.
struct no_unit_callback {
    void operator()(std::size_t, const std::vector<std::size_t>&) const {}
};

// The units of the blocks [w0, w1): starts receives the first block of each unit and
// w1. blocks(b, extra) returns {own rows, last row} of block b and fills extra with
// its extra columns, ascending. on_unit(rows, columns) is called for each unit with
// its rows and the later columns it updates.
template <class Blocks, class OnUnit = no_unit_callback>
void form_units_of(const Blocks& blocks, std::uint64_t w0, std::uint64_t w1, std::vector<std::uint64_t>& starts,
                   OnUnit&& on_unit = OnUnit()) {
    starts.clear();
    std::vector<std::size_t> ext, merged, own_ext;
    std::size_t rows = 0;
    for (std::uint64_t b = w0; b < w1; ++b) {
        const std::pair<std::size_t, std::size_t> own = blocks(b, own_ext);
        const std::size_t bn = own.first, bl = own.second;
        bool join = false;
        if (!starts.empty() && rows + bn <= unit_rows) {
            merged.clear();
            std::set_union(ext.begin(), ext.end(), own_ext.begin(), own_ext.end(), std::back_inserter(merged));
            merged.erase(merged.begin(), std::lower_bound(merged.begin(), merged.end(), bl));
            const double eu = double(ext.size()), eb = double(own_ext.size()), en = double(merged.size());
            join = en * en <= eu * eu + eb * eb;
        }
        if (join) {
            ext.swap(merged);
            rows += bn;
        } else {
            if (!starts.empty()) on_unit(rows, ext);
            starts.push_back(b);
            ext = own_ext;
            rows = bn;
        }
    }
    if (!starts.empty()) on_unit(rows, ext);
    starts.push_back(w1);
}

void form_units(const symmetric_hybrid_OOC<double>& A, std::uint64_t w0, std::uint64_t w1,
                std::vector<std::uint64_t>& starts) {
    form_units_of(
        [&](std::uint64_t b, std::vector<std::size_t>& extra) {
            const block_type& blk = A.block(b);
            const std::size_t bn = std::size_t(blk.n_own);
            extra.clear();
            for (std::size_t k = bn; k < blk.nbr_segments(); ++k) extra.push_back(std::size_t(blk.table()[k].column));
            return std::make_pair(bn, std::size_t(blk.last()));
        },
        w0, w1, starts);
}

}  // namespace

int symmetric_L_D_Lt<symmetric_hybrid_OOC<double>>::factorize_impl(const pivot_callback& check, std::size_t cache_bytes,
                                                                   int n_threads) {
    factored_ = false;
    flops_ = 0;
    if (!proxy_ || dimension() == 0) {
        factored_ = true;
        return 0;
    }
    const int T = std::max(n_threads, 1);
    const std::uint64_t nb = nbr_blocks();
    factor_state st;
    st.A = this;
    st.check = &check;
    omp_init_lock(&st.lock);
    const int old_blas = kernels::blas_set_threads(1);
    int rc = 0;
    try {
        if (T < 2 || nb < 2 || profile() <= 128) {
            block_work_arrays ws;
            std::vector<std::uint64_t> units;
            std::uint64_t b = 0;
            while (b < nb && !rc) {
                std::uint64_t w0, w1;
                rc = window(b, true, w0, w1);
                if (rc) break;
                form_units(*this, b, w1, units);
                for (std::size_t u = 0; !rc && u + 1 < units.size(); ++u)
                    rc = block_work(st, units[u], units[u + 1], ws, 1, 0);
                b = w1;
            }
        } else {
            const bool was_nested = omp_get_max_active_levels() > 1;
            const bool switch_nested = !was_nested && !omp_in_parallel();
            if (switch_nested) omp_set_max_active_levels(2);
            st.serialize_checks = true;
            const std::size_t cache_doubles = std::max<std::size_t>(cache_bytes / 8, 1);
            std::vector<block_work_arrays> ws(static_cast<std::size_t>(T));
            std::vector<std::uint64_t> level, values, units;
            std::vector<std::size_t> unit_of;
            std::vector<double> work;
            std::uint64_t b = 0;
            while (b < nb && !st.error) {
                std::uint64_t w0, w1;
                const int wr = window(b, true, w0, w1);
                if (wr) {
                    st.error = wr;
                    break;
                }
                // All of the window's blocks: the whole matrix is in memory, so no
                // update goes to a block outside it.
                form_units(*this, b, w1, units);
                const std::size_t nu = units.size() - 1;
                unit_of.resize(std::size_t(w1 - b));
                for (std::size_t u = 0; u < nu; ++u)
                    for (std::uint64_t k = units[u]; k < units[u + 1]; ++k) unit_of[std::size_t(k - b)] = u;
                level.assign(nu, 0);
                values.assign(nu, 0);
                work.assign(nu, 0.0);
                std::uint64_t max_level = 0;
                for (std::uint64_t k = b; k < w1; ++k) {
                    const std::size_t u = unit_of[std::size_t(k - b)];
                    const block_type& blk = block(k);
                    values[u] += blk.values.size();
                    const double n_own = double(blk.n_own), e = double(blk.nbr_extra());
                    work[u] += n_own * (e * e + n_own * e + n_own * n_own / 3.0);
                    const unsigned int p = parent_of(std::size_t(k));
                    if (p != ~0u && p < w1) {
                        const std::size_t up = unit_of[std::size_t(p - b)];
                        if (up != u) level[up] = std::max(level[up], level[u] + 1);
                    }
                }
                for (std::size_t u = 0; u < nu; ++u) max_level = std::max(max_level, level[u]);
                std::vector<std::vector<std::size_t>> by_level(std::size_t(max_level + 1));
                for (std::size_t u = 0; u < nu; ++u) by_level[std::size_t(level[u])].push_back(u);
                for (auto& lv : by_level) {
                    std::stable_sort(lv.begin(), lv.end(),
                                     [&](std::size_t x, std::size_t y) { return values[x] > values[y]; });
                    std::size_t g0 = 0;
                    while (g0 < lv.size() && !st.error) {
                        std::size_t g1 = g0 + 1;
                        if (lv.size() - g0 > 1) {
                            std::size_t sum = values[lv[g0]];
                            while (g1 < lv.size() && sum + values[lv[g1]] <= cache_doubles) sum += values[lv[g1++]];
                        }
                        // A unit that holds most of the group's work goes alone, with all
                        // the threads in its nested regions: shared among the units, the
                        // others would wait for it.
                        if (g1 - g0 > 1) {
                            double total = 0;
                            for (std::size_t gi = g0; gi < g1; ++gi) total += work[lv[gi]];
                            if (work[lv[g0]] * double(T) > total * double(T - 1) * 1.2) g1 = g0 + 1;
                        }
                        const int t = int(std::min<std::size_t>(std::size_t(T), g1 - g0));
                        const int inner = T / t;
                        st.begin_group(g1 - g0);
#pragma omp parallel for num_threads(t) schedule(dynamic, 1) if (t > 1)
                        for (std::ptrdiff_t gi = std::ptrdiff_t(g0); gi < std::ptrdiff_t(g1); ++gi) {
                            if (st.error) continue;
                            const std::size_t u = lv[std::size_t(gi)];
                            const std::size_t rank = std::size_t(gi) - g0;
                            block_work_arrays& w = ws[std::size_t(omp_get_thread_num())];
                            bool threw = true;
                            const int r = guarded([&] {
                                const int rc = block_work(st, units[u], units[u + 1], w, inner, rank);
                                st.unit_done(rank, w);
                                threw = false;
                                return rc;
                            });
                            // Products kept for later blocks are dropped with the failed unit.
                            if (threw)
                                for (inner_work& iw : w.inner) iw.kept.clear();
                            if (r) st.set_error(r);
                        }
                        st.end_group();
                        g0 = g1;
                    }
                    if (st.error) break;
                }
                b = w1;
            }
            rc = st.error;
            if (switch_nested) omp_set_max_active_levels(1);
        }
    } catch (const std::bad_alloc&) {
        rc = fem::error_memory;
    }
    if (old_blas > 0) kernels::blas_set_threads(old_blas);
    omp_destroy_lock(&st.lock);
    flops_ = st.flops;
    factored_ = (rc == 0);
    return rc;
}

// ---- solves ---------------------------------------------------------------------

namespace {

// Levels of the block tree: a block is one level above the highest of its children,
// leaves are level 0. by_level lists the blocks of each level in ascending order.
void tree_levels(const symmetric_hybrid_OOC<double>& A, std::vector<std::uint64_t>& level,
                 std::vector<std::vector<std::uint64_t>>& by_level) {
    const std::uint64_t nb = A.nbr_blocks();
    level.assign(std::size_t(nb), 0);
    std::uint64_t max_level = 0;
    for (std::uint64_t b = 0; b < nb; ++b) {
        const unsigned int p = A.parent_of(std::size_t(b));
        if (p != ~0u) level[p] = std::max(level[p], level[std::size_t(b)] + 1);
        max_level = std::max(max_level, level[std::size_t(b)]);
    }
    by_level.assign(std::size_t(max_level + 1), std::vector<std::uint64_t>());
    for (std::uint64_t b = 0; b < nb; ++b) by_level[std::size_t(level[std::size_t(b)])].push_back(b);
}

}  // namespace

void symmetric_L_D_Lt<symmetric_hybrid_OOC<double>>::forward_block(const block_type& blk, double* y, double* energy,
                                                                   bool diagonal, int n_threads,
                                                                   double* extra_out) const {
    const std::size_t n = std::size_t(blk.n_own), f = blk.first(), l = blk.last(), ns = blk.nbr_segments();
    const segment_type* tab = blk.table();
    const double* begin = blk.diag() + n;
    for (std::size_t k = 0; k < ns; ++k) {
        const double* end = tab[k].end;
        const std::size_t h = std::size_t(end - begin);
        if (k >= n && extra_out)
            extra_out[k - n] = h ? kernels::dot_parallel(begin, y + l - h, h, n_threads) : 0.0;
        else if (h) {
            const std::size_t c = std::size_t(tab[k].column);
            y[c] -= kernels::dot_parallel(begin, y + (k < n ? c : l) - h, h, n_threads);
        }
        begin = end;
    }
    if (!diagonal) return;
    const double* dinv = blk.diag();
    double s = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const double z = y[f + i];
        s += z * z * dinv[i];
        y[f + i] = z * dinv[i];
    }
    if (energy) *energy += s;
}

void symmetric_L_D_Lt<symmetric_hybrid_OOC<double>>::backward_block(const block_type& blk, double* y) const {
    const std::size_t n = std::size_t(blk.n_own), l = blk.last(), ns = blk.nbr_segments();
    const segment_type* tab = blk.table();
    for (std::size_t k = ns; k-- > 0;) {
        const double* end = tab[k].end;
        const double* begin = blk.seg_begin(k);
        const std::size_t h = std::size_t(end - begin);
        if (h) {
            const std::size_t c = std::size_t(tab[k].column);
            kernels::axpy(h, -y[c], begin, y + (k < n ? c : l) - h);
        }
    }
}

void symmetric_L_D_Lt<symmetric_hybrid_OOC<double>>::forward_block_columns(const block_type& blk, double* Y,
                                                                           std::size_t ldy, std::size_t j0,
                                                                           std::size_t j1, double* energies) const {
    const std::size_t n = std::size_t(blk.n_own), f = blk.first(), l = blk.last(), ns = blk.nbr_segments();
    const segment_type* tab = blk.table();
    const double* begin = blk.diag() + n;
    for (std::size_t k = 0; k < ns; ++k) {
        const double* end = tab[k].end;
        const std::size_t h = std::size_t(end - begin);
        if (h) {
            const std::size_t c = std::size_t(tab[k].column), from = (k < n ? c : l) - h;
            for (std::size_t j = j0; j < j1; ++j) {
                double* y = Y + j * ldy;
                y[c] -= kernels::dot_parallel(begin, y + from, h, 1);
            }
        }
        begin = end;
    }
    const double* dinv = blk.diag();
    for (std::size_t j = j0; j < j1; ++j) {
        double* y = Y + j * ldy;
        double s = 0;
        for (std::size_t i = 0; i < n; ++i) {
            const double z = y[f + i];
            s += z * z * dinv[i];
            y[f + i] = z * dinv[i];
        }
        if (energies) energies[j] += s;
    }
}

void symmetric_L_D_Lt<symmetric_hybrid_OOC<double>>::backward_block_columns(const block_type& blk, double* Y,
                                                                            std::size_t ldy, std::size_t j0,
                                                                            std::size_t j1) const {
    const std::size_t n = std::size_t(blk.n_own), l = blk.last(), ns = blk.nbr_segments();
    const segment_type* tab = blk.table();
    for (std::size_t k = ns; k-- > 0;) {
        const double* end = tab[k].end;
        const double* begin = blk.seg_begin(k);
        const std::size_t h = std::size_t(end - begin);
        if (!h) continue;
        const std::size_t c = std::size_t(tab[k].column), to = (k < n ? c : l) - h;
        for (std::size_t j = j0; j < j1; ++j) {
            double* y = Y + j * ldy;
            kernels::axpy(h, -y[c], begin, y + to);
        }
    }
}

void symmetric_L_D_Lt<symmetric_hybrid_OOC<double>>::backward_block_parallel(const block_type& blk, double* y,
                                                                             int n_threads) const {
    const std::size_t n = std::size_t(blk.n_own), f = blk.first(), l = blk.last(), ns = blk.nbr_segments();
    const segment_type* tab = blk.table();
    // Rows [lo, hi) take, for the segments k0 > k >= k1 in that order, the part of each
    // update that falls in them: rows [to, to + h) of segment k get -y[c] times it.
    auto update_rows = [&](std::size_t lo, std::size_t hi, std::size_t k0, std::size_t k1) {
        for (std::size_t k = k0; k-- > k1;) {
            const double* begin = blk.seg_begin(k);
            const std::size_t h = std::size_t(tab[k].end - begin);
            if (!h) continue;
            const std::size_t c = std::size_t(tab[k].column), to = (k < n ? c : l) - h;
            const std::size_t r0 = std::max(lo, to), r1 = std::min(hi, to + h);
            if (r0 < r1) kernels::axpy(r1 - r0, -y[c], begin + (r0 - to), y + r0);
        }
    };
    // Row ranges of about `grain` rows, handed out dynamically: the cut does not
    // change what any row receives.
    auto in_parallel = [&](std::size_t lo, std::size_t hi, std::size_t k0, std::size_t k1) {
        const std::size_t rows = hi - lo, grain = 2048;
        const std::ptrdiff_t pieces = std::ptrdiff_t((rows + grain - 1) / grain);
        const int t = int(std::min<std::ptrdiff_t>(pieces, n_threads));
#pragma omp parallel for num_threads(t) schedule(dynamic, 1) if (t > 1)
        for (std::ptrdiff_t p = 0; p < pieces; ++p)
            update_rows(lo + std::size_t(p) * grain, std::min(hi, lo + std::size_t(p + 1) * grain), k0, k1);
    };
    // The extra columns (ancestors, final already) update rows of this block only.
    if (ns > n) in_parallel(f, l, ns, n);
    // The own columns by panels from the last: first the rows of the panel itself,
    // one column after the other (each waits for the updates of the columns after it),
    // then the rows below the panel, shared out.
    const std::size_t panel = 64;
    for (std::size_t k1 = n; k1 > 0;) {
        const std::size_t k0 = k1, kp = k1 > panel ? k1 - panel : 0;
        const std::size_t c0 = f + kp;
        std::size_t lowest = c0;
        for (std::size_t k = k0; k-- > kp;) {
            const double* begin = blk.seg_begin(k);
            const std::size_t h = std::size_t(tab[k].end - begin);
            const std::size_t c = f + k, to = c - h;
            lowest = std::min(lowest, to);
            update_rows(std::max(to, c0), c, k + 1, k);
        }
        if (lowest < c0) in_parallel(lowest, c0, k0, kp);
        k1 = kp;
    }
}

double symmetric_L_D_Lt<symmetric_hybrid_OOC<double>>::forward_sweep(double* y, bool diagonal, int n_threads) const {
    assert((factored_ || dimension() == 0) && "solve on an unfactored matrix");
    double energy = 0;
    const std::uint64_t nb = nbr_blocks();
    auto serial = [&] {
        for_each_block(true, [&](std::uint64_t, const block_type& blk) {
            forward_block(blk, y, diagonal ? &energy : nullptr, diagonal, n_threads);
            return 0;
        });
        return energy;
    };
    if (n_threads < 2 || nb < 2 || profile() < 16385 || !all_incore()) return serial();

    // By levels of the tree, leaves first. Blocks of one level write their own rows
    // only: the dots of their extra segments go to one slot each, and a block, before
    // its own rows, subtracts the slots aimed at them in the order of the source
    // blocks. Every entry thus takes the same operations in the same order as in the
    // serial sweep, and the result has its bits.
    // The tables are built before y is touched: without memory for them, the serial
    // sweep does the work.
    std::vector<std::uint64_t> level;
    std::vector<std::vector<std::uint64_t>> by_level;
    std::vector<std::size_t> slot0, pull_ptr, pull_slot;
    std::vector<unsigned int> pull_row;
    std::vector<double> slots, block_energy;
    try {
        tree_levels(*this, level, by_level);
        slot0.assign(std::size_t(nb) + 1, 0);
        pull_ptr.assign(std::size_t(nb) + 1, 0);
        for (std::uint64_t b = 0; b < nb; ++b) {
            const block_type& blk = block(b);
            slot0[std::size_t(b) + 1] = slot0[std::size_t(b)] + blk.nbr_extra();
            for (std::size_t k = std::size_t(blk.n_own); k < blk.nbr_segments(); ++k) {
                const unsigned int q = block_of(std::size_t(blk.table()[k].column));
                // An update into a block that is not above its source in the tree
                // would break the level order; the serial sweep handles any profile.
                if (level[q] <= level[std::size_t(b)]) return serial();
                ++pull_ptr[std::size_t(q) + 1];
            }
        }
        for (std::size_t q = 0; q < std::size_t(nb); ++q) pull_ptr[q + 1] += pull_ptr[q];
        const std::size_t n_slots = slot0[std::size_t(nb)];
        pull_row.resize(n_slots);
        pull_slot.resize(n_slots);
        std::vector<std::size_t> fill(pull_ptr.begin(), pull_ptr.end() - 1);
        for (std::uint64_t b = 0; b < nb; ++b) {
            const block_type& blk = block(b);
            const std::size_t n = std::size_t(blk.n_own);
            for (std::size_t k = n; k < blk.nbr_segments(); ++k) {
                const std::size_t c = std::size_t(blk.table()[k].column);
                const std::size_t p = fill[block_of(c)]++;
                pull_row[p] = unsigned(c);
                pull_slot[p] = slot0[std::size_t(b)] + (k - n);
            }
        }
        slots.resize(n_slots);
        block_energy.resize(diagonal ? std::size_t(nb) : 0);
    } catch (const std::bad_alloc&) {
        return serial();
    }
    for (const std::vector<std::uint64_t>& blocks : by_level) {
        // A level with little work is not worth a fork and a join.
        std::size_t values = 0;
        for (std::uint64_t b : blocks) values += block(b).values.size();
        const int t = values < 2 * 16384 ? 1 : int(std::min<std::size_t>(blocks.size(), std::size_t(n_threads)));
        const int inner = n_threads / t;
        // Small blocks are handed out by runs of about 16384 values.
        const int chunk = int(std::max<std::size_t>(1, 16384 * blocks.size() / std::max<std::size_t>(values, 1)));
#pragma omp parallel for num_threads(t) schedule(dynamic, chunk) if (t > 1)
        for (std::ptrdiff_t i = 0; i < std::ptrdiff_t(blocks.size()); ++i) {
            const std::size_t b = std::size_t(blocks[std::size_t(i)]);
            for (std::size_t p = pull_ptr[b]; p < pull_ptr[b + 1]; ++p) y[pull_row[p]] -= slots[pull_slot[p]];
            double e = 0;
            forward_block(block(b), y, diagonal ? &e : nullptr, diagonal, inner, slots.data() + slot0[b]);
            if (diagonal) block_energy[b] = e;
        }
    }
    for (double e : block_energy) energy += e;
    return energy;
}

double symmetric_L_D_Lt<symmetric_hybrid_OOC<double>>::solve_forward(double* y, int n_threads) const {
    return forward_sweep(y, true, n_threads);
}

void symmetric_L_D_Lt<symmetric_hybrid_OOC<double>>::solve_forward_only(double* y, int n_threads) const {
    assert((factored_ || dimension() == 0) && "solve on an unfactored matrix");
    forward_sweep(y, false, n_threads);
}

void symmetric_L_D_Lt<symmetric_hybrid_OOC<double>>::solve_diagonal(double* y) const {
    assert((factored_ || dimension() == 0) && "solve on an unfactored matrix");
    for_each_block(true, [&](std::uint64_t, const block_type& blk) {
        const std::size_t n = std::size_t(blk.n_own), f = blk.first();
        const double* dinv = blk.diag();
        for (std::size_t i = 0; i < n; ++i) y[f + i] *= dinv[i];
        return 0;
    });
}

void symmetric_L_D_Lt<symmetric_hybrid_OOC<double>>::solve_backward(double* y, int n_threads) const {
    assert((factored_ || dimension() == 0) && "solve on an unfactored matrix");
    const std::uint64_t nb = nbr_blocks();
    if (n_threads < 2 || nb < 2 || profile() < 16385 || !all_incore()) {
        for_each_block(false, [&](std::uint64_t, const block_type& blk) {
            backward_block(blk, y);
            return 0;
        });
        return;
    }
    // A block reads the rows of its ancestors and writes only its own: the blocks of
    // one level of the tree run in parallel, from the root down.
    std::vector<std::uint64_t> level;
    std::vector<std::vector<std::uint64_t>> by_level;
    try {
        tree_levels(*this, level, by_level);
    } catch (const std::bad_alloc&) {
        for (std::uint64_t b = nb; b-- > 0;) backward_block(block(b), y);
        return;
    }
    for (std::size_t lv = by_level.size(); lv-- > 0;) {
        const std::vector<std::uint64_t>& blocks = by_level[lv];
        const int t = int(std::min<std::size_t>(blocks.size(), std::size_t(n_threads)));
        // A level of fewer blocks than threads shares its big blocks' rows instead.
        if (t < n_threads) {
            for (std::uint64_t b : blocks) {
                const block_type& blk = block(b);
                if (blk.values.size() >= 65536)
                    backward_block_parallel(blk, y, n_threads);
                else
                    backward_block(blk, y);
            }
            continue;
        }
#pragma omp parallel for num_threads(t) schedule(dynamic, 1) if (t > 1)
        for (std::ptrdiff_t i = 0; i < std::ptrdiff_t(blocks.size()); ++i)
            backward_block(block(blocks[std::size_t(i)]), y);
    }
}

double symmetric_L_D_Lt<symmetric_hybrid_OOC<double>>::solve(double* y, int n_threads) const {
    assert((factored_ || dimension() == 0) && "solve on an unfactored matrix");
    const double e = solve_forward(y, n_threads);
    solve_backward(y, n_threads);
    return e;
}

void symmetric_L_D_Lt<symmetric_hybrid_OOC<double>>::solve_forward(double* Y, std::size_t ldy, std::size_t n_columns,
                                                                   int n_threads, double* energies) const {
    assert((factored_ || dimension() == 0) && "solve on an unfactored matrix");
    if (n_columns == 0) return;
    if (energies)
        for (std::size_t j = 0; j < n_columns; ++j) energies[j] = 0;
    const int t = int(std::min<std::size_t>(n_columns, std::size_t(std::max(n_threads, 1))));
    if (all_incore()) {
        // All blocks in memory: one region, each thread sweeps the blocks for its columns.
#pragma omp parallel num_threads(t) if (t > 1)
        {
            const std::size_t p = std::size_t(omp_get_thread_num()), np = std::size_t(omp_get_num_threads());
            const std::size_t j0 = n_columns * p / np, j1 = n_columns * (p + 1) / np;
            const std::uint64_t nb = nbr_blocks();
            for (std::uint64_t b = 0; b < nb; ++b) forward_block_columns(block(b), Y, ldy, j0, j1, energies);
        }
        return;
    }
    for_each_block(true, [&](std::uint64_t, const block_type& blk) {
#pragma omp parallel for num_threads(t) schedule(static) if (t > 1)
        for (std::ptrdiff_t j = 0; j < std::ptrdiff_t(n_columns); ++j)
            forward_block(blk, Y + std::size_t(j) * ldy, energies ? energies + j : nullptr, true);
        return 0;
    });
}

void symmetric_L_D_Lt<symmetric_hybrid_OOC<double>>::solve_diagonal(double* Y, std::size_t ldy, std::size_t n_columns,
                                                                    int) const {
    assert((factored_ || dimension() == 0) && "solve on an unfactored matrix");
    for (std::size_t j = 0; j < n_columns; ++j) solve_diagonal(Y + j * ldy);
}

void symmetric_L_D_Lt<symmetric_hybrid_OOC<double>>::solve_backward(double* Y, std::size_t ldy, std::size_t n_columns,
                                                                    int n_threads) const {
    assert((factored_ || dimension() == 0) && "solve on an unfactored matrix");
    if (n_columns == 0) return;
    const int t = int(std::min<std::size_t>(n_columns, std::size_t(std::max(n_threads, 1))));
    if (all_incore()) {
#pragma omp parallel num_threads(t) if (t > 1)
        {
            const std::size_t p = std::size_t(omp_get_thread_num()), np = std::size_t(omp_get_num_threads());
            const std::size_t j0 = n_columns * p / np, j1 = n_columns * (p + 1) / np;
            for (std::uint64_t b = nbr_blocks(); b-- > 0;) backward_block_columns(block(b), Y, ldy, j0, j1);
        }
        return;
    }
    for_each_block(false, [&](std::uint64_t, const block_type& blk) {
#pragma omp parallel for num_threads(t) schedule(static) if (t > 1)
        for (std::ptrdiff_t j = 0; j < std::ptrdiff_t(n_columns); ++j) backward_block(blk, Y + std::size_t(j) * ldy);
        return 0;
    });
}

void symmetric_L_D_Lt<symmetric_hybrid_OOC<double>>::solve(double* Y, std::size_t ldy, std::size_t n_columns,
                                                           int n_threads, double* energies) const {
    assert((factored_ || dimension() == 0) && "solve on an unfactored matrix");
    solve_forward(Y, ldy, n_columns, n_threads, energies);
    solve_backward(Y, ldy, n_columns, n_threads);
}

std::uint64_t symmetric_L_D_Lt<symmetric_hybrid_OOC<double>>::factor_work_bytes(const block_profile* profiles,
                                                                                std::size_t n_blocks,
                                                                                std::uint64_t profile, int n_threads) {
    if (!profiles || n_blocks == 0) return 0;
    const int T = std::max(n_threads, 1);
    const bool parallel = T >= 2 && n_blocks >= 2 && profile > 128;
    // A thread's arrays grow to the largest need of any unit and stay: each array is
    // counted at its own largest size, in 8-byte entries.
    std::uint64_t own = 0, extra = 0, panel = 0, targets = 0, rows = 0, columns = 0, tile = 0;
    std::vector<std::uint64_t> starts;
    form_units_of(
        [&](std::uint64_t b, std::vector<std::size_t>& ext) {
            const block_profile& p = profiles[b];
            const std::size_t bn = std::size_t(p.last - p.first);
            ext.clear();
            for (std::size_t k = bn; k < p.segments.size(); ++k) ext.push_back(std::size_t(p.segments[k].column));
            return std::make_pair(bn, std::size_t(p.last));
        },
        0, n_blocks, starts,
        [&](std::size_t n_rows, const std::vector<std::size_t>& ext) {
            const std::uint64_t n = n_rows, e = ext.size();
            // Runs of the extra columns in the same target block.
            std::uint64_t m = 0;
            std::size_t block_end = 0;
            for (const std::size_t c : ext) {
                if (m && c < block_end) continue;
                const block_profile* q =
                    std::upper_bound(profiles, profiles + n_blocks, c,
                                     [](std::size_t v, const block_profile& bp) { return v < std::size_t(bp.last); });
                block_end = q < profiles + n_blocks ? std::size_t(q->last) : ~std::size_t(0);
                ++m;
            }
            const std::uint64_t tw = std::min<std::uint64_t>(e, tile_width);
            own = std::max(own, n * n);
            extra = std::max(extra, n * e);
            panel = std::max(panel, n * std::min<std::uint64_t>(n, panel_width));
            targets = std::max(targets, e * m);
            rows = std::max(rows, n);
            columns = std::max(columns, e);
            tile = std::max(tile, n * tw + max_pending * tw * tw);
        });
    // Own columns: the dense triangle, the panel product and six lists of rows; extra
    // columns: the dense columns, the target pointers and eight lists of columns; one
    // tile of products with its pending pieces for each thread of a nested region.
    const std::uint64_t per_thread = 8 * (own + extra + panel + targets + 6 * rows + 8 * columns + tile);
    return parallel ? per_thread * std::uint64_t(T) + 8 * tile * std::uint64_t(T) * std::uint64_t(T - 1) : per_thread;
}

}  // namespace core
}  // namespace orv
