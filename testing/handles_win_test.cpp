// Tests that the functions called again and again leak no handles.
#include <windows.h>

#include <cstdint>

#include <gtest/gtest.h>

#include "clean/downloads.h"
#include "clean/junk.h"
#include "clean/system_files.h"
#include "disk/analysis.h"
#include "net/environment_win.h"
#include "net/hosts_file.h"
#include "startup/startup_items.h"
#include "system/processes.h"
#include "system/status.h"
#include "system/telemetry.h"
#include "testing/recording_page.h"

namespace {

// Counts the handles by trying every value that a handle of a small process can have. Under Wine,
// GetProcessHandleCount always returns 0, and the process list reports the table's capacity.
int HandleCount() {
  int count = 0;
  for (uintptr_t value = 4; value < 4 * 4096; value += 4) {
    DWORD flags = 0;
    count += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) != FALSE;
  }
  return count;
}

}  // namespace

TEST(Handles, AreClosedByEveryReader) {
  const struct {
    const char* name;
    void (*read)(int);
    int rounds = 20;
  } readers[] = {
      {"getStatus", getStatus, 5},  // creating a graphics factory takes 100 ms under Wine
      {"getTelemetry", getTelemetry},
      {"getProcesses", getProcesses},
      {"killProcess", [](int id) { killProcess(id, 0xFFFFFFF0); }},
      {"getEnvVariables", getEnvVariables},
      {"getHostsFile", getHostsFile},
      {"getStartupItems", getStartupItems},
      {"getJunk", getJunk, 5},
      {"getDownloadsJunk", getDownloadsJunk},
      {"getSystemFilesAdvisor", getSystemFilesAdvisor},
      {"startDiskAnalysis", [](int id) { startDiskAnalysis(id, "C:\\windows\\inf"); }, 5},
      {"getFolderContents", [](int id) { getFolderContents(id, "C:\\windows\\inf"); }},
  };
  for (const auto& reader : readers) {
    for (int i = 0; i < 3; ++i) reader.read(i);  // libraries stay loaded
    const int before = HandleCount();
    TakePostedTexts();
    for (int i = 0; i < reader.rounds; ++i) reader.read(i);
    EXPECT_GE(TakePostedTexts().size(), static_cast<size_t>(reader.rounds)) << reader.name;
    EXPECT_EQ(HandleCount(), before) << reader.name;
  }
}
