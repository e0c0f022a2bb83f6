#include "platform/software/table.h"

#include "platform/error_texts.h"
#include "platform/host_lapack.h"
#include "platform/software/blas_matrices.h"
#include "platform/software/blas_vectors.h"
#include "platform/software/device.h"
#include "platform/software/instruments.h"
#include "platform/software/production.h"

namespace software {

#include "platform/make_table.inc"

int getLastError() {
    const int error = call("cudaGetLastError", takeLastError);
    takeLastError();  // call() has noted the error that is handed out here
    return error;
}

const char* getErrorString(int error) {
    return platform::errorText(error);
}

const platform::Table& table() {
    static const platform::Table instance = [] {
        platform::Table t = makeTable("software");
        platform::fillOptional(t, platform::PanelThreads::one);
        t.panelWidth = panelWidth;
        t.sharesMemory = sharesMemory;
        return t;
    }();
    return instance;
}

}  // namespace software
