#pragma once

#include <windows.h>

#include <string>

// Posts the user's and the machine's variables with their stored values, in which environment strings
// are not expanded. A value that is not text appears empty; one longer than 32766 bytes is left out. UI
// thread.
void getEnvVariables(int request_id);

// Sets a variable (always as REG_EXPAND_SZ) or deletes it. The type "user" is written directly, on the
// UI thread; any other type through the helper service, on a worker. Texts are UTF-8.
void saveEnvVariable(int request_id, const std::string& type, const std::string& name,
                     const std::string& value, bool is_delete);

// Writes a value of an environment key, which it creates if missing, and calls NotifyEnvironmentChanged.
// Deleting a missing value succeeds. Returns false, without notifying any window, if the registry
// refuses.
bool WriteEnvVariable(HKEY hive, const std::wstring& path, const std::wstring& name,
                      const std::wstring& value, bool is_delete);

// Notifies every window of this session that the environment has changed (WM_SETTINGCHANGE). That takes
// up to 5 s per hung window.
void NotifyEnvironmentChanged();
