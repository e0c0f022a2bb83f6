// Predictions beside measured times: the software device is calibrated, as `lumo calibrate` does
// it, and each routine is measured, and predicted by a process of its own, where the library runs
// on the timeline platform.
//
//     OPENBLAS_NUM_THREADS=1 LUMO_SOFTWARE_THREADS=1 bench_predictions [largest n]
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/cuda3.h"
#include "tools/lumo/calibration.h"
#include "tools/lumo/prediction.h"
#include "tools/lumo/session.h"

namespace {

struct Case {
    const char *routine, *shown;
    bool values;
};
constexpr Case cases[] = {{"sgetrf", "sgetrf", false},
                          {"sgesv", "sgesv", false},
                          {"sgeqrf", "sgeqrf", false},
                          {"sgesvd", "sgesvd N,N", true}};

lumo::Shape shapeOf(const Case& c, int n) {
    lumo::Shape shape = lumo::measuredRoutine(c.routine).shapeOf(n);
    if (c.values) shape.k = 0;
    return shape;
}

std::vector<int> sizes(int largest) {
    std::vector<int> all;
    for (int n = 1024; n <= largest; n += n < 2048 ? 512 : 1024) all.push_back(n);
    return all;
}

// On the software device, with one thread, the processor's time is the call's, and others that run
// meanwhile add little to it.
double secondsNow() {
    const bool ofProcessor = platform::lumo_private_platform(nullptr)->table->sharesMemory();
    timespec t;
    clock_gettime(ofProcessor ? CLOCK_PROCESS_CPUTIME_ID : CLOCK_MONOTONIC, &t);
    return double(t.tv_sec) + 1e-9 * double(t.tv_nsec);
}

// The least of several calls.
double measured(const Case& c, int n) {
    const auto problem = lumo::measuredRoutine(c.routine).make(shapeOf(c, n));
    std::vector<double> times;
    for (double spent = 0; times.size() < 5 || (spent < 2 && times.size() < 40);) {
        problem->restore();
        const double start = secondsNow();
        if (problem->lumo()) throw std::runtime_error(std::string(c.routine) + " fails");
        times.push_back(secondsNow() - start);
        spent += times.back();
    }
    return *std::min_element(times.begin(), times.end());
}

// In the child: predicts all cases on the machine whose description comes through the pipe.
void predictAll(FILE* from, FILE* to, int largest) {
    std::string text;
    for (int c; (c = std::fgetc(from)) != EOF;) text += char(c);
    const lumo::PlannedMachine machine(timeline::readMachine("the calibration", text));
    for (const Case& c : cases)
        for (const int n : sizes(largest)) {
            const lumo::Prediction p =
                machine.predict(lumo::measuredRoutine(c.routine), shapeOf(c, n), false);
            if (!p.failure.empty()) throw std::runtime_error(p.failure);
            std::fprintf(to, "%.9g\n", p.account.seconds);
        }
}

}  // namespace

int main(int argc, char** argv) try {
    const int largest = argc > 1 ? std::atoi(argv[1]) : 4096;
    int down[2], up[2];
    if (pipe(down) || pipe(up)) throw std::runtime_error("no pipe");
    const pid_t child = fork();  // before the library has chosen its platform
    if (child == 0) {
        close(down[1]);
        close(up[0]);
        FILE* const out = fdopen(up[1], "w");
        predictAll(fdopen(down[0], "r"), out, largest);
        std::fclose(out);
        return 0;
    }
    close(down[0]);
    close(up[1]);

    std::vector<double> times;
    std::string text;
    {
        const lumo::Session session;
        std::string section;
        for (const timeline::Figure& f : timeline::figuresOf(lumo::measuredMachine())) {
            if (f.section != section) text += "[" + f.section + "]\n";
            section = f.section;
            text += f.key + " = " + f.value + " ; measured\n";
        }
        for (const Case& c : cases)
            for (const int n : sizes(largest)) times.push_back(measured(c, n));
    }
    if (write(down[1], text.data(), text.size()) != ssize_t(text.size()))
        throw std::runtime_error("the pipe breaks");
    close(down[1]);

    FILE* const in = fdopen(up[0], "r");
    std::printf("%-12s %6s %14s %14s %8s\n", "routine", "n", "predicted ms", "measured ms",
                "ratio");
    std::size_t k = 0;
    double worst = 0;
    for (const Case& c : cases)
        for (const int n : sizes(largest)) {
            double predicted = 0;
            if (std::fscanf(in, "%lf", &predicted) != 1) throw std::runtime_error("no prediction");
            const double ratio = predicted / times[k];
            worst = std::max({worst, ratio - 1, 1 - ratio});
            std::printf("%-12s %6d %14.2f %14.2f %8.2f\n", c.shown, n, 1e3 * predicted,
                        1e3 * times[k++], ratio);
        }
    std::printf("the worst is %.0f %% off\n", 100 * worst);
    int status = 0;
    waitpid(child, &status, 0);
    return status == 0 ? 0 : 1;
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
