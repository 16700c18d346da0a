#include "clean/junk.h"

#include <string>

#include <gtest/gtest.h>

#include "base/lower_case.h"
#include "base/text.h"
#include "testing/recorded_message.h"

using nlohmann::json;

TEST(MayBeEmptied, RefusesEverythingButTemporaryFolders) {
  const auto same = [](std::wstring_view a, std::wstring_view b) {
    return LowerCase(std::wstring(a)) == LowerCase(std::wstring(b));
  };
  const KeptFolders kept = {LR"(C:\Windows)", {LR"(D:\Apps\Varnel\bin)", LR"(C:\Users\Jiří Novák\)"}};
  for (const wchar_t* folder :
       {LR"(C:\Users\Jiří Novák\AppData\Local\Temp\)", LR"(R:\)", LR"(E:\Temp)", LR"(C:\Temp\)",
        LR"(C:\Windows\Temp)", LR"(c:\windows\SYSTEMTEMP\)", LR"(C:\WindowsTemp)", LR"(C:\Users\Jiří)"})
    EXPECT_TRUE(MayBeEmptied(folder, kept, same)) << WideToUtf8(folder);
  for (const wchar_t* folder : {LR"(C:\)", LR"(C:)", LR"(C:/)", LR"(c:\users)", LR"(C:\USERS\Jiří novák)",
                                LR"(C:\Users\Jiří Novák\\)", LR"(C:\Windows\)", LR"(C:\Windows\System32\)",
                                LR"(C:\Windows\Temporary)", LR"(D:\Apps)", LR"(D:\Apps\Varnel\bin\)"})
    EXPECT_FALSE(MayBeEmptied(folder, kept, same)) << WideToUtf8(folder);
  EXPECT_FALSE(MayBeEmptied(LR"(W:\)", {LR"(W:\Windows)", {}}, same)) << "above Windows alone";
}

TEST(ParseJunkSelection, SelectsEverythingNotDeselected) {
  const std::pair<const char*, JunkFlags> cases[] = {
      {"null", {true, true, true, true, true, true, true}},
      {R"({"userTemp":false,"systemLogs":false})", {true, false, true, true, true, true, false}},
      {R"({"windowsTemp":false,"prefetch":false,"winUpdate":true,"browserCache":false,"shaderCache":false,"other":1})",
       {false, true, false, true, false, false, true}},
  };
  for (const auto& [data, want] : cases)
    EXPECT_EQ(ParseJunkSelection(json::parse(data), 1).flags, want) << data;
  for (const char* data : {R"({"userTemp":null})", R"({"userTemp":0})", R"([])"})
    EXPECT_THROW(ParseJunkSelection(json::parse(data), 1), json::type_error) << data;
}

TEST(RaiseToServiceSizes, TakesTheLargerFigureOfASuccessfulAnswer) {
  const struct {
    const char* answer;
    uint64_t windows_temp, prefetch;
  } cases[] = {
      {R"({"success":true,"windowsTempBytes":99,"prefetchBytes":201})", 100, 201},
      {R"({"success":true,"windowsTempBytes":18446744073709551615})", 18446744073709551615u, 200},
      {R"({"success":true,"windowsTempBytes":"500","prefetchBytes":-1})", 100, 200},
      {R"({"success":false,"windowsTempBytes":500,"prefetchBytes":500})", 100, 200},
  };
  for (const auto& c : cases) {
    JunkSizes sizes = {{100, 1, 200, 1, 1, 1, 1}};
    RaiseToServiceSizes(json::parse(c.answer), sizes);
    const JunkSizes want = {{c.windows_temp, 1, c.prefetch, 1, 1, 1, 1}};
    EXPECT_EQ(sizes.bytes, want.bytes) << c.answer;
  }
}

TEST(BuildJunkReply, IsTheMessageThePageReads) {
  EXPECT_EQ(BuildJunkReply("junk", 7, {{38912, 128000, 4096, 10, 1048576, 2048, 0}}),
            RecordedMessage("junk"));
  EXPECT_EQ(BuildJunkReply("cleanJunk", 8, {{9007199254740992, 15, 0, 0, 0, 0, 3}}),
            RecordedMessage("cleanJunk"));
  EXPECT_EQ(BuildJunkReply("junk", 7, {{}, {false, true}}), RecordedMessage("junk.kept"));
  for (const char* id : {"7.5", "4294967296", "true"}) {
    const JunkSelection selection = ParseJunkSelection(json::object(), json::parse(id));
    EXPECT_EQ(json::parse(BuildJunkReply("cleanJunk", selection.request_id, {}))["requestId"].dump(), id);
  }
}
