// Keeping the two compared views in step: a zoom or pan in one compared drawing zooms the other to the
// same window.
#pragma once

#include <map>

#include "engine/ComparisonState.h"
#include "platform/geometry.h"
#include "platform/views.h"

// The tiling object's memory of the compared views and the matching of one view to the other. The message
// hook asks for a match only while the view-sync flag is set; the matching itself does not wait for the
// view-matching state a compare run sets, so that a pair opened without a comparison (VKOpenDwgFiles, which
// sets view sync) moves in step as well.
class CViewMatching {
 public:
  static CViewMatching& instance();

  // Whether the view shows something other than when it was last looked at here (another window
  // rectangle, centre or height beyond the global tolerance); a view never seen counts as changed. What
  // it shows now is remembered.
  bool ViewChanged(platform::WindowId view);
  // Zooms the other compared drawing to the window this view shows; false (nothing sent) when the view is
  // not one of the two compared views.
  bool MatchViews(platform::WindowId view);
  // The end of a run: the destination's view is zoomed to the window the source's view shows, and the
  // views seen so far are forgotten (they belonged to the drawings before this run).
  bool MatchDestinationToSource();
  // Forgets every view (a new pair of drawings).
  void Forget() { seen_.clear(); }

 private:
  std::map<platform::WindowId, platform::ViewState> seen_;
};

// The window a compared drawing shows, in the coordinates of the other drawing. The source and destination
// offsets of the comparison state place a record in each drawing (a record at p stands at p + source offset
// in the source and at p + destination offset in the destination, as the navigation zooms to it), so a
// window moves by the destination offset less the source offset on its way from the source to the
// destination, and back the other way. The window keeps its size: both drawings are compared at one scale.
platform::Extents3d MatchedWindow(const platform::Extents3d& shown, bool fromSource, const CComparisonState& state);
