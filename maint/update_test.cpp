#include "maint/update.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "maint/version.h"
#include "testing/recorded_message.h"
#include "testing/recording_page.h"

using nlohmann::json;

TEST(DescribeUpdate, ReadsTheDescription) {
  json want = json::parse(RecordedMessage("checkForUpdates"));
  want["currentVersion"] = kCurrentVersion;
  EXPECT_EQ(
      PostedReply(
          "checkForUpdates", 5, true,
          DescribeUpdate(
              R"({"version":"99.10.0","download_url":"https://releases.varnel.example/99.10.0/VarnelSetup.exe",)"
              R"("changelog":"Rychlejší analýza disku\nOpravy","mandatory":true})")),
      want.dump());
  const std::string version(kCurrentVersion);
  EXPECT_EQ(PostedReply("checkForUpdates", 5, true,
                        DescribeUpdate(R"({"downloadUrl":"https://other.example","extra":1})")),
            R"({"changelog":"","currentVersion":")" + version +
                R"(","downloadUrl":"","hasUpdate":false,"mandatory":false,"onlineVersion":")" + version +
                R"(","requestId":5,"success":true,"type":"checkForUpdates"})")
      << "missing members have defaults";
  for (const char* description :
       {"", "<html>404</html>", "[]", "{\"version\":null}", "{\"version\":\"\xFF\"}"})
    EXPECT_ANY_THROW(DescribeUpdate(description)) << description;
}
