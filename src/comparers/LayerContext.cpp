// The layer lookup of one drawing.
#include "comparers/LayerContext.h"

#include "platform/text.h"

CLayerContext::CLayerContext(const platform::Database& db) {
  for (const platform::LayerRecord& layer : db.layers()) {
    CLayerTexts t;
    t.colorText = platform::fmt("%d", layer.colorIndex);
    t.linetypeName = layer.linetype;
    t.lineweightText = platform::fmt("%d", layer.lineWeight);
    byName_.emplace(platform::toUpperAscii(layer.name), std::move(t));
  }
  const platform::LayerRecord fresh;
  defaults_ = {platform::fmt("%d", fresh.colorIndex), fresh.linetype, platform::fmt("%d", fresh.lineWeight)};
}

const CLayerTexts& CLayerContext::lookup(std::string_view layerName) const {
  auto it = byName_.find(platform::toUpperAscii(layerName));
  return it == byName_.end() ? defaults_ : it->second;
}
