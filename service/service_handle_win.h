#pragma once

#include <windows.h>

#include "base/handle_win.h"

// A handle of the service control manager or of one of its services.
struct ServiceHandleKind {
  using Type = SC_HANDLE;
  static Type Invalid() { return nullptr; }
  static void Close(Type service) { CloseServiceHandle(service); }
};
using ServiceHandle = Owned<ServiceHandleKind>;
