#include <windows.h>
#include <objbase.h>
#include <oleauto.h>
#include <taskschd.h>
#include <wrl/client.h>

#include "base/text.h"
#include "service/topics_win.h"

namespace {

using Microsoft::WRL::ComPtr;

constexpr wchar_t kFolder[] = L"\\Varnel";
constexpr wchar_t kTask[] = L"Silent clean";
// Users may look at the task and start it. The scheduler would add an entry for the users that it runs
// as, which are all users.
constexpr wchar_t kAccess[] = L"D:P(A;;FA;;;SY)(A;;FA;;;BA)(A;;GRGX;;;BU)";

class Text {
 public:
  explicit Text(const std::wstring& text)
      : text_(SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {}
  ~Text() { SysFreeString(text_); }
  Text(const Text&) = delete;
  Text& operator=(const Text&) = delete;
  operator BSTR() const { return text_; }

 private:
  BSTR text_;
};

class Com {
 public:
  Com() : is_ready_(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) {}
  ~Com() {
    if (is_ready_) CoUninitialize();
  }
  Com(const Com&) = delete;
  Com& operator=(const Com&) = delete;

 private:
  bool is_ready_;
};

// Opens the scheduler's folder of this path. Returns null if there is none.
ComPtr<ITaskFolder> OpenFolder(const wchar_t* path) {
  ComPtr<ITaskService> scheduler;
  ComPtr<ITaskFolder> folder;
  const VARIANT none = {};
  if (SUCCEEDED(CoCreateInstance(__uuidof(TaskScheduler), nullptr, CLSCTX_INPROC_SERVER,
                                 IID_PPV_ARGS(scheduler.GetAddressOf()))) &&
      SUCCEEDED(scheduler->Connect(none, none, none, none)))
    scheduler->GetFolder(Text(path), folder.GetAddressOf());
  return folder;
}

bool IsMissing(HRESULT result) {
  return result == HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND) ||
         result == HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND);
}

}  // namespace

bool UnscheduleCleaning() {
  const Com com;
  const ComPtr<ITaskFolder> root = OpenFolder(L"\\");
  if (!root) return false;
  const ComPtr<ITaskFolder> folder = OpenFolder(kFolder);
  if (!folder) return true;
  const HRESULT result = folder->DeleteTask(Text(kTask), 0);
  root->DeleteFolder(Text(kFolder), 0);  // kept if another program has put something into it
  return SUCCEEDED(result) || IsMissing(result);
}

Scheduled ScheduleCleaning(const std::wstring& program) {
  const Com com;
  const Text xml(Utf8ToWide(BuildTaskXml(WideToUtf8(program)))), access(kAccess);
  const VARIANT none = {};
  VARIANT descriptor = {};
  descriptor.vt = VT_BSTR;
  descriptor.bstrVal = access;
  ComPtr<IRegisteredTask> task;
  // Checks the new task before removing an existing one.
  const ComPtr<ITaskFolder> root = OpenFolder(L"\\");
  if (!root || FAILED(root->RegisterTask(Text(kTask), xml, TASK_VALIDATE_ONLY, none, none, TASK_LOGON_GROUP,
                                         none, task.GetAddressOf())))
    return Scheduled::kUnchanged;
  // An existing task or folder cannot stay: any user could have created one of this name, and would
  // still own it.
  if (!UnscheduleCleaning()) return Scheduled::kUnchanged;
  ComPtr<ITaskFolder> folder;
  root->CreateFolder(Text(kFolder), descriptor, folder.GetAddressOf());
  if (!folder) folder = OpenFolder(kFolder);
  const bool is_registered =
      folder &&
      SUCCEEDED(folder->RegisterTask(Text(kTask), xml, TASK_CREATE | TASK_DONT_ADD_PRINCIPAL_ACE, none, none,
                                     TASK_LOGON_GROUP, descriptor, task.ReleaseAndGetAddressOf()));
  return is_registered ? Scheduled::kYes : Scheduled::kNo;
}
