// The runs on documents open in the host: the interactive comparison, opening the pair only, and comparing
// the pair already open with the area and base points set by the commands.
#include <algorithm>
#include <optional>

#include "engine/CompareRun.h"
#include "engine/ComparisonState.h"
#include "engine/Pairing.h"
#include "engine/ResultPaletteHook.h"
#include "engine/ViewMatcherHook.h"
#include "engine/RunStages.h"
#include "platform/dialog.h"
#include "platform/documents.h"
#include "platform/host.h"
#include "platform/text.h"
#include "platform/views.h"
#include "ui/CVkCompareFileSelDlg.h"
#include "ui/CVkCompareSettingDlg.h"
#include "ui/CompareConfigFile.h"
#include "ui/OpenDrawings.h"

namespace {

constexpr const char* kToolTitle = "Morvane比图工具";
constexpr const char* kResultTitle = "图纸比较结果";

void inform(const std::string& text, const char* title) {
  platform::showMessageBox(text, title, platform::kMbOk | platform::kMbIconInformation);
}

// The run's end when it fails: what it opened is released.
void endOnFailure(CComparisonState& state) { state.ReleaseDrawings(); }

// File names as the host compares them: without regard to case.
bool sameFileName(const std::string& a, const std::string& b) {
  return platform::toUpperAscii(a) == platform::toUpperAscii(b);
}

platform::Document* openDocumentNamed(const std::string& path) {
  for (platform::Document* document : platform::documents())
    if (sameFileName(document->fileName(), path)) return document;
  return nullptr;
}

// Stage: the two names. Given names are checked once; an empty one (or always, for open only) is asked
// for with the file selection dialog, again while the version check refuses the names chosen.
bool obtainNames(std::string& source, std::string& destination, bool alwaysAsk) {
  if (!alwaysAsk && !source.empty() && !destination.empty()) return CheckDwgVersion(source, destination) == 1;
  for (;;) {
    CVkCompareFileSelDlg dialog;
    if (dialog.doModal() != platform::kIdOk) return false;
    const CCompareConfigFile& store = CCompareConfigFile::instance();
    source = store.SourceFile();
    destination = store.DestinationFile();
    if (CheckDwgVersion(source, destination) == 1) return true;
  }
}

// Stage: the host document of a drawing, the one already open under its name or one opened now. A
// drawing the comparison opens is listed as such, and its DBMOD is pushed, to be popped when it closes.
platform::Document* openOrReuse(CComparisonState& state, const std::string& path) {
  if (platform::Document* open = openDocumentNamed(path)) return open;
  const std::vector<platform::Document*> before = platform::documents();
  if (!OpenDrawingDocument(path)) return nullptr;
  platform::Document* opened = openDocumentNamed(path);
  // The host may keep the name in another form (a relative path made absolute): then the new document is it.
  for (platform::Document* document : platform::documents())
    if (!opened && std::find(before.begin(), before.end(), document) == before.end()) opened = document;
  if (!opened) return nullptr;
  opened->pushDbmod();
  state.openedDrawings.push_back(opened->fileName());
  return opened;
}

// Stage: both drawing records. One file given twice is opened once; its second record reads the file
// again into a database of its own, so that the two records never share one.
bool openPair(CComparisonState& state, const std::string& source, const std::string& destination) {
  if (source == destination) {
    platform::Document* document = openOrReuse(state, source);
    if (!document) return false;
    state.source = CDrawingRecord::fromDocument(*document);
    platform::ReadReport report;
    state.sideDestination = platform::Database::read(document->fileName(), report);
    if (state.sideDestination) {
      state.destination = CDrawingRecord::fromDatabase(*state.sideDestination);
    } else {
      state.destination = std::make_unique<CDrawingRecord>();  // no database: the check below refuses it
      state.destination->fileName = destination;
    }
    return true;
  }
  platform::Document* destinationDocument = openOrReuse(state, destination);
  if (!destinationDocument) return false;
  state.destination = CDrawingRecord::fromDocument(*destinationDocument);
  platform::Document* sourceDocument = openOrReuse(state, source);
  if (!sourceDocument) return false;
  state.source = CDrawingRecord::fromDocument(*sourceDocument);
  return true;
}

void tilePair(const CComparisonState& state) {
  if (state.source && state.destination && state.source->document && state.destination->document)
    platform::tileSideBySide(state.source->document->docTitle(), state.destination->document->docTitle());
}

// Stage: the three checks, each with its message box; false when one fails.
bool checkPair(const CComparisonState& state) {
  if (!state.source || !state.source->database) {
    inform("源图形文件无效", kToolTitle);
    return false;
  }
  if (!state.destination || !state.destination->database) {
    inform("目标图形文件无效", kToolTitle);
    return false;
  }
  if (!SameSpace(*state.source->database, *state.destination->database)) {
    platform::restoreStatusBar();
    platform::showMessageBox("两个文件的当前空间不同，不能进行比较。", "错误", platform::kMbOk | platform::kMbIconError);
    return false;
  }
  return true;
}

// Stage: the settings dialog when the settings ask for it before each comparison; false when it was not
// confirmed.
bool confirmSettings(const CComparisonState& state) {
  if (CCompareConfigFile::instance().GetIsShow() != 1) return true;
  CVkCompareSettingDlg dialog(state.source ? state.source->database : nullptr,
                              state.destination ? state.destination->database : nullptr);
  return dialog.DoModal(1) == platform::kIdOk;
}

// Steps 1 to 7 of the interactive run, shared with open only: names, documents, tiling, checks. True when
// the pair stands in the comparison state.
bool obtainPair(CComparisonState& state, std::string source, std::string destination, bool alwaysAsk) {
  state.Prepare();
  state.compareEnded = 0;
  if (!obtainNames(source, destination, alwaysAsk)) return false;
  state.sourceFileName = source;
  state.destinationFileName = destination;
  if (!openPair(state, source, destination)) {
    endOnFailure(state);
    return false;
  }
  tilePair(state);
  if (!checkPair(state)) {
    endOnFailure(state);
    return false;
  }
  return true;
}

// Stage: read both records and pair them. The number of differing entities, or nothing (after the
// message) when the source has nothing to compare.
std::optional<unsigned> readAndPair(CComparisonState& state) {
  LoadRunSettings(state);
  state.viewMatchingActive = 1;
  ClearResultPalette();
  platform::setStatusBarProgressMeter("正在准备读取源文件：", 0, 100);
  platform::restoreStatusBar();
  ReadBothDrawings(state);
  if (state.source->entityCount == 0) {
    inform("原图无可比较实体", kToolTitle);
    return std::nullopt;
  }
  return PairAndCompare(state);
}

void keepPaletteNames(CComparisonState& state) {
  state.paletteSourceName = state.sourceFileName;
  state.paletteDestinationName = state.destinationFileName;
}

// What compare-the-open-pair keeps of a record across the prepare step, which deletes the records: the
// area corners and base point the commands set, and where the drawing is.
struct KeptRecord {
  std::string fileName;
  bool sideDatabase = false;
  platform::Point3d corner1, corner2, basePoint;

