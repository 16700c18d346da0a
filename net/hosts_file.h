#pragma once

#include <optional>
#include <string>

// Posts the text of the hosts file, C:\Windows\System32\drivers\etc\hosts. Reads it directly
// (CreateFileW, ReadFile), otherwise through the helper service. Bytes that are not UTF-8 are read in
// the ANSI code page. Worker body.
void getHostsFile(int request_id);

// Has the helper service replace the hosts file with `content` (UTF-8), unchanged. Worker body.
void saveHostsFile(int request_id, const std::string& content);

// Returns the file's bytes, or nothing if it cannot be opened or read in full.
std::optional<std::string> ReadHostsFile();
