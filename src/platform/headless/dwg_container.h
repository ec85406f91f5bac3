// The containers of R13 and later DWG files: their version, code page and sections, and the object map.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/headless/dwg_bits.h"

namespace headless {

// One section of a drawing, as the file names it ("AcDb:Header", "AcDb:AcDbObjects", ...), decompressed
// and with its pages joined. R13-R15 files have no names; their numbered records get the names of the
// sections that took their place in R2004.
struct DwgSection {
  std::string name;
  std::span<const std::uint8_t> data;
};

// What the container of a DWG file holds, whichever its layout. It owns the file's bytes and the
// decompressed sections, so the spans stay valid for its lifetime; it moves but is never copied.
struct DwgSections {
  DwgSections() = default;
  DwgSections(DwgSections&&) = default;
  DwgSections& operator=(DwgSections&&) = default;
  DwgSections(const DwgSections&) = delete;
  DwgSections& operator=(const DwgSections&) = delete;

  std::string fileName;
  std::string versionString;  // $ACADVER: "AC1015"
  DwgVersion version = DwgVersion::R2000;
  int maintenanceVersion = 0;
  int codepage = 0;  // the file header's code page number; codepageName() gives its $DWGCODEPAGE

  // The header variables and the class definitions: the bit data after the sentinel and the size words,
  // as long as the section says, up to its CRC (checked while reading).
  std::span<const std::uint8_t> headerVariables;
  std::span<const std::uint8_t> classes;
  // The object map, whole: pages of handle and offset deltas, each with its CRC (see readObjectMap).
  std::span<const std::uint8_t> handles;
  // The bytes the object map's offsets point into. R13-R15 maps hold absolute file offsets, so there it
  // is the whole file; from R2004 on it is the AcDb:AcDbObjects section.
  std::span<const std::uint8_t> objects;
  // Every section present, the four above included (whole, with sentinels), in file order.
  std::vector<DwgSection> sections;
  // What was damaged but could be read around, each naming where.
  std::vector<std::string> warnings;

  const DwgSection* section(std::string_view name) const;
  std::string_view codepageName() const;

  // Storage behind the spans (the file, decompressed sections); for the readers only.
  std::vector<std::uint8_t> fileBytes;
  std::vector<std::unique_ptr<std::uint8_t[]>> buffers;
};

// Reads the container of the DWG file at path. False with error set ("<file>: <where>: <what>") when the
// file is not an R13 or later DWG, or its sections cannot be found; damage that leaves the sections
// readable becomes warnings.
bool readDwgContainer(const std::string& path, DwgSections& out, std::string& error);
// The same for a file already in memory; fileName only names it in messages.
bool readDwgContainer(std::vector<std::uint8_t> bytes, std::string_view fileName, DwgSections& out,
                      std::string& error);

// Why a file that starts like a DWG cannot be read as an R13 or later one ("" when it can): too short, not
// a DWG at all, a release before R13 (named: "R11/R12 (AC1009)") or one this reader does not know.
std::string dwgSignatureProblem(std::span<const std::uint8_t> firstBytes);

// The object map: for every handle, where its object starts in DwgSections::objects.
struct DwgObjectLocation {
  std::uint64_t handle = 0;
  std::uint64_t offset = 0;
};
// Reads the object map, checking each page's CRC; damage becomes warnings and ends the map early.
std::vector<DwgObjectLocation> readObjectMap(const DwgSections& sections, std::vector<std::string>& warnings);

// One object as its first bytes describe it.
struct DwgObjectHeader {
  std::uint64_t handle = 0;
  std::uint64_t offset = 0;            // of its size, in DwgSections::objects
  std::uint32_t size = 0;              // bytes of object data, after the size (and handle-stream size)
  std::uint32_t dataOffset = 0;        // where that data starts, counted from offset
  std::uint16_t type = 0;
  std::uint64_t handleStreamBits = 0;  // R2010+; 0 before
  bool crcMatches = false;
};
struct DwgObjectWalk {
  std::vector<DwgObjectHeader> objects;  // in object map order, only those whose data lies in the section
  std::vector<std::string> warnings;
};
// Reads every object's size, type (and R2010+ handle-stream size) and checks its CRC.
DwgObjectWalk walkObjects(const DwgSections& sections);

}  // namespace headless
