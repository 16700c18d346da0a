#include "app/browser_host_win.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "app/app_fixture_win.h"
#include "app/webview2_loader_win.h"
#include "base/exe_directory_win.h"
#include "base/text.h"
#include "testing/recorded_message.h"
#include "testing/registry_sandbox_win.h"

using Microsoft::WRL::ComPtr;

namespace {

class BrowserHost : public WindowTest {
 protected:
  // Everything up to the navigation, as the control would call it.
  void Connect() {
    ASSERT_EQ(MakeEnvironmentHandler()->Invoke(S_OK, &environment_), S_OK);
    ASSERT_TRUE(environment_.controller_created);
    ASSERT_EQ(environment_.controller_created->Invoke(S_OK, &controller_), S_OK);
  }

  // The body that is served for an address, and nothing when the request is left alone.
  std::string Fetch(const std::wstring& uri) {
    FakeResourceArgs args(uri);
    environment_.stream.Reset();
    EXPECT_EQ(view_.resource_requested->Invoke(&view_, &args), S_OK);
    if (!args.answered) return "";
    EXPECT_EQ(environment_.status_line, L"200 OK");
    environment_.stream->AddRef();
    EXPECT_EQ(environment_.stream->Release(), 1u) << "nobody else keeps the stream";
    std::string body;
    char buffer[4096];
    for (ULONG got = 1; got > 0; body.append(buffer, got))
      environment_.stream->Read(buffer, sizeof(buffer), &got);
    return body;
  }

  FakeEnvironment environment_;
};

// Lets this process see `folder` as the registered runtime, and nothing else of either registry root.
struct RegisteredRuntime : RegistrySandbox {
  explicit RegisteredRuntime(const std::wstring& folder) {
    SetRegistryData(HKEY_CURRENT_USER,
                    L"Software\\Microsoft\\EdgeUpdate\\ClientState\\{F3017226-FE2A-4295-8BDF-00C3A9A7E4C5}",
                    L"EBWebView", RegistryText(folder));
  }
};

// What the handler of an environment that was asked for got; S_FALSE when it was not called.
HRESULT EnvironmentResult(HRESULT& returned) {
  HRESULT handed = S_FALSE;
  const auto handler = MakeCallback<ICoreWebView2CreateCoreWebView2EnvironmentCompletedHandler>(
      [&](HRESULT result, ICoreWebView2Environment*) { return handed = result; });
  returned = CreateBrowserEnvironment(L"C:\\profile", handler.Get());
  return handed;
}

}  // namespace

TEST_F(BrowserHost, ConfiguresTheControlInOrder) {
  Connect();
  EXPECT_EQ(environment_.parent_window, State().main_window);
  RECT client = {};
  GetClientRect(State().main_window, &client);
  EXPECT_EQ(calls_, (CallLog{
                        L"dev tools off",
                        L"context menus off",
                        L"status bar off",
                        L"bounds " + RectText(client),
                        L"map varnel.local 1",
                        L"filter https://varnel.local/* 0",
                        L"add resource requested",
                        L"add message received",
                        L"add navigation completed",
                        L"navigate https://varnel.local/index.html",
                    }));
  EXPECT_EQ(view_.mapped_folder, GetExeDirectory() + L"\\..\\public") << "no folder of that name stands here";
  EXPECT_EQ(State().environment.Get(), &environment_);
  EXPECT_EQ(State().controller.Get(), &controller_);
  EXPECT_EQ(State().view.Get(), &view_);
}

TEST_F(BrowserHost, LeavesTheWindowEmptyWithoutABrowser) {
  EXPECT_EQ(MakeEnvironmentHandler()->Invoke(E_ABORT, nullptr), E_ABORT);
  EXPECT_FALSE(State().environment);
  EXPECT_EQ(MakeEnvironmentHandler()->Invoke(S_OK, &environment_), S_OK);
  EXPECT_EQ(environment_.controller_created->Invoke(E_FAIL, nullptr), E_FAIL);
  EXPECT_FALSE(State().controller);
  EXPECT_TRUE(calls_.empty());
}

