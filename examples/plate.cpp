// The charge on a square plate held at 1 V, and the plate's capacitance.
//
// The plate, of side 1, is cut into N x N equal panels, each with a constant charge density. The
// potential at the centre of panel i is the sum over all panels j of density times
//
//     A(i, j) = integral over panel j of 1 / |r_i - r'|
//
// (densities in units of 4 pi eps0 V / side), and has to be 1 at every centre: N^2 equations.
// Their solution is the charge density; its integral is the capacitance in units of
// 4 pi eps0 side, for which 0.3667 is published.
#include <cmath>
#include <cstdlib>

#include "report.h"

namespace {

constexpr double published = 0.3667;

// The density grows without bound towards the edges, which constant panels follow to order 1/N
// only: N = 12, 24 and 48 come out 0.0098, 0.0050 and 0.0025 too low, which is 0.12 / N.
double allowedError(int N) {
    return 0.15 / N;
}

// The integral of 1 / sqrt(x^2 + y^2) over the rectangle from the origin to (u, v).
double cornerIntegral(double u, double v) {
    return u * std::asinh(v / std::abs(u)) + v * std::asinh(u / std::abs(v));
}

// The integral of 1 / distance over a panel of side h, from a point that lies dx, dy panels away
// from its centre. The corners are never level with a centre, so that nothing divides by zero.
double panelIntegral(int dx, int dy, double h) {
    const double left = (dx - 0.5) * h, right = (dx + 0.5) * h;
    const double low = (dy - 0.5) * h, high = (dy + 0.5) * h;
    return cornerIntegral(right, high) - cornerIntegral(left, high) - cornerIntegral(right, low) +
           cornerIntegral(left, low);
}

std::vector<float> assemble(int N) {
    const lumo::Progress progress("assembling");
    std::vector<double> potential(std::size_t(N) * N);  // by distance: the panels are all equal
    for (int dy = 0; dy < N; ++dy)
        for (int dx = 0; dx < N; ++dx)
            potential[std::size_t(dy) * N + dx] = panelIntegral(dx, dy, 1.0 / N);

    const int n = N * N;
    std::vector<float> a(std::size_t(n) * n);
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i) {
            const int dx = std::abs(i % N - j % N), dy = std::abs(i / N - j / N);
            a[std::size_t(j) * n + i] = float(potential[std::size_t(dy) * N + dx]);
        }
    return a;
}

// The density in a corner quarter of the plate, at no more than 12 x 12 of its panels.
void printDensity(int N, const std::vector<float>& density, double mean) {
    const int step = (N / 2 + 11) / 12;
    std::printf("charge density at a corner, the mean being 1:\n");
    for (int y = 0; y < N / 2; y += step) {
        std::printf("   ");
        for (int x = 0; x < N / 2; x += step)
            std::printf(" %4.1f", double(density[std::size_t(y) * N + x]) / mean);
        std::printf("\n");
    }
}

int run(int argc, char** argv) {
    const int N = example::sizeArgument(argc, argv, 48, 4, 150);
    std::printf("square plate, %d x %d panels\n", N, N);
    const std::vector<float> a = assemble(N);
    const std::vector<float> ones(std::size_t(N) * N, 1.0f);
    const std::vector<float> density = example::solveAndReport(a, ones);

    double sum = 0;
    for (const float d : density) sum += d;
    const double capacitance = sum / (double(N) * N);
    printDensity(N, density, capacitance);
    const double error = std::abs(capacitance - published);
    std::printf("capacitance: %.5f (published %.4f); error %.5f, allowed %.5f\n", capacitance,
                published, error, allowedError(N));
    return error < allowedError(N) ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv) try {
    return run(argc, argv);
} catch (const std::exception& error) {
    std::fprintf(stderr, "plate: %s\n", error.what());
    return EXIT_FAILURE;
}
