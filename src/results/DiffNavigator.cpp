// Navigation through the records, their rectangles and the show toggles.
//
// How the parts fit:
// - The offsets added to a record's extents are the state's source and destination offsets, the drawings'
//   base points as the run read them: the comparers see each drawing from its base point.
// - The rectangles, the current one and those of all records, are temporary vectors: no entity is added to
//   the compared drawings, so no layer is made for them (CreateLayer stands ready for marks that would be
//   added to a drawing).
// - The rectangles of all records are drawn plain in the colour of their kind, the current one highlighted.
// - Differences only (ShowDiff) hides entities in the drawing itself and remembers them; ShowAll shows
//   exactly those again, VKShowAll every entity. While entities are hidden the entities-hidden flag is set,
//   so the guarded commands ask for everything to be shown first.
#include "results/DiffNavigator.h"

#include <algorithm>
#include <memory>
#include <unordered_set>

#include "engine/ComparisonState.h"
#include "platform/editor.h"
#include "platform/host.h"
#include "platform/text.h"

namespace {

constexpr const char* kBoxTitle = "Morvane比图工具";

CComparisonState& state() { return CComparisonState::instance(); }

// Hands a command text to a drawing's document: not activated, an inactive document wrapped up, echoed.
// A drawing without a document (a side database) has nothing to run it.
void send(const std::unique_ptr<CDrawingRecord>& record, std::string_view text) {
  if (record && record->document) platform::sendStringToExecute(record->document, text, false, true, true);
}

const platform::Point3d& offsetOf(DrawingSide side) {
  return side == DrawingSide::Source ? state().sourceOffset : state().destinationOffset;
}

// Which side of the comparison a document shows; nothing when it is neither compared drawing.
bool sideOf(const platform::Document* document, DrawingSide& side) {
  const CComparisonState& s = state();
  if (!document) return false;
  if (s.source && s.source->document == document) side = DrawingSide::Source;
  else if (s.destination && s.destination->document == document) side = DrawingSide::Destination;
  else return false;
  return true;
}

}  // namespace

CDiffNavigator& CDiffNavigator::instance() {
  static CDiffNavigator navigator;
  return navigator;
}

void CDiffNavigator::reset() {
  shownNumber_ = 1;
  current_ = nullptr;
  currentIndex_ = -1;
  onlyDifferences_ = 1;
}

void CDiffNavigator::follow() {
  if (result_ == state().resultSerial) return;
  result_ = state().resultSerial;
  reset();
}

void CDiffNavigator::Release() {
  follow();
  reset();
}

int CDiffNavigator::CurrentIndex() {
  follow();
  return currentIndex_;
}
int CDiffNavigator::ShownNumber() {
  follow();
  return shownNumber_;
}
const CDiffType* CDiffNavigator::CurrentRecord() {
  follow();
  return current_;
}
int CDiffNavigator::OnlyDifferences() {
  follow();
  return onlyDifferences_;
}

// ---- stepping

void CDiffNavigator::locateAndReport(int count) {
  const CDiffType& record = *state().differences[static_cast<std::size_t>(currentIndex_)];
  Locate(record);
  // A deleted record is located a second time, once for each drawing record, with the same effect.
  if (record.kind == kDiffDeleted) Locate(record);
  platform::printToCommandLine(platform::fmt("\n定位到第%d个不同点(共%d不同点)", shownNumber_, count));
  platform::printToCommandLine(platform::fmt(",差异:%s", record.text));
}

int CDiffNavigator::step(int direction) {
  follow();
  const int n = static_cast<int>(state().differences.size());
  if (n == 0) return 0;
  const int end = direction > 0 ? n - 1 : 0;
  currentIndex_ = std::min(currentIndex_, n - 1);
  if (currentIndex_ == -1) {
    // The first step, either way, reaches the first record; the shown number stays where it starts.
    currentIndex_ = 0;
  } else if (currentIndex_ == end) {
    // No wrap at either end: the record is located again.
    platform::showMessageBox(platform::fmt(direction > 0 ? "已到最后一个不同点(共%d不同点)" : "已到第一个不同点(共%d不同点)", n),
                             kBoxTitle, platform::kMbOk);
  } else {
    currentIndex_ += direction;
    shownNumber_ += direction;
  }
  locateAndReport(n);
  return 1;
}

int CDiffNavigator::NextDiff() { return step(1); }
int CDiffNavigator::PrevDiff() { return step(-1); }

bool CDiffNavigator::LocateAt(std::size_t index) {
  follow();
  const std::size_t n = state().differences.size();
  if (index >= n) return false;
  currentIndex_ = static_cast<int>(index);
  shownNumber_ = currentIndex_ + 1;
  locateAndReport(static_cast<int>(n));
  return true;
}

void CDiffNavigator::Locate(const CDiffType& record) {
  follow();
  CComparisonState& s = state();
  const LocateWindows windows = ComputeLocateWindows(record, s.sourceOffset, s.destinationOffset);
  send(s.source, ZoomWindowCommand(windows.source));
  send(s.destination, ZoomWindowCommand(windows.destination));
  current_ = &record;
  send(s.destination, kDrawRectangleDesText);
  send(s.source, kCancelText);
}

// ---- rectangles

void DrawRectangle(const DrawingWindow& r, int colorIndex, bool highlight) {
  const platform::Point3d corners[] = {{r.minX, r.minY, 0}, {r.maxX, r.minY, 0}, {r.maxX, r.maxY, 0}, {r.minX, r.maxY, 0}};
  for (int edge = 0; edge < 4; ++edge) platform::grDraw(corners[edge], corners[(edge + 1) % 4], colorIndex, highlight);
}

