// `lumo svd`: the singular values of a matrix in a file or of each channel of an image, and what is
// left of it at lower rank.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>

#include "common/residual.h"
#include "comparison.h"
#include "decomposition.h"
#include "gnuplot.h"
#include "image.h"
#include "matrix_file.h"
#include "spectrum_plot.h"
#include "svd_files.h"

namespace lumo {
namespace {

template <class T>
using LimitsOf = std::numeric_limits<platform::RealOf<T>>;

template <class T>
double tolerance(const Whole<T>& whole) {
    return toleranceFor<T>(whole.count());
}

void checkRanks(const SvdTask& task, int m, int n) {
    for (const int rank : task.ranks)
        if (rank > std::min(m, n))
            throw std::runtime_error(task.a + ": " + std::to_string(m) + " x " + std::to_string(n) +
                                     " has no rank " + std::to_string(rank));
}

template <class T>
std::vector<T> approximated(const Part<T>& part, int rank) {
    std::vector<T> result;
    succeed(approximate(part.d, rank, result));
    return result;
}

template <class T>
std::vector<T> difference(std::vector<T> a, const std::vector<T>& b) {
    for (std::size_t k = 0; k < a.size(); ++k) a[k] -= b[k];
    return a;
}

template <class T>
double decomposeAll(Whole<T>& whole, const SvdTask& task) {
    double seconds = 0;
    for (Part<T>& part : whole.parts) {
        std::vector<T> a = part.a;
        const Outcome outcome = timed([&] { return decompose(a, part.d); }, "decomposing");
        if (outcome.status == lumoDataError)
            throw std::runtime_error(task.a + ": the singular values did not converge");
        if (outcome.status != lumoNoError)
            throw std::runtime_error(describe(outcome.status, outcome.info));
        seconds += outcome.seconds;
    }
    return seconds;
}

template <class T>
void reportValues(const Whole<T>& whole) {
    constexpr int few = 6;
    for (const Part<T>& part : whole.parts) {
        const auto& s = part.d.s;
        const std::string of = part.name.empty() ? "" : "  (" + part.name + ")";
        std::printf("values:    ");
        for (int i = 0; i < std::min(few, whole.count()); ++i) std::printf(" %.6g", s[i]);
        std::printf("%s%s\n", whole.count() > few ? " ..." : "", of.c_str());
        const double negligible = std::max(whole.m, whole.n) * LimitsOf<T>::epsilon() * s[0];
        const auto rank =
            std::count_if(s.begin(), s.end(), [&](double x) { return x > negligible; });
        std::printf("condition:  %.3g  (s1 / s%d)%s\n",
                    s.back() == 0 ? HUGE_VAL : double(s[0]) / double(s.back()), whole.count(),
                    of.c_str());
        std::printf("rank:       %d  (values above %.2g, max(m, n) eps s1)%s\n", int(rank),
                    negligible, of.c_str());
    }
}

// Whether the decomposition is one of A, as far as can be told.
template <class T>
void checkDecomposition(const Whole<T>& whole, const SvdTask& task) {
    const double norm = whole.frobenius();
    checkNorm(norm, whole.frobeniusBeyond(0), "s", tolerance(whole), task.a);
    if (!whole.vectors) return;
    double residual = 0;
    for (const Part<T>& part : whole.parts) {
        const std::vector<T> r = difference(part.a, approximated(part, whole.count()));
        residual = std::hypot(residual, euclideanNorm(r.size(), r.data()));
    }
    residual = ratio(residual, norm);
    std::printf("residual:   %.1e  (||A - U diag(s) V^H|| / ||A||)\n", residual);
    if (!(residual <= tolerance(whole))) throwInaccurate(task.a, "U diag(s) V^H is not A");
}

template <class T>
void compareWithCpu(const Whole<T>& whole, const SvdTask& task) {
    double apart = 0;
    const auto ours = [&] {
        double seconds = 0;
        for (const Part<T>& part : whole.parts) {
            std::vector<T> a = part.a;
            Decomposition<T> d(whole.m, whole.n, whole.vectors);
            seconds += secondsOf([&] { return decompose(a, d); });
        }
        return seconds;
    };
    const auto theirs = [&] {
        double seconds = 0;
        for (const Part<T>& part : whole.parts) {
            std::vector<T> a = part.a;
            Decomposition<T> d(whole.m, whole.n, whole.vectors);
            seconds += secondsOfCpu([&] { return decomposeByCpu(a, d); });
            for (std::size_t i = 0; i < d.s.size(); ++i)
                apart = larger(apart, ratio(std::abs(part.d.s[i] - d.s[i]), d.s[0]));
        }
        return seconds;
    };
    compareTimes(ours, theirs);
    std::printf("            singular values differ by %.1e s1 at most\n", apart);
    if (!(apart <= tolerance(whole)))
        throwInaccurate(task.a, "the CPU LAPACK's singular values differ");
}

template <class T>
struct Approximation {
    std::vector<std::vector<T>> parts;
    double frobenius = 0, largest = 0;  // the norms of the differences, relative
};

template <class T>
Approximation<T> approximateAll(const Whole<T>& whole, int rank) {
    const Progress progress("approximating");
    Approximation<T> result;
    for (const Part<T>& part : whole.parts) {
        std::vector<T> b = approximated(part, rank);
        std::vector<T> r = difference(part.a, b);
        result.frobenius = std::hypot(result.frobenius, euclideanNorm(r.size(), r.data()));
        Decomposition<T> d(whole.m, whole.n, false);
        succeed(decompose(r, d));
        result.largest = larger(result.largest, d.s[0]);
        result.parts.push_back(std::move(b));
    }
    result.frobenius = ratio(result.frobenius, whole.frobeniusBeyond(0));
    result.largest = ratio(result.largest, whole.largestBeyond(0));
    return result;
}

// A row of the table for each rank, and its file.
template <class T>
void reportApproximations(const Whole<T>& whole, const SvdTask& task, const Image* image,
                          SvdFiles& files) {
    if (task.ranks.empty()) return;
    std::printf(
        "\n||A - A_K|| / ||A||, from the singular values beyond K and as measured; stored: "
        "K (m + n + 1) of m n numbers\n");
    std::printf("%6s  %23s  %23s  %8s%s\n", "K", "Frobenius norm", "2-norm", "stored",
                image ? "       RMS      PSNR" : "");
    for (const int rank : task.ranks) {
        const Approximation<T> b = approximateAll(whole, rank);
        const double frobenius = ratio(whole.frobeniusBeyond(rank), whole.frobeniusBeyond(0));
        const double largest = ratio(whole.largestBeyond(rank), whole.largestBeyond(0));
        std::printf("%6d  %11.4e %11.4e  %11.4e %11.4e  %6.1f %%", rank, frobenius, b.frobenius,
                    largest, b.largest, 100. * rank * (1. + whole.m + whole.n) / whole.m / whole.n);
        OutputFile* const output = files.wanted() ? &files.approximation(rank) : nullptr;
        if constexpr (!isComplexNumber<T>)
            if (image) {
                Image copy = *image;
                const Loss loss = replaceChannels(copy, b.parts);
                std::printf("  %8.3f", loss.rms);
                if (loss.rms > 0)
                    std::printf("  %5.1f dB", loss.psnr);
                else
                    std::printf("  identical");
                if (output) writeImage(output->stream(), copy);
            }
        std::printf("\n");
        if (output && !image) writeMatrix(*output, whole.m, whole.n, b.parts[0].data(), false);
        if (output) output->close();
        if (!(std::abs(b.frobenius - frobenius) <= tolerance(whole) &&
              std::abs(b.largest - largest) <= tolerance(whole)))
            throwInaccurate(task.a, "the error at rank " + std::to_string(rank) +
                                        " is not what the singular values say");
    }
    std::printf("\n");
}

template <class T>
void writeFactors(const Whole<T>& whole, const SvdTask& task, const Image* image, SvdFiles& files) {
    std::vector<platform::RealOf<T>> values;
    for (const Part<T>& part : whole.parts)
        values.insert(values.end(), part.d.s.begin(), part.d.s.end());
    const int k = whole.count(), parts = int(whole.parts.size());
    writeMatrix(files.values(), k, parts, values.data(), parts == 1);
    if (task.ranks.empty() && !image) {
        writeMatrix(files.left(), whole.m, k, whole.parts[0].d.u.data(), false);
        writeMatrix(files.right(), k, whole.n, whole.parts[0].d.vt.data(), false);
    }
}

// As far as gnuplot is able to: the other files do without.
template <class T>
void plot(const Whole<T>& whole, const SvdTask& task, SvdFiles& files) {
    OutputFile& file = files.plot();
    std::vector<Spectrum> spectra;
    for (const Part<T>& part : whole.parts)
        spectra.push_back({part.name, {part.d.s.begin(), part.d.s.end()}});
    const std::string name = std::filesystem::path(task.a).filename();
    try {
        if (whole.largestBeyond(0) == 0) throw FileError("all singular values are zero");
        checkPlot(file.name());
        plotSpectra(file, "Singular values of " + name, spectra, task.ranks);
    } catch (const FileError& error) {
        std::printf("no plot:    %s\n", error.what());
        files.leaveOut(file);
    }
}

template <class T>
void svdOf(Whole<T> whole, const SvdTask& task, const Image* image) {
    checkRanks(task, whole.m, whole.n);
    SvdFiles files(task, image);

    const Session session;
    printPlatform(session);
    std::printf("A:          %d x %d%s\n", whole.m, whole.n,
                whole.parts.size() > 1 ? ", red, green and blue" : "");
    const double seconds = decomposeAll(whole, task);
    std::printf("routine:    %s, %s\nseconds:    %.3g\n", routineName<T>("gesdd").c_str(),
                whole.vectors ? "with vectors" : "values only", seconds);
    reportValues(whole);
    checkDecomposition(whole, task);
    if (task.compare) compareWithCpu(whole, task);

    reportApproximations(whole, task, image, files);
    if (files.wanted()) {
        writeFactors(whole, task, image, files);
        plot(whole, task, files);
        files.commit();
    }
    std::printf("decomposed: status 0, no errors\n");
}

template <class T>
void svdOfMatrix(const Dense& A, const SvdTask& task) {
    const bool vectors = !task.ranks.empty() || !task.prefix.empty();
    Whole<T> whole{A.rows(), A.columns(), {}, vectors};
    whole.parts.push_back({"", convert<T>(A, task.a), {whole.m, whole.n, vectors}});
    svdOf(std::move(whole), task, nullptr);
}

template <class T>
void svdOfImage(const Image& image, const SvdTask& task) {
    const bool vectors = !task.ranks.empty();
    Whole<T> whole{image.height, image.width, {}, vectors};
    for (int c = 0; c < image.channels; ++c) {
        const char* const names[] = {"red", "green", "blue"};
        whole.parts.push_back({image.channels == 3 ? names[c] : "",
                               channelOf<T>(image, c),
                               {whole.m, whole.n, vectors}});
    }
    svdOf(std::move(whole), task, &image);
}

}  // namespace

void svd(SvdTask task) {
    std::vector<int>& ranks = task.ranks;
    std::sort(ranks.begin(), ranks.end());
    ranks.erase(std::unique(ranks.begin(), ranks.end()), ranks.end());
    InputFile in(task.a);
    if (isImage(in.start())) {  // whose samples single precision holds
        const Image image = readImage(in);
        return task.precision == "d" ? svdOfImage<double>(image, task)
                                     : svdOfImage<float>(image, task);
    }
    const Dense A = readFilled(in, ", nor an image: PGM, PPM or PNG");
    platform::withType(typeOf(A, task.precision),
                       [&](auto number) { svdOfMatrix<decltype(number)>(A, task); });
}

}  // namespace lumo
