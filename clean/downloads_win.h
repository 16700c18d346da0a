#pragma once

#include <string>
#include <vector>

// Worker bodies.

// Replies with the old, large installers and archives that lie directly in the user's Downloads folder
// (SHGetKnownFolderPath, else %USERPROFILE%\Downloads).
void getDownloadsJunk(int request_id);

// Moves each path (UTF-8, absolute) to the Recycle Bin (SHFileOperationW) and replies how many went. The
// shell may show a message box for one that does not go.
void deleteSpecificFiles(int request_id, const std::vector<std::string>& paths);
