// A difference record: one added, deleted or changed entity, with its text and where it lies.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "platform/database.h"
#include "platform/geometry.h"

// Kinds of difference records.
enum DiffKind : int {
  kDiffChanged = 1,  // 差异: a pair whose properties differ
  kDiffAdded = 2,    // 新增: only in the destination drawing
  kDiffDeleted = 3,  // 删除: only in the source drawing
};

// What the result palette fills from the records and ranges (a tree of ranges with member items).
class CResultTreeSink {
 public:
  virtual ~CResultTreeSink() = default;
  virtual void addRange(const std::string& label, const std::array<double, 6>& extents) = 0;
  virtual void addMember(const std::string& label, int kind, const std::array<double, 6>& extents) = 0;
};

class CDiffType {
 public:
  CDiffType() = default;
  virtual ~CDiffType() = default;
  // The text the palette shows for this record.
  virtual std::string paletteText() const { return text; }
  // Adds this record as one member item of the result tree.
  virtual void fillResultTree(CResultTreeSink& sink) const { sink.addMember(text, kind, extents); }

  // An entity whose extents cannot be computed (no geometry, or data that cannot be read) is placed at the
  // origin: a point box (0,0,0)-(0,0,0). The empty box's ±1e20 corners would reach the log as coordinates and
  // swallow every range of differences they are grouped with.
  void setExtents(const platform::Extents3d& e) {
    if (e.isEmpty()) extents = {};
    else extents = {e.min.x, e.min.y, e.min.z, e.max.x, e.max.y, e.max.z};
  }

  // The messages that follow the description in the text, each without its closing comma: "新增", "删除",
  // or one per differing property ("颜色不相同"; a block's contents as "<label>[<record texts>]").
  std::vector<std::string_view> messages() const;

  // The description followed by "新增,", "删除," or the difference messages.
  std::string text;
  // min x, y, z, max x, y, z
  std::array<double, 6> extents{};
  int kind = 0;
  // The length of the description at the start of the text.
  std::uint32_t descriptionLength = 0;
  // The entities it stands for: a changed record has both, a deleted one its source, an added one its
  // destination; a missing side is 0 and a null id.
  platform::Handle sourceHandle = 0;
  platform::Handle destinationHandle = 0;
  platform::ObjectId sourceId{};
  platform::ObjectId destinationId{};
  // The range it belongs to (numbered from 1) and its number in that range, once ranges are formed.
  int range = 0;
  int member = 0;
};
