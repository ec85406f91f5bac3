// Comparers declared by tables: each class lists its key and its detail properties (the message and how
// the text is captured), and this class does the loading and comparing for all of them.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "comparers/CVkAcadEntityBase.h"

// How the values a detail's text (or list) is formatted from are added to a digest, bit for bit: values
// alike give texts alike, so a comparer need not format texts that are alike to be told so.
using ValuesCapture = void (*)(const platform::Entity&, const platform::Matrix3d&, TextDigest&);

// How one detail property's text (or list of texts) is captured, from the entity and the load transform,
// and where the capture has one, how its values are digested without formatting them.
template <class Text>
struct Capture {
  using Format = Text (*)(const platform::Entity&, const platform::Matrix3d&);
  Format format = nullptr;
  ValuesCapture values = nullptr;

  constexpr Capture() = default;
  constexpr Capture(std::nullptr_t) {}
  constexpr Capture(Format f, ValuesCapture v = nullptr) : format(f), values(v) {}
  Text operator()(const platform::Entity& e, const platform::Matrix3d& load) const { return format(e, load); }
  explicit constexpr operator bool() const { return format != nullptr; }
};
using TextCapture = Capture<std::string>;
// Lists (vertices and the like) are compared element by element.
using ListCapture = Capture<std::vector<std::string>>;

// One detail property. A text property appends its message when the two texts differ. A list property
// appends "顶点个数不一样," once when the lists differ in length, else "第%d个" and its message for each
// index whose texts differ. Captures return their texts; the comparer keeps them in its drawing's pool.
struct DetailProperty {
  const char* message;
  TextCapture text = nullptr;
  ListCapture list = nullptr;
};

// The texts that identify an entity: its full key and its Z text (and the text style for text-bearing types).
// A key function appends to them: they arrive empty, with the Z range of the entity's extents under the load
// transform.
struct KeyTexts {
  std::string fullKey;
  std::string zText;
  std::string textStyle;
  // What the key may use: the placed extents and their Z range (see LoadedExtents).
  platform::Extents3d placed;
  double minZ = 0.0, maxZ = 0.0;
};
using KeyCapture = void (*)(const platform::Entity&, const platform::Matrix3d&, const CVkAcadEntityBase& self,
                            KeyTexts& out);

struct ComparerTraits {
  KeyCapture key;
  std::span<const DetailProperty> details;
};

class CVkDetailedEntity : public CVkAcadEntityBase {
 public:
  // Runs the base part, builds the key and Z text, and captures the details when they are compared.
  void load(const platform::Entity& entity, platform::Matrix3d transform) override;
  // Runs the base part, then, with details compared, appends the message of every differing detail.
  void appendDifferences(const CVkAcadEntityBase& other, std::string& out) override;
  // Captures every detail text and list of the class's table.
  void loadDetail(const platform::Entity& entity, platform::Matrix3d transform) override;
  // The detail texts and lists, when details are compared and the class's table has any.
  bool digestOwnTexts(TextDigest& digest) const override;

  // The detail texts and lists in the order of the class's table (texts and lists apart).
  std::vector<std::string> detailTexts() const;
  std::vector<std::vector<std::string>> detailLists() const;

 protected:
  explicit CVkDetailedEntity(const ComparerTraits& traits) : traits_(traits) {}
  // Appends to out the detail messages of this class's table, comparing with other (of the same class or not).
  void appendDetailMessages(std::string& out, const CVkAcadEntityBase& other) const;

 private:
  struct DetailViews;
  // The detail texts as views, in the table's order, from the pool or captured again from the entity.
  void viewDetails(DetailViews& views) const;
  // The digest of the detail texts.
  std::uint64_t detailDigest() const;

  // Whether the details are kept as the digest of their values alone (see details_).
  bool digestOnly_ = false;
  const ComparerTraits& traits_;
  // The captured details. A comparer loaded with its drawing's own transform keeps only the digest of the
  // values its detail texts are formatted from (of the texts, for captures without a values capture):
  // most pairs are alike, and the texts of the few that differ are captured again from their entities,
  // which outlive the comparers. Others (loaded under another transform, or without their drawing) keep
  // their texts in the pool, in the table's order: a text's id; a list's length, then its ids.
  union {
    CTextPool::Run details_{};
    std::uint64_t valuesDigest_;
  };
};
