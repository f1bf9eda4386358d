// UTF-8 <-> UTF-16 conversion. Malformed input (bad lead or continuation
// bytes, overlong forms, surrogates encoded in UTF-8, lone surrogates in
// UTF-16) becomes U+FFFD, one per maximal bad subsequence.

#include "host_p.h"

namespace {

constexpr char32_t kReplacement = 0xFFFD;

void appendUTF16(std::u16string& out, char32_t cp) {
  if (cp < 0x10000) {
    out.push_back(static_cast<char16_t>(cp));
  } else {
    cp -= 0x10000;
    out.push_back(static_cast<char16_t>(0xD800 + (cp >> 10)));
    out.push_back(static_cast<char16_t>(0xDC00 + (cp & 0x3FF)));
  }
}

void appendUTF8(std::string& out, char32_t cp) {
  if (cp < 0x80) {
    out.push_back(static_cast<char>(cp));
  } else if (cp < 0x800) {
    out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else if (cp < 0x10000) {
    out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  }
}

}  // namespace

// Follows the Unicode "maximal subpart" practice: a truncated but so far valid
// sequence yields one U+FFFD and decoding resumes at the offending byte.
std::u16string utUTF8ToUTF16(std::string_view utf8) {
  std::u16string out;
  out.reserve(utf8.size());
  const std::size_t n = utf8.size();
  std::size_t i = 0;
  while (i < n) {
    const unsigned char b0 = static_cast<unsigned char>(utf8[i]);
    if (b0 < 0x80) {
      out.push_back(b0);
      ++i;
      continue;
    }
    int length = 0;
    char32_t cp = 0;
    unsigned char lo = 0x80, hi = 0xBF;  // allowed range of the second byte
    if (b0 >= 0xC2 && b0 <= 0xDF) {
      length = 2, cp = b0 & 0x1F;
    } else if (b0 >= 0xE0 && b0 <= 0xEF) {
      length = 3, cp = b0 & 0x0F;
      if (b0 == 0xE0) lo = 0xA0;  // overlong
      if (b0 == 0xED) hi = 0x9F;  // surrogates
    } else if (b0 >= 0xF0 && b0 <= 0xF4) {
      length = 4, cp = b0 & 0x07;
      if (b0 == 0xF0) lo = 0x90;  // overlong
      if (b0 == 0xF4) hi = 0x8F;  // beyond U+10FFFF
    } else {
      out.push_back(kReplacement);
      ++i;
      continue;
    }
    std::size_t j = i + 1;
    bool ok = true;
    for (int k = 1; k < length; ++k, ++j) {
      const unsigned char b = j < n ? static_cast<unsigned char>(utf8[j]) : 0;
      const unsigned char low = k == 1 ? lo : 0x80, high = k == 1 ? hi : 0xBF;
      if (j >= n || b < low || b > high) {
        ok = false;
        break;
      }
      cp = (cp << 6) | (b & 0x3F);
    }
    appendUTF16(out, ok ? cp : kReplacement);
    i = j;
  }
  return out;
}

std::string utUTF16ToUTF8(std::u16string_view utf16) {
  std::string out;
  out.reserve(utf16.size());
  const std::size_t n = utf16.size();
  for (std::size_t i = 0; i < n; ++i) {
    const char16_t u = utf16[i];
    if (u >= 0xD800 && u <= 0xDBFF && i + 1 < n && utf16[i + 1] >= 0xDC00 && utf16[i + 1] <= 0xDFFF) {
      appendUTF8(out, 0x10000 + ((char32_t(u) - 0xD800) << 10) + (char32_t(utf16[i + 1]) - 0xDC00));
      ++i;
    } else if (u >= 0xD800 && u <= 0xDFFF) {
      appendUTF8(out, kReplacement);
    } else {
      appendUTF8(out, u);
    }
  }
  return out;
}
