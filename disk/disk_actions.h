#pragma once

#include <string>

// Worker bodies of the disk view. Texts are UTF-8. Both end with one message to the page and never fail: what
// cannot be read is empty or 0.

// Measures `drive`, posting a progress message at every 5000th item, then the drive's folders and the largest
// files. Its folder sizes replace those of the analysis before; from the start until then none are known.
// Analyses at the same time do not disturb each other; the sizes of the one that ends last stay.
void startDiskAnalysis(int request_id, const std::string& drive);

// Posts the entries of `path`, with folder sizes from the last analysis.
void getFolderContents(int request_id, const std::string& path);
