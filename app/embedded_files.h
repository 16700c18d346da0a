#pragma once

#include <string>
#include <string_view>

// The private host that the page lives under. Nothing outside the program answers to it.
inline constexpr wchar_t VirtualHostName[] = L"varnel.local";

// One file of the page, carried as a resource of type RCDATA.
struct EmbeddedFile {
  std::wstring_view path;
  int resource_id;
  std::wstring_view content_type;
};

// The file behind an address, found by what follows the first `VirtualHostName` in it. The path is compared
// exactly: a query, a fragment or another case is another path. Null for an unknown path and for an address
// without the host name.
const EmbeddedFile* FindEmbeddedFile(std::wstring_view uri);

// Header lines of the response that serves the file.
std::wstring ResponseHeaders(const EmbeddedFile& file);
