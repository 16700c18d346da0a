#include "net/hosts_file.h"

#include <windows.h>

#include <vector>

#include "base/handle_win.h"
#include "base/page.h"
#include "base/text.h"
#include "exec/service_pipe.h"
#include "exec/service_protocol.h"

namespace {

constexpr wchar_t kHostsPath[] = LR"(C:\Windows\System32\drivers\etc\hosts)";
constexpr size_t kChunkBytes = 64 * 1024;

}  // namespace

std::optional<std::string> ReadHostsFile() {
  const FileHandle file(CreateFileW(kHostsPath, GENERIC_READ,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) return std::nullopt;
  std::string content;
  std::vector<char> chunk(kChunkBytes);
  for (;;) {
    DWORD received = 0;
    // The editor must never get half a file: saving it would delete the other half.
    if (!ReadFile(file.get(), chunk.data(), static_cast<DWORD>(chunk.size()), &received, nullptr))
      return std::nullopt;
    if (received == 0) return content;
    content.append(chunk.data(), received);
  }
}

void getHostsFile(int request_id) {
  if (const std::optional<std::string> bytes = ReadHostsFile()) {
    PostReply("getHostsFile", request_id, true, {{"content", FileTextToUtf8(*bytes)}});
    return;
  }
  nlohmann::json answer;
  if (EnsureServiceOrNotify()) answer = SendServiceRequest("get_hosts_file", {});
  PostReply("getHostsFile", request_id, ReplySuccess(answer),
            {{"content", ReplyText(answer, "content", "")}});
}

void saveHostsFile(int request_id, const std::string& content) {
  PostReply("saveHostsFile", request_id, SendServiceCommand("save_hosts_file", {{"content", content}}));
}
