// Machine files: lines "key = value ; source" under [sections]. All figures are wanted, each once
// and with its source, or with the word that it is assumed; lines of comment begin with #.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <optional>
#include <sstream>
#include <stdexcept>

#include "platform/timeline/machine.h"

namespace timeline {
namespace {

std::string trimmed(const std::string& text) {
    const auto begin = text.find_first_not_of(" \t\r"), end = text.find_last_not_of(" \t\r");
    return begin == text.npos ? "" : text.substr(begin, end - begin + 1);
}

// A finite number that is not negative, and nothing behind it.
std::optional<double> number(const std::string& text) {
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (text.empty() || *end || !std::isfinite(value) || value < 0) return std::nullopt;
    return value;
}

// The numbers of "a:b", "axb:c".
std::optional<std::vector<double>> numbers(const std::string& text, const char* separators) {
    std::vector<double> all;
    std::size_t begin = 0;
    for (const char* s = separators;; ++s) {
        const std::size_t end = *s ? text.find(*s, begin) : text.size();
        if (end == text.npos) return std::nullopt;
        const auto one = number(text.substr(begin, end - begin));
        if (!one) return std::nullopt;
        all.push_back(*one);
        begin = end + 1;
        if (!*s) return all;
    }
}

std::string text(double value) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.4g", value);
    return buffer;
}

// What a line may say: how it is read, with false for a value that makes no sense, and written.
struct Field {
    const char *section, *key;
    const char* wants;
    std::function<bool(Machine&, const std::string&)> read;
    std::function<std::string(const Machine&)> write;
};

Field name(const char* section, const char* key, std::string Machine::*member) {
    return {section, key, "a name",
            [=](Machine& m, const std::string& value) {
                m.*member = value;
                return !value.empty();
            },
            [=](const Machine& m) { return m.*member; }};
}
Field figure(const char* section, const char* key, double Machine::*member, bool mayBeZero) {
    return {section, key, mayBeZero ? "a number that is not negative" : "a number above 0",
            [=](Machine& m, const std::string& value) {
                const auto n = number(value);
                if (n) m.*member = *n;
                return n && (mayBeZero || *n > 0);
            },
            [=](const Machine& m) { return text(m.*member); }};
}
Field positive(const char* section, const char* key, double Machine::*member) {
    return figure(section, key, member, false);
}
Field time(const char* section, const char* key, double Machine::*member) {
    return figure(section, key, member, true);
}
Field bySize(const char* section, const char* key, BySize Machine::*member, bool mayBeZero) {
    return {section, key, "SIZE:NUMBER ..., by rising sizes",
            [=](Machine& m, const std::string& value) {
                auto& points = (m.*member).points;
                points.clear();
                std::istringstream in(value);
                for (std::string word; in >> word;) {
                    const auto pair = numbers(word, ":");
                    if (!pair || !((*pair)[0] > 0) || (!mayBeZero && !((*pair)[1] > 0)))
                        return false;
                    if (!points.empty() && (*pair)[0] < points.back().first) return false;
                    points.emplace_back((*pair)[0], (*pair)[1]);
                }
                return !points.empty();
            },
            [=](const Machine& m) {
                std::string all;
                for (const auto& [size, value] : (m.*member).points)
                    all += (all.empty() ? "" : " ") + text(size) + ":" + text(value);
                return all;
            }};
}
Field tiles(const char* section, const char* key, std::vector<Tile> Machine::*member) {
    return {section, key, "ROWSxCOLUMNS:PART ...",
            [=](Machine& m, const std::string& value) {
                (m.*member).clear();
                std::istringstream in(value);
                for (std::string word; in >> word;) {
                    const auto n = numbers(word, "x:");
                    if (!n || std::any_of(n->begin(), n->end(), [](double x) { return x <= 0; }))
                        return false;
                    (m.*member).push_back({(*n)[0], (*n)[1], (*n)[2]});
                }
                return !(m.*member).empty();
            },
            [=](const Machine& m) {
                std::string all;
                for (const Tile& t : m.*member)
                    all += (all.empty() ? "" : " ") + text(t.rows) + "x" + text(t.columns) + ":" +
                           text(t.efficiency);
                return all;
            }};
}

const std::vector<Field>& fields() {
    using M = Machine;
    static const std::vector<Field> all{
        name("device", "name", &M::name),
        positive("device", "capability", &M::capability),
        positive("device", "memory", &M::memory),
        positive("device", "processors", &M::processors),
        time("device", "shares_memory", &M::sharesMemory),
        bySize("memory", "bandwidth", &M::bandwidth, false),
        bySize("memory", "latency", &M::latency, true),
        time("kernels", "start", &M::kernelStart),
        time("kernels", "gap", &M::kernelGap),
        time("kernels", "lanes", &M::kernelLanes),
        time("kernels", "least", &M::kernelLeast),
        positive("kernels", "efficiency", &M::kernelEfficiency),
        positive("kernels", "operations", &M::kernelOperations),
        bySize("kernels", "meeting", &M::meeting, true),
        time("products", "start", &M::productStart),
        positive("products", "single", &M::productSingle),
        positive("products", "double", &M::productDouble),
        tiles("products", "tiles", &M::productTiles),
        time("products", "depth", &M::productDepth),
        time("products", "split", &M::productSplit),
        time("products", "exposed", &M::productExposed),
        positive("products", "vector_efficiency", &M::vectorEfficiency),
        time("solves", "row", &M::solveRow),
        positive("solves", "single", &M::solveSingle),
        positive("solves", "double", &M::solveDouble),
        time("solves", "vector_row", &M::solveVectorRow),
        time("host", "launch", &M::launch),
        time("host", "big_launch", &M::bigLaunch),
        time("host", "product", &M::product),
        time("host", "copy", &M::copy),
        time("host", "latency", &M::latencyOfCall),
        time("host", "synchronize", &M::synchronize),
        time("host", "scale", &M::hostScale),
        time("allocation", "device", &M::allocate),
        time("allocation", "device_byte", &M::allocateByte),
        time("allocation", "page_locked", &M::allocateHost),
        time("allocation", "kept", &M::keptPart),
        positive("copies", "page_locked", &M::locked),
        time("copies", "page_locked_start", &M::lockedStart),
        positive("copies", "pageable", &M::pageable),
        time("copies", "pageable_start", &M::pageableStart),
        positive("copies", "staged_from", &M::stagedFrom),
        positive("copies", "staged_threads", &M::stagedThreads),
        time("panels", "start", &M::panelStart),
        positive("panels", "tall", &M::panelRows),
        bySize("panels", "lu", &M::lu, false),
        bySize("panels", "lu_tall", &M::luTall, false),
        bySize("panels", "qr", &M::qr, false),
        bySize("panels", "qr_tall", &M::qrTall, false),
        positive("panels", "bidiagonal", &M::bidiagonal),
    };
    return all;
}

}  // namespace

