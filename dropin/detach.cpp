#include "dropin/detach.h"

#include <elf.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "dropin/behind.h"
#include "lumo.h"

#if !defined(__x86_64__) || !defined(__linux__)
#error "The relocations below are those of Linux on x86-64."
#endif

// The names of the exported symbols, one string after the other, put together by LUMO_EXPORT.
extern "C" const char __start_lumo_exports[], __stop_lumo_exports[];

namespace lumo::dropin {
namespace {

const std::unordered_set<std::string_view>& exportedNames() {
    static const auto& names = *new auto([] {
        std::unordered_set<std::string_view> all;
        for (const char* name = __start_lumo_exports; name < __stop_lumo_exports;)
            name += all.emplace(name).first->size() + 1;
        return all;
    }());
    return names;
}

// An entry through which an object reaches one of the names.
struct Slot {
    void** entry;
    const char* name;
};

struct Object {
    std::string path;
    ElfW(Addr) base;
    std::vector<Slot> slots;
    ElfW(Addr) readOnlyFrom = 0, readOnlyTo = 0;  // after relocation
};

class Relocations {
  public:
    explicit Relocations(const ElfW(Dyn) * dynamic) {
        for (; dynamic->d_tag != DT_NULL; ++dynamic) at(dynamic->d_tag) = dynamic->d_un.d_val;
    }
    void findSlots(Object& object) const {
        findIn(DT_JMPREL, DT_PLTRELSZ, object);
        findIn(DT_RELA, DT_RELASZ, object);
    }

  private:
    ElfW(Addr) & at(ElfW(Sxword) tag) {
        static ElfW(Addr) other;
        return tag >= 0 && tag < known ? values_[tag] : other;
    }
    void findIn(int table, int size, Object& object) const {
        const auto* relocation = reinterpret_cast<const Elf64_Rela*>(values_[table]);
        const auto* symbols = reinterpret_cast<const Elf64_Sym*>(values_[DT_SYMTAB]);
        const auto* strings = reinterpret_cast<const char*>(values_[DT_STRTAB]);
        if (!relocation || !symbols || !strings) return;
        const auto* end = relocation + values_[size] / sizeof *relocation;
        for (; relocation < end; ++relocation) {
            const auto type = ELF64_R_TYPE(relocation->r_info);
            if (type != R_X86_64_JUMP_SLOT && type != R_X86_64_GLOB_DAT && type != R_X86_64_64)
                continue;
            const char* name = strings + symbols[ELF64_R_SYM(relocation->r_info)].st_name;
            if (exportedNames().count(name))
                object.slots.push_back(
                    {reinterpret_cast<void**>(object.base + relocation->r_offset), name});
        }
    }

    static constexpr int known = DT_JMPREL + 1;
    ElfW(Addr) values_[known] = {};
};

// dl_iterate_phdr calls this for every object, under the lock of the dynamic linker.
int collect(dl_phdr_info* info, std::size_t, void* objects) {
    // The program itself is a caller, whatever it defines; this library has nothing to detach.
    if (!*info->dlpi_name) return 0;
    Object object{info->dlpi_name, info->dlpi_addr, {}};
    const ElfW(Dyn)* dynamic = nullptr;
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const ElfW(Phdr)& header = info->dlpi_phdr[i];
        const ElfW(Addr) address = info->dlpi_addr + header.p_vaddr;
        if (header.p_type == PT_DYNAMIC) dynamic = reinterpret_cast<const ElfW(Dyn)*>(address);
        if (header.p_type == PT_GNU_RELRO) {
            object.readOnlyFrom = address;
            object.readOnlyTo = address + header.p_memsz;
        }
    }
    // The kernel's object has its addresses not yet relocated, and no calls.
    if (!dynamic || object.path.find("vdso") != std::string::npos) return 0;
    Relocations(dynamic).findSlots(object);
    if (!object.slots.empty()) static_cast<std::vector<Object>*>(objects)->push_back(object);
    return 0;
}

bool isIn(const Object& object, const void* function) {
    const link_map* const found = objectOf(function);
    return found && found->l_addr == object.base;
}

// Whether the object defines one of the names, and so is a CPU library, or is Lumo.
bool isDetached(const Object& object) {
    if (isIn(object, reinterpret_cast<const void*>(&lumoInitialize))) return true;
    const auto& names = exportedNames();
    return std::any_of(names.begin(), names.end(), [&](std::string_view name) {
        return isIn(object, reachedFrom(object.path, name.data()));  // or of what it depends on
    });
}

bool write(void** entry, void* target, const Object& object) {
    const auto address = ElfW(Addr)(entry);
    const bool readOnly = address >= object.readOnlyFrom && address < object.readOnlyTo;
    const auto size = ElfW(Addr)(sysconf(_SC_PAGESIZE));
    void* const page = reinterpret_cast<void*>(address / size * size);
    if (readOnly && mprotect(page, size, PROT_READ | PROT_WRITE) != 0) return false;
    __atomic_store_n(entry, target, __ATOMIC_RELEASE);
    if (readOnly) mprotect(page, size, PROT_READ);
    return true;
}

bool detachAll() {
    std::vector<Object> objects;
    dl_iterate_phdr(collect, &objects);
    for (const Object& object : objects) {
        if (!isDetached(object)) continue;
        for (const Slot& slot : object.slots) {
            void* target = next(slot.name);
            if (!target) target = reachedFrom(object.path, slot.name);
            if (!target || *slot.entry == target) continue;
            if (write(slot.entry, target, object)) continue;
            std::fprintf(stderr, "lumo: %s: %s; all calls are passed on\n", object.path.c_str(),
                         std::strerror(errno));
            return false;
        }
    }
    return true;
}

int countLoads(dl_phdr_info* info, std::size_t, void* count) {
    *static_cast<unsigned long long*>(count) = info->dlpi_adds;
    return 1;
}

struct Detached {
    std::atomic<unsigned long long> loads{0};  // of the process when it was last done
    std::mutex mutex;
    std::atomic<bool> possible{true};
};

[[gnu::constructor]] void start() {
    detach();
}

}  // namespace

bool detach() {
    static auto& state = *new Detached;
    unsigned long long loads = 0;
    dl_iterate_phdr(countLoads, &loads);
    if (state.loads == loads) return state.possible;
    const std::lock_guard<std::mutex> lock(state.mutex);
    if (state.loads == loads) return state.possible;
    if (state.possible) state.possible = detachAll();
    state.loads = loads;
    return state.possible;
}

}  // namespace lumo::dropin
