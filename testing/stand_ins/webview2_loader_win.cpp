// Stand-in for WebView2Loader.dll: the browser control's interfaces without a browser. Everything that
// crosses them goes to a driver over a loopback connection (its port is in VARNEL_DRIVER_PORT), one JSON
// document a line; the driver shows the page elsewhere. Every callback arrives on the UI thread through its
// message loop, as it does with the real control.
#include <winsock2.h>
#include <windows.h>
#include <wincrypt.h>
#include <wrl/client.h>
#include <ws2tcpip.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <nlohmann/json.hpp>

#include "app/com_callback_win.h"
#include "app/webview2.h"
#include "base/text.h"

namespace {

using Microsoft::WRL::ComPtr;
using nlohmann::json;

constexpr UINT kCommandMessage = WM_APP;  // LPARAM: a json* that the window procedure takes over

class View;

// Lives as long as the process: the program's handlers must not be released after its own end.
struct State {
  SOCKET socket = INVALID_SOCKET;
  DWORD ui_thread = 0;
  HWND window = nullptr;
  ComPtr<ICoreWebView2CreateCoreWebView2EnvironmentCompletedHandler> environment_created;
  ComPtr<ICoreWebView2CreateCoreWebView2ControllerCompletedHandler> controller_created;
  ComPtr<View> view;
  ComPtr<ICoreWebView2WebResourceRequestedEventHandler> resource_requested;
  ComPtr<ICoreWebView2WebMessageReceivedEventHandler> message_received;
  ComPtr<ICoreWebView2NavigationCompletedEventHandler> navigation_completed;
  std::vector<std::pair<std::wstring, int>> filters;
  std::string calls;  // names of what was called on the control, each with a blank
};
State& g_state = *new State;

// --- the connection

void Send(const json& document) {
  const std::string line = document.dump() + "\n";
  for (size_t sent = 0; sent < line.size();) {
    const int count = send(g_state.socket, line.data() + sent, static_cast<int>(line.size() - sent), 0);
    if (count <= 0) return;
    sent += static_cast<size_t>(count);
  }
}

void SendEvent(const char* event, json fields = json::object()) {
  fields["event"] = event;
  Send(fields);
}

// The control belongs to the thread that made it; a call from another one is refused, and told on the way of
// commands.
HRESULT OnUiThread(const char* call) {
  if (GetCurrentThreadId() == g_state.ui_thread) return S_OK;
  const std::string problem = std::string(call) + " on a thread other than the UI thread";
  PostMessageW(g_state.window, kCommandMessage, 0,
               reinterpret_cast<LPARAM>(new json{{"command", "problem"}, {"problem", problem}}));
  return RPC_E_WRONG_THREAD;
}

void SendProblem(const std::string& problem) {
  SendEvent("problem", {{"problem", problem}});
}

// Tells the driver of a call of the control, when it comes on the right thread.
HRESULT Report(const char* call, const char* event, json fields) {
  const HRESULT result = OnUiThread(call);
  if (FAILED(result)) return result;
  g_state.calls += call + std::string(" ");
  SendEvent(event, std::move(fields));
  return S_OK;
}

// A handler must answer for IUnknown and for its own interface.
template <typename Handler>
void CheckHandler(Handler* handler, const char* name) {
  for (const IID& iid : {IID_IUnknown, Handler::kIid}) {
    ComPtr<IUnknown> found;
    if (FAILED(handler->QueryInterface(iid, reinterpret_cast<void**>(found.GetAddressOf()))) || !found)
      SendProblem(std::string(name) + " handler: QueryInterface fails");
  }
}

// Once a call is over, what went through it belongs to the control alone.
template <typename Type>
void CheckReleased(Type* object, const char* name) {
  object->AddRef();
  if (object->Release() != 1) SendProblem(std::string(name) + " is held by the program");
}

std::string ToBase64(const std::string& bytes) {
  if (bytes.empty()) return {};
  const auto* data = reinterpret_cast<const BYTE*>(bytes.data());
  const auto size = static_cast<DWORD>(bytes.size());
  DWORD length = 0;
  CryptBinaryToStringA(data, size, CRYPT_STRING_BASE64 | CRYPT_STRING_NOCRLF, nullptr, &length);
  std::string text(length, '\0');
  CryptBinaryToStringA(data, size, CRYPT_STRING_BASE64 | CRYPT_STRING_NOCRLF, text.data(), &length);
  text.resize(length);
  return text;
}

// UTF-16 travels as the base64 of its units, because JSON cannot carry a lone surrogate.
std::wstring WideFromBase64(const std::string& text) {
  DWORD size = 0;
  const auto length = static_cast<DWORD>(text.size());
  if (length == 0) return {};
  CryptStringToBinaryA(text.data(), length, CRYPT_STRING_BASE64, nullptr, &size, nullptr, nullptr);
  std::wstring wide(size / sizeof(wchar_t), L'\0');
  CryptStringToBinaryA(text.data(), length, CRYPT_STRING_BASE64, reinterpret_cast<BYTE*>(wide.data()), &size,
                       nullptr, nullptr);
  return wide;
}

LPWSTR TaskString(const std::wstring& text) {
  const size_t bytes = (text.size() + 1) * sizeof(wchar_t);
  auto* copy = static_cast<LPWSTR>(CoTaskMemAlloc(bytes));
  if (copy) memcpy(copy, text.c_str(), bytes);
  return copy;
}

// --- the objects

// Gives out an object that stays here too.
template <typename Type>
HRESULT HandOut(Type* object, auto** out) {
  object->AddRef();
  *out = object;
  return S_OK;
}

class Settings final : public ComObject<ICoreWebView2Settings> {
 public:
  HRESULT STDMETHODCALLTYPE put_IsStatusBarEnabled(BOOL on) override { return Put("isStatusBarEnabled", on); }
  HRESULT STDMETHODCALLTYPE put_AreDevToolsEnabled(BOOL on) override { return Put("areDevToolsEnabled", on); }
  HRESULT STDMETHODCALLTYPE put_AreDefaultContextMenusEnabled(BOOL on) override {
    return Put("areDefaultContextMenusEnabled", on);
  }

