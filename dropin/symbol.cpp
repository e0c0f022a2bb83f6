#include "dropin/symbol.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <numeric>

#include "dropin/behind.h"
#include "dropin/crossover.h"

namespace lumo::dropin {
namespace {

// The symbols that have been called.
std::atomic<Symbol*>& first() {
    static std::atomic<Symbol*> symbol{nullptr};
    return symbol;
}

}  // namespace

std::vector<const Symbol*> Symbol::called() {
    std::vector<const Symbol*> all;
    for (const Symbol* symbol = first(); symbol; symbol = symbol->nextCalled_)
        all.push_back(symbol);
    std::sort(all.begin(), all.end(),
              [](const Symbol* a, const Symbol* b) { return a->name() < b->name(); });
    return all;
}

Symbol::Symbol(const char* routine, std::initializer_list<const char*> name)
    : routine_(routine),
      name_(std::accumulate(name.begin(), name.end(), std::string())),
      next_(dropin::next(name_.c_str())) {
    nextCalled_ = first();
    while (!first().compare_exchange_weak(nextCalled_, this)) {
    }
}

// A few objects call a symbol, often; a list that only grows needs no lock. That two threads find
// the same is no harm.
void* Symbol::cpu(const void* caller) {
    if (next_) return next_;
    const void* const object = objectOf(caller);
    for (const Reached* r = reached_.load(std::memory_order_acquire); r; r = r->next)
        if (r->object == object) return r->function;
    void* const function = behind(name_.c_str(), caller);
    if (!function) return nullptr;
    auto* const found = new Reached{object, function, reached_};
    while (!reached_.compare_exchange_weak(found->next, found, std::memory_order_release)) {
    }
    return function;
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

void Passage::complainOfNoCpu() const {
    std::fprintf(stderr, "lumo: %s is not for Lumo, and there is no other\n",
                 symbol_.name().c_str());
}

void Passage::endWithoutCpu() const {
    complainOfNoCpu();
    std::abort();
}

}  // namespace lumo::dropin
