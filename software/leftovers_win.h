#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

// Worker: looks for folders (GetEnvironmentVariableW, GetFileAttributesW) and registry keys (RegOpenKeyExW)
// that still carry the program's name, measures them and posts "findLeftovers". Both texts are UTF-8.
void findLeftovers(int request_id, const std::string& id, const std::string& name);

// Worker: removes the page's items, each {"type":...,"path":...} as found, all of them even after a failure,
// and posts "cleanLeftovers". What needs administrator rights is left to the helper service.
void cleanLeftovers(int request_id, const std::vector<nlohmann::json>& items);

// Removes a folder with all that is in it (a link alone, never its target), or a key below HKCU or HKLM with
// its subkeys (RegDeleteTreeW), with the user's own rights. `path` is UTF-8, the `type` "directory" or
// "registry". True when nothing is left of it; a folder that is gone already counts as removed, a key does
// not.
bool RemoveLeftoverItem(const std::string& type, const std::string& path);
