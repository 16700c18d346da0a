#include "software/leftovers.h"

#include <algorithm>

#include "base/lower_case.h"

namespace {

constexpr std::string_view kUsersFolder = R"(c:\users\)";

// Returns true if each component of the part names something. Windows drops trailing dots and spaces, so
// ".", ".. " and "" name nothing.
bool IsNamed(std::string_view part) {
  for (;;) {
    const size_t separator = part.find_first_of("\\/");
    if (part.substr(0, separator).find_first_not_of(". ") == part.npos) return false;
    if (separator == part.npos) return true;
    part.remove_prefix(separator + 1);
  }
}

class Candidates {
 public:
  void Add(const std::string& base, std::initializer_list<std::string_view> parts) {
    std::string path = base;
    for (const std::string_view part : parts) {
      if (!IsNamed(part)) return;
      path.append("\\").append(part);
    }
    std::string folded = LowerCase(path);
    if (std::ranges::find(folded_, folded) != folded_.end()) return;
    folded_.push_back(std::move(folded));
    paths_.push_back(std::move(path));
  }
  std::vector<std::string> Take() { return std::move(paths_); }

 private:
  std::vector<std::string> paths_, folded_;
};

}  // namespace

LeftoverNameParts SplitLeftoverName(std::string_view id, std::string_view name) {
  LeftoverNameParts parts{std::string(name), std::string(id), "", std::string(name)};
  const size_t dot = id.find('.');
  if (dot != id.npos) {
    parts.publisher = id.substr(0, dot);
    parts.app = id.substr(dot + 1);
  }
  return parts;
}

std::vector<std::string> LeftoverFolderCandidates(const std::vector<std::string>& roots,
                                                  const LeftoverNameParts& parts) {
  Candidates candidates;
  for (const std::string& root : roots) {
    candidates.Add(root, {parts.name});
    candidates.Add(root, {parts.app});
    candidates.Add(root, {parts.publisher, parts.app});
    candidates.Add(root, {parts.publisher, parts.name});
    candidates.Add(root, {parts.id});
  }
  return candidates.Take();
}

std::vector<std::string> LeftoverKeyCandidates(const LeftoverNameParts& parts) {
  Candidates candidates;
  candidates.Add("Software", {parts.publisher, parts.app});
  candidates.Add("Software", {parts.publisher, parts.name});
  candidates.Add("Software", {parts.name});
  candidates.Add("Software", {parts.app});
  candidates.Add("Software", {parts.id});
  return candidates.Take();
}

nlohmann::json ToJson(const std::vector<LeftoverItem>& leftovers) {
  nlohmann::json rows = nlohmann::json::array();
  for (const LeftoverItem& item : leftovers)
    rows.push_back({{"type", item.type}, {"path", item.path}, {"size", item.size}});
  return rows;
}

LeftoverItem ReadLeftoverItem(const nlohmann::json& item) {
  const auto text = [&](const char* field) {
    const auto found = item.is_object() ? item.find(field) : item.end();
    return found != item.end() && found->is_string() ? found->get<std::string>() : std::string();
  };
  return {text("type"), text("path")};
}

LeftoverRemoval ChooseLeftoverRemoval(const LeftoverItem& item) {
  if (item.type == "directory") {
    return LowerCase(item.path).starts_with(kUsersFolder) ? LeftoverRemoval::kLocal
                                                          : LeftoverRemoval::kServiceFolder;
  }
  if (item.type == "registry") {
    if (!item.path.starts_with(kMachineHive)) return LeftoverRemoval::kLocal;
    return KeyBelow(item.path, kMachineHive).empty() ? LeftoverRemoval::kNone : LeftoverRemoval::kServiceKey;
  }
  return LeftoverRemoval::kNone;
}

std::string_view KeyBelow(std::string_view path, std::string_view hive) {
  if (!path.starts_with(hive)) return {};
  path.remove_prefix(hive.size());
  return path.find_first_not_of('\\') == path.npos ? std::string_view() : path;
}
