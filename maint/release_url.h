#pragma once

// The address of version.json and VarnelSetup.exe, without a trailing slash (UTF-8): the build's
// VARNEL_RELEASE_URL.
extern const char* const kReleaseUrl;
