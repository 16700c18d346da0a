#include <cstdlib>

#include "base/text.h"
#include "service/rules.h"
#include "service/tool_text.h"
#include "testing/fuzz_target.h"

namespace {

const ProgramFolders kFolders = {{L"C:\\Program Files", L"C:\\Program Files (x86)", L"C:\\ProgramData"},
                                 L"C:\\Program Files\\Varnel\\bin"};

void Check(bool is_so) {
  if (!is_so) std::abort();
}

}  // namespace

// Reads any request and decides on it, up to the point where something would be done. Checks that every
// allowed request has properties that can be verified without the rules.
FUZZ_TARGET(service_request, bytes) {
  ToolText().Add(bytes);
  Printable(bytes);
  const std::optional<PeerRequest> request = ParseRequest(bytes);
  if (!request) return;
  ReadJunkFlags(*request);
  ParseServiceCommand(request->Text("command").value_or(""));
  const bool is_delete = request->Flag("is_delete").value_or(false);
  for (const auto& [member, value] : request->data) {
    const std::string text = request->Text(member).value_or("");
    const std::wstring wide = Utf8ToWide(text);
    Check(!IsDriverTitle(text) || text.find_first_of("\"'&|;$`%\n") == text.npos);
    Check(!MayChangeVariable(wide, L"x", is_delete) ||
          wide.find_first_of(std::wstring_view(L"=\0", 2)) == wide.npos);
    IsStartupName(wide);
    IsDevService(wide);
    IsOwnFile(wide, kFolders.own);
    const SamePath same = [](auto a, auto b) { return a == b; };
    IsTemporaryFolder(wide, {L"C:\\Windows", {L"C:\\Users\\a"}}, same);
    if (MayRemoveFolder(wide, kFolders, same)) {
      Check(wide.size() > 15);
      Check(wide.find(L"..") == wide.npos || wide.find(L"\\..") == wide.npos);
      Check(wide.find(L'/') == wide.npos && wide.find(L':', 2) == wide.npos);
    }
    if (const auto names = RemovableKey(wide)) Check(names->size() > 1 && !names->back().empty());
  }
}
