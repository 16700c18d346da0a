// Stand-in for the installed browser runtime's client library. Accepts exactly the call that the program
// should make, and reports to the handler that there is no browser.
#include <windows.h>

#include <cwchar>

#include "app/com_callback_win.h"
#include "app/webview2.h"

extern "C" __declspec(dllexport) HRESULT STDAPICALLTYPE CreateWebViewEnvironmentWithOptionsInternal(
    bool check_running_instance, int runtime_type, PCWSTR user_data_folder, IUnknown* options,
    ICoreWebView2CreateCoreWebView2EnvironmentCompletedHandler* handler) {
  const auto asked = QueryFor<ICoreWebView2EnvironmentOptions>(options);
  LPWSTR version = nullptr, arguments = nullptr, language = nullptr;
  BOOL single_sign_on = TRUE;
  const bool as_agreed =
      check_running_instance && runtime_type == 0 && std::wcscmp(user_data_folder, L"C:\\profile") == 0 &&
      asked && SUCCEEDED(asked->get_TargetCompatibleBrowserVersion(&version)) &&
      std::wcscmp(version, L"86.0.616.0") == 0 &&
      SUCCEEDED(asked->get_AdditionalBrowserArguments(&arguments)) && !arguments &&
      SUCCEEDED(asked->get_Language(&language)) && !language &&
      SUCCEEDED(asked->get_AllowSingleSignOnUsingOSPrimaryAccount(&single_sign_on)) && !single_sign_on;
  CoTaskMemFree(version);
  if (!as_agreed) return E_INVALIDARG;
  handler->Invoke(E_ABORT, nullptr);
  return S_OK;
}
