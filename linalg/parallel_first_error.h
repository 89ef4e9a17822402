// Error codes out of work that may throw, and parallel loops where the first error
// wins: one mechanism for the runs, the models' element loops and the factorisation.
#pragma once

#include <omp.h>
#include <orv/fem/error_type.h>

#include <atomic>
#include <cstddef>
#include <new>

namespace orv {
namespace core {

// The code of the exception being handled, for use inside a catch block: -199 for
// exhausted memory, -200 for anything else.
inline int code_of_current_exception() noexcept {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        return fem::error_memory;
    } catch (...) {
        return fem::error_internal;
    }
}

// work() returns 0 or an error code; an exception becomes its code.
template <class Work>
int guarded(Work&& work) noexcept {
    try {
        return work();
    } catch (...) {
        return code_of_current_exception();
    }
}

// The first error code a team stores; later ones are dropped.
class first_error {
public:
    // Stores rc when it is an error and none stands; returns whether it was stored.
    bool set(int rc) noexcept {
        int none = 0;
        return rc != 0 && code_.compare_exchange_strong(none, rc);
    }
    int get() const noexcept { return code_.load(); }
    explicit operator bool() const noexcept { return get() != 0; }

private:
    std::atomic<int> code_{0};
};

// Runs body(i) for i in [0, n) on `threads` threads with a static schedule (serially
// for fewer than 2). body returns 0 or an error code and may throw; the first error
// wins and the items not yet started are skipped. Returns that error or 0.
template <class Body>
int parallel_first_error(std::size_t n, int threads, Body&& body) {
    first_error error;
    const long count = static_cast<long>(n);
#pragma omp parallel for schedule(static) num_threads(threads > 1 ? threads : 1) if (threads > 1)
    for (long i = 0; i < count; ++i) {
        if (error) continue;
        error.set(guarded([&] { return body(static_cast<std::size_t>(i)); }));
    }
    return error.get();
}

}  // namespace core
}  // namespace orv
