// Comparer of proxy entities (not made by the factory: proxies reach the custom-entity comparer).
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbProxyEntity final : public CVkDetailedEntity {
 public:
  CVkAcDbProxyEntity();
  // A proxy builds no key: its key text stays empty, so pairing never compares it.
  void load(const platform::Entity& entity, platform::Matrix3d transform) override;
};
