// Stand-in for WebView2Loader.dll: the browser control's interfaces without a browser. It passes every
// call on to a driver over a loopback connection (port in VARNEL_DRIVER_PORT), one JSON document per
// line. The driver shows the page elsewhere. As with the real control, every callback arrives on the UI
// thread through its message loop.
#include <winsock2.h>
#include <windows.h>
#include <wrl/client.h>
#include <ws2tcpip.h>

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

// Never destroyed, because the program's handlers must not be released after its own end.
struct State {
  SOCKET socket = INVALID_SOCKET;
  DWORD ui_thread = 0;
  HWND window = nullptr;
  ComPtr<ICoreWebView2CreateCoreWebView2EnvironmentCompletedHandler> environment_created;
  ComPtr<ICoreWebView2CreateCoreWebView2ControllerCompletedHandler> controller_created;
  ComPtr<ICoreWebView2_3> view;
  ComPtr<ICoreWebView2WebResourceRequestedEventHandler> resource_requested;
  ComPtr<ICoreWebView2WebMessageReceivedEventHandler> message_received;
  ComPtr<ICoreWebView2NavigationCompletedEventHandler> navigation_completed;
};
State& g_state = *new State;

// --- reports to the driver

void Send(const json& document) {
  const std::string line = document.dump(-1, ' ', true) + "\n";
  for (size_t sent = 0; sent < line.size();) {
    const int count = send(g_state.socket, line.data() + sent, static_cast<int>(line.size() - sent), 0);
    if (count <= 0) return;
    sent += static_cast<size_t>(count);
  }
}

// Tells the driver about a call of the control. The control belongs to the thread that created it: a
// call from any other thread is refused and reported through the command queue.
HRESULT Report(const std::string& call, json document) {
  if (GetCurrentThreadId() == g_state.ui_thread) return Send(document), S_OK;
  const std::string problem = call + " on a thread other than the UI thread";
  PostMessageW(g_state.window, kCommandMessage, 0, reinterpret_cast<LPARAM>(new json{{"problem", problem}}));
  return RPC_E_WRONG_THREAD;
}

HRESULT ReportCall(const char* call, json argument) {
  return Report(call, {{"call", call}, {"argument", std::move(argument)}});
}

// Keeps a handler, which must answer to IUnknown and to its own interface.
template <typename Handler>
HRESULT Register(const char* call, ComPtr<Handler>& kept, Handler* handler, json argument = {}) {
  for (const IID& iid : {IID_IUnknown, Handler::kIid}) {
    ComPtr<IUnknown> found;
    if (FAILED(handler->QueryInterface(iid, reinterpret_cast<void**>(found.GetAddressOf()))) || !found)
      Send({{"problem", std::string(call) + ": QueryInterface of the handler fails"}});
  }
  kept = handler;
  return ReportCall(call, std::move(argument));
}

// Reports a problem if the program still holds the object of a finished call.
template <typename Type>
void CheckReleased(Type* object, const char* name) {
  object->AddRef();
  if (object->Release() != 1) Send({{"problem", std::string(name) + " is held by the program"}});
}

// --- the objects

// Returns a reference to an object that this library keeps.
template <typename Type>
HRESULT HandOut(Type* object, auto** out) {
  object->AddRef();
  *out = object;
  return S_OK;
}

HRESULT HandOutText(const std::wstring& text, LPWSTR* out) {
  const size_t bytes = (text.size() + 1) * sizeof(wchar_t);
  *out = static_cast<LPWSTR>(CoTaskMemAlloc(bytes));
  if (!*out) return E_OUTOFMEMORY;
  memcpy(*out, text.c_str(), bytes);
  return S_OK;
}

class Settings final : public ComObject<ICoreWebView2Settings> {
 public:
  HRESULT STDMETHODCALLTYPE put_IsStatusBarEnabled(BOOL on) override {
    return ReportCall("put_IsStatusBarEnabled", on != FALSE);
  }
  HRESULT STDMETHODCALLTYPE put_AreDevToolsEnabled(BOOL on) override {
    return ReportCall("put_AreDevToolsEnabled", on != FALSE);
  }
  HRESULT STDMETHODCALLTYPE put_AreDefaultContextMenusEnabled(BOOL on) override {
    return ReportCall("put_AreDefaultContextMenusEnabled", on != FALSE);
  }
};

class Request final : public ComObject<ICoreWebView2WebResourceRequest> {
 public:
  explicit Request(std::wstring uri) : uri_(std::move(uri)) {}
  HRESULT STDMETHODCALLTYPE get_Uri(LPWSTR* uri) override { return HandOutText(uri_, uri); }

 private:
  std::wstring uri_;
};

