#include "disk/analysis.h"

#include <gtest/gtest.h>

#include "testing/recorded_message.h"
#include "testing/recording_page.h"

TEST(DiskMessages, AreTheRecordedOnes) {
  const uint64_t photo_bytes = 734'003'200;
  EXPECT_EQ(PostedReply("disk_analysis_progress", 7, true,
                        {{"status", "done"},
                         {"drive", "C:\\"},
                         {"folders", ToJson(std::vector<FolderEntry>{
                                         {L"Users", L"C:\\Users", true, photo_bytes},
                                         {L"Perfect Logs", L"C:\\Perfect Logs", true, 0},
                                         {L"pagefile.sys", L"C:\\pagefile.sys", false, uint64_t{1} << 34}})},
                         {"files", ToJson(std::vector<SystemHelper::DiskFileItem>{
                                       {uint64_t{1} << 34, L"C:\\pagefile.sys"},
                                       {photo_bytes, L"C:\\Users\\Žofie\\写真\\dovolená.mp4"}})}}),
            RecordedMessage("disk_analysis_progress.done"));
  EXPECT_EQ(PostedReply("getFolderContents", 8, true,
                        {{"path", "C:\\Users\\Žofie"},
                         {"items", ToJson(std::vector<FolderEntry>{
                                       {L"写真", L"C:\\Users\\Žofie\\写真", true, photo_bytes},
                                       {L"úkoly.txt", L"C:\\Users\\Žofie\\úkoly.txt", false, 512}})}}),
            RecordedMessage("getFolderContents"));
}