// The rectangle in the source drawing takes the source offset for every kind, as the one in the destination
// takes the destination offset: a record's extents are seen from each drawing's base point, so each
// drawing's own offset places any record in it, inside the window that Locate zooms that drawing to.
void CDiffNavigator::DrawCurrentRectangle(DrawingSide side) {
  follow();
  if (!current_) return;
  if (state().allRectangles) {
    for (const auto& record : state().differences) {
      const int colour = RectangleColour(record->kind);
      if (record.get() != current_ && colour != 0) DrawRectangle(DifferenceRectangle(*record, offsetOf(side)), colour, false);
    }
  }
  const DrawingWindow rectangle = DifferenceRectangle(*current_, offsetOf(side));
  platform::printToCommandLine(current_->text);
  platform::printToCommandLine(" ");
  if (const int colour = RectangleColour(current_->kind); colour != 0) DrawRectangle(rectangle, colour);
}

void CDiffNavigator::DrawAllRectangles(DrawingSide side) {
  for (const auto& record : state().differences)
    if (const int colour = RectangleColour(record->kind); colour != 0)
      DrawRectangle(DifferenceRectangle(*record, offsetOf(side)), colour, false);
}

void CDiffNavigator::ToggleAllRectangles() {
  follow();
  CComparisonState& s = state();
  s.allRectangles = s.allRectangles ? 0 : 1;
  if (s.allRectangles) {
    send(s.destination, kDrawAllRectanglesDesText);
    send(s.source, kDrawAllRectanglesSrcText);
    return;
  }
  send(s.destination, kRegenText);
  send(s.source, kRegenText);
  if (current_) send(s.destination, kDrawRectangleDesText);
}

// ---- showing the differences only

void CDiffNavigator::ToggleShow() {
  follow();
  onlyDifferences_ = onlyDifferences_ ? 0 : 1;
  const std::string_view text = onlyDifferences_ ? kShowAllText : kShowDiffText;
  send(state().destination, text);
  send(state().source, text);
}

void CDiffNavigator::ResultShow() {
  follow();
  CComparisonState& s = state();
  s.entitiesHidden = s.entitiesHidden ? 0 : 1;
  const std::string_view text = s.entitiesHidden ? kShowDiffText : kShowAllText;
  send(s.destination, text);
  send(s.source, text);
}

// ShowDiff keeps the entities that the records name on this drawing's side (a changed record names one
// in each drawing, a deleted one in the source, an added one in the destination) and hides every other
// entity that shows, in model space and the layouts. The guarded commands then wait for ShowAll.
void CDiffNavigator::ShowDiff() {
  follow();
  platform::Document* document = platform::curDocument();
  DrawingSide side = DrawingSide::Source;
  if (!sideOf(document, side)) {
    platform::printToCommandLine("\nShowDiff: the current drawing is not one of the two compared drawings\n");
    return;
  }
  std::unordered_set<std::uint64_t> kept;
  for (const auto& record : state().differences) {
    const platform::ObjectId id = side == DrawingSide::Source ? record->sourceId : record->destinationId;
    if (!id.isNull()) kept.insert(id.value);
  }
  std::vector<platform::ObjectId> all;
  platform::ssGet("X", all);
  auto entry = std::find_if(hidden_.begin(), hidden_.end(), [&](const Hidden& h) { return h.document == document; });
  if (entry == hidden_.end() || entry->fileName != document->fileName()) {
    if (entry != hidden_.end()) hidden_.erase(entry);
    hidden_.push_back({document, document->fileName(), {}});
    entry = hidden_.end() - 1;
  }
  const bool locked = platform::lockDocument(document) == platform::ErrorStatus::eOk;
  const platform::Database& db = document->database();
  for (platform::ObjectId id : all) {
    if (kept.contains(id.value) || !db.openEntity(id).isVisible()) continue;
    if (platform::setVisibility(document, id, false) == platform::ErrorStatus::eOk) entry->ids.push_back(id);
  }
  if (locked) platform::unlockDocument(document);
  state().entitiesHidden = 1;
  onlyDifferences_ = 0;
}

void CDiffNavigator::ShowAll() {
  follow();
  platform::Document* document = platform::curDocument();
  const auto entry =
      std::find_if(hidden_.begin(), hidden_.end(), [&](const Hidden& h) { return h.document == document; });
  if (document && entry != hidden_.end()) {
    // A document opened where a closed one was is another drawing: its entities were never hidden here.
    if (entry->fileName == document->fileName()) {
      const bool locked = platform::lockDocument(document) == platform::ErrorStatus::eOk;
      for (platform::ObjectId id : entry->ids) platform::setVisibility(document, id, true);
      if (locked) platform::unlockDocument(document);
    }
    hidden_.erase(entry);
  }
  DrawingSide side = DrawingSide::Source;
  if (!sideOf(document, side)) return;
  state().entitiesHidden = 0;
  onlyDifferences_ = 1;
}

// ---- layers

platform::ObjectId CreateLayer(platform::Document& document, std::string_view name) {
  platform::Database& db = document.database();
  platform::ObjectId id;
  if (const platform::LayerRecord* existing = db.layer(name)) {
    id = existing->id;
  } else {
    platform::LayerRecord record;
    record.name = std::string(name);
    record.colorIndex = 30;
    const bool locked = platform::lockDocument(&document) == platform::ErrorStatus::eOk;
    db.addLayer(record, id);
    if (locked) platform::unlockDocument(&document);
  }
  if (id.isNull()) platform::printToCommandLine("图层创建失败");
  return id;
}
