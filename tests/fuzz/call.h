// A random call of a function, the model of its argument checks, and the comparison of the two.
#pragma once

#include <climits>
#include <functional>
#include <memory>
#include <tuple>
#include <vector>

#include "blas/operations.h"
#include "fuzz.h"
#include "lumo_thread.h"
#include "support/machine.h"

namespace test {

// Decisions, drawn from the bytes of an input; the first option when they are used up.
class Choices {
  public:
    Choices(const std::uint8_t* data, std::size_t size) : at_(data), end_(data + size) {}
    unsigned below(std::size_t count) { return at_ < end_ ? *at_++ % unsigned(count) : 0; }
    int among(const std::vector<int>& options) { return options[below(options.size())]; }
    bool rarely() { return below(16) == 15; }

  private:
    const std::uint8_t *at_, *end_;
};

// An operand, or null, and its leading dimension.
template <class T>
struct Given {
    T* at;
    int ld;
};

inline bool taken(char letter, const std::string& letters) {
    return letter != '\0' && letters.find(letter) != std::string::npos;
}
inline char folded(char letter) {
    return char(std::toupper(static_cast<unsigned char>(letter)));
}

// The arguments are drawn one after the other, with their positions in the export. The checks are
// those of most functions: letters, then sizes, then leading dimensions, then null operands.
class Call {
  public:
    explicit Call(Choices& choices) : where(Interface(choices.below(2))), choices_(choices) {}

    const Interface where;
    int least = 1;            // leading dimension of nothing
    bool inOrder = false;     // checks by position alone
    bool unchecked = false;   // no argument is refused
    bool needsNulls = false;  // null operands are refused
    bool atRandom = false;    // the data may be refused, too

    char letter(int position, const std::string& options) {
        char letter = options[choices_.below(options.size())];
        if (choices_.rarely()) letter = char(choices_.below(256));
        if (choices_.rarely()) letter = char(std::tolower(static_cast<unsigned char>(letter)));
        refuse(0, position, !taken(folded(letter), options));
        return letter;
    }
    int size(int position) {
        const int size = choices_.rarely() ? choices_.among({-1, INT_MIN, INT_MAX, 100})
                                           : int(choices_.below(10));
        refuse(1, position, size < 0);
        return size;
    }
    template <class T>
    Given<T> matrix(int position, int rows, int columns, bool refusesNull = true) {
        int ld = std::max(rows, 0);
        if (ld < INT_MAX) ld += choices_.among({0, 0, 0, 1, 3, 2, 1, -1});
        if (choices_.rarely()) ld = choices_.among({0, -1, INT_MIN, INT_MAX});
        refuse(2, position + 1, ld < std::max(least, rows));
        return {operand<T>(position, rows, columns, ld, refusesNull), ld};
    }
    // Its memory ends with the last element if the leading dimension is the number of rows.
    template <class T>
    T* operand(int position, int rows, int columns = 1, int ld = 0, bool refusesNull = true) {
        const bool null = choices_.rarely();
        refuse(3, position, null && needsNulls && refusesNull);
        if (null) return nullptr;
        const auto clipped = [this](int size) {
            tooLarge_ = tooLarge_ || size > 128;
            return std::clamp(size, 1, 128);
        };
        const auto host = std::make_shared<Matrix<T>>(Matrix<T>::random(
            clipped(rows), clipped(columns), clipped(ld), unsigned(untouched_.size())));
        if (where == inHost) {
            untouched_.push_back([host, before = *host] { return *host == before; });
            return host->data.data();
        }
        const auto device = std::make_shared<OnDevice<T>>(*host);
        untouched_.push_back([host, device] { return device->download() == *host; });
        return device->data();
    }

    void refuse(int category, int position, bool bad) {
        const Outcome refused{inOrder ? 0 : category, position, lumoArgumentError};
        if (bad && !unchecked) outcome_ = std::min(outcome_, refused);
    }
    // What comes of it if no argument is refused.
    void expect(bool condition, lumoStatus status, int info) {
        if (condition) outcome_ = std::min(outcome_, Outcome{4, -info, status});
    }
    void nothingToDo() { tooLarge_ = false; }

    template <class Run>
    void run(const std::string& name, Run function) {
        const auto [category, position, status] = outcome_;
        if (tooLarge_ && category > 3) return;  // whatever the memory suffices for
        const lumoStatus actual = function();
        const int info = lumoGetErrorInfo();
        const std::string what = name + (where == inHost ? "" : " on the device") + ": ";
        const bool refused = atRandom && actual == lumoDataError && info > 0;
        require((actual == status && info == -position) || (refused && status == lumoNoError),
                what + "status " + std::to_string(actual) + ", info " + std::to_string(info) +
                    ", not " + std::to_string(status) + ", " + std::to_string(-position));
        require(lumoGetLastStatus() == actual && lumoGetThreadStatus() == actual &&
                    lumoGetThreadErrorInfo() == info,
                what + "the last status and info are these");
        for (const auto& untouched : untouched_)
            require(actual != lumoArgumentError || untouched(), what + "an operand is left alone");
        require(software::usage().violations == 0, what + "no access outside an operand");
    }

  private:
    Choices& choices_;
    using Outcome = std::tuple<int, int, lumoStatus>;  // category, position, status
    Outcome outcome_{5, 0, lumoNoError};
    std::vector<std::function<bool()>> untouched_;
    bool tooLarge_ = false;
};

}  // namespace test
