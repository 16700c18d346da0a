#pragma once

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "testing/recording_page.h"
#include "testing/stand_ins/pipe_server_win.h"

// An action that the helper service does.
struct ServiceAction {
  std::function<void()> run;
  std::string pipe_action, data;  // what the service is asked
  nlohmann::json answer;          // what it says
  std::string reply;              // the page's message then
  std::string failed;             // and when the service is not there or says nothing of success
};

inline void ExpectServiceAction(const ServiceAction& action) {
  const auto posted = [&] {
    TakePostedTexts();
    action.run();
    return TakePostedTexts();
  };
  SCOPED_TRACE(action.pipe_action);
  EXPECT_EQ(posted(), (std::vector<std::string>{R"({"type":"show_service_error_modal"})", action.failed}));
  {
    const StandInService service({{action.pipe_action, Reply(action.answer)}});
    EXPECT_EQ(posted(), std::vector{action.reply});
    EXPECT_EQ(service.requests(), std::vector<std::string>{R"({"action":")" + action.pipe_action +
                                                           R"(","data":)" + action.data + "}\n"});
  }
  const StandInService service({{action.pipe_action, Reply({{"done", true}})}});
  EXPECT_EQ(posted(), std::vector{action.failed});
}
