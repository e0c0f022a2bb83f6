#include "cudalib/Algorithm/Memset.h"

#include <algorithm>

#include "cudalib/launch.h"

template <class Map, class T>
void CudaMemsetTypeKernel(T* ptr, T value, std::size_t n);

namespace cudalib {

template <class T>
void memset(T* pointer, std::size_t count, T value) {
    constexpr std::size_t most = std::size_t(1) << 30;  // a map counts in int
    for (std::size_t done = 0; done < count; done += most) {
        const std::size_t n = std::min(most, count - done);
        launch(Map1D(int(n)), &CudaMemsetTypeKernel<Map1D, T>, pointer + done, value, n);
    }
}

template void memset(unsigned char*, std::size_t, unsigned char);
template void memset(char*, std::size_t, char);
template void memset(unsigned int*, std::size_t, unsigned int);
template void memset(int*, std::size_t, int);
template void memset(float*, std::size_t, float);
template void memset(double*, std::size_t, double);
template void memset(float2*, std::size_t, float2);
template void memset(double2*, std::size_t, double2);

}  // namespace cudalib
