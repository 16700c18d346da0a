#pragma once

#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

// While one lives, calls of an imported function from this executable go to `kReplacement`, which calls the
// system's by `ImportHook<kReplacement>::system`. On one thread; ends the process if nothing here imports it.
template <auto* kReplacement>
class ImportHook {
 public:
  explicit ImportHook(const char* function) : slot_(Slot(function)) {
    system = reinterpret_cast<decltype(system)>(Exchange(reinterpret_cast<void*>(kReplacement)));
  }
  ~ImportHook() { Exchange(reinterpret_cast<void*>(system)); }
  ImportHook(const ImportHook&) = delete;
  ImportHook& operator=(const ImportHook&) = delete;

  static inline decltype(kReplacement) system = nullptr;

 private:
  // Where this executable keeps the address of an imported function.
  static void** Slot(const char* function) {
    auto* base = reinterpret_cast<BYTE*>(GetModuleHandleW(nullptr));
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const DWORD imports = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (auto* dll = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + imports); dll->Name != 0;
         ++dll) {
      const auto* names = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + dll->OriginalFirstThunk);
      auto* slots = reinterpret_cast<void**>(base + dll->FirstThunk);
      for (size_t i = 0; names[i].u1.AddressOfData != 0; ++i) {
        if (IMAGE_SNAP_BY_ORDINAL(names[i].u1.Ordinal)) continue;
        const auto* name = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + names[i].u1.AddressOfData);
        if (std::strcmp(reinterpret_cast<const char*>(name->Name), function) == 0) return &slots[i];
      }
    }
    std::fprintf(stderr, "this executable does not import %s\n", function);
    std::abort();
  }

  void* Exchange(void* address) {
    DWORD protection = 0;
    VirtualProtect(slot_, sizeof(*slot_), PAGE_READWRITE, &protection);
    void* old = *slot_;
    *slot_ = address;
    VirtualProtect(slot_, sizeof(*slot_), protection, &protection);
    return old;
  }

  void** slot_;
};
