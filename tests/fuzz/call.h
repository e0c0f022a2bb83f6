// A random call of a routine, the model of its argument checks, and the comparison of the two.
#pragma once

#include <climits>
#include <cstring>
#include <memory>
#include <tuple>
#include <vector>

#include "blas/operations.h"
#include "fuzz.h"
#include "lumo_memory.h"
#include "lumo_thread.h"
#include "platform/software/control.h"

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

// An operand in memory that ends with its last element, or null; and its leading dimension.
template <class T>
struct Given {
    T* at = nullptr;
    int ld = 0;
};

inline bool taken(char letter, const std::string& letters) {
    return letter != '\0' && letters.find(letter) != std::string::npos;
}
inline char folded(char letter) {
    return char(std::toupper(static_cast<unsigned char>(letter)));
}

// The arguments are drawn one after the other, with their positions in the export. The checks are
// those of most routines: letters, then sizes, then leading dimensions, then null operands.
class Call {
  public:
    Call(Choices& choices, std::string name)
        : where(choices.below(2) ? inDevice : inHost), choices_(choices), name_(std::move(name)) {}
    ~Call() {
        for (Operand& o : operands_)
            if (o.onDevice) lumoDeviceFree(o.memory);
    }

    const Interface where;
    int least = 1;            // leading dimension of nothing
    bool inOrder = false;     // checks by position alone
    bool unchecked = false;   // no argument is refused
    bool needsNulls = false;  // null operands are refused
    bool computes = true;     // only in a registered thread

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
        int ld =
            rows == INT_MAX ? rows : std::max(rows, 0) + choices_.among({0, 0, 0, 1, 3, 2, 1, -1});
        if (choices_.rarely()) ld = choices_.among({0, -1, INT_MIN, INT_MAX});
        refuse(2, position + 1, ld < std::max(least, rows));
        return {vector<T>(position, rows, columns, ld, refusesNull), ld};
    }
    template <class T>
    T* vector(int position, int rows, int columns = 1, int ld = 1, bool refusesNull = true,
              bool anywhere = false) {
        const bool null = choices_.rarely();
        refuse(3, position, null && needsNulls && refusesNull);
        if (null) return nullptr;
        double length = 1;
        if (rows > 0 && columns > 0) length = std::max(double(ld), 1.0) * (columns - 1) + rows;
        tooLarge_ = tooLarge_ || length > mostElements;
        const bool onDevice = where == inDevice && !(anywhere && choices_.below(2));
        operands_.emplace_back(sizeof(T) * std::size_t(std::min(length, mostElements)), onDevice);
        return operands_.back().template fill<T>();
    }
    // Vectors of pivots lie where the caller likes.
    int* pivots(int position, int count) { return vector<int>(position, count, 1, 1, true, true); }

    void refuse(int category, int position, bool bad) {
        if (bad && !unchecked)
            worst_ = std::min(worst_, Outcome{inOrder ? 0 : category, position, lumoArgumentError});
    }
    // What comes of it if no argument is refused.
    void expect(bool condition, lumoStatus status, int info) {
        if (condition) worst_ = std::min(worst_, Outcome{4, -info, status});
    }
    void nothingToDo() { tooLarge_ = false; }

    template <class Run>
    void run(Run function) {
        auto [category, position, status] = worst_;
        if (tooLarge_ && status != lumoArgumentError) return;
        const bool leaves = computes && where == inHost && choices_.rarely();
        if (leaves) {
            lumoShutdown();
            std::tie(position, status) = std::make_tuple(0, lumoNotInitialized);
        }
        const lumoStatus actual = function();
        const int info = lumoGetThreadErrorInfo();
        require(actual == status && info == -position && lumoGetThreadStatus() == status,
                name_ + (where == inHost ? ": status " : " on the device: status ") +
                    std::to_string(actual) + ", info " + std::to_string(info) + ", not " +
                    std::to_string(status) + ", " + std::to_string(-position));
        // What needs initialisation leaves the shared info without it.
        require(leaves || lumoGetErrorInfo() == info, name_ + ": the last info is this one");
        if (leaves) require(lumoInitialize() == lumoNoError, "the library starts again");
        for (Operand& o : operands_)
            require((actual != lumoArgumentError && !leaves) || o.untouched(),
                    name_ + ": an operand is left alone");
        require(software::usage().violations == 0, name_ + ": no access outside an operand");
    }

  private:
    static constexpr double mostElements = 1 << 16;

    struct Operand {
        int bytes;
        bool onDevice;
        std::unique_ptr<char[]> host, before;
        void* memory = nullptr;

        Operand(std::size_t size, bool device)
            : bytes(int(size)), onDevice(device), host(new char[size]), before(new char[size]) {}
        // With numbers from -1 to 1, or ones.
        template <class T>
        T* fill() {
            static Random random;
            for (int at = 0; at < bytes; at += int(sizeof(T))) {
                T value(1);
                if constexpr (!std::is_same_v<T, int>) value = random.next<T>();
                std::memcpy(&host[at], &value, sizeof(T));
            }
            std::memcpy(before.get(), host.get(), bytes);
            if (onDevice)
                require(!lumoDeviceMalloc(&memory, bytes) &&
                            !lumoDeviceSetMatrix(bytes, 1, 1, host.get(), bytes, memory, bytes),
                        "there is room on the device");
            return static_cast<T*>(onDevice ? memory : host.get());
        }
        bool untouched() {
            if (onDevice) lumoDeviceGetMatrix(bytes, 1, 1, memory, bytes, host.get(), bytes);
            return std::memcmp(host.get(), before.get(), bytes) == 0;
        }
    };

    Choices& choices_;
    const std::string name_;
    std::vector<Operand> operands_;
    using Outcome = std::tuple<int, int, lumoStatus>;  // category, position, status
    Outcome worst_{5, 0, lumoNoError};
    bool tooLarge_ = false;
};

}  // namespace test
