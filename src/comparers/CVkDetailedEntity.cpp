// Loading and comparing of table-declared comparers.
#include "comparers/CVkDetailedEntity.h"

#include <typeinfo>

#include "platform/text.h"

void CVkDetailedEntity::load(const platform::Entity& entity, platform::Matrix3d transform) {
  CVkAcadEntityBase::load(entity, transform);
  KeyTexts keys;
  traits_.key(entity, transform, *this, keys);
  setFullKey(std::move(keys.fullKey));
  setZText(std::move(keys.zText));
  setTextStyleText(std::move(keys.textStyle));
  if (isCompared(kCodeDetails)) loadDetail(entity, transform);
}

void CVkDetailedEntity::loadDetail(const platform::Entity& entity, platform::Matrix3d transform) {
  texts_.clear();
  lists_.clear();
  for (const DetailProperty& p : traits_.details) {
    if (p.list) lists_.push_back(p.list(entity, transform));
    else texts_.push_back(p.text(entity, transform));
  }
}

void appendListMessages(std::string& out, const std::vector<std::string>& mine, const std::vector<std::string>& theirs,
                        const char* message) {
  if (mine.size() != theirs.size()) {
    out += "顶点个数不一样,";
    return;
  }
  for (std::size_t i = 0; i < mine.size(); ++i) {
    if (mine[i] == theirs[i]) continue;
    platform::formatTo(out, "第%d个", {static_cast<long long>(i)});
    out += message;
  }
}

void CVkDetailedEntity::appendDetailMessages(const CVkAcadEntityBase& other) {
  // Entities of different classes can meet when their key digests collide: every detail then differs.
  const auto* same = typeid(other) == typeid(*this) ? static_cast<const CVkDetailedEntity*>(&other) : nullptr;
  std::size_t text = 0, list = 0;
  for (const DetailProperty& p : traits_.details) {
    if (p.list) {
      const std::vector<std::string>& mine = list < lists_.size() ? lists_[list] : std::vector<std::string>();
      if (same && list < same->lists_.size()) appendListMessages(extraMessage_, mine, same->lists_[list], p.message);
      else extraMessage_ += "顶点个数不一样,";
      ++list;
    } else {
      const bool equal = same && text < texts_.size() && text < same->texts_.size() && texts_[text] == same->texts_[text];
      if (!equal) extraMessage_ += p.message;
      ++text;
    }
  }
}

bool CVkDetailedEntity::digestOwnTexts(TextDigest& digest) const {
  if (!isCompared(kCodeDetails) || traits_.details.empty()) return false;
  for (const std::string& t : texts_) digest.add(t);
  for (const std::vector<std::string>& list : lists_) {
    digest.add(static_cast<std::uint64_t>(list.size()));
    for (const std::string& t : list) digest.add(t);
  }
  return true;
}

std::unique_ptr<CDiffType> CVkDetailedEntity::compare(const CVkAcadEntityBase& other) {
  extraMessage_.clear();
  auto record = CVkAcadEntityBase::compare(other);
  if (!isCompared(kCodeDetails)) {
    record->text = message_;
    return record;
  }
  appendDetailMessages(other);
  record->text = message_ + extraMessage_;
  return record;
}
