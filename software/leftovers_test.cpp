#include "software/leftovers.h"

#include <gtest/gtest.h>

#include "testing/recorded_message.h"
#include "testing/recording_page.h"

TEST(LeftoverCandidates, ListsFoldersAndKeysInOrder) {
  const struct {
    const char *name, *id, *display_name;
    std::vector<std::string> folders, keys;  // below one root, and below Software
  } cases[] = {
      {"vendor and tool",
       "Brook.TarnSync",
       "Tarn Sync",
       {"Tarn Sync", "TarnSync", "Brook\\TarnSync", "Brook\\Tarn Sync", "Brook.TarnSync"},
       {"Brook\\TarnSync", "Brook\\Tarn Sync", "Tarn Sync", "TarnSync", "Brook.TarnSync"}},
      {"no dot, no publisher", "9QX2B4LMN0PR", "Copse", {"Copse", "9QX2B4LMN0PR"}, {"Copse", "9QX2B4LMN0PR"}},
      {"each place once in whatever letter case",
       "Tarn.tarn",
       "TARN",
       {"TARN", "Tarn\\tarn", "Tarn.tarn"},
       {"Tarn\\tarn", "TARN", "Tarn.tarn"}},
      {"leading dot", ".tool", "Tool", {"Tool", ".tool"}, {"Tool", ".tool"}},
      {"empty texts never name a root", "", "", {}, {}},
      {"nor do dots and blanks", "..", " . ", {}, {}},
      {"nor a way upwards", "..\\Brook", "Tarn\\..\\..", {}, {}},
      {"nor separators at the ends", "\\Brook", "Tarn/", {}, {}},
  };
  const auto below = [](const char* root, std::vector<std::string> paths) {
    for (std::string& path : paths) path = root + ("\\" + path);
    return paths;
  };
  for (const auto& c : cases) {
    const LeftoverNameParts parts = SplitLeftoverName(c.id, c.display_name);
    EXPECT_EQ(LeftoverFolderCandidates({"C:\\Data"}, parts), below("C:\\Data", c.folders)) << c.name;
    EXPECT_EQ(LeftoverKeyCandidates(parts), below("Software", c.keys)) << c.name;
  }
  const std::vector<std::string> root_by_root = {"C:\\A\\Copse", "C:\\B\\Copse"};
  EXPECT_EQ(LeftoverFolderCandidates({"C:\\A", "C:\\B", "C:\\A"}, SplitLeftoverName("Copse", "Copse")),
            root_by_root);
}

TEST(LeftoverRemoval, IsChosenByTypeAndPath) {
  const struct {
    const char *type, *path;
    LeftoverRemoval want;
  } cases[] = {
      {"directory", "C:\\Users\\me\\AppData\\Local\\Tarn", LeftoverRemoval::kLocal},
      {"directory", "C:\\Users", LeftoverRemoval::kServiceFolder},
      {"directory", "D:\\Users\\me\\Tarn", LeftoverRemoval::kServiceFolder},
      {"directory", "C:\\Program Files\\Tarn", LeftoverRemoval::kServiceFolder},
      {"registry", "HKLM\\Software\\Tarn", LeftoverRemoval::kServiceKey},
      {"registry", "HKLM\\", LeftoverRemoval::kNone},
      {"registry", "HKLM\\\\", LeftoverRemoval::kNone},
      {"registry", "HKCU\\Software\\Tarn", LeftoverRemoval::kLocal},
      {"registry", "hklm\\Software\\Tarn", LeftoverRemoval::kLocal},
      {"Directory", "C:\\Users\\me\\Tarn", LeftoverRemoval::kNone},
      {"", "", LeftoverRemoval::kNone},
  };
  for (const auto& c : cases)
    EXPECT_EQ(ChooseLeftoverRemoval({c.type, c.path}), c.want) << c.type << " " << c.path;
}

TEST(LeftoverReplies, AreAsRecorded) {
  EXPECT_EQ(PostedReply("findLeftovers", 31, true,
                        {{"leftovers",
                          ToJson(std::vector<LeftoverItem>{
                              {"directory", "C:\\Users\\Žofie\\AppData\\Local\\Tarn Sync", 5'000'000'000},
                              {"registry", "HKCU\\Software\\Brook\\TarnSync"},
                              {"registry", "HKLM\\Software\\Brook\\TarnSync"}})}}),
            RecordedMessage("findLeftovers"));
}
