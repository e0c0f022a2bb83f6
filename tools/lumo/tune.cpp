// `lumo tune`: from which sizes on the drop-in library should serve each routine, measured here.
#include <dlfcn.h>

#include <algorithm>
#include <complex>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>

#include "commands.h"
#include "common/measure.h"
#include "common/progress.h"
#include "dropin/crossover_file.h"
#include "lumo.h"

namespace lumo {
namespace {

// The operands of a problem of order n, as they were and as a routine gets and overwrites them.
// `a` has a heavy diagonal, so that its triangles are well-conditioned.
template <class T>
struct Operands {
    int n;
    std::vector<T> a0, b0, a, b, c, work;
    std::vector<float> real;
    std::vector<int> ipiv;

    explicit Operands(int order)
        : n(order),
          a0(std::size_t(n) * n),
          b0(a0.size()),
          work(std::size_t(100) * n),
          real(std::size_t(6) * n),
          ipiv(std::size_t(n)) {
        unsigned seed = 1;
        const auto fill = [&](T& x) {
            seed = seed * 1664525u + 1013904223u;
            x = T(float(seed >> 8) / (1 << 23) - 1);
        };
        std::for_each(a0.begin(), a0.end(), fill);
        std::for_each(b0.begin(), b0.end(), fill);
        for (int i = 0; i < n; ++i) a0[std::size_t(i) * (n + 1)] += T(float(n));
        restore();
    }
    void restore() {
        a = a0;
        b = c = b0;
    }
};

// Calls a Fortran routine: its arguments, then the lengths of the strings.
template <class... Argument>
void call(void* routine, Argument... argument) {
    constexpr std::size_t one = 1;
    reinterpret_cast<void (*)(Argument..., std::size_t, std::size_t, std::size_t, std::size_t)>(
        routine)(argument..., one, one, one, one);
}

template <class T>
struct Routine {
    const char* family;
    void (*call)(void* routine, Operands<T>& o);
};

// alpha = 1, beta = 0.
template <class T>
constexpr T one{1};
template <class T>
constexpr T zero{0};
constexpr int step = 1;

template <class T>
const std::vector<Routine<T>>& blas() {
    static const std::vector<Routine<T>> all{
        {"gemm",
         [](void* f, Operands<T>& o) {
             call(f, "N", "N", &o.n, &o.n, &o.n, &one<T>, o.a.data(), &o.n, o.b.data(), &o.n,
                  &zero<T>, o.c.data(), &o.n);
         }},
        {"gemv",
         [](void* f, Operands<T>& o) {
             call(f, "N", &o.n, &o.n, &one<T>, o.a.data(), &o.n, o.b.data(), &step, &zero<T>,
                  o.c.data(), &step);
         }},
        {"trmm",
         [](void* f, Operands<T>& o) {
             call(f, "L", "U", "N", "N", &o.n, &o.n, &one<T>, o.a.data(), &o.n, o.b.data(), &o.n);
         }},
        {"trsm",
         [](void* f, Operands<T>& o) {
             call(f, "L", "U", "N", "N", &o.n, &o.n, &one<T>, o.a.data(), &o.n, o.b.data(), &o.n);
         }},
        {"syrk", [](void* f, Operands<T>& o) {
             call(f, "U", "N", &o.n, &o.n, &one<T>, o.a.data(), &o.n, &zero<T>, o.c.data(), &o.n);
         }}};
    return all;
}

// Those that have different names for real and complex elements.
template <class T>
void symmetric(void* f, Operands<T>& o) {
    call(f, "L", "U", &o.n, &o.n, &one<T>, o.a.data(), &o.n, o.b.data(), &o.n, &zero<T>, o.c.data(),
         &o.n);
}
template <class T>
void rankTwoUpdate(void* f, Operands<T>& o) {
    call(f, "U", "N", &o.n, &o.n, &one<T>, o.a.data(), &o.n, o.b.data(), &o.n, &zero<T>, o.c.data(),
         &o.n);
}
template <class T>
std::vector<Routine<T>> realBlas() {
    return {{"symm", symmetric<T>}, {"syr2k", rankTwoUpdate<T>}};
}
template <class T>
std::vector<Routine<T>> complexBlas() {
    return {
        {"hemm", symmetric<T>}, {"her2k", rankTwoUpdate<T>}, {"herk", [](void* f, Operands<T>& o) {
                                                                  call(f, "U", "N", &o.n, &o.n,
                                                                       &one<T>, o.a.data(), &o.n,
                                                                       &zero<T>, o.c.data(), &o.n);
                                                              }}};
}

template <class T>
const std::vector<Routine<T>>& lapack() {
    static int info;
    static const std::vector<Routine<T>> all{
        {"getrf",
         [](void* f, Operands<T>& o) {
             call(f, &o.n, &o.n, o.b.data(), &o.n, o.ipiv.data(), &info);
         }},
        {"gesv",
         [](void* f, Operands<T>& o) {
             call(f, &o.n, &step, o.b.data(), &o.n, o.ipiv.data(), o.c.data(), &o.n, &info);
         }},
        {"geqrf",
         [](void* f, Operands<T>& o) {
             const int lwork = int(o.work.size());
             call(f, &o.n, &o.n, o.b.data(), &o.n, o.c.data(), o.work.data(), &lwork, &info);
         }},
        {"gels",
         [](void* f, Operands<T>& o) {
             const int lwork = int(o.work.size());
             call(f, "N", &o.n, &o.n, &step, o.b.data(), &o.n, o.a.data(), &o.n, o.work.data(),
                  &lwork, &info);
         }},
        {"gglse",
         [](void* f, Operands<T>& o) {
             const int lwork = int(o.work.size()), p = o.n / 4, m = o.n - p;
             T* c = o.c.data();
             call(f, &m, &o.n, &p, o.a.data(), &o.n, o.b.data(), &o.n, c, c + m, c + 2 * o.n,
                  o.work.data(), &lwork, &info);
         }},
        {"gesvd", [](void* f, Operands<T>& o) {
             const int lwork = int(o.work.size());
             std::vector<T> u(o.a.size());
             if (std::is_same_v<T, float>)
                 call(f, "S", "S", &o.n, &o.n, o.b.data(), &o.n, o.real.data(), o.c.data(), &o.n,
                      u.data(), &o.n, o.work.data(), &lwork, &info);
             else
                 call(f, "S", "S", &o.n, &o.n, o.b.data(), &o.n, o.real.data(), o.c.data(), &o.n,
                      u.data(), &o.n, o.work.data(), &lwork, o.real.data() + o.n, &info);
         }}};
    return all;
}

// The drop-in library, told to serve every size, and the Lumo that it uses: not the one that is
// built into this program.
class DropIn {
  public:
    DropIn() {
        setenv("LUMO_CROSSOVER", "0", 1);
        unsetenv("LUMO_REPORT");
        library_ = dlopen("liblumo-lapack.so", RTLD_NOW | RTLD_LOCAL);
        if (!library_) throw std::runtime_error(dlerror());
        int device = 0;
        char text[300] = "";
        if (of<lumoStatus()>("lumoInitialize")() ||
            of<lumoStatus(int*)>("lumoGetExecutingDevice")(&device) ||
            of<lumoStatus(int, char*, int)>("lumoGetDeviceInfo")(device, text, sizeof text))
            throw std::runtime_error("Lumo cannot run here: see lumo info");
        device_ = text;
    }
    const std::string& device() const { return device_; }
    void* routine(const std::string& name) const { return dlsym(library_, (name + "_").c_str()); }

