/* Solves a 3 x 3 system. Matrices are stored column by column. */
#include <lumo.h>
#include <stdio.h>

int main(void) {
    float a[] = {2, 1, 1, 1, 3, 2, 1, 0, 0}; /* 2x + y + z = 4, x + 3y = 5, x + 2y = 6 */
    float b[] = {4, 5, 6};
    int ipiv[3];
    lumoStatus status = lumoInitialize();
    if (status == lumoNoError) status = lumoSgesv(3, 1, a, 3, ipiv, b, 3);
    printf("%s\n", lumoGetStatusString(status));
    if (status == lumoNoError) printf("x = %.4g, y = %.4g, z = %.4g\n", b[0], b[1], b[2]);
    lumoShutdown();
    return status;
}
