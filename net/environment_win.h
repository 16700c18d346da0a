#pragma once

#include <windows.h>

#include <string>

#include "net/environment.h"

// Values of an environment key (RegOpenKeyExW with KEY_READ, RegEnumValueW); none when it cannot be opened. A
// value that is not text has an empty one; one longer than 32766 bytes is left out.
EnvVariables ReadEnvVariables(HKEY hive, const std::wstring& path);

// Sets (always as REG_EXPAND_SZ) or deletes a value of an environment key, which is created when missing, and
// tells every window that the environment has changed; that takes up to 5 s for each one that hangs. Deleting
// what does not exist succeeds. False, and no window is told, when the registry refuses.
bool WriteEnvVariable(HKEY hive, const std::wstring& path, const std::wstring& name,
                      const std::wstring& value, bool is_delete);

// Action: posts the user's and the machine's variables. UI thread.
void getEnvVariables(int request_id);

// Action for the type "user", which is written directly, on the UI thread; worker body for any other, which
// the helper service writes. Texts are UTF-8.
void saveEnvVariable(int request_id, const std::string& type, const std::string& name,
                     const std::string& value, bool is_delete);