class Response final : public ComObject<ICoreWebView2WebResourceResponse> {
 public:
  Response(IStream* content, int status, LPCWSTR reason, LPCWSTR headers)
      : content_(content),
        answer_{{"status", status}, {"reason", Text(reason)}, {"headers", Text(headers)}} {}
  json Read() {
    std::string hex;
    std::vector<unsigned char> buffer(64 * 1024);
    for (ULONG count = 0;
         content_ && SUCCEEDED(content_->Read(buffer.data(), 64 * 1024, &count)) && count > 0;) {
      for (ULONG i = 0; i < count; ++i)
        hex.append({"0123456789abcdef"[buffer[i] >> 4], "0123456789abcdef"[buffer[i] & 15]});
    }
    if (content_) CheckReleased(content_.Get(), "stream");
    answer_["body"] = hex;
    return answer_;
  }

 private:
  static std::string Text(LPCWSTR text) { return WideToUtf8(text ? text : L""); }

  ComPtr<IStream> content_;
  json answer_;
};

class RequestedArgs final : public ComObject<ICoreWebView2WebResourceRequestedEventArgs> {
 public:
  explicit RequestedArgs(const std::wstring& uri) : request_(Adopt(new Request(uri))) {}
  HRESULT STDMETHODCALLTYPE get_Request(ICoreWebView2WebResourceRequest** request) override {
    return HandOut(request_.Get(), request);
  }
  HRESULT STDMETHODCALLTYPE put_Response(ICoreWebView2WebResourceResponse* response) override {
    response_ = static_cast<Response*>(response);  // only this library creates them
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
  explicit MessageArgs(const json& text) : text_(text) {}
  HRESULT STDMETHODCALLTYPE TryGetWebMessageAsString(LPWSTR* value) override {
    return text_.is_string() ? HandOutText(Utf8ToWide(text_.get<std::string>()), value) : E_INVALIDARG;
  }

 private:
  json text_;
};

class NavigationArgs final : public ComObject<ICoreWebView2NavigationCompletedEventArgs> {};

class View final : public ComObject<ICoreWebView2_3> {
 public:
  HRESULT STDMETHODCALLTYPE get_Settings(ICoreWebView2Settings** settings) override {
    return HandOut(settings_.Get(), settings);
  }
  HRESULT STDMETHODCALLTYPE Navigate(LPCWSTR uri) override { return ReportCall("Navigate", WideToUtf8(uri)); }
  HRESULT STDMETHODCALLTYPE PostWebMessageAsJson(LPCWSTR text) override {
    return Report("PostWebMessageAsJson", {{"message", WideToUtf8(text)}});
  }
  HRESULT STDMETHODCALLTYPE add_NavigationCompleted(ICoreWebView2NavigationCompletedEventHandler* handler,
                                                    EventRegistrationToken*) override {
    return Register("add_NavigationCompleted", g_state.navigation_completed, handler);
  }
  HRESULT STDMETHODCALLTYPE add_WebMessageReceived(ICoreWebView2WebMessageReceivedEventHandler* handler,
                                                   EventRegistrationToken*) override {
    return Register("add_WebMessageReceived", g_state.message_received, handler);
  }
  HRESULT STDMETHODCALLTYPE add_WebResourceRequested(ICoreWebView2WebResourceRequestedEventHandler* handler,
                                                     EventRegistrationToken*) override {
    return Register("add_WebResourceRequested", g_state.resource_requested, handler);
  }
  HRESULT STDMETHODCALLTYPE
  AddWebResourceRequestedFilter(LPCWSTR uri, COREWEBVIEW2_WEB_RESOURCE_CONTEXT context) override {
    return ReportCall("AddWebResourceRequestedFilter", {WideToUtf8(uri), static_cast<int>(context)});
  }
  HRESULT STDMETHODCALLTYPE SetVirtualHostNameToFolderMapping(
      LPCWSTR host, LPCWSTR folder, COREWEBVIEW2_HOST_RESOURCE_ACCESS_KIND access) override {
    return ReportCall(
        "SetVirtualHostNameToFolderMapping",
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
    return ReportCall("put_Bounds", {bounds.left, bounds.top, bounds.right, bounds.bottom});
  }
  HRESULT STDMETHODCALLTYPE get_CoreWebView2(ICoreWebView2** view) override {
    return HandOut(g_state.view.Get(), view);
  }
};

class Environment final : public ComObject<ICoreWebView2Environment> {
 public:
  HRESULT STDMETHODCALLTYPE CreateCoreWebView2Controller(
      HWND parent, ICoreWebView2CreateCoreWebView2ControllerCompletedHandler* handler) override {
    wchar_t name[64] = L"";
    GetClassNameW(parent, name, 64);
    return Register("CreateCoreWebView2Controller", g_state.controller_created, handler, WideToUtf8(name));
  }
  HRESULT STDMETHODCALLTYPE CreateWebResourceResponse(IStream* content, int status, LPCWSTR reason,
                                                      LPCWSTR headers,
                                                      ICoreWebView2WebResourceResponse** response) override {
    *response = new Response(content, status, reason, headers);
    return S_OK;
  }
};

// --- requests from the driver

json Execute(const json& command) {
  const std::string name = command["command"];
  const HRESULT error = command.value("error", 0);
  if (name == "get_resource") {
    const auto args = Adopt(new RequestedArgs(Utf8ToWide(command["uri"].get<std::string>())));
    g_state.resource_requested->Invoke(g_state.view.Get(), args.Get());
    return args->Answer();
  }
  if (name == "web_message") {
    g_state.message_received->Invoke(g_state.view.Get(), Adopt(new MessageArgs(command["text"])).Get());
  } else if (name == "navigation_completed") {
    g_state.navigation_completed->Invoke(g_state.view.Get(), Adopt(new NavigationArgs).Get());
  } else if (name == "environment_created") {
    g_state.environment_created->Invoke(error, Adopt(SUCCEEDED(error) ? new Environment : nullptr).Get());
  } else if (name == "controller_created") {
    g_state.view = Adopt(new View);
    g_state.controller_created->Invoke(error, Adopt(SUCCEEDED(error) ? new Controller : nullptr).Get());
  }
  return json::object();
}

LRESULT CALLBACK CommandWindow(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message != kCommandMessage) return DefWindowProcW(window, message, wparam, lparam);
  const std::unique_ptr<json> command(reinterpret_cast<json*>(lparam));
  if (command->contains("problem")) return Send(*command), 0;
  json reply = Execute(*command);
  reply["reply"] = (*command)["id"];
  Send(reply);
  return 0;
}

void ReceiveCommands() {
  std::string pending;
  std::vector<char> buffer(256 * 1024);
  for (int count; (count = recv(g_state.socket, buffer.data(), 256 * 1024, 0)) > 0;) {
    size_t searched = pending.size();
    pending.append(buffer.data(), static_cast<size_t>(count));
    for (size_t end; (end = pending.find('\n', searched)) != std::string::npos; searched = 0) {
      auto command = std::make_unique<json>(json::parse(std::string_view(pending).substr(0, end)));
      pending.erase(0, end + 1);
      if (PostMessageW(g_state.window, kCommandMessage, 0, reinterpret_cast<LPARAM>(command.get())))
        static_cast<void>(command.release());
    }
  }
  // Without its driver, the program would run forever.
  PostThreadMessageW(g_state.ui_thread, WM_QUIT, 0, 0);
}

bool Connect() {
  const char* port = std::getenv("VARNEL_DRIVER_PORT");
  WSADATA data;
  if (!port || WSAStartup(MAKEWORD(2, 2), &data) != 0) return false;
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<u_short>(std::atoi(port)));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  g_state.socket = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
  const BOOL on = TRUE;
  setsockopt(g_state.socket, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&on), sizeof on);
  return connect(g_state.socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

}  // namespace

