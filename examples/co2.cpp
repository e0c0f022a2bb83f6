// Carbon dioxide in the air at Mauna Loa, 1958 to 2001: the trend and the seasons in 2225 weekly
// means, by least squares.
//
// The concentration at time t is modelled as a cubic trend and two harmonics of the year,
//
//     c0 + c1 u + c2 u^2 + c3 u^3
//        + c4 cos 2 pi t + c5 sin 2 pi t + c6 cos 4 pi t + c7 sin 4 pi t     (t in years)
//
// where u = (t - middle) / half the record's length, which lies between -1 and 1. That matters in
// single precision: t^3 itself, around 1980, is a combination of 1, t and t^2 but for 2e-7 of its
// length, hardly more than its rounding errors, and the fit would be lost. The powers of u meet at
// angles of 24 degrees and more, and like the harmonics they are all of order 1.
//
//     co2 [FILE]     writes co2_fit.dat and, where gnuplot is installed, co2_fit.png
#include <algorithm>
#include <cmath>
#include <ctime>
#include <fstream>

#include "report.h"

extern "C" void sgels_(const char* trans, const int* m, const int* n, const int* nrhs, float* a,
                       const int* lda, float* b, const int* ldb, float* work, const int* lwork,
                       int* info, std::size_t lengthOfTrans);

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr int trendTerms = 4, terms = 8;

struct Record {
    std::vector<double> years;
    std::vector<float> ppm;
};

// The fraction of the year is that of the mean year, which the seasons follow.
double yearOf(int yyyymmdd) {
    std::tm date{};
    date.tm_year = yyyymmdd / 10000 - 1900;
    date.tm_mon = yyyymmdd / 100 % 100 - 1;
    date.tm_mday = yyyymmdd % 100;
    return 1970 + double(timegm(&date)) / (365.2425 * 86400);
}

// Lines of a date and a concentration, which is missing in some weeks.
Record readRecord(const std::string& file) {
    std::ifstream in(file);
    Record record;
    std::string line;
    std::getline(in, line);
    if (line != "date,co2") throw std::runtime_error(file + ": not a file of dates and co2");
    while (std::getline(in, line)) {
        int date = 0;
        double ppm = 0;
        const int fields = std::sscanf(line.c_str(), "%8d,%lf", &date, &ppm);
        if (fields < 1) throw std::runtime_error("cannot read this line: " + line);
        if (fields < 2) continue;
        record.years.push_back(yearOf(date));
        record.ppm.push_back(float(ppm));
    }
    if (record.ppm.size() < 2 * terms) throw std::runtime_error(file + ": too short");
    return record;
}

// The model's terms.
class Model {
  public:
    explicit Model(const Record& record)
        : middle_((record.years.front() + record.years.back()) / 2),
          half_((record.years.back() - record.years.front()) / 2) {}

    double term(int j, double t) const {
        if (j < trendTerms) return std::pow((t - middle_) / half_, j);
        const double phase = 2 * pi * t * (j < trendTerms + 2 ? 1 : 2);
        return (j - trendTerms) % 2 == 0 ? std::cos(phase) : std::sin(phase);
    }
    // The sum of the terms from `first` to `last` - 1.
    double sum(const std::vector<float>& c, double t, int first, int last) const {
        double value = 0;
        for (int j = first; j < last; ++j) value += c[j] * term(j, t);
        return value;
    }
    double trend(const std::vector<float>& c, double t) const { return sum(c, t, 0, trendTerms); }
    double season(const std::vector<float>& c, double t) const {
        return sum(c, t, trendTerms, terms);
    }

    std::vector<float> matrix(const std::vector<double>& years) const {
        std::vector<float> a;
        for (int j = 0; j < terms; ++j)
            for (const double t : years) a.push_back(float(term(j, t)));
        return a;
    }

  private:
    double middle_, half_;
};

struct Fit {
    std::vector<float> coefficients;
    double seconds, residual;  // the residual norm, ppm
};

