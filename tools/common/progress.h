// Shows that long work is alive: a line with the elapsed seconds on the standard error stream,
// from the first second on, and only if that stream is a terminal.
#pragma once

#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <string>
#include <thread>

namespace lumo {

class Progress {
  public:
    explicit Progress(std::string what) : what_(std::move(what)) {
        if (isatty(STDERR_FILENO)) thread_ = std::thread([this] { show(); });
    }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    // Erases the line.
    ~Progress() {
        if (!thread_.joinable()) return;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            done_ = true;
        }
        wake_.notify_one();
        thread_.join();
    }

  private:
    void show() {
        using namespace std::chrono;
        const auto start = steady_clock::now();
        const auto done = [this] { return done_; };
        std::unique_lock<std::mutex> lock(mutex_);
        if (wake_.wait_for(lock, seconds(1), done)) return;
        do {
            const duration<double> elapsed = steady_clock::now() - start;
            std::fprintf(stderr, "\r%s ... %.0f s", what_.c_str(), elapsed.count());
            std::fflush(stderr);
        } while (!wake_.wait_for(lock, milliseconds(500), done));
        std::fputs("\r\033[K", stderr);
        std::fflush(stderr);
    }

    std::string what_;
    std::mutex mutex_;
    std::condition_variable wake_;
    bool done_ = false;
    std::thread thread_;
};

}  // namespace lumo
