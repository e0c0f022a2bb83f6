/* A program of a user's with the language's own complex numbers, in C99 and in C++. */
#define LUMO_COMPLEX_NATIVE
#include <lumo.h>
#ifdef __cplusplus
typedef std::complex<float> number;
static const number I(0, 1);
#else
#include <complex.h>
typedef float complex number;
#endif

/* Exact in single precision; a status is 0 or a failure. */
int main(void) {
    number a[4] = {2, 0, 2.f * I, 4}, b[2] = {0, 4.f * I}, c[1] = {1.f - I};
    const number p[1] = {1.f + I}, q[1] = {3.f - 2.f * I};
    int ipiv[2], failed = lumoInitialize();
    /* [2 2i; 0 4] x = [0; 4i]: x = (1, i) */
    failed |= lumoCgesv(2, 1, a, 2, ipiv, b, 2) || b[0] != 1.f || b[1] != I;
    /* (2 + i) (1 + i) (3 - 2i) + 3i (1 - i) = 12 + 10i */
    failed |= lumoCgemm('N', 'N', 1, 1, 1, 2.f + I, p, 1, q, 1, 3.f * I, c, 1);
    failed |= c[0] != 12.f + 10.f * I;
    lumoShutdown();
    return failed;
}
