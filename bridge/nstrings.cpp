// NStrings: the owned list of strings, its copies, splitting at delimiters,
// joining and merging.
#include <boost/numeric/conversion/cast.hpp>
#include <cstring>
#include <new>
#include <string>
#include <utility>

#include "bridge/nstrings_p.h"

namespace qvgui_nstrings {

char* duplicate(std::string_view text) {
  char* copy = static_cast<char*>(utMallocWithCheck(text.size() + 1));
  if (!text.empty()) std::memcpy(copy, text.data(), text.size());
  copy[text.size()] = '\0';
  return copy;
}

void freeAll(char** strings, std::int32_t count) noexcept {
  if (strings == nullptr) return;
  for (std::int32_t i = 0; i < count; ++i) utFree(strings[i]);
  utFree(strings);
}

void Builder::append(std::string_view text) {
  if (count_ == capacity_) {
    const std::int32_t grown =
        boost::numeric_cast<std::int32_t>(capacity_ == 0 ? 4 : 2 * std::int64_t{capacity_});
    strings_ =
        static_cast<char**>(utReallocWithCheck(strings_, sizeof(char*) * static_cast<std::size_t>(grown)));
    capacity_ = grown;
  }
  strings_[count_] = duplicate(text);
  ++count_;
}

char** Builder::release(std::int32_t& count) noexcept {
  count = std::exchange(count_, 0);
  capacity_ = 0;
  return std::exchange(strings_, nullptr);
}

namespace {

// Length of the UTF-8 character at p: 1 for ASCII and for anything malformed,
// so only whole characters are ever compared with a delimiter or escape.
std::size_t characterLength(const char* p) noexcept {
  const auto lead = static_cast<unsigned char>(*p);
  std::size_t length = 1;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
  }
  for (std::size_t k = 1; k < length; ++k) {
    const auto c = static_cast<unsigned char>(p[k]);
    if (c < 0x80 || c > 0xBF) return 1;
  }
  return length;
}

}  // namespace

void splitInto(Builder& out, const char* text, char delimiter, char escape) {
  std::string piece;
  const char* p = text;
  while (*p != '\0') {
    const std::size_t length = characterLength(p);
    if (length == 1 && escape != '\0' && *p == escape && p[1] != '\0' && characterLength(p + 1) == 1 &&
        (p[1] == delimiter || p[1] == escape)) {
      // An escaped delimiter or escape: keep the character, drop the escape.
      piece += p[1];
      p += 2;
    } else if (length == 1 && *p == delimiter) {
      out.append(piece);
      piece.clear();
      ++p;
    } else {
      piece.append(p, length);
      p += length;
    }
  }
  out.append(piece);
}

}  // namespace qvgui_nstrings

using qvgui_nstrings::Builder;
using qvgui_nstrings::duplicate;
using qvgui_nstrings::freeAll;

// ---- Construction and copies --------------------------------------------------

NStrings::NStrings(std::int32_t count, const char* const* strings) {
  Builder builder;
  for (std::int32_t i = 0; i < count; ++i) {
    const char* s = strings != nullptr ? strings[i] : nullptr;
    builder.append(s != nullptr ? s : "");
  }
  strings_ = builder.release(count_);
}

NStrings::NStrings(const NStrings& other) : NStrings(other.count_, other.strings_) {
  format_ = other.format_;
}

NStrings::NStrings(const NStrings* other) {
  if (other != nullptr) *this = *other;
}

NStrings::NStrings(const char* text, char delimiter, char escape) {
  setUsingDelimitedString(text, delimiter, escape);
}

NStrings::NStrings(const zrArray_tag* value) { setUsingMatrix(value); }

NStrings::NStrings(NStrings&& other) noexcept
    : count_(std::exchange(other.count_, 0)),
      strings_(std::exchange(other.strings_, nullptr)),
      format_(other.format_) {}

NStrings& NStrings::operator=(const NStrings& other) {
  if (this != &other) {
    NStrings copy(other);
    *this = std::move(copy);
  }
  return *this;
}

NStrings& NStrings::operator=(NStrings&& other) noexcept {
  if (this != &other) {
    clear();
    count_ = std::exchange(other.count_, 0);
    strings_ = std::exchange(other.strings_, nullptr);
    format_ = other.format_;
  }
  return *this;
}

NStrings::~NStrings() { clear(); }

void* NStrings::operator new(std::size_t bytes) { return utMallocWithCheck(bytes); }
void NStrings::operator delete(void* p) noexcept { utFree(p); }

void NStrings::adopt(std::int32_t count, char** strings) noexcept {
  clear();
  count_ = count;
  strings_ = strings;
}

void NStrings::clear() noexcept {
  freeAll(strings_, count_);
  strings_ = nullptr;
  count_ = 0;
}

// ---- Entries ----------------------------------------------------------------------

bool NStrings::operator==(const NStrings& other) const noexcept {
  if (count_ != other.count_) return false;
  for (std::int32_t i = 0; i < count_; ++i) {
    const char* a = strings_[i] != nullptr ? strings_[i] : "";
    const char* b = other.strings_[i] != nullptr ? other.strings_[i] : "";
    if (std::strcmp(a, b) != 0) return false;
  }
  return true;
}

void NStrings::setStringAt(std::int32_t index, const char* text) {
  if (index < 0 || index >= count_) return;
  if (text == nullptr) text = "";
  char*& slot = strings_[index];
  const std::size_t length = std::strlen(text);
  if (slot != nullptr && length < std::strlen(slot)) {
    std::memmove(slot, text, length + 1);  // text may point into slot itself
    return;
  }
  char* copy = duplicate(text);
  utFree(slot);
  slot = copy;
}

char* NStrings::toString(char separator) const {
  std::string joined;
  for (std::int32_t i = 0; i < count_; ++i) {
    if (i > 0) joined += separator;
    if (strings_[i] != nullptr) joined += strings_[i];
  }
  return duplicate(joined);
}

// ---- Splitting and merging ----------------------------------------------------

void NStrings::setUsingDelimitedString(const char* text, char delimiter, char escape) {
  if (text == nullptr) return;
  Builder builder;
  qvgui_nstrings::splitInto(builder, text, delimiter, escape);
  std::int32_t count = 0;
  char** strings = builder.release(count);
  adopt(count, strings);
}

void NStrings::applyDelimiter(char delimiter) {
  Builder builder;
  for (std::int32_t i = 0; i < count_; ++i) {
    qvgui_nstrings::splitInto(builder, strings_[i] != nullptr ? strings_[i] : "", delimiter, '\0');
  }
  std::int32_t count = 0;
  char** strings = builder.release(count);
  adopt(count, strings);
}

void NStrings::mergeOntoEnd(NStrings& other) {
  if (&other == this || other.count_ == 0) return;
  if (count_ == 0) {
    std::swap(strings_, other.strings_);
    std::swap(count_, other.count_);
    return;
  }
  const std::int32_t total = boost::numeric_cast<std::int32_t>(std::int64_t{count_} + other.count_);
  strings_ =
      static_cast<char**>(utReallocWithCheck(strings_, sizeof(char*) * static_cast<std::size_t>(total)));
  std::memcpy(strings_ + count_, other.strings_, sizeof(char*) * static_cast<std::size_t>(other.count_));
  count_ = total;
  utFree(other.strings_);  // the entries now belong to this list
  other.strings_ = nullptr;
  other.count_ = 0;
}
