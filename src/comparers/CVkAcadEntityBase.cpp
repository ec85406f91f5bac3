// The comparer base, the type display names, the key digest and the pair tests.
#include "comparers/CVkAcadEntityBase.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <stdexcept>
#include <typeinfo>
#include <memory>
#include <vector>
#include <utility>

#include "platform/text.h"

using platform::fmt;

namespace {

const CompareOptions& defaultOptions() {
  static const CompareOptions all;
  return all;
}

struct DisplayName {
  std::string_view dxf;
  std::string_view display;
};

// The program's own wording, blanks included: "3DSOLID" reads as a wedge and "SOLID" as a 3D solid,
// "MLINE" shares the polyline's name, "INSERT" has no trailing blank, the OLE names lead with one.
constexpr DisplayName kDisplayNames[] = {
    {"3DFACE", "3D面图元 "},
    {"3DSOLID", "楔形实体图元 "},
    {"ACAD_PROXY_ENTITY", "代理实体图元 "},
    {"ARC", "弧线图元 "},
    {"ATTDEF", "属性定义图元 "},
    {"ATTRIB", "属性图元 "},
    {"BODY", "体图元 "},
    {"CIRCLE", "圆图元 "},
    {"DIMENSION", "尺寸标注图元 "},
    {"ELLIPSE", "椭圆图元 "},
    {"HATCH", "填充图元 "},
    {"HELIX", "螺旋线图元 "},
    {"IMAGE", "图片(影像)图元 "},
    {"WIPEOUT", "遮罩图元 "},
    {"INSERT", "块或参照图元"},
    {"LEADER", "引线图元 "},
    {"LIGHT", "光照图元 "},
    {"LINE", "直线图元 "},
    {"LWPOLYLINE", "多段线图元 "},
    {"MLINE", "多段线图元 "},
    {"MTEXT", "多行文字图元 "},
    {"OLEFRAME", " OLEFRAME 图元 "},
    {"OLE2FRAME", " OLE2FRAME 图元 "},
    {"POINT", "点图元 "},
    {"POLYLINE", "多段线图元 "},
    {"RAY", "射线图元 "},
    {"REGION", "面域图元 "},
    {"SECTION", "截面图元 "},
    {"SHAPE", "型图元 "},
    {"SOLID", "三维实体图元 "},
    {"TRACE", "跟踪图元 "},
    {"SPLINE", "样条曲线图元 "},
    {"SUBDIVISION", "分步曲面图元 "},
    {"SURFACE", "曲面图元 "},
    {"ACAD_TABLE", "表格图元 "},
    {"TEXT", "文字图元 "},
    {"TOLERANCE", "公差图元 "},
    {"UNDERLAY", "基础图元 "},
    {"VERTEX", "顶点图元 "},
    {"VIEWPORT", "浮动视口 "},
};
constexpr std::string_view kOtherDisplayName = "代理实体图元";

// Magnitudes below this print as "0.00" or "-0.00"; the Z accessors answer 0.0 instead.
constexpr double kZeroZ = 0.009;
// Points closer than this in a coordinate count as equal when ordering end points.
constexpr double kOrderTolerance = 1e-5;

}  // namespace

namespace {

// The place of a DXF type name's display name in the table; past its end for unlisted names.
std::uint8_t displayNameIndex(std::string_view dxfName) {
  // Every entity asks: the names are looked up among those of their length only.
  constexpr std::size_t kLongest = 17;
  static_assert(std::size(kDisplayNames) < 255);
  static const auto byLength = [] {
    std::array<std::vector<std::uint8_t>, kLongest + 1> table;
    for (std::size_t i = 0; i < std::size(kDisplayNames); ++i)
      table.at(kDisplayNames[i].dxf.size()).push_back(static_cast<std::uint8_t>(i));
    return table;
  }();
  if (dxfName.size() <= kLongest)
    for (const std::uint8_t i : byLength[dxfName.size()])
      if (CTextPool::equal(kDisplayNames[i].dxf, dxfName)) return i;
  return static_cast<std::uint8_t>(std::size(kDisplayNames));
}

std::string_view displayNameAt(std::uint8_t index) {
  return index < std::size(kDisplayNames) ? kDisplayNames[index].display : kOtherDisplayName;
}

}  // namespace

std::string_view typeDisplayName(std::string_view dxfName) { return displayNameAt(displayNameIndex(dxfName)); }

