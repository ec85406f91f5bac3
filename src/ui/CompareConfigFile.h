// The settings store: compared properties, reference and layer choices, the show-dialog flag and the last two
// drawing paths, kept in the INI file of the user's application-data folder.
#pragma once

#include <string>
#include <vector>

#include "comparers/CompareOptions.h"

// Layer scope values: the command identifiers of the settings dialog's two radio buttons, stored as they are.
inline constexpr int kLayerScopeAll = 120;     // "所有图层"
inline constexpr int kLayerScopeChosen = 122;  // "部分图层"

class CCompareConfigFile {
 public:
  // The process-wide store, built on first use from the expansion of "%APPDATA%".
  static CCompareConfigFile& instance();

  // Builds the paths from the application-data folder and creates the data folder and its bitmap folder.
  // A failed expansion leaves every path empty and creates nothing.
  CCompareConfigFile();

  void ReadCompareFiles();
  void WriteCompareFiles();
  void ReadSettings();
  void WriteSettings();

  void SetCompareFlags(int layer, int color, int lineType, int lineWidth, int textStyle, int z, int typicalValue);
  void GetCompareFlags(int& layer, int& color, int& lineType, int& lineWidth, int& textStyle, int& z,
                       int& typicalValue) const;
  void SetExterEntity(int v) { exterEntity_ = v; }
  int GetExterEntity() const { return exterEntity_; }
  void SetLayerScope(int v) { layerScope_ = v; }
  // Returns the scope; a stored value other than 120 or 122 is first corrected to 120.
  int GetLayerScope();
  // Sets the flag and writes "IsShow" at once.
  void SetIsShow(int v);
  // Reads "IsShow" afresh from the file on every call.
  int GetIsShow();

  const std::string& DataFolder() const { return dataFolder_; }
  const std::string& IniPath() const { return iniPath_; }
  const std::string& SourceFile() const { return sourceFile_; }
  const std::string& DestinationFile() const { return destinationFile_; }
  void SetSourceFile(const std::string& path) { sourceFile_ = path; }
  void SetDestinationFile(const std::string& path) { destinationFile_ = path; }

  // The property codes switched off, in the order 8, 62, 6, 370, 30, 7, 2000 (each present when its flag is 0).
  std::vector<int> ExcludedCodes() const;
  // The options a comparison runs with: the excluded codes and the reference switches.
  CompareOptions Options() const;

 private:
  std::string dataFolder_;
  std::string iniPath_;
  std::string sourceFile_;
  std::string destinationFile_;
  int layer_ = 1;
  int color_ = 1;
  int lineType_ = 1;
  int lineWidth_ = 1;
  int textStyle_ = 1;
  int z_ = 1;
  int exterEntity_ = 1;
  int layerScope_ = kLayerScopeAll;
  int isShow_ = 1;
  int typicalValue_ = 1;
};

// The process-wide list of layer names whose entities are left out (the layers left unchecked in the
// settings dialog, rebuilt by each confirmation). Names match without regard to case, as layer names do in
// the host.
std::vector<std::string>& ExcludedLayers();
