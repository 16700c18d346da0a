#pragma once

// The binary interface of the browser control, as far as the program calls it. Its publisher fixes the
// interfaces: each slot of a virtual table has its place, and placeholders without parameters stand for
// the methods that the program never calls. Query interfaces by their kIid. Destroy objects only through
// Release: a virtual destructor would take up slots of the table. Make all calls on the UI thread.

#include <windows.h>
#include <eventtoken.h>
#include <objidl.h>
#include <unknwn.h>

enum COREWEBVIEW2_WEB_RESOURCE_CONTEXT { COREWEBVIEW2_WEB_RESOURCE_CONTEXT_ALL = 0 };

enum COREWEBVIEW2_HOST_RESOURCE_ACCESS_KIND {
  COREWEBVIEW2_HOST_RESOURCE_ACCESS_KIND_DENY = 0,
  COREWEBVIEW2_HOST_RESOURCE_ACCESS_KIND_ALLOW = 1,
  COREWEBVIEW2_HOST_RESOURCE_ACCESS_KIND_DENY_CORS = 2,
};

enum COREWEBVIEW2_MOVE_FOCUS_REASON { COREWEBVIEW2_MOVE_FOCUS_REASON_PROGRAMMATIC = 0 };

struct COREWEBVIEW2_COLOR {
  BYTE A, R, G, B;
};

#define VARNEL_UNCALLED(name)                \
  virtual HRESULT STDMETHODCALLTYPE name() { \
    return E_NOTIMPL;                        \
  }

#if defined(__GNUC__)
// GCC warns about IUnknown, which cannot have a virtual destructor.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
#endif

struct ICoreWebView2;
struct ICoreWebView2Controller;
struct ICoreWebView2Environment;

