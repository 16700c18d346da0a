#pragma once

#include <optional>
#include <string>

// Posts the text of the hosts file, C:\Windows\System32\drivers\etc\hosts: read directly
// (CreateFileW, ReadFile), bytes that are not UTF-8 taken as text in the ANSI code page, else
// through the helper service. Worker body.
void getHostsFile(int request_id);

// Has the helper service replace the hosts file by `content` (UTF-8), as it is. Worker body.
void saveHostsFile(int request_id, const std::string& content);

// Returns the file's bytes; nothing if it cannot be opened or read whole.
std::optional<std::string> ReadHostsFile();
