#include "app/webview2_loader_win.h"

#include <windows.h>

#include <cstring>
#include <cwchar>

#include "app/browser_runtime.h"
#include "app/com_callback_win.h"
#include "base/exe_directory.h"
#include "base/handle_win.h"
#include "base/registry_win.h"

namespace {

// Returns a copy of `text` for the caller to free, or null for "not set".
HRESULT CopyOut(const wchar_t* text, LPWSTR* value) {
  if (!value) return E_POINTER;
  *value = nullptr;
  if (!text) return S_OK;
  const size_t size_bytes = (std::wcslen(text) + 1) * sizeof(wchar_t);
  *value = static_cast<LPWSTR>(CoTaskMemAlloc(size_bytes));
  if (!*value) return E_OUTOFMEMORY;
  std::memcpy(*value, text, size_bytes);
  return S_OK;
}

// Holds nothing but defaults, because some runtimes do not accept null for "no options".
class DefaultOptions final : public ComObject<ICoreWebView2EnvironmentOptions> {
 public:
  HRESULT STDMETHODCALLTYPE get_AdditionalBrowserArguments(LPWSTR* value) override {
    return CopyOut(nullptr, value);
  }
  HRESULT STDMETHODCALLTYPE get_Language(LPWSTR* value) override { return CopyOut(nullptr, value); }
  HRESULT STDMETHODCALLTYPE get_TargetCompatibleBrowserVersion(LPWSTR* value) override {
    return CopyOut(kOldestBrowserVersion, value);
  }
  HRESULT STDMETHODCALLTYPE get_AllowSingleSignOnUsingOSPrimaryAccount(BOOL* value) override {
    if (!value) return E_POINTER;
    *value = FALSE;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE put_AdditionalBrowserArguments(LPCWSTR) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE put_Language(LPCWSTR) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE put_TargetCompatibleBrowserVersion(LPCWSTR) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE put_AllowSingleSignOnUsingOSPrimaryAccount(BOOL) override { return E_NOTIMPL; }
};

// Returns an export of a library, or null if either is missing. The library stays loaded for good. Its
// dependencies are searched for in its own folder and the system's, and nowhere else. Refuses a relative
// path.
template <typename Function>
Function LoadExport(const std::wstring& library_path, const char* name) {
  const HMODULE library = LoadLibraryExW(library_path.c_str(), nullptr,
                                         LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
  if (!library) return nullptr;
  return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

// Returns the folder of the installed runtime of the stable channel, as registered by its updater, or an
// empty string if there is none.
std::wstring InstalledRuntimeFolder(HKEY root) {
  constexpr wchar_t kClientState[] =
      LR"(Software\Microsoft\EdgeUpdate\ClientState\{F3017226-FE2A-4295-8BDF-00C3A9A7E4C5})";
  const RegistryKey key = OpenKey(root, kClientState, KEY_READ | KEY_WOW64_32KEY);
  if (!key) return {};
  wchar_t folder[MAX_PATH] = {};
  DWORD size_bytes = sizeof(folder);
  if (RegGetValueW(key.get(), nullptr, L"EBWebView", RRF_RT_REG_SZ, nullptr, folder, &size_bytes) !=
      ERROR_SUCCESS)
    return {};
  return folder;
}

}  // namespace

HRESULT CreateBrowserEnvironment(const std::wstring& user_data_folder,
                                 ICoreWebView2CreateCoreWebView2EnvironmentCompletedHandler* handler) {
  const auto create = LoadExport<CreateWebView2Environment>(GetExeDirectory() + L"\\WebView2Loader.dll",
                                                            "CreateCoreWebView2EnvironmentWithOptions");
  if (create) return create(nullptr, user_data_folder.c_str(), nullptr, handler);

  for (const HKEY root : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER}) {
    const std::wstring library = ClientLibraryPath(InstalledRuntimeFolder(root));
    if (library.empty()) continue;
    const auto create_internal =
        LoadExport<CreateWebView2EnvironmentInternal>(library, "CreateWebViewEnvironmentWithOptionsInternal");
    if (!create_internal) continue;
    const auto options = Adopt<ICoreWebView2EnvironmentOptions>(new DefaultOptions);
    return create_internal(true, 0, user_data_folder.c_str(), options.Get(), handler);
  }
  return HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
}
