#include <windows.h>

#include "base/file_walk_win.h"
#include "service/topics_win.h"

namespace {

constexpr DWORD kMeasureMs = 10'000;  // a user who can fill a folder endlessly can also request its size

// Empties folders of the machine with the system's rights, refusing any link on the way to them.
void CleanMachineFolders(const JunkCategory& category) {
  for (const JunkFolder& folder : category.folders)
    if (folder.is_cleaned) ClearDirectoryContents(folder.path, PathLinks::kRefuse);
}

// Empties folders of the user. They may be reached through links, but only with the user's own rights.
void CleanPeerFolders(const JunkCategory& category, const std::wstring& base, const Peer& peer) {
  const ActingAs acting(peer);
  if (!acting || base.empty()) return;
  for (const JunkFolder& folder : category.folders)
    if (folder.is_cleaned) ClearDirectoryContents(base + folder.path);
}

uint64_t MachineBytes(const JunkCategory& category) {
  uint64_t size_bytes = 0;
  for (const JunkFolder& folder : category.folders)
    size_bytes += DirectorySize(folder.path, PathLinks::kRefuse, kMeasureMs);
  return size_bytes;
}

}  // namespace

void CleanJunk(const JunkFlags& flags, const Peer& peer) {
  const PeerFolders folders = FindPeerFolders(peer);
  for (size_t i = 0; i < kJunkCategoryCount; ++i) {
    if (!flags[i]) continue;
    const JunkCategory& category = kJunkCategories[i];
    switch (category.base) {
      case JunkBase::kNone:
        CleanMachineFolders(category);
        break;
      case JunkBase::kUserTemp:
        CleanPeerFolders(category, folders.temporary, peer);
        break;
      case JunkBase::kLocalAppData:
        CleanPeerFolders(category, folders.local_app_data, peer);
        break;
    }
  }
}

nlohmann::json MeasureMachineJunk() {
  nlohmann::json sizes;
  for (const auto& [category, member] :
       {std::pair("windowsTemp", "windowsTempBytes"), {"prefetch", "prefetchBytes"}})
    for (const JunkCategory& one : kJunkCategories)
      if (std::string_view(one.key) == category) sizes[member] = MachineBytes(one);
  return sizes;
}
