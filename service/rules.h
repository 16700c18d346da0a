#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "clean/junk.h"
#include "service/request.h"

// Makes every decision of the helper service about what a request may touch. Each function takes the
// request's values unchanged. Paths and names are UTF-16 (UTF-32 where wchar_t is that wide).

// --- who may ask ---

enum class Who {
  kAnyone,
  kOwnProgram,     // the Varnel.exe beside the service, with its user's usual rights
  kAdministrator,  // the same, run by an administrator
};

// The known facts about the program at the other end of the pipe. Unknown facts are false, except
// `is_confined`, which is true.
struct PeerFacts {
  bool is_administrator = false;  // a local administrator, elevated or not
  bool is_elevated = false;       // as an administrator
  bool is_confined = true;        // low integrity, app container or restricted token
  bool is_own_program = false;    // the Varnel.exe beside the service
};

// Returns nothing if the peer may ask, otherwise the reason why not.
std::optional<std::string> WhyRefused(Who who, const PeerFacts& peer, bool requires_elevation);

// Returns which of the requested categories may be cleaned for a peer that may ask at all: the machine's
// only for those who may ask as administrators.
JunkFlags AllowedJunk(JunkFlags asked, const PeerFacts& peer, bool requires_elevation);

// --- what may be touched ---

inline constexpr size_t kMaxHostsBytes = size_t{8} * 1024 * 1024;

// Returns true if a variable of the machine may be set to this value or deleted. Variables that Windows
// needs can be neither deleted nor emptied.
bool MayChangeVariable(std::wstring_view name, std::wstring_view value, bool is_delete);

// Returns true if `name` can be a value of the machine's Run key.
bool IsStartupName(std::wstring_view name);

// The folders of programs: absolute paths without short names and without a trailing separator.
struct ProgramFolders {
  std::vector<std::wstring> roots;  // Program Files, Program Files (x86), ProgramData
  std::wstring own;                 // where the service itself is
};

// Returns true if the path is the folder itself or below it.
bool IsSameOrBelow(std::wstring_view path, std::wstring_view folder, SamePath same);

// Returns true if a folder may be removed with its contents. The path must have the system's own form:
// from the drive on, with "\" between names, without ".", ".." or short names, and without names that
// Windows reads as another.
bool MayRemoveFolder(std::wstring_view path, const ProgramFolders& folders, SamePath same);

// Returns the names, from SOFTWARE on, that lead to a machine key which may be removed with its subkeys,
// or nothing if it may not.
std::optional<std::vector<std::wstring>> RemovableKey(std::wstring_view sub_key);

// Returns true if a path of the request is the intended file beside the service (ASCII letters in any
// case).
bool IsOwnFile(std::wstring_view path, std::wstring_view own_path);

// Returns true if a driver's title may be put into the script's command line.
bool IsDriverTitle(std::string_view title);

// Returns the categories of a cleanJunk request, or nothing if one is missing.
std::optional<JunkFlags> ReadJunkFlags(const PeerRequest& request);

// Returns true if a folder that a user's environment names as temporary may be emptied: it is on a
// drive, has no "." or "..", and MayBeEmptied allows it.
bool IsTemporaryFolder(std::wstring_view path, const KeptFolders& kept, SamePath same);

// --- development services ---

// Returns true if the page may control a service of this name.
bool IsDevService(std::wstring_view name);

enum class ServiceCommand { kStart, kStop, kRestart };
std::optional<ServiceCommand> ParseServiceCommand(std::string_view command);

struct ServiceState {
  uint32_t state = 0;       // SERVICE_STOPPED (1) to SERVICE_PAUSED (7)
  uint32_t start_type = 0;  // SERVICE_AUTO_START (2), SERVICE_DEMAND_START (3), SERVICE_DISABLED (4)
  bool accepts_stop = false;
  bool is_delayed = false;
};

// Return "running" and "auto", for example, for the page to translate.
std::string_view StateWord(uint32_t state);
std::string_view StartWord(const ServiceState& service);
// Returns the commands that are possible now, in the order of the buttons.
std::vector<std::string_view> PossibleCommands(const ServiceState& service);

// --- texts ---

// Returns a text of a request for the event log: at most 200 characters, only printable ASCII, and no
// "%", which the log's reader treats as a placeholder.
std::string Printable(std::string_view text);

// Returns a name chosen by the peer for the event log: at most 1000 units (longer entries are dropped),
// without control characters, characters that change the writing direction, and "%".
std::wstring PrintableName(std::wstring_view name);

// Returns the scheduled task that starts `program` (UTF-8) with --silent-clean once a week, with the
// rights of the user logged on.
std::string BuildTaskXml(std::string_view program);
