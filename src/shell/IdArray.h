// A growing array of object ids with the host's growth rule for id arrays.
#pragma once

#include <cstddef>
#include <memory>

#include "platform/database.h"

class CIdArray {
 public:
  static constexpr std::size_t kGrowLength = 8;
  static constexpr std::size_t kByteThreshold = 65536;
  static constexpr std::size_t kLargeGrowth = 8192;

  // The capacity after one growth step from `capacity`: at least 8 slots more; doubling while the array
  // holds under 65536 bytes, then 8192 slots at a time.
  static std::size_t NextCapacity(std::size_t capacity);

  void append(platform::ObjectId id);
  std::size_t length() const { return length_; }
  std::size_t capacity() const { return capacity_; }
  platform::ObjectId operator[](std::size_t i) const { return data_[i]; }
  const platform::ObjectId* begin() const { return data_.get(); }
  const platform::ObjectId* end() const { return data_.get() + length_; }

 private:
  std::unique_ptr<platform::ObjectId[]> data_;
  std::size_t length_ = 0;
  std::size_t capacity_ = 0;
};
