#include "app/main_window_win.h"

#include <windows.h>
#include <dwmapi.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "base/handle_win.h"
#include "base/page.h"

namespace {

constexpr wchar_t kClassName[] = L"VarnelWebView2Window";
constexpr int kIconResource = 1;
// Sizes of the whole window on a display of 96 dpi.
constexpr SIZE kFirstSize = {1400, 900};
constexpr SIZE kMinimumSize = {1250, 700};

// Lets other processes control the window through WM_SYSCOMMAND. No menu holds these commands.
constexpr WPARAM kCommandCheckForUpdate = 1000;
constexpr WPARAM kCommandShowSettings = 1001;
constexpr WPARAM kCommandExit = 1002;

// Attributes missing from older headers.
constexpr DWORD kDwmUseImmersiveDarkMode = 20;
constexpr DWORD kDwmCaptionColor = 35;
constexpr DWORD kDwmTextColor = 36;
// The caption's text deliberately has the colour of its background: only the taskbar shows the title.
constexpr DWORD kCaptionColor = 0x00170D0D;

struct BitmapKind {
  using Type = HBITMAP;
  static Type Invalid() { return nullptr; }
  static void Close(Type bitmap) { DeleteObject(bitmap); }
};
using Bitmap = Owned<BitmapKind>;

HICON LoadAppIcon(HINSTANCE instance, int width_metric, int height_metric) {
  const HANDLE icon =
      LoadImageW(instance, MAKEINTRESOURCEW(kIconResource), IMAGE_ICON, GetSystemMetrics(width_metric),
                 GetSystemMetrics(height_metric), LR_DEFAULTCOLOR);
  return icon ? static_cast<HICON>(icon) : LoadIconA(instance, MAKEINTRESOURCEA(32512));
}

// Returns a fully transparent icon, so that the title bar shows none.
HICON CreateBlankSmallIcon() {
  auto metric = [](int index) {
    const int value = GetSystemMetrics(index);
    return value < 1 ? 16 : value;
  };
  const int width = metric(SM_CXSMICON), height = metric(SM_CYSMICON);
  const auto words = static_cast<size_t>((width + 15) / 16) * static_cast<size_t>(height);
  const std::vector<WORD> transparent(words, 0xFFFF), black(words, 0);
  const Bitmap mask(CreateBitmap(width, height, 1, 1, transparent.data()));
  const Bitmap color(CreateBitmap(width, height, 1, 1, black.data()));
  ICONINFO info = {TRUE, 0, 0, mask.get(), color.get()};
  return CreateIconIndirect(&info);
}

// Makes the icon area of the title bar act like the rest of it, without the system menu.
WPARAM WithoutSystemMenu(WPARAM hit_code) {
  return hit_code == HTSYSMENU ? HTCAPTION : hit_code;
}

HICON IconFor(WPARAM kind) {
  const AppState& state = State();
  switch (kind) {
    case ICON_SMALL:
    case ICON_SMALL2:
      return state.small_icon ? state.small_icon : state.large_icon;
    case ICON_BIG:
      return state.large_icon;
    default:
      return nullptr;
  }
}

RECT WorkArea(HWND window) {
  MONITORINFO info = {};
  info.cbSize = sizeof(info);
  GetMonitorInfoW(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &info);
  return info.rcWork;
}

// Converts a size for a display of 96 dpi to pixels of the window's own display. On a finer display, the
// window looks equally large but is limited to the work area.
SIZE ScaleToDisplay(HWND window, SIZE size) {
  const int dpi = static_cast<int>(GetDpiForWindow(window));
  if (dpi <= USER_DEFAULT_SCREEN_DPI) return size;
  const RECT work = WorkArea(window);
  return {std::min<LONG>(MulDiv(size.cx, dpi, USER_DEFAULT_SCREEN_DPI), work.right - work.left),
          std::min<LONG>(MulDiv(size.cy, dpi, USER_DEFAULT_SCREEN_DPI), work.bottom - work.top)};
}

// CreateWindowExW chose a position for a window of the unscaled size.
void ScaleFirstSize(HWND window) {
  const SIZE size = ScaleToDisplay(window, kFirstSize);
  if (size.cx == kFirstSize.cx && size.cy == kFirstSize.cy) return;
  RECT place = {};
  GetWindowRect(window, &place);
  const RECT work = WorkArea(window);
  SetWindowPos(window, nullptr, std::min(place.left, work.right - size.cx),
               std::min(place.top, work.bottom - size.cy), size.cx, size.cy, SWP_NOZORDER | SWP_NOACTIVATE);
}

void DeliverJson(LPARAM carried) {
  const std::unique_ptr<std::wstring> json(reinterpret_cast<std::wstring*>(carried));
  if (json && State().view) State().view->PostWebMessageAsJson(json->c_str());
}

LRESULT RunSystemCommand(HWND window, WPARAM command, LPARAM position) {
  switch (command) {
    case kCommandCheckForUpdate:
      PostJsonToJs(R"({"type":"triggerUpdateCheck"})");
      return 0;
    case kCommandShowSettings:
      PostJsonToJs(R"({"type":"navigateTab","tab":"settings"})");
      return 0;
    case kCommandExit:
      PostQuitMessage(0);
      return 0;
    default:
      return DefWindowProcW(window, WM_SYSCOMMAND, command, position);
  }
}

LRESULT CALLBACK MainWindowProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_NCHITTEST:
      return static_cast<LRESULT>(
          WithoutSystemMenu(static_cast<WPARAM>(DefWindowProcW(window, message, wparam, lparam))));
    case WM_DESTROY:
      PostQuitMessage(0);
      return 0;
    case WM_SIZE:
      FitBrowser();
      FocusBrowser();  // restoring may give the focus while the control is still hidden
      return 0;
    case WM_GETMINMAXINFO: {
      const SIZE size = ScaleToDisplay(window, kMinimumSize);
      reinterpret_cast<MINMAXINFO*>(lparam)->ptMinTrackSize = {size.cx, size.cy};
      return 0;
    }
    case WM_GETICON:
      return reinterpret_cast<LRESULT>(IconFor(wparam));
    case WM_NCLBUTTONDOWN:
    case WM_NCLBUTTONDBLCLK:
      return DefWindowProcW(window, message, WithoutSystemMenu(wparam), lparam);
    case WM_SYSCOMMAND:
      return RunSystemCommand(window, wparam, lparam);
    case WM_POST_JSON:
      DeliverJson(lparam);
      return 0;
    case WM_SETFOCUS:
      FocusBrowser();
      break;
    case WM_MOVE:
    case WM_MOVING:
      // A child window is not notified when its parent moves.
      if (State().controller) State().controller->NotifyParentWindowPositionChanged();
      break;
    case WM_DPICHANGED: {
      const RECT& suggested = *reinterpret_cast<const RECT*>(lparam);
      SetWindowPos(window, nullptr, suggested.left, suggested.top, suggested.right - suggested.left,
                   suggested.bottom - suggested.top, SWP_NOZORDER | SWP_NOACTIVATE);
      break;
    }
    default:
      break;
  }
  return DefWindowProcW(window, message, wparam, lparam);
}

