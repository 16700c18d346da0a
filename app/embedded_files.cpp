#include "app/embedded_files.h"

#include <algorithm>

namespace {

constexpr EmbeddedFile kFiles[] = {
    {L"/", 101, L"text/html; charset=utf-8"},
    {L"/index.html", 101, L"text/html; charset=utf-8"},
    {L"/css/style.css", 102, L"text/css; charset=utf-8"},
    {L"/js/app.js", 103, L"application/javascript; charset=utf-8"},
    {L"/app.png", 104, L"image/png"},
    {L"/app.ico", 105, L"image/x-icon"},
};

}  // namespace

const EmbeddedFile* FindEmbeddedFile(std::wstring_view uri) {
  const std::wstring_view host = VirtualHostName;
  const size_t found = uri.find(host);
  if (found == uri.npos) return nullptr;
  const auto file = std::ranges::find(kFiles, uri.substr(found + host.size()), &EmbeddedFile::path);
  return file == std::end(kFiles) ? nullptr : file;
}

std::wstring ResponseHeaders(const EmbeddedFile& file) {
  return L"Content-Type: " + std::wstring(file.content_type) + L"\r\nAccess-Control-Allow-Origin: *";
}
