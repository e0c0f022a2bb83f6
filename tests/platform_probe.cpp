// Tells, on one line, which platform was chosen and how the library fares on it.
#include <cstdio>
#include <utility>

#include "lumo.h"
#include "platform/cuda3.h"

int main() {
    int count = -1;
    const lumoStatus counted = lumoGetDeviceCount(&count);
    const int countInfo = lumoGetErrorInfo();
    const lumoStatus initialized = lumoInitialize();
    const int info = lumoGetErrorInfo();
    std::printf("[%s] (%s) count %d: status %d info %d, initialize: status %d info %d\n",
                platform::choice().table->name, platform::choice().reason, count, counted,
                countInfo, initialized, info);
    char words[300];
    for (auto [status, itsInfo] : {std::pair{counted, countInfo}, {initialized, info}})
        if (lumoGetErrorInfoString(status, itsInfo, words, sizeof words) == lumoNoError)
            std::printf("%s\n", words);
    lumoShutdown();
}
