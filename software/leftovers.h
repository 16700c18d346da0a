#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

// Finds and removes the remains of an uninstalled program. All texts are UTF-8.

// Finds folders (GetFileAttributesW) and registry keys (RegOpenKeyExW) that still carry the program's
// name, measures them and posts "findLeftovers". Worker body.
void findLeftovers(int request_id, const std::string& id, const std::string& name);

// Removes the page's items, each {"type":...,"path":...} as found, and posts "cleanLeftovers". A failure
// does not stop the rest. Leaves items that need administrator rights to the helper service. Worker
// body.
void cleanLeftovers(int request_id, const std::vector<nlohmann::json>& items);

struct LeftoverNameParts {
  std::string name, id;   // as given
  std::string publisher;  // of the ID: the text before its first dot; empty if it has none
  std::string app;        // of the ID: the text after its first dot; the name if it has none
};
LeftoverNameParts SplitLeftoverName(std::string_view id, std::string_view name);

// Returns the folders to look for below each root, in order, each path once (ignoring letter case).
// Skips a part that is empty or consists of dots, because it would name the root itself or a folder
// above it.
std::vector<std::string> LeftoverFolderCandidates(const std::vector<std::string>& roots,
                                                  const LeftoverNameParts& parts);
// Returns the keys to look for ("Software\...") below each hive, in order, each once. Skips the same
// parts.
std::vector<std::string> LeftoverKeyCandidates(const LeftoverNameParts& parts);

struct LeftoverItem {
  std::string type;   // "directory" or "registry"
  std::string path;   // full path, or "HKCU\..." or "HKLM\..."
  uint64_t size = 0;  // bytes; 0 for a key
};

// Returns the rows of the page's table.
nlohmann::json ToJson(const std::vector<LeftoverItem>& leftovers);

// Reads the type and path of an element of the page's `items`. A member that is missing or not a text
// becomes empty.
LeftoverItem ReadLeftoverItem(const nlohmann::json& item);

inline constexpr std::string_view kUserHive = "HKCU\\";
inline constexpr std::string_view kMachineHive = "HKLM\\";

enum class LeftoverRemoval {
  kLocal,          // with the user's own rights
  kServiceFolder,  // needs administrator rights: the helper service removes it
  kServiceKey,
  kNone,  // no kind of item that can be removed
};
LeftoverRemoval ChooseLeftoverRemoval(const LeftoverItem& item);

// Returns the key below `hive` that `path` names. Returns an empty text if `path` names another hive or
// the whole hive.
std::string_view KeyBelow(std::string_view path, std::string_view hive);