 private:
  static HRESULT Put(const char* name, BOOL on) {
    return Report(name, "setting", {{"name", name}, {"value", on != FALSE}});
  }
};

class Request final : public ComObject<ICoreWebView2WebResourceRequest> {
 public:
  explicit Request(std::wstring uri) : uri_(std::move(uri)) {}
  HRESULT STDMETHODCALLTYPE get_Uri(LPWSTR* uri) override {
    *uri = TaskString(uri_);
    return *uri ? S_OK : E_OUTOFMEMORY;
  }

 private:
  std::wstring uri_;
};

class Response final : public ComObject<ICoreWebView2WebResourceResponse> {
 public:
  Response(IStream* content, int status, LPCWSTR reason, LPCWSTR headers)
      : content_(content),
        status_(status),
        reason_(reason ? reason : L""),
        headers_(headers ? headers : L"") {}
  json Read() {
    std::string body;
    std::vector<char> buffer(64 * 1024);
    ULONG count = 0;
    while (content_ && SUCCEEDED(content_->Read(buffer.data(), static_cast<ULONG>(buffer.size()), &count)) &&
           count > 0)
      body.append(buffer.data(), count);
    if (content_) CheckReleased(content_.Get(), "stream");
    return {{"status", status_},
            {"reason", WideToUtf8(reason_)},
            {"headers", WideToUtf8(headers_)},
            {"body", ToBase64(body)}};
  }

 private:
  ComPtr<IStream> content_;
  int status_;
  std::wstring reason_, headers_;
};

class RequestedArgs final : public ComObject<ICoreWebView2WebResourceRequestedEventArgs> {
 public:
  explicit RequestedArgs(const std::wstring& uri) : request_(Adopt(new Request(uri))) {}
  HRESULT STDMETHODCALLTYPE get_Request(ICoreWebView2WebResourceRequest** request) override {
    return HandOut(request_.Get(), request);
  }
  HRESULT STDMETHODCALLTYPE put_Response(ICoreWebView2WebResourceResponse* response) override {
    response_ = static_cast<Response*>(response);  // only this library makes them
    return S_OK;
  }
  json Answer() {
    if (!response_) return json::object();
    CheckReleased(response_.Get(), "response");
    return response_->Read();
  }

