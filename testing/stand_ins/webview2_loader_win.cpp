// Stand-in for WebView2Loader.dll: the browser control's interfaces without a browser. It passes every
// call on to a driver over a loopback connection (port in VARNEL_DRIVER_PORT), one JSON document per
// line. The driver shows the page elsewhere. As with the real control, every callback arrives on the UI
// thread through its message loop.
#include <winsock2.h>
#include <windows.h>
#include <shlwapi.h>
#include <wrl/client.h>
#include <ws2tcpip.h>

#include <cstdlib>
#include <memory>
#include <mutex>
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
  static std::mutex mutex;
  const std::lock_guard lock(mutex);
  const std::string line = document.dump(-1, ' ', true) + "\n";
  send(g_state.socket, line.data(), static_cast<int>(line.size()), 0);
}

// Tells the driver about a call of the control. The control belongs to the thread that created it: a
// call from any other thread is refused.
HRESULT Report(const std::string& call, const json& document) {
  if (GetCurrentThreadId() == g_state.ui_thread) return Send(document), S_OK;
  Send({{"problem", call + " on a thread other than the UI thread"}});
  return RPC_E_WRONG_THREAD;
}

HRESULT ReportCall(const char* call, const json& argument = {}) {
  return Report(call, {{"call", call}, {"argument", argument}});
}

HRESULT Keep(auto& kept, auto* handler) {
  kept = handler;
  return S_OK;
}

// --- the objects

// Returns a reference to an object that this library keeps.
HRESULT HandOut(auto* object, auto** out) {
  object->AddRef();
  *out = object;
  return S_OK;
}

class Settings final : public ComObject<ICoreWebView2Settings> {
 public:
  STDMETHOD(put_IsStatusBarEnabled)(BOOL on) { return ReportCall("put_IsStatusBarEnabled", on != FALSE); }
  STDMETHOD(put_AreDevToolsEnabled)(BOOL on) { return ReportCall("put_AreDevToolsEnabled", on != FALSE); }
  STDMETHOD(put_AreDefaultContextMenusEnabled)(BOOL on) {
    return ReportCall("put_AreDefaultContextMenusEnabled", on != FALSE);
  }
};

class Request final : public ComObject<ICoreWebView2WebResourceRequest> {
 public:
  explicit Request(std::wstring uri) : uri_(std::move(uri)) {}
  STDMETHOD(get_Uri)(LPWSTR* uri) { return SHStrDupW(uri_.c_str(), uri); }

 private:
  std::wstring uri_;
};

class Response final : public ComObject<ICoreWebView2WebResourceResponse> {
 public:
  Response(IStream* content, int status, LPCWSTR reason, LPCWSTR headers)
      : content_(content),
        answer_{{"status", status}, {"reason", WideToUtf8(reason)}, {"headers", WideToUtf8(headers)}} {}
  json Read() {
    std::vector<BYTE> body;
    BYTE part[4096];
    for (ULONG count = 0; SUCCEEDED(content_->Read(part, sizeof(part), &count)) && count > 0;)
      body.insert(body.end(), part, part + count);
    answer_["body"] = body;
    return answer_;
  }

 private:
  ComPtr<IStream> content_;
  json answer_;
};

class RequestedArgs final : public ComObject<ICoreWebView2WebResourceRequestedEventArgs> {
 public:
  explicit RequestedArgs(const std::wstring& uri) : request_(Adopt(new Request(uri))) {}
  STDMETHOD(get_Request)(ICoreWebView2WebResourceRequest** out) { return HandOut(request_.Get(), out); }
  STDMETHOD(put_Response)(ICoreWebView2WebResourceResponse* response) {
    response_ = static_cast<Response*>(response);  // only this library creates them
    return S_OK;
  }
  json Answer() { return response_ ? response_->Read() : json::object(); }

 private:
  ComPtr<Request> request_;
  ComPtr<Response> response_;
};

class MessageArgs final : public ComObject<ICoreWebView2WebMessageReceivedEventArgs> {
 public:
  explicit MessageArgs(const json& text) : text_(text) {}
  STDMETHOD(TryGetWebMessageAsString)(LPWSTR* value) {
    return text_.is_string() ? SHStrDupW(Utf8ToWide(text_.get<std::string>()).c_str(), value) : E_INVALIDARG;
  }

 private:
  json text_;
};

