// The walk of a block record as the host shows it, handing what it draws to a sink as outlines and texts.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/database.h"
#include "platform/geometry.h"

namespace headless {

enum class Fill { None, Solid, Light };

// How a finished outline is painted.
struct Paint {
  std::uint32_t color = 0xFFFFFF;  // 0xRRGGBB
  Fill fill = Fill::None;
  // Stroke width in drawing units, already placed; 0: a pixel wide at every zoom.
  double width = 0.0;
  // A point: a round dot three pixels wide at every zoom.
  bool dot = false;
};

// One line of a text: where its baseline lies below the text's origin (y down, drawing units) and its text.
struct TextLine {
  double y = 0.0;
  std::string_view text;
};

// A text as placed: `frame` maps the text's own frame (x along the baseline, y up, drawing units) into the
// drawing. Lines anchor at their start, middle or end (0, 1, 2); an aligned text is stretched to `fitLength`
// (0: not stretched). A block is multi-line text, each line placed at its own y; otherwise one line.
struct TextRun {
  platform::Matrix3d frame;
  double height = 0.0;
  std::uint32_t color = 0xFFFFFF;
  int anchor = 0;
  double fitLength = 0.0;
  bool block = false;
  std::vector<TextLine> lines;
};

// What the walk draws, in drawing coordinates.
class PrimitiveSink {
 public:
  virtual ~PrimitiveSink() = default;
  // Around everything drawn for one entity of the walked block itself (not for those inside references).
  virtual void beginEntity(std::uint64_t handle) = 0;
  virtual void endEntity() = 0;
  // An outline: begun, traced, then either painted or dropped (when it traced nothing).
  virtual void beginPath() = 0;
  virtual void moveTo(const platform::Point3d& p) = 0;
  virtual void lineTo(const platform::Point3d& p) = 0;
  // A circular arc of at most half a turn from the current point to `to`, counter-clockwise in the drawing when
  // `ccw`.
  virtual void arcTo(const platform::Point3d& centre, double radius, bool ccw, const platform::Point3d& to) = 0;
  virtual void closePath() = 0;
  virtual void endPath(const Paint& paint) = 0;
  virtual void dropPath() = 0;
  virtual void text(const TextRun& run) = 0;
};

struct WalkLimits {
  // Entities visited at most, nested ones included (0: a share growing with the drawing's size).
  std::size_t visits = 0;
  // Block references nested deeper than this are not drawn.
  std::size_t depth = 64;
};

// Walks the entities of block record `block` (model space, a layout or a block) as the host shows them: colours
// through ByLayer and ByBlock, blocks with their transforms, frozen and off layers, the work budget. `extents`
// grows by what is drawn. False when the budget ran out before the end (what remains is not drawn).
bool walkBlock(const platform::Database& db, std::uint32_t block, PrimitiveSink& sink, platform::Extents3d& extents,
               const WalkLimits& limits = {});

}  // namespace headless
