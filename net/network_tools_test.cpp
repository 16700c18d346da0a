#include "net/network_tools.h"

#include <gtest/gtest.h>

TEST(BuildDiagnosticCommand, OnlyTheExactTypeLooksUp) {
  EXPECT_EQ(BuildDiagnosticCommand("dns", "www.brod.example"), L"nslookup www.brod.example");
  EXPECT_EQ(BuildDiagnosticCommand("DNS", "x"), L"ping -n 4 x");
  EXPECT_EQ(BuildDiagnosticCommand("ping", "a -t & \"b\" žluť"), L"ping -n 4 a -t & \"b\" žluť");
  EXPECT_EQ(BuildDiagnosticCommand("", ""), L"ping -n 4 ");
}
