#include "dropin/symbol.h"

#include <dlfcn.h>

#include <algorithm>

#include "dropin/crossover.h"
#include "dropin/detach.h"

namespace lumo::dropin {
namespace {

// The symbols that have been called.
std::atomic<Symbol*>& first() {
    static std::atomic<Symbol*> symbol{nullptr};
    return symbol;
}

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

}  // namespace

std::vector<const Symbol*> Symbol::called() {
    std::vector<const Symbol*> all;
    for (const Symbol* symbol = first(); symbol; symbol = symbol->next_) all.push_back(symbol);
    std::sort(all.begin(), all.end(),
              [](const Symbol* a, const Symbol* b) { return a->name() < b->name(); });
    return all;
}

Symbol::Symbol(std::string routine, std::string name)
    : routine_(std::move(routine)), name_(std::move(name)), cpu_(cpuFunction(name_)) {
    next_ = first();
    while (!first().compare_exchange_weak(next_, this)) {
    }
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