class View final : public ComObject<ICoreWebView2_3> {
 public:
  STDMETHOD(get_Settings)(ICoreWebView2Settings** out) { return HandOut(settings_.Get(), out); }
  STDMETHOD(Navigate)(LPCWSTR uri) { return ReportCall("Navigate", WideToUtf8(uri)); }
  STDMETHOD(PostWebMessageAsJson)(LPCWSTR text) {
    return Report("PostWebMessageAsJson", {{"message", WideToUtf8(text)}});
  }
  STDMETHOD(add_NavigationCompleted)
  (ICoreWebView2NavigationCompletedEventHandler* handler, EventRegistrationToken*) {
    return Keep(g_state.navigation_completed, handler);
  }
  STDMETHOD(add_WebMessageReceived)
  (ICoreWebView2WebMessageReceivedEventHandler* handler, EventRegistrationToken*) {
    return Keep(g_state.message_received, handler);
  }
  STDMETHOD(add_WebResourceRequested)
  (ICoreWebView2WebResourceRequestedEventHandler* handler, EventRegistrationToken*) {
    return Keep(g_state.resource_requested, handler);
  }
  STDMETHOD(AddWebResourceRequestedFilter)(LPCWSTR uri, COREWEBVIEW2_WEB_RESOURCE_CONTEXT context) {
    return ReportCall("AddWebResourceRequestedFilter", {WideToUtf8(uri), context});
  }
  STDMETHOD(SetVirtualHostNameToFolderMapping)
  (LPCWSTR host, LPCWSTR folder, COREWEBVIEW2_HOST_RESOURCE_ACCESS_KIND access) {
    return ReportCall("SetVirtualHostNameToFolderMapping", {WideToUtf8(host), WideToUtf8(folder), access});
  }

 private:
  ComPtr<Settings> settings_ = Adopt(new Settings);
};

class Controller final : public ComObject<ICoreWebView2Controller2> {
 public:
  STDMETHOD(put_IsVisible)(BOOL visible) { return ReportCall("put_IsVisible", visible != FALSE); }
  STDMETHOD(MoveFocus)(COREWEBVIEW2_MOVE_FOCUS_REASON reason) { return ReportCall("MoveFocus", reason); }
  STDMETHOD(NotifyParentWindowPositionChanged)() { return ReportCall("NotifyParentWindowPositionChanged"); }
  STDMETHOD(put_DefaultBackgroundColor)(COREWEBVIEW2_COLOR color) {
    return ReportCall("put_DefaultBackgroundColor", {color.A, color.R, color.G, color.B});
  }
  STDMETHOD(put_Bounds)(RECT bounds) {
    return ReportCall("put_Bounds", {bounds.left, bounds.top, bounds.right, bounds.bottom});
  }
  STDMETHOD(get_CoreWebView2)(ICoreWebView2** view) { return HandOut(g_state.view.Get(), view); }
};

class Environment final : public ComObject<ICoreWebView2Environment> {
 public:
  STDMETHOD(CreateCoreWebView2Controller)
  (HWND, ICoreWebView2CreateCoreWebView2ControllerCompletedHandler* handler) {
    Keep(g_state.controller_created, handler);
    return ReportCall("CreateCoreWebView2Controller");
  }
  STDMETHOD(CreateWebResourceResponse)
  (IStream* content, int status, LPCWSTR reason, LPCWSTR headers, ICoreWebView2WebResourceResponse** out) {
    *out = new Response(content, status, reason, headers);
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
    const auto args = Adopt(new ComObject<ICoreWebView2NavigationCompletedEventArgs>);
    g_state.navigation_completed->Invoke(g_state.view.Get(), args.Get());
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
  json reply = Execute(*command);
  reply["reply"] = (*command)["id"];
  return Send(reply), 0;
}

void ReceiveCommands() {
  std::string pending;
  std::vector<char> buffer(256 * 1024);
  for (int count; (count = recv(g_state.socket, buffer.data(), 256 * 1024, 0)) > 0;) {
    pending.append(buffer.data(), static_cast<size_t>(count));
    for (size_t end; (end = pending.find('\n')) != std::string::npos; pending.erase(0, end + 1)) {
      const auto command = new json(json::parse(std::string_view(pending).substr(0, end)));
      PostMessageW(g_state.window, kCommandMessage, 0, reinterpret_cast<LPARAM>(command));
    }
  }
  // Without its driver, the program would run forever.
  PostThreadMessageW(g_state.ui_thread, WM_QUIT, 0, 0);
}

bool Connect() {
  const char* port = std::getenv("VARNEL_DRIVER_PORT");
  WSADATA data;
  if (!port || WSAStartup(MAKEWORD(2, 2), &data) != 0) return false;
  sockaddr_in address{AF_INET, htons(static_cast<u_short>(std::atoi(port))), {}, {}};
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  g_state.socket = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
  const BOOL on = TRUE;
  setsockopt(g_state.socket, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&on), sizeof on);
  return connect(g_state.socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

}  // namespace

extern "C" __declspec(dllexport) HRESULT STDAPICALLTYPE CreateCoreWebView2EnvironmentWithOptions(
    PCWSTR, PCWSTR user_data_folder, ICoreWebView2EnvironmentOptions*,
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
  g_state.window = CreateWindowW(L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
  SetWindowLongPtrW(g_state.window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(CommandWindow));
  std::thread(ReceiveCommands).detach();
  Keep(g_state.environment_created, handler);
  return ReportCall("CreateCoreWebView2EnvironmentWithOptions", WideToUtf8(user_data_folder));
}