std::uint32_t keyDigestValue(std::string_view text) {
  // Keys are nearly always ASCII, whose bytes are their UTF-16 code units; a key that is not is digested
  // again from its UTF-16 form. Four units at a time: h * 131^4 + a * 131^3 + b * 131^2 + c * 131 + d.
  const auto* p = reinterpret_cast<const unsigned char*>(text.data());
  const std::size_t n = text.size();
  std::uint32_t h = 0;
  unsigned seen = 0;
  std::size_t i = 0;
  for (; i + 4 <= n; i += 4) {
    seen |= p[i] | p[i + 1] | p[i + 2] | p[i + 3];
    h = h * 294499921u + p[i] * 2248091u + p[i + 1] * 17161u + p[i + 2] * 131u + p[i + 3];
  }
  for (; i < n; ++i) {
    seen |= p[i];
    h = h * 131u + p[i];
  }
  if (seen >= 0x80) {
    h = 0;
    for (char16_t unit : platform::utf8ToUtf16(text)) h = h * 131u + unit;
  }
  return h & 0x7FFFFFFFu;
}

std::string keyDigest(std::string_view text) { return fmt("%d", static_cast<long long>(keyDigestValue(text))); }

std::uint64_t keyOrderOf(std::uint32_t digest) {
  // The i-th digit from the left of an n-digit number takes the place of 11^(9 - i): walking the digits from
  // the right, the last one's place is 11^(10 - n) and each next one's eleven times as much.
  static constexpr std::uint64_t kPlaces[] = {1,         11,         121,         1331,          14641,         161051,
                                              1771561,   19487171,   214358881,   2357947691ULL, 25937424601ULL};
  int n = 1;
  for (std::uint32_t rest = digest / 10; rest != 0; rest /= 10) ++n;
  std::uint64_t place = kPlaces[10 - n], order = 0;
  do {
    order += (digest % 10 + 1) * place;
    place *= 11;
    digest /= 10;
  } while (digest != 0);
  return order + 1;
}

void orderCanonically(platform::Point3d& a, platform::Point3d& b) {
  if (a.x - b.x > kOrderTolerance) {
    std::swap(a, b);
  } else if (std::fabs(a.x - b.x) < kOrderTolerance) {
    if (a.y - b.y > kOrderTolerance) {
      std::swap(a.y, b.y);
      std::swap(a.z, b.z);
    } else if (std::fabs(a.y - b.y) < kOrderTolerance && a.z - b.z > kOrderTolerance) {
      std::swap(a.z, b.z);
    }
  }
}

void TextDigest::add(std::uint64_t value) {
  h_ = (h_ ^ value) * 0x9E3779B97F4A7C15ull;
  h_ ^= h_ >> 29;
  h_ = (h_ << 27 | h_ >> 37) * 0xBF58476D1CE4E5B9ull;
}

void TextDigest::add(std::string_view text) {
  const char* at = text.data();
  std::size_t left = text.size();
  for (; left >= 8; left -= 8, at += 8) {
    std::uint64_t word;
    std::memcpy(&word, at, 8);
    add(word);
  }
  std::uint64_t tail = 0;
  if (left != 0) std::memcpy(&tail, at, left);
  add(tail);
  add(static_cast<std::uint64_t>(text.size()));
}

std::uint64_t TextDigest::value() const {
  std::uint64_t h = h_;
  h = (h ^ (h >> 30)) * 0xBF58476D1CE4E5B9ull;
  h = (h ^ (h >> 27)) * 0x94D049BB133111EBull;
  return h ^ (h >> 31);
}

// The common properties compared for every class: the text, its property code and its message.
// The text is one of the common texts the read context keeps (shared) or one of the comparer's own.
struct CVkAcadEntityBase::Common {
  CTextPool::Id CommonTexts::*shared;
  CTextPool::Id CVkAcadEntityBase::*own;
  int code;
  const char* message;
};

const CVkAcadEntityBase::Common CVkAcadEntityBase::kCommon[] = {
    {&CommonTexts::layer, nullptr, kCodeLayer, "所在层不相同,"},
    {&CommonTexts::color, nullptr, kCodeColor, "颜色不相同,"},
    {&CommonTexts::linetype, nullptr, kCodeLinetype, "线型或线型比例不相同,"},
    {&CommonTexts::lineweight, nullptr, kCodeLineweight, "线宽不相同,"},
    {nullptr, &CVkAcadEntityBase::textStyleText_, kCodeTextStyle, "文本类型不相同,"},
    {nullptr, &CVkAcadEntityBase::zText_, kCodeZ, "Z坐标不相同,"},
};

const CommonTexts& CVkAcadEntityBase::commonTexts() const {
  static const CommonTexts kNone;
  return readerContext_ ? readerContext_->commonTextsAt(commonTexts_) : kNone;
}

CTextPool::Id CVkAcadEntityBase::idOf(const Common& c) const { return c.shared ? commonTexts().*c.shared : this->*c.own; }

