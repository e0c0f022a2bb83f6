#include "prediction_text.h"

#include <algorithm>
#include <cstdio>

#include "bench_plot.h"
#include "json.h"

namespace lumo {
namespace {

using timeline::ByKind;
using timeline::Kind;

std::string where(const PredictionTitle& title) {
    return title.device ? "matrices in device memory" : "matrices in host memory";
}

// "panels on the CPU 34 %, ...": the largest parts of `whole`.
std::string parts(const ByKind& times, double whole) {
    std::vector<int> order;
    for (int k = 0; k < timeline::kinds; ++k)
        if (times[k] >= 0.005 * whole) order.push_back(k);
    std::sort(order.begin(), order.end(), [&](int a, int b) { return times[a] > times[b]; });
    std::string text;
    for (const int k : order) {
        char part[80];
        std::snprintf(part, sizeof part, "%s%s %.0f %%", text.empty() ? "" : ", ", nameOf(Kind(k)),
                      100 * times[k] / whole);
        text += part;
    }
    return text.empty() ? "nothing" : text;
}

std::string json(const ByKind& times) {
    std::string text = "{";
    for (int k = 0; k < timeline::kinds; ++k) {
        char part[80];
        std::snprintf(part, sizeof part, "%s\"%s\": %.6g", k ? ", " : "", nameOf(Kind(k)),
                      times[k]);
        text += part;
    }
    return text + "}";
}

std::string json(const PredictedRoutine& routine, std::size_t k) {
    const Prediction& p = routine.sizes[k];
    std::string text = "{\"n\": " + std::to_string(p.n);
    if (!p.failure.empty()) return text + ", \"failure\": " + quoted(p.failure) + "}";
    char numbers[400];
    const timeline::Account& a = p.account;
    std::snprintf(numbers, sizeof numbers,
                  ", \"predicted_seconds\": %.6g, \"predicted_tflops\": %.5g, \"launches\": %ld, "
                  "\"cublas_calls\": %ld, \"copies\": %ld, \"allocations\": %ld, \"waits\": %ld, "
                  "\"panels\": %ld, \"bytes_to_device\": %.0f, \"bytes_to_host\": %.0f, "
                  "\"device_bytes\": %zu",
                  a.seconds, routine.speed(k, a.seconds), a.counts.launches, a.counts.products,
                  a.counts.copies, a.counts.allocations, a.counts.waits, a.counts.panels,
                  a.counts.bytesUp, a.counts.bytesDown, a.deviceBytes);
    text += numbers;
    text += ",\n       \"gpu_busy\": " + json(a.busy) + ",\n       \"gpu_waits\": " + json(a.idle) +
            ",\n       \"critical_path\": " + json(a.criticalPath);
    if (!routine.cpu.empty()) {
        std::snprintf(numbers, sizeof numbers, ",\n       \"cpu_seconds\": %.6g, \"cpu\": \"%s\"",
                      routine.cpu[k], routine.measured[k] ? "measured" : "extrapolated");
        text += numbers;
    }
    return text + "}";
}

}  // namespace

void printHeading(const PredictionTitle& title, bool cpu) {
    std::printf("PREDICTION, nothing was computed: %s, %s\n\n%-8s %7s %12s %9s %6s%s\n",
                title.machine.c_str(), where(title).c_str(), "routine", "n", "ms", "TFlop/s",
                "busy", cpu ? "       CPU ms   CPU/GPU" : "");
}

void print(const PredictedRoutine& routine) {
    for (std::size_t k = 0; k < routine.sizes.size(); ++k) {
        const Prediction& p = routine.sizes[k];
        std::printf("%-8s %7d ", routine.name.c_str(), p.n);
        if (!p.failure.empty()) {
            std::printf("fails: %s\n", p.failure.c_str());
            continue;
        }
        const double seconds = p.account.seconds;
        if (routine.flops > 0)
            std::printf("%12.3f %9.3f", 1e3 * seconds, routine.speed(k, seconds));
        else
            std::printf("%12.3f %9s", 1e3 * seconds, "");
        std::printf(" %4.0f %%", 100 * p.gpuSeconds() / seconds);
        if (!routine.cpu.empty())
            std::printf(" %12.2f%c %8.2f", 1e3 * routine.cpu[k], routine.measured[k] ? ' ' : '*',
                        routine.cpu[k] / seconds);
        std::printf(
            "\n    the GPU computed     %s\n    the GPU waited for   %s\n"
            "    the critical path    %s\n",
            parts(p.account.busy, seconds).c_str(), parts(p.account.idle, seconds).c_str(),
            parts(p.account.criticalPath, seconds).c_str());
    }
    if (routine.cpu.empty()) return;
    if (std::find(routine.measured.begin(), routine.measured.end(), false) !=
        routine.measured.end())
        std::printf("    * extrapolated from sizes that were measured here\n");
    if (const double crossover = routine.crossover(); crossover > 0)
        std::printf("    the GPU pays from n = %.0f on, as far as was asked\n", crossover);
    else
        std::printf("    the GPU does not pay at the largest size that was asked for\n");
}

std::string json(const PredictionTitle& title, const std::vector<PredictedRoutine>& routines) {
    std::string text = "{\n  \"kind\": \"prediction\", \"computed\": false,\n  \"version\": " +
                       quoted(LUMO_VERSION) + ",\n  \"machine\": " + quoted(title.machine) +
                       ",\n  \"interface\": " + quoted(title.device ? "device" : "host") +
                       ",\n  \"routines\": [";
    for (const PredictedRoutine& r : routines) {
        text += (&r == routines.data() ? "\n" : ",\n") + ("    {\"name\": " + quoted(r.name));
        if (!r.cpu.empty()) {
            char number[40];
            const double crossover = r.crossover();
            std::snprintf(number, sizeof number, crossover > 0 ? "%.0f" : "null", crossover);
            text += ", \"predicted_crossover\": " + std::string(number);
        }
        text += ", \"sizes\": [";
        for (std::size_t k = 0; k < r.sizes.size(); ++k)
            text += (k ? ",\n      " : "\n      ") + json(r, k);
        text += "]}";
    }
    return text + "\n  ]\n}\n";
}

void plot(OutputFile& file, const PredictionTitle& title,
          const std::vector<PredictedRoutine>& routines) {
    std::vector<SpeedCurve> curves;
    bool extrapolated = false;
    for (const PredictedRoutine& r : routines) {
        extrapolated |= std::count(r.measured.begin(), r.measured.end(), false) > 0;
        SpeedCurve curve{r.name, {}, {}, {}};
        for (std::size_t k = 0; k < r.sizes.size(); ++k) {
            if (!r.sizes[k].failure.empty()) continue;
            curve.n.push_back(r.sizes[k].n);
            curve.lumo.push_back(1e3 * r.speed(k, r.sizes[k].account.seconds));
            if (!r.cpu.empty()) curve.cpu.push_back(1e3 * r.speed(k, r.cpu[k]));
        }
        if (!curve.n.empty() && r.flops > 0) curves.push_back(std::move(curve));
    }
    if (curves.empty()) throw std::runtime_error(file.name() + ": there is no speed to draw");
    plotSpeeds(file,
               "Prediction: " + title.machine + ", " + where(title) +
                   (extrapolated ? "; the CPU's largest sizes are extrapolated" : ""),
               curves, "Lumo, predicted");
}

}  // namespace lumo
