// The layer lookup of one drawing.
#include "comparers/LayerContext.h"

#include "platform/text.h"

CLayerContext::CLayerContext(const platform::Database& db) {
  for (const platform::LayerRecord& layer : db.layers()) {
    CLayerTexts t;
    t.colorText = platform::fmt("%d", layer.colorIndex);
    t.linetypeName = layer.linetype;
    t.lineweightText = platform::fmt("%d", layer.lineWeight);
    const auto [it, added] = byName_.emplace(platform::toUpperAscii(layer.name), std::move(t));
    byId_.emplace(layer.id.value, &it->second);
  }
  const platform::LayerRecord fresh;
  defaults_ = {platform::fmt("%d", fresh.colorIndex), fresh.linetype, platform::fmt("%d", fresh.lineWeight)};
}

const CLayerTexts& CLayerContext::lookup(platform::ObjectId layerId, std::string_view layerName) const {
  if (auto id = byId_.find(layerId.value); id != byId_.end()) return *id->second;
  auto it = byName_.find(platform::toUpperAscii(layerName));
  return it == byName_.end() ? defaults_ : it->second;
}
