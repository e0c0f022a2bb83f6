#include "bench_plot.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>

namespace lumo {
namespace {

constexpr double panelWidth = 340, panelHeight = 250;                      // with their margins
constexpr double left = 54, right = 14, top = 30, bottom = 38, head = 54;  // of a panel; the title
constexpr const char *lumoColor = "#1f5fa8", *cpuColor = "#8a8a8a", *markColor = "#c03020";

std::string format(const char* pattern, ...) {
    char text[512];
    va_list arguments;
    va_start(arguments, pattern);
    std::vsnprintf(text, sizeof text, pattern, arguments);
    va_end(arguments);
    return text;
}

std::string escaped(const std::string& text) {
    std::string result;
    for (const char c : text) result += c == '&' ? "&amp;" : c == '<' ? "&lt;" : std::string(1, c);
    return result;
}

std::string label(double x, double y, const char* anchor, const char* color,
                  const std::string& text) {
    return format("<text x='%.1f' y='%.1f' text-anchor='%s' fill='%s'>", x, y, anchor, color) +
           escaped(text) + "</text>\n";
}

std::string line(double x1, double y1, double x2, double y2, const char* style) {
    return format("<line x1='%.1f' y1='%.1f' x2='%.1f' y2='%.1f' %s/>\n", x1, y1, x2, y2, style);
}

// One routine's panel, its upper left corner at (0, 0).
class Panel {
  public:
    explicit Panel(const SpeedCurve& curve) : curve_(curve) {
        double least = curve.lumo[0], most = least;
        for (const auto* speeds : {&curve.lumo, &curve.cpu})
            for (const double speed : *speeds) {
                least = std::min(least, speed);
                most = std::max(most, speed);
            }
        lowest_ = std::floor(std::log10(least));
        highest_ = std::max(std::ceil(std::log10(most)), lowest_ + 1);
    }

    std::string draw() const {
        std::string svg = "<g font-size='11'>\n";
        const double width = panelWidth - right;
        for (double decade = lowest_; decade <= highest_; ++decade)
            for (const int step : {1, 2, 5}) {
                const double speed = step * std::pow(10, decade), y = yOf(speed);
                if (y < top - 1) break;
                svg += line(left, y, width, y, "stroke='#e2e2e2'");
                if (step == 1 || highest_ - lowest_ < 3)
                    svg += label(left - 6, y + 4, "end", "#444", format("%g", speed));
            }
        for (const int n : curve_.n) {
            svg += line(xOf(n), yOf(bottomSpeed()), xOf(n), yOf(bottomSpeed()) + 4,
                        "stroke='#444444'");
            svg += label(xOf(n), panelHeight - bottom + 16, "middle", "#444", std::to_string(n));
        }
        svg += label((left + width) / 2, panelHeight - bottom + 31, "middle", "#444", "n");
        svg += format("<text x='%.1f' y='%.1f' font-size='13' font-weight='bold'>%s</text>\n", left,
                      top - 10, curve_.name.c_str());
        svg += mark();
        svg += path(curve_.cpu, cpuColor) + path(curve_.lumo, lumoColor);
        return svg + "</g>\n";
    }

  private:
    double bottomSpeed() const { return std::pow(10, lowest_); }
    double xOf(double n) const {
        const double first = std::log(curve_.n.front()), last = std::log(curve_.n.back());
        const double along = last > first ? (std::log(n) - first) / (last - first) : 0.5;
        return left + 14 + along * (panelWidth - left - right - 28);
    }
    double yOf(double speed) const {
        const double along = (std::log10(speed) - lowest_) / (highest_ - lowest_);
        return panelHeight - bottom - along * (panelHeight - top - bottom);
    }
    std::string mark() const {
        const double width = panelWidth - right;
        const double crossover = curve_.crossover();
        if (crossover == 0) return label(width, top - 10, "end", markColor, "no crossover");
        const double x = xOf(crossover);
        const std::string text = format("Lumo is faster from %.0f on", crossover);
        return line(x, top, x, panelHeight - bottom,
                    format("stroke='%s' stroke-dasharray='5 4'", markColor).c_str()) +
               label(width, top - 10, "end", markColor, text);
    }
    std::string path(const std::vector<double>& speeds, const char* color) const {
        std::string points, dots;
        for (std::size_t k = 0; k < speeds.size(); ++k) {
            const double x = xOf(curve_.n[k]), y = yOf(speeds[k]);
            points += format("%.1f,%.1f ", x, y);
            dots += format("<circle cx='%.1f' cy='%.1f' r='3' fill='%s'/>\n", x, y, color);
        }
        return "<polyline points='" + points +
               format("' fill='none' stroke='%s' stroke-width='2'/>\n", color) + dots;
    }

    const SpeedCurve& curve_;
    double lowest_, highest_;  // decades
};

}  // namespace

std::string plotSpeeds(const std::string& title, const std::vector<SpeedCurve>& curves) {
    const std::size_t across = std::min<std::size_t>(curves.size(), 3);
    const double width = std::max(panelWidth * double(across), 2 * panelWidth);
    const std::size_t down = (curves.size() + across - 1) / across;
    const double height = head + panelHeight * double(down);
    std::string svg = format(
        "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 %.0f %.0f' width='%.0f' "
        "height='%.0f' font-family='sans-serif'>\n<rect width='100%%' height='100%%' "
        "fill='white'/>\n<g font-size='13'>\n",
        width, height, width, height);
    svg += label(left, 24, "start", "#222", title);
    svg += label(left, 44, "start", "#222", "Gflop/s");
    svg += label(left + 70, 44, "start", lumoColor, "\u25cf Lumo");
    svg += label(left + 140, 44, "start", cpuColor, "\u25cf CPU library");
    svg += "</g>\n";
    for (std::size_t k = 0; k < curves.size(); ++k) {
        const std::size_t row = k / across, column = k % across;
        svg += format("<g transform='translate(%.0f %.0f)'>\n", panelWidth * double(column),
                      head + panelHeight * double(row)) +
               Panel(curves[k]).draw() + "</g>\n";
    }
    return svg + "</svg>\n";
}

}  // namespace lumo
