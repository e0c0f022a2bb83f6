#include "matrix_market.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <istream>
#include <ostream>
#include <string_view>

#include "platform/element_types.h"

namespace lumo {
namespace {

constexpr std::string_view banner = "%%MatrixMarket";

struct Header {
    bool coordinate;
    std::string field, symmetry;
};

// The file's lines, cut into words, with the number of the line for messages.
class Lines {
  public:
    explicit Lines(std::istream& in) : in_(in) {}

    bool next() {
        const bool more = bool(std::getline(in_, line_));
        rest_ = more ? std::string_view(line_) : std::string_view();
        number_ += more;
        return more;
    }
    // The next line that is not blank.
    bool nextFilled() {
        while (next())
            if (rest_.find_first_not_of(blanks) != std::string_view::npos) return true;
        return false;
    }
    const std::string& line() const { return line_; }

    // The next word of the line, empty at its end.
    std::string_view word() {
        rest_.remove_prefix(std::min(rest_.find_first_not_of(blanks), rest_.size()));
        const std::string_view word = rest_.substr(0, rest_.find_first_of(blanks));
        rest_.remove_prefix(word.size());
        return word;
    }
    std::int64_t integer(const char* what) {
        const std::string_view w = word();
        std::int64_t value = 0;
        const auto [end, error] = std::from_chars(w.data(), w.data() + w.size(), value);
        if (w.empty() || end != w.data() + w.size() || error != std::errc())
            fail(std::string("expected ") + what);
        return value;
    }
    double number() {
        std::string_view w = word();
        // Fortran writes exponents of double precision with a letter of their own.
        if (const std::size_t d = w.find_first_of("dD"); d != std::string_view::npos)
            line_[std::size_t(w.data() - line_.data()) + d] = 'e';
        if (w.size() > 1 && w[0] == '+' && w[1] != '-') w.remove_prefix(1);
        double value = 0;
        const auto [end, error] = std::from_chars(w.data(), w.data() + w.size(), value);
        if (w.empty() || end != w.data() + w.size() || error == std::errc::invalid_argument)
            fail("expected a number");
        // Out of range is either an infinity, which the caller refuses, or nearly zero.
        return error == std::errc() ? value : std::strtod(std::string(w).c_str(), nullptr);
    }
    void end() {
        if (!word().empty()) fail("more on the line than belongs there");
    }
    [[noreturn]] void fail(const std::string& what) const {
        throw FileError("line " + std::to_string(number_) + ": " + what);
    }