// Solves a copy by `gels(m, n, a, b)`.
template <class Gels>
Fit timedFit(const std::string& who, const std::vector<float>& a, const std::vector<float>& b,
             Gels gels) {
    const int m = int(b.size());
    std::vector<float> factors, x;
    const auto copy = [&] {
        factors = a;
        x = b;
    };
    const double seconds =
        example::secondsOf(who, 21, copy, [&] { return gels(m, terms, factors.data(), x.data()); });
    x.resize(terms);
    const auto r = lumo::residualOf(m, terms, a.data(), b.data(), x.data());
    return {x, seconds, lumo::euclideanNorm(r.size(), r.data())};
}

int lumoGels(int m, int n, float* a, float* b) {
    return lumoSgels('N', m, n, 1, a, m, b, m);
}

int cpuGels(int m, int n, float* a, float* b) {
    const int one = 1, query = -1;
    int info = 0;
    float size = 0;
    sgels_("N", &m, &n, &one, a, &m, b, &m, &size, &query, &info, 1);
    if (info) return info;
    const int lwork = int(size);
    std::vector<float> work(lwork);
    sgels_("N", &m, &n, &one, a, &m, b, &m, work.data(), &lwork, &info, 1);
    return info;
}

// Fits by Lumo and by the CPU LAPACK, prints how both did and checks that they agree.
std::vector<float> fitAndReport(const std::vector<float>& a, const std::vector<float>& b) {
    example::startLumo();
    std::printf("A:           %zu x %d\n", b.size(), terms);
    const Fit ours = timedFit("Lumo", a, b, lumoGels);
    lumoShutdown();
    const Fit theirs = timedFit("CPU LAPACK", a, b, cpuGels);
    double difference = 0;
    for (int j = 0; j < terms; ++j)
        difference =
            std::max(difference, double(std::abs(ours.coefficients[j] - theirs.coefficients[j])));
    std::printf("Lumo:        %8.6f s   ||b - A x|| = %.5f ppm\n", ours.seconds, ours.residual);
    std::printf("CPU LAPACK:  %8.6f s   ||b - A x|| = %.5f ppm\n", theirs.seconds, theirs.residual);
    std::printf("Lumo takes %.2f times the CPU LAPACK's time\n", ours.seconds / theirs.seconds);
    std::printf("coefficients differ by %.1e ppm at most\n", difference);
    // The concentrations, some 340 ppm, are known to 0.1 ppm and rounded to 1.5e-5 ppm; sums over
    // two thousand of them lose another digit or two.
    if (!(difference < 5e-3)) throw std::runtime_error("the fits differ");
    return ours.coefficients;
}

void writeFit(const char* file, const Record& record, const Model& model,
              const std::vector<float>& c) {
    std::ofstream out(file);
    out << "# year  CO2/ppm  trend/ppm  fit/ppm  residual/ppm\n";
    char line[100];
    for (std::size_t i = 0; i < record.years.size(); ++i) {
        const double t = record.years[i], trend = model.trend(c, t),
                     fit = model.sum(c, t, 0, terms);
        std::snprintf(line, sizeof line, "%.4f %.2f %.3f %.3f %.3f\n", t, double(record.ppm[i]),
                      trend, fit, record.ppm[i] - fit);
        out << line;
    }
    out.close();
    if (!out) throw std::runtime_error(std::string(file) + " cannot be written");
    std::printf("wrote %s\n", file);
}

constexpr const char* pictureScript = R"gnuplot(
set terminal pngcairo size 1000,750 font ",11"
set output "co2_fit.png"
set multiplot layout 2,1 title "Carbon dioxide in the air at Mauna Loa, weekly means"
set lmargin 10
set rmargin 3
set grid xtics ytics lt 1 lw 1 lc rgb "#dddddd"
set xrange [1958:2002]
set key top left reverse Left
set ylabel "CO_2 concentration (ppm)"
plot "co2_fit.dat" using 1:2 title "measured" with points pt 7 ps 0.4 lc rgb "#888888", \
     "" using 1:4 title "fit: cubic trend and two harmonics" with lines lc rgb "#c03020", \
     "" using 1:3 title "trend alone" with lines lw 2 lc rgb "#2050a0"
