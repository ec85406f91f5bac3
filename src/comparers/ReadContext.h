// What the comparers of one drawing share: the memory they live in, the pool of their texts, the common texts
// remembered, and while it is read the work budget for walking into blocks, the blocks being walked, and the
// warnings the walk gives.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "comparers/TextPool.h"
#include "platform/database.h"

class CLayerContext;
struct CompareOptions;

// Memory for one drawing's comparers, handed out in order from large blocks that are freed together: a
// drawing makes hundreds of thousands of comparers and drops them all at once.
class CComparerStore {
 public:
  CComparerStore() = default;
  ~CComparerStore();
  CComparerStore(const CComparerStore&) = delete;
  CComparerStore& operator=(const CComparerStore&) = delete;

  // Room for an object; alignment is a power of two no stricter than the heap's.
  void* allocate(std::size_t bytes, std::size_t alignment);
  // The size of the next block, for what a drawing is expected to hold.
  void reserve(std::size_t bytes);
  // The bytes of all blocks taken so far.
  std::size_t capacity() const { return capacity_; }

 private:
  struct Block {
    void* memory;
    std::size_t bytes;
  };
  std::vector<Block> blocks_;
  std::byte* next_ = nullptr;
  std::byte* end_ = nullptr;
  std::size_t nextBlock_ = std::size_t{64} << 10;
  std::size_t capacity_ = 0;
};

// The common texts an entity's layer and its own colour, linetype and lineweight give, by what gives them:
// the entities of a drawing share dozens to thousands of such combinations, so most find theirs remembered.
struct CommonTextsKey {
  std::uint64_t layerId = 0;
  const void* layers = nullptr;  // the layer context that answered
  std::uint64_t linetypeScaleBits = 0;
  std::int32_t color = 0, lineWeight = 0;
  bool operator==(const CommonTextsKey&) const = default;
};
struct CommonTexts {
  CTextPool::Id layer = CTextPool::kEmpty, linetypeName = CTextPool::kEmpty, color = CTextPool::kEmpty,
                linetype = CTextPool::kEmpty, lineweight = CTextPool::kEmpty;
};

class CReadContext {
 public:
  // The budget grows with the drawing: every entity of every block record may be loaded a number of times
  // over, with a floor ten times what the most nested drawings we know load (a comparer loaded costs about
  // two hundred bytes and a microsecond or two).
  static constexpr std::size_t kBudgetFloor = 20000;
  static constexpr std::size_t kBudgetPerEntity = 32;
  // The first block of the comparer store, per entity of the drawing: a comparer takes about a hundred bytes,
  // and some entities load more for their blocks' contents.
  static constexpr std::size_t kComparerBytesPerEntity = 160;

  CReadContext(const platform::Database& db, std::string drawingName);
  // A context for a drawing of so many entities in all its block records.
  explicit CReadContext(std::string drawingName, std::size_t entities = 0);

  // The entities loaded inside blocks so far, and how many the drawing allows.
  std::size_t used() const { return used_; }
  std::size_t budget() const { return budget_; }
  // What the walk survived, for the run's warnings.
  const std::vector<std::string>& warnings() const { return warnings_; }
  // The memory of the drawing's comparers; they must be destroyed before this context.
  CComparerStore& comparers() { return comparers_; }
  // Common texts are kept once and named by their number, which comparers keep in place of four texts.
  // The number of those remembered for an entity of this key, layer name and linetype name, or
  // kUnknownTexts; remember() numbers new ones and remembers them.
  static constexpr std::uint32_t kUnknownTexts = 0xFFFFFFFFu;
  std::uint32_t commonTexts(const CommonTextsKey& key, std::string_view layerName, std::string_view linetype) const;
  std::uint32_t remember(const CommonTextsKey& key, const CommonTexts& texts);
  // The common texts of a number; number 0 holds empty texts.
  const CommonTexts& commonTextsAt(std::uint32_t number) const { return commonSets_[number]; }
  // The texts of the drawing's comparers; they live as long as this context.
  CTextPool& texts() { return texts_; }
  const CTextPool& texts() const { return texts_; }
  // The drawing the comparers were made of, when the context was made for one: it outlives them, so a
  // comparer may open its entity again.
  const platform::Database* database() const { return database_; }
  // The layers the comparers' ByLayer properties come from and the settings they compare by, set before
  // the first comparer is made; both outlive the comparers. Either may be null (no layers, every setting on).
  void use(const CLayerContext* layers, const CompareOptions* options) {
    layers_ = layers;
    options_ = options;
  }
  const CLayerContext* layers() const { return layers_; }
  const CompareOptions* options() const { return options_; }

 private:
  friend class CBlockWalk;
  std::string drawingName_;
  const platform::Database* database_ = nullptr;
  const CLayerContext* layers_ = nullptr;
  const CompareOptions* options_ = nullptr;
  std::size_t budget_;
  std::size_t used_ = 0;
  bool spent_ = false;
  bool warnedCycle_ = false, warnedNesting_ = false;
  std::vector<platform::ObjectId> walking_;  // the blocks being walked, outermost first
  std::vector<std::string> warnings_;
  CComparerStore comparers_;
  CTextPool texts_;
  std::vector<CommonTexts> commonSets_ = std::vector<CommonTexts>(1);
  std::vector<CommonTextsKey> commonKeys_ = std::vector<CommonTextsKey>(1);  // what gave each of commonSets_
  static std::size_t slotOf(const CommonTextsKey& key, std::string_view layerName, std::string_view linetype);
  // Files a remembered number in the first free slot from where its key and names point.
  void place(std::uint32_t number);
  // The numbers of the remembered sets, by open addressing in a table a power of two in size: the key,
  // layer and linetype names lead to a slot, and a search walks on from there to the first empty one.
  std::vector<std::uint32_t> common_ = std::vector<std::uint32_t>(1024, kUnknownTexts);
};

// One walk into a block's contents, for as long as it lives. It is allowed when the block is not already
// being walked (a reference cycle), nesting stays within bounds, and the block's entities fit in what is
// left of the budget; once they do not, no later walk of the drawing is allowed and the context carries
// one warning naming the block. Without a context nothing is walked.
class CBlockWalk {
 public:
  CBlockWalk(CReadContext* context, const platform::BlockRecord& block);
  ~CBlockWalk();
  CBlockWalk(const CBlockWalk&) = delete;
  CBlockWalk& operator=(const CBlockWalk&) = delete;

  explicit operator bool() const { return entered_; }

 private:
  CReadContext* context_;
  bool entered_ = false;
};
