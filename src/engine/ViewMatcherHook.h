// The matching of the two compared views as the runs see it: the presentation that keeps the views in step
// registers it; without one (the silent front end) the runs have no views to match.
#pragma once

// Zooms the destination's view to the window the source's view shows (moved by the offsets).
using ViewMatcher = void (*)();

// The matcher the runs use; null for none.
void SetViewMatcher(ViewMatcher matcher);

// The last step of a run on open documents: both views show the same part of the drawings. Nothing
// without a matcher.
void MatchComparedViews();
