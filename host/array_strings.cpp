// Host arrays of text: char rows and blank-padded char matrices (UTF-16 code
// units), their conversion back to UTF-8, and function handles.

#include <algorithm>
#include <cctype>
#include <cstring>
#include <new>

#include "arrays_p.h"

using namespace qvhost;

namespace {

std::u16string toUTF16(const char* utf8) {
  try {
    return utUTF8ToUTF16(utf8 != nullptr ? std::string_view(utf8) : std::string_view());
  } catch (const std::bad_alloc&) {
    throwOutOfMemory(utf8 != nullptr ? std::strlen(utf8) * 2 : 0);
  }
}

zrArray_tag* charRow(std::u16string_view text) {
  zrArray_tag* a = newArray(zrCHAR_CLASS, {1, text.size()});
  if (!text.empty()) std::memcpy(a->data, text.data(), text.size() * sizeof(zrChar));
  return a;
}

}  // namespace

zrArray_tag* zrCreateString(const char* utf8) {
  if (utf8 == nullptr) return newArray(zrCHAR_CLASS, {0, 0});
  return charRow(toUTF16(utf8));
}

zrArray_tag* zrCreateString_UTF16(const zrChar* text) {
  if (text == nullptr) return newArray(zrCHAR_CLASS, {0, 0});
  return charRow(std::u16string_view(text));
}

zrArray_tag* zrCreateCharMatrixFromStrings(zrSize m, const char** rows) {
  if (m > 0 && rows == nullptr)
    throwHostError("Tavrix::host::InvalidArgument", "zrCreateCharMatrixFromStrings", "null rows");
  std::vector<std::u16string> texts;
  zrSize width = 0;
  try {
    texts.reserve(m);
    for (zrSize r = 0; r < m; ++r) {
      texts.push_back(toUTF16(rows[r]));
      width = std::max(width, texts.back().size());
    }
  } catch (const std::bad_alloc&) {
    throwOutOfMemory(m);
  }
  zrArray_tag* a = newArray(zrCHAR_CLASS, {m, width});
  auto* chars = static_cast<zrChar*>(a->data);
  for (zrSize r = 0; r < m; ++r) {
    for (zrSize c = 0; c < width; ++c) chars[r + m * c] = c < texts[r].size() ? texts[r][c] : u' ';
  }
  return a;
}

zrArray_tag* zrCreateFunctionHandle(const char* functionName) {
  if (functionName == nullptr || !std::isalpha(static_cast<unsigned char>(*functionName))) {
    throwHostError("Tavrix::host::InvalidFunctionName", functionName != nullptr ? functionName : "(null)");
  }
  zrArray_tag* a = newArray(zrFUNCTION_CLASS, {1, 1});
  try {
    a->functionName = functionName;
  } catch (const std::bad_alloc&) {
    zrDestroyArray(a);
    throwOutOfMemory(std::strlen(functionName));
  }
  return a;
}

char* zrArrayToString(const zrArray_tag* array) {
  if (require(array, "zrArrayToString")->classID != zrCHAR_CLASS) return nullptr;
  std::string utf8;
  try {
    utf8 = utUTF16ToUTF8(std::u16string_view(static_cast<const zrChar*>(array->data), elementCount(array)));
  } catch (const std::bad_alloc&) {
    throwOutOfMemory(elementCount(array) * 3);
  }
  auto* out = static_cast<char*>(zrMalloc(utf8.size() + 1));
  std::memcpy(out, utf8.c_str(), utf8.size() + 1);
  return out;
}

std::vector<std::u16string> zrCharMatrixToStrings_UTF16(const zrArray_tag* array) {
  std::vector<std::u16string> rows;
  if (require(array, "zrCharMatrixToStrings_UTF16")->classID != zrCHAR_CLASS) return rows;
  const zrSize m = zrGetM(array), n = zrGetN(array);
  const auto* chars = static_cast<const zrChar*>(array->data);
  try {
    rows.resize(m);
    for (zrSize r = 0; r < m; ++r) {
      rows[r].resize(n);
      for (zrSize c = 0; c < n; ++c) rows[r][c] = chars[r + m * c];
    }
  } catch (const std::bad_alloc&) {
    throwOutOfMemory(m * n * sizeof(zrChar));
  }
  return rows;
}
