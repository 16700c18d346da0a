#include "testing/stand_ins/ntfs_win.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "base/lower_case.h"

namespace {

StandInNtfs* g_ntfs = nullptr;

// Where this executable keeps the address of an imported function.
void** ImportSlot(const char* function) {
  auto* base = reinterpret_cast<BYTE*>(GetModuleHandleW(nullptr));
  const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
  const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
  const DWORD imports = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
  for (auto* dll = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + imports); dll->Name != 0; ++dll) {
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

void* Exchange(const char* function, void* address) {
  void** slot = ImportSlot(function);
  DWORD protection = 0;
  VirtualProtect(slot, sizeof(*slot), PAGE_READWRITE, &protection);
  void* old = *slot;
  *slot = address;
  VirtualProtect(slot, sizeof(*slot), protection, &protection);
  return old;
}

// A function of the system that is replaced while a StandInNtfs lives.
template <typename Function>
struct Hook {
  const char* name;
  Function* replacement;
  Function* system = nullptr;

  void Set() { system = reinterpret_cast<Function*>(Exchange(name, reinterpret_cast<void*>(replacement))); }
  void Restore() { Exchange(name, reinterpret_cast<void*>(system)); }
};

std::wstring Extended(const std::wstring& canonical) {
  return LR"(\\?\)" + canonical;
}

}  // namespace

struct StandInNtfs::Hooks {
  static HANDLE WINAPI FindFirst(const wchar_t* path, WIN32_FIND_DATAW* entry) {
    const std::wstring real = g_ntfs->Resolve(path, false);
    const HANDLE find = find_first.system(Extended(real).c_str(), entry);
    if (find == INVALID_HANDLE_VALUE) return find;
    g_ntfs->listings_[find] = real.substr(0, real.rfind(L'\\') + 1);
    g_ntfs->Adjust(g_ntfs->listings_[find], *entry);
    return find;
  }
  static BOOL WINAPI FindNext(HANDLE find, WIN32_FIND_DATAW* entry) {
    if (!find_next.system(find, entry)) return FALSE;
    g_ntfs->Adjust(g_ntfs->listings_[find], *entry);
    return TRUE;
  }
  static HANDLE WINAPI Create(const wchar_t* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                              DWORD disposition, DWORD flags, HANDLE pattern) {
    const std::wstring real = g_ntfs->Resolve(path, (flags & FILE_FLAG_OPEN_REPARSE_POINT) == 0);
    const HANDLE file =
        create_file.system(Extended(real).c_str(), access, share, security, disposition, flags, pattern);
    g_ntfs->open_links_.erase(file);
    if (g_ntfs->links_.contains(real)) g_ntfs->open_links_.insert(file);
    return file;
  }
  static BOOL WINAPI Information(HANDLE file, FILE_INFO_BY_HANDLE_CLASS kind, void* information, DWORD size) {
    if (kind == FileAttributeTagInfo) {  // not every file system of Windows answers it
      SetLastError(ERROR_INVALID_PARAMETER);
      return FALSE;
    }
    if (!get_information.system(file, kind, information, size)) return FALSE;
    if (kind == FileBasicInfo && g_ntfs->open_links_.contains(file))
      static_cast<FILE_BASIC_INFO*>(information)->FileAttributes |= FILE_ATTRIBUTE_REPARSE_POINT;
    return TRUE;
  }
  static BOOL WINAPI Delete(const wchar_t* path) {
    const std::wstring real = g_ntfs->Resolve(path, false);
    if (!delete_file.system(Extended(real).c_str())) return FALSE;
    g_ntfs->links_.erase(real);
    return TRUE;
  }
  static BOOL WINAPI Remove(const wchar_t* path) {
    const std::wstring real = g_ntfs->Resolve(path, false);
    if (g_ntfs->read_only_folders_.contains(real)) {
      SetLastError(ERROR_ACCESS_DENIED);
      return FALSE;
    }
    if (remove_directory.system(Extended(real).c_str())) {
      g_ntfs->links_.erase(real);
      return TRUE;
    }
    const DWORD error = GetLastError();
    if (const auto swap = g_ntfs->swaps_.find(real); swap != g_ntfs->swaps_.end()) {
      g_ntfs->links_[real] = {swap->second, IO_REPARSE_TAG_MOUNT_POINT, false};
      g_ntfs->swaps_.erase(swap);
    }
    SetLastError(error);
    return FALSE;
  }
  static BOOL WINAPI SetAttributes(const wchar_t* path, DWORD attributes) {
    const std::wstring real = g_ntfs->Resolve(path, false);
    const DWORD present = GetFileAttributesW(Extended(real).c_str());
    if (present == INVALID_FILE_ATTRIBUTES || (present & FILE_ATTRIBUTE_DIRECTORY) == 0)
      return set_attributes.system(Extended(real).c_str(), attributes);
    if ((attributes & FILE_ATTRIBUTE_READONLY) != 0)
      g_ntfs->read_only_folders_.insert(real);
    else
      g_ntfs->read_only_folders_.erase(real);
    return TRUE;
  }

