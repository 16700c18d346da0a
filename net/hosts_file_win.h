#pragma once

#include <optional>
#include <string>

// Bytes of the hosts file, C:\Windows\System32\drivers\etc\hosts (CreateFileW, ReadFile); nothing when it
// cannot be opened or not be read whole.
std::optional<std::string> ReadHostsFile();

// Worker body: posts the hosts file's text, read directly, else through the helper service.
void getHostsFile(int request_id);

// Worker body: has the helper service replace the hosts file by `content` (UTF-8), as it is.
void saveHostsFile(int request_id, const std::string& content);
