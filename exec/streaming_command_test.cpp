#include "exec/streaming_command.h"

#include <gtest/gtest.h>

#include "testing/recorded_message.h"

TEST(BuildDiagnosticCommand, OnlyTheExactTypeLooksUp) {
  EXPECT_EQ(BuildDiagnosticCommand("dns", "www.brod.example"), L"nslookup www.brod.example");
  EXPECT_EQ(BuildDiagnosticCommand("DNS", "x"), L"ping -n 4 x");
  EXPECT_EQ(BuildDiagnosticCommand("ping", "a -t & \"b\" žluť"), L"ping -n 4 a -t & \"b\" žluť");
  EXPECT_EQ(BuildDiagnosticCommand("", ""), L"ping -n 4 ");
}

TEST(StreamMessages, MatchTheRecordedOnes) {
  EXPECT_EQ(BuildStreamLine(7, "Reply from 192.0.2.1: bytes=32 time<1ms TTL=64"),
            RecordedMessage("ping_diagnostic_stream.stdout"));
  EXPECT_EQ(BuildStreamExit(1), RecordedMessage("ping_diagnostic_stream.exit"));
  EXPECT_EQ(BuildStreamStartFailure(), RecordedMessage("ping_diagnostic_stream.failed"));
  EXPECT_EQ(BuildStreamExit(0xC000013A),
            R"({"code":3221225786,"streamType":"exit","type":"ping_diagnostic_stream"})");
}
