// The comparer store, the common texts remembered, and the per-drawing budget and cycle guard for walking
// into blocks.
#include "comparers/ReadContext.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

#include "platform/pages.h"
#include "platform/text.h"

namespace {

// Blocks nest a few levels in real drawings; deeper nesting only comes from damaged drawings.
constexpr std::size_t kMaxNesting = 16;

std::size_t drawingSize(const platform::Database& db) {
  std::size_t n = 0;
  for (platform::ObjectId id : db.blockRecordIds()) n += db.blockRecord(id).entityCount();
  return n;
}

}  // namespace

CReadContext::CReadContext(const platform::Database& db, std::string drawingName)
    : CReadContext(std::move(drawingName), drawingSize(db)) {
  database_ = &db;
}

CReadContext::CReadContext(std::string drawingName, std::size_t entities)
    : drawingName_(std::move(drawingName)), budget_(std::max(kBudgetFloor, kBudgetPerEntity * entities)) {
  // A comparer captures a dozen texts of some ten bytes each, half of them new.
  texts_.reserve(96 * entities, 16 * entities);
  comparers_.reserve(kComparerBytesPerEntity * entities);
}

void* CComparerStore::allocate(std::size_t bytes, std::size_t alignment) {
  const auto aligned = [&](std::byte* at) {
    const auto address = reinterpret_cast<std::uintptr_t>(at);
    return at + ((alignment - address % alignment) % alignment);
  };
  std::byte* at = next_ ? aligned(next_) : nullptr;
  if (!at || static_cast<std::size_t>(end_ - at) < bytes) {
    // Blocks double up to a few megabytes, so that small drawings stay small and large ones take few.
    constexpr std::size_t kLargestBlock = std::size_t{8} << 20;
    const std::size_t size = platform::blockSize(std::max(nextBlock_, bytes + alignment));
    blocks_.reserve(blocks_.size() + 1);
    blocks_.push_back({platform::allocateBlock(size), size});
    capacity_ += size;
    next_ = static_cast<std::byte*>(blocks_.back().memory);
    end_ = next_ + size;
    nextBlock_ = std::min(kLargestBlock, std::max(nextBlock_, size) * 2);
    at = aligned(next_);
  }
  next_ = at + bytes;
  return at;
}

namespace {

// A cheap summary of a name for choosing a slot: its length and its first and last eight bytes. A slot's
// names are compared in full before it is used, so names that summarise alike only share a slot.
std::uint64_t nameSummary(std::string_view name) {
  std::uint64_t head = 0, tail = 0;
  const std::size_t n = std::min<std::size_t>(name.size(), 8);
  if (n != 0) {
    std::memcpy(&head, name.data(), n);
    std::memcpy(&tail, name.data() + name.size() - n, n);
  }
  return (head * 0x9E3779B97F4A7C15ULL) ^ (tail + name.size()) * 0xC2B2AE3D27D4EB4FULL;
}

}  // namespace

std::size_t CReadContext::slotOf(const CommonTextsKey& key, std::string_view layerName, std::string_view linetype) {
  std::uint64_t mixed = nameSummary(layerName) ^ (nameSummary(linetype) >> 7) ^ (key.layerId * 0x9E3779B97F4A7C15ULL) ^
                        key.linetypeScaleBits;
  mixed ^= (static_cast<std::uint64_t>(static_cast<std::uint32_t>(key.color)) << 32) | static_cast<std::uint32_t>(key.lineWeight);
  mixed *= 0xFF51AFD7ED558CCDULL;
  return static_cast<std::size_t>(mixed >> 32);
}

std::uint32_t CReadContext::commonTexts(const CommonTextsKey& key, std::string_view layerName,
                                       std::string_view linetype) const {
  const std::size_t mask = common_.size() - 1;
  for (std::size_t at = slotOf(key, layerName, linetype) & mask;; at = (at + 1) & mask) {
    const std::uint32_t number = common_[at];
    if (number == kUnknownTexts) return kUnknownTexts;
    const CommonTexts& texts = commonSets_[number];
    if (commonKeys_[number] == key && CTextPool::equal(texts_.view(texts.layer), layerName) &&
        CTextPool::equal(texts_.view(texts.linetypeName), linetype))
      return number;
  }
}

void CReadContext::place(std::uint32_t number) {
  const CommonTexts& texts = commonSets_[number];
  const std::size_t mask = common_.size() - 1;
  std::size_t at = slotOf(commonKeys_[number], texts_.view(texts.layer), texts_.view(texts.linetypeName)) & mask;
  while (common_[at] != kUnknownTexts) at = (at + 1) & mask;
  common_[at] = number;
}

std::uint32_t CReadContext::remember(const CommonTextsKey& key, const CommonTexts& texts) {
  const auto number = static_cast<std::uint32_t>(commonSets_.size());
  commonSets_.push_back(texts);
  commonKeys_.push_back(key);
  // The table stays at most half full, so that a search ends within a few slots.
  if (2 * commonSets_.size() > common_.size()) {
    common_.assign(2 * common_.size(), kUnknownTexts);
    for (std::uint32_t known = 1; known < number; ++known) place(known);
  }
  place(number);
  return number;
}

CComparerStore::~CComparerStore() {
  for (const Block& block : blocks_) platform::releaseBlock(block.memory, block.bytes);
}

void CComparerStore::reserve(std::size_t bytes) { nextBlock_ = std::max(nextBlock_, bytes); }

CBlockWalk::CBlockWalk(CReadContext* context, const platform::BlockRecord& block) : context_(context) {
  if (!context || !block || context->spent_) return;
  auto& walking = context->walking_;
  // A block that holds itself, directly or through others, cannot be drawn: the host refuses to make one,
  // so the drawing is damaged. Its inner references are compared on their own properties, as are
  // references nested deeper than any real drawing nests them.
  const bool cycle = std::find(walking.begin(), walking.end(), block.objectId()) != walking.end();
  if (cycle || walking.size() >= kMaxNesting) {
    bool& warned = cycle ? context->warnedCycle_ : context->warnedNesting_;
    if (!warned)
      context->warnings_.push_back(context->drawingName_ + ": block '" + std::string(block.name()) +
                                   (cycle ? "' holds a reference to itself, directly or through other blocks"
                                          : "' is nested more than " + std::to_string(kMaxNesting) + " levels deep") +
                                   "; such references are compared on their own properties");
    warned = true;
    return;
  }
  const std::size_t cost = block.entityCount();
  if (cost > context->budget_ - context->used_) {
    context->spent_ = true;
    context->warnings_.push_back(context->drawingName_ + ": block '" + std::string(block.name()) +
                                 "': nested content beyond the work budget is not compared; references past it "
                                 "are compared on their own properties");
    return;
  }
  context->used_ += cost;
  walking.push_back(block.objectId());
  entered_ = true;
}

CBlockWalk::~CBlockWalk() {
  if (entered_) context_->walking_.pop_back();
}