extern "C" __declspec(dllexport) HRESULT STDAPICALLTYPE CreateCoreWebView2EnvironmentWithOptions(
    PCWSTR browser_folder, PCWSTR user_data_folder, ICoreWebView2EnvironmentOptions* options,
    ICoreWebView2CreateCoreWebView2EnvironmentCompletedHandler* handler) {
  if (!Connect()) return HRESULT_FROM_WIN32(ERROR_CONNECTION_REFUSED);
  // The real loader requires a single-threaded apartment.
  APTTYPE type{};
  APTTYPEQUALIFIER qualifier{};
  if (FAILED(CoGetApartmentType(&type, &qualifier)) || (type != APTTYPE_STA && type != APTTYPE_MAINSTA)) {
    Send({{"problem", "the thread that creates the environment is not a single-threaded apartment"}});
    return RPC_E_CHANGED_MODE;
  }
  g_state.ui_thread = GetCurrentThreadId();
  WNDCLASSW window_class{};
  window_class.lpfnWndProc = CommandWindow;
  window_class.lpszClassName = L"VarnelStandInCommands";
  RegisterClassW(&window_class);
  g_state.window =
      CreateWindowW(window_class.lpszClassName, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
  std::thread(ReceiveCommands).detach();
  return Register("CreateCoreWebView2EnvironmentWithOptions", g_state.environment_created, handler,
                  {WideToUtf8(browser_folder ? browser_folder : L""),
                   WideToUtf8(user_data_folder ? user_data_folder : L""), options != nullptr});
}
