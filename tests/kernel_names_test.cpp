// The kernels are registered under the names that programs and traces know them by.
#include <cxxabi.h>

#include <cstdlib>
#include <memory>
#include <set>

#include "platform/registry.h"
#include "support/kernels.h"

namespace {

std::string demangled(const char* name) {
    int status = 0;
    std::unique_ptr<char, decltype(&std::free)> text(
        abi::__cxa_demangle(name, nullptr, nullptr, &status), &std::free);
    return status == 0 ? text.get() : name;
}

TEST(KernelNames, AreTheDemangledFunctions) {
    std::set<std::string> names;
    for (const platform::Kernel* kernel : platform::registeredKernels())
        EXPECT_TRUE(names.insert(demangled(kernel->name)).second)
            << kernel->name << " is registered twice";
    for (const char* name : {
             "void CudaMemsetTypeKernel<cudalib::Map1D, double2>(double2*, double2, unsigned long)",
             "void KernelLASWP<cudalib::Map1D, float>(int, float*, int, int, int, lumo::swstruct)",
             "void KernelLASWPCOL<cudalib::Map1D, lumo::Complex<double> >(int, "
             "lumo::Complex<double>*, int, int, int, lumo::swstruct)",
             "void LACPY_L_Kernel<float>(int, int, float*, int, float*, int)",
             "void LASET_k<double>(char, int, int, double, double, double*, int)",
             "void CopyVector_k<cudalib::Map1D, float>(int, float*, int, float*, int)",
             "void CopyVectorRealToComplex_k<cudalib::Map1D, lumo::Complex<float> >(int, "
             "lumo::Complex<float>*, int, lumo::ScalarTraits<lumo::Complex<float> >::Real*, int)",
             "void SetMatrix_k<cudalib::Map2D, 0, float>(int, int, float*, int)",
             "void SetVector_k<cudalib::Map1D, 1, double>(int, double*, int)",
             "void SetTriangularMatrix_k<1, float>(bool, bool, int, int, float*, int, float)",
             "void Transpose_k<double, true>(double*, unsigned long, double const*, unsigned long, "
             "unsigned long, unsigned long)",
             "void TransposeInplace_k<float, false>(float*, unsigned long, unsigned long)",
             "void MADD_NT_k<lumo::Complex<float>, float>(int, int, float, lumo::Complex<float> "
             "const*, int, float, lumo::Complex<float> const*, int, lumo::Complex<float>*, int)",
             "void SubtractMatrix_TN_k<float>(int, int, float*, int, float*, int)",
             "void lumo::ConjugateVector_k<cudalib::Map1D, float>(int, float*, int)",
             "void lumo::ConjugateMatrixLower_k<cudalib::Map2D, lumo::Complex<float> >(int, int, "
             "lumo::Complex<float>*, int)",
             "void Scale_k<cudalib::Map1D, double, true>(int, double*, double*, int)",
             "void LARFG_k<cudalib::StaticOneBlockMap1D<32u>, float>(int, float*, float*, int, "
             "float*)",
             "void gemvt_k<double, 16, 8, true>(int, int, int, double, double const*, int, double, "
             "double const*, int, double*, int)",
             "void symv_k<float, (uploType)1, (boundsType)0, 64>(int, float, float const*, int, "
             "float const*, int, float, float*, int)",
         })
        EXPECT_EQ(1u, names.count(name)) << name;
    // Those whose parameters are nobody's business but their launchers'.
    for (const std::string begin :
         {"void PrecisionConvertTriangular_k<cudalib::TriangularMap2D, float, double>(",
          "void LAR2V_k<lumo::Complex<float>, float>(", "void LARGV_k<float>(",
          "void LARTV_k<lumo::Complex<float> >(",
          "void LASR_k<cudalib::StaticMap1D<64u>, (char)82, (char)86, (char)70, float>(",
          "void LASR_k<cudalib::StaticMap1D<128u>, (char)76, (char)86, (char)66, float>("})
        EXPECT_EQ(begin, names.lower_bound(begin)->substr(0, begin.size()));
}

}  // namespace
