#include "net/ports.h"

#include <gtest/gtest.h>

#include "testing/recorded_message.h"
#include "testing/recording_page.h"

namespace {

using nlohmann::json;

constexpr char kNetstat[] =
    "\r\nActive Connections\r\n\r\n"
    "  Proto  Local Address          Foreign Address        State           PID\r\n"
    "  TCP    0.0.0.0:135            0.0.0.0:0              LISTENING       1016\r\n"
    "  TCP    127.0.0.1:5354         127.0.0.1:49670        ESTABLISHED     3644\r\n"
    "  TCP    127.0.0.1:5354         0.0.0.0:0              LISTENING       3644\r\n"
    "  TCP    [::]:445               [::]:0                 LISTENING       4\r\n"
    "  TCP    [::1]:8080             [::]:0                 LISTENING       5120\r\n"
    "  TCP    [fe80::1c2d:3e4f:5a6b:7c8d%12]:5357  [fe80::9:8:7:6%12]:58831  TIME_WAIT       0\r\n"
    "  UDP    127.0.0.1:50199        127.0.0.1:50199                        1364\r\n";

// Returns one line per socket, its members separated by bars.
std::string RowsOf(std::string_view output) {
  std::string rows;
  for (const json& port : ParseListeningPorts(output)) {
    for (const char* name : {"proto", "local", "port", "state", "pid"})
      rows += port.at(name).get<std::string>() + '|';
    rows += '\n';
  }
  return rows;
}

}  // namespace

TEST(ParseListeningPorts, ReadsTheTable) {
  EXPECT_EQ(PostedReply("getOpenPorts", 7, true, {{"ports", ParseListeningPorts(kNetstat)}}),
            RecordedMessage("getOpenPorts"));
}

TEST(ParseListeningPorts, ReadsOddLines) {
  const struct {
    const char* name;
    const char* output;
    const char* want;
  } cases[] = {
      {"after a heading in code page 852",
       "\r\nAktivn\xA1 p\xFDipojen\xA1\r\n  TCP  a:135  b:0  LISTENING  1016\r\n",
       "TCP|a:135|135|LISTENING|1016|\n"},
      {"a colon at the end", "TCP local: foreign LISTENING 7\n", "TCP|local:||LISTENING|7|\n"},
      {"more columns, tabs, no line end", "TCP\t[::1]:80\tb\tLISTENING\t8\tInHost\textra",
       "TCP|[::1]:80|80|LISTENING|8|\n"},
      {"the word anywhere", "LISTENING a:1 c BOUND 9\n", "LISTENING|a:1|1|BOUND|9|\n"},
  };
  for (const auto& c : cases) EXPECT_EQ(RowsOf(c.output), c.want) << c.name;
}
