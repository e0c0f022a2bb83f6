#include "output_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

namespace lumo {
namespace fs = std::filesystem;

// The signals' handler, which may run in any thread at any time, reads a list that only grows.
struct OutputFile::Unfinished {
    const std::string file;
    Unfinished* const before;
    std::atomic<bool> exists{true};
    static inline std::atomic<Unfinished*> last{nullptr};
};

void OutputFile::removeUnfinished(int signal) {
    for (const Unfinished* part = Unfinished::last; part; part = part->before)
        if (part->exists) unlink(part->file.c_str());
    // Not before: a second signal must not end the program in between.
    std::signal(signal, SIG_DFL);
    raise(signal);
}

OutputFile::Unfinished* OutputFile::note(const std::string& file) {
    if (!Unfinished::last)
        for (const int signal : {SIGHUP, SIGINT, SIGPIPE, SIGTERM}) {
            struct sigaction action = {};
            if (sigaction(signal, nullptr, &action) || action.sa_handler != SIG_DFL) continue;
            action.sa_handler = removeUnfinished;
            sigaction(signal, &action, nullptr);
        }
    return Unfinished::last = new Unfinished{file, Unfinished::last};
}

void checkIsFileOrNew(const std::string& file) {
    std::error_code ignored;
    if (fs::exists(file, ignored) && !fs::is_regular_file(file, ignored))
        throw FileError(file + ": exists and is not a file");
}

OutputFile::OutputFile(const std::string& file) : name_(file), out_(&buffer_) {
    int descriptor = -1;
    if (file == "-") {
        std::fflush(stdout);
        descriptor = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
        if (descriptor >= 0) dup2(STDERR_FILENO, STDOUT_FILENO);
    } else {
        checkIsFileOrNew(file);
        std::error_code error;
        target_ = fs::weakly_canonical(file, error);  // not to replace a link by the file
        if (error) throw FileError(file + ": " + error.message());
        static int count = 0;
        temporary_ = note(target_.string() + "." + std::to_string(getpid()) + "." +
                          std::to_string(++count) + ".part");
        // A name with this process's number can only be left over.
        unlink(temporary_->file.c_str());
        descriptor = open(temporary_->file.c_str(),
                          O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
        temporary_->exists = descriptor >= 0;
    }
    if (descriptor < 0) throw FileError(file + ": " + std::strerror(errno));
    buffer_ = __gnu_cxx::stdio_filebuf<char>(descriptor, std::ios::out | std::ios::binary);
}

OutputFile::~OutputFile() {
    if (temporary_ && temporary_->exists.exchange(false)) unlink(temporary_->file.c_str());
}

void OutputFile::close() {
    if (!buffer_.is_open()) return;
    errno = 0;
    const bool good = out_.good();
    if (!buffer_.close() || !good)
        throw FileError(name_ + ": cannot be written: " + std::strerror(errno ? errno : EIO));
}

void OutputFile::commit() {
    close();
    if (!temporary_) return;
    std::error_code error;
    fs::rename(temporary_->file, target_, error);
    if (error) throw FileError(name_ + ": " + error.message());
    temporary_->exists = false;
}

void deliver(OutputFile& file) {
    file.commit();
    std::printf("written: %s\n", file.name().c_str());
}

std::unique_ptr<OutputFile> openOutput(const std::string& file) {
    return file.empty() ? nullptr : std::make_unique<OutputFile>(file);
}

}  // namespace lumo
