#include "service/peer_win.h"

#include <gtest/gtest.h>

namespace {

// A pipe would not do here: Wine ignores the level that its client allows.
TEST(ActingAs, NeedsMoreThanATokenForIdentification) {
  KernelHandle own;
  ASSERT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_DUPLICATE, own.put()));
  for (const auto level : {SecurityIdentification, SecurityImpersonation}) {
    Peer peer;
    ASSERT_TRUE(DuplicateTokenEx(own.get(), TOKEN_QUERY | TOKEN_IMPERSONATE, nullptr, level,
                                 TokenImpersonation, peer.token.put()));
    EXPECT_EQ(static_cast<bool>(ActingAs(peer)), level == SecurityImpersonation);
  }
}

}  // namespace
