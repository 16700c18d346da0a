#include "maint/release_url.h"

const char* const kReleaseUrl = VARNEL_RELEASE_URL;