 private:
  ComPtr<Request> request_;
  ComPtr<Response> response_;
};

class MessageArgs final : public ComObject<ICoreWebView2WebMessageReceivedEventArgs> {
 public:
  MessageArgs(std::wstring text, bool is_string) : text_(std::move(text)), is_string_(is_string) {}
  HRESULT STDMETHODCALLTYPE TryGetWebMessageAsString(LPWSTR* value) override {
    if (!is_string_) return E_INVALIDARG;
    *value = TaskString(text_);
    return *value ? S_OK : E_OUTOFMEMORY;
  }

 private:
  std::wstring text_;
  bool is_string_;
};

class NavigationArgs final : public ComObject<ICoreWebView2NavigationCompletedEventArgs> {};

template <typename Handler>
HRESULT Register(const char* name, ComPtr<Handler>& kept, Handler* handler) {
  CheckHandler(handler, name);
  kept = handler;
  return Report(name, "handler", {{"name", name}});
}

class View final : public ComObject<ICoreWebView2_3> {
 public:
  HRESULT STDMETHODCALLTYPE get_Settings(ICoreWebView2Settings** settings) override {
    return HandOut(settings_.Get(), settings);
  }
  HRESULT STDMETHODCALLTYPE Navigate(LPCWSTR uri) override {
    // What is set up later could miss the page's first steps.
    std::string calls = g_state.calls;
    if (const size_t at = calls.find("folder "); at != std::string::npos)
      calls.erase(at, 7);  // not always there
    if (calls !=
        "put_DefaultBackgroundColor areDevToolsEnabled areDefaultContextMenusEnabled isStatusBarEnabled "
        "put_IsVisible put_Bounds filter WebResourceRequested WebMessageReceived NavigationCompleted ")
      SendProblem("calls before Navigate: " + calls);
    return Report("Navigate", "navigate", {{"uri", WideToUtf8(uri)}});
  }
  HRESULT STDMETHODCALLTYPE add_NavigationCompleted(ICoreWebView2NavigationCompletedEventHandler* handler,
                                                    EventRegistrationToken*) override {
    return Register("NavigationCompleted", g_state.navigation_completed, handler);
  }
  HRESULT STDMETHODCALLTYPE PostWebMessageAsJson(LPCWSTR text) override {
    return Report("PostWebMessageAsJson", "message", {{"text", WideToUtf8(text)}});
  }
  HRESULT STDMETHODCALLTYPE add_WebMessageReceived(ICoreWebView2WebMessageReceivedEventHandler* handler,
                                                   EventRegistrationToken*) override {
    return Register("WebMessageReceived", g_state.message_received, handler);
  }
  HRESULT STDMETHODCALLTYPE add_WebResourceRequested(ICoreWebView2WebResourceRequestedEventHandler* handler,
                                                     EventRegistrationToken*) override {
    return Register("WebResourceRequested", g_state.resource_requested, handler);
  }
  HRESULT STDMETHODCALLTYPE
  AddWebResourceRequestedFilter(LPCWSTR uri, COREWEBVIEW2_WEB_RESOURCE_CONTEXT context) override {
    g_state.filters.emplace_back(uri, context);
    return Report("filter", "filter", {{"uri", WideToUtf8(uri)}, {"context", static_cast<int>(context)}});
  }
  HRESULT STDMETHODCALLTYPE SetVirtualHostNameToFolderMapping(
      LPCWSTR host, LPCWSTR folder, COREWEBVIEW2_HOST_RESOURCE_ACCESS_KIND access) override {
    return Report(
        "folder", "folder",
        {{"host", WideToUtf8(host)}, {"folder", WideToUtf8(folder)}, {"access", static_cast<int>(access)}});
  }

