// Decoding of DWG objects: the data every object and entity starts with, its texts and handles, and the
// classes that name the types numbered 500 and up.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/headless/dwg_bits.h"
#include "platform/headless/dwg_container.h"
#include "platform/headless/dwg_tags.h"

namespace headless {

struct DwgClass {
  int number = 0;
  std::string dxfName, cppName, appName;
  bool isEntity = false;
  int dwgVersion = 0;  // R2004+: the release the class's objects were written by
};

// Reads the classes section; damage ends the list with a warning.
std::vector<DwgClass> readDwgClasses(const DwgSections& sections, std::vector<std::string>& warnings);

// The DXF name of a fixed object type ("LINE"), or "" for types numbered by class or unknown.
std::string_view dwgFixedTypeName(std::uint16_t type);
// Whether a fixed type is an entity.
bool dwgFixedTypeIsEntity(std::uint16_t type);

// The common data of an object, and of an entity when it is one.
struct DwgCommon {
  std::uint64_t handle = 0;
  std::uint64_t owner = 0;
  std::uint64_t xdictionary = 0;
  std::uint32_t reactorCount = 0;
  std::array<std::uint64_t, 8> reactors{};  // the first ones, as many as fit
  std::size_t eedBegin = 0, eedEnd = 0;     // bit range of the extended data in the object
  // Entities only: the graphics stored for hosts that cannot draw the entity (proxy graphics), byte-aligned
  // or not, from graphicsBegin (a bit position) on, graphicsSize bytes; none when graphicsSize is 0.
  std::size_t graphicsBegin = 0;
  std::size_t graphicsSize = 0;
  // Entities only.
  std::uint8_t entityMode = 0;  // 0: owner given, 1: paper space, 2: model space
  DwgEntityColor color;
  std::uint64_t colorHandle = 0;
  std::string colorName, bookName;
  double linetypeScale = 1.0;
  std::uint8_t linetypeFlags = 0;  // 0 by layer, 1 by block, 2 continuous, 3 a handle
  std::uint64_t layer = 0, linetype = 0;
  std::int16_t invisible = 0;
  int lineWeight = -1;  // as DXF writes it
  bool hasLinks = false;
  std::uint64_t previous = 0, next = 0;
};

// One object being decoded: its data, texts and handles streams, read one field after the other.
class DwgObjectReader {
 public:
  // Sets up the streams of the object header describes; false when its layout does not fit its size.
  bool open(const DwgSections& sections, const DwgObjectHeader& header, bool entity);

  DwgVersion version() const { return bits.version(); }
  bool atLeast(DwgVersion v) const { return bits.version() >= v; }
  // Reads a text field (T before R2007 in the drawing's code page, TU from the string stream after) into
  // out as the DXF reader takes it: code-page bytes before R2007, UTF-8 after.
  void readText(std::string& out);
  // Skips a text field.
  void skipText();
  // Reads the next handle of the handle stream, relative ones resolved against this object.
  std::uint64_t readHandle() { return handles.readHandle(common.handle).handle; }
  // Whether every stream stayed within its bounds.
  bool failed() const { return bits.failed() || strings.failed() || handles.failed(); }
  // Reads the common handles (owner, reactors, xdictionary; for entities layer, linetype and the rest).
  void readCommonHandles();

  DwgBitReader bits, strings, handles;
  DwgCommon common;
  std::uint16_t type = 0;
  bool isEntity = false;
  std::size_t dataEndBit = 0;  // where the handle stream starts
  // R2007+: where the texts are among the data, [stringsBeginBit, stringsEndBit); empty when it has none.
  std::size_t stringsBeginBit = 0, stringsEndBit = 0;

 private:
  bool readCommonObject();
  bool readCommonEntity();
  std::u16string wide_;
  bool xdictionaryMissing_ = false;
  std::uint8_t plotstyleFlags_ = 0, materialFlags_ = 0;
  bool fullStyle_ = false, faceStyle_ = false, edgeStyle_ = false;
  bool separateStrings_ = false;
};

// The DXF lineweight of an entity's lineweight index.
int dwgLineWeight(int index);

// The names of table entries (applications, layers, linetypes, styles, blocks) by handle.
using DwgNames = std::unordered_map<std::uint64_t, std::string>;

// Appends the extended data of an object as DXF groups (1001 and 1000-1071), applications and layers
// named through names, but for the application leaveOut names. False when the data is damaged (nothing is
// then appended).
bool appendDwgExtendedData(DwgObjectReader& object, DwgTagList& out, const DwgNames& names, std::string& scratch,
                           std::string_view leaveOut = {});

}  // namespace headless
