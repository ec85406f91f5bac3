// Tables: keyed by their insertion point; compared on rotation, scale, block, size, and cell by cell.
#include "comparers/CVkAcDbTable.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <typeinfo>

#include "platform/text.h"

namespace {

using platform::Accessor;

// Tables of the host stay far below this many cells; more come from damaged drawings, and no more are listed.
constexpr std::size_t kMaxCells = 1 << 20;

double at(const std::vector<double>& values, std::size_t i) { return i < values.size() ? values[i] : 0.0; }

}  // namespace

void CVkAcDbTable::load(const platform::Entity& entity, platform::Matrix3d transform) {
  CVkAcadEntityBase::load(entity, transform);
  const platform::Point3d p = transform.transform(entity.point(Accessor::position));  // AcDbTable::position
  setKeyFrom(platform::fmt("%s,%.2f,%.2f", dxfName(), p.x, p.y));
  setZText(platform::fmt("%.2f", p.z));
  if (isCompared(kCodeDetails)) loadDetail(entity, transform);
}

void CVkAcDbTable::loadDetail(const platform::Entity& entity, platform::Matrix3d) {
  // AcDbBlockReference::rotation: the angle of the table's direction (AcDbTable::direction).
  const platform::Vector3d direction = entity.vector(Accessor::direction);
  rotationText_ = intern(platform::fmt("%.2f", std::atan2(direction.y, direction.x)));
  // AcDbBlockReference::scaleFactors: the lengths of the block transform's axes.
  const platform::Matrix3d block = entity.blockTransform();
  const double sx = block.transform(platform::Vector3d(1, 0, 0)).length();
  const double sy = block.transform(platform::Vector3d(0, 1, 0)).length();
  const double sz = block.transform(platform::Vector3d(0, 0, 1)).length();
  scaleText_ = intern(platform::fmt("%.2f,%.2f,%.2f", sx, sy, sz));
  // The name of the table's block table record (AcDbBlockReference::blockTableRecord).
  const platform::BlockRecord record = entity.database().blockRecord(entity.blockTableRecord());
  blockNameText_ = record ? intern(record.name()) : CTextPool::kEmpty;
  rows_ = static_cast<int>(entity.integer(Accessor::numRows));        // AcDbTable::numRows
  columns_ = static_cast<int>(entity.integer(Accessor::numColumns));  // AcDbTable::numColumns
  rowsText_ = intern(platform::fmt("%d", rows_));
  columnsText_ = intern(platform::fmt("%d", columns_));
  // Six table-wide integers: flow direction (AcDbTable::flowDirection), then the value, override and
  // border colour, lineweight and visibility override flag words. Captured for the record; no message
  // compares them.
  const std::vector<double> flags = entity.reals(Accessor::tableFlags);
  tableText_ = intern(platform::fmt("%d,%d,%d,%d,%d,%d", entity.integer(Accessor::flowDirection), platform::saturatingInteger(at(flags, 0)),
                    platform::saturatingInteger(at(flags, 1)), platform::saturatingInteger(at(flags, 2)),
                    platform::saturatingInteger(at(flags, 3)), platform::saturatingInteger(at(flags, 4))));
  // AcDbTable::width and height: the sums of the column widths and of the row heights.
  const std::vector<double> widths = entity.reals(Accessor::columnWidths);  // AcDbTable::columnWidth
  const std::vector<double> heights = entity.reals(Accessor::rowHeights);   // AcDbTable::rowHeight
  widthText_ = intern(platform::fmt("%.2f", std::accumulate(widths.begin(), widths.end(), 0.0)));
  heightText_ = intern(platform::fmt("%.2f", std::accumulate(heights.begin(), heights.end(), 0.0)));
  // The cells, row by row: the width of their column, the height of their row, their content and date. Only
  // the cells the drawing holds are listed: rows times columns is a claim of the file, which may lie.
  const std::vector<std::string> texts = entity.texts(Accessor::cellTexts);  // AcDbTable::textString
  const std::vector<std::string> dates = entity.texts(Accessor::cellDates);  // the cell value's date
  cells_.clear();
  if (rows_ <= 0 || columns_ <= 0) return;
  const auto claimed = static_cast<std::size_t>(rows_) * static_cast<std::size_t>(columns_);
  const std::size_t count = std::min({claimed, std::max(texts.size(), dates.size()), kMaxCells});
  const auto columns = static_cast<std::size_t>(columns_);
  cells_.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    Cell cell;
    cell.row = static_cast<int>(i / columns);
    cell.column = static_cast<int>(i % columns);
    cell.widthText = intern(platform::fmt("%.2f", at(widths, i % columns)));
    cell.heightText = intern(platform::fmt("%.2f", at(heights, i / columns)));
    cell.outerCellText = i < texts.size() ? intern(texts[i]) : CTextPool::kEmpty;
    cell.dateText = i < dates.size() ? intern(dates[i]) : CTextPool::kEmpty;
    cells_.push_back(std::move(cell));
  }
}

bool CVkAcDbTable::digestOwnTexts(TextDigest& digest) const {
  if (!isCompared(kCodeDetails)) return false;
  for (TextId t : {rotationText_, scaleText_, blockNameText_, rowsText_, columnsText_, widthText_, heightText_})
    digest.add(text(t));
  digest.add(static_cast<std::uint64_t>(cells_.size()));
  return true;
}

void CVkAcDbTable::appendDifferences(const CVkAcadEntityBase& other, std::string& out) {
  CVkAcadEntityBase::appendDifferences(other, out);
  if (!isCompared(kCodeDetails)) return;
  // Entities of other classes meet a table only when their key digests collide: every text then differs.
  static const CVkAcDbTable kNothing;
  const CVkAcDbTable& o = typeid(other) == typeid(*this) ? static_cast<const CVkAcDbTable&>(other) : kNothing;
  struct TableText {
    TextId CVkAcDbTable::*text;
    const char* message;
  };
  static constexpr TableText kTexts[] = {
      {&CVkAcDbTable::rotationText_, "旋转角度不一样,"},        {&CVkAcDbTable::scaleText_, "比例因子不一样,"},
      {&CVkAcDbTable::blockNameText_, "块表记录的名字不一样,"}, {&CVkAcDbTable::rowsText_, "表中的行数不一样,"},
      {&CVkAcDbTable::columnsText_, "表中的列数不一样,"},       {&CVkAcDbTable::widthText_, "表的宽度不一样,"},
      {&CVkAcDbTable::heightText_, "表的高度不一样,"},
  };
  const bool same = &o != &kNothing;
  for (const TableText& t : kTexts)
    if (!same || !sameText(this->*t.text, o, o.*t.text)) out += t.message;
  if (cells_.size() != o.cells_.size()) {
    out += "单元格数量不一样,";
  } else {
    // Every cell's position is listed, differing or not: the listing is the table's cell-by-cell report.
    // The cells are stored row by row, so index i is this table's row r and column c.
    for (std::size_t i = 0; i < cells_.size(); ++i) {
      const Cell& mine = cells_[i];
      const Cell& theirs = o.cells_[i];
      platform::formatTo(out, "第%d行,第%d列:", {mine.row, mine.column});
      if (!sameText(mine.heightText, o, theirs.heightText)) out += "单元格的高度不一样,";
      if (!sameText(mine.widthText, o, theirs.widthText)) out += "单元格的宽度不一样,";
      if (!sameText(mine.outerCellText, o, theirs.outerCellText)) out += "外部单元格不一样,";
      if (!sameText(mine.dateText, o, theirs.dateText)) out += "日期不一样,";
    }
  }
}
