#include "npy.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <istream>
#include <optional>
#include <ostream>
#include <string_view>

namespace lumo {
namespace {

constexpr std::size_t magicSize = sizeof npyMagic - 1;
// What is read here describes itself in some 100 bytes; the format allows 4 GB.
constexpr std::size_t longestHeader = 65535;
// Like the header, this file is compiled for little-endian machines only.
constexpr char native = '<';

void readExactly(std::istream& in, char* to, std::size_t bytes) {
    if (!in.read(to, std::streamsize(bytes))) throw FileError("ends early");
}

struct Header {
    bool bigEndian = false;
    char kind = 0;  // f, c, i, u
    std::size_t size = 0;
    bool fortranOrder = false;
    std::vector<std::int64_t> shape;

    bool isComplex() const { return kind == 'c'; }
    std::size_t realSize() const { return isComplex() ? size / 2 : size; }
    bool isSingle() const { return (kind == 'f' || isComplex()) && realSize() <= sizeof(float); }
};

// The header: a Python dictionary of three entries, such as
// {'descr': '<f8', 'fortran_order': False, 'shape': (3, 4), }
class HeaderParser {
  public:
    explicit HeaderParser(std::string_view text) : rest_(text) {}

    Header parse() {
        expect('{');
        while (!skip('}')) {
            const std::string_view key = string();
            expect(':');
            if (key == "descr")
                once(descr_, string());
            else if (key == "fortran_order")
                once(fortranOrder_, boolean());
            else if (key == "shape")
                once(shape_, tuple());
            else
                fail();
            if (!skip(',')) {
                expect('}');
                break;
            }
        }
        blanks();
        if (!rest_.empty() || !descr_ || !fortranOrder_ || !shape_) fail();
        Header header = elementType(*descr_);
        header.fortranOrder = *fortranOrder_;
        header.shape = *shape_;
        return header;
    }

  private:
    [[noreturn]] static void fail() { throw FileError("the NumPy header is not understood"); }

    static Header elementType(std::string_view descr) {
        static constexpr std::string_view known[] = {"f2", "f4", "f8", "c8", "c16", "i1", "i2",
                                                     "i4", "i8", "u1", "u2", "u4",  "u8"};
        const std::string_view type = descr.substr(std::min<std::size_t>(1, descr.size()));
        const bool oneByte = type == "i1" || type == "u1";
        if (std::find(std::begin(known), std::end(known), type) == std::end(known) ||
            !(descr[0] == '<' || descr[0] == '>' || (descr[0] == '|' && oneByte)))
            throw FileError("elements of type '" + std::string(descr) + "' cannot be read");
        Header header;
        header.bigEndian = descr[0] == '>';
        header.kind = type[0];
        header.size = type == "c16" ? 16 : std::size_t(type[1] - '0');
        return header;
    }

    template <class T>
    static void once(std::optional<T>& entry, T value) {
        if (entry) fail();
        entry = std::move(value);
    }
    void blanks() {
        rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t\r\n"), rest_.size()));
    }
    bool skip(char c) {
        blanks();
        if (rest_.empty() || rest_[0] != c) return false;
        rest_.remove_prefix(1);
        return true;
    }
    void expect(char c) {
        if (!skip(c)) fail();
    }
    bool skip(std::string_view word) {
        blanks();
        if (rest_.substr(0, word.size()) != word) return false;
        rest_.remove_prefix(word.size());
        return true;
    }
    std::string_view string() {
        const char quote = skip('"') ? '"' : '\'';
        if (quote == '\'') expect(quote);
        const std::size_t end = rest_.find(quote);
        if (end == std::string_view::npos) fail();
        const std::string_view text = rest_.substr(0, end);
        rest_.remove_prefix(end + 1);
        return text;
    }
    bool boolean() {
        if (skip("True")) return true;
        if (!skip("False")) fail();
        return false;
    }
    std::vector<std::int64_t> tuple() {
        std::vector<std::int64_t> numbers;
        expect('(');
        while (!skip(')')) {
            blanks();
            std::int64_t number = 0;
            const auto [end, error] =
                std::from_chars(rest_.data(), rest_.data() + rest_.size(), number);
            if (error != std::errc()) fail();
            rest_.remove_prefix(std::size_t(end - rest_.data()));
            numbers.push_back(number);
            if (!skip(',')) {
                expect(')');
                break;
            }
        }
        return numbers;
    }

    std::string_view rest_;
    std::optional<std::string_view> descr_;
    std::optional<bool> fortranOrder_;
    std::optional<std::vector<std::int64_t>> shape_;
};

// IEEE 754's half precision: 1 bit is the sign, 5 are the exponent, 10 the significand.
struct Half {
    std::uint16_t bits;

