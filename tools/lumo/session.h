// The library from lumoInitialize to lumoShutdown, and its failures in words.
#pragma once

#include <string>

#include "lumo_thread.h"

namespace lumo {

// What a status and its info mean, as the library says it.
std::string describe(lumoStatus status, int info);

class Session {
  public:
    // Throws a std::runtime_error that says why the library cannot run.
    Session();
    ~Session() { lumoShutdown(); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // The device in use, as "GeForce (4 GB)".
    std::string device() const;
};

// A device as "GeForce (4 GB)".
std::string deviceText(int device);

}  // namespace lumo