bool RegisterMainWindowClass(HINSTANCE instance) {
  WNDCLASSEXW window_class = {};
  window_class.cbSize = sizeof(window_class);
  window_class.style = CS_HREDRAW | CS_VREDRAW;
  window_class.lpfnWndProc = MainWindowProc;
  window_class.hInstance = instance;
  window_class.hIcon = State().large_icon;
  window_class.hCursor = LoadCursorA(nullptr, MAKEINTRESOURCEA(32512));
  window_class.hbrBackground = reinterpret_cast<HBRUSH>(static_cast<ULONG_PTR>(COLOR_WINDOW + 1));
  window_class.lpszClassName = kClassName;
  window_class.hIconSm = State().blank_small_icon;
  return RegisterClassExW(&window_class) != 0;
}

void SetFrame(HWND window) {
  auto set_icon = [&](WPARAM kind, HICON icon) {
    if (icon) SendMessageA(window, WM_SETICON, kind, reinterpret_cast<LPARAM>(icon));
  };
  set_icon(ICON_BIG, State().large_icon);
  set_icon(ICON_SMALL, State().blank_small_icon);
  SetWindowPos(window, nullptr, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOMOVE | SWP_NOZORDER | SWP_FRAMECHANGED);

  auto set_attribute = [&](DWORD attribute, DWORD value) {
    DwmSetWindowAttribute(window, attribute, &value, sizeof(value));
  };
  set_attribute(kDwmUseImmersiveDarkMode, 1);
  set_attribute(kDwmCaptionColor, kCaptionColor);
  set_attribute(kDwmTextColor, kCaptionColor);
}

}  // namespace

AppState& State() {
  static AppState& state = *new AppState;
  return state;
}

bool CreateMainWindow(HINSTANCE instance, int show_command) {
  AppState& state = State();
  state.large_icon = LoadAppIcon(instance, SM_CXICON, SM_CYICON);
  state.small_icon = LoadAppIcon(instance, SM_CXSMICON, SM_CYSMICON);
  state.blank_small_icon = CreateBlankSmallIcon();

  if (!RegisterMainWindowClass(instance)) {
    MessageBoxW(nullptr, L"Call to RegisterClassEx failed!", L"Varnel", 0);
    return false;
  }
  state.main_window =
      CreateWindowExW(0, kClassName, L"Varnel", WS_OVERLAPPEDWINDOW, CW_USEDEFAULT, CW_USEDEFAULT,
                      kFirstSize.cx, kFirstSize.cy, nullptr, nullptr, instance, nullptr);
  if (!state.main_window) {
    MessageBoxW(nullptr, L"Call to CreateWindow failed!", L"Varnel", 0);
    return false;
  }
  ScaleFirstSize(state.main_window);
  SetFrame(state.main_window);
  ShowWindow(state.main_window, show_command);
  UpdateWindow(state.main_window);
  return true;
}

void FitBrowser() {
  const AppState& state = State();
  if (!state.controller) return;
  state.controller->put_IsVisible(!IsIconic(state.main_window));
  RECT client = {};
  GetClientRect(state.main_window, &client);
  state.controller->put_Bounds(client);
}

void FocusBrowser() {
  const AppState& state = State();
  if (state.controller && GetFocus() == state.main_window && !IsIconic(state.main_window))
    state.controller->MoveFocus(COREWEBVIEW2_MOVE_FOCUS_REASON_PROGRAMMATIC);
}

int RunMessageLoop() {
  MSG message = {};
  while (GetMessageA(&message, nullptr, 0, 0) != 0) {
    TranslateMessage(&message);
    DispatchMessageA(&message);
  }
  return static_cast<int>(message.wParam);
}
