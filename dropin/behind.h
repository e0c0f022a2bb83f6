// The functions behind the names that are taken over: those that a program would have reached
// without this library.
#pragma once

#include <link.h>

#include <string>

namespace lumo::dropin {

// The object that has this address, null if none has. Cheap, and takes no lock.
const link_map* objectOf(const void* address);

// What all of the process reaches: the next of that name after this library; null if there is none.
void* next(const char* name);

// What the object of that file reaches in itself and in the libraries that it was linked with. An
// extension of Python, and the BLAS that it brings along, are visible to themselves alone: next()
// does not see them, and two packages can bring a library each that have the same names.
void* reachedFrom(const std::string& file, const char* name);

// The function behind a name for the code at `caller`; null if there is none. It stays loaded, and
// so does the caller's object.
void* behind(const char* name, const void* caller);

}  // namespace lumo::dropin
