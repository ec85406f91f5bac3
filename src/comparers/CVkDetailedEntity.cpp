// Loading and comparing of table-declared comparers.
#include "comparers/CVkDetailedEntity.h"

#include <algorithm>
#include <typeinfo>

#include "platform/text.h"

void CVkDetailedEntity::load(const platform::Entity& entity, platform::Matrix3d transform) {
  const LoadedExtents extents = loadCommon(entity, transform);
  // The key functions append to buffers the thread reuses from entity to entity.
  thread_local KeyTexts keys;
  keys.fullKey.clear();
  keys.zText.clear();
  keys.textStyle.clear();
  keys.placed = extents.placed;
  keys.minZ = extents.minZ;
  keys.maxZ = extents.maxZ;
  traits_.key(entity, transform, *this, keys);
  setKeyFrom(keys.fullKey);
  setZText(keys.zText);
  setTextStyleText(keys.textStyle);
  if (isCompared(kCodeDetails)) loadDetail(entity, transform);
}

void CVkDetailedEntity::loadDetail(const platform::Entity& entity, platform::Matrix3d transform) {
  details_ = {};
  digestOnly_ = false;
  if (traits_.details.empty()) return;
  // The texts can be captured again only from the same entity under the same transform, bit for bit.
  if (canReopen(entity) && entity.objectId() == objectId() && loadedAsPlaced(transform)) {
    TextDigest digest;
    for (const DetailProperty& p : traits_.details) {
      if (p.list.values) {
        p.list.values(entity, transform, digest);
      } else if (p.list) {
        const std::vector<std::string> list = p.list(entity, transform);
        digest.add(static_cast<std::uint64_t>(list.size()));
        for (const std::string& t : list) digest.add(t);
      } else if (p.text.values) {
        p.text.values(entity, transform, digest);
      } else {
        digest.add(p.text(entity, transform));
      }
    }
    valuesDigest_ = digest.value();
    digestOnly_ = true;
    return;
  }
  // The ids of one comparer lie together at the end of the pool's id store.
  CTextPool& texts = pool();
  const std::uint32_t begin = texts.openRun();
  for (const DetailProperty& p : traits_.details) {
    if (p.list) {
      const std::vector<std::string> list = p.list(entity, transform);
      texts.push(static_cast<CTextPool::Id>(list.size()));
      for (const std::string& t : list) texts.push(intern(t));
    } else {
      texts.push(intern(p.text(entity, transform)));
    }
  }
  details_ = texts.closeRun(begin);
}

// A comparer's detail texts as views, in the table's order: detail k is items[starts[k], starts[k + 1]), one
// item for a text and one for each element of a list. Nothing is held when no details were captured.
struct CVkDetailedEntity::DetailViews {
  std::vector<std::string_view> items;
  std::vector<std::uint32_t> starts;
  std::vector<std::string> captured;  // texts captured again from the entity, which the views show
  bool held = false;

  std::size_t count(std::size_t k) const { return held && k + 1 < starts.size() ? starts[k + 1] - starts[k] : 0; }
  std::string_view item(std::size_t k, std::size_t i = 0) const {
    return i < count(k) ? items[starts[k] + i] : std::string_view();
  }
};

void CVkDetailedEntity::viewDetails(DetailViews& v) const {
  v.items.clear();
  v.starts.clear();
  v.captured.clear();
  v.held = false;
  if (digestOnly_) {
    const platform::Entity entity = reopened();
    const platform::Matrix3d& transform = *drawingTransform();
    for (const DetailProperty& p : traits_.details) {
      v.starts.push_back(static_cast<std::uint32_t>(v.captured.size()));
      if (p.list) {
        for (std::string& t : p.list(entity, transform)) v.captured.push_back(std::move(t));
      } else {
        v.captured.push_back(p.text(entity, transform));
      }
    }
    v.items.assign(v.captured.begin(), v.captured.end());
  } else if (details_.size != 0) {
    const CTextPool::Id* at = readerContext()->texts().run(details_);
    const CTextPool::Id* const end = at + details_.size;
    for (const DetailProperty& p : traits_.details) {
      if (at == end) break;
      v.starts.push_back(static_cast<std::uint32_t>(v.items.size()));
      std::size_t count = 1;
      if (p.list) {
        count = *at++;
        count = std::min(count, static_cast<std::size_t>(end - at));
      }
      for (std::size_t i = 0; i < count; ++i) v.items.push_back(text(*at++));
    }
  } else {
    return;
  }
  v.starts.push_back(static_cast<std::uint32_t>(v.items.size()));
  v.held = true;
}

