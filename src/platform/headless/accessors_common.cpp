// Accessors shared by many entity kinds (position, normal, thickness) and those of lines.
#include "platform/headless/accessor_table.h"

namespace headless {

using platform::Accessor;
using platform::DbClass;
using platform::Point3d;
using platform::Vector3d;

std::span<const AccessorImpl> commonAccessors() {
  static const AccessorImpl table[] = {
      // Any entity: its primary point (group 10) as stored, its extrusion direction and thickness.
      pointOf(Accessor::position, DbClass::Entity, [](const EntityView& e) { return e.g.point(10); }),
      vectorOf(Accessor::normal, DbClass::Entity, [](const EntityView& e) { return e.normal(); }),
      realOf(Accessor::thickness, DbClass::Entity, [](const EntityView& e) { return e.g.real(39); }),
      realOf(Accessor::elevation, DbClass::Entity, [](const EntityView& e) { return e.g.real(38); }),
      // Lines are stored in WCS.
      pointOf(Accessor::startPoint, DbClass::Line, [](const EntityView& e) { return e.g.point(10); }),
      pointOf(Accessor::endPoint, DbClass::Line, [](const EntityView& e) { return e.g.point(11); }),
  };
  return table;
}

}  // namespace headless
