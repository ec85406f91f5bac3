// The registered view matcher and the runs' step that calls it.
#include "engine/ViewMatcherHook.h"

namespace {
ViewMatcher registered = nullptr;
}

void SetViewMatcher(ViewMatcher matcher) { registered = matcher; }

void MatchComparedViews() {
  if (registered) registered();
}
