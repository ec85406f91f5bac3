// The per-drawing budget and cycle guard for walking into blocks.
#include "comparers/ReadContext.h"

#include <algorithm>
#include <utility>

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
    : drawingName_(std::move(drawingName)),
      budget_(std::max(kBudgetFloor, kBudgetPerEntity * drawingSize(db))) {}

CBlockWalk::CBlockWalk(CReadContext* context, const platform::BlockRecord& block) : context_(context) {
  if (!context || !block || context->spent_) return;
  auto& walking = context->walking_;
  if (walking.size() >= kMaxNesting || std::find(walking.begin(), walking.end(), block.objectId()) != walking.end())
    return;
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
