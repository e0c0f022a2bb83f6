#include "bench_plot.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "gnuplot.h"

namespace lumo {
namespace {

void addPanel(std::ostream& script, const SpeedCurve& curve, const std::string& ours) {
    const bool alone = curve.cpu.empty();
    script << "$speeds << END\n";
    for (std::size_t k = 0; k < curve.n.size(); ++k)
        script << curve.n[k] << ' ' << curve.lumo[k] << ' ' << (alone ? 0 : curve.cpu[k]) << "\n";
    script << "END\nset title '" << curve.name << "'\nset xtics (";
    for (const int n : curve.n) script << (n == curve.n[0] ? "" : ", ") << n;
    script << ")\nset xrange [" << curve.n.front() / 1.2 << ":" << curve.n.back() * 1.2 << "]\n"
           << "unset arrow\nset label 1 '";
    if (const double crossover = alone ? 0 : curve.crossover(); crossover > 0)
        script << "Lumo is faster from " << std::lround(crossover)
               << " on' at graph 0.97, 0.06 right\nset arrow from " << crossover << ", graph 0 to "
               << crossover << ", graph 1 nohead lc rgb '#c03020' dashtype 2\n";
    else
        script << (alone ? "" : "no crossover") << "' at graph 0.97, 0.06 right\n";
    constexpr auto style = " with linespoints pt 7 ps 0.5 lw 2 ";
    script << "plot ";
    if (!alone) script << "$speeds using 1:3" << style << "lc rgb '#8a8a8a' title 'CPU library', ";
    script << "$speeds using 1:2" << style << "lc rgb '#1f5fa8' title " << quotedForGnuplot(ours)
           << "\n";
}

}  // namespace

void plotSpeeds(OutputFile& file, const std::string& title, const std::vector<SpeedCurve>& curves,
                const std::string& ours) {
    const int count = int(curves.size()), across = std::min(count, 3);
    const int down = (count + across - 1) / across;
    std::ostringstream script;
    script
        << "set multiplot layout " << down << "," << across << " title " << quotedForGnuplot(title)
        << "\n"
        << "set logscale xy\nset xlabel 'n'\nset ylabel 'Gflop/s'\nset key top left Left reverse\n"
        << "set lmargin 9\nset label 1 textcolor rgb '#c03020'\nset grid xtics ytics lt 1 lw 1 lc "
           "rgb "
        << "'#dddddd'\n";
    for (const SpeedCurve& curve : curves) addPanel(script, curve, ours);
    script << "unset multiplot\n";
    drawPicture(file, {std::max(440 * across, 800), 60 + 320 * down}, script.str());
}

}  // namespace lumo
