#include "service/rules.h"

#include <algorithm>
#include <array>
#include <cwctype>
#include <span>

#include "base/lower_case.h"
#include "exec/safe_argument.h"

namespace {

constexpr size_t kMaxNameUnits = 254;
constexpr size_t kMaxValueUnits = 32'766;
constexpr size_t kMaxPathUnits = 32'000;

// Returns an ASCII name as Windows compares it. Folds the four letters, too, that some tables fold to
// ASCII ones.
std::wstring Folded(std::wstring_view name) {
  std::wstring folded = LowerCase(std::wstring(name));
  for (wchar_t& unit : folded) {
    if (unit == 0x130 || unit == 0x131) unit = L'i';
    if (unit == 0x17F) unit = L's';
    if (unit == 0x212A) unit = L'k';
  }
  return folded;
}

bool IsOneOf(std::wstring_view name, std::span<const std::wstring_view> names) {
  return std::ranges::find(names, Folded(name)) != names.end();
}

// Returns the names between separators, including empty ones.
std::vector<std::wstring_view> Split(std::wstring_view path) {
  std::vector<std::wstring_view> names;
  for (;;) {
    const size_t separator = path.find(L'\\');
    names.push_back(path.substr(0, separator));
    if (separator == path.npos) return names;
    path.remove_prefix(separator + 1);
  }
}

bool HasControl(std::wstring_view text) {
  return std::ranges::any_of(text, [](wchar_t unit) { return unit < L' ' || unit == 0x7F; });
}

// Returns true if the text contains a character that resembles a separator or a colon, for a reader or
// for a program that converts text.
bool HasLookAlike(std::wstring_view text) {
  static constexpr std::wstring_view kLookAlikes =
      L"\u00A5\u20A9\u2044\u2215\u2216\u29F5\u29F8\u29F9\uFE68\uFF0F\uFF3C\uFF1A\uFE55\uA789\u2236";
  return text.find_first_of(kLookAlikes) != text.npos;
}

// Returns true for CON, NUL, COM1 and the like, with anything after a dot.
bool IsDeviceName(std::wstring_view name) {
  static constexpr std::array<std::wstring_view, 6> kDevices = {L"con", L"prn",    L"aux",
                                                                L"nul", L"conin$", L"conout$"};
  std::wstring stem = Folded(name.substr(0, name.find(L'.')));
  while (stem.ends_with(L' ')) stem.pop_back();
  if (IsOneOf(stem, kDevices)) return true;
  static constexpr std::wstring_view kDigits = L"0123456789\u00B9\u00B2\u00B3";
  return stem.size() == 4 && (stem.starts_with(L"com") || stem.starts_with(L"lpt")) &&
         kDigits.find(stem[3]) != kDigits.npos;
}

// Returns true for PROGRA~1: "~" and digits at the end or before the extension.
bool IsShortName(std::wstring_view name) {
  const std::wstring_view stem = name.substr(0, name.rfind(L'.'));
  const size_t tilde = stem.rfind(L'~');
  return tilde != stem.npos && tilde + 1 < stem.size() &&
         stem.find_first_not_of(L"0123456789", tilde + 1) == stem.npos;
}

// Returns true if the name means a folder of exactly this name to every reader.
bool IsPlainName(std::wstring_view name) {
  return !name.empty() && name.size() <= kMaxNameUnits && !HasControl(name) && !HasLookAlike(name) &&
         name.find_first_of(L"<>:\"/|?*") == name.npos && !name.ends_with(L'.') && !name.ends_with(L' ') &&
         !name.starts_with(L' ') && !IsDeviceName(name) && !IsShortName(name);
}

// Returns true for "C:\a\b" with plain names. A drive alone has none.
bool IsPlainPath(std::wstring_view path) {
  if (path.size() < 4 || path.size() > kMaxPathUnits || path.substr(1, 2) != L":\\") return false;
  const wchar_t drive = LowerCase(std::wstring(path.substr(0, 1)))[0];
  return drive >= L'a' && drive <= L'z' && std::ranges::all_of(Split(path.substr(3)), IsPlainName);
}

}  // namespace

std::optional<std::string> WhyRefused(Who who, const PeerFacts& peer, bool requires_elevation) {
  if (who == Who::kAnyone) return std::nullopt;
  if (!peer.is_own_program) return "Not asked by Varnel.exe";
  if (peer.is_confined) return "Asked with restricted rights";
  if (who == Who::kOwnProgram) return std::nullopt;
  if (!peer.is_administrator) return "Administrators only";
  if (requires_elevation && !peer.is_elevated) return "Elevated administrators only";
  return std::nullopt;
}

JunkFlags AllowedJunk(JunkFlags asked, const PeerFacts& peer, bool requires_elevation) {
  if (WhyRefused(Who::kAdministrator, peer, requires_elevation))
    for (size_t i = 0; i < kJunkCategoryCount; ++i)
      asked[i] = asked[i] && kJunkCategories[i].base != JunkBase::kNone;
  return asked;
}

