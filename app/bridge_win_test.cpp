#include <windows.h>
#include <psapi.h>

#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "app/app_fixture_win.h"
#include "base/page.h"
#include "base/text.h"
#include "testing/debug_output_win.h"
#include "testing/recorded_message.h"

namespace {

using Lines = std::vector<std::wstring>;

const Lines kQueued = {L"[Varnel Debug] PostJsonToJs: calling PostMessageW...\n",
                       L"[Varnel Debug] PostMessageW queued successfully.\n"};

class Bridge : public WindowTest {
 protected:
  // Points the bridge to another window for as long as the object lives.
  struct OtherWindow {
    explicit OtherWindow(HWND window) : kept(std::exchange(State().main_window, window)) {}
    ~OtherWindow() { State().main_window = kept; }
    HWND kept;
  };
};

size_t CommittedBytes() {
  PROCESS_MEMORY_COUNTERS counters = {};
  GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters));
  return counters.PagefileUsage;
}

}  // namespace

TEST_F(Bridge, DeliversInTheOrderOfPostingFromAnyThread) {
  State().view = &view_;
  std::thread([] {
    for (const char* text : {"\"Žluť 1\"", "\"Žluť 2\""}) PostJsonToJs(text);
  }).join();
  EXPECT_TRUE(view_.posted.empty()) << "only the window's own thread may deliver";
  Pump();
  EXPECT_EQ(view_.posted, (Lines{L"\"Žluť 1\"", L"\"Žluť 2\""}));
}

TEST_F(Bridge, WritesItsStepsForADebugger) {
  const DebugOutput output;
  PostJsonToJs("{}");
  EXPECT_EQ(output.TakeLines(), kQueued);

  const HWND gone =
      CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
  DestroyWindow(gone);
  for (const HWND window : {gone, HWND{nullptr}}) {
    const OtherWindow other(window);
    PostJsonToJs("{}");
    EXPECT_EQ(output.TakeLines(), (Lines{kQueued[0], L"[Varnel Debug] PostMessageW failed! Error: 1400\n"}));
  }
}

TEST_F(Bridge, FreesTheTextOnEveryPath) {
  const std::string large = '"' + std::string(4'000'000, 'x') + '"';
  const size_t before = CommittedBytes();
  for (int i = 0; i < 30; ++i) {
    PostJsonToJs(large);  // no view
    Pump();
    State().view = &view_;
    EXPECT_TRUE(view_.posted.empty());
    PostJsonToJs(large);  // delivered
    Send(WM_POST_JSON, 0, 0);
    Pump();
    State().view.Reset();
    EXPECT_EQ(std::exchange(view_.posted, {}).size(), 1u);
    const OtherWindow none(nullptr);
    PostJsonToJs(large);  // not posted
  }
  EXPECT_LT(CommittedBytes(), before + 50'000'000) << "each path carries 240 MB in all";
}

TEST_F(Bridge, SendsConsoleLines) {
  State().view = &view_;
  const DebugOutput output;
  SendConsoleLog("[DebugSystem] Gathering system debug information...", "system-line");
  SendConsoleLog("cut \xC5", "");
  const Lines lines = output.TakeLines();
  ASSERT_EQ(lines.size(), 6u);
  EXPECT_EQ(lines[0], L"[Varnel C++] [DebugSystem] Gathering system debug information...\n");
  EXPECT_EQ(lines[1], kQueued[0]);
  Pump();
  EXPECT_EQ(view_.posted, (Lines{Utf8ToWide(RecordedMessage("console_log")),
                                 L"{\"message\":\"cut \xFFFD\",\"style\":\"\",\"type\":\"console_log\"}"}));
}
