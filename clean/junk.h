#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

// The folder that a category's paths are relative to.
enum class JunkBase { kNone, kUserTemp, kLocalAppData };

struct JunkFolder {
  const wchar_t* path;
  bool is_cleaned;  // false: measured, but never emptied by this program
};

struct JunkCategory {
  const char* key;
  JunkBase base;
  std::span<const JunkFolder> folders;
  const char* service_member = nullptr;  // of the service's answer, if it counts this category
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
    {LR"(\Mozilla\Firefox\Profiles)", false},  // holds more than caches
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

// Folders with contents that are not junk. Paths are absolute, with or without a trailing separator.
struct KeptFolders {
  std::wstring windows;              // only its Temp and SystemTemp may be emptied
  std::vector<std::wstring> others;  // neither they nor any folder above them may be emptied
};

// Returns true if the file system treats two texts of the same length as the same.
using SamePath = bool (*)(std::wstring_view, std::wstring_view);

// Returns true if the folder that the system names as temporary may be emptied. Environment variables
// decide which one that is, so it can be the profile, a whole drive or the Windows folder. All paths are
// in their long form.
bool MayBeEmptied(std::wstring_view folder, const KeptFolders& kept, SamePath same);

// One flag per category, in the order of kJunkCategories.
using JunkFlags = std::array<bool, kJunkCategoryCount>;

// Bytes per category, in the same order.
struct JunkSizes {
  std::array<uint64_t, kJunkCategoryCount> bytes = {};
  JunkFlags kept = {};  // the folder may not be emptied and is not measured either

  uint64_t Total() const;
};

// A parsed cleanJunk request.
struct JunkSelection {
  JunkFlags flags;
  nlohmann::json request_id;  // any number that the page sent, returned unchanged
};

// Measures all categories (GetTempPathW, SHGetFolderPathW, FindFirstFileW). A folder that is missing or
// unreadable counts as 0.
JunkSizes MeasureJunkSizes();

// Empties the folders of the selected categories with the user's own rights and leaves whatever cannot
// be deleted. Returns false if memory ran out on the way.
bool CleanJunkCategories(const JunkFlags& selected);

// Replies with the sizes. Uses the helper service's figures for protected folders; if the service does
// not answer, tells the page so. Worker body.
void getJunk(int request_id);

// Has the service clean, or cleans itself if there is no service, and replies with the sizes afterwards.
// Worker body.
void cleanJunk(const JunkSelection& selection);

// Reads a request's `data` object and its request ID. A category is selected unless `data` says
// otherwise. Throws nlohmann::json::type_error if a flag is no boolean or `data` is no object.
JunkSelection ParseJunkSelection(const nlohmann::json& data, const nlohmann::json& request_id);

// Returns the `data` of the cleaning request to the service.
nlohmann::json BuildCleanRequest(const JunkFlags& flags);

// Takes the larger of this program's figure and the service's for the two folders that the service reads
// with the system's rights. `answer` is its reply to "getJunkSizes", any JSON value:
//   {"prefetchBytes":1048576,"success":true,"windowsTempBytes":52428800}
void RaiseToServiceSizes(const nlohmann::json& answer, JunkSizes& sizes);

// Returns the reply of type "junk" or "cleanJunk". `kept` lists the keys of the categories that are left
// alone, if there are any.
std::string BuildJunkReply(std::string_view type, const nlohmann::json& request_id, const JunkSizes& sizes);
