#pragma once

#include <windows.h>

#include <string>

// Posts the user's and the machine's variables, names and stored values; environment strings in values are
// not expanded. A value that is not text is shown empty; one longer than 32766 bytes is left out. UI thread.
void getEnvVariables(int request_id);

// Sets (always as REG_EXPAND_SZ) or deletes a variable: for the type "user" directly, on the UI thread, for
// any other through the helper service, on a worker. Texts are UTF-8.
void saveEnvVariable(int request_id, const std::string& type, const std::string& name,
                     const std::string& value, bool is_delete);

// Writes a value of an environment key, which is created if missing, and tells every window that the
// environment has changed; that takes up to 5 s for each one that hangs. Deleting what does not exist
// succeeds. Returns false, and tells no window, if the registry refuses.
bool WriteEnvVariable(HKEY hive, const std::wstring& path, const std::wstring& name,
                      const std::wstring& value, bool is_delete);
