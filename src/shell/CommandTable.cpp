// The command table and its handlers. Each handler checks the flags of the comparison and hands over to
// the compare runs, the area and base-point prompts, or what shows the result.
#include "shell/CommandTable.h"

#include <memory>
#include <string>

#include "engine/CompareRun.h"
#include "engine/ComparisonState.h"
#include "engine/ViewMatcherHook.h"
#include "platform/commands.h"
#include "platform/documents.h"
#include "platform/editor.h"
#include "platform/host.h"
#include "results/DiffNavigator.h"
#include "results/ResultPalette.h"
#include "results/ViewMatching.h"
#include "shell/ComparePrompts.h"
#include "shell/DocumentLock.h"
#include "shell/IdArray.h"
#include "shell/ToolbarHookIn.h"
#include "ui/CVkCompareSettingDlg.h"

namespace {

constexpr const char* kRestoreFirst = "先还原所有实体,才能进行此操作";
constexpr const char* kNotComparing = "非比图环境，请选择要比较的图纸";

CComparisonState& state() { return CComparisonState::instance(); }
CDiffNavigator& navigator() { return CDiffNavigator::instance(); }

platform::Document* documentOf(const std::unique_ptr<CDrawingRecord>& record) {
  return record ? static_cast<platform::Document*>(record->document) : nullptr;
}

// The views are not kept in step while points are picked in them; afterwards they are again.
class ViewSyncPause {
 public:
  ViewSyncPause() { state().viewSync = 0; }
  ~ViewSyncPause() { state().viewSync = 1; }
  ViewSyncPause(const ViewSyncPause&) = delete;
  ViewSyncPause& operator=(const ViewSyncPause&) = delete;
};

enum class Side { Source, Destination };

// Asks in one drawing; a drawing the comparison does not hold cannot be asked in.
void askIn(Side side, void (*ask)(CDrawingRecord&), const char* what) {
  std::unique_ptr<CDrawingRecord>& record = side == Side::Source ? state().source : state().destination;
  if (!record) {
    platform::printToCommandLine(std::string("\nno ") + (side == Side::Source ? "source" : "destination") +
                                 " drawing to set the " + what + " in: open the two drawings to compare first\n");
    return;
  }
  ask(*record);
}

void askInBoth(void (*ask)(CDrawingRecord&), const char* what) {
  askIn(Side::Source, ask, what);
  askIn(Side::Destination, ask, what);
}

// ---- handlers

void vkCompareFile() {
  PreCommandStep();
  CCurrentDocumentLock lock;
  state().viewSync = 1;
  state().allRectangles = 1;
  // Empty names: the file selection dialog asks for both.
  RunInteractiveCompare("", "");
}

void vkOpenDwgFiles() {
  PreCommandStep();
  state().viewSync = 1;
  RunOpenOnly();
}

constexpr const char* kArea = "compare area";
constexpr const char* kBasePoint = "base point";

void vkSetCompareArea() {
  if (!GuardedTest()) return;
  CCurrentDocumentLock lock;
  ViewSyncPause pause;
  askInBoth(AskCompareArea, kArea);
}

void vkSetCompareAreaSrc() {
  CCurrentDocumentLock lock;
  ViewSyncPause pause;
  askIn(Side::Source, AskCompareArea, kArea);
}

void vkSetCompareAreaDes() {
  CCurrentDocumentLock lock;
  ViewSyncPause pause;
  askIn(Side::Destination, AskCompareArea, kArea);
}

void vkSetCompareBasePt() {
  if (!GuardedTest()) return;
  ViewSyncPause pause;
  askInBoth(AskBasePoint, kBasePoint);
}

void vkSetCompareBasePtSrc() {
  ViewSyncPause pause;
  askIn(Side::Source, AskBasePoint, kBasePoint);
}

void vkSetCompareBasePtDes() {
  ViewSyncPause pause;
  askIn(Side::Destination, AskBasePoint, kBasePoint);
}

void vkUniversallyCompareFile() {
  if (!GuardedTest()) return;
  state().viewSync = 1;
  RunCompareOpenPair();
}

void vkOnlyDiff() {
  if (CompareEndedTest()) navigator().ToggleShow();
}

void vkCompareSet() {
  if (!GuardedTest()) return;
  const CComparisonState& state = CComparisonState::instance();
  CVkCompareSettingDlg dialog(state.source ? state.source->database : nullptr,
                              state.destination ? state.destination->database : nullptr);
  dialog.DoModal(0);
}

void vkPrevDiff() {
  if (CompareEndedTest()) navigator().PrevDiff();
}

void vkNextDiff() {
  if (CompareEndedTest()) navigator().NextDiff();
}

void vkResultShow() {
  if (!state().source || !state().destination) return;
  if (!CompareEndedTest() || !state().viewSync) return;
  navigator().ResultShow();
}

void vkShowAllDiffRect() {
  if (!CompareEndedTest() || !GuardedTest()) return;
  navigator().ToggleAllRectangles();
}

void vkDrawDiffRectSrc() { navigator().DrawCurrentRectangle(DrawingSide::Source); }
void vkDrawDiffRectDes() { navigator().DrawCurrentRectangle(DrawingSide::Destination); }
void showDiff() { navigator().ShowDiff(); }
void showAll() { navigator().ShowAll(); }
void vkDrawAllDiffRectSrc() { navigator().DrawAllRectangles(DrawingSide::Source); }
void vkDrawAllDiffRectDes() { navigator().DrawAllRectangles(DrawingSide::Destination); }
void showcc() { ShowCompareToolbar(true); }
void hidecc() { ShowCompareToolbar(false); }

constexpr int kModal = platform::kCmdModal;
constexpr int kSession = platform::kCmdSession;

constexpr ShellCommand kCommands[] = {
    {"VkCompareFile", kSession, vkCompareFile},
    {"VKOpenDwgFiles", kSession, vkOpenDwgFiles},
    {"VKSetCompareArea", kModal, vkSetCompareArea},
    {"VKSetCompareAreaSrc", kModal, vkSetCompareAreaSrc},
    {"VKSetCompareAreaDes", kModal, vkSetCompareAreaDes},
    {"VKSetCompareBasePt", kModal, vkSetCompareBasePt},
    {"VKSetCompareBasePtSrc", kModal, vkSetCompareBasePtSrc},
    {"VKSetCompareBasePtDes", kModal, vkSetCompareBasePtDes},
    {"VKUniversallyCompareFile", kModal, vkUniversallyCompareFile},
    {"VkOnlyDiff", kModal, vkOnlyDiff},
    {"VkCompareSet", kModal, vkCompareSet},
    {"VkPrevDiff", kModal, vkPrevDiff},
    {"VkNextDiff", kModal, vkNextDiff},
    {"VkResultShow", kModal, vkResultShow},
    {"VkShowAllDiffRect", kModal, vkShowAllDiffRect},
    {"VkDrawDiffRectSrc", kModal, vkDrawDiffRectSrc},
    {"VkDrawDiffRectDes", kModal, vkDrawDiffRectDes},
    {"ShowDiff", kModal, showDiff},
    {"ShowAll", kModal, showAll},
    {"VkDrawAllDiffRectSrc", kModal, vkDrawAllDiffRectSrc},
    {"VkDrawAllDiffRectDes", kModal, vkDrawAllDiffRectDes},
    {"VkEndCompare", kModal, VkEndCompare},
    {"Showcc", kModal, showcc},
    {"Hidecc", kModal, hidecc},
    {"VKShowAll", kModal, VKShowAll},
};

}  // namespace

