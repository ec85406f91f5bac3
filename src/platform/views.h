// The host's windows and views: a view per document, window titles and tiling, and the message hook
// that sees view events.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "platform/geometry.h"

namespace platform {

class Document;

// A window of the host; 0 is none.
using WindowId = std::uint64_t;
// A window's rectangle on the screen, in pixels (GetWindowRect).
struct ScreenRect {
  int left = 0, top = 0, right = 0, bottom = 0;
  bool operator==(const ScreenRect&) const = default;
};
// What a view shows: its window, and the drawing area it shows by centre and height (the width follows the
// window's aspect).
struct ViewState {
  ScreenRect window;
  Point3d center;
  double height = 0.0;
};
// Whether two states of a view differ: another window rectangle, or a centre or height that differs by
// more than the global tolerance (1e-10).
bool viewChanged(const ViewState& before, const ViewState& after);

WindowId documentWindow(const Document* document);
Document* windowDocument(WindowId window);
// The window of the open document whose title this is (0 when none).
WindowId findDocumentWindow(std::string_view title);
std::string windowTitle(WindowId window);
ScreenRect getWindowRect(WindowId window);
ViewState viewState(WindowId window);
// The drawing area the view shows: its lower-left and upper-right corners (z 0).
Extents3d viewExtents(WindowId window);
// Tiles two document windows side by side in the main window, found by their titles; false when either
// title names no open document.
bool tileSideBySide(std::string_view leftTitle, std::string_view rightTitle);

// Messages the hook sees on view windows, with the host's values.
enum WindowMessage : unsigned { kWmMButtonUp = 0x208, kWmMouseWheel = 0x20A };
struct HostMessage {
  WindowId window = 0;
  unsigned message = 0;
  long long wParam = 0;  // the wheel's delta (120 a notch, positive away from the user) for kWmMouseWheel
  long long lParam = 0;
};
// A message-retrieval hook (WH_GETMESSAGE): called with a non-negative code for every message retrieved
// from the host's queue, before the host handles it. Hooks run newest first, each passing on to the next.
using MessageHook = std::function<void(int code, const HostMessage& message)>;
// SetWindowsHookEx and UnhookWindowsHookEx; a handle is never 0.
std::uint64_t setMessageHook(MessageHook hook);
bool unhookMessageHook(std::uint64_t handle);
// PostMessage: queues a message to a window; it is retrieved after the message being handled.
bool postMessage(WindowId window, unsigned message, long long wParam = 0, long long lParam = 0);

}  // namespace platform
