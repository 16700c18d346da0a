#include "system/processes.h"

#include <windows.h>

#include <algorithm>

#include <gtest/gtest.h>

#include "base/handle_win.h"
#include "testing/recording_page.h"

// System processes and virus scanners deny access in this way.
TEST(ListProcesses, CountsAProcessThatDeniesAccessAsASystemProcess) {
  SECURITY_DESCRIPTOR descriptor;
  ACL nobody;
  InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
  InitializeAcl(&nobody, sizeof(nobody), ACL_REVISION);
  SetSecurityDescriptorDacl(&descriptor, TRUE, &nobody, FALSE);
  SECURITY_ATTRIBUTES attributes = {sizeof(attributes), &descriptor, FALSE};
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION started = {};
  wchar_t line[] = L"notepad";
  ASSERT_TRUE(CreateProcessW(nullptr, line, &attributes, nullptr, FALSE, CREATE_SUSPENDED, nullptr, nullptr,
                             &startup, &started));
  const KernelHandle process(started.hProcess), thread(started.hThread);
  const auto processes = ListProcesses();
  const auto row = std::ranges::find(processes, started.dwProcessId, &ProcessInfo::pid);
  killProcess(7, started.dwProcessId);
  TerminateProcess(process.get(), 0);
  ASSERT_NE(row, processes.end());
  EXPECT_TRUE(row->is_system);
  EXPECT_EQ(row->mem_usage_mb + row->cpu_time_sec, 0);
  EXPECT_EQ(TakePostedMessages().at(0)["success"], false);
}
