// lumoDsgesv and lumoZcgesv against lumoDgesv and lumoZgesv (`double`): random matrices, one
// right-hand side; ratio: the time in mixed precision over that in double.
#include <complex>

#include "contest.h"
#include "lumo_extended.h"

namespace {

template <class T, class Exported>
class MixedPrecision : public lumo::Problem {
  public:
    using Mixed = lumoStatus (*)(int, int, Exported*, int, int*, const Exported*, int, Exported*,
                                 int, int*);
    using Double = lumoStatus (*)(int, int, Exported*, int, int*, Exported*, int);

    MixedPrecision(int n, Mixed mixed, Double inDouble)
        : n_(n),
          original_(lumo::randomElements<T>(std::size_t(n) * std::size_t(n))),
          b_(lumo::randomElements<T>(std::size_t(n))),
          a_(original_),
          x_(b_),
          pivots_(std::size_t(n)),
          mixed_(mixed),
          double_(inDouble) {}

    void restore() override {
        a_ = original_;
        x_ = b_;
    }
    int lumo() override {
        int steps = 0;
        const int status =
            mixed_(n_, 1, at(a_), n_, pivots_.data(), at(b_), n_, at(x_), n_, &steps);
        return status == lumoNoError && steps >= 0 ? 0 : 1;
    }
    int by(void* /*none*/) override {
        return int(double_(n_, 1, at(a_), n_, pivots_.data(), at(x_), n_));
    }

  private:
    static Exported* at(std::vector<T>& a) { return reinterpret_cast<Exported*>(a.data()); }

    const int n_;
    const std::vector<T> original_;
    std::vector<T> b_, a_, x_;
    std::vector<int> pivots_;
    const Mixed mixed_;
    const Double double_;
};

template <class T, class Exported>
void add(const std::string& name, typename MixedPrecision<T, Exported>::Mixed mixed,
         typename MixedPrecision<T, Exported>::Double inDouble) {
    for (auto [n, repetitions] : bench::Rounds{{512, 41}, {1024, 21}, {2048, 11}, {4096, 5}})
        bench::add({name + "/" + std::to_string(n),
                    [=, n = n] {
                        return std::make_unique<MixedPrecision<T, Exported>>(n, mixed, inDouble);
                    },
                    [](lumo::Problem& p) { return p.by(nullptr); }, "double"},
                   repetitions);
}

}  // namespace

int main(int argc, char** argv) {
    add<double, double>("lumoDsgesv", lumoDsgesv, lumoDgesv);
    add<std::complex<double>, lumoDoubleComplex>("lumoZcgesv", lumoZcgesv, lumoZgesv);
    return bench::runAll(argc, argv);
}
