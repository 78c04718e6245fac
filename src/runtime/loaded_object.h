// The file name of the loaded object whose segments hold an address: the
// dynamic linker's record of it ("" for the main program), or null if no object
// holds it. Found by the objects' loaded segments rather than by dladdr, which
// scans every dynamic symbol of the object for the nearest one: thousands in
// this library and in OpenBLAS, on every lookup.
#pragma once

#include <link.h>
#include <stdint.h>

namespace qnl {

inline const char* loaded_object_name(const void* address) {
  struct Find {
    uintptr_t at;
    const char* name;
  } find{reinterpret_cast<uintptr_t>(address), nullptr};
  if (!address) return nullptr;
  dl_iterate_phdr(
      [](dl_phdr_info* object, size_t, void* data) {
        auto& f = *static_cast<Find*>(data);
        for (int i = 0; i < object->dlpi_phnum; ++i) {
          const ElfW(Phdr)& p = object->dlpi_phdr[i];
          const uintptr_t lo = object->dlpi_addr + p.p_vaddr;
          if (p.p_type == PT_LOAD && f.at >= lo && f.at - lo < p.p_memsz) {
            f.name = object->dlpi_name ? object->dlpi_name : "";
            return 1;
          }
        }
        return 0;
      },
      &find);
  return find.name;
}

}  // namespace qnl
