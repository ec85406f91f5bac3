// The settings store and its INI file.
#include "ui/CompareConfigFile.h"

#include <string_view>
#include <utility>

#include "platform/environment.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "platform/text.h"

namespace {

constexpr const char* kSettingsSection = "CFGDATA";
constexpr const char* kFilesSection = "CMPFILE";
// The host's fixed buffers: 1024 characters for the expanded folder, 260 (MAX_PATH) for a stored path.
constexpr std::size_t kExpandBufferChars = 1024;
constexpr std::size_t kPathBufferChars = 260;

}  // namespace

CCompareConfigFile& CCompareConfigFile::instance() {
  static CCompareConfigFile store;
  return store;
}

CCompareConfigFile::CCompareConfigFile() {
  std::string appData;
  if (!platform::expandEnvironmentStrings("%APPDATA%", appData, kExpandBufferChars)) return;
  dataFolder_ = platform::joinPath(platform::joinPath(appData, "Morvane"), "VkAcadCompareDwg");
  iniPath_ = platform::joinPath(dataFolder_, "VkCompareDwgData.ini");
  platform::CreateFolderPath(dataFolder_);
  platform::CreateFolderPath(platform::joinPath(dataFolder_, "ToosBmp"));
}

void CCompareConfigFile::ReadCompareFiles() {
  sourceFile_ = platform::getPrivateProfileString(kFilesSection, "FileNameSrc", "", kPathBufferChars, iniPath_);
  destinationFile_ = platform::getPrivateProfileString(kFilesSection, "FileNameDes", "", kPathBufferChars, iniPath_);
}

void CCompareConfigFile::WriteCompareFiles() {
  platform::writePrivateProfileString(kFilesSection, "FileNameSrc", sourceFile_, iniPath_);
  platform::writePrivateProfileString(kFilesSection, "FileNameDes", destinationFile_, iniPath_);
}

void CCompareConfigFile::ReadSettings() {
  const auto read = [this](const char* key, int def) {
    return platform::getPrivateProfileInt(kSettingsSection, key, def, iniPath_);
  };
  layer_ = read("Layer", 1);
  color_ = read("Color", 1);
  lineType_ = read("LineType", 1);
  lineWidth_ = read("LineWidth", 1);
  textStyle_ = read("TextStyle", 1);
  z_ = read("Z", 1);
  exterEntity_ = read("ExterEntity", 1);
  layerScope_ = read("AllorSectionLayer", kLayerScopeAll);
  typicalValue_ = read("TypicalValue", 1);
}

void CCompareConfigFile::WriteSettings() {
  // One write per key, in the store's order; "IsShow" is deliberately not among them.
  const std::pair<const char*, int> keys[] = {
      {"Layer", layer_},         {"Color", color_},     {"LineType", lineType_},
      {"LineWidth", lineWidth_}, {"TextStyle", textStyle_}, {"Z", z_},
      {"ExterEntity", exterEntity_}, {"AllorSectionLayer", layerScope_}, {"TypicalValue", typicalValue_},
  };
  for (const auto& [key, value] : keys)
    platform::writePrivateProfileString(kSettingsSection, key, platform::fmt("%d", value), iniPath_);
}

void CCompareConfigFile::SetCompareFlags(int layer, int color, int lineType, int lineWidth, int textStyle, int z,
                                         int typicalValue) {
  layer_ = layer;
  color_ = color;
  lineType_ = lineType;
  lineWidth_ = lineWidth;
  textStyle_ = textStyle;
  z_ = z;
  typicalValue_ = typicalValue;
}

void CCompareConfigFile::GetCompareFlags(int& layer, int& color, int& lineType, int& lineWidth, int& textStyle,
                                         int& z, int& typicalValue) const {
  layer = layer_;
  color = color_;
  lineType = lineType_;
  lineWidth = lineWidth_;
  textStyle = textStyle_;
  z = z_;
  typicalValue = typicalValue_;
}

int CCompareConfigFile::GetLayerScope() {
  if (layerScope_ != kLayerScopeAll && layerScope_ != kLayerScopeChosen) layerScope_ = kLayerScopeAll;
  return layerScope_;
}

void CCompareConfigFile::SetIsShow(int v) {
  isShow_ = v;
  platform::writePrivateProfileString(kSettingsSection, "IsShow", platform::fmt("%d", v), iniPath_);
}

int CCompareConfigFile::GetIsShow() {
  isShow_ = platform::getPrivateProfileInt(kSettingsSection, "IsShow", 1, iniPath_);
  return isShow_;
}

std::vector<int> CCompareConfigFile::ExcludedCodes() const {
  std::vector<int> codes;
  const std::pair<int, int> flags[] = {
      {layer_, kCodeLayer}, {color_, kCodeColor},        {lineType_, kCodeLinetype},    {lineWidth_, kCodeLineweight},
      {z_, kCodeZ},         {textStyle_, kCodeTextStyle}, {typicalValue_, kCodeDetails},
  };
  for (const auto& [flag, code] : flags)
    if (flag == 0) codes.push_back(code);
  return codes;
}

CompareOptions CCompareConfigFile::Options() const {
  CompareOptions options;
  options.excludedCodes = ExcludedCodes();
  options.compareExternalReferences = exterEntity_ != 0;
  return options;
}

std::vector<std::string>& ExcludedLayers() {
  static std::vector<std::string> layers;
  return layers;
}
