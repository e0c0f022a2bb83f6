#include "dropin/symbol.h"

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <vector>

#include "dropin/crossover.h"
#include "dropin/detach.h"
#include "dropin/device.h"

namespace lumo::dropin {

// The symbols that have been called.
class Symbols {
  public:
    static void add(Symbol* symbol) {
        symbol->next_ = first();
        while (!first().compare_exchange_weak(symbol->next_, symbol)) {
        }
    }
    static std::vector<Symbol*> sorted() {
        std::vector<Symbol*> all;
        for (Symbol* symbol = first(); symbol; symbol = symbol->next_) all.push_back(symbol);
        std::sort(all.begin(), all.end(),
                  [](const Symbol* a, const Symbol* b) { return a->name() < b->name(); });
        return all;
    }

  private:
    static std::atomic<Symbol*>& first() {
        static std::atomic<Symbol*> symbol{nullptr};
        return symbol;
    }
};

namespace {

// LAPACKE is a library of its own on most systems, and the program that calls it may have found
// this one first and loaded no other.
void* lapackeFunction(const char* name) {
    static void* const library = dlopen("liblapacke.so.3", RTLD_NOW | RTLD_LOCAL);
    if (!library) return nullptr;
    detach();  // its calls are not to come here
    return dlsym(library, name);
}

void* cpuFunction(const std::string& name) {
    if (void* function = dlsym(RTLD_NEXT, name.c_str())) return function;
    return name.rfind("LAPACKE_", 0) == 0 ? lapackeFunction(name.c_str()) : nullptr;
}

const char* reportTarget() {
    const char* word = std::getenv("LUMO_REPORT");
    return word && *word && std::strcmp(word, "0") != 0 ? word : nullptr;
}

double seconds(const Symbol::Count& count) {
    return double(count.nanoseconds) * 1e-9;
}

void write(std::FILE* out) {
    std::fprintf(out, "lumo: process %d, device: %s\n", int(getpid()), deviceText().c_str());
    std::fprintf(out, "%-16s %10s %10s %10s %10s\n", "symbol", "served", "seconds", "passed on",
                 "seconds");
    for (const Symbol* symbol : Symbols::sorted())
        std::fprintf(out, "%-16s %10ld %10.4f %10ld %10.4f\n", symbol->name().c_str(),
                     symbol->served.calls.load(), seconds(symbol->served),
                     symbol->passedOn.calls.load(), seconds(symbol->passedOn));
}

// Written when the library's objects are destroyed. Programs that never called it, such as the
// shell that starts one, have nothing to report.
struct Report {
    ~Report() {
        const char* target = reportTarget();
        if (!target || Symbols::sorted().empty()) return;
        if (std::strcmp(target, "1") == 0) {
            write(stderr);
            return;
        }
        if (std::FILE* file = std::fopen(target, "a")) {
            write(file);
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

Symbol::Symbol(std::string routine, std::string name)
    : routine_(std::move(routine)), name_(std::move(name)), cpu_(cpuFunction(name_)) {
    Symbols::add(this);
}

bool Symbol::reached(double size) {
    if (!worthAsking(size)) return false;
    if (crossover_ < 0) crossover_ = crossoverOf(routine_);
    return size >= crossover_;
}

Passage::~Passage() {
    Symbol::Count& count = served_ ? symbol_.served : symbol_.passedOn;
    count.calls.fetch_add(1, std::memory_order_relaxed);
    if (start_ == Clock::time_point()) return;
    const std::chrono::nanoseconds time = Clock::now() - start_;
    count.nanoseconds.fetch_add(time.count(), std::memory_order_relaxed);
}

}  // namespace lumo::dropin
