// `lumo calibrate`: a machine file for `lumo predict`.
#include <ctime>
#include <set>

#include "calibration.h"
#include "commands.h"
#include "output_file.h"
#include "session.h"

namespace lumo {
namespace {

// What is not measured: what the device says, what the library does, what nobody has looked at.
std::string sourceOf(const std::string& key, const std::string& date) {
    static const std::set<std::string> told{"name", "capability", "memory", "processors",
                                            "shares_memory"};
    static const std::set<std::string> ours{"kept", "staged_from", "tall"};
    static const std::set<std::string> assumed{"gap",  "lanes", "least", "big_launch", "product",
                                               "copy", "scale", "tiles", "split"};
    if (told.count(key)) return "as the device says";
    if (ours.count(key)) return "what the library does";
    return (assumed.count(key) ? "assumed" : "measured by lumo calibrate, ") +
           (assumed.count(key) ? "" : date);
}

std::string today() {
    const std::time_t now = std::time(nullptr);
    char text[16];
    std::strftime(text, sizeof text, "%Y-%m-%d", std::gmtime(&now));
    return text;
}

}  // namespace

void calibrate(const CalibrateOptions& options) {
    const std::string target = options.file.empty() ? "-" : options.file;
    OutputFile file(target);
    const Session session;
    timeline::Machine machine = measuredMachine();
    if (!options.name.empty()) machine.name = options.name;
    std::string section;
    for (const timeline::Figure& figure : figuresOf(machine)) {
        if (figure.section != section)
            file.stream() << (section.empty() ? "" : "\n") << "[" << figure.section << "]\n";
        section = figure.section;
        file.stream() << figure.key << " = " << figure.value << "  ; "
                      << sourceOf(figure.key, today()) << "\n";
    }
    deliver(file);
}

}  // namespace lumo
