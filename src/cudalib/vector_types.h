// CUDA's vector types, for code that the CUDA compiler does not see.
#pragma once

#ifndef __CUDACC__
struct alignas(8) float2 {
    float x, y;
};
struct alignas(16) double2 {
    double x, y;
};
#endif
