#include "app/browser_host.h"

#include <windows.h>
#include <shlobj.h>
#include <shlwapi.h>

#include <string>

#include "app/actions.h"
#include "app/com_callback_win.h"
#include "app/embedded_files.h"
#include "app/main_window_win.h"
#include "app/webview2_loader_win.h"
#include "base/exe_directory.h"
#include "base/handle_win.h"
#include "base/worker.h"
#include "system/status.h"

using Microsoft::WRL::ComPtr;

namespace {

const std::wstring kOrigin = std::wstring(L"https://") + VirtualHostName;

std::wstring ProfileFolder() {
  wchar_t folder[MAX_PATH] = {};
  // S_FALSE means that the folder does not exist.
  if (SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA, nullptr, 0, folder) == S_OK)
    return std::wstring(folder) + L"\\Varnel\\Varnel.UserData";
  return GetExeDirectory() + L"\\Varnel.UserData";
}

// Returns a memory stream over an embedded file, or null if the executable does not contain it.
ComPtr<IStream> OpenEmbeddedFile(const EmbeddedFile& file) {
  const HRSRC resource = FindResourceW(nullptr, MAKEINTRESOURCEW(file.resource_id), RT_RCDATA);
  const HGLOBAL loaded = resource ? LoadResource(nullptr, resource) : nullptr;
  const void* bytes = loaded ? LockResource(loaded) : nullptr;
  const DWORD size = resource ? SizeofResource(nullptr, resource) : 0;
  if (!bytes || size == 0) return nullptr;
  return Adopt(SHCreateMemStream(static_cast<const BYTE*>(bytes), size));
}

// Answers requests for the page's own addresses. Without an answer, the control asks the mapped folder.
HRESULT OnResourceRequested(ICoreWebView2*, ICoreWebView2WebResourceRequestedEventArgs* args) {
  ComPtr<ICoreWebView2WebResourceRequest> request;
  TaskMemoryString uri;
  if (FAILED(args->get_Request(&request)) || !request || FAILED(request->get_Uri(uri.put())) || !uri)
    return S_OK;
  const EmbeddedFile* file = FindEmbeddedFile(uri.get());
  if (!file || !State().environment) return S_OK;
  const ComPtr<IStream> stream = OpenEmbeddedFile(*file);
  if (!stream) return S_OK;
  ComPtr<ICoreWebView2WebResourceResponse> response;
  if (SUCCEEDED(State().environment->CreateWebResourceResponse(stream.Get(), 200, L"OK",
                                                               ResponseHeaders(*file).c_str(), &response)))
    args->put_Response(response.Get());
  return S_OK;
}

HRESULT OnMessage(ICoreWebView2*, ICoreWebView2WebMessageReceivedEventArgs* args) {
  TaskMemoryString text;
  if (FAILED(args->TryGetWebMessageAsString(text.put())) || !text) return S_OK;
  const std::wstring message(text.get());
  ActionDispatcher(Actions()).Dispatch(message);
  return S_OK;
}

HRESULT OnNavigationCompleted(ICoreWebView2*, ICoreWebView2NavigationCompletedEventArgs*) {
  StartWorker([] { PushStatus(); });
  return S_OK;
}

void Configure(ICoreWebView2& view) {
  ComPtr<ICoreWebView2Settings> settings;
  if (FAILED(view.get_Settings(&settings)) || !settings) return;
  settings->put_AreDevToolsEnabled(FALSE);
  settings->put_AreDefaultContextMenusEnabled(FALSE);
  settings->put_IsStatusBarEnabled(FALSE);
}

// Maps the public folder to the page's host, where it serves whatever is not embedded. Maps nothing if
// there is no such folder, because requests to a mapped host may take longer.
void MapPublicFolder(ICoreWebView2& view) {
  for (const wchar_t* place : {L"\\public", L"\\..\\public"}) {
    const std::wstring folder = GetExeDirectory() + place;
    if (GetFileAttributesW(folder.c_str()) == INVALID_FILE_ATTRIBUTES) continue;
    if (const auto mapping = QueryFor<ICoreWebView2_3>(&view))
      mapping->SetVirtualHostNameToFolderMapping(VirtualHostName, folder.c_str(),
                                                 COREWEBVIEW2_HOST_RESOURCE_ACCESS_KIND_ALLOW);
    return;
  }
}

// Shows the caption's colour until the page's first frame. An older runtime stays white.
void SetBackground(ICoreWebView2Controller& controller) {
  if (const auto with_color = QueryFor<ICoreWebView2Controller2>(&controller))
    with_color->put_DefaultBackgroundColor({.A = 255, .R = 13, .G = 13, .B = 23});
}

void ConnectEvents(ICoreWebView2& view) {
  EventRegistrationToken token = {};  // not kept: the handlers stay as long as the view
  view.AddWebResourceRequestedFilter((kOrigin + L"/*").c_str(), COREWEBVIEW2_WEB_RESOURCE_CONTEXT_ALL);
  view.add_WebResourceRequested(
      MakeCallback<ICoreWebView2WebResourceRequestedEventHandler>(OnResourceRequested).Get(), &token);
  view.add_WebMessageReceived(MakeCallback<ICoreWebView2WebMessageReceivedEventHandler>(OnMessage).Get(),
                              &token);
  view.add_NavigationCompleted(
      MakeCallback<ICoreWebView2NavigationCompletedEventHandler>(OnNavigationCompleted).Get(), &token);
}

HRESULT OnControllerCreated(HRESULT result, ICoreWebView2Controller* controller) {
  if (FAILED(result) || !controller) return result;
  AppState& state = State();
  state.controller = controller;
  ComPtr<ICoreWebView2> view;
  controller->get_CoreWebView2(&view);
  state.view = view;
  if (!view) return E_FAIL;

  SetBackground(*controller);
  Configure(*view.Get());
  FitBrowser();
  MapPublicFolder(*view.Get());
  ConnectEvents(*view.Get());
  const HRESULT navigated = view->Navigate((kOrigin + L"/index.html").c_str());
  FocusBrowser();  // WM_SETFOCUS came before the control existed
  return navigated;
}

HRESULT OnEnvironmentCreated(HRESULT result, ICoreWebView2Environment* environment) {
  if (FAILED(result) || !environment) return result;
  // The installed runtime returns an object that must be queried for this interface first.
  State().environment = QueryFor<ICoreWebView2Environment>(environment);
  if (!State().environment) return E_NOINTERFACE;
  return State().environment->CreateCoreWebView2Controller(
      State().main_window,
      MakeCallback<ICoreWebView2CreateCoreWebView2ControllerCompletedHandler>(OnControllerCreated).Get());
}

}  // namespace

void StartBrowser() {
  const auto handler =
      MakeCallback<ICoreWebView2CreateCoreWebView2EnvironmentCompletedHandler>(OnEnvironmentCreated);
  CreateBrowserEnvironment(ProfileFolder(), handler.Get());
}