  private:
    static constexpr const char* blanks = " \t\r\f\v";
    std::istream& in_;
    std::string line_;
    std::string_view rest_;
    std::int64_t number_ = 0;
};

std::string lower(std::string_view word) {
    std::string text(word);
    for (char& c : text) c = char(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

std::string oneOf(Lines& lines, std::initializer_list<const char*> words) {
    std::string word = lower(lines.word());
    if (std::find(words.begin(), words.end(), word) == words.end())
        lines.fail("unknown word \"" + word + "\" in the header");
    return word;
}

Header readHeader(Lines& lines) {
    if (!lines.next()) throw FileError("is empty");
    if (lines.word() != banner) lines.fail("not a Matrix Market header");
    oneOf(lines, {"matrix"});
    Header header;
    header.coordinate = oneOf(lines, {"array", "coordinate"}) == "coordinate";
    header.field = oneOf(lines, {"real", "double", "integer", "complex", "pattern"});
    header.symmetry = oneOf(lines, {"general", "symmetric", "skew-symmetric", "hermitian"});
    lines.end();
    if (header.symmetry == "hermitian" && header.field != "complex")
        lines.fail("Hermitian, but not complex");
    if (header.field == "pattern" && (!header.coordinate || header.symmetry == "skew-symmetric"))
        lines.fail("a pattern, which is neither an array nor skew-symmetric");

    do {
        if (!lines.nextFilled()) throw FileError("ends after the header");
        if (lines.line().compare(0, banner.size(), banner) == 0) lines.fail("a second header");
    } while (lines.line()[0] == '%');
    return header;
}

// Stores the values of the stored triangle and what the symmetry says of the other one.
class Filler {
  public:
    Filler(Lines& lines, const Header& header, Dense& matrix)
        : lines_(lines), header_(header), matrix_(matrix) {}

    void readValueAt(std::int64_t i, std::int64_t j) {
        const double re = header_.field == "pattern" ? 1 : lines_.number();
        const std::complex<double> value(re, matrix_.isComplex() ? lines_.number() : 0);
        lines_.end();
        if (header_.field == "integer" && std::isfinite(re) && re != std::trunc(re))
            lines_.fail("not an integer");
        matrix_.add(std::size_t(i), std::size_t(j), value);
        if (header_.symmetry == "general") return;
        if (i < j) lines_.fail("above the diagonal, which a " + header_.symmetry + " file omits");
        if (i == j) {
            if (header_.symmetry == "skew-symmetric" && value != 0.0)
                lines_.fail("the diagonal of a skew-symmetric matrix is zero");
            if (header_.symmetry == "hermitian" && value.imag() != 0)
                lines_.fail("the diagonal of a Hermitian matrix is real");
            return;
        }
        const std::complex<double> mirrored = header_.symmetry == "hermitian" ? std::conj(value)
                                              : header_.symmetry == "skew-symmetric" ? -value
                                                                                     : value;
        matrix_.add(std::size_t(j), std::size_t(i), mirrored);
    }

  private:
    Lines& lines_;
    const Header& header_;
    Dense& matrix_;
};

void readArray(Lines& lines, const Header& header, Dense& matrix) {
    if (matrix.rows() == 0) return;  // whatever number of columns is announced
    Filler filler(lines, header, matrix);
    for (int j = 0; j < matrix.columns(); ++j) {
        const int first = header.symmetry == "general"          ? 0
                          : header.symmetry == "skew-symmetric" ? j + 1
                                                                : j;
        for (int i = first; i < matrix.rows(); ++i) {
            if (!lines.nextFilled())
                throw FileError("ends in column " + std::to_string(j + 1) + " of " +
                                std::to_string(matrix.columns()));
            filler.readValueAt(i, j);
        }
    }
}

void readCoordinates(Lines& lines, const Header& header, std::int64_t entries, Dense& matrix) {
    Filler filler(lines, header, matrix);
    for (std::int64_t k = 0; k < entries; ++k) {
        if (!lines.nextFilled())
            throw FileError("ends after " + std::to_string(k) + " of " + std::to_string(entries) +
                            " entries");
        const std::int64_t i = lines.integer("a row number");
        const std::int64_t j = lines.integer("a column number");
        if (i < 1 || i > matrix.rows() || j < 1 || j > matrix.columns())
            lines.fail("no place (" + std::to_string(i) + ", " + std::to_string(j) + ") in a " +
                       std::to_string(matrix.rows()) + " x " + std::to_string(matrix.columns()) +
                       " matrix");
        filler.readValueAt(i - 1, j - 1);
    }
}

}  // namespace

Dense readMatrixMarket(InputFile& in) {
    Lines lines(in);
    const Header header = readHeader(lines);
    const std::int64_t rows = lines.integer("the number of rows");
    const std::int64_t columns = lines.integer("the number of columns");
    const std::int64_t entries = header.coordinate ? lines.integer("the number of entries") : 0;
    lines.end();
    if (header.symmetry != "general" && rows != columns)
        lines.fail(header.symmetry + ", but not square");
    if (entries < 0) lines.fail("a negative number of entries");
    const double stored = header.coordinate ? 0 : double(rows) * double(columns);
    // A digit and the end of its line for each element below the diagonal: the least there is.
    if (in.bytes() >= 0 && stored - double(rows) > double(in.bytes()) + 1)
        throw FileError("ends long before the " + std::to_string(rows) + " x " +
                        std::to_string(columns) + " numbers announced");

    Dense matrix(rows, columns, header.field == "complex");
    if (header.coordinate)
        readCoordinates(lines, header, entries, matrix);
    else
        readArray(lines, header, matrix);
    if (lines.nextFilled()) lines.fail("more than the header announced");
    return matrix;
}

template <class T>
void writeMatrixMarket(std::ostream& out, int m, int n, const T* x) {
    constexpr bool isComplex = !std::is_floating_point_v<T>;
    out << banner << " matrix array " << (isComplex ? "complex" : "real") << " general\n"
        << m << ' ' << n << '\n';
    out.precision(std::numeric_limits<platform::RealOf<T>>::max_digits10);
    for (std::size_t k = 0; k < std::size_t(m) * std::size_t(n); ++k) {
        if constexpr (isComplex)
            out << x[k].real() << ' ' << x[k].imag() << '\n';
        else
            out << x[k] << '\n';
    }
}

template void writeMatrixMarket(std::ostream&, int, int, const float*);
template void writeMatrixMarket(std::ostream&, int, int, const double*);
template void writeMatrixMarket(std::ostream&, int, int, const std::complex<float>*);
template void writeMatrixMarket(std::ostream&, int, int, const std::complex<double>*);

}  // namespace lumo
