// The result palette's tree, filled from the ranges of the comparison state.
#include "results/ResultPalette.h"

#include <string>

#include "platform/boundary.h"
#include "platform/host.h"
#include "results/DiffNavigator.h"

namespace {

// Adds the ranges as top items and each member below the range added last.
class CPaletteTreeSink final : public CResultTreeSink {
 public:
  CPaletteTreeSink(platform::PaletteSetId set, const CDiffRange& ranges, std::vector<CResultPalette::Entry>& entries)
      : set_(set), ranges_(ranges), entries_(entries) {}
  void addRange(const std::string& label, const std::array<double, 6>&) override {
    range_ = platform::insertPaletteItem(set_, 0, label);
    entries_.push_back({range_, label, false, 0});
  }
  // Members arrive in the order of the ranges' member list, which names each one's record.
  void addMember(const std::string& label, int, const std::array<double, 6>&) override {
    const std::size_t k = members_++;
    if (k >= ranges_.members.size()) return;
    entries_.push_back({platform::insertPaletteItem(set_, range_, label), label, true, ranges_.members[k].record});
  }

 private:
  platform::PaletteSetId set_;
  const CDiffRange& ranges_;
  std::vector<CResultPalette::Entry>& entries_;
  platform::PaletteItemId range_ = 0;
  std::size_t members_ = 0;
};

}  // namespace

CResultPalette& CResultPalette::instance() {
  static CResultPalette palette;
  return palette;
}

platform::PaletteSetId CResultPalette::createSet() {
  // A double-click is a call from the host: what it throws ends here, with the reason on the command line.
  set_ = platform::createPaletteSet(kResultPaletteTitle, [](platform::PaletteItemId item) {
    RunGuarded(
        false,
        [item] {
          CResultPalette::instance().Activate(item);
          return true;
        },
        [](const char* reason) {
          platform::printToCommandLine(std::string("\n") + kResultPaletteTitle + ": " + reason + "\n");
        });
  });
  return set_;
}

void CResultPalette::Clear() {
  if (set_ != 0) platform::deleteAllPaletteItems(set_);
  entries_.clear();
  holdsResult_ = false;
}

int CResultPalette::Fill(const CComparisonState& state) {
  Clear();
  // Emptying the tree also tells whether the host still has the set.
  const platform::PaletteSetId set = set_ != 0 && platform::deleteAllPaletteItems(set_) ? set_ : createSet();
  CPaletteTreeSink sink(set, state.ranges, entries_);
  state.ranges.fillResultTree(sink);
  holdsResult_ = true;
  result_ = state.resultSerial;
  return ++fills_;
}

void CResultPalette::Show() {
  if (set_ == 0 || !platform::showPaletteSet(set_, true)) {
    entries_.clear();
    holdsResult_ = false;
    platform::showPaletteSet(createSet(), true);
  }
}

void CResultPalette::Activate(platform::PaletteItemId item) {
  if (!holdsResult_ || result_ != CComparisonState::instance().resultSerial) return;
  for (const Entry& entry : entries_)
    if (entry.item == item && entry.member) {
      CDiffNavigator::instance().LocateAt(entry.record);
      return;
    }
}

void CResultPalette::Destroy() {
  if (set_ != 0) platform::destroyPaletteSet(set_);
  set_ = 0;
  entries_.clear();
  holdsResult_ = false;
}
