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
    std::string widthText;
    std::string heightText;
    std::string outerCellText;
    std::string dateText;
  };

  void load(const platform::Entity& entity, platform::Matrix3d transform) override;
  // With details compared, appends the table's messages, then lists every cell ("第%d行,第%d列:") with
  // the messages of its differences; cell arrays of different lengths give "单元格数量不一样," alone.
  std::unique_ptr<CDiffType> compare(const CVkAcadEntityBase& other) override;
  // The table's texts and its number of cells, when details are compared.
  bool digestOwnTexts(TextDigest& digest) const override;
  void loadDetail(const platform::Entity& entity, platform::Matrix3d transform) override;

  const std::string& rotationText() const { return rotationText_; }
  const std::string& scaleText() const { return scaleText_; }
  const std::string& blockNameText() const { return blockNameText_; }
  const std::string& rowsText() const { return rowsText_; }
  const std::string& columnsText() const { return columnsText_; }
  const std::string& tableText() const { return tableText_; }
  const std::string& widthText() const { return widthText_; }
  const std::string& heightText() const { return heightText_; }
  const std::vector<Cell>& cells() const { return cells_; }

 private:
  std::string rotationText_;
  std::string scaleText_;
  std::string blockNameText_;
  std::string rowsText_;
  std::string columnsText_;
  std::string tableText_;
  std::string widthText_;
  std::string heightText_;
  int columns_ = 0;
  int rows_ = 0;
  std::vector<Cell> cells_;
  std::string extraMessage_;
};
