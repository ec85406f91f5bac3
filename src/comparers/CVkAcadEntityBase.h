// The comparer base: what every comparer captures of its entity (type, identity, common properties,
// extents, key) and the comparison of the common properties.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>

#include "comparers/CompareOptions.h"
#include "comparers/DiffRecord.h"
#include "comparers/LayerContext.h"
#include "comparers/ReadContext.h"
#include "comparers/TextPool.h"
#include "platform/database.h"
#include "platform/geometry.h"
#include "platform/text.h"

// A running 64-bit digest of texts, read eight bytes at a time; each text is closed by its length, so lists
// never run together. Alike detail texts are told by their digests alone, so the mixing is thorough.
class TextDigest {
 public:
  void add(std::string_view text);
  void add(std::uint64_t value);
  std::uint64_t value() const;

 private:
  std::uint64_t h_ = 0x243F6A8885A308D3ull;
};

// The decimal digest of a key: h = h * 131 + unit over its UTF-16 code units (32 bits, wrapping), then
// h & 0x7FFFFFFF; "0" for the empty text.
std::string keyDigest(std::string_view text);
// The same digest as a number.
std::uint32_t keyDigestValue(std::string_view text);
// The order number of the key text "0,<digest>": the digest's decimal digits as base-11 places (a digit d
// as d + 1, a missing one as 0), plus one so that the empty key comes first.
std::uint64_t keyOrderOf(std::uint32_t digest);

class CVkAcadEntityBase;

// Deletes a comparer wherever it lives: one made in its drawing's store (CReadContext::make) is only
// destroyed, as the store frees its memory in whole blocks; one made on the heap is deleted.
struct ComparerDelete {
  ComparerDelete() = default;
  template <class T>
  ComparerDelete(const std::default_delete<T>&) {}  // NOLINT: a heap comparer's pointer converts
  void operator()(CVkAcadEntityBase* comparer) const;
};
using ComparerPtr = std::unique_ptr<CVkAcadEntityBase, ComparerDelete>;

class CVkAcadEntityBase {
 public:
  CVkAcadEntityBase() = default;
  virtual ~CVkAcadEntityBase();
  CVkAcadEntityBase(const CVkAcadEntityBase&) = delete;
  CVkAcadEntityBase& operator=(const CVkAcadEntityBase&) = delete;

  // Captures the entity; transform is the load transform (the drawing's base-point transform).
  virtual void load(const platform::Entity& entity, platform::Matrix3d transform);
  // Compares this comparer (destination) with another of the same class (source); the caller owns the record.
  std::unique_ptr<CDiffType> compare(const CVkAcadEntityBase& other);
  // Appends the record text of compare() to out: the description, then the message of every difference.
  // The pairing compares through it, so that pairs found alike cost no record.
  virtual void appendDifferences(const CVkAcadEntityBase& other, std::string& out);
  // Captures the type-specific detail texts; nothing in the base.
  virtual void loadDetail(const platform::Entity& entity, platform::Matrix3d transform);

  // The display name of the entity's type ("直线图元 "), which every record text starts with.
  virtual std::string_view description() const;
  // "0,<digest of the full key>", or empty for a comparer that never set a key.
  std::string keyText() const;
  // The order of key texts as a number: equal keys give equal numbers, and numbers compare as the texts do.
  std::uint64_t keyOrder() const { return hasKey_ ? keyOrderOf(keyDigest_) : 0; }
  std::string_view dxfName() const { return text(dxfName_); }
  std::string_view colorText() const { return text(commonTexts().color); }
  std::string_view layerText() const { return text(commonTexts().layer); }
  std::string_view linetypeText() const { return text(commonTexts().linetype); }
  std::string_view lineweightText() const { return text(commonTexts().lineweight); }
  std::string_view zText() const { return text(zText_); }
  std::string_view textStyleText() const { return text(textStyleText_); }
  platform::ErrorStatus extentsStatus() const { return static_cast<platform::ErrorStatus>(extentsStatus_); }
  // The entity's extents placed in its drawing. Most comparers keep none and compute them again from their
  // entity, which outlives them: only the few that differ need them. Safe on any thread once loaded.
  platform::Extents3d placedExtents() const;
  platform::Handle handle() const { return handle_; }
  platform::ObjectId objectId() const { return objectId_; }

  // Digests for finding alike partners among many entities of one key. The common digest covers the compared
  // common texts; the full digest adds the class and its own compared texts. b.compare(a) can find them
  // alike only when their common digests are equal and, when b has texts of its own, their full digests too.
  struct Digests {
    std::uint64_t common;
    std::uint64_t full;  // the common digest when the class has no texts of its own
    bool ownTexts;
  };
  std::uint64_t commonDigest() const;
  Digests digests() const;
  // Adds the texts this class compares beyond the common ones; false when it compares none, so that a
  // comparer of another class may still be found alike to this one.
  virtual bool digestOwnTexts(TextDigest& digest) const;

  // Set by the factory before load: the drawing's read context (which also gives the layers and the
  // settings) and the transform that places the entity in the drawing.
  void setContexts(CReadContext* readerContext, const platform::Matrix3d* drawingTransform) {
    readerContext_ = readerContext;
    drawingTransform_ = drawingTransform;
  }
  const CompareOptions& options() const;
  // The settings test: is the property class with this code compared?
  bool isCompared(int code) const { return options().isCompared(code); }