  explicit KeptRecord(const CDrawingRecord& r)
      : fileName(r.fileName), sideDatabase(!r.document), corner1(r.areaCorner1), corner2(r.areaCorner2),
        basePoint(r.basePoint) {}
  // The record again, from the document open under its name (or the side database of a file given twice,
  // which the prepare step leaves in place); null when the drawing is gone.
  std::unique_ptr<CDrawingRecord> rebuild(const CComparisonState& state) const {
    std::unique_ptr<CDrawingRecord> record;
    if (sideDatabase) {
      if (state.sideDestination) record = CDrawingRecord::fromDatabase(*state.sideDestination);
    } else if (platform::Document* document = openDocumentNamed(fileName)) {
      record = CDrawingRecord::fromDocument(*document);
    }
    if (record) {
      record->areaCorner1 = corner1;
      record->areaCorner2 = corner2;
      record->basePoint = basePoint;
    }
    return record;
  }
};

// Whether the pair of the comparison state is still open: its two names, upper-cased, match the open
// documents' names at least twice.
bool pairStillOpen(const CComparisonState& state) {
  if (!state.source || !state.destination) return false;
  int matches = 0;
  for (const platform::Document* document : platform::documents()) {
    matches += sameFileName(document->fileName(), state.source->fileName);
    matches += sameFileName(document->fileName(), state.destination->fileName);
  }
  return matches >= 2;
}

}  // namespace

void RunInteractiveCompare(const std::string& sourcePath, const std::string& destinationPath) {
  CComparisonState& state = CComparisonState::instance();
  if (!obtainPair(state, sourcePath, destinationPath, false)) return;
  if (!confirmSettings(state)) {
    endOnFailure(state);
    return;
  }
  const std::optional<unsigned> n = readAndPair(state);
  if (!n) return;
  inform(*n == 0 ? std::string("文件完全相同。")
                 : platform::fmt("发现有(%d)个实体不同。请使用工具条定位到详细差异位置。", *n),
         kResultTitle);
  MatchComparedViews();
  keepPaletteNames(state);
  // The palette is filled here too, not only by compare-the-open-pair: every compare on open documents
  // ends with its result listed there, ready to be double-clicked.
  FillResultPalette(state);
}

void RunOpenOnly() {
  CComparisonState& state = CComparisonState::instance();
  // The palette's copies of the names belong to the pair compared last.
  state.paletteSourceName.clear();
  state.paletteDestinationName.clear();
  ClearResultPalette();
  obtainPair(state, "", "", true);
}

void RunCompareOpenPair() {
  CComparisonState& state = CComparisonState::instance();
  if (!pairStillOpen(state)) return;
  if (!confirmSettings(state)) return;
  // The prepare step deletes the drawing records, and with them the area corners and base points that the
  // commands set in them; they are kept aside here and put into the records made afresh.
  const KeptRecord source(*state.source), destination(*state.destination);
  state.Prepare();
  state.compareEnded = 0;
  state.source = source.rebuild(state);
  state.destination = destination.rebuild(state);
  if (!state.source || !state.destination) {
    endOnFailure(state);
    return;
  }
  state.allRectangles = 1;
  const std::optional<unsigned> n = readAndPair(state);
  if (!n) return;
  inform(*n == 0 ? std::string("文件完全相同")
                 : platform::fmt("发现有(%d)个实体不同。请在左侧 比图结果显示面板 上双击，进行定位。", *n),
         kResultTitle);
  const platform::Point3d sourceMin = state.source->database->extents().min;
  const platform::Point3d destinationMin = state.destination->database->extents().min;
  const double sourceXyz[3] = {sourceMin.x, sourceMin.y, sourceMin.z};
  const double destinationXyz[3] = {destinationMin.x, destinationMin.y, destinationMin.z};
  std::copy(sourceXyz, sourceXyz + 3, state.sourceExtentsMin);
  std::copy(destinationXyz, destinationXyz + 3, state.destinationExtentsMin);
  MatchComparedViews();
  state.resultReady = 1;
  keepPaletteNames(state);
  FillResultPalette(state);
  tilePair(state);
}
