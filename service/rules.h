#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "clean/junk.h"
#include "service/request.h"

// Every decision of the helper service about what a request may touch. Each takes what the request says as it
// came; paths and names are UTF-16 (UTF-32 where wchar_t is that wide).

// --- who may ask -------------------------------------------------------------------------------------------

enum class Who { kAnyone, kAdministrator };

// What is known about the program at the other end of the pipe. Unknown is false, and `is_confined` true.
struct PeerFacts {
  bool is_administrator = false;  // the user is one of this machine, whether elevated or not
  bool is_elevated = false;       // as an administrator
  bool is_confined = true;        // low integrity, app container or restricted token
  bool is_own_program = false;    // the Varnel.exe beside the service
};

// Nothing when the peer may ask, else why not.
std::optional<std::string> WhyRefused(Who who, const PeerFacts& peer, bool requires_elevation);

// --- what may be touched -----------------------------------------------------------------------------------

inline constexpr size_t kMaxHostsBytes = size_t{8} * 1024 * 1024;

// Whether a variable of the machine may be set or deleted so. What Windows needs can be neither deleted nor
// emptied.
bool MayChangeVariable(std::wstring_view name, std::wstring_view value, bool is_delete);

// Whether `name` can be a value of the machine's Run key.
bool IsStartupName(std::wstring_view name);

// Where programs keep their files: absolute paths without short names, and without a separator at
// their end.
struct ProgramFolders {
  std::vector<std::wstring> roots;  // Program Files, Program Files (x86), ProgramData
  std::wstring own;                 // where the service itself is
};

// Whether the path is the folder, or begins with its path.
bool IsSameOrBelow(std::wstring_view path, std::wstring_view folder, SamePath same);

// Whether a folder may be removed with what is in it. The path must be written as the system itself would: from
// the drive on, with "\" between names, no "." or "..", no short name, none that Windows reads as another.
bool MayRemoveFolder(std::wstring_view path, const ProgramFolders& folders, SamePath same);

// The names, from SOFTWARE on, that lead to a key of the machine which may be removed with what is below it;
// nothing when it may not.
std::optional<std::vector<std::wstring>> RemovableKey(std::wstring_view sub_key);

// Whether a path of the request is the file beside the service that is meant (ASCII letters in any case).
bool IsOwnFile(std::wstring_view path, std::wstring_view own_path);

// Whether a driver's title may stand in the script's command line.
bool IsDriverTitle(std::string_view title);

// The categories that a cleanJunk request names; nothing when one is missing.
std::optional<JunkFlags> ReadJunkFlags(const Request& request);

// Whether a folder that a user's environment names as temporary may be emptied: of a drive, without "." or "..",
// and as MayBeEmptied says.
bool IsTemporaryFolder(std::wstring_view path, const KeptFolders& kept, SamePath same);

// --- development services ----------------------------------------------------------------------------------

// Whether a service of this name is one of those that the page may control.
bool IsDevService(std::wstring_view name);

enum class ServiceCommand { kStart, kStop, kRestart };
std::optional<ServiceCommand> ParseServiceCommand(std::string_view command);

struct ServiceState {
  uint32_t state = 0;       // SERVICE_STOPPED (1) to SERVICE_PAUSED (7)
  uint32_t start_type = 0;  // SERVICE_AUTO_START (2), SERVICE_DEMAND_START (3), SERVICE_DISABLED (4)
  bool accepts_stop = false;
  bool is_delayed = false;
};

// In words: "running" and "auto", for the page to translate.
std::string_view StateWord(uint32_t state);
std::string_view StartWord(const ServiceState& service);
// Those possible now, in the order of the buttons.
std::vector<std::string_view> PossibleCommands(const ServiceState& service);

// --- texts -------------------------------------------------------------------------------------------------

// A text of a request for the event log: at most 200 characters, nothing that is not printable ASCII, and no "%",
// which the log's reader takes for the place of another text.
std::string Printable(std::string_view text);

// A name that the peer has chosen, for the event log: at most 1000 units (an entry that is too long is dropped),
// no control character, none that turns the direction of writing, no "%".
std::wstring PrintableName(std::wstring_view name);

// The scheduled task that starts `program` (UTF-8) with --silent-clean once a week, with the rights of whoever
// is logged on.
std::string BuildTaskXml(std::string_view program);