  private:
    template <class Function>
    Function* of(const char* name) const {
        return reinterpret_cast<Function*>(dlsym(library_, name));
    }
    void* library_;
    std::string device_;
};

class Tuner {
  public:
    explicit Tuner(const TuneOptions& options) : options_(options) {}

    template <class T>
    void measure(char letter, const std::vector<Routine<T>>& routines) {
        for (const Routine<T>& routine : routines) {
            const std::string name = letter + std::string(routine.family);
            void* const lumo = dropIn_.routine(name);
            void* const cpu = dlsym(RTLD_DEFAULT, (name + "_").c_str());
            if (lumo && cpu && wanted(name)) measure(name, routine, lumo, cpu);
        }
    }
    const std::string& device() const { return dropIn_.device(); }

    // The lines for other platforms stay. The file appears complete or not at all.
    void write(const std::string& file) const {
        namespace fs = std::filesystem;
        const std::string platform = dropin::platformOf(device());
        std::string kept, line;
        std::ifstream old(file);
        while (std::getline(old, line)) {
            const std::string routine = line.substr(0, line.find_last_of(' '));
            const bool measured = std::any_of(sizes_.begin(), sizes_.end(), [&](const auto& entry) {
                return routine == platform + " " + entry.first;
            });
            if (!measured) kept += line + "\n";
        }
        const std::string part = file + ".part";
        std::ofstream out(part);
        if (kept.empty())
            out << "# From which size on Lumo serves a call: lumo tune, " << device() << "\n";
        out << kept;
        for (const auto& [routine, size] : sizes_)
            out << platform << " " << routine << " " << size << "\n";
        out.close();
        if (!out) throw std::runtime_error(part + ": cannot be written");
        fs::rename(part, file);
    }

