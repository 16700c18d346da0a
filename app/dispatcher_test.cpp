#include "app/dispatcher.h"

#include <new>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "base/fields.h"
#include "base/page.h"
#include "testing/recorded_message.h"
#include "testing/recording_page.h"

namespace {

using Replies = std::vector<std::string>;

constexpr Action kTestActions[] = {
    {"testBridge",
     [](Request& request) {
       PostReply("testBridge", request.request_id, true, {{"status", "ok"}});
     }},
    {"echo",
     [](Request& request) {
       PostReply(request.action, request.request_id, true, {{"got", std::move(request.data)}});
     }},
    {"text",
     [](Request& request) { PostReply(FieldReader<std::string>::Read(request.data, "type"), 0, true); }},
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

std::wstring Nested(size_t depth) {
  return std::wstring(depth, L'[') + L'1' + std::wstring(depth, L']');
}

}  // namespace

TEST(Dispatch, PostsTheExactReplies) {
  const std::string type_error = "[json.exception.type_error.302] type must be ";
  const struct {
    std::wstring message;
    Replies want;
  } cases[] = {
      {LR"({"action":"testBridge","requestId":7,"data":{}})", {RecordedMessage("testBridge")}},
      {LR"({"action":"testBridge"})",
       {R"({"requestId":0,"status":"ok","success":true,"type":"testBridge"})"}},
      {LR"({"action":"testBridge","requestId":"7"})", {RecordedMessage("error")}},
      {LR"({"action":null})", {Failure(type_error + "string, but is null")}},
      {LR"({"action":"x","requestId":{}})", {Failure(type_error + "number, but is object")}},
      {LR"({"action":"noSuchAction","requestId":1})", {}},
      {L"[1,2]", {}},
      {LR"({"requestId":1})", {}},
      {LR"({"action":"text"})", {Failure(type_error + "string, but is null")}},
      {LR"({"action":"text","data":[1]})",
       {Failure("[json.exception.type_error.305] cannot use operator[] with a string argument with array")}},
      {L"{\"action\":\"echo\",\"data\":{\"b\":\"Žluť \\u0001\",\"a\":1}}",
       {R"({"got":{"a":1,"b":"Žluť \u0001"},"requestId":0,"success":true,"type":"echo"})"}},
      {LR"({"action":"noMemory","requestId":1})", {Failure(std::bad_alloc().what())}},
      {LR"({"action":"throwNumber"})", {Failure("unknown exception")}},
      // The quoted input ends inside the character.
      {L"é",
       {Failure("[json.exception.parse_error.101] parse error at line 1, column 1: syntax error while "
                "parsing value - invalid literal; last read: '\uFFFD'")}},
      {LR"({"action":"echo","data":)" + Nested(100'000) + L"}", {Failure("JSON nests too deeply")}},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Dispatch(c.message), c.want) << testing::PrintToString(c.message.substr(0, 60));

  for (const wchar_t* cut : {L"", L"{\"action\":", LR"({"action":"\ud800"})"})
    EXPECT_TRUE(Dispatch(cut).at(0).starts_with(R"({"message":"[json.exception.parse_error.101] )"))
        << testing::PrintToString(cut);
}

TEST(Dispatch, ConvertsEveryNumberToAnId) {
  const std::pair<const wchar_t*, int32_t> cases[] = {
      {L"true", 1},           {L"-7.9", -7},      {L"2147483647.9", INT32_MAX},
      {L"-1e300", INT32_MIN}, {L"4294967303", 7}, {L"99999999999999999999", INT32_MIN},
  };
  for (const auto& [id, want] : cases)
    EXPECT_EQ(Dispatch(LR"({"action":"testBridge","requestId":)" + std::wstring(id) + L"}"),
              Replies{R"({"requestId":)" + std::to_string(want) +
                      R"(,"status":"ok","success":true,"type":"testBridge"})"})
        << want;
}
