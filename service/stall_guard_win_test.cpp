#include "service/stall_guard_win.h"

#include <thread>

#include <gtest/gtest.h>

#include "testing/temp_folder_win.h"

namespace {

TEST(StallGuard, EndsAWaitOnlyIfTheWalkHasStopped) {
  constexpr int kBytes = 30;
  const TempFolder walked;
  PutFile(walked.path + L"\\file", 1);
  FileHandle input, output;
  ASSERT_TRUE(CreatePipe(input.put(), output.put(), nullptr, 0));
  const std::jthread writer([&] {
    DWORD written = 0;
    for (int i = 0; i < kBytes; ++i, Sleep(50)) WriteFile(output.get(), "x", 1, &written, nullptr);
  });
  const StallGuard guard(500);
  int received = 0;
  DWORD length = 0;
  for (char byte; ReadFile(input.get(), &byte, 1, &length, nullptr); ++received) DirectorySize(walked.path);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_OPERATION_ABORTED});
  EXPECT_EQ(received, kBytes);
}

}  // namespace
