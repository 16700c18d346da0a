#pragma once

// Worker bodies of the quick repairs. Each replies through the page functions (base/page.h).

// "ipconfig /flushdns"; replies with what it printed, and always with success.
void flushDns(int request_id);

void rebuildIcons(int request_id);

// File and component check in the helper service, streamed line by line.
void sfcVerify(int request_id);

// Asks the helper service to configure safe mode and restart.
void safemodeReboot(int request_id);

// Ends every Explorer process (toolhelp snapshot, TerminateProcess), deletes the icon and thumbnail caches
// under %LOCALAPPDATA% and starts Explorer again. True when the new Explorer was started; processes and files
// that resist are left. Takes at least 500 ms.
bool RebuildIconCache();
