#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace SystemHelper {

struct DiskFileItem {
  uint64_t size = 0;  // bytes
  std::wstring path;  // full path

  friend bool operator<(const DiskFileItem& a, const DiskFileItem& b) { return a.size < b.size; }
};

}  // namespace SystemHelper

inline constexpr size_t kLargestFileCount = 30;

// Collects the largest files offered, at most kLargestFileCount. Among equal sizes, the one already held
// stays.
class LargestFiles {
 public:
  LargestFiles() { heap_.reserve(kLargestFileCount); }

  // Calls `make_path`, which returns the file's full path, only if the file is kept.
  template <typename MakePath>
  void Offer(uint64_t size, MakePath&& make_path) {
    if (heap_.size() == kLargestFileCount) {
      if (size <= heap_.front().size) return;
      std::pop_heap(heap_.begin(), heap_.end(), Larger);
      heap_.pop_back();
    }
    heap_.push_back({size, std::forward<MakePath>(make_path)()});
    std::push_heap(heap_.begin(), heap_.end(), Larger);
  }

  // Returns the files and empties the collector.
  std::vector<SystemHelper::DiskFileItem> TakeLargestFirst() {
    std::sort_heap(heap_.begin(), heap_.end(), Larger);
    return std::exchange(heap_, {});
  }

 private:
  static bool Larger(const SystemHelper::DiskFileItem& a, const SystemHelper::DiskFileItem& b) {
    return b < a;
  }

  std::vector<SystemHelper::DiskFileItem> heap_;  // the smallest in front
};
