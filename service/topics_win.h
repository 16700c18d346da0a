#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "clean/junk.h"
#include "service/peer_win.h"
#include "service/rules.h"

// What the requests do, once they are decided on. Each blocks; each is true, or has a value, when it was done.

// hosts_file_win.cpp: replaces the hosts file in one step; the version before stays beside it as
// hosts.varnel.bak (ReplaceFileW). After a failure the old file is whole.
bool SaveHostsFile(const std::string& content);

// dev_services_win.cpp: the installed ones of the table; commands wait up to 30 s for the state.
nlohmann::json ListDevServices();
bool ControlDevService(const std::wstring& name, ServiceCommand command);

// junk_win.cpp: machine folders as the system, the peer's own as the peer.
void CleanJunk(const JunkFlags& flags, const Peer& peer);
nlohmann::json MeasureMachineJunk();

// removal_win.cpp
ProgramFolders FindProgramFolders();
bool RemoveLeftoverFolder(const std::wstring& path);
// Deletes the key that the names lead to with what is below it; a link as such, and none is followed.
bool RemoveMachineKey(const std::vector<std::wstring>& names);

// schedule_win.cpp: registers or removes the weekly task \Varnel\Silent clean. Both can be repeated.
bool ScheduleCleaning(const std::wstring& program);
bool UnscheduleCleaning();

// startup_win.cpp
bool SwitchMachineStartup(const std::wstring& name, bool enable);
