#pragma once

// Where version.json and VarnelSetup.exe are published, without a trailing slash (UTF-8): the build's
// VARNEL_RELEASE_URL.
extern const char* const kReleaseUrl;
