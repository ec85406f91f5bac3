// The DWG table entries and layouts the reader needs: their names, flags and links, decoded from objects.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/headless/dwg_objects.h"

namespace headless {

struct DwgBlockHeader {
  std::uint64_t handle = 0;
  std::string name, xrefPath;
  bool anonymous = false, hasAttributes = false, xref = false, overlaid = false;
  DwgPoint3 base;
  std::uint64_t blockEntity = 0, endEntity = 0, layout = 0;
  std::vector<std::uint64_t> entities;  // in drawing order, where the release lists them (R2004+)
  std::uint64_t firstEntity = 0;        // before R2004: the head of the entities' chain of links
};

struct DwgLayout {
  std::uint64_t handle = 0;
  std::string name;
  int tabOrder = 0;
};

// Decodes a table entry or layout into its DXF record (appended to out) and, for names, into names; block
// headers and layouts also into the lists given. False when the object is damaged.
bool decodeDwgTableEntry(DwgObjectReader& object, std::string_view type, DwgTagList& out, DwgNames& names,
                         std::vector<DwgBlockHeader>& blocks, std::vector<DwgLayout>& layouts);

// The length of a leader's hook line under each dimension style, by its handle: the style's arrow size
// times its scale, from the DIMSTYLE records decodeDwgTableEntry appended to records.
std::unordered_map<std::uint64_t, double> dwgHookLengths(const DwgTagList& records);

}  // namespace headless
