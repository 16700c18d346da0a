// Tests the parts of the window that neither the bridge nor another process can see: its icons, the
// creation of the browser, and the browser's callbacks.
#include <windows.h>

#include <filesystem>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "app/com_callback_win.h"
#include "app/main_window_win.h"
#include "app/webview2_loader_win.h"
#include "base/exe_directory.h"
#include "base/text.h"
#include "testing/registry_sandbox_win.h"

TEST(MainWindow, ReturnsItsIconsAndTakesThePlaceSuggestedForAnotherScale) {
  ASSERT_TRUE(CreateMainWindow(GetModuleHandleW(nullptr), SW_SHOW));
  const HWND window = State().main_window;
  auto icon = [=](WPARAM kind) { return reinterpret_cast<HICON>(SendMessageW(window, WM_GETICON, kind, 0)); };
  const HICON large_icon = State().large_icon, small_icon = State().small_icon;
  ASSERT_TRUE(large_icon && small_icon && large_icon != small_icon);
  for (const WPARAM kind : {ICON_SMALL, ICON_SMALL2}) EXPECT_EQ(icon(kind), small_icon);
  EXPECT_EQ(icon(ICON_BIG), large_icon);

  const RECT suggested = {60, 40, 1480, 970};
  SendMessageW(window, WM_DPICHANGED, MAKEWPARAM(144, 144), reinterpret_cast<LPARAM>(&suggested));
  RECT rect = {};
  GetWindowRect(window, &rect);
  EXPECT_TRUE(EqualRect(&rect, &suggested));
}

TEST(CreateBrowserEnvironment, FindsTheInstalledRuntime) {
  const std::filesystem::path runtime =
      std::filesystem::temp_directory_path() / "varnel_runtime" / "131.0.2903.86";
  const std::filesystem::path library = runtime / "EBWebView" / "x64" / "EmbeddedBrowserWebView.dll";
  std::filesystem::create_directories(library.parent_path());
  CopyFileW((GetExeDirectory() + L"\\..\\stand_ins\\EmbeddedBrowserWebView.dll").c_str(), library.c_str(),
            FALSE);
  const std::wstring installed = runtime.wstring();
  const struct {
    const wchar_t* folder;
    HRESULT returned, handed;
  } cases[] = {
      {L"", HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), S_FALSE},
      {L"C:\\VarnelNoSuchFolder\\131.0.2903.86", HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), S_FALSE},
      {installed.c_str(), S_OK, E_ABORT},  // the library's own code if there is no browser
  };
  for (const auto& c : cases) {
    const RegistrySandbox registry;
    SetRegistryText(HKEY_CURRENT_USER,
                    L"Software\\Microsoft\\EdgeUpdate\\ClientState\\{F3017226-FE2A-4295-8BDF-00C3A9A7E4C5}",
                    L"EBWebView", c.folder);
    HRESULT handed = S_FALSE;  // not called
    const auto handler = MakeCallback<ICoreWebView2CreateCoreWebView2EnvironmentCompletedHandler>(
        [&](HRESULT result, ICoreWebView2Environment*) { return handed = result; });
    EXPECT_EQ(CreateBrowserEnvironment(L"C:\\profile", handler.Get()), c.returned) << WideToUtf8(c.folder);
    EXPECT_EQ(handed, c.handed) << WideToUtf8(c.folder);
  }
}

TEST(ComCallback, AnswersItsIdentifierAndContainsExceptions) {
  using Handler = ICoreWebView2NavigationCompletedEventHandler;
  const auto kept = std::make_shared<int>();
  auto handler = MakeCallback<Handler>([kept](auto...) -> HRESULT { throw 7; });
  EXPECT_EQ(QueryFor<Handler>(handler.Get()).Get(), handler.Get());
  IUnknown* unknown = nullptr;
  EXPECT_EQ(handler->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&unknown)), S_OK);
  EXPECT_EQ(unknown->Release(), 1u);
  EXPECT_FALSE(QueryFor<ICoreWebView2WebMessageReceivedEventHandler>(handler.Get()));
  EXPECT_EQ(handler->Invoke(nullptr, nullptr), E_FAIL);
  EXPECT_EQ(kept.use_count(), 2);
  handler.Reset();
  EXPECT_EQ(kept.use_count(), 1) << "the last release ends the handler";
}
