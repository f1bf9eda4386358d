// Small owners for memory and arrays that come from the host, so that an error
// raised half-way through a computation leaks nothing.
#pragma once

#include <cstddef>
#include <type_traits>

#include "qvgui/host.h"

namespace gui_objects::detail {

// A growable buffer of trivially copyable values in checked host memory.
template <typename T>
class CheckedBuffer {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  CheckedBuffer() = default;
  ~CheckedBuffer() { utFree(data_); }
  CheckedBuffer(const CheckedBuffer&) = delete;
  CheckedBuffer& operator=(const CheckedBuffer&) = delete;

  void push_back(const T& value) {
    if (size_ == capacity_) {
      const std::size_t grown = capacity_ == 0 ? 64 : capacity_ * 2;
      data_ = static_cast<T*>(utReallocWithCheck(data_, grown * sizeof(T)));
      capacity_ = grown;
    }
    data_[size_++] = value;
  }
  [[nodiscard]] const T* data() const noexcept { return data_; }
  [[nodiscard]] std::size_t size() const noexcept { return size_; }

 private:
  T* data_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

// Zeroed checked memory for n values, freed on scope exit.
template <typename T>
class CheckedArray {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  explicit CheckedArray(std::size_t n)
      : data_(static_cast<T*>(utCallocWithCheck(n == 0 ? 1 : n, sizeof(T)))) {}
  ~CheckedArray() { utFree(data_); }
  CheckedArray(const CheckedArray&) = delete;
  CheckedArray& operator=(const CheckedArray&) = delete;
  [[nodiscard]] T* get() const noexcept { return data_; }
  T& operator[](std::size_t k) const noexcept { return data_[k]; }

 private:
  T* data_;
};

// Owns a host array until released.
using ArrayHolder = HostArrayPtr;

}  // namespace gui_objects::detail
