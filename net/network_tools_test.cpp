#include "net/network_tools.h"

#include <gtest/gtest.h>

TEST(BuildDiagnosticCommand, LooksUpOnlyForTheExactType) {
  EXPECT_EQ(BuildDiagnosticCommand("dns", "www.brod.example"), L"nslookup www.brod.example");
  EXPECT_EQ(BuildDiagnosticCommand("DNS", "a -t & \"b\" žluť"), L"ping -n 4 a -t & \"b\" žluť");
}
