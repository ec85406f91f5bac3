// Generator of large synthetic ASCII DXF drawings, and of edited revisions of them, for the benchmarks.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace vkbench {

struct GeneratorOptions {
  std::uint64_t entities = 1000;  // top-level model-space entities (of the base drawing, for a revision)
  std::uint64_t seed = 1;
  std::string version = "AC1015";  // AC1009 (R12), AC1015 (R2000) or AC1032 (R2018)
  // The kinds of entities: "full" (every kind, by the weights of a plan) or "simple" (LINE, CIRCLE, ARC,
  // LWPOLYLINE and TEXT only, mostly lines).
  std::string mix = "full";
  // A revision: the drawing of baseSeed with a fraction of its entities edited, deleted or added, the
  // edits chosen by seed. Entities the edits leave alone are written exactly as in the base drawing.
  bool revision = false;
  double editFraction = 0.0;
  std::uint64_t baseSeed = 1;
  bool crlf = false;  // line breaks as "\r\n", as drawings saved on Windows have them
};

// What a run wrote.
struct GeneratorStats {
  std::uint64_t bytes = 0;
  std::uint64_t entities = 0;     // top-level model-space entities
  std::uint64_t subEntities = 0;  // attributes and vertices (SEQENDs not counted)
  std::map<std::string, std::uint64_t> byType;  // top-level model-space entities by DXF name
  // Revisions only: what the edits did. Every edited entity differs from its base in at least one group.
  std::uint64_t moved = 0, recoloured = 0, retexted = 0, reshaped = 0, deleted = 0, added = 0;
};

// True for the versions the generator writes.
bool isSupportedVersion(std::string_view version);
// True for the mixes the generator writes.
bool isSupportedMix(std::string_view mix);

// The handle of the top-level entity in slot `slot` (the entity's position in the base drawing; added
// entities take the slots after it). Its attributes, vertices and SEQEND take the handles right after it.
std::uint64_t entityHandle(std::uint64_t slot);

// Writes the drawing to `path`, streaming. False with `error` set when the options are invalid or the
// file cannot be written.
bool generateDrawing(const GeneratorOptions& options, const std::string& path, GeneratorStats& stats, std::string& error);

}  // namespace vkbench
