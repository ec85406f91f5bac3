// The modeler data of regions, bodies, 3D solids and surfaces, from SAT text or its binary form SAB, as one record model.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/headless/dxf_groups.h"

namespace headless::modeler {

// One record of the data: its type name ("face", "plane-surface") and its fields up to the closing "#".
struct Record {
  std::string_view name;
  std::uint32_t first = 0;  // its first field in the model's field list
  std::uint32_t count = 0;  // its fields after the name
  std::uint32_t head = 0;   // how many of them are the entity header (attribute pointer, history, ...)
};

// Records point into the model's own text: a model is neither copied nor moved.
class Model {
 public:
  Model() = default;
  Model(const Model&) = delete;
  Model& operator=(const Model&) = delete;

  // Reads SAT text (its three header lines, then records). False when it holds no record.
  bool readSat(std::string text);
  // Reads SAB ("ACIS BinaryFile", then tagged values). The records are also written out as SAT text (text()),
  // so both forms answer alike. False, with the reason in `error`, when the data are damaged. `used` is set to
  // where the data end (their closing record), for data stored without their size.
  bool readSab(std::string_view bytes, std::string* error = nullptr, std::size_t* used = nullptr);

  // The version of the modeler that wrote the data (400, 21200, ...).
  int version() const { return version_; }
  // The SAT text the records were read from (for SAB, written from it).
  const std::string& text() const { return text_; }
  std::size_t size() const { return records_.size(); }
  const Record& operator[](std::size_t i) const { return records_[i]; }
  const std::vector<Record>& records() const { return records_; }
  // The record with this index, or null.
  const Record* at(long index) const;
  // All fields after the name, and the fields after the entity header.
  std::span<const std::string_view> fields(const Record& r) const { return {fields_.data() + r.first, r.count}; }
  std::span<const std::string_view> data(const Record& r) const {
    return {fields_.data() + r.first + r.head, r.count - r.head};
  }
  // The record a pointer field ("$12") names when it is of this type, or null.
  const Record* follow(std::string_view field, std::string_view type) const;
  // The first record of this type, or null.
  const Record* first(std::string_view type) const;

  // What a digest of the shape covers, the same whichever modeler version or form wrote the same shape: each
  // record's name in order, with the numbers leading its data (the geometry: points, axes, radii). Headers,
  // attributes (histories, names), topology pointers and the flags and intervals that follow the numbers are
  // left out: their layout changes from one version to the next.
  std::string shape() const;

 private:
  bool parseRecords();

  int version_ = 0;
  std::string text_;
  std::vector<Record> records_;
  std::vector<std::string_view> fields_;
};

// A field as a finite number; none for pointers and words.
std::optional<double> number(std::string_view field);
// The record index a pointer field ("$12") names, or -1.
long pointer(std::string_view field);
// Whether a sense field says "reversed": SAT writes the word (or 1 in old versions), SAB a false flag.
bool isReversed(std::string_view field);

// The SAT text of an entity's groups 1 (a line each) and 3 (continuing a line), with the character transform
// of DXF R2000-R2004 undone; empty when it has none.
std::string satText(const Groups& g);

// The modeler data of an entity: its own SAT text, else the SAB the drawing keeps for its handle (DXF R2013
// and later keep it in the ACDSDATA section). False when it has neither or they cannot be read.
bool readEntity(const platform::DatabaseData& data, std::uint32_t entityIndex, Model& out);

}  // namespace headless::modeler
