#include "dropin/report.h"

#include <fcntl.h>
#include <link.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "dropin/device.h"
#include "dropin/symbol.h"

namespace lumo::dropin {
namespace {

// A program with more rights than its caller writes no file for it.
const char* reportTarget() {
    const char* word = secure_getenv("LUMO_REPORT");
    return word && *word && std::strcmp(word, "0") != 0 ? word : nullptr;
}

bool namesCpuLibrary(std::string_view file) {
    file.remove_prefix(file.rfind('/') + 1);
    return file.find("blas") != file.npos || file.find("lapack") != file.npos;
}

// dl_iterate_phdr calls this for every object: ends at one that was linked with a BLAS or LAPACK
// and is none itself, nor the library that Lumo brings along.
int wantsCpuLibrary(dl_phdr_info* object, std::size_t, void*) {
    const std::string_view path = object->dlpi_name;
    if (namesCpuLibrary(path) || path.find("/liblumo.so") != path.npos) return 0;
    const ElfW(Dyn)* dynamic = nullptr;
    for (int i = 0; i < object->dlpi_phnum; ++i)
        if (object->dlpi_phdr[i].p_type == PT_DYNAMIC)
            dynamic = reinterpret_cast<const ElfW(Dyn)*>(object->dlpi_addr +
                                                         object->dlpi_phdr[i].p_vaddr);
    const char* strings = nullptr;
    for (const auto* entry = dynamic; entry && entry->d_tag != DT_NULL; ++entry)
        if (entry->d_tag == DT_STRTAB) strings = reinterpret_cast<const char*>(entry->d_un.d_ptr);
    for (const auto* entry = dynamic; entry && entry->d_tag != DT_NULL; ++entry)
        if (strings && entry->d_tag == DT_NEEDED && namesCpuLibrary(strings + entry->d_un.d_val))
            return 1;
    return 0;
}

double seconds(const Symbol::Count& count) {
    return double(count.nanoseconds) * 1e-9;
}

void write(std::FILE* out, const std::vector<const Symbol*>& called) {
    if (called.empty()) {
        std::fprintf(out, "lumo: process %d: called none of the symbols that Lumo serves\n",
                     int(getpid()));
        return;
    }
    std::fprintf(out, "lumo: process %d, device: %s\n", int(getpid()), deviceText().c_str());
    std::fprintf(out, "%-24s %10s %10s %10s %10s\n", "symbol", "served", "seconds", "passed on",
                 "seconds");
    for (const Symbol* symbol : called)
        std::fprintf(out, "%-24s %10ld %10.4f %10ld %10.4f\n", symbol->name().c_str(),
                     symbol->served.calls.load(), seconds(symbol->served),
                     symbol->passedOn.calls.load(), seconds(symbol->passedOn));
}

// Appends to a file, but not to one that a link leads to: who made it need not be who asked.
std::FILE* openReport(const char* file) {
    const int descriptor = open(file, O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0666);
    return descriptor < 0 ? nullptr : fdopen(descriptor, "a");
}

// Written when the library's objects are destroyed. Programs that neither called it nor want a BLAS
// at all, such as the shell that starts one, have nothing to report.
struct Report {
    ~Report() {
        const char* target = reportTarget();
        if (!target) return;
        const auto called = Symbol::called();
        if (called.empty() && !dl_iterate_phdr(wantsCpuLibrary, nullptr)) return;
        if (std::strcmp(target, "1") == 0) {
            write(stderr, called);
        } else if (std::FILE* file = openReport(target)) {
            write(file, called);
            std::fclose(file);
        } else {
            std::fprintf(stderr, "lumo: %s: %s\n", target, std::strerror(errno));
        }
    }
};
const Report report;

}  // namespace

bool reporting() {
    static const bool wanted = reportTarget() != nullptr;
    return wanted;
}

}  // namespace lumo::dropin
