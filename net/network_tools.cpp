#include "net/network_tools.h"

#include "base/text.h"

std::wstring BuildDiagnosticCommand(std::string_view type, std::string_view target) {
  return (type == "dns" ? L"nslookup " : L"ping -n 4 ") + Utf8ToWide(target);
}
