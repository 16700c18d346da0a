#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "clean/junk.h"
#include "service/peer_win.h"
#include "service/rules.h"

// Carries out requests after they have been allowed. Each function blocks. Each returns true, or a
// value, if it succeeded.

// hosts_file_win.cpp: replaces the hosts file in one step and keeps the previous version as
// hosts.varnel.bak (ReplaceFileW). After a failure, the old file is intact.
bool SaveHostsFile(const std::string& content);

// dev_services_win.cpp: lists the installed services of the table. Commands wait up to 30 s for the new
// state.
nlohmann::json ListDevServices();
bool ControlDevService(const std::wstring& name, ServiceCommand command);

// junk_win.cpp: empties machine folders as the system, and the peer's own folders as the peer.
void CleanJunk(const JunkFlags& flags, const Peer& peer);
nlohmann::json MeasureMachineJunk();

// removal_win.cpp
ProgramFolders FindProgramFolders();
bool RemoveLeftoverFolder(const std::wstring& path);
// Deletes the key that the names lead to, with its subkeys. Deletes a link itself and never follows one.
bool RemoveMachineKey(const std::vector<std::wstring>& names);

// schedule_win.cpp: registers or removes the weekly task \Varnel\Silent clean. Both can be repeated.
enum class Scheduled {
  kYes,
  kUnchanged,  // failed; what was scheduled before still is
  kNo,         // failed after removing what was scheduled before
};
Scheduled ScheduleCleaning(const std::wstring& program);
bool UnscheduleCleaning();

// startup_win.cpp
bool SwitchMachineStartup(const std::wstring& name, bool enable);
