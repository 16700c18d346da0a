#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

// The longest request that is read: the hosts file's 8 MiB with every byte escaped.
inline constexpr size_t kMaxRequestBytes = size_t{16} * 1024 * 1024;

// A peer's request: an action with its named texts and flags. None of it is trusted.
struct PeerRequest {
  std::string action;  // UTF-8
  std::map<std::string, std::variant<bool, std::string>, std::less<>> data;

  // Return nothing if there is no such member or it has the other type.
  std::optional<bool> Flag(std::string_view name) const;
  std::optional<std::string> Text(std::string_view name) const;
};

// Reads one request line, without its line feed:
//   {"action":"save_hosts_file","data":{"content":"127.0.0.1 localhost\n"}}
// Returns nothing for anything else: other members, lists, numbers, deeper objects, repeated names, text
// that is not UTF-8. Allocates memory only for the texts, whatever the line contains. Throws only
// std::bad_alloc.
std::optional<PeerRequest> ParseRequest(std::string_view line);