std::span<const ShellCommand> CommandTable() { return kCommands; }

bool RegisterCommandTable() {
  // The runs fill the result palette that the module presents.
  SetResultPalette(&CResultPalette::instance());
  SetViewMatcher([] { CViewMatching::instance().MatchDestinationToSource(); });
  bool all = true;
  for (const ShellCommand& c : kCommands)
    all = platform::addCommand(kCommandGroup, c.localName, c.localName, c.flags, c.handler) ==
              platform::ErrorStatus::eOk &&
          all;
  return all;
}

void RemoveCommandTable() {
  platform::removeGroup(kCommandGroup);
  SetResultPalette(nullptr);
  SetViewMatcher(nullptr);
  CResultPalette::instance().Destroy();
}

bool GuardedTest() {
  const CComparisonState& s = state();
  if (!s.source || !s.destination) return false;
  if (s.entitiesHidden) {
    platform::printToCommandLine(kRestoreFirst);
    return false;
  }
  return CompareEndedTest();
}

bool CompareEndedTest() {
  if (!state().compareEnded) return true;
  platform::printToCommandLine(kNotComparing);
  return false;
}

bool PreCommandStep() {
  CComparisonState& s = state();
  if (!s.resultReady && s.viewSync) {
    for (platform::Document* document : {documentOf(s.destination), documentOf(s.source)})
      if (document) platform::sendStringToExecute(document, kShowAllCommandText, false, true, true);
  }
  return true;
}

void VkEndCompare() {
  PreCommandStep();
  CComparisonState& s = state();
  s.compareEnded = 1;
  s.entitiesHidden = 0;
  s.viewSync = 0;
  // The result palette forgets its entries and the navigation its current record; the records and the
  // drawings stay until the next run.
  CResultPalette::instance().Clear();
  s.paletteIndex = 0;
  navigator().Release();
  s.allRectangles = 0;
}

void VKShowAll() {
  std::vector<platform::ObjectId> selected;
  if (platform::ssGet("X", selected) != platform::RTNORM) return;
  CIdArray ids;
  for (platform::ObjectId id : selected) ids.append(id);
  selected.clear();
  platform::Document* document = platform::curDocument();
  // An entity that cannot be opened for write is skipped.
  for (platform::ObjectId id : ids) platform::setVisibility(document, id, true);
}