struct ICoreWebView2EnvironmentOptions : IUnknown {
  static constexpr IID kIid = {0x2FDE08A8, 0x1E9A, 0x4766, {0x8C, 0x05, 0x95, 0xA9, 0xCE, 0xB9, 0xD1, 0xC5}};
  virtual HRESULT STDMETHODCALLTYPE get_AdditionalBrowserArguments(LPWSTR* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_AdditionalBrowserArguments(LPCWSTR value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Language(LPWSTR* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_Language(LPCWSTR value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_TargetCompatibleBrowserVersion(LPWSTR* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_TargetCompatibleBrowserVersion(LPCWSTR value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_AllowSingleSignOnUsingOSPrimaryAccount(BOOL* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_AllowSingleSignOnUsingOSPrimaryAccount(BOOL value) = 0;

 protected:
  ~ICoreWebView2EnvironmentOptions() = default;
};

struct ICoreWebView2Settings : IUnknown {
  static constexpr IID kIid = {0xE562E4F0, 0xD7FA, 0x43AC, {0x8D, 0x71, 0xC0, 0x51, 0x50, 0x49, 0x9F, 0x00}};
  VARNEL_UNCALLED(get_IsScriptEnabled)
  VARNEL_UNCALLED(put_IsScriptEnabled)
  VARNEL_UNCALLED(get_IsWebMessageEnabled)
  VARNEL_UNCALLED(put_IsWebMessageEnabled)
  VARNEL_UNCALLED(get_AreDefaultScriptDialogsEnabled)
  VARNEL_UNCALLED(put_AreDefaultScriptDialogsEnabled)
  VARNEL_UNCALLED(get_IsStatusBarEnabled)
  virtual HRESULT STDMETHODCALLTYPE put_IsStatusBarEnabled(BOOL is_status_bar_enabled) = 0;
  VARNEL_UNCALLED(get_AreDevToolsEnabled)
  virtual HRESULT STDMETHODCALLTYPE put_AreDevToolsEnabled(BOOL are_dev_tools_enabled) = 0;
  VARNEL_UNCALLED(get_AreDefaultContextMenusEnabled)
  virtual HRESULT STDMETHODCALLTYPE put_AreDefaultContextMenusEnabled(BOOL enabled) = 0;
  VARNEL_UNCALLED(get_AreHostObjectsAllowed)
  VARNEL_UNCALLED(put_AreHostObjectsAllowed)
  VARNEL_UNCALLED(get_IsZoomControlEnabled)
  VARNEL_UNCALLED(put_IsZoomControlEnabled)
  VARNEL_UNCALLED(get_IsBuiltInErrorPageEnabled)
  VARNEL_UNCALLED(put_IsBuiltInErrorPageEnabled)

 protected:
  ~ICoreWebView2Settings() = default;
};

struct ICoreWebView2WebResourceRequest : IUnknown {
  static constexpr IID kIid = {0x97055CD4, 0x512C, 0x4264, {0x8B, 0x5F, 0xE3, 0xF4, 0x46, 0xCE, 0xA6, 0xA5}};
  virtual HRESULT STDMETHODCALLTYPE get_Uri(LPWSTR* uri) = 0;
  VARNEL_UNCALLED(put_Uri)
  VARNEL_UNCALLED(get_Method)
  VARNEL_UNCALLED(put_Method)
  VARNEL_UNCALLED(get_Content)
  VARNEL_UNCALLED(put_Content)
  VARNEL_UNCALLED(get_Headers)

 protected:
  ~ICoreWebView2WebResourceRequest() = default;
};

struct ICoreWebView2WebResourceResponse : IUnknown {
  static constexpr IID kIid = {0xAAFCC94F, 0xFA27, 0x48FD, {0x97, 0xDF, 0x83, 0x0E, 0xF7, 0x5A, 0xAE, 0xC9}};
  VARNEL_UNCALLED(get_Content)
  VARNEL_UNCALLED(put_Content)
  VARNEL_UNCALLED(get_Headers)
  VARNEL_UNCALLED(get_StatusCode)
  VARNEL_UNCALLED(put_StatusCode)
  VARNEL_UNCALLED(get_ReasonPhrase)
  VARNEL_UNCALLED(put_ReasonPhrase)

 protected:
  ~ICoreWebView2WebResourceResponse() = default;
};

struct ICoreWebView2WebResourceRequestedEventArgs : IUnknown {
  static constexpr IID kIid = {0x453E667F, 0x12C7, 0x49D4, {0xBE, 0x6D, 0xDD, 0xBE, 0x79, 0x56, 0xF5, 0x7A}};
  virtual HRESULT STDMETHODCALLTYPE get_Request(ICoreWebView2WebResourceRequest** request) = 0;
  VARNEL_UNCALLED(get_Response)
  virtual HRESULT STDMETHODCALLTYPE put_Response(ICoreWebView2WebResourceResponse* response) = 0;
  VARNEL_UNCALLED(GetDeferral)
  VARNEL_UNCALLED(get_ResourceContext)

 protected:
  ~ICoreWebView2WebResourceRequestedEventArgs() = default;
};

struct ICoreWebView2WebMessageReceivedEventArgs : IUnknown {
  static constexpr IID kIid = {0x0F99A40C, 0xE962, 0x4207, {0x9E, 0x92, 0xE3, 0xD5, 0x42, 0xEF, 0xF8, 0x49}};
  VARNEL_UNCALLED(get_Source)
  VARNEL_UNCALLED(get_WebMessageAsJson)
  virtual HRESULT STDMETHODCALLTYPE TryGetWebMessageAsString(LPWSTR* value) = 0;

 protected:
  ~ICoreWebView2WebMessageReceivedEventArgs() = default;
};

struct ICoreWebView2NavigationCompletedEventArgs : IUnknown {
  static constexpr IID kIid = {0x30D68B7D, 0x20D9, 0x4752, {0xA9, 0xCA, 0xEC, 0x84, 0x48, 0xFB, 0xB5, 0xC1}};
  VARNEL_UNCALLED(get_IsSuccess)
  VARNEL_UNCALLED(get_WebErrorStatus)
  VARNEL_UNCALLED(get_NavigationId)

 protected:
  ~ICoreWebView2NavigationCompletedEventArgs() = default;
};

struct ICoreWebView2WebResourceRequestedEventHandler : IUnknown {
  static constexpr IID kIid = {0xAB00B74C, 0x15F1, 0x4646, {0x80, 0xE8, 0xE7, 0x63, 0x41, 0xD2, 0x5D, 0x71}};
  virtual HRESULT STDMETHODCALLTYPE Invoke(ICoreWebView2* sender,
                                           ICoreWebView2WebResourceRequestedEventArgs* args) = 0;

 protected:
  ~ICoreWebView2WebResourceRequestedEventHandler() = default;
};

struct ICoreWebView2WebMessageReceivedEventHandler : IUnknown {
  static constexpr IID kIid = {0x57213F19, 0x00E6, 0x49FA, {0x8E, 0x07, 0x89, 0x8E, 0xA0, 0x1E, 0xCB, 0xD2}};
  virtual HRESULT STDMETHODCALLTYPE Invoke(ICoreWebView2* sender,
                                           ICoreWebView2WebMessageReceivedEventArgs* args) = 0;

 protected:
  ~ICoreWebView2WebMessageReceivedEventHandler() = default;
};

struct ICoreWebView2NavigationCompletedEventHandler : IUnknown {
  static constexpr IID kIid = {0xD33A35BF, 0x1C49, 0x4F98, {0x93, 0xAB, 0x00, 0x6E, 0x05, 0x33, 0xFE, 0x1C}};
  virtual HRESULT STDMETHODCALLTYPE Invoke(ICoreWebView2* sender,
                                           ICoreWebView2NavigationCompletedEventArgs* args) = 0;

 protected:
  ~ICoreWebView2NavigationCompletedEventHandler() = default;
};

struct ICoreWebView2 : IUnknown {
  static constexpr IID kIid = {0x76ECEACB, 0x0462, 0x4D94, {0xAC, 0x83, 0x42, 0x3A, 0x67, 0x93, 0x77, 0x5E}};
  virtual HRESULT STDMETHODCALLTYPE get_Settings(ICoreWebView2Settings** settings) = 0;
  VARNEL_UNCALLED(get_Source)
  virtual HRESULT STDMETHODCALLTYPE Navigate(LPCWSTR uri) = 0;
  VARNEL_UNCALLED(NavigateToString)
  VARNEL_UNCALLED(add_NavigationStarting)
  VARNEL_UNCALLED(remove_NavigationStarting)
  VARNEL_UNCALLED(add_ContentLoading)
  VARNEL_UNCALLED(remove_ContentLoading)
  VARNEL_UNCALLED(add_SourceChanged)
  VARNEL_UNCALLED(remove_SourceChanged)
  VARNEL_UNCALLED(add_HistoryChanged)
  VARNEL_UNCALLED(remove_HistoryChanged)
  virtual HRESULT STDMETHODCALLTYPE add_NavigationCompleted(
      ICoreWebView2NavigationCompletedEventHandler* handler, EventRegistrationToken* token) = 0;
  VARNEL_UNCALLED(remove_NavigationCompleted)
  VARNEL_UNCALLED(add_FrameNavigationStarting)
  VARNEL_UNCALLED(remove_FrameNavigationStarting)
  VARNEL_UNCALLED(add_FrameNavigationCompleted)
  VARNEL_UNCALLED(remove_FrameNavigationCompleted)
  VARNEL_UNCALLED(add_ScriptDialogOpening)
  VARNEL_UNCALLED(remove_ScriptDialogOpening)
  VARNEL_UNCALLED(add_PermissionRequested)
  VARNEL_UNCALLED(remove_PermissionRequested)
  VARNEL_UNCALLED(add_ProcessFailed)
  VARNEL_UNCALLED(remove_ProcessFailed)
  VARNEL_UNCALLED(AddScriptToExecuteOnDocumentCreated)
  VARNEL_UNCALLED(RemoveScriptToExecuteOnDocumentCreated)
  VARNEL_UNCALLED(ExecuteScript)
  VARNEL_UNCALLED(CapturePreview)
  VARNEL_UNCALLED(Reload)
  virtual HRESULT STDMETHODCALLTYPE PostWebMessageAsJson(LPCWSTR web_message_as_json) = 0;
  VARNEL_UNCALLED(PostWebMessageAsString)
  virtual HRESULT STDMETHODCALLTYPE add_WebMessageReceived(
      ICoreWebView2WebMessageReceivedEventHandler* handler, EventRegistrationToken* token) = 0;
  VARNEL_UNCALLED(remove_WebMessageReceived)
  VARNEL_UNCALLED(CallDevToolsProtocolMethod)
  VARNEL_UNCALLED(get_BrowserProcessId)
  VARNEL_UNCALLED(get_CanGoBack)
  VARNEL_UNCALLED(get_CanGoForward)
  VARNEL_UNCALLED(GoBack)
  VARNEL_UNCALLED(GoForward)
  VARNEL_UNCALLED(GetDevToolsProtocolEventReceiver)
  VARNEL_UNCALLED(Stop)
  VARNEL_UNCALLED(add_NewWindowRequested)
  VARNEL_UNCALLED(remove_NewWindowRequested)
  VARNEL_UNCALLED(add_DocumentTitleChanged)
  VARNEL_UNCALLED(remove_DocumentTitleChanged)
  VARNEL_UNCALLED(get_DocumentTitle)
  VARNEL_UNCALLED(AddHostObjectToScript)
  VARNEL_UNCALLED(RemoveHostObjectFromScript)
  VARNEL_UNCALLED(OpenDevToolsWindow)
  VARNEL_UNCALLED(add_ContainsFullScreenElementChanged)
  VARNEL_UNCALLED(remove_ContainsFullScreenElementChanged)
  VARNEL_UNCALLED(get_ContainsFullScreenElement)
  virtual HRESULT STDMETHODCALLTYPE add_WebResourceRequested(
      ICoreWebView2WebResourceRequestedEventHandler* handler, EventRegistrationToken* token) = 0;
  VARNEL_UNCALLED(remove_WebResourceRequested)
  virtual HRESULT STDMETHODCALLTYPE
  AddWebResourceRequestedFilter(LPCWSTR uri, COREWEBVIEW2_WEB_RESOURCE_CONTEXT resource_context) = 0;
  VARNEL_UNCALLED(RemoveWebResourceRequestedFilter)
  VARNEL_UNCALLED(add_WindowCloseRequested)
  VARNEL_UNCALLED(remove_WindowCloseRequested)

 protected:
  ~ICoreWebView2() = default;
};

struct ICoreWebView2_2 : ICoreWebView2 {
  static constexpr IID kIid = {0x9E8F0CF8, 0xE670, 0x4B5E, {0xB2, 0xBC, 0x73, 0xE0, 0x61, 0xE3, 0x18, 0x4C}};
  VARNEL_UNCALLED(add_WebResourceResponseReceived)
  VARNEL_UNCALLED(remove_WebResourceResponseReceived)
  VARNEL_UNCALLED(NavigateWithWebResourceRequest)
  VARNEL_UNCALLED(add_DOMContentLoaded)
  VARNEL_UNCALLED(remove_DOMContentLoaded)
  VARNEL_UNCALLED(get_CookieManager)
  VARNEL_UNCALLED(get_Environment)

 protected:
  ~ICoreWebView2_2() = default;
};

struct ICoreWebView2_3 : ICoreWebView2_2 {
  static constexpr IID kIid = {0xA0D6DF20, 0x3B92, 0x416D, {0xAA, 0x0C, 0x43, 0x7A, 0x9C, 0x72, 0x78, 0x57}};
  VARNEL_UNCALLED(TrySuspend)
  VARNEL_UNCALLED(Resume)
  VARNEL_UNCALLED(get_IsSuspended)
  virtual HRESULT STDMETHODCALLTYPE SetVirtualHostNameToFolderMapping(
      LPCWSTR host_name, LPCWSTR folder_path, COREWEBVIEW2_HOST_RESOURCE_ACCESS_KIND access_kind) = 0;
  VARNEL_UNCALLED(ClearVirtualHostNameToFolderMapping)

 protected:
  ~ICoreWebView2_3() = default;
};

struct ICoreWebView2Controller : IUnknown {
  static constexpr IID kIid = {0x4D00C0D1, 0x9434, 0x4EB6, {0x80, 0x78, 0x86, 0x97, 0xA5, 0x60, 0x33, 0x4F}};
  VARNEL_UNCALLED(get_IsVisible)
  virtual HRESULT STDMETHODCALLTYPE put_IsVisible(BOOL is_visible) = 0;
  VARNEL_UNCALLED(get_Bounds)
  virtual HRESULT STDMETHODCALLTYPE put_Bounds(RECT bounds) = 0;
  VARNEL_UNCALLED(get_ZoomFactor)
  VARNEL_UNCALLED(put_ZoomFactor)
  VARNEL_UNCALLED(add_ZoomFactorChanged)
  VARNEL_UNCALLED(remove_ZoomFactorChanged)
  VARNEL_UNCALLED(SetBoundsAndZoomFactor)
  virtual HRESULT STDMETHODCALLTYPE MoveFocus(COREWEBVIEW2_MOVE_FOCUS_REASON reason) = 0;
  VARNEL_UNCALLED(add_MoveFocusRequested)
  VARNEL_UNCALLED(remove_MoveFocusRequested)
  VARNEL_UNCALLED(add_GotFocus)
  VARNEL_UNCALLED(remove_GotFocus)
  VARNEL_UNCALLED(add_LostFocus)
  VARNEL_UNCALLED(remove_LostFocus)
  VARNEL_UNCALLED(add_AcceleratorKeyPressed)
  VARNEL_UNCALLED(remove_AcceleratorKeyPressed)
  VARNEL_UNCALLED(get_ParentWindow)
  VARNEL_UNCALLED(put_ParentWindow)
  virtual HRESULT STDMETHODCALLTYPE NotifyParentWindowPositionChanged() = 0;
  VARNEL_UNCALLED(Close)
  virtual HRESULT STDMETHODCALLTYPE get_CoreWebView2(ICoreWebView2** view) = 0;

 protected:
  ~ICoreWebView2Controller() = default;
};

struct ICoreWebView2Controller2 : ICoreWebView2Controller {
  static constexpr IID kIid = {0xC979903E, 0xD4CA, 0x4228, {0x92, 0xEB, 0x47, 0xEE, 0x3F, 0xA9, 0x6E, 0xAB}};
  VARNEL_UNCALLED(get_DefaultBackgroundColor)
  virtual HRESULT STDMETHODCALLTYPE put_DefaultBackgroundColor(COREWEBVIEW2_COLOR color) = 0;

 protected:
  ~ICoreWebView2Controller2() = default;
};

struct ICoreWebView2CreateCoreWebView2ControllerCompletedHandler : IUnknown {
  static constexpr IID kIid = {0x6C4819F3, 0xC9B7, 0x4260, {0x81, 0x27, 0xC9, 0xF5, 0xBD, 0xE7, 0xF6, 0x8C}};
  virtual HRESULT STDMETHODCALLTYPE Invoke(HRESULT error_code, ICoreWebView2Controller* result) = 0;

 protected:
  ~ICoreWebView2CreateCoreWebView2ControllerCompletedHandler() = default;
};

struct ICoreWebView2Environment : IUnknown {
  static constexpr IID kIid = {0xB96D755E, 0x0319, 0x4E92, {0xA2, 0x96, 0x23, 0x43, 0x6F, 0x46, 0xA1, 0xFC}};
  virtual HRESULT STDMETHODCALLTYPE CreateCoreWebView2Controller(
      HWND parent_window, ICoreWebView2CreateCoreWebView2ControllerCompletedHandler* handler) = 0;
  virtual HRESULT STDMETHODCALLTYPE
  CreateWebResourceResponse(IStream* content, int status_code, LPCWSTR reason_phrase, LPCWSTR headers,
                            ICoreWebView2WebResourceResponse** response) = 0;
  VARNEL_UNCALLED(get_BrowserVersionString)
  VARNEL_UNCALLED(add_NewBrowserVersionAvailable)
  VARNEL_UNCALLED(remove_NewBrowserVersionAvailable)

 protected:
  ~ICoreWebView2Environment() = default;
};

struct ICoreWebView2CreateCoreWebView2EnvironmentCompletedHandler : IUnknown {
  static constexpr IID kIid = {0x4E8A3389, 0xC9D8, 0x4BD2, {0xB6, 0xB5, 0x12, 0x4F, 0xEE, 0x6C, 0xC1, 0x4D}};
  virtual HRESULT STDMETHODCALLTYPE Invoke(HRESULT error_code, ICoreWebView2Environment* result) = 0;

 protected:
  ~ICoreWebView2CreateCoreWebView2EnvironmentCompletedHandler() = default;
};

#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

#undef VARNEL_UNCALLED

// The function that WebView2Loader.dll exports as CreateCoreWebView2EnvironmentWithOptions.
using CreateWebView2Environment = HRESULT(STDAPICALLTYPE*)(
    PCWSTR browser_folder, PCWSTR user_data_folder, ICoreWebView2EnvironmentOptions* options,
    ICoreWebView2CreateCoreWebView2EnvironmentCompletedHandler* handler);

// The function that the installed runtime's EmbeddedBrowserWebView.dll exports as
// CreateWebViewEnvironmentWithOptionsInternal. `runtime_type` is 0 for the installed runtime; `options`
// must not be null.
using CreateWebView2EnvironmentInternal = HRESULT(STDAPICALLTYPE*)(
    bool check_running_instance, int runtime_type, PCWSTR user_data_folder, IUnknown* options,
    ICoreWebView2CreateCoreWebView2EnvironmentCompletedHandler* handler);
