/* A program of a user's, in C99, against the installed tree. */
#include <lumo.h>
#include <lumo_memory.h>
#include <math.h>
#include <stdio.h>

/* Solves [2 1; 1 3] x = [3; 5] on host and on device memory; x = (0.8, 1.4). */
int main(void) {
    const float a[4] = {2, 1, 1, 3}, b[2] = {3, 5};
    float hostA[4] = {2, 1, 1, 3}, hostX[2] = {3, 5}, x[2];
    int ipiv[2];
    void *deviceA = NULL, *deviceB = NULL;
    int failed = 0;

    failed += lumoInitialize() != lumoNoError;
    failed += lumoSgesv(2, 1, hostA, 2, ipiv, hostX, 2) != lumoNoError;
    failed += fabsf(hostX[0] - 0.8f) > 1e-6f || fabsf(hostX[1] - 1.4f) > 1e-6f;

    failed += lumoDeviceMalloc(&deviceA, sizeof a) != lumoNoError;
    failed += lumoDeviceMalloc(&deviceB, sizeof b) != lumoNoError;
    failed += lumoDeviceSetMatrix(2, 2, sizeof(float), a, 2, deviceA, 2) != lumoNoError;
    failed += lumoDeviceSetMatrix(2, 1, sizeof(float), b, 2, deviceB, 2) != lumoNoError;
    failed += lumoDeviceSgesv(2, 1, deviceA, 2, ipiv, deviceB, 2) != lumoNoError;
    failed += lumoDeviceGetMatrix(2, 1, sizeof(float), deviceB, 2, x, 2) != lumoNoError;
    failed += x[0] != hostX[0] || x[1] != hostX[1];
    failed += lumoDeviceFree(deviceA) != lumoNoError;
    failed += lumoDeviceFree(deviceB) != lumoNoError;
    lumoShutdown();

    printf("%d failures\n", failed);
    return failed;
}
