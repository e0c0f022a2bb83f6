#include "common/exceptions.h"

namespace lumo {

void throwArgumentError(int info) {
    throw InfoException(info, lumoArgumentError);
}

void throwDataError(int info) {
    throw InfoException(info, lumoDataError);
}

void throwLapackInfo(int info) {
    throw InfoException(info, info < 1 ? lumoArgumentError : lumoDataError);
}

void throwFeatureNotImplemented() {
    throw FeatNotImplException();
}

void checkReturnedInfo(int info) {
    if (info > 0) throw InfoException(info, lumoDataError);
    if (info < 0) throw InfoException(info, lumoRuntimeError);
}

}  // namespace lumo
