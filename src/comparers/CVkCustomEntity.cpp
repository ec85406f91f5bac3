// The generic comparer: key by position (or extents), details by the group list.
#include "comparers/CVkCustomEntity.h"

#include <algorithm>

#include "platform/text.h"

namespace {

// Groups the common properties already compare: primary point, layer, colour, linetype, lineweight,
// text style.
bool coveredByCommon(int code) {
  return code == 10 || code == 8 || code == 62 || code == 6 || code == 370 || code == 7;
}

bool isLocationCode(int code) { return code >= 10 && code <= 18; }

// The value of one group as text. Entity names and handles identify objects of one drawing and are not
// properties: they give no text, so two drawings that number their objects differently compare alike.
std::string valueText(const platform::ResBuf& g, const platform::Matrix3d& load) {
  using T = platform::ResBuf::Type;
  switch (g.type) {
    case T::Real: return platform::fmt("%.2f", g.real);
    case T::Integer: return platform::fmt("%d", g.integer);
    case T::Text:
    case T::Binary: return g.text;
    case T::Point: {
      const platform::Point3d p = isLocationCode(g.code) ? load.transform(g.point) : g.point;
      return platform::fmt("%.2f,%.2f,%.2f", p.x, p.y, p.z);
    }
    case T::Handle:
    case T::Name: return {};
  }
  return {};
}

}  // namespace

void CVkCustomEntity::load(const platform::Entity& entity, platform::Matrix3d transform) {
  const LoadedExtents extents = loadCommon(entity, transform);
  // The group list is read once, for the key and for the details.
  const platform::ResBufList groups = entity.entGet();
  // The position is group 10 of the group list; a polyline's group 10 holds only its elevation, so
  // polylines, like entities without group 10, are keyed by their extents.
  const platform::Point3d* position = nullptr;
  if (dxfName() != "POLYLINE")
    for (const platform::ResBuf& g : groups)
      if (g.code == 10 && g.type == platform::ResBuf::Type::Point) {
        position = &g.point;
        break;
      }
  if (position) {
    const platform::Point3d p = transform.transform(*position);
    setKeyFrom(platform::fmt("%s,%.2f,%.2f", dxfName(), p.x, p.y));
    setZText(platform::fmt("%.2f", p.z));
  } else {
    const platform::Extents3d& e = extents.placed;
    setKeyFrom(platform::fmt("%s,%.2f,%.2f,%.2f,%.2f", dxfName(), e.min.x, e.min.y, e.max.x, e.max.y));
    setZText(platform::fmt("%.2f,%.2f", extents.minZ, extents.maxZ));
  }
  if (isCompared(kCodeDetails)) captureGroups(groups, transform);
}

void CVkCustomEntity::loadDetail(const platform::Entity& entity, platform::Matrix3d transform) {
  captureGroups(entity.entGet(), transform);
}

void CVkCustomEntity::captureGroups(const platform::ResBufList& list, const platform::Matrix3d& transform) {
  std::vector<std::pair<int, std::string>> groups;
  for (const platform::ResBuf& g : list) {
    if (coveredByCommon(g.code) || !isCompared(g.code)) continue;
    std::string value = valueText(g, transform);
    if (!value.empty()) groups.emplace_back(g.code, std::move(value));
  }
  std::stable_sort(groups.begin(), groups.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  // "%s,%d,%s" folded over the list: the text starts with a comma and alternates codes and values.
  std::string text;
  for (const auto& [code, value] : groups) {
    text += ',';
    platform::appendInt(text, code);
    text += ',';
    text += value;
  }
  groupText_ = intern(text);
}

bool CVkCustomEntity::digestOwnTexts(TextDigest& digest) const {
  if (!isCompared(kCodeDetails)) return false;
  digest.add(text(groupText_));
  return true;
}

void CVkCustomEntity::appendDifferences(const CVkAcadEntityBase& other, std::string& out) {
  CVkAcadEntityBase::appendDifferences(other, out);
  const auto* custom = dynamic_cast<const CVkCustomEntity*>(&other);
  if (isCompared(kCodeDetails) && (!custom || !sameText(groupText_, *custom, custom->groupText_)))
    out.append(text(groupText_)).append("不同");
}
