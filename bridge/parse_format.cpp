// Plot-format strings ("r--o") and string-list literals ("{'a' b; c 'd e'}").
#include <cstring>
#include <memory>
#include <string>

#include "bridge/parse_p.h"

namespace gui_objects::convert_from_string_utils {

namespace {

// ---- Plot format ------------------------------------------------------------

struct NamedCode {
  char letter;
  const char* code;
  const char* rest;  // letters of the full name after the first
};

// Black is decided before this table is consulted (see takeColour).
constexpr NamedCode kColours[] = {
    {'b', "b", "lue"},    {'c', "c", "yan"}, {'g', "g", "reen"}, {'k', "k", ""},
    {'m', "m", "agenta"}, {'r', "r", "ed"},  {'w', "w", "hite"}, {'y', "y", "ellow"},
};

constexpr NamedCode kMarkers[] = {
    {'*', "*", ""},        {'+', "+", ""},         {'.', ".", ""},      {'<', "<", ""}, {'>', ">", ""},
    {'^', "^", ""},        {'o', "o", ""},         {'v', "v", ""},      {'x', "x", ""}, {'d', "d", "iamond"},
    {'h', "h", "exagram"}, {'p', "p", "entagram"}, {'s', "s", "quare"},
};

template <std::size_t N>
const NamedCode* find(const NamedCode (&table)[N], char c) noexcept {
  for (const NamedCode& entry : table) {
    if (entry.letter == c) return &entry;
  }
  return nullptr;
}

// Consumes as many of `rest` as match the text after position i; returns the
// position of the first character not consumed.
std::size_t consumeName(const char* text, std::size_t i, const char* rest) noexcept {
  for (; *rest != '\0' && text[i] != '\0' && text[i] == *rest; ++rest) ++i;
  return i;
}

struct FreeWithUt {
  void operator()(char* p) const noexcept { utFree(p); }
};

}  // namespace

bool stringToColorMarkerLineStyle(const char* text, std::string& colour, std::string& lineStyle,
                                  std::string& marker) {
  colour.clear();
  lineStyle.clear();
  marker.clear();
  if (text == nullptr) return true;
  const std::size_t length = std::strlen(text);
  std::unique_ptr<char, FreeWithUt> lowered(static_cast<char*>(utMallocWithCheck(length + 1)));
  char* s = lowered.get();
  for (std::size_t k = 0; k <= length; ++k) {
    const char c = text[k];
    s[k] = (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
  }

  std::size_t i = 0;
  while (s[i] != '\0') {
    const char c = s[i];
    if (c == ' ') {
      ++i;
      continue;
    }
    if (const NamedCode* entry = find(kColours, c)) {
      if (!colour.empty()) return false;
      // Only the second letter after "b" is looked at: "bla" is black, "bl" blue.
      const bool black = c == 'b' && s[i + 1] != '\0' && s[i + 2] == 'a';
      colour = black ? "k" : entry->code;
      i = consumeName(s, i + 1, black ? "lack" : entry->rest);
      continue;
    }
    if (c == ':' || c == '-') {
      if (!lineStyle.empty()) return false;
      if (c == '-' && (s[i + 1] == '-' || s[i + 1] == '.')) {
        lineStyle = std::string{'-', s[i + 1]};
        i += 2;
      } else {
        lineStyle = std::string(1, c);
        ++i;
      }
      continue;
    }
    const NamedCode* entry = find(kMarkers, c);
    if (entry == nullptr || !marker.empty()) return false;
    marker = entry->code;
    i = consumeName(s, i + 1, entry->rest);
  }
  return true;
}

// ---- String lists -----------------------------------------------------------

ZrArrayPtr parse_strings(const char* text) {
  using detail::isSeparator;
  using detail::raiseParse;
  const std::string_view s = detail::trimOrFail(detail::textOrFail(text), " \t[({", " \t])}");

  std::vector<std::vector<std::string>> rows(1);
  std::size_t i = 0;
  while (i < s.size()) {
    const char c = s[i];
    if (isSeparator(c)) {
      ++i;
    } else if (c == ';') {
      if (rows.back().empty()) raiseParse();
      rows.emplace_back();
      ++i;
    } else if (c == '\'') {
      std::string word;
      for (++i;; ++i) {
        if (i == s.size()) raiseParse();  // unterminated quote
        if (s[i] == '\'') {
          if (i + 1 < s.size() && s[i + 1] == '\'') {
            word += '\'';
            ++i;
            continue;
          }
          ++i;
          break;
        }
        word += s[i];
      }
      if (i < s.size() && !isSeparator(s[i]) && s[i] != ';') raiseParse();
      rows.back().push_back(std::move(word));
    } else {
      const std::size_t start = i;
      while (i < s.size() && !isSeparator(s[i]) && s[i] != ';') ++i;
      rows.back().emplace_back(s.substr(start, i - start));
    }
  }
  const std::size_t columns = rows.front().size();
  for (const auto& row : rows) {
    if (row.empty() || row.size() != columns) raiseParse();
  }
  ZrArrayPtr cell(zrCreateCellMatrix(rows.size(), columns));
  for (std::size_t r = 0; r < rows.size(); ++r) {
    for (std::size_t c = 0; c < columns; ++c) {
      zrSetCell(cell.get(), c * rows.size() + r, zrCreateString(rows[r][c].c_str()));
    }
  }
  return cell;
}

}  // namespace gui_objects::convert_from_string_utils
