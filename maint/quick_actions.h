#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

// Texts, replies and decisions of the quick repairs. Replies and stream messages are compact JSON documents.

std::string BuildQuickActionReply(int request_id, bool success, std::string_view message);
std::string BuildRebuildIconsReply(int request_id, bool success);
std::string BuildSafeModeReply(int request_id, bool success);

std::string BuildFileCheckStatus(int request_id);
std::string BuildFileCheckLine(int request_id, std::string_view line);
std::string BuildFileCheckExit(int request_id, int64_t code, std::string_view message);

// What the person reads when the service's file check ended with `code`.
std::string FileCheckResultText(int64_t code);

// Explorer's process name in any case.
bool IsExplorer(std::wstring_view executable_name);

// Icon and thumbnail cache files of Explorer; the test is case-sensitive.
bool IsIconCacheFile(std::wstring_view file_name);
