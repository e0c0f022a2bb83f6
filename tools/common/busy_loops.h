// A busy machine, to measure on: processes that compute for nothing.
#pragma once

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>
#include <vector>

namespace lumo {

// So many of them while this lives. They end with the calling thread, however that ends.
class BusyLoops {
  public:
    explicit BusyLoops(int count) {
        const pid_t parent = getpid();
        for (int i = 0; i < count; ++i) {
            const pid_t child = fork();
            if (child == 0) spin(parent);
            if (child < 0) {
                stop();
                throw std::runtime_error("cannot start a process to load the machine with");
            }
            children_.push_back(child);
        }
    }
    ~BusyLoops() { stop(); }
    BusyLoops(const BusyLoops&) = delete;
    BusyLoops& operator=(const BusyLoops&) = delete;

  private:
    [[noreturn]] static void spin(pid_t parent) {
        for (int s : {SIGINT, SIGTERM, SIGHUP}) signal(s, SIG_DFL);
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent) _exit(0);
        for (volatile unsigned long n = 0;;) n = n + 1;
    }
    void stop() {
        for (const pid_t child : children_) kill(child, SIGKILL);
        for (const pid_t child : children_) waitpid(child, nullptr, 0);
        children_.clear();
    }

    std::vector<pid_t> children_;
};

}  // namespace lumo
