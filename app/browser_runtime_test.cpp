#include "app/browser_runtime.h"

#include <gtest/gtest.h>

TEST(ClientLibraryPath, RequiresARecentVersion) {
  const std::wstring file = L"\\EBWebView\\x64\\EmbeddedBrowserWebView.dll";
  for (const std::wstring folder :
       {L"C:\\Program Files (x86)\\Microsoft\\EdgeWebView\\Application\\131.0.2903.86", L"C:\\b\\86.0.616.0",
        L"C:\\b\\86.0.1000.0", L"\\\\server\\b\\100.0.0.0"})
    EXPECT_EQ(ClientLibraryPath(folder), folder + file);
  EXPECT_EQ(ClientLibraryPath(L"C:\\b\\131.0.2903.86\\"), L"C:\\b\\131.0.2903.86" + file);

  for (const wchar_t* folder :
       {L"", L"\\", L"100.0.0.0", L"b\\100.0.0.0", L"C:100.0.0.0", L"\\100.0.0.0", L"C:\\b\\85.9.9999.99",
        L"C:\\b\\86.0.615.999", L"C:\\b\\9.0.1000.0", L"C:\\b\\131.0.2903", L"C:\\b\\131.0.2903.86.1",
        L"C:\\b\\131.0.2903.x", L"C:\\b\\131..2903.86", L"C:\\131.0.2903.86\\Application",
        L"C:\\b\\ 131.0.2903.86", L"C:\\b\\99999999999999.0.0.0"})
    EXPECT_EQ(ClientLibraryPath(folder), L"");
}
