// The toolbar "Morvane图纸比较": its eight buttons, their pictures written as BMP files, and its making,
// showing and removal through the host's automation model.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "ui/OpenDrawings.h"

inline constexpr const char* kCompareToolbarName = "Morvane图纸比较";

struct CompareToolbarButton {
  const char* caption;
  const char* tooltip;
  const char* macro;       // U+0003, the command's global name, one blank
  const char* bitmapFile;  // in the folder "ToosBmp" of the data folder
  int resourceId;          // the picture
};
// The buttons, left to right.
const std::array<CompareToolbarButton, 8>& CompareToolbarButtons();

// A picture the module carries: rows from the top, each pixel 0xRRGGBB.
struct BitmapResource {
  int width = 0;
  int height = 0;
  std::vector<std::uint32_t> pixels;
};
// The picture with this resource id; nullopt for an id the module does not carry.
std::optional<BitmapResource> LoadBitmapResource(int resourceId);
// A picture as the bytes of a BMP file: the file header, a 40-byte information header and 24-bit pixel
// rows from the bottom, each padded to four bytes.
std::string BmpFileBytes(const BitmapResource& bitmap);
// Writes the picture to a BMP file; a file standing there with the very same bytes is kept. False when the
// picture is unknown or the file cannot be written.
bool WriteBitmapFile(int resourceId, const std::string& path);

// Makes the toolbar in the menu group "Acad" of the application: 1 when it exists afterwards (an existing
// one is left exactly as it is), 0 when the host's object model (or the group "Acad") could not be
// reached. The pictures go to "ToosBmp" below the data folder; a button whose picture cannot be written
// keeps the host's default picture.
int CreateCompareToolbar(CAutomationObject& application, const std::string& dataFolder);
// The same on the host application with the settings store's data folder.
int CreateCompareToolbar();
// Shows or hides the toolbar; false when there is none.
bool SetCompareToolbarVisible(CAutomationObject& application, bool visible);
// Deletes the toolbar; false when there is none.
bool DeleteCompareToolbar(CAutomationObject& application);
