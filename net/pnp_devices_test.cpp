#include "net/pnp_devices.h"

#include <gtest/gtest.h>

#include "testing/recorded_message.h"
#include "testing/recording_page.h"

using nlohmann::json;

TEST(ParsePnpDevices, ReadsTheOutputOfPowerShell) {
  EXPECT_EQ(
      PostedReply(
          "getPnpDevices", 7, true,
          {{"devices",
            ParsePnpDevices(
                R"([{"FriendlyName":"Peat PCIe Root Port #1 \u0026 Bridge","Class":"SYSTEM","Status":"OK"},)"
                R"({"FriendlyName":null,"Class":"NET","Status":"OK"},{"Class":"NET"},7,)"
                R"({"FriendlyName":"Zvuková karta Peat®","Class":"MEDIA","Status":"OK"},)"
                R"({"FriendlyName":"Peat Filter","Class":null}])"
                "\r\n")}}),
      RecordedMessage("getPnpDevices"));
  const json one = {{{"FriendlyName", "Peat"}, {"Class", "NET"}, {"Status", "OK"}}};
  struct {
    const char* name;
    std::string output;
    bool success;
    json devices;
  } cases[] = {
      {"one bare object", R"({"FriendlyName":"Peat","Class":"NET","Status":"OK"})", true, one},
      {"a mark in front",
       "\xEF\xBB\xBF"
       R"([{"FriendlyName":"Peat","Class":"NET","Status":"OK"}])",
       true, one},
      {"other types become text",
       R"([{"FriendlyName":7,"Class":["NET"],"Status":true}])",
       true,
       {{{"FriendlyName", "7"}, {"Class", "[\"NET\"]"}, {"Status", "true"}}}},
      {"a warning in front", "WARNING: slow\r\n[]", false, json::array()},
      {"half a surrogate", R"([{"FriendlyName":"\ud800"}])", false, json::array()},
  };
  for (const auto& c : cases) {
    if (c.success)
      EXPECT_EQ(ParsePnpDevices(c.output), c.devices) << c.name;
    else
      EXPECT_ANY_THROW(ParsePnpDevices(c.output)) << c.name;
  }
  EXPECT_EQ(ParsePnpDevices("[{\"FriendlyName\":\"Zvukov\xA0 karta\"}]").size(), 1u) << "code page 852";
}