 private:
  ComPtr<Settings> settings_ = Adopt(new Settings);
};

class Controller final : public ComObject<ICoreWebView2Controller2> {
 public:
  HRESULT STDMETHODCALLTYPE put_IsVisible(BOOL visible) override {
    return ReportCall("put_IsVisible", visible != FALSE);
  }
  HRESULT STDMETHODCALLTYPE MoveFocus(COREWEBVIEW2_MOVE_FOCUS_REASON reason) override {
    return ReportCall("MoveFocus", static_cast<int>(reason));
  }
  HRESULT STDMETHODCALLTYPE NotifyParentWindowPositionChanged() override {
    return ReportCall("NotifyParentWindowPositionChanged", nullptr);
  }
  HRESULT STDMETHODCALLTYPE put_DefaultBackgroundColor(COREWEBVIEW2_COLOR color) override {
    return ReportCall("put_DefaultBackgroundColor", {color.A, color.R, color.G, color.B});
  }
  HRESULT STDMETHODCALLTYPE put_Bounds(RECT bounds) override {
    return Report(
        "put_Bounds", "bounds",
        {{"left", bounds.left}, {"top", bounds.top}, {"right", bounds.right}, {"bottom", bounds.bottom}});
  }
  HRESULT STDMETHODCALLTYPE get_CoreWebView2(ICoreWebView2** view) override {
    return HandOut(g_state.view.Get(), view);
  }

 private:
  static HRESULT ReportCall(const char* name, json argument) {
    return Report(name, "call", {{"name", name}, {"argument", std::move(argument)}});
  }
};

class Environment final : public ComObject<ICoreWebView2Environment> {
 public:
  HRESULT STDMETHODCALLTYPE CreateCoreWebView2Controller(
      HWND parent, ICoreWebView2CreateCoreWebView2ControllerCompletedHandler* handler) override {
    if (const HRESULT result = OnUiThread("CreateCoreWebView2Controller"); FAILED(result)) return result;
    CheckHandler(handler, "controller completed");
    g_state.controller_created = handler;
    wchar_t name[64] = L"";
    GetClassNameW(parent, name, 64);
    SendEvent("create_controller", {{"parentClass", WideToUtf8(name)}});
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE CreateWebResourceResponse(IStream* content, int status, LPCWSTR reason,
                                                      LPCWSTR headers,
                                                      ICoreWebView2WebResourceResponse** response) override {
    *response = new Response(content, status, reason, headers);
    return S_OK;
  }
};

// --- what the driver asks

json GetResource(const json& command) {
  const std::wstring uri = Utf8ToWide(command["uri"].get<std::string>());
  const int context = command.value("context", 1);
  const bool wanted = std::ranges::any_of(g_state.filters, [&](const auto& filter) {
    const auto& [pattern, only] = filter;  // "<beginning>*"
    return (only == COREWEBVIEW2_WEB_RESOURCE_CONTEXT_ALL || only == context) &&
           uri.starts_with(std::wstring_view(pattern).substr(0, pattern.size() - 1));
  });
  const auto args = Adopt(new RequestedArgs(uri));
  if (wanted) g_state.resource_requested->Invoke(g_state.view.Get(), args.Get());
  return args->Answer();
}

json DeliverMessage(const json& command) {
  const std::wstring text = WideFromBase64(command["utf16"].get<std::string>());
  const auto args = Adopt(new MessageArgs(text, command.value("isString", true)));
  g_state.message_received->Invoke(g_state.view.Get(), args.Get());
  return json::object();
}

json CompleteNavigation() {
  const auto args = Adopt(new NavigationArgs);
  g_state.navigation_completed->Invoke(g_state.view.Get(), args.Get());
  return json::object();
}

json CompleteEnvironment(const json& command) {
  const HRESULT error = command.value("error", 0);
  const auto environment = Adopt(SUCCEEDED(error) ? new Environment : nullptr);
  g_state.environment_created->Invoke(error, environment.Get());
  return json::object();
}

json CompleteController(const json& command) {
  const HRESULT error = command.value("error", 0);
  g_state.view = Adopt(new View);
  const auto controller = Adopt(SUCCEEDED(error) ? new Controller : nullptr);
  g_state.controller_created->Invoke(error, controller.Get());
  return json::object();
}

json Execute(const json& command) {
  const std::string name = command["command"];
  if (name == "get_resource") return GetResource(command);
  if (name == "web_message") return DeliverMessage(command);
  if (name == "navigation_completed") return CompleteNavigation();
  if (name == "environment_created") return CompleteEnvironment(command);
  if (name == "controller_created") return CompleteController(command);
  return {{"unknown", name}};
}

LRESULT CALLBACK CommandWindow(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message != kCommandMessage) return DefWindowProcW(window, message, wparam, lparam);
  const std::unique_ptr<json> command(reinterpret_cast<json*>(lparam));
  if ((*command)["command"] == "problem") {
    SendEvent("problem", *command);
  } else {
    json reply = Execute(*command);
    reply["reply"] = (*command)["id"];
    Send(reply);
  }
  return 0;
}

void ReceiveCommands() {
  std::string pending;
  std::vector<char> buffer(256 * 1024);
  for (;;) {
    const int count = recv(g_state.socket, buffer.data(), static_cast<int>(buffer.size()), 0);
    if (count <= 0) break;
    size_t searched = pending.size();
    pending.append(buffer.data(), static_cast<size_t>(count));
    for (size_t end; (end = pending.find('\n', searched)) != std::string::npos; searched = 0) {
      auto command = std::make_unique<json>(json::parse(std::string_view(pending).substr(0, end)));
      pending.erase(0, end + 1);
      if (PostMessageW(g_state.window, kCommandMessage, 0, reinterpret_cast<LPARAM>(command.get())))
        static_cast<void>(command.release());
    }
  }
  // A program whose driver is gone would stay for ever.
  PostThreadMessageW(g_state.ui_thread, WM_QUIT, 0, 0);
}

HRESULT Connect() {
  const char* port = std::getenv("VARNEL_DRIVER_PORT");
  if (!port) return HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
  WSADATA data;
  if (WSAStartup(MAKEWORD(2, 2), &data) != 0) return E_FAIL;
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<u_short>(std::atoi(port)));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  g_state.socket = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
  const BOOL on = TRUE;
  setsockopt(g_state.socket, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&on), sizeof on);
  if (connect(g_state.socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
    return HRESULT_FROM_WIN32(ERROR_CONNECTION_REFUSED);
  return S_OK;
}

// The real loader wants a single-threaded apartment.
HRESULT CheckApartment() {
  APTTYPE type{};
  APTTYPEQUALIFIER qualifier{};
  if (FAILED(CoGetApartmentType(&type, &qualifier))) return CO_E_NOTINITIALIZED;
  return type == APTTYPE_STA || type == APTTYPE_MAINSTA ? S_OK : RPC_E_CHANGED_MODE;
}

}  // namespace

