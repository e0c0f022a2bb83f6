#include "platform/software/panel_width.h"
#include "platform/timeline/blas.h"
#include "platform/timeline/panels.h"

namespace timeline {

#include "platform/make_table.inc"

int cublasInit() {
    state().cublasReady = true;
    return CUBLAS_STATUS_SUCCESS;
}

int cublasShutdown() {
    State& s = state();
    s.cublasReady = false;
    return s.joined() ? releaseKept() : CUBLAS_STATUS_SUCCESS;
}

int cublasGetError() {
    const int error = state().cublasError;
    state().cublasError = CUBLAS_STATUS_SUCCESS;
    return error;
}

int cublasSetKernelStream(platform::Stream stream) {
    state().blasStream = stream;
    return CUBLAS_STATUS_SUCCESS;
}

const platform::Table& table() {
    static const platform::Table instance = [] {
        platform::Table t = makeTable("timeline");
        t.luPanel = luPanel;
        t.qrPanel = qrPanel;
        t.choleskyBlock = choleskyBlock;
        t.qrTail = qrTail;
        t.bidiagonalTail = bidiagonalTail;
        t.luSystem = luSystem;
        t.eigenproblem = eigenproblem;
        t.svd = svd;
        t.dividedSvd = dividedSvd;
        t.panelWidth = [](platform::Panel kind, char type, int m, int n) {
            const State& s = state();
            return s.joined() ? software::widthOfPanel(kind, type, m, n, int(s.machine.processors))
                              : 0;
        };
        t.sharesMemory = [] { return int(state().joined()); };
        return t;
    }();
    return instance;
}

}  // namespace timeline