  static inline Hook<decltype(FindFirst)> find_first = {"FindFirstFileW", FindFirst};
  static inline Hook<decltype(FindNext)> find_next = {"FindNextFileW", FindNext};
  static inline Hook<decltype(Create)> create_file = {"CreateFileW", Create};
  static inline Hook<decltype(Information)> get_information = {"GetFileInformationByHandleEx", Information};
  static inline Hook<decltype(Delete)> delete_file = {"DeleteFileW", Delete};
  static inline Hook<decltype(Remove)> remove_directory = {"RemoveDirectoryW", Remove};
  static inline Hook<decltype(SetAttributes)> set_attributes = {"SetFileAttributesW", SetAttributes};

  template <typename Use>
  static void ForEach(Use use) {
    use(find_first), use(find_next), use(create_file), use(get_information);
    use(delete_file), use(remove_directory), use(set_attributes);
  }
};

StandInNtfs::StandInNtfs() {
  g_ntfs = this;
  Hooks::ForEach([](auto& hook) { hook.Set(); });
}

StandInNtfs::~StandInNtfs() {
  Hooks::ForEach([](auto& hook) { hook.Restore(); });
  g_ntfs = nullptr;
}

void StandInNtfs::AddFolderLink(const std::wstring& path, const std::wstring& target, DWORD tag) {
  CreateDirectoryW(Extended(path).c_str(), nullptr);
  links_[Canonical(path)] = {target, tag, true};
}

void StandInNtfs::AddFileLink(const std::wstring& path, const std::wstring& target) {
  CloseHandle(
      Hooks::create_file.system(Extended(path).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
  links_[Canonical(path)] = {target, IO_REPARSE_TAG_SYMLINK, true};
}

void StandInNtfs::SwapForJunction(const std::wstring& path, const std::wstring& target) {
  swaps_[Canonical(path)] = target;
}

std::wstring StandInNtfs::Canonical(const std::wstring& path) {
  constexpr std::wstring_view kPrefix = LR"(\\?\)";
  std::wstring full = path;
  if (full.starts_with(kPrefix)) {
    full.erase(0, kPrefix.size());
  } else {
    wchar_t buffer[MAX_PATH] = {};
    full.assign(buffer, GetFullPathNameW(path.c_str(), MAX_PATH, buffer, nullptr));
  }
  return LowerCase(full);
}

std::wstring StandInNtfs::Resolve(const std::wstring& path, bool follow_last) const {
  std::wstring real = Canonical(path);
  for (bool changed = true; changed;) {
    changed = false;
    for (const auto& [link, data] : links_) {
      if (real.starts_with(link + L'\\') || (follow_last && real == link)) {
        real = Canonical(data.target) + real.substr(link.size());
        changed = true;
      }
    }
  }
  return real;
}

void StandInNtfs::Adjust(const std::wstring& folder, WIN32_FIND_DATAW& entry) const {
  const std::wstring path = LowerCase(folder + entry.cFileName);
  if (read_only_folders_.contains(path)) entry.dwFileAttributes |= FILE_ATTRIBUTE_READONLY;
  const auto link = links_.find(path);
  if (link == links_.end() || !link->second.is_listed) return;
  entry.dwFileAttributes |= FILE_ATTRIBUTE_REPARSE_POINT;
  entry.dwReserved0 = link->second.tag;
  entry.nFileSizeHigh = entry.nFileSizeLow = 0;
}
