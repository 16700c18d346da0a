#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "app/com_callback_win.h"
#include "app/webview2.h"

// Stand-ins for the browser control's objects in tests of the window and the browser host. They live where
// the test puts them, only count references, and write what is called on them into one list.

using CallLog = std::vector<std::wstring>;

template <typename Interface>
class FakeObject : public Interface {
 public:
  virtual ~FakeObject() = default;
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    const bool known = IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, Interface::kIid);
    *object = known ? static_cast<Interface*>(this) : nullptr;
    if (!known) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }

  ULONG references = 0;
};

// Gives out a fake as an out parameter does: with a reference for the caller.
template <typename Fake, typename Interface>
HRESULT HandOut(Fake& fake, Interface** out) {
  fake.AddRef();
  *out = &fake;
  return S_OK;
}

inline HRESULT CopyText(const std::wstring& text, LPWSTR* out) {
  const size_t size_bytes = (text.size() + 1) * sizeof(wchar_t);
  *out = static_cast<LPWSTR>(CoTaskMemAlloc(size_bytes));
  memcpy(*out, text.c_str(), size_bytes);
  return S_OK;
}

inline std::wstring RectText(const RECT& rect) {
  return std::to_wstring(rect.left) + L" " + std::to_wstring(rect.top) + L" " + std::to_wstring(rect.right) +
         L" " + std::to_wstring(rect.bottom);
}

class FakeSettings final : public FakeObject<ICoreWebView2Settings> {
 public:
  explicit FakeSettings(CallLog& log) : log_(log) {}
  HRESULT STDMETHODCALLTYPE put_AreDevToolsEnabled(BOOL on) override { return Log(L"dev tools", on); }
  HRESULT STDMETHODCALLTYPE put_AreDefaultContextMenusEnabled(BOOL on) override {
    return Log(L"context menus", on);
  }
  HRESULT STDMETHODCALLTYPE put_IsStatusBarEnabled(BOOL on) override { return Log(L"status bar", on); }

 private:
  HRESULT Log(const wchar_t* what, BOOL on) {
    log_.push_back(what + std::wstring(on ? L" on" : L" off"));
    return S_OK;
  }
  CallLog& log_;
};

class FakeView final : public FakeObject<ICoreWebView2_3> {
 public:
  explicit FakeView(CallLog& log) : log_(log), settings_(log) {}

  HRESULT STDMETHODCALLTYPE get_Settings(ICoreWebView2Settings** settings) override {
    return HandOut(settings_, settings);
  }
  HRESULT STDMETHODCALLTYPE Navigate(LPCWSTR uri) override { return Log(L"navigate " + std::wstring(uri)); }
  HRESULT STDMETHODCALLTYPE PostWebMessageAsJson(LPCWSTR json) override {
    posted.push_back(json);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE
  AddWebResourceRequestedFilter(LPCWSTR uri, COREWEBVIEW2_WEB_RESOURCE_CONTEXT context) override {
    return Log(L"filter " + std::wstring(uri) + L" " + std::to_wstring(context));
  }
  HRESULT STDMETHODCALLTYPE add_WebResourceRequested(ICoreWebView2WebResourceRequestedEventHandler* handler,
                                                     EventRegistrationToken*) override {
    resource_requested = handler;
    return Log(L"add resource requested");
  }
  HRESULT STDMETHODCALLTYPE add_WebMessageReceived(ICoreWebView2WebMessageReceivedEventHandler* handler,
                                                   EventRegistrationToken*) override {
    message_received = handler;
    return Log(L"add message received");
  }
  HRESULT STDMETHODCALLTYPE add_NavigationCompleted(ICoreWebView2NavigationCompletedEventHandler* handler,
                                                    EventRegistrationToken*) override {
    navigation_completed = handler;
    return Log(L"add navigation completed");
  }
  HRESULT STDMETHODCALLTYPE SetVirtualHostNameToFolderMapping(
      LPCWSTR host, LPCWSTR folder, COREWEBVIEW2_HOST_RESOURCE_ACCESS_KIND access) override {
    mapped_folder = folder;
    return Log(L"map " + std::wstring(host) + L" " + std::to_wstring(access));
  }

  std::vector<std::wstring> posted;
  std::wstring mapped_folder;
  Microsoft::WRL::ComPtr<ICoreWebView2WebResourceRequestedEventHandler> resource_requested;
  Microsoft::WRL::ComPtr<ICoreWebView2WebMessageReceivedEventHandler> message_received;
  Microsoft::WRL::ComPtr<ICoreWebView2NavigationCompletedEventHandler> navigation_completed;

 private:
  HRESULT Log(std::wstring call) {
    log_.push_back(std::move(call));
    return S_OK;
  }
  CallLog& log_;
  FakeSettings settings_;
};

class FakeController final : public FakeObject<ICoreWebView2Controller> {
 public:
  FakeController(CallLog& log, FakeView& view) : log_(log), view_(view) {}
  HRESULT STDMETHODCALLTYPE put_Bounds(RECT bounds) override {
    log_.push_back(L"bounds " + RectText(bounds));
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_CoreWebView2(ICoreWebView2** view) override { return HandOut(view_, view); }

 private:
  CallLog& log_;
  FakeView& view_;
};

class FakeResponse final : public FakeObject<ICoreWebView2WebResourceResponse> {};

class FakeEnvironment final : public FakeObject<ICoreWebView2Environment> {
 public:
  HRESULT STDMETHODCALLTYPE CreateCoreWebView2Controller(
      HWND parent, ICoreWebView2CreateCoreWebView2ControllerCompletedHandler* handler) override {
    parent_window = parent;
    controller_created = handler;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE CreateWebResourceResponse(IStream* content, int status, LPCWSTR reason,
                                                      LPCWSTR header_text,
                                                      ICoreWebView2WebResourceResponse** out) override {
    stream = content;
    status_line = std::to_wstring(status) + L" " + reason;
    headers = header_text;
    return HandOut(response, out);
  }

  HWND parent_window = nullptr;
  Microsoft::WRL::ComPtr<ICoreWebView2CreateCoreWebView2ControllerCompletedHandler> controller_created;
  Microsoft::WRL::ComPtr<IStream> stream;
  std::wstring status_line, headers;
  FakeResponse response;
};

class FakeRequest final : public FakeObject<ICoreWebView2WebResourceRequest> {
 public:
  HRESULT STDMETHODCALLTYPE get_Uri(LPWSTR* out) override { return CopyText(uri, out); }
  std::wstring uri;
};

class FakeResourceArgs final : public FakeObject<ICoreWebView2WebResourceRequestedEventArgs> {
 public:
  explicit FakeResourceArgs(std::wstring uri) { request_.uri = std::move(uri); }
  HRESULT STDMETHODCALLTYPE get_Request(ICoreWebView2WebResourceRequest** out) override {
    return HandOut(request_, out);
  }
  HRESULT STDMETHODCALLTYPE put_Response(ICoreWebView2WebResourceResponse*) override {
    answered = true;
    return S_OK;
  }
  bool answered = false;

 private:
  FakeRequest request_;
};

class FakeMessageArgs final : public FakeObject<ICoreWebView2WebMessageReceivedEventArgs> {
 public:
  // Null for a message that is not a string.
  explicit FakeMessageArgs(const wchar_t* text) : text_(text) {}
  HRESULT STDMETHODCALLTYPE TryGetWebMessageAsString(LPWSTR* out) override {
    *out = nullptr;
    return text_ ? CopyText(text_, out) : E_INVALIDARG;
  }

 private:
  const wchar_t* text_;
};
