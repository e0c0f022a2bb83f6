// The results that a routine ends with before its time, and the helpers that raise them.
#pragma once

#include "lumo.h"

namespace lumo {

// A result in LAPACK's sense: bad argument, bad data. Not a std::exception, so that no handler
// for those takes it for a failure of the machine.
class InfoException {
  public:
    InfoException(int info, lumoStatus status) : info_(info), status_(status) {}
    int info() const { return info_; }
    lumoStatus status() const { return lumoStatus(status_); }

  private:
    int info_;
    int status_;
};

// A combination of options that is not implemented.
class FeatNotImplException {};

// `info` is minus the argument's 1-based position.
[[noreturn]] void throwArgumentError(int info);
// `info` is a positive position in the data.
[[noreturn]] void throwDataError(int info);
// LAPACK's info: an argument error below 1 (0 included), else a data error.
[[noreturn]] void throwLapackInfo(int info);
[[noreturn]] void throwFeatureNotImplemented();
// The info of a CPU LAPACK routine: positive is a data error; negative means that this library
// called it wrongly, a runtime error.
void checkReturnedInfo(int info);

}  // namespace lumo