extern "C" __declspec(dllexport) HRESULT STDAPICALLTYPE CreateCoreWebView2EnvironmentWithOptions(
    PCWSTR browser_folder, PCWSTR user_data_folder, ICoreWebView2EnvironmentOptions* options,
    ICoreWebView2CreateCoreWebView2EnvironmentCompletedHandler* handler) {
  const HRESULT apartment = CheckApartment();
  if (const HRESULT result = Connect(); FAILED(result)) return result;
  SendEvent("create_environment", {{"browserFolder", WideToUtf8(browser_folder ? browser_folder : L"")},
                                   {"userDataFolder", WideToUtf8(user_data_folder ? user_data_folder : L"")},
                                   {"hasOptions", options != nullptr},
                                   {"apartmentError", apartment}});
  if (FAILED(apartment)) return apartment;
  CheckHandler(handler, "environment completed");
  g_state.ui_thread = GetCurrentThreadId();
  g_state.environment_created = handler;
  WNDCLASSW window_class{};
  window_class.lpfnWndProc = CommandWindow;
  window_class.lpszClassName = L"VarnelStandInCommands";
  RegisterClassW(&window_class);
  g_state.window =
      CreateWindowW(window_class.lpszClassName, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
  std::thread(ReceiveCommands).detach();
  return S_OK;
}
