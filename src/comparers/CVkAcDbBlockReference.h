// Comparer of block references, with comparers for the block's entities and the reference's attributes.
#pragma once

#include "comparers/CVkDetailedEntity.h"
#include "comparers/PairingRules.h"

class CVkAcDbBlockReference final : public CVkDetailedEntity {
 public:
  CVkAcDbBlockReference();
  // The detail texts, then a comparer for every visible entity of the block (in drawing coordinates: the
  // drawing transform composed with the block transform) and for every visible attribute.
  void loadDetail(const platform::Entity& entity, platform::Matrix3d transform) override;
  // The table's messages, then, whatever blocks they show, the differences of their contents (when both
  // sides walked their block):
  // "块内[" and the records of the block's entities, then "属性[" and those of the attributes, each group
  // closed by "]"; a record is its own text (an added entity "...新增,", a deleted one "...删除,").
  void appendDifferences(const CVkAcadEntityBase& other, std::string& out) override;
  // The detail texts and, when details are compared, the keys and common digests of the contents.
  bool digestOwnTexts(TextDigest& digest) const override;

  const KeyedComparers& blockEntities() const { return entities_; }
  const KeyedComparers& attributeEntities() const { return attributes_; }
  // False when the block's entities were not walked: the block is missing, contains itself, lies deeper
  // than the nesting limit or past the drawing's work budget, or the comparer was made without a read context.
  bool contentLoaded() const { return contentLoaded_; }

 private:
  // Pairing marks the comparers of both sides, so the contents of the compared side change as well.
  mutable KeyedComparers entities_;
  mutable KeyedComparers attributes_;
  platform::Matrix3d contentDrawingTransform_;
  bool contentLoaded_ = false;
};
