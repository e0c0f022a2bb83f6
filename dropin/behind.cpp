#include "dropin/behind.h"

#include <dlfcn.h>

#include <cstring>
#include <vector>

#include "dropin/detach.h"

namespace lumo::dropin {
namespace {

bool isOurs(const void* function) {
    static const link_map* const us = objectOf(reinterpret_cast<const void*>(&isOurs));
    return objectOf(function) == us;
}

void keepLoaded(const link_map* object) {
    if (!object) return;
    if (void* handle = dlopen(object->l_name, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE))
        dlclose(handle);
}

int addFile(dl_phdr_info* info, std::size_t, void* files) {
    static_cast<std::vector<std::string>*>(files)->push_back(info->dlpi_name);
    return 0;
}

// A caller need not be linked with what it calls: it may have a pointer to the function of another
// object that ends by calling this one, so that the return address is not that object's.
void* reachedFromAnyone(const char* name) {
    std::vector<std::string> files;
    dl_iterate_phdr(addFile, &files);
    for (const std::string& file : files)
        if (void* function = reachedFrom(file, name)) return function;
    return nullptr;
}

// LAPACKE is a library of its own on most systems, and the program that calls it may have found
// this one first and loaded no other.
void* lapackeFunction(const char* name) {
    if (std::strncmp(name, "LAPACKE_", 8) != 0) return nullptr;
    static void* const library = dlopen("liblapacke.so.3", RTLD_NOW | RTLD_LOCAL);
    if (!library) return nullptr;
    detach();  // its calls are not to come here
    return dlsym(library, name);
}

}  // namespace

const link_map* objectOf(const void* address) {
    dl_find_object found;
    return _dl_find_object(const_cast<void*>(address), &found) == 0 ? found.dlfo_link_map : nullptr;
}

void* next(const char* name) {
    return dlsym(RTLD_NEXT, name);
}

void* reachedFrom(const std::string& file, const char* name) {
    void* const handle = dlopen(file.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (!handle) return nullptr;
    void* const function = dlsym(handle, name);
    dlclose(handle);
    return function && !isOurs(function) ? function : nullptr;
}

void* behind(const char* name, const void* caller) {
    if (void* function = next(name)) return function;
    const link_map* const object = objectOf(caller);
    void* function = object ? reachedFrom(object->l_name, name) : nullptr;
    if (!function) function = reachedFromAnyone(name);
    if (!function) function = lapackeFunction(name);
    if (function) {
        keepLoaded(object);
        keepLoaded(objectOf(function));
    }
    return function;
}

}  // namespace lumo::dropin