std::uint64_t CVkDetailedEntity::detailDigest() const {
  DetailViews v;
  viewDetails(v);
  TextDigest digest;
  for (std::size_t k = 0; k < traits_.details.size(); ++k) {
    if (traits_.details[k].list) digest.add(static_cast<std::uint64_t>(v.count(k)));
    for (std::size_t i = 0, n = traits_.details[k].list ? v.count(k) : 1; i < n; ++i) digest.add(v.item(k, i));
  }
  return digest.value();
}

std::vector<std::string> CVkDetailedEntity::detailTexts() const {
  DetailViews v;
  viewDetails(v);
  std::vector<std::string> out;
  for (std::size_t k = 0; k < traits_.details.size(); ++k)
    if (!traits_.details[k].list && v.count(k) != 0) out.emplace_back(v.item(k));
  return out;
}

std::vector<std::vector<std::string>> CVkDetailedEntity::detailLists() const {
  DetailViews v;
  viewDetails(v);
  std::vector<std::vector<std::string>> out;
  for (std::size_t k = 0; k < traits_.details.size(); ++k) {
    if (!traits_.details[k].list || k + 1 >= v.starts.size()) continue;
    auto& list = out.emplace_back();
    for (std::size_t i = 0; i < v.count(k); ++i) list.emplace_back(v.item(k, i));
  }
  return out;
}

void CVkDetailedEntity::appendDetailMessages(std::string& out, const CVkAcadEntityBase& other) const {
  // Entities of different classes can meet when their key digests collide: every detail then differs.
  const auto* same = typeid(other) == typeid(*this) ? static_cast<const CVkDetailedEntity*>(&other) : nullptr;
  if (same && digestOnly_ && same->digestOnly_ && valuesDigest_ == same->valuesDigest_) return;
  // Each thread compares one pair at a time; the views' buffers are kept from pair to pair.
  thread_local DetailViews mine, theirs;
  viewDetails(mine);
  if (same) same->viewDetails(theirs);
  else theirs.held = false;
  for (std::size_t k = 0; k < traits_.details.size(); ++k) {
    const DetailProperty& p = traits_.details[k];
    if (p.list) {
      // Lists are compared element by element: "顶点个数不一样," once when their lengths differ, else
      // "第%d个" and the message for each index whose texts differ.
      const std::size_t count = mine.count(k);
      if (!same || !theirs.held || count != theirs.count(k)) {
        out += "顶点个数不一样,";
        continue;
      }
      for (std::size_t i = 0; i < count; ++i) {
        if (CTextPool::equal(mine.item(k, i), theirs.item(k, i))) continue;
        platform::formatTo(out, "第%d个", {static_cast<long long>(i)});
        out += p.message;
      }
    } else if (!same || !mine.held || !theirs.held || !CTextPool::equal(mine.item(k), theirs.item(k))) {
      out += p.message;
    }
  }
}

bool CVkDetailedEntity::digestOwnTexts(TextDigest& digest) const {
  if (!isCompared(kCodeDetails) || traits_.details.empty()) return false;
  digest.add(detailDigest());
  return true;
}

void CVkDetailedEntity::appendDifferences(const CVkAcadEntityBase& other, std::string& out) {
  CVkAcadEntityBase::appendDifferences(other, out);
  if (isCompared(kCodeDetails)) appendDetailMessages(out, other);
}
