// Typed questions the comparers ask an entity, named after the host accessor that answers them.
#pragma once

#include <cstdint>

#include "platform/accessors_blocks.h"
#include "platform/accessors_curves.h"
#include "platform/accessors_text.h"

namespace platform {

// What an accessor answers with; each Entity query method serves one kind.
enum class AccessorKind : std::uint8_t { Real, Integer, Point, Vector, Text, Points, Reals, Texts };

// X-macros: accessor name (the host's method name), kind. Points are in WCS, angles in radians, with the
// host's defaults for values a drawing leaves out. Each family of entities lists its accessors in its own
// header; an accessor that several families use is listed once, by the first.
#define VK_ACCESSORS_COMMON(X)       \
  /* every entity with a location */ \
  X(position, Point)                 \
  X(normal, Vector)                  \
  X(thickness, Real)                 \
  X(elevation, Real)                 \
  /* lines */                        \
  X(startPoint, Point)               \
  X(endPoint, Point)

#define VK_ACCESSORS(X)  \
  VK_ACCESSORS_COMMON(X) \
  VK_ACCESSORS_CURVES(X) \
  VK_ACCESSORS_TEXT(X)   \
  VK_ACCESSORS_BLOCKS(X)

enum class Accessor : std::uint16_t {
#define VK_ACCESSOR_ENUM(name, kind) name,
  VK_ACCESSORS(VK_ACCESSOR_ENUM)
#undef VK_ACCESSOR_ENUM
};

AccessorKind accessorKind(Accessor a);
const char* accessorName(Accessor a);

}  // namespace platform
