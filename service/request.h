#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

// Longest request that is read: the hosts file's 8 MiB, with every byte of it escaped.
inline constexpr size_t kMaxRequestBytes = size_t{16} * 1024 * 1024;

// What a peer asks for: an action and its named texts and flags. Nothing in it is to be trusted.
struct Request {
  std::string action;  // UTF-8
  std::map<std::string, std::variant<bool, std::string>, std::less<>> data;

  // Nothing when there is no such member, or it is of the other type.
  std::optional<bool> Flag(std::string_view name) const;
  std::optional<std::string> Text(std::string_view name) const;
};

// Reads one request line, without its line feed:
//   {"action":"save_hosts_file","data":{"content":"127.0.0.1 localhost\n"}}
// Nothing for anything else: other members, lists, numbers, deeper objects, names given twice, text that is
// not UTF-8. Takes memory for the texts only, however the line is built. Never throws but std::bad_alloc.
std::optional<Request> ParseRequest(std::string_view line);
