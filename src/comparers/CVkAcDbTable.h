// Comparer of tables: the table as a block reference, its size and a listing of its cells.
#pragma once

#include <string>
#include <vector>

#include "comparers/CVkAcadEntityBase.h"

class CVkAcDbTable final : public CVkAcadEntityBase {
 public:
  // One cell: its row and column, the width and height it takes ("%.2f"), its content (the outer-cell
  // text: a text cell's text, a block cell's block name) and its date value ("" when it holds no date).
  struct Cell {
    int row = 0;
    int column = 0;
    CTextPool::Id widthText = CTextPool::kEmpty;
    CTextPool::Id heightText = CTextPool::kEmpty;
    CTextPool::Id outerCellText = CTextPool::kEmpty;
    CTextPool::Id dateText = CTextPool::kEmpty;
  };

  void load(const platform::Entity& entity, platform::Matrix3d transform) override;
  // With details compared, appends the table's messages, then lists every cell ("第%d行,第%d列:") with
  // the messages of its differences; cell arrays of different lengths give "单元格数量不一样," alone.
  void appendDifferences(const CVkAcadEntityBase& other, std::string& out) override;
  // The table's texts and its number of cells, when details are compared.
  bool digestOwnTexts(TextDigest& digest) const override;
  void loadDetail(const platform::Entity& entity, platform::Matrix3d transform) override;

  std::string_view rotationText() const { return text(rotationText_); }
  std::string_view scaleText() const { return text(scaleText_); }
  std::string_view blockNameText() const { return text(blockNameText_); }
  std::string_view rowsText() const { return text(rowsText_); }
  std::string_view columnsText() const { return text(columnsText_); }
  std::string_view tableText() const { return text(tableText_); }
  std::string_view widthText() const { return text(widthText_); }
  std::string_view heightText() const { return text(heightText_); }
  const std::vector<Cell>& cells() const { return cells_; }
  // A cell's text by its id.
  std::string_view cellText(CTextPool::Id id) const { return text(id); }

 private:
  TextId rotationText_ = CTextPool::kEmpty;
  TextId scaleText_ = CTextPool::kEmpty;
  TextId blockNameText_ = CTextPool::kEmpty;
  TextId rowsText_ = CTextPool::kEmpty;
  TextId columnsText_ = CTextPool::kEmpty;
  TextId tableText_ = CTextPool::kEmpty;
  TextId widthText_ = CTextPool::kEmpty;
  TextId heightText_ = CTextPool::kEmpty;
  int columns_ = 0;
  int rows_ = 0;
  std::vector<Cell> cells_;
};
