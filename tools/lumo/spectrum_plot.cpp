#include "spectrum_plot.h"

#include <algorithm>
#include <sstream>

#include "gnuplot.h"

namespace lumo {
namespace {

const char* colorOf(const std::string& channel) {
    return channel == "green" ? "#208030" : channel == "blue" ? "#2050a0" : "#c03020";
}

std::string scriptOf(const std::string& title, const std::vector<Spectrum>& spectra,
                     const std::vector<int>& ranks) {
    std::size_t count = 0;
    std::ostringstream script;
    for (std::size_t p = 0; p < spectra.size(); ++p) {
        script << "$values" << p << " << END\n";
        for (const double value : spectra[p].values) script << value << "\n";
        script << "END\n";
        count = std::max(count, spectra[p].values.size());
    }
    script << "set title " << quotedForGnuplot(title) << "\n"
           << "set xlabel 'i'\nset ylabel 'singular value'\nset logscale y\nset format y '%.0e'\n"
           << "set grid xtics ytics lt 1 lw 1 lc rgb '#dddddd'\n"
           << "set xrange [0:" << count + 1 << "]\n"
           << (spectra[0].name.empty() ? "unset key\n" : "set key top right\n");
    for (std::size_t k = 0; k < ranks.size(); ++k) {
        const bool right = ranks[k] > 0.85 * double(count);
        script << "set arrow from " << ranks[k] << ", graph 0 to " << ranks[k]
               << ", graph 1 nohead lc rgb '#888888' dashtype 2\n"
               << "set label 'K = " << ranks[k] << "' at " << ranks[k] << ", graph "
               << 0.12 - 0.04 * double(k % 3)  // neighbours at different heights
               << (right ? " right offset -0.4,0\n" : " left offset 0.4,0\n");
    }
    for (std::size_t p = 0; p < spectra.size(); ++p)
        script << (p ? ", " : "plot ") << "$values" << p << " using ($0 + 1):1 with linespoints "
               << "pt 7 ps 0.3 lc rgb '" << colorOf(spectra[p].name) << "' title "
               << quotedForGnuplot(spectra[p].name);
    script << "\n";
    return script.str();
}

}  // namespace

void plotSpectra(OutputFile& file, const std::string& title, const std::vector<Spectrum>& spectra,
                 const std::vector<int>& ranks) {
    drawPicture(file, {1000, 700}, scriptOf(title, spectra, ranks));
}

}  // namespace lumo
