// The layer lookup of one drawing: the texts a ByLayer colour, linetype or lineweight stands for.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

#include "platform/database.h"

struct CLayerTexts {
  std::string colorText;      // "%d" of the layer's colour
  std::string linetypeName;   // the layer's linetype
  std::string lineweightText; // "%d" of the layer's lineweight
};

class CLayerContext {
 public:
  explicit CLayerContext(const platform::Database& db);
  // The texts of a layer by its id (its name where the id is unknown); a layer the drawing lacks answers
  // with the host's defaults.
  const CLayerTexts& lookup(platform::ObjectId layerId, std::string_view layerName) const;

 private:
  std::unordered_map<std::uint64_t, const CLayerTexts*> byId_;
  std::unordered_map<std::string, CLayerTexts> byName_;  // upper-cased layer name -> texts
  CLayerTexts defaults_;
};