void ComparerDelete::operator()(CVkAcadEntityBase* comparer) const {
  if (comparer && comparer->inStore_) comparer->~CVkAcadEntityBase();
  else delete comparer;
}

std::uint64_t CVkAcadEntityBase::commonDigest() const {
  TextDigest d;
  for (const Common& c : kCommon) d.add(isCompared(c.code) ? text(idOf(c)) : std::string_view());
  return d.value();
}

CVkAcadEntityBase::Digests CVkAcadEntityBase::digests() const {
  const std::uint64_t common = commonDigest();
  TextDigest d;
  d.add(common);
  d.add(typeid(*this).name());
  const bool own = digestOwnTexts(d);
  return {common, own ? d.value() : common, own};
}

bool CVkAcadEntityBase::digestOwnTexts(TextDigest&) const { return false; }

const CompareOptions& CVkAcadEntityBase::options() const {
  const CompareOptions* set = readerContext_ ? readerContext_->options() : nullptr;
  return set ? *set : defaultOptions();
}

std::string CVkAcadEntityBase::keyText() const {
  if (!hasKey_) return {};
  return "0," + std::to_string(keyDigest_);
}

CTextPool& CVkAcadEntityBase::pool() const {
  if (!readerContext_) throw std::logic_error("a comparer with texts needs its drawing's read context");
  return readerContext_->texts();
}

CTextPool::Id CVkAcadEntityBase::intern(std::string_view t) { return t.empty() ? CTextPool::kEmpty : pool().intern(t); }

void CVkAcadEntityBase::setKeyFrom(std::string_view fullKey) {
  keyDigest_ = keyDigestValue(fullKey);
  hasKey_ = true;
}

void CVkAcadEntityBase::load(const platform::Entity& entity, platform::Matrix3d transform) { loadCommon(entity, transform); }

CVkAcadEntityBase::~CVkAcadEntityBase() {
  if (ownsExtents_) delete keptExtents_;
}

namespace {

// Extents that take in a block's contents may come out coarser once the drawing's budget for walking blocks is
// spent (its blocks' boxes then stand for their contents): a later computation could differ from the first.
bool extentsTakeInBlocks(platform::DbClass c) {
  using platform::DbClass;
  return c == DbClass::BlockReference || c == DbClass::MInsertBlock || c == DbClass::Table ||
         platform::isKindOf(c, DbClass::Dimension);
}

}  // namespace

platform::Extents3d CVkAcadEntityBase::placedExtents() const {
  if (keptExtents_) return *keptExtents_;
  // loadCommon keeps none only where the entity's own drawing and the placing transform are at hand; a
  // comparer never loaded has empty extents.
  if (!readerContext_ || !readerContext_->database() || !drawingTransform_) return {};
  platform::Extents3d geom;
  reopened().getGeomExtents(geom);
  return geom.transformed(*drawingTransform_);
}

CVkAcadEntityBase::LoadedExtents CVkAcadEntityBase::loadCommon(const platform::Entity& entity,
                                                               const platform::Matrix3d& transform) {
  // The DXF name is group 0 of the entity's group list.
  const std::string_view dxfName = entity.dxfName();
  dxfName_ = intern(dxfName);
  // The message is set to the description by every compare, which is where it is read.
  displayName_ = displayNameIndex(dxfName);
  loadCommonTexts(entity);

  textStyleText_ = CTextPool::kEmpty;

  platform::Extents3d geom;
  extentsStatus_ = static_cast<std::uint8_t>(entity.getGeomExtents(geom));
  const platform::Matrix3d& placing = drawingTransform_ ? *drawingTransform_ : transform;
  LoadedExtents extents;
  extents.placed = geom.transformed(placing);
  // A drawing's own entities are loaded with the transform that places them: one transform gives both.
  const platform::Extents3d loaded = loadedAsPlaced(transform) ? extents.placed : geom.transformed(transform);
  extents.minZ = std::fabs(loaded.min.z) < kZeroZ ? 0.0 : loaded.min.z;
  extents.maxZ = std::fabs(loaded.max.z) < kZeroZ ? 0.0 : loaded.max.z;

  handle_ = entity.handle();
  objectId_ = entity.objectId();
  if (ownsExtents_) delete keptExtents_;
  keptExtents_ = nullptr;
  ownsExtents_ = false;
  if (!canReopen(entity) || extentsTakeInBlocks(entity.dbClass())) {
    if (inStore_ && readerContext_) {
      keptExtents_ = new (readerContext_->comparers().allocate(sizeof(platform::Extents3d), alignof(platform::Extents3d)))
          platform::Extents3d(extents.placed);
    } else {
      keptExtents_ = new platform::Extents3d(extents.placed);
      ownsExtents_ = true;
    }
  }
  return extents;
}

