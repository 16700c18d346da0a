#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "app/com_callback_win.h"
#include "app/webview2.h"

// Stands in for the browser's view: keeps what was posted to the page and refuses all else. It lives where it
// is put, whoever refers to it.
class FakeView final : public ComObject<ICoreWebView2_3> {
 public:
  HRESULT STDMETHODCALLTYPE PostWebMessageAsJson(LPCWSTR json) override {
    posted.push_back(json);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_Settings(ICoreWebView2Settings**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Navigate(LPCWSTR) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE add_NavigationCompleted(ICoreWebView2NavigationCompletedEventHandler*,
                                                    EventRegistrationToken*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE add_WebMessageReceived(ICoreWebView2WebMessageReceivedEventHandler*,
                                                   EventRegistrationToken*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE add_WebResourceRequested(ICoreWebView2WebResourceRequestedEventHandler*,
                                                     EventRegistrationToken*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE AddWebResourceRequestedFilter(LPCWSTR,
                                                          COREWEBVIEW2_WEB_RESOURCE_CONTEXT) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE
  SetVirtualHostNameToFolderMapping(LPCWSTR, LPCWSTR, COREWEBVIEW2_HOST_RESOURCE_ACCESS_KIND) override {
    return E_NOTIMPL;
  }

  std::vector<std::wstring> posted;
};
