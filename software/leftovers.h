#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

// Where an uninstalled program may have left something, and what to do with what was
// found. All texts are UTF-8.

// Looks for folders (GetFileAttributesW) and registry keys (RegOpenKeyExW) that still carry the program's name,
// measures them and posts "findLeftovers". Worker body.
void findLeftovers(int request_id, const std::string& id, const std::string& name);

// Removes the page's items, each {"type":...,"path":...} as found, all of them even after a failure, and posts
// "cleanLeftovers". What needs administrator rights is left to the helper service. Worker body.
void cleanLeftovers(int request_id, const std::vector<nlohmann::json>& items);

struct LeftoverNameParts {
  std::string name, id;   // as given
  std::string publisher;  // of the id: before its first dot; empty without one
  std::string app;        // of the id: after its first dot; the name without one
};
LeftoverNameParts SplitLeftoverName(std::string_view id, std::string_view name);

// Folders to look for below each root, in order, each path once (letter case aside). A part that is empty or
// made of dots would name the root itself or something above it; it gives no candidate.
std::vector<std::string> LeftoverFolderCandidates(const std::vector<std::string>& roots,
                                                  const LeftoverNameParts& parts);
// Keys to look for below each hive, in order, each once, with the same exception: "Software\..." .
std::vector<std::string> LeftoverKeyCandidates(const LeftoverNameParts& parts);

struct LeftoverItem {
  std::string type;   // "directory" or "registry"
  std::string path;   // full path, or "HKCU\..." or "HKLM\..."
  uint64_t size = 0;  // bytes; 0 for a key
};

// Returns the rows of the page's table.
nlohmann::json ToJson(const std::vector<LeftoverItem>& leftovers);

// Type and path of an element of the page's `items`; what is missing or no text is empty.
LeftoverItem ReadLeftoverItem(const nlohmann::json& item);

inline constexpr std::string_view kUserHive = "HKCU\\";
inline constexpr std::string_view kMachineHive = "HKLM\\";

enum class LeftoverRemoval {
  kLocal,          // with the user's own rights
  kServiceFolder,  // needs administrator rights: the helper service removes it
  kServiceKey,
  kNone,  // not a kind of item that can be removed
};
LeftoverRemoval ChooseLeftoverRemoval(const LeftoverItem& item);

// The key below `hive` that `path` names; empty when it names another hive, or all of this one.
std::string_view KeyBelow(std::string_view path, std::string_view hive);