std::string_view CVkAcadEntityBase::description() const { return displayNameAt(displayName_); }

void CVkAcadEntityBase::loadCommonTexts(const platform::Entity& entity) {
  const std::string_view layerName = entity.layer();
  const std::string_view linetype = entity.linetype();
  const int color = entity.colorIndex();
  const int weight = entity.lineWeight();
  const double linetypeScale = entity.linetypeScale();
  const platform::ObjectId layerId = entity.layerId();
  const CLayerContext* layers = layerContext();
  const CommonTextsKey key{layerId.value, layers, std::bit_cast<std::uint64_t>(linetypeScale), color, weight};
  commonTexts_ = 0;
  if (readerContext_) {
    const std::uint32_t known = readerContext_->commonTexts(key, layerName, linetype);
    if (known != CReadContext::kUnknownTexts) {
      commonTexts_ = known;
      return;
    }
  }

  CommonTexts t;
  t.layer = intern(layerName);
  static const CLayerTexts kNoLayerContext{"7", "Continuous", "-3"};
  const CLayerTexts& layer = layers ? layers->lookup(layerId, layerName) : kNoLayerContext;

  if (color == 256) t.color = intern(layer.colorText);
  else if (color == 0) t.color = intern("ByBlock");
  else t.color = intern(fmt("%d", color));

  if (linetype == "ByLayer") t.linetype = intern(fmt("%s,%.2f", layer.linetypeName, linetypeScale));
  else if (linetype == "ByBlock") t.linetype = intern("ByBlock");
  else t.linetype = intern(fmt("%s,%.2f", linetype, linetypeScale));

  if (weight == -1) t.lineweight = intern(layer.lineweightText);
  else if (weight == -2) t.lineweight = intern("ByBlock");
  else t.lineweight = intern(fmt("%d", weight));

  t.linetypeName = intern(linetype);
  // Without a read context nothing is kept: the comparer holds no texts but the empty one.
  if (readerContext_) commonTexts_ = readerContext_->remember(key, t);
}

void CVkAcadEntityBase::loadDetail(const platform::Entity&, platform::Matrix3d) {}

std::unique_ptr<CDiffType> CVkAcadEntityBase::compare(const CVkAcadEntityBase& other) {
  auto record = std::make_unique<CDiffType>();
  record->setExtents(placedExtents());
  appendDifferences(other, record->text);
  record->descriptionLength = static_cast<std::uint32_t>(description().size());
  return record;
}

void CVkAcadEntityBase::appendDifferences(const CVkAcadEntityBase& other, std::string& out) {
  out.append(description());
  // Comparers of one drawing that share their common texts share their number.
  const bool sameCommon = readerContext_ == other.readerContext_ && commonTexts_ == other.commonTexts_;
  for (const Common& c : kCommon) {
    if (c.shared && sameCommon) continue;
    if (!sameText(idOf(c), other, other.idOf(c)) && isCompared(c.code)) out += c.message;
  }
}

namespace {

// A text buffer for one pair test, reused by the pair tests of the thread: most pairs are alike and need no
// record. A block reference's test runs the tests of its contents inside it, each level with its own buffer.
class PairText {
 public:
  PairText() {
    if (depth_ == levels_.size()) levels_.push_back(std::make_unique<std::string>());
    text_ = levels_[depth_++].get();
    text_->clear();
  }
  ~PairText() { --depth_; }
  PairText(const PairText&) = delete;
  PairText& operator=(const PairText&) = delete;
  std::string& text() { return *text_; }

 private:
  static thread_local std::vector<std::unique_ptr<std::string>> levels_;
  static thread_local std::size_t depth_;
  std::string* text_;
};

thread_local std::vector<std::unique_ptr<std::string>> PairText::levels_;
thread_local std::size_t PairText::depth_ = 0;

}  // namespace

bool isSameAs(CVkAcadEntityBase& a, CVkAcadEntityBase& b) {
  PairText pair;
  b.appendDifferences(a, pair.text());
  if (pair.text() != b.description()) return false;
  a.matched = 1;
  b.matched = 1;
  return true;
}

bool compareWith(CVkAcadEntityBase& a, CVkAcadEntityBase& b, std::unique_ptr<CDiffType>& record) {
  PairText pair;
  b.appendDifferences(a, pair.text());
  const std::string& text = pair.text();
  a.matched = 1;
  b.matched = 1;
  record.reset();
  if (text == b.description()) return true;
  record = std::make_unique<CDiffType>();
  record->setExtents(b.placedExtents());
  record->text = text;
  record->descriptionLength = static_cast<std::uint32_t>(b.description().size());
  return false;
}
