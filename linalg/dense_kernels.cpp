#include "linalg/dense_kernels.h"

#include <dlfcn.h>
#include <omp.h>

namespace orv {
namespace core {
namespace kernels {

double dot_parallel(const double* a, const double* b, std::size_t n, int n_threads) {
    if (n < 16385) return dot(a, b, n);
    // A long dot is cut into 64 fixed chunks whose sums are added in chunk order, so
    // that its bits do not depend on the number of threads nor on their timing.
    const std::ptrdiff_t chunks = 64;
    double part[chunks];
    const int t = n_threads < 2 ? 1 : (n_threads > chunks ? int(chunks) : n_threads);
#pragma omp parallel for num_threads(t) schedule(static) if (t > 1)
    for (std::ptrdiff_t c = 0; c < chunks; ++c) {
        const std::size_t b0 = n * std::size_t(c) / chunks, b1 = n * std::size_t(c + 1) / chunks;
        part[c] = dot(a + b0, b + b0, b1 - b0);
    }
    double s = 0;
    for (std::ptrdiff_t c = 0; c < chunks; ++c) s += part[c];
    return s;
}

namespace {

typedef void (*set_threads_fn)(int);
typedef int (*get_threads_fn)();

struct blas_thread_calls {
    set_threads_fn set = nullptr;
    get_threads_fn get = nullptr;
    blas_thread_calls() {
        set = reinterpret_cast<set_threads_fn>(dlsym(RTLD_DEFAULT, "openblas_set_num_threads"));
        get = reinterpret_cast<get_threads_fn>(dlsym(RTLD_DEFAULT, "openblas_get_num_threads"));
    }
};

const blas_thread_calls& calls() {
    static const blas_thread_calls c;
    return c;
}

}  // namespace

int blas_set_threads(int n) {
    const blas_thread_calls& c = calls();
    if (!c.set || !c.get) return 0;
    const int old = c.get();
    if (old != n) c.set(n);
    return old;
}

}  // namespace kernels
}  // namespace core
}  // namespace orv
