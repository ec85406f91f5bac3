// Block references: keyed by their insertion point; compared on rotation, scale and block, then on what they
// show: the block's entities and the attributes, paired as drawings are.
#include "comparers/CVkAcDbBlockReference.h"

#include <utility>
#include <vector>

#include "comparers/CapturesBlocks.h"
#include "comparers/ComparerFactory.h"
#include "comparers/ReadContext.h"

namespace {

using platform::Accessor;

// The block's name. The host renumbers anonymous blocks (dynamic block states "*U12", tables "*T3", ...) on
// every save, so their number means nothing to the user and is left out: two saves of one drawing name the
// same anonymous block differently.
std::string blockName(const platform::Entity& e, const platform::Matrix3d&) {
  std::string name = e.text(Accessor::blockName);
  const platform::BlockRecord block = e.database().blockRecord(e.blockTableRecord());
  if (block && block.isAnonymous())
    while (!name.empty() && name.back() >= '0' && name.back() <= '9') name.pop_back();
  return name;
}

const DetailProperty kDetails[] = {
    {"旋转角度不相同,", capture::real2<Accessor::blockRotation>},        // AcDbBlockReference::rotation
    {"比例因子不相同,", capture::vector3<Accessor::blockScaleFactors>},  // AcDbBlockReference::scaleFactors
    {"块名不相同,", blockName},                                         // the block table record's name
};

const ComparerTraits kTraits{capture::positionKey, kDetails};

void resetPairing(KeyedComparers& comparers) {
  for (auto& [key, comparer] : comparers) comparer->matched = 0;
}

// The records of pairing two contents, as "<label>[<record texts>]", or nothing when they are alike.
void appendContentDifferences(std::string& out, KeyedComparers& source, KeyedComparers& destination, const char* label) {
  resetPairing(source);
  resetPairing(destination);
  std::vector<std::unique_ptr<CDiffType>> records;
  PairKeyedComparers(source, destination, records);
  if (records.empty()) return;
  out += label;
  for (const auto& r : records) out += r->text;
  out += ']';
}

// What two contents agree on when pairing them gives no record: the same keys with alike comparers. The
// sum is independent of the order in which entities of one key were filed.
std::uint64_t contentDigest(const KeyedComparers& comparers) {
  std::uint64_t sum = 0;
  for (const auto& [key, comparer] : comparers) {
    if (comparer->excluded != 0) continue;
    TextDigest d;
    d.add(key);
    d.add(comparer->commonDigest());
    sum += d.value();
  }
  return sum;
}

}  // namespace

CVkAcDbBlockReference::CVkAcDbBlockReference() : CVkDetailedEntity(kTraits) {}

void CVkAcDbBlockReference::loadDetail(const platform::Entity& entity, platform::Matrix3d transform) {
  CVkDetailedEntity::loadDetail(entity, transform);
  entities_.clear();
  attributes_.clear();
  contentLoaded_ = false;
  const platform::Database& db = entity.database();
  const platform::Matrix3d& drawing = drawingTransform() ? *drawingTransform() : transform;

  // Attributes are stored in drawing coordinates already.
  for (platform::ObjectId id : entity.attributes()) {
    const platform::Entity attribute = db.openEntity(id);
    if (!attribute || !attribute.isVisible()) continue;
    auto c = createComparer(attribute, transform, readerContext(), drawingTransform());
    if (c) addByKey(attributes_, std::move(c));
  }
  sortByKey(attributes_);

  const platform::BlockRecord block = db.blockRecord(entity.blockTableRecord());
  const CBlockWalk walk(readerContext(), block);
  if (!walk) return;
  const platform::Matrix3d toWcs = entity.blockTransform();
  const platform::Matrix3d contentLoad = transform * toWcs;
  contentDrawingTransform_ = drawing * toWcs;
  for (platform::ObjectId id : block.entityIds()) {
    const platform::Entity inner = db.openEntity(id);
    if (!inner || !inner.isVisible()) continue;
    auto c = createComparer(inner, contentLoad, readerContext(), &contentDrawingTransform_);
    if (c) addByKey(entities_, std::move(c));
  }
  sortByKey(entities_);
  contentLoaded_ = true;
}

bool CVkAcDbBlockReference::digestOwnTexts(TextDigest& digest) const {
  if (!CVkDetailedEntity::digestOwnTexts(digest)) return false;
  digest.add(contentDigest(entities_));
  digest.add(contentDigest(attributes_));
  return true;
}

void CVkAcDbBlockReference::appendDifferences(const CVkAcadEntityBase& other, std::string& out) {
  CVkDetailedEntity::appendDifferences(other, out);
  if (!isCompared(kCodeDetails)) return;
  const auto* source = dynamic_cast<const CVkAcDbBlockReference*>(&other);
  if (!source) return;
  // The contents are paired whatever the blocks are named: a renamed block showing the same entities is
  // the same drawing to the user. Contents one side did not walk (cycle, nesting, budget) are not compared.
  if (source->contentLoaded_ && contentLoaded_)
    appendContentDifferences(out, source->entities_, entities_, "块内[");
  appendContentDifferences(out, source->attributes_, attributes_, "属性[");
}
