#include "startup/schedule_clean_win.h"

#include <gtest/gtest.h>

#include "base/exe_directory_win.h"
#include "base/text.h"
#include "testing/recorded_message.h"
#include "testing/service_action_win.h"

TEST(ToggleScheduleClean, NamesTheInstalledExecutableWhateverIsRunning) {
  const nlohmann::json exe_path = WideToUtf8(GetExeDirectory()) + "\\Varnel.exe";
  for (const char* enabled : {"true", "false"})
    ExpectServiceAction({[&] { toggleScheduleClean(13, enabled == std::string("true")); },
                         "toggleScheduleClean",
                         std::string(R"({"enabled":)") + enabled + R"(,"exePath":)" + exe_path.dump() + "}",
                         {{"success", true}},
                         RecordedMessage("toggleScheduleClean"),
                         R"({"requestId":13,"success":false,"type":"toggleScheduleClean"})"});
}
