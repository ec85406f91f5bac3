// The result palette: a palette set titled "比图结果显示面板" whose tree lists the ranges "范围%d" of a
// comparison with their member records; a double-click on a member locates that record.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/ResultPaletteHook.h"
#include "platform/palette.h"

inline constexpr const char* kResultPaletteTitle = "比图结果显示面板";

class CResultPalette final : public CResultPaletteHook {
 public:
  static CResultPalette& instance();

  // One item of the tree: a range, or a member naming its record by its index in the sorted records.
  struct Entry {
    platform::PaletteItemId item = 0;
    std::string label;
    bool member = false;
    std::size_t record = 0;
  };

  void Clear() override;
  // The state's ranges, each with its members below it. The index answered counts the results the palette
  // has been filled with (1 for the first), so it is never the 0 of an empty palette.
  int Fill(const CComparisonState& state) override;
  void Show() override;
  // A double-click: a member of the result still held by the comparison is located as a step locates it
  // and becomes the current record; a range, or an entry of an earlier result, does nothing.
  void Activate(platform::PaletteItemId item);
  // The palette set goes (the module unloads).
  void Destroy();

  const std::vector<Entry>& Entries() const { return entries_; }
  bool HoldsResult() const { return holdsResult_; }
  platform::PaletteSetId Set() const { return set_; }

 private:
  CResultPalette() = default;
  // The palette set, made when first needed (again when the host dropped it).
  platform::PaletteSetId createSet();

  platform::PaletteSetId set_ = 0;
  std::vector<Entry> entries_;
  bool holdsResult_ = false;
  int fills_ = 0;
  std::uint64_t result_ = 0;  // the state's result the entries belong to
};
