// Comparer of every entity that no other comparer takes: compared generically through its group list.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "comparers/CVkAcadEntityBase.h"

class CVkCustomEntity final : public CVkAcadEntityBase {
 public:
  void load(const platform::Entity& entity, platform::Matrix3d transform) override;
  void appendDifferences(const CVkAcadEntityBase& other, std::string& out) override;
  // The group text, when details are compared.
  bool digestOwnTexts(TextDigest& digest) const override;
  // Captures the compared groups: every group but those the common properties cover, each whose
  // property code is compared, sorted by group code and joined as ",code,value" pairs.
  void loadDetail(const platform::Entity& entity, platform::Matrix3d transform) override;

  std::string_view groupText() const { return text(groupText_); }

 private:
  // Builds the group text from the group list; the list itself is not kept, only its text is compared.
  void captureGroups(const platform::ResBufList& groups, const platform::Matrix3d& transform);

  TextId groupText_ = CTextPool::kEmpty;
};
