// The id array's growth.
#include "shell/IdArray.h"

#include <algorithm>

std::size_t CIdArray::NextCapacity(std::size_t capacity) {
  const std::size_t growth = capacity * sizeof(platform::ObjectId) < kByteThreshold ? capacity : kLargeGrowth;
  return capacity + std::max(growth, kGrowLength);
}

void CIdArray::append(platform::ObjectId id) {
  if (length_ == capacity_) {
    const std::size_t grown = NextCapacity(capacity_);
    auto data = std::make_unique<platform::ObjectId[]>(grown);
    std::copy(begin(), end(), data.get());
    data_ = std::move(data);
    capacity_ = grown;
  }
  data_[length_++] = id;
}
