#include "net/hosts_file_win.h"

#include <vector>

#include "base/handle_win.h"
#include "base/page.h"
#include "base/reply.h"
#include "exec/service_pipe_win.h"
#include "net/hosts_file.h"

namespace {

constexpr wchar_t kHostsPath[] = L"C:\\Windows\\System32\\drivers\\etc\\hosts";
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
    // Half a file must not reach the editor: saving it would drop the other half.
    if (!ReadFile(file.get(), chunk.data(), static_cast<DWORD>(chunk.size()), &received, nullptr))
      return std::nullopt;
    if (received == 0) return content;
    content.append(chunk.data(), received);
  }
}

void getHostsFile(int request_id) {
  if (const std::optional<std::string> content = ReadHostsFile()) {
    PostJsonToJs(BuildHostsFile(request_id, *content));
    return;
  }
  nlohmann::json answer;
  if (EnsureServiceOrNotify()) answer = SendServiceRequest("get_hosts_file", {});
  PostJsonToJs(BuildHostsFileFromService(request_id, answer));
}

void saveHostsFile(int request_id, const std::string& content) {
  const bool success = SendServiceCommand("save_hosts_file", {{"content", content}});
  PostJsonToJs(MakeReply("saveHostsFile", success, request_id).dump());
}
