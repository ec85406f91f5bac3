// The view matching: the other compared drawing is zoomed to the window one compared view shows.
#include "results/ViewMatching.h"

#include <cstdio>
#include <string>

#include "platform/documents.h"

namespace {

platform::WindowId viewOf(const std::unique_ptr<CDrawingRecord>& record) {
  return record && record->document ? platform::documentWindow(record->document) : 0;
}

}  // namespace

CViewMatching& CViewMatching::instance() {
  static CViewMatching matching;
  return matching;
}

bool CViewMatching::ViewChanged(platform::WindowId view) {
  const platform::ViewState now = platform::viewState(view);
  const auto seen = seen_.find(view);
  const bool changed = seen == seen_.end() || platform::viewChanged(seen->second, now);
  seen_[view] = now;
  return changed;
}

platform::Extents3d MatchedWindow(const platform::Extents3d& shown, bool fromSource, const CComparisonState& state) {
  const double sign = fromSource ? 1.0 : -1.0;
  const double dx = sign * (state.destinationOffset.x - state.sourceOffset.x);
  const double dy = sign * (state.destinationOffset.y - state.sourceOffset.y);
  return {{shown.min.x + dx, shown.min.y + dy, 0.0}, {shown.max.x + dx, shown.max.y + dy, 0.0}};
}

bool CViewMatching::MatchViews(platform::WindowId view) {
  const CComparisonState& state = CComparisonState::instance();
  const platform::WindowId sourceView = viewOf(state.source), destinationView = viewOf(state.destination);
  // A drawing compared with itself has one view: there is nothing to keep in step.
  if (view == 0 || sourceView == destinationView) return false;
  const bool fromSource = view == sourceView;
  if (!fromSource && view != destinationView) return false;
  const platform::Extents3d window = MatchedWindow(platform::viewExtents(view), fromSource, state);
  platform::Document* other = fromSource ? state.destination->document : state.source->document;
  // Six decimals keep the two windows alike well below what a screen shows; the zoom runs quietly in the
  // other document, as if typed there, after whatever it was doing has been cancelled.
  char text[256];
  std::snprintf(text, sizeof text, "\x03ZOOM\nW\n%.6f,%.6f\n%.6f,%.6f\n", window.min.x, window.min.y, window.max.x,
                window.max.y);
  if (platform::sendStringToExecute(other, text, false, true, false) != platform::ErrorStatus::eOk) return false;
  // The other view is about to move: its next release is a change of its own.
  seen_.erase(fromSource ? destinationView : sourceView);
  return true;
}

bool CViewMatching::MatchDestinationToSource() {
  Forget();
  return MatchViews(viewOf(CComparisonState::instance().source));
}