bool MayChangeVariable(std::wstring_view name, std::wstring_view value, bool is_delete) {
  static constexpr std::array<std::wstring_view, 12> kNeeded = {L"path",
                                                                L"pathext",
                                                                L"comspec",
                                                                L"windir",
                                                                L"systemroot",
                                                                L"temp",
                                                                L"tmp",
                                                                L"os",
                                                                L"processor_architecture",
                                                                L"number_of_processors",
                                                                L"psmodulepath",
                                                                L"driverdata"};
  if (name.empty() || name.size() > kMaxNameUnits || HasControl(name) || name.find(L'=') != name.npos)
    return false;
  if (value.size() > kMaxValueUnits || value.find(L'\0') != value.npos) return false;
  const bool is_emptied = is_delete || value.find_first_not_of(L" \t;\"") == value.npos;
  return !is_emptied || !IsOneOf(name, kNeeded);
}

bool IsStartupName(std::wstring_view name) {
  return !name.empty() && name.size() < 256 && name.find(L'\0') == name.npos;
}

bool IsSameOrBelow(std::wstring_view path, std::wstring_view folder, SamePath same) {
  return path.size() >= folder.size() && same(path.substr(0, folder.size()), folder) &&
         (path.size() == folder.size() || path[folder.size()] == L'\\');
}

bool MayRemoveFolder(std::wstring_view path, const ProgramFolders& folders, SamePath same) {
  // Folders of Windows itself, or of this program, directly below the three roots.
  static constexpr std::array<std::wstring_view, 10> kKept = {L"common files",
                                                              L"packages",
                                                              L"package cache",
                                                              L"modifiablewindowsapps",
                                                              L"internet explorer",
                                                              L"ssh",
                                                              L"varnel",
                                                              L"usoprivate",
                                                              L"usoshared",
                                                              L"uninstall information"};
  if (!IsPlainPath(path)) return false;
  if (IsSameOrBelow(path, folders.own, same) || IsSameOrBelow(folders.own, path, same)) return false;
  for (const std::wstring& root : folders.roots) {
    if (root.empty() || path.size() == root.size() || !IsSameOrBelow(path, root, same)) continue;
    const std::wstring first = Folded(Split(path.substr(root.size() + 1)).front());
    return !first.starts_with(L"microsoft") && !first.starts_with(L"windows") && !IsOneOf(first, kKept);
  }
  return false;
}

std::optional<std::vector<std::wstring>> RemovableKey(std::wstring_view sub_key) {
  static constexpr std::array<std::wstring_view, 9> kKept = {
      L"microsoft",   L"classes",     L"policies", L"clients",
      L"wow6432node", L"wowaa32node", L"wine",     L"registeredapplications",
      L"varnel"};
  if (sub_key.size() > kMaxPathUnits || HasControl(sub_key) || HasLookAlike(sub_key)) return std::nullopt;
  std::vector<std::wstring> names;
  for (const std::wstring_view name : Split(sub_key)) {
    if (name.size() > kMaxNameUnits || name.find_first_not_of(L". ") == name.npos) return std::nullopt;
    names.emplace_back(name);
  }
  if (names.size() < 2 || Folded(names[0]) != L"software" || IsOneOf(names[1], kKept)) return std::nullopt;
  return names;
}

bool IsOwnFile(std::wstring_view path, std::wstring_view own_path) {
  return LowerCase(std::wstring(path)) == LowerCase(std::wstring(own_path));
}

bool IsDriverTitle(std::string_view title) {
  return !title.empty() && title.size() < 1024 && !title.starts_with('-') && IsSafeCommandArgument(title);
}

std::optional<JunkFlags> ReadJunkFlags(const PeerRequest& request) {
  JunkFlags flags = {};
  for (size_t i = 0; i < kJunkCategoryCount; ++i) {
    const std::optional<bool> flag = request.Flag(kJunkCategories[i].key);
    if (!flag) return std::nullopt;
    flags[i] = *flag;
  }
  return flags;
}

bool IsTemporaryFolder(std::wstring_view path, const KeptFolders& kept, SamePath same) {
  while (path.ends_with(L'\\')) path.remove_suffix(1);
  return IsPlainPath(path) && MayBeEmptied(path, kept, same);
}