    explicit operator double() const {
        const int exponent = bits >> 10 & 31, significand = bits & 1023;
        const double size = exponent == 0    ? std::ldexp(significand, -24)
                            : exponent == 31 ? (significand ? std::nan("") : HUGE_VAL)
                                             : std::ldexp(1024 + significand, exponent - 25);
        return bits >> 15 ? -size : size;
    }
};

// One real number in the file's type.
using Decoder = double (*)(const char*);

template <class T, bool bigEndian>
double decode(const char* from) {
    char bytes[sizeof(T)];
    std::memcpy(bytes, from, sizeof(T));
    if (bigEndian) std::reverse(bytes, bytes + sizeof(T));
    T value;
    std::memcpy(&value, bytes, sizeof(T));
    return double(value);
}

template <bool bigEndian>
Decoder decoderOf(char kind, std::size_t size) {
    switch (kind) {
        case 'i':
            return size == 1   ? decode<std::int8_t, bigEndian>
                   : size == 2 ? decode<std::int16_t, bigEndian>
                   : size == 4 ? decode<std::int32_t, bigEndian>
                               : decode<std::int64_t, bigEndian>;
        case 'u':
            return size == 1   ? decode<std::uint8_t, bigEndian>
                   : size == 2 ? decode<std::uint16_t, bigEndian>
                   : size == 4 ? decode<std::uint32_t, bigEndian>
                               : decode<std::uint64_t, bigEndian>;
        default:
            return size == 2   ? decode<Half, bigEndian>
                   : size == 4 ? decode<float, bigEndian>
                               : decode<double, bigEndian>;
    }
}

Header readHeader(std::istream& in) {
    char start[magicSize + 2];
    readExactly(in, start, sizeof start);
    if (std::memcmp(start, npyMagic, magicSize) != 0) throw FileError("not a NumPy file");
    const int version = static_cast<unsigned char>(start[magicSize]);
    if (version < 1 || version > 3)
        throw FileError("NumPy format version " + std::to_string(version) + " is not known");
    unsigned char length[4] = {};
    readExactly(in, reinterpret_cast<char*>(length), version == 1 ? 2 : 4);
    const std::size_t bytes =
        length[0] | length[1] << 8 | length[2] << 16 | std::size_t(length[3]) << 24;
    if (bytes > longestHeader) throw FileError("the NumPy header is not understood");
    std::string text(bytes, '\0');
    readExactly(in, text.data(), bytes);
    return HeaderParser(text).parse();
}

}  // namespace

Dense readNpy(InputFile& in) {
    const Header header = readHeader(in);
    if (header.shape.empty() || header.shape.size() > 2)
        throw FileError("an array of " + std::to_string(header.shape.size()) +
                        " dimensions is not a matrix");
    const std::int64_t rows = header.shape[0];
    const std::int64_t columns = header.shape.size() == 2 ? header.shape[1] : 1;
    if (in.bytes() >= 0 &&
        double(rows) * double(columns) * double(header.size) > double(in.bytes()))
        throw FileError("ends long before the " + std::to_string(rows) + " x " +
                        std::to_string(columns) + " numbers announced");
    const bool isComplex = header.isComplex();
    Dense matrix(rows, columns, isComplex);
    matrix.isVector = header.shape.size() == 1;
    matrix.isSingle = header.isSingle();
    const bool isEmpty = rows == 0 || columns == 0;  // the other may be any number

    const std::size_t part = header.realSize();
    const Decoder decoder =
        header.bigEndian ? decoderOf<true>(header.kind, part) : decoderOf<false>(header.kind, part);
    const std::size_t slow = isEmpty ? 0 : std::size_t(header.fortranOrder ? columns : rows);
    const std::size_t fast = isEmpty ? 0 : std::size_t(header.fortranOrder ? rows : columns);
    std::vector<char> run(fast * header.size);
    for (std::size_t s = 0; s < slow; ++s) {
        readExactly(in, run.data(), run.size());
        for (std::size_t f = 0; f < fast; ++f) {
            const char* at = run.data() + f * header.size;
            const std::complex<double> value(decoder(at), isComplex ? decoder(at + part) : 0);
            header.fortranOrder ? matrix.add(f, s, value) : matrix.add(s, f, value);
        }
    }
    if (in.peek() != std::istream::traits_type::eof())
        throw FileError("more than the header announced");
    return matrix;
}

template <class T>
void writeNpy(std::ostream& out, int m, int n, const T* x, bool isVector) {
    std::string header = std::string("{'descr': '<") + (std::is_floating_point_v<T> ? 'f' : 'c') +
                         std::to_string(sizeof(T)) + "', 'fortran_order': True, 'shape': (" +
                         std::to_string(m) + "," + (isVector ? "" : " " + std::to_string(n)) +
                         "), }";
    // The data start at a multiple of 64 bytes.
    const std::size_t before = magicSize + 2 + 2;
    header.append(63 - (before + header.size()) % 64, ' ').push_back('\n');
    out.write(npyMagic, magicSize);
    const char rest[] = {1, 0, char(header.size()), char(header.size() >> 8)};
    out.write(rest, sizeof rest);
    out << header;
    out.write(reinterpret_cast<const char*>(x),
              std::streamsize(std::size_t(m) * std::size_t(n) * sizeof(T)));
}

template void writeNpy(std::ostream&, int, int, const float*, bool);
template void writeNpy(std::ostream&, int, int, const double*, bool);
template void writeNpy(std::ostream&, int, int, const std::complex<float>*, bool);
template void writeNpy(std::ostream&, int, int, const std::complex<double>*, bool);

}  // namespace lumo
