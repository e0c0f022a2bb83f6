#include "spectrum_plot.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <sstream>

namespace lumo {
namespace {

const char* colorOf(const std::string& channel) {
    return channel == "green" ? "#208030" : channel == "blue" ? "#2050a0" : "#c03020";
}

// A string for gnuplot, which takes all but the quote as it is.
std::string quoted(const std::string& text) {
    std::string result = "'";
    for (const char c : text) result += c == '\'' ? "''" : std::string(1, c);
    return result + "'";
}

std::string scriptOf(const std::string& title, const std::vector<Spectrum>& spectra,
                     const std::vector<int>& ranks) {
    std::size_t count = 0;
    std::ostringstream script;
    for (std::size_t p = 0; p < spectra.size(); ++p) {
        script << "$values" << p << " << END\n";
        for (const float value : spectra[p].values) script << value << "\n";
        script << "END\n";
        count = std::max(count, spectra[p].values.size());
    }
    script << "set terminal pngcairo noenhanced size 1000,700 font ',13'\n"
           << "set title noenhanced " << quoted(title) << "\n"
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
               << quoted(spectra[p].name);
    script << "\n";
    return script.str();
}

bool runGnuplot(const std::string& script, const std::string& file) {
    setenv("LUMO_PLOT", file.c_str(), 1);
    // A gnuplot that ends early must not end this program.
    const auto before = std::signal(SIGPIPE, SIG_IGN);
    std::FILE* gnuplot = popen("gnuplot >\"$LUMO_PLOT\" 2>/dev/null", "w");
    if (gnuplot) std::fputs(script.c_str(), gnuplot);
    const bool good = gnuplot && pclose(gnuplot) == 0;
    std::signal(SIGPIPE, before);
    std::error_code error;
    return good && std::filesystem::file_size(file, error) > 0 && !error;
}

}  // namespace

bool plotSpectra(OutputFile& file, const std::string& title, const std::vector<Spectrum>& spectra,
                 const std::vector<int>& ranks) {
    file.close();
    if (std::system("command -v gnuplot >/dev/null 2>&1") != 0) {
        std::printf("no plot:    gnuplot is not installed\n");
        return false;
    }
    const bool good = runGnuplot(scriptOf(title, spectra, ranks), file.temporary());
    if (!good) std::printf("no plot:    gnuplot fails\n");
    return good;
}

}  // namespace lumo