bool IsDevService(std::wstring_view name) {
  static constexpr std::array<std::wstring_view, 39> kNames = {
      // web servers
      L"w3svc", L"was", L"iisadmin", L"apache", L"apache2.2", L"apache2.4", L"nginx", L"caddy", L"tomcat8",
      L"tomcat9", L"tomcat10", L"tomcat11", L"wampapache64", L"wampmysqld64", L"wampmariadb64",
      // databases and caches
      L"mysql", L"mysql80", L"mysql84", L"mariadb", L"mongodb", L"mssqlserver", L"sqlserveragent",
      L"sqlbrowser", L"redis", L"memurai", L"memcached", L"couchdb", L"influxdb", L"neo4j", L"elasticsearch",
      L"opensearch",
      // brokers, containers, shells and Linux
      L"rabbitmq", L"mosquitto", L"docker", L"com.docker.service", L"sshd", L"ssh-agent", L"wslservice",
      L"lxssmanager"};
  // Services whose names end in a version or an instance.
  static constexpr std::array<std::wstring_view, 5> kBeginnings = {L"postgresql-", L"mssql$", L"sqlagent$",
                                                                   L"mysql_", L"elasticsearch-service-"};
  const std::wstring folded = Folded(name);
  if (folded.size() > 80 || HasControl(folded) || folded.find_first_of(L"\\/") != folded.npos) return false;
  return std::ranges::find(kNames, folded) != kNames.end() ||
         std::ranges::any_of(kBeginnings, [&](std::wstring_view start) {
           return folded.size() > start.size() && folded.starts_with(start);
         });
}

std::optional<ServiceCommand> ParseServiceCommand(std::string_view command) {
  if (command == "start") return ServiceCommand::kStart;
  if (command == "stop") return ServiceCommand::kStop;
  if (command == "restart") return ServiceCommand::kRestart;
  return std::nullopt;
}

std::string_view StateWord(uint32_t state) {
  static constexpr std::array<std::string_view, 8> kWords = {"unknown", "stopped",    "starting", "stopping",
                                                             "running", "continuing", "pausing",  "paused"};
  return kWords[state < kWords.size() ? state : 0];
}

std::string_view StartWord(const ServiceState& service) {
  static constexpr std::array<std::string_view, 6> kWords = {"boot",   "system",   "auto",
                                                             "manual", "disabled", "unknown"};
  if (service.start_type == 2 && service.is_delayed) return "delayed";
  return kWords[std::min<size_t>(service.start_type, kWords.size() - 1)];
}

std::vector<std::string_view> PossibleCommands(const ServiceState& service) {
  if (service.state == 1 && service.start_type != 4) return {"start"};
  if (service.state != 4 || !service.accepts_stop) return {};
  if (service.start_type == 4) return {"stop"};
  return {"stop", "restart"};
}

std::string Printable(std::string_view text) {
  std::string printable(text.substr(0, 200));
  for (char& c : printable)
    if (c < ' ' || c > '~' || c == '%') c = '?';
  return printable;
}

std::wstring PrintableName(std::wstring_view name) {
  std::wstring printable(name.substr(0, 1000));
  for (wchar_t& unit : printable)
    if (HasControl({&unit, 1}) || unit == L'%' || (unit >= 0x200B && unit <= 0x200F) ||
        (unit >= 0x2028 && unit <= 0x202E) || (unit >= 0x2066 && unit <= 0x2069))
      unit = L'?';
  return printable;
}

std::string BuildTaskXml(std::string_view program) {
  std::string escaped;
  for (const char c : program) {
    if (c == '&')
      escaped += "&amp;";
    else if (c == '<')
      escaped += "&lt;";
    else if (c == '>')
      escaped += "&gt;";
    else
      escaped += c;
  }
  return R"(<?xml version="1.0"?>
<Task version="1.2" xmlns="http://schemas.microsoft.com/windows/2004/02/mit/task">
  <RegistrationInfo>
    <Author>Varnel</Author>
    <Description>Deletes temporary files and caches once a week, without a window.</Description>
  </RegistrationInfo>
  <Triggers>
    <CalendarTrigger>
      <StartBoundary>2024-01-07T12:00:00</StartBoundary>
      <ScheduleByWeek>
        <DaysOfWeek>
          <Sunday />
        </DaysOfWeek>
        <WeeksInterval>1</WeeksInterval>
      </ScheduleByWeek>
    </CalendarTrigger>
  </Triggers>
  <Principals>
    <Principal id="Users">
      <GroupId>S-1-5-32-545</GroupId>
      <RunLevel>LeastPrivilege</RunLevel>
    </Principal>
  </Principals>
  <Settings>
    <MultipleInstancesPolicy>IgnoreNew</MultipleInstancesPolicy>
    <DisallowStartIfOnBatteries>false</DisallowStartIfOnBatteries>
    <StartWhenAvailable>true</StartWhenAvailable>
    <ExecutionTimeLimit>PT4H</ExecutionTimeLimit>
    <Enabled>true</Enabled>
  </Settings>
  <Actions Context="Users">
    <Exec>
      <Command>)" +
         escaped + R"(</Command>
      <Arguments>--silent-clean</Arguments>
    </Exec>
  </Actions>
</Task>
)";
}