  private:
    bool wanted(const std::string& name) const {
        const auto& names = options_.routines;
        return names.empty() || std::find(names.begin(), names.end(), name) != names.end();
    }

    // The least size from which on Lumo takes a tenth less time than the CPU library, up to the
    // largest that is measured: until a call takes a second, or as far as the user wants.
    template <class T>
    void measure(const std::string& name, const Routine<T>& routine, void* lumo, void* cpu) {
        constexpr double enough = 0.9, longCall = 0.15;
        std::printf("%-7s", name.c_str());
        std::string size = "never";
        for (int n = 64; n <= options_.largest; n *= 2) {
            Operands<T> operands(n);
            const auto [lumoTime, cpuTime] = [&] {
                const Progress progress(name + ", n = " + std::to_string(n));
                return pairedMedians(
                    3, 0.1, [&] { operands.restore(); }, [&] { routine.call(lumo, operands); },
                    [&] { routine.call(cpu, operands); });
            }();
            std::printf("  %d: %.2f", n, lumoTime / cpuTime);
            std::fflush(stdout);
            if (lumoTime > enough * cpuTime)
                size = "never";
            else if (size == "never")
                size = std::to_string(n);
            if (std::max(lumoTime, cpuTime) > longCall) break;
        }
        std::printf("  -> %s\n", size.c_str());
        sizes_.emplace_back(name, size);
    }

    const TuneOptions& options_;
    DropIn dropIn_;
    std::vector<std::pair<std::string, std::string>> sizes_;
};

}  // namespace

void tune(const TuneOptions& options) {
    using Complex = std::complex<float>;
    using WideComplex = std::complex<double>;
    const std::string file = options.file.empty() ? dropin::crossoverFile() : options.file;
    if (file.empty()) throw std::runtime_error("there is no home to write to: name a file by -o");
    // Before the minutes that it takes, rather than after them.
    const std::filesystem::path folder = std::filesystem::path(file).parent_path();
    if (!folder.empty()) std::filesystem::create_directories(folder);

    Tuner tuner(options);
    std::printf("%s: Lumo's time over the CPU library's, by size\n", tuner.device().c_str());
    tuner.measure('s', lapack<float>());
    tuner.measure('c', lapack<Complex>());
    tuner.measure('s', blas<float>());
    tuner.measure('s', realBlas<float>());
    tuner.measure('d', blas<double>());
    tuner.measure('d', realBlas<double>());
    tuner.measure('c', blas<Complex>());
    tuner.measure('c', complexBlas<Complex>());
    tuner.measure('z', blas<WideComplex>());
    tuner.measure('z', complexBlas<WideComplex>());
    tuner.write(file);
    std::printf("written to %s\n", file.c_str());
}

}  // namespace lumo
