#include "exec/tool_stream.h"

#include <functional>

#include <gtest/gtest.h>

#include "testing/recorded_message.h"
#include "testing/recording_page.h"

TEST(ToolStream, PostsTheRecordedMessages) {
  const ToolStream ping("ping_diagnostic_stream", 7), update("update_stream", 0),
      removal("uninstall_stream", 0);
  const std::pair<const char*, std::function<void()>> cases[] = {
      {"ping_diagnostic_stream.stdout", [&] { ping.Line("Reply from 192.0.2.1: bytes=32 time<1ms TTL=64"); }},
      {"ping_diagnostic_stream.exit", [&] { ping.ExitUnnumbered(1); }},
      {"ping_diagnostic_stream.failed",
       [&] {
         ping.ExitUnnumbered(-1, {{"error", "Failed to start process"}});
       }},
      {"update_stream.status",
       [&] { update.Status("Inicializuji instalaci pro balíček: Brook.TarnSync..."); }},
      {"update_stream.stdout",
       [&] {
         update.Line("██▒▒  30.1 MB / 63.0 MB", {{"isProgress", true}});
       }},
      {"update_stream.exit",
       [&] {
         update.Exit(0x8A15002B, {{"rebootRequired", false}});
       }},
      {"uninstall_stream.status",
       [&] { removal.Status("Inicializuji odinstalaci balíčku Brook.TarnSync..."); }},
      {"uninstall_stream.stdout", [&] { removal.Line("Successfully uninstalled"); }},
      {"uninstall_stream.exit", [&] { removal.Exit(0); }},
  };
  for (const auto& [recorded, post] : cases) {
    TakePostedTexts();
    post();
    EXPECT_EQ(TakePostedTexts(), std::vector{RecordedMessage(recorded)}) << recorded;
  }
}