 protected:
  using TextId = CTextPool::Id;
  // What keys use of an entity's extents: placed in the drawing, and the minimum and maximum Z under the load
  // transform, where a magnitude below 0.009 reads 0.0 so that no "-0.00" is ever printed.
  struct LoadedExtents {
    platform::Extents3d placed;
    double minZ = 0.0, maxZ = 0.0;
  };
  // What load() does for every class: the type, the common texts, the extents and the identity. Returns the
  // extents, which keys use and comparers need not keep.
  LoadedExtents loadCommon(const platform::Entity& entity, const platform::Matrix3d& transform);
  // Keys the comparer by its full key text ("LINE,0.00,0.00,10.00,5.00"): only the digest is kept, which
  // is all that pairing and the key text need.
  void setKeyFrom(std::string_view fullKey);
  void setZText(std::string_view z) { zText_ = intern(z); }
  void setTextStyleText(std::string_view s) { textStyleText_ = intern(s); }
  const platform::Matrix3d* drawingTransform() const { return drawingTransform_; }
  // Whether the entity being loaded can be opened again from this comparer: its drawing is the read
  // context's, and the transform that places it is at hand.
  bool canReopen(const platform::Entity& entity) const {
    return readerContext_ && readerContext_->database() == &entity.database() && drawingTransform_;
  }
  // Whether the load transform is the one that places the entity in its drawing (a drawing's own entities).
  bool loadedAsPlaced(const platform::Matrix3d& transform) const {
    return !drawingTransform_ || std::memcmp(drawingTransform_, &transform, sizeof transform) == 0;
  }
  // The loaded entity, opened again; only where canReopen held when it was loaded.
  platform::Entity reopened() const { return readerContext_->database()->openEntity(objectId_); }
  // The contexts set by the factory, handed on to comparers made for an entity's contents.
  CReadContext* readerContext() const { return readerContext_; }
  const CLayerContext* layerContext() const { return readerContext_ ? readerContext_->layers() : nullptr; }

  // The layer, colour, linetype and lineweight texts, remembered by the read context for the entities that
  // share what gives them.
  void loadCommonTexts(const platform::Entity& entity);
  // The drawing's texts. A comparer made without a read context holds no texts but the empty one; asking
  // such a comparer to keep one is a fault of its maker.
  CTextPool& pool() const;
  TextId intern(std::string_view text);
  std::string_view text(TextId id) const { return readerContext_ ? readerContext_->texts().view(id) : std::string_view(); }
  // Whether this comparer's text `mine` equals the other comparer's text `theirs`.
  bool sameText(TextId mine, const CVkAcadEntityBase& other, TextId theirs) const {
    if (readerContext_ == other.readerContext_ && mine == theirs) return true;
    return CTextPool::equal(text(mine), other.text(theirs));
  }

 private:
  // The members are ordered to pack: a drawing holds hundreds of thousands of comparers.
  struct Common;
  static const Common kCommon[6];
  const CommonTexts& commonTexts() const;
  TextId idOf(const Common& c) const;
  // The placed extents, where they cannot be computed again: kept in the drawing's store, or on the heap
  // (owned) for a comparer without one.
  const platform::Extents3d* keptExtents_ = nullptr;
  platform::Handle handle_ = 0;
  platform::ObjectId objectId_;
  std::uint32_t commonTexts_ = 0;  // the layer, colour, linetype and lineweight texts, by their number
  TextId dxfName_ = CTextPool::kEmpty;
  TextId zText_ = CTextPool::kEmpty;
  TextId textStyleText_ = CTextPool::kEmpty;
  std::uint32_t keyDigest_ = 0;
  CReadContext* readerContext_ = nullptr;
  const platform::Matrix3d* drawingTransform_ = nullptr;
  bool hasKey_ = false;
  std::uint8_t displayName_ = 0;  // the type's display name, by its place in the table
  std::uint8_t extentsStatus_ = 0;
  bool inStore_ = false;  // made in a drawing's comparer store rather than on the heap
  bool ownsExtents_ = false;  // keptExtents_ is on the heap
  template <class T>
  friend ComparerPtr makeComparer(CReadContext* context);
  friend struct ComparerDelete;

 public:
  // Pairing state: matched once paired; excluded entities count as handled from the start.
  std::uint8_t matched = 0;
  std::uint8_t excluded = 0;
};

// Makes a comparer of class T in the store of its drawing's read context, or on the heap without one.
template <class T>
ComparerPtr makeComparer(CReadContext* context) {
  if (!context) return ComparerPtr(new T());
  T* made = new (context->comparers().allocate(sizeof(T), alignof(T))) T();
  made->inStore_ = true;
  return ComparerPtr(made);
}

// The display name of a DXF type name ("LINE" -> "直线图元 "); unlisted names give "代理实体图元".
std::string_view typeDisplayName(std::string_view dxfName);
// Brings two points whose order does not matter into one order (the end points of a line): swapped when
// a.x - b.x > 1e-5; with x equal within 1e-5 their y and z are swapped when a.y - b.y > 1e-5; with y equal
// too, their z when a.z - b.z > 1e-5.
void orderCanonically(platform::Point3d& a, platform::Point3d& b);

// The equality test of entities sharing a key: b.compare(a); when the text is b's description both are
// matched and the answer is yes.
bool isSameAs(CVkAcadEntityBase& a, CVkAcadEntityBase& b);
// The test of a one-to-one pair: both are matched whatever the result; a differing record is handed out.
bool compareWith(CVkAcadEntityBase& a, CVkAcadEntityBase& b, std::unique_ptr<CDiffType>& record);
