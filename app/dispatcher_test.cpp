#include "app/dispatcher.h"

#include <new>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "base/fields.h"
#include "base/json_text.h"
#include "testing/recorded_message.h"
#include "testing/recording_page.h"

namespace {

using Replies = std::vector<std::string>;

constexpr Action kTestActions[] = {
    {"testBridge",
     [](Request& request) {
       PostSuccess("testBridge", request.request_id, {{"status", "ok"}});
     }},
    {"echo",
     [](Request& request) {
       PostSuccess(request.action, request.request_id, {{"got", std::move(request.data)}});
     }},
    {"echo", [](Request&) { FAIL() << "the first match runs"; }},
    {"text", [](Request& request) { PostSuccess(FieldReader<std::string>::Read(request.data, "type"), 0); }},
    {"noMemory", [](Request&) { throw std::bad_alloc(); }},
    {"throwNumber", [](Request&) { throw 7; }},
};

Replies Dispatch(std::wstring_view message) {
  TakePostedTexts();
  ActionDispatcher(kTestActions).Dispatch(message);
  return TakePostedTexts();
}

std::string Failure(const std::string& message) {
  return R"({"message":")" + message + R"(","type":"error"})";
}

std::wstring Nested(size_t depth, std::wstring_view open, std::wstring_view close) {
  std::wstring text;
  for (size_t i = 0; i < depth; ++i) text += open;
  text += L'1';
  for (size_t i = 0; i < depth; ++i) text += close;
  return text;
}

}  // namespace

TEST(Dispatch, AnswersExactly) {
  const std::string type_error = "[json.exception.type_error.302] type must be ";
  const struct {
    const char* name;
    std::wstring message;
    Replies want;
  } cases[] = {
      {"a request", LR"({"action":"testBridge","requestId":7,"data":{}})", {RecordedMessage("testBridge")}},
      {"no id",
       LR"({"action":"testBridge"})",
       {R"({"requestId":0,"status":"ok","success":true,"type":"testBridge"})"}},
      {"text for an id", LR"({"action":"testBridge","requestId":"7"})", {RecordedMessage("error")}},
      {"null for an action", LR"({"action":null})", {Failure(type_error + "string, but is null")}},
      {"an id for an unknown action",
       LR"({"action":"x","requestId":{}})",
       {Failure(type_error + "number, but is object")}},
      {"unknown", LR"({"action":"noSuchAction","requestId":1})", {}},
      {"array", L"[1,2]", {}},
      {"no action", LR"({"requestId":1})", {}},
      {"bare text", LR"("testBridge")", {}},
      {"missing data", LR"({"action":"text"})", {Failure(type_error + "string, but is null")}},
      {"null data", LR"({"action":"text","data":null})", {Failure(type_error + "string, but is null")}},
      {"missing data as a whole",
       LR"({"action":"echo","requestId":2})",
       {R"({"got":null,"requestId":2,"success":true,"type":"echo"})"}},
      {"array for data",
       LR"({"action":"text","data":[1]})",
       {Failure("[json.exception.type_error.305] cannot use operator[] with a string argument with array")}},
      {"sorted keys, raw characters",
       L"{\"action\":\"echo\",\"data\":{\"b\":\"Žluť \\u0001\",\"a\":1}}",
       {R"({"got":{"a":1,"b":"Žluť \u0001"},"requestId":0,"success":true,"type":"echo"})"}},
      {"no memory", LR"({"action":"noMemory","requestId":1})", {Failure(std::bad_alloc().what())}},
      {"not an exception object", LR"({"action":"throwNumber"})", {Failure("unknown exception")}},
  };
  for (const auto& c : cases) EXPECT_EQ(Dispatch(c.message), c.want) << c.name;
}

TEST(Dispatch, AnswersTextThatIsNotJson) {
  const std::wstring action = LR"({"action":"testBridge"})";
  const std::pair<const char*, std::wstring> cases[] = {
      {"empty", L""},
      {"trailing garbage", action + L" x"},
      {"comment", L"// c\n" + action},
      {"cut", L"{\"action\":"},
      {"lone surrogate, escaped", LR"({"action":"\ud800"})"},
      {"unclosed brackets", std::wstring(10'000, L'[')},
      {"unclosed objects", Nested(10'000, L"{\"a\":", L"")},
  };
  for (const auto& [name, message] : cases) {
    const Replies replies = Dispatch(message);
    ASSERT_EQ(replies.size(), 1u) << name;
    EXPECT_TRUE(replies[0].starts_with(R"({"message":"[json.exception.parse_error.101] )"))
        << name << ": " << replies[0];
    EXPECT_TRUE(replies[0].ends_with(R"(","type":"error"})")) << name;
  }
  // The quotation of the input ends inside the character.
  EXPECT_EQ(
      Dispatch(L"é"),
      Replies{Failure("[json.exception.parse_error.101] parse error at line 1, column 1: syntax error while "
                      "parsing value - invalid literal; last read: '\uFFFD'")});
  EXPECT_TRUE(Dispatch(L"1e999").at(0).starts_with(R"({"message":"[json.exception.out_of_range.406] )"));
}

TEST(Dispatch, ConvertsEveryNumberToAnId) {
  const std::pair<const wchar_t*, int32_t> cases[] = {
      {L"0", 0},
      {L"true", 1},
      {L"false", 0},
      {L"-7.9", -7},
      {L"2147483647.9", INT32_MAX},
      {L"-2147483648.9", INT32_MIN},
      {L"2147483648", INT32_MIN},
      {L"4294967303", 7},
      {L"18446744073709551615", -1},
      {L"1e300", INT32_MIN},
      {L"-1e300", INT32_MIN},
      {L"99999999999999999999", INT32_MIN},
  };
  for (const auto& [id, want] : cases)
    EXPECT_EQ(Dispatch(LR"({"action":"testBridge","requestId":)" + std::wstring(id) + L"}"),
              Replies{R"({"requestId":)" + std::to_string(want) +
                      R"(,"status":"ok","success":true,"type":"testBridge"})"})
        << want;
}

// Serialising takes 2.9 KB of stack a level with the sanitizers of the native build, whose threads have 8 MB.
#ifdef _WIN32
constexpr size_t kDepth = kMaxJsonDepth - 1;
#else
constexpr size_t kDepth = 2'000;
#endif

TEST(Dispatch, TakesLargeAndDeepRequests) {
  const std::wstring head = LR"({"action":"echo","data":)";
  const std::wstring large = L'"' + std::wstring(5'000'000, L'x') + L'"';
  for (const std::wstring& data : {large, Nested(kDepth, L"[", L"]"), Nested(kDepth, L"{\"a\":", L"}")}) {
    const Replies replies = Dispatch(head + data + L"}");
    ASSERT_EQ(replies.size(), 1u);
    const std::string want = R"({"got":)" + std::string(data.begin(), data.end()) +
                             R"(,"requestId":0,"success":true,"type":"echo"})";
    EXPECT_TRUE(replies[0] == want) << replies[0].substr(0, 200);
  }
  EXPECT_EQ(Dispatch(head + Nested(100'000, L"[", L"]") + L"}"), Replies{Failure("JSON nests too deeply")});
}
