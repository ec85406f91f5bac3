// The headless host's views and windows: zoom and pan of a document's view, window titles and tiling,
// and the message hooks that see the view events of a document's window.
#include <algorithm>
#include <cmath>

#include "platform/boundary.h"
#include "platform/headless/host_session.h"
#include "platform/host.h"

namespace headless {

namespace {
constexpr double kGlobalTolerance = 1e-10;
constexpr double kWheelStep = 1.25;  // the view's height shrinks by this much a notch
}  // namespace

double View::aspect() const {
  const int w = rect.right - rect.left, h = rect.bottom - rect.top;
  return w > 0 && h > 0 ? static_cast<double>(w) / h : 1.0;
}

platform::Extents3d View::extents() const {
  const double halfHeight = height / 2.0, halfWidth = height * aspect() / 2.0;
  return {{center.x - halfWidth, center.y - halfHeight, 0.0}, {center.x + halfWidth, center.y + halfHeight, 0.0}};
}

namespace {
void remember(View& view) {
  view.previous.push_back({view.rect, view.center, view.height});
  if (view.previous.size() > 10) view.previous.erase(view.previous.begin());
}
}  // namespace

void HostSession::zoomWindow(HeadlessDocument& document, platform::Point3d a, platform::Point3d b) {
  View& view = document.view;
  remember(view);
  const double w = std::abs(b.x - a.x), h = std::abs(b.y - a.y);
  view.center = {(a.x + b.x) / 2.0, (a.y + b.y) / 2.0, 0.0};
  // The whole window is shown: the view's height follows whichever side fills the screen first.
  view.height = std::max({h, w / view.aspect(), 1e-9});
  regen(document);
}

bool HostSession::zoomExtents(HeadlessDocument& document) {
  const platform::Extents3d e = document.database().extents();
  if (e.isEmpty() || !std::isfinite(e.min.x) || !std::isfinite(e.max.y)) return false;
  zoomWindow(document, e.min, e.max);
  return true;
}

void HostSession::zoomScale(HeadlessDocument& document, double factor) {
  if (!(factor > 0.0) || !std::isfinite(factor)) return;
  remember(document.view);
  document.view.height /= factor;
  regen(document);
}

void HostSession::pan(HeadlessDocument& document, double dx, double dy) {
  remember(document.view);
  document.view.center.x += dx;
  document.view.center.y += dy;
  regen(document);
}

bool HostSession::tile(std::string_view leftTitle, std::string_view rightTitle) {
  HeadlessDocument *left = nullptr, *right = nullptr;
  for (const auto& d : documents_) {
    if (!left && d->docTitle() == leftTitle) left = d.get();
    else if (!right && d->docTitle() == rightTitle) right = d.get();
  }
  if (!left || !right) return false;
  left->view.rect = {0, 0, 800, 900};
  right->view.rect = {800, 0, 1600, 900};
  return true;
}

// ---- messages

std::uint64_t HostSession::addHook(platform::MessageHook hook) {
  if (!hook) return 0;
  hooks_.push_back({nextHook_, std::move(hook), acting_});
  return nextHook_++;
}

bool HostSession::removeHook(std::uint64_t handle) {
  return std::erase_if(hooks_, [&](const Hook& h) { return h.handle == handle; }) > 0;
}

bool HostSession::post(const platform::HostMessage& message) {
  if (!byWindow(message.window)) return false;
  posted_.push_back(message);
  return true;
}

void HostSession::deliver(const platform::HostMessage& message) {
  // Hooks see the message before the host handles it, the newest first; one that throws is reported and
  // the others still run.
  const std::vector<Hook> chain(hooks_.rbegin(), hooks_.rend());
  for (const Hook& hook : chain) {
    if (std::ranges::none_of(hooks_, [&](const Hook& h) { return h.handle == hook.handle; })) continue;
    Module* const before = acting_;
    acting_ = hook.owner;
    RunGuarded(
        false,
        [&] {
          hook.function(0, message);
          return true;
        },
        [&](const char* reason) { platform::printToCommandLine(std::string("\n消息钩子出错：") + reason + "\n"); });
    acting_ = before;
  }
  HeadlessDocument* const document = byWindow(message.window);
  if (document && message.message == platform::kWmMouseWheel && message.wParam != 0)
    zoomScale(*document, std::pow(kWheelStep, static_cast<double>(message.wParam) / 120.0));
}

void HostSession::pumpMessages() {
  if (pumping_) return;
  pumping_ = true;
  while (!posted_.empty()) {
    const platform::HostMessage message = posted_.front();
    posted_.pop_front();
    if (byWindow(message.window)) deliver(message);
  }
  pumping_ = false;
}

void HostSession::wheel(HeadlessDocument& document, int notches) {
  posted_.push_back({document.view.window, platform::kWmMouseWheel, 120LL * notches, 0});
  pumpMessages();
}

void HostSession::middleButtonPan(HeadlessDocument& document, double dx, double dy) {
  // The view moves while the button is held; its release is the message that ends the drag.
  pan(document, dx, dy);
  posted_.push_back({document.view.window, platform::kWmMButtonUp, 0, 0});
  pumpMessages();
}

}  // namespace headless

namespace platform {

using headless::HostSession;

bool viewChanged(const ViewState& before, const ViewState& after) {
  return !(before.window == after.window) || std::abs(before.center.x - after.center.x) > headless::kGlobalTolerance ||
         std::abs(before.center.y - after.center.y) > headless::kGlobalTolerance ||
         std::abs(before.height - after.height) > headless::kGlobalTolerance;
}

WindowId documentWindow(const Document* document) {
  const headless::HeadlessDocument* found = HostSession::instance().find(document);
  return found ? found->view.window : 0;
}

Document* windowDocument(WindowId window) { return HostSession::instance().byWindow(window); }

WindowId findDocumentWindow(std::string_view title) {
  for (const auto& d : HostSession::instance().documentList())
    if (d->docTitle() == title) return d->view.window;
  return 0;
}

std::string windowTitle(WindowId window) {
  const headless::HeadlessDocument* found = HostSession::instance().byWindow(window);
  return found ? found->docTitle() : std::string();
}

ScreenRect getWindowRect(WindowId window) {
  const headless::HeadlessDocument* found = HostSession::instance().byWindow(window);
  return found ? found->view.rect : ScreenRect{};
}

ViewState viewState(WindowId window) {
  const headless::HeadlessDocument* found = HostSession::instance().byWindow(window);
  if (!found) return {};
  return {found->view.rect, found->view.center, found->view.height};
}

Extents3d viewExtents(WindowId window) {
  const headless::HeadlessDocument* found = HostSession::instance().byWindow(window);
  return found ? found->view.extents() : Extents3d{};
}

bool tileSideBySide(std::string_view leftTitle, std::string_view rightTitle) {
  return HostSession::instance().tile(leftTitle, rightTitle);
}

std::uint64_t setMessageHook(MessageHook hook) { return HostSession::instance().addHook(std::move(hook)); }
bool unhookMessageHook(std::uint64_t handle) { return HostSession::instance().removeHook(handle); }

bool postMessage(WindowId window, unsigned message, long long wParam, long long lParam) {
  return HostSession::instance().post({window, message, wParam, lParam});
}

}  // namespace platform