double BySize::at(double size) const {
    const auto after = std::find_if(points.begin(), points.end(),
                                    [&](const auto& point) { return point.first > size; });
    if (after == points.begin()) return after->second;
    const auto before = std::prev(after);
    if (after == points.end()) return before->second;
    const double along = std::log(size / before->first) / std::log(after->first / before->first);
    return before->second * std::pow(after->second / before->second, along);
}

Machine readMachine(const std::string& file, const std::string& contents) {
    Machine machine{};
    machine.file = file;
    std::map<const Field*, int> seen;
    std::istringstream in(contents);
    std::string line, section;
    for (int n = 1; std::getline(in, line); ++n) {
        const auto refuse = [&, n](const std::string& what) {
            std::string refusal = file;
            refusal.append(", line ").append(std::to_string(n)).append(": ").append(what);
            throw std::runtime_error(refusal);
        };
        const auto semicolon = line.find(';');
        const std::string source =
            semicolon == line.npos ? "" : trimmed(line.substr(semicolon + 1));
        const std::string statement = trimmed(line.substr(0, semicolon));
        if (statement.empty() || statement.front() == '#') continue;
        if (statement.front() == '[') {
            if (statement.back() != ']') refuse("a section is [NAME]");
            section = trimmed(statement.substr(1, statement.size() - 2));
            continue;
        }
        const auto equals = statement.find('=');
        if (equals == statement.npos) refuse("neither [SECTION] nor KEY = VALUE ; SOURCE");
        const std::string key = trimmed(statement.substr(0, equals)),
                          value = trimmed(statement.substr(equals + 1));
        const auto& all = fields();
        const auto field = std::find_if(all.begin(), all.end(), [&](const Field& f) {
            return section == f.section && key == f.key;
        });
        if (field == all.end()) refuse(key + " is no figure of this section");
        if (seen[&*field]++) refuse(key + " stands here a second time");
        if (!field->read(machine, value)) refuse(key + " is " + field->wants);
        if (source.empty())
            refuse(key + " has no source: say where it is from, or that it is assumed, behind a ;");
    }
    for (const Field& field : fields()) {
        if (seen.count(&field)) continue;
        std::string refusal = file;
        refusal.append(": [").append(field.section).append("] ").append(field.key);
        throw std::runtime_error(refusal.append(" is missing"));
    }
    return machine;
}

std::vector<Figure> figuresOf(const Machine& machine) {
    std::vector<Figure> all;
    for (const Field& field : fields())
        all.push_back({field.section, field.key, field.write(machine)});
    return all;
}

}  // namespace timeline
