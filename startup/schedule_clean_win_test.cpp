#include "startup/schedule_clean_win.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/exe_directory_win.h"
#include "base/text.h"
#include "testing/recorded_message.h"
#include "testing/recording_page.h"
#include "testing/stand_ins/pipe_server_win.h"

using nlohmann::json;
using testing::ElementsAre;

TEST(ToggleScheduleClean, NamesTheInstalledExecutableWhateverIsRunning) {
  TakePostedTexts();
  const StandInService service({{"toggleScheduleClean", Reply({{"success", true}})}});
  for (const bool enabled : {true, false}) {
    toggleScheduleClean(13, enabled);
    EXPECT_THAT(TakePostedTexts(), ElementsAre(RecordedMessage("toggleScheduleClean")));
    const json request = json::parse(service.requests().back());
    EXPECT_EQ(request,
              json({{"action", "toggleScheduleClean"},
                    {"data",
                     {{"enabled", enabled}, {"exePath", WideToUtf8(GetExeDirectory()) + "\\Varnel.exe"}}}}));
  }
}

TEST(ToggleScheduleClean, FailsWithoutTheServicesYes) {
  TakePostedTexts();
  constexpr char kFailed[] = R"({"requestId":13,"success":false,"type":"toggleScheduleClean"})";
  {
    const StandInService service({{"toggleScheduleClean", Reply({{"error", "x"}})}});
    toggleScheduleClean(13, true);
    EXPECT_THAT(TakePostedTexts(), ElementsAre(kFailed));
  }
  toggleScheduleClean(13, true);
  EXPECT_THAT(TakePostedTexts(), ElementsAre(R"({"type":"show_service_error_modal"})", kFailed));
}
