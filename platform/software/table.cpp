#include "platform/software/table.h"

#include "platform/error_texts.h"
#include "platform/software/device.h"
#include "platform/software/instruments.h"

namespace software {

int getLastError() {
    const int error = call("cudaGetLastError", takeLastError);
    takeLastError();  // call() has noted the error that is handed out here
    return error;
}

const char* errorText(int error) {
    return platform::errorText(error);
}

const platform::Table& table() {
    static const platform::Table instance = makeTable("software");
    return instance;
}

}  // namespace software