TEST_F(BrowserHost, ServesTheEmbeddedFiles) {
  Connect();
  const struct {
    const wchar_t *path, *content_type;
    std::string begin;
  } cases[] = {
      {L"/", L"text/html; charset=utf-8", "<!"},
      {L"/css/style.css", L"text/css; charset=utf-8", ""},
      {L"/js/app.js", L"application/javascript; charset=utf-8", ""},
      {L"/app.png", L"image/png", "\x89PNG"},
      {L"/app.ico", L"image/x-icon", std::string("\0\0\1\0", 4)},
  };
  for (const auto& c : cases) {
    const std::string body = Fetch(L"https://varnel.local" + std::wstring(c.path));
    EXPECT_GT(body.size(), 20u) << WideToUtf8(c.path);
    EXPECT_TRUE(body.starts_with(c.begin)) << WideToUtf8(c.path);
    EXPECT_EQ(environment_.headers,
              L"Content-Type: " + std::wstring(c.content_type) + L"\r\nAccess-Control-Allow-Origin: *");
  }
  EXPECT_EQ(Fetch(L"https://varnel.local/"), Fetch(L"https://varnel.local/index.html"));
  EXPECT_EQ(Fetch(L"https://varnel.local/js/app.js?v=1"), "");
  EXPECT_EQ(Fetch(L"https://elsewhere/"), "");
  EXPECT_EQ(environment_.response.references, 0u);
  State().environment.Reset();
  EXPECT_EQ(Fetch(L"https://varnel.local/"), "");
}

TEST_F(BrowserHost, CarriesARequestToItsReply) {
  Connect();
  auto receive = [&](const wchar_t* text) {
    FakeMessageArgs args(text);
    EXPECT_EQ(view_.message_received->Invoke(&view_, &args), S_OK);
    Pump();
    return std::exchange(view_.posted, {});
  };
  EXPECT_EQ(receive(LR"({"action":"testBridge","requestId":7,"data":{}})"),
            std::vector{Utf8ToWide(RecordedMessage("testBridge"))});
  EXPECT_EQ(receive(LR"({"action":"testBridge","requestId":"7"})"),
            std::vector{Utf8ToWide(RecordedMessage("error"))});
  EXPECT_TRUE(receive(nullptr).empty()) << "not a string";
  EXPECT_EQ(receive(L"").size(), 1u) << "text that is no JSON";

  const wchar_t lone_surrogate[] = {L'"', wchar_t{0xD800}, L'"', 0};
  EXPECT_TRUE(receive(lone_surrogate).empty()) << "a JSON text, but no request";
  std::wstring nested = L"{\"action\":\"testBridge\",\"requestId\":1,\"data\":";
  nested += std::wstring(10'000, L'[') + std::wstring(10'000, L']') + L'}';
  EXPECT_EQ(receive(nested.c_str()).size(), 1u);
}

TEST_F(BrowserHost, PushesTheStatusAfterEachNavigation) {
  Connect();
  for (int navigation = 0; navigation < 2; ++navigation) {
    EXPECT_EQ(view_.navigation_completed->Invoke(&view_, nullptr), S_OK);
    EXPECT_TRUE(view_.posted.empty()) << "pushed by a worker, not on this thread";
    for (int wait = 0; wait < 200 && view_.posted.empty(); ++wait, Sleep(50)) Pump();
    ASSERT_EQ(view_.posted.size(), 1u);
    EXPECT_EQ(nlohmann::json::parse(WideToUtf8(view_.posted[0]))["type"], "status");
    view_.posted.clear();
  }
}

TEST_F(BrowserHost, FindsTheInstalledRuntime) {
  const std::filesystem::path runtime =
      std::filesystem::temp_directory_path() / "varnel_runtime" / "131.0.2903.86";
  const std::filesystem::path library = runtime / "EBWebView" / "x64" / "EmbeddedBrowserWebView.dll";
  std::filesystem::create_directories(library.parent_path());
  CopyFileW((GetExeDirectory() + L"\\..\\stand_ins\\EmbeddedBrowserWebView.dll").c_str(), library.c_str(),
            FALSE);
  HRESULT returned = S_OK;
  {
    const RegisteredRuntime none(L"");
    EXPECT_EQ(EnvironmentResult(returned), S_FALSE);
    EXPECT_TRUE(FAILED(returned));
  }
  {
    const RegisteredRuntime missing(L"C:\\VarnelNoSuchFolder\\131.0.2903.86");
    EXPECT_EQ(EnvironmentResult(returned), S_FALSE);
    EXPECT_TRUE(FAILED(returned));
  }
  {
    const RegisteredRuntime installed(runtime.wstring());
    EXPECT_EQ(EnvironmentResult(returned), E_ABORT) << "the library's own word for no browser";
    EXPECT_EQ(returned, S_OK);
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
