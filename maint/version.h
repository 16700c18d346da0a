#pragma once

#include <string_view>

// The program's own version, "major.minor.patch", as the page and the update server see it: the build's.
extern const std::string_view kCurrentVersion;

struct Version {
  int major = 0;
  int minor = 0;
  int patch = 0;
  friend auto operator<=>(const Version&, const Version&) = default;
};

// Reads "major.minor.patch" as far as the text has this form: signed decimal integers, white space before
// each allowed, what follows is ignored. Numbers that cannot be read stay 0, ones outside the range of int
// become its nearest end.
Version ParseVersion(std::string_view text);
