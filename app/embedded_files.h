#pragma once

#include <string>
#include <string_view>

// The private host of the page. Nothing outside the program answers to it.
inline constexpr wchar_t VirtualHostName[] = L"varnel.local";

// One file of the page, stored as a resource of type RCDATA.
struct EmbeddedFile {
  std::wstring_view path;
  int resource_id;
  std::wstring_view content_type;
};

// Finds the file of an address by the text after the first `VirtualHostName` in it. The path must match
// exactly: a query, a fragment or different letter case is a different path. Returns null for an unknown
// path and for an address without the host name.
const EmbeddedFile* FindEmbeddedFile(std::wstring_view uri);

// Returns the header lines of the response that serves the file.
std::wstring ResponseHeaders(const EmbeddedFile& file);
