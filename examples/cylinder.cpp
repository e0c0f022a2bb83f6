// Scattering of a plane wave by a perfectly conducting circular cylinder, the electric field
// parallel to the axis.
//
// The circle is cut into n equal arcs, each with a constant current density J. On the surface the
// field of the currents cancels the incident wave E = exp(-j k x) (time factor exp(j w t)):
//
//     k/4 * integral of J(r') H0(k |r - r'|) ds' = exp(-j k x)      (J times the wave impedance)
//
// with the Hankel function H0 of the second kind, taken at the centres of the arcs. The answer is
// compared with the series that separation of variables gives.
#include <cmath>
#include <cstdlib>

#include "report.h"

namespace {

using Complex = std::complex<double>;
constexpr double pi = 3.14159265358979323846;
constexpr Complex I(0, 1);

// The cylinder's circumference in wavelengths. The equation has no unique solution at the zeros of
// the Bessel functions, the resonances of the inside; this lies between those at 10.17 and 11.06.
constexpr double ka = 10.6;

Complex hankel2(int order, double x) {
    return {std::cyl_bessel_j(order, x), -std::cyl_neumann(order, x)};
}

std::vector<std::complex<float>> assemble(int n) {
    const lumo::Progress progress("assembling");
    const double arc = 2 * pi * ka / n;  // times k
    // By the number of arcs between two centres: the arcs are all equal.
    std::vector<std::complex<float>> element(n);
    // The small-argument form of H0, integrated over the arc about its own centre.
    const double gamma = std::exp(0.57721566490153286);
    const double e = std::exp(1.0);
    element[0] =
        std::complex<float>(arc / 4 * (1.0 - I * (2 / pi) * std::log(gamma * arc / (4 * e))));
    for (int d = 1; d < n; ++d)
        element[d] = std::complex<float>(arc / 4 * hankel2(0, 2 * ka * std::sin(pi * d / n)));

    std::vector<std::complex<float>> a(std::size_t(n) * n);
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i) a[std::size_t(j) * n + i] = element[std::abs(i - j)];
    return a;
}

// The series' terms fall off faster than any power once the order exceeds ka.
constexpr int lastOrder = int(ka) + 30;

// 2 / (pi ka) * sum over m of (-j)^m exp(j m phi) / Hm(ka).
std::vector<Complex> exactCurrent(int n) {
    std::vector<Complex> current(n);
    Complex power = 1;  // (-j)^m, and orders m and -m together
    for (int m = 0; m <= lastOrder; ++m, power *= -I) {
        const Complex amplitude = (m == 0 ? 1.0 : 2.0) * power / hankel2(m, ka);
        for (int i = 0; i < n; ++i)
            current[i] += 2 / (pi * ka) * amplitude * std::cos(m * 2 * pi * i / n);
    }
    return current;
}

// The scattering width in the direction phi, times k.
double width(const std::vector<std::complex<float>>& current, double phi) {
    const int n = int(current.size());
    Complex sum = 0;
    for (int i = 0; i < n; ++i)
        sum += Complex(current[i]) * std::exp(I * ka * std::cos(phi - 2 * pi * i / n));
    return std::norm(sum * (2 * pi * ka / n)) / 4;
}

double exactWidth(double phi) {
    Complex sum = 0;
    for (int m = 0; m <= lastOrder; ++m)
        sum += (m == 0 ? 1.0 : 2.0) * std::cyl_bessel_j(m, ka) / hankel2(m, ka) * std::cos(m * phi);
    return 4 * std::norm(sum);
}

// Relative error of the current, root mean square. The elements off the diagonal are taken at one
// point of an arc, so it is of order 1/n: 0.0078, 0.0039 and 0.0020 for n = 300, 600 and 1200.
double allowedError(int n) {
    return 3.5 / n;
}

int run(int argc, char** argv) {
    const int n = example::sizeArgument(argc, argv, 1200, 100, 20000);
    std::printf("circular cylinder, ka = %g, %d arcs\n", ka, n);
    const std::vector<std::complex<float>> a = assemble(n);
    std::vector<std::complex<float>> wave(n);
    for (int i = 0; i < n; ++i)
        wave[i] = std::complex<float>(std::exp(-I * ka * std::cos(2 * pi * i / n)));
    const std::vector<std::complex<float>> current = example::solveAndReport(a, wave);

    const std::vector<Complex> exact = exactCurrent(n);
    double difference = 0, norm = 0;
    for (int i = 0; i < n; ++i) {
        difference += std::norm(Complex(current[i]) - exact[i]);
        norm += std::norm(exact[i]);
    }
    const double error = std::sqrt(difference / norm);
    std::printf("direction    scattering width * k   exact\n");
    for (int degrees = 0; degrees <= 180; degrees += 30) {
        const double phi = degrees * pi / 180;
        std::printf("%6d deg  %18.4f   %10.4f\n", degrees, width(current, phi), exactWidth(phi));
    }
    std::printf("surface current: relative error %.2g, allowed %.2g\n", error, allowedError(n));
    return error < allowedError(n) ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv) try {
    return run(argc, argv);
} catch (const std::exception& error) {
    std::fprintf(stderr, "cylinder: %s\n", error.what());
    return EXIT_FAILURE;
}
