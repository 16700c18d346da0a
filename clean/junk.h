#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

// Which folder the paths of a category continue.
enum class JunkBase { kNone, kUserTemp, kLocalAppData };

struct JunkFolder {
  const wchar_t* path;
  bool is_cleaned;  // false: measured, but never emptied by this program
};

struct JunkCategory {
  const char* key;
  JunkBase base;
  std::span<const JunkFolder> folders;
  const char* service_member = nullptr;  // of the helper service's answer: its figure, if it counts one
};

inline constexpr JunkFolder kWindowsTempFolders[] = {
    {LR"(C:\Windows\Temp)", true},
    {LR"(C:\Windows\SystemTemp)", false},
};
inline constexpr JunkFolder kUserTempFolders[] = {{L"", true}};
inline constexpr JunkFolder kPrefetchFolders[] = {{LR"(C:\Windows\Prefetch)", true}};
inline constexpr JunkFolder kWinUpdateFolders[] = {{LR"(C:\Windows\SoftwareDistribution\Download)", true}};
inline constexpr JunkFolder kBrowserCacheFolders[] = {
    {LR"(\Google\Chrome\User Data\Default\Cache)", true},
    {LR"(\Google\Chrome\User Data\Default\Code Cache)", true},
    {LR"(\Microsoft\Edge\User Data\Default\Cache)", true},
    {LR"(\Microsoft\Edge\User Data\Default\Code Cache)", true},
    {LR"(\BraveSoftware\Brave-Browser\User Data\Default\Cache)", true},
    {LR"(\Mozilla\Firefox\Profiles)", false},  // not caches alone
};
inline constexpr JunkFolder kShaderCacheFolders[] = {
    {LR"(\NVIDIA\DXCache)", true},
    {LR"(\NVIDIA\GLCache)", true},
    {LR"(\D3DSCache)", true},
};
inline constexpr JunkFolder kSystemLogsFolders[] = {
    {LR"(C:\ProgramData\Microsoft\Windows\WER)", true},
    {LR"(C:\Windows\Logs)", true},
    {LR"(C:\Windows\Minidump)", false},  // crash dumps may still be needed
};

inline constexpr size_t kJunkCategoryCount = 7;
inline constexpr std::array<JunkCategory, kJunkCategoryCount> kJunkCategories = {{
    {"windowsTemp", JunkBase::kNone, kWindowsTempFolders, "windowsTempBytes"},
    {"userTemp", JunkBase::kUserTemp, kUserTempFolders},
    {"prefetch", JunkBase::kNone, kPrefetchFolders, "prefetchBytes"},
    {"winUpdate", JunkBase::kNone, kWinUpdateFolders},
    {"browserCache", JunkBase::kLocalAppData, kBrowserCacheFolders},
    {"shaderCache", JunkBase::kLocalAppData, kShaderCacheFolders},
    {"systemLogs", JunkBase::kNone, kSystemLogsFolders},
}};

// Folders that hold what is no junk. Paths are absolute, with or without a separator at their end.
struct KeptFolders {
  std::wstring windows;              // only its Temp and SystemTemp may be emptied
  std::vector<std::wstring> others;  // neither they nor a folder above them may be
};

// Whether two texts of the same length are the same to the file system.
using SamePath = bool (*)(std::wstring_view, std::wstring_view);

// Whether the folder that the system names as temporary may be emptied. Environment variables decide which it
// is, so it can be the profile, a whole drive or the system's own folder. All paths are in their long form.
bool MayBeEmptied(std::wstring_view folder, const KeptFolders& kept, SamePath same);

// One flag a category, in the order of kJunkCategories.
using JunkFlags = std::array<bool, kJunkCategoryCount>;

// Bytes of each category, in the same order.
struct JunkSizes {
  std::array<uint64_t, kJunkCategoryCount> bytes = {};
  JunkFlags kept = {};  // its folder may not be emptied, and is not measured either

  uint64_t Total() const;
};

// What a cleanJunk request asks for.
struct JunkSelection {
  JunkFlags flags;
  nlohmann::json request_id;  // whatever number the page sent, to be given back as it came
};

// Measures all categories (GetTempPathW, SHGetFolderPathW, FindFirstFileW). A folder that is missing or
// cannot be read adds nothing.
JunkSizes MeasureJunkSizes();

// Empties the folders of the selected categories with the user's own rights; what cannot be deleted stays.
// Returns false if memory ran out on the way.
bool CleanJunkCategories(const JunkFlags& selected);

// Replies with the sizes. If the helper service answers, its figures for protected folders count; if not,
// the page is told. Worker body.
void getJunk(int request_id);

// Has the service clean, or cleans itself without one, and replies with the sizes afterwards. Worker body.
void cleanJunk(const JunkSelection& selection);

// Reads a request's `data` object and request identifier: a category that it does not name, or all without
// `data`, is selected. Throws nlohmann::json::type_error if a flag is no boolean or `data` no object.
JunkSelection ParseJunkSelection(const nlohmann::json& data, const nlohmann::json& request_id);

// Returns the `data` of the service's request to clean.
nlohmann::json BuildCleanRequest(const JunkFlags& flags);

// Takes the larger of our figure and the service's for the two folders that the service sees with the system's
// rights. `answer` is its reply to "getJunkSizes", any JSON value:
//   {"prefetchBytes":1048576,"success":true,"windowsTempBytes":52428800}
void RaiseToServiceSizes(const nlohmann::json& answer, JunkSizes& sizes);

// Reply of type "junk" or "cleanJunk". `kept` lists the keys of categories that are left
// alone, if there are any.
std::string BuildJunkReply(std::string_view type, const nlohmann::json& request_id, const JunkSizes& sizes);
