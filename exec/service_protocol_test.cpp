#include "exec/service_protocol.h"

#include <string>

#include <gtest/gtest.h>

#include "testing/recorded_message.h"

using nlohmann::json;

TEST(BuildServiceRequest, IsOneCompactLineInKeyOrder) {
  EXPECT_EQ(BuildServiceRequest("get_hosts_file", {}), "{\"action\":\"get_hosts_file\",\"data\":{}}\n")
      << "never null";
  EXPECT_EQ(BuildServiceRequest("save_system_env", {{"value", "Žluť\n\"x\""}, {"name", "A"}}),
            "{\"action\":\"save_system_env\",\"data\":{\"name\":\"A\",\"value\":\"Žluť\\n\\\"x\\\"\"}}\n");
  EXPECT_THROW(BuildServiceRequest("save_hosts_file", {{"content", "P\xF8\xEDkaz"}}), json::type_error);
  EXPECT_EQ(kServiceUnavailableMessage, RecordedMessage("show_service_error_modal"));
}

TEST(ParseServiceReply, ReturnsTheValueOrTheReason) {
  const std::string parse_failed = R"({"error":"Parse failed","success":false})";
  std::string padded = R"({"success":true})";
  padded.resize(kMaxServiceLineBytes, ' ');
  const std::pair<std::string, std::string> cases[] = {
      {"", R"({"error":"Empty response","success":false})"},
      {" \t\r", parse_failed},
      {"{\"content\":\"Žluť\"}\r", R"({"content":"Žluť"})"},
      {"{\"error\":\"P\xF8\xEDstup\"}", parse_failed},
      {R"({"error":"\ud800"})", parse_failed},
      {std::string(1'000'000, '['), parse_failed},
      {padded, R"({"success":true})"},
      {padded + ' ', parse_failed},
  };
  for (const auto& [line, want] : cases)
    EXPECT_EQ(ParseServiceReply(line).dump(), want) << line.substr(0, 40);
}

TEST(ReplyMembers, FallBackIfMissingOrOfAnotherType) {
  const struct {
    const char* reply;
    bool success;
    uint64_t bytes;
    const char* error;
  } cases[] = {
      {R"({"success":true,"bytes":18446744073709551615,"error":"x"})", true, 18446744073709551615u, "x"},
      {R"({})", false, 7, "none"},
      {R"({"success":1,"bytes":"9","error":null})", false, 7, "none"},
      {R"({"success":"true","bytes":-1})", false, 7, "none"},
      {R"("success")", false, 7, "none"},
  };
  for (const auto& c : cases) {
    const json reply = ParseServiceReply(c.reply);
    EXPECT_EQ(ReplySuccess(reply), c.success) << c.reply;
    EXPECT_EQ(ReplyCount(reply, "bytes", 7), c.bytes) << c.reply;
    EXPECT_EQ(ReplyText(reply, "error", "none"), c.error) << c.reply;
  }
}

TEST(ParseStreamRecord, DistinguishesTheKindsOfRecord) {
  using Kind = StreamRecord::Kind;
  const struct {
    const char* line;
    Kind kind;
    const char* message;
    int64_t code;
    bool reboot;
  } cases[] = {
      {R"({"type":"stdout","message":"40% complete."})", Kind::kOutput, "40% complete.", 0, false},
      {R"({"type":"exit","code":-1,"rebootRequired":true})", Kind::kExit, "", -1, true},
      {R"({"type":"exit","code":1,"rebootRequired":"yes"})", Kind::kExit, "", 1, false},
      {R"({"type":"heartbeat","message":7})", Kind::kIgnored, "", 0, false},
      {"{\"type\":\"stdout\",\"message\":\"\xF8\"}", Kind::kIgnored, "", 0, false},
      {R"(["stdout"])", Kind::kMistyped, "", 0, false},
      {R"({"type":1})", Kind::kMistyped, "", 0, false},
      {R"({"type":"stdout","message":5})", Kind::kMistyped, "", 0, false},
      {R"({"type":"exit","code":"0"})", Kind::kMistyped, "", 0, false},
  };
  for (const auto& c : cases) {
    const StreamRecord record = ParseStreamRecord(c.line);
    EXPECT_EQ(record.kind, c.kind) << c.line;
    EXPECT_EQ(record.message, c.message) << c.line;
    EXPECT_EQ(record.code, c.code) << c.line;
    EXPECT_EQ(record.reboot_required, c.reboot) << c.line;
  }
}
