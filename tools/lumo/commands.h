// The commands of `lumo`. Their command lines are declared in main.cpp, the only file that includes
// the option parser: it takes longer to compile than all the rest. A command that fails throws.
#pragma once

#include <string>
#include <vector>

namespace lumo {

void showInfo();

struct SystemFiles {
    std::string a, b, x;    // the matrix, the right-hand sides, the solution if wanted
    std::string precision;  // s, d or, of solve, mixed; the files' if empty
    bool anyRank = false;   // of lstsq: by singular values
};
void solve(const SystemFiles& files);
void lstsq(const SystemFiles& files);

struct BenchOptions {
    std::vector<std::string> routines;  // as "sgemm"; all if empty
    int load = 0;
    std::string json, plot;  // files, if wanted
    int largest = 2048;      // order of the problems
};
void bench(const BenchOptions& options);

struct TuneOptions {
    std::vector<std::string> routines;  // as "sgemm"; all if empty
    std::string file;                   // the usual one if empty
    int largest = 4096;                 // order of the problems
};
void tune(const TuneOptions& options);

struct PredictOptions {
    std::vector<std::string> routines;  // as "sgetrf"
    std::vector<int> sizes;             // orders of the problems
    std::string machine = "h100";       // a name, or a file
    bool device = false;                // operands in device memory
    bool values = false;                // singular values alone
    std::string against;                // "cpu", or empty
    std::string json, plot;             // files, if wanted
};
void predict(const PredictOptions& options);

struct CalibrateOptions {
    std::string file;  // the standard output if empty
    std::string name;  // the device's own if empty
};
void calibrate(const CalibrateOptions& options);

struct SvdTask {
    std::string a;           // a matrix or an image
    std::vector<int> ranks;  // of the approximations that are wanted
    std::string prefix;      // how the names of the written files begin; empty for none
    bool compare = false;    // with the CPU LAPACK
    std::string precision;   // s or d; the file's if empty
};
void svd(SvdTask task);

struct EighTask {
    std::string a;          // a symmetric or Hermitian matrix
    std::string prefix;     // how the names of the written files begin; empty for none
    bool values = false;    // without vectors
    bool compare = false;   // with the CPU LAPACK
    std::string precision;  // s or d; the file's if empty
};
void eigh(const EighTask& task);

}  // namespace lumo
