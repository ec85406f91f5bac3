// Stepping through a comparison's records: the current record, locating it in both drawings, its
// rectangle, the rectangles of all records, and showing the differences only or every entity.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "comparers/DiffRecord.h"
#include "platform/database.h"
#include "platform/documents.h"
#include "results/Locate.h"

enum class DrawingSide { Source, Destination };

// The command texts queued to the drawings.
inline constexpr std::string_view kDrawRectangleDesText = "\x03_VkDrawDiffRectDes\n";
inline constexpr std::string_view kCancelText = "\x03";
inline constexpr std::string_view kShowAllText = "\x03ShowAll\n";
inline constexpr std::string_view kShowDiffText = "\x03ShowDiff\n";
inline constexpr std::string_view kDrawAllRectanglesDesText = "\x03_VkDrawAllDiffRectDes\n";
inline constexpr std::string_view kDrawAllRectanglesSrcText = "\x03_VkDrawAllDiffRectSrc\n";
inline constexpr std::string_view kRegenText = "\x03REGEN\n";

// The navigation of the comparison state's result. It follows the state's result: a new result (every
// prepare step of a run) finds it fresh, with no record located yet.
class CDiffNavigator {
 public:
  static CDiffNavigator& instance();

  // Next and previous difference: nothing at all (0) without records; otherwise move (a message box at
  // either end, where nothing moves), locate and report, and 1.
  int NextDiff();
  int PrevDiff();
  // Makes the record at index the current one and locates and reports it as a step does (a choice in the
  // result palette); false when there is no such record.
  bool LocateAt(std::size_t index);
  // Zooms both drawings onto the record and has the destination drawing draw its rectangle.
  void Locate(const CDiffType& record);

  // The current record's rectangle in the current document, placed by the side's offset (VkDrawDiffRectDes,
  // VkDrawDiffRectSrc). While the all-rectangles flag is set, the other records' rectangles come first.
  void DrawCurrentRectangle(DrawingSide side);
  // Every record's rectangle in the current document, placed by the side's offset, not highlighted.
  void DrawAllRectangles(DrawingSide side);
  // VkShowAllDiffRect: flips the all-rectangles flag; set, both drawings draw every rectangle; clear, both
  // regenerate (temporary vectors go) and the destination draws the current rectangle again.
  void ToggleAllRectangles();

  // Toggle show (VkOnlyDiff): flips the only-differences flag and sends ShowAll when it is now set, ShowDiff
  // when it is now clear, to the destination drawing and then the source drawing.
  void ToggleShow();
  // VkResultShow: flips the entities-hidden flag and sends ShowDiff when it is now set, ShowAll when clear.
  void ResultShow();
  // ShowDiff: hides every visible entity of the current document that no record names, when the document
  // is one of the compared drawings. ShowAll: shows again what ShowDiff hid in the current document.
  void ShowDiff();
  void ShowAll();

  // Ending the comparison releases the navigation: no record is current any more.
  void Release();

  int CurrentIndex();
  int ShownNumber();
  const CDiffType* CurrentRecord();
  int OnlyDifferences();

 private:
  CDiffNavigator() = default;
  // Starts afresh when the state holds another result than the one navigated.
  void follow();
  void reset();
  void locateAndReport(int count);
  // One step forward (1) or back (-1).
  int step(int direction);

  std::uint64_t result_ = 0;
  // The start of the shown number is 1: it moves with the index and stays one ahead of it, so the first
  // record is reported as the first whichever step reaches it.
  int shownNumber_ = 1;
  const CDiffType* current_ = nullptr;
  int currentIndex_ = -1;
  // A fresh result shows every entity, and the toggle sends ShowAll when the flag becomes set: so it starts
  // set, and the first toggle shows the differences only.
  int onlyDifferences_ = 1;

  // What ShowDiff hid, per document, for ShowAll to show again; kept apart from the result, as ShowAll may
  // run after a new run has begun (the step that begins compare commands queues it).
  struct Hidden {
    platform::Document* document = nullptr;
    std::string fileName;
    std::vector<platform::ObjectId> ids;
  };
  std::vector<Hidden> hidden_;
};

// Draws the four edges of the rectangle as highlighted or plain temporary vectors in the current document,
// z 0: lower left to lower right, to upper right, to upper left, and back to lower left.
void DrawRectangle(const DrawingWindow& rectangle, int colorIndex, bool highlight = true);

// Makes sure a layer of this name exists in the document's drawing: a new one has colour index 30. Its id,
// or a null id after printing "图层创建失败" when there is none.
platform::ObjectId CreateLayer(platform::Document& document, std::string_view name);
