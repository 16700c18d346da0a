#pragma once

#include <string_view>

// The program's version, "major.minor.patch", set by the build, for the page and the update check.
extern const std::string_view kCurrentVersion;

struct Version {
  int major = 0;
  int minor = 0;
  int patch = 0;
  friend auto operator<=>(const Version&, const Version&) = default;
};

// Reads "major.minor.patch" as far as the text has this form: signed decimal integers, each possibly
// preceded by white space. Ignores the rest. Numbers that cannot be read stay 0; numbers outside the
// range of int become its nearest limit.
Version ParseVersion(std::string_view text);
