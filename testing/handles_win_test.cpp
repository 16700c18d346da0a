// What reads the machine's state again and again leaves no handle behind.
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

// Tries every value that a handle of a small process has: GetProcessHandleCount always answers 0 under Wine,
// and the process list's figure there is the table's capacity.
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
      {"getStatus", getStatus, 5},  // a graphics factory takes a tenth of a second under Wine
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
    for (int i = 0; i < 3; ++i) reader.read(i);  // libraries that are loaded stay
    const int before = HandleCount();
    TakePostedTexts();
    for (int i = 0; i < reader.rounds; ++i) reader.read(i);
    EXPECT_GE(TakePostedTexts().size(), static_cast<size_t>(reader.rounds)) << reader.name;
    EXPECT_EQ(HandleCount(), before) << reader.name;
  }
}