set xlabel "year"
set ylabel "residual (ppm)"
set yrange [-3:3]
set xzeroaxis lt -1
plot "co2_fit.dat" using 1:5 title "measured - fit" with points pt 7 ps 0.4 lc rgb "#c03020"
)gnuplot";

// The fit does not fail for want of a picture.
void drawPicture() {
    std::remove("co2_fit.png");
    if (std::system("command -v gnuplot >/dev/null 2>&1") != 0) {
        std::printf("no picture: gnuplot is not installed\n");
        return;
    }
    std::FILE* gnuplot = popen("gnuplot", "w");
    if (gnuplot) std::fputs(pictureScript, gnuplot);
    if (gnuplot && pclose(gnuplot) == 0)
        std::printf("wrote co2_fit.png\n");
    else
        std::printf("no picture: gnuplot fails\n");
}

// Prints a quantity beside what it is known to be. False if that does not agree.
bool agrees(const char* what, double value, double least, double most, const char* unit) {
    const bool agrees = value >= least && value <= most;
    std::printf("%-34s %7.2f %-4s  expected %.4g to %.4g%s\n", what, value, unit, least, most,
                agrees ? "" : "  <-- NOT SO");
    return agrees;
}

// Whether the fit shows what is known of the record: the concentration grows by about 1.3 ppm a
// year, faster and faster (0.7 to 0.9 in the 1960s, about 1.5 in the 1990s), and swings by some
// 6 ppm between May, before the northern summer's growth, and the end of September. What neither
// trend nor seasons explain, such as El Nino and volcanoes, stays within 3 ppm.
bool checkFit(const Record& record, const Model& model, const std::vector<float>& c) {
    const double first = record.years.front(), last = record.years.back();
    const auto trend = [&](double t) { return model.trend(c, t); };
    double low = 0, high = 0;
    int lowDay = 0, highDay = 0;
    for (int day = 0; day < 365; ++day) {
        const double swing = model.season(c, (day + 0.5) / 365);
        if (swing < low) low = swing, lowDay = day + 1;
        if (swing > high) high = swing, highDay = day + 1;
    }
    double squares = 0, largest = 0;
    for (std::size_t i = 0; i < record.years.size(); ++i) {
        const double residual = record.ppm[i] - model.sum(c, record.years[i], 0, terms);
        squares += residual * residual;
        largest = std::max(largest, std::abs(residual));
    }
    const double deviation = std::sqrt(squares / double(record.years.size() - terms));

    bool good =
        agrees("growth, mean", (trend(last) - trend(first)) / (last - first), 1.2, 1.4, "ppm/a");
    good &= agrees("growth, 1960 to 1970", (trend(1970) - trend(1960)) / 10, 0.7, 0.95, "ppm/a");
    good &= agrees("growth, 1991 to 2001", (trend(2001) - trend(1991)) / 10, 1.4, 1.8, "ppm/a");
    good &= agrees("season, highest over the trend", high, 2.5, 3.5, "ppm");
    good &= agrees("season, lowest", low, -3.8, -2.5, "ppm");
    good &= agrees("day of the year, highest", highDay, 121, 151, "");
    good &= agrees("day of the year, lowest", lowDay, 258, 288, "");
    good &= agrees("standard deviation of the residual", deviation, 0.3, 1, "ppm");
    good &= agrees("largest residual", largest, 1, 3, "ppm");
    return good;
}

int run(int argc, char** argv) {
    if (argc > 2) throw std::runtime_error("usage: co2 [FILE]");
    const Record record = readRecord(argc > 1 ? argv[1] : CO2_DATA);
    std::printf("Mauna Loa, %zu weekly means from %.1f to %.1f\n", record.ppm.size(),
                record.years.front(), record.years.back());
    const Model model(record);
    const std::vector<float> c = fitAndReport(model.matrix(record.years), record.ppm);
    const bool good = checkFit(record, model, c);
    writeFit("co2_fit.dat", record, model, c);
    drawPicture();
    return good ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv) try {
    return run(argc, argv);
} catch (const std::exception& error) {
    std::fprintf(stderr, "co2: %s\n", error.what());
    return EXIT_FAILURE;
}
