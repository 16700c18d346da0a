#include "clean/system_files.h"

#include <gtest/gtest.h>

#include "testing/recorded_message.h"
#include "testing/recording_page.h"

TEST(SystemFiles, RepliesAreTheMessagesThePageReads) {
  EXPECT_EQ(PostedReply("getSystemFilesAdvisor", 11, true,
                        ToJson(SystemFiles{{true, 6'871'947'673}, true, {true, 17'179'869'184}, {}})),
            RecordedMessage("getSystemFilesAdvisor"));
}
