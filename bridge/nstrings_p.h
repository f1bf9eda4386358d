// Building blocks of NStrings: checked string copies and an owning builder
// that makes a new list content without touching the old one until it is done.
#pragma once

#include <cstdint>
#include <string_view>

#include "qvgui/bridge.h"

namespace qvgui_nstrings {

// A copy in checked host memory; null copies as "".
[[nodiscard]] char* duplicate(std::string_view text);
void freeAll(char** strings, std::int32_t count) noexcept;

// Owns the strings appended so far; on destruction frees whatever was not
// released, so a failure half-way through leaves nothing behind.
class Builder {
 public:
  Builder() = default;
  Builder(const Builder&) = delete;
  Builder& operator=(const Builder&) = delete;
  ~Builder() { freeAll(strings_, count_); }

  void append(std::string_view text);
  [[nodiscard]] std::int32_t count() const noexcept { return count_; }
  // Hands over the array (null when empty) and its count.
  [[nodiscard]] char** release(std::int32_t& count) noexcept;

 private:
  char** strings_ = nullptr;
  std::int32_t count_ = 0;
  std::int32_t capacity_ = 0;
};

// Appends the pieces of text split at unescaped delimiters (escape 0: none).
void splitInto(Builder& out, const char* text, char delimiter, char escape);

}  // namespace qvgui_nstrings
