#include "orvlapack/orvlapack.h"

#include <limits>
#include <vector>

extern "C" {
void dspev_(const char* jobz, const char* uplo, const int* n, double* ap, double* w, double* z, const int* ldz,
            double* work, int* info, std::size_t, std::size_t);
void zgesv_(const int* n, const int* nrhs, std::complex<double>* a, const int* lda, int* ipiv, std::complex<double>* b,
            const int* ldb, int* info);
}

namespace orv {
namespace lapack {

namespace {
bool fits_int(long v) { return v >= 0 && v <= std::numeric_limits<int>::max(); }
}  // namespace

void dspev(char jobz, char uplo, long n, double* ap, double* w, double* z, long ldz, double* work, long& info) {
    if (!fits_int(n) || !fits_int(ldz)) {
        info = -3;
        return;
    }
    int in = static_cast<int>(n), ildz = static_cast<int>(ldz < 1 ? 1 : ldz), iinfo = 0;
    dspev_(&jobz, &uplo, &in, ap, w, z, &ildz, work, &iinfo, 1, 1);
    info = iinfo;
}

void zgesv(long n, long nrhs, std::complex<double>* a, long lda, long* ipiv, std::complex<double>* b, long ldb,
           long& info) {
    if (!fits_int(n) || !fits_int(nrhs) || !fits_int(lda) || !fits_int(ldb)) {
        info = -1;
        return;
    }
    int in = static_cast<int>(n), inrhs = static_cast<int>(nrhs);
    int ilda = static_cast<int>(lda), ildb = static_cast<int>(ldb), iinfo = 0;
    // LAPACK takes 32-bit pivots; the interface hands back longs.
    std::vector<int> piv(static_cast<std::size_t>(n > 0 ? n : 1));
    zgesv_(&in, &inrhs, a, &ilda, piv.data(), b, &ildb, &iinfo);
    for (long i = 0; i < n; ++i) ipiv[i] = piv[static_cast<std::size_t>(i)];
    info = iinfo;
}

}  // namespace lapack
}  // namespace orv
