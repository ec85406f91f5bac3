// Loading and comparing of table-declared comparers.
#include "comparers/CVkDetailedEntity.h"

#include <typeinfo>

#include "platform/text.h"

void CVkDetailedEntity::load(const platform::Entity& entity, platform::Matrix3d transform) {
  CVkAcadEntityBase::load(entity, transform);
  // The key functions append to buffers the thread reuses from entity to entity.
  thread_local KeyTexts keys;
  keys.fullKey.clear();
  keys.zText.clear();
  keys.textStyle.clear();
  traits_.key(entity, transform, *this, keys);
  setKeyFrom(keys.fullKey);
  setZText(keys.zText);
  setTextStyleText(keys.textStyle);
  if (isCompared(kCodeDetails)) loadDetail(entity, transform);
}

void CVkDetailedEntity::loadDetail(const platform::Entity& entity, platform::Matrix3d transform) {
  details_ = {};
  if (traits_.details.empty()) return;
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

// A cursor over a comparer's captured details.
struct CVkDetailedEntity::DetailCursor {
  const CTextPool::Id* at = nullptr;
  const CTextPool::Id* end = nullptr;
  // The next text's id (the empty text past the end).
  CTextPool::Id text() { return at < end ? *at++ : CTextPool::kEmpty; }
  // The next list: its ids and length (none past the end).
  std::pair<const CTextPool::Id*, std::size_t> list() {
    if (at >= end) return {at, 0};
    const std::size_t count = *at++;
    const CTextPool::Id* ids = at;
    at += count;
    return {ids, count};
  }
};

CVkDetailedEntity::DetailCursor CVkDetailedEntity::cursor() const {
  if (details_.size == 0) return {};
  const CTextPool::Id* ids = readerContext()->texts().run(details_);
  return {ids, ids + details_.size};
}

template <class Text, class List>
void CVkDetailedEntity::forEachDetail(Text text, List list) const {
  DetailCursor c = cursor();
  for (const DetailProperty& p : traits_.details) {
    if (c.at == c.end) return;
    if (p.list) {
      const auto [ids, count] = c.list();
      list(ids, count);
    } else {
      text(c.text());
    }
  }
}

std::vector<std::string> CVkDetailedEntity::detailTexts() const {
  std::vector<std::string> out;
  forEachDetail([&](CTextPool::Id id) { out.emplace_back(text(id)); }, [](const CTextPool::Id*, std::size_t) {});
  return out;
}

std::vector<std::vector<std::string>> CVkDetailedEntity::detailLists() const {
  std::vector<std::vector<std::string>> out;
  forEachDetail([](CTextPool::Id) {},
                [&](const CTextPool::Id* ids, std::size_t count) {
                  auto& list = out.emplace_back();
                  for (std::size_t i = 0; i < count; ++i) list.emplace_back(text(ids[i]));
                });
  return out;
}

void CVkDetailedEntity::appendDetailMessages(std::string& out, const CVkAcadEntityBase& other) const {
  // Entities of different classes can meet when their key digests collide: every detail then differs.
  const auto* same = typeid(other) == typeid(*this) ? static_cast<const CVkDetailedEntity*>(&other) : nullptr;
  DetailCursor mine = cursor();
  DetailCursor theirs = same ? same->cursor() : DetailCursor();
  for (const DetailProperty& p : traits_.details) {
    if (p.list) {
      // Lists are compared element by element: "顶点个数不一样," once when their lengths differ, else
      // "第%d个" and the message for each index whose texts differ.
      const bool theirsHeld = theirs.at < theirs.end;
      const auto [myIds, myCount] = mine.list();
      const auto [theirIds, theirCount] = theirs.list();
      if (!same || !theirsHeld || myCount != theirCount) {
        out += "顶点个数不一样,";
        continue;
      }
      for (std::size_t i = 0; i < myCount; ++i) {
        if (sameText(myIds[i], *same, theirIds[i])) continue;
        platform::formatTo(out, "第%d个", {static_cast<long long>(i)});
        out += p.message;
      }
    } else {
      const bool held = mine.at < mine.end && theirs.at < theirs.end;
      const CTextPool::Id a = mine.text(), b = theirs.text();
      if (!same || !held || !sameText(a, *same, b)) out += p.message;
    }
  }
}

bool CVkDetailedEntity::digestOwnTexts(TextDigest& digest) const {
  if (!isCompared(kCodeDetails) || traits_.details.empty()) return false;
  forEachDetail([&](CTextPool::Id id) { digest.add(text(id)); }, [](const CTextPool::Id*, std::size_t) {});
  forEachDetail([](CTextPool::Id) {},
                [&](const CTextPool::Id* ids, std::size_t count) {
                  digest.add(static_cast<std::uint64_t>(count));
                  for (std::size_t i = 0; i < count; ++i) digest.add(text(ids[i]));
                });
  return true;
}

void CVkDetailedEntity::appendDifferences(const CVkAcadEntityBase& other, std::string& out) {
  CVkAcadEntityBase::appendDifferences(other, out);
  if (isCompared(kCodeDetails)) appendDetailMessages(out, other);
}
