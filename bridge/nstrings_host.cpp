// NStrings and host values: cell arrays, character matrices and double
// vectors in both directions, and the flat interface of string lists.
#include <cmath>
#include <cstdio>
#include <memory>
#include <string>

#include "bridge/array_p.h"
#include "bridge/nstrings_p.h"
#include "geometry/messages_p.h"

namespace {

[[noreturn]] void raiseBadArguments(const zrArray_tag* value) {
  qvgui_messages::raise::nstringsBadArguments(zrGetClassName(value));
}

// "%g", with the host's spelling of the non-finite values.
std::string formatNumber(double value) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value < 0 ? "-Inf" : "Inf";
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%g", value);
  return buffer;
}

struct FreeWithZr {
  void operator()(char* p) const noexcept { zrFree(p); }
};

std::string charArrayText(const zrArray_tag* array) {
  std::unique_ptr<char, FreeWithZr> text(zrArrayToString(array));
  return text ? std::string(text.get()) : std::string();
}

void appendCell(qvgui_nstrings::Builder& out, const zrArray_tag* cellArray, const zrArray_tag* cell) {
  if (cell == nullptr || (zrIsEmpty(cell) && (zrIsChar(cell) || zrIsNumeric(cell) || zrIsCell(cell)))) {
    out.append("");
  } else if (zrIsChar(cell)) {
    out.append(charArrayText(cell));
  } else if (zrIsNumeric(cell) && zrGetNumberOfElements(cell) == 1) {
    out.append(formatNumber(gk::detail::numericElement(cell, 0)));
  } else {
    raiseBadArguments(cellArray);
  }
}

}  // namespace

void NStrings::setUsingMatrix(const zrArray_tag* value) {
  if (value == nullptr) return;
  qvgui_nstrings::Builder builder;
  if (zrIsCell(value)) {
    const zrSize n = zrGetNumberOfElements(value);
    for (zrSize k = 0; k < n; ++k) appendCell(builder, value, zrGetCell(value, k));
  } else if (zrIsChar(value)) {
    const std::vector<std::u16string> rows = zrCharMatrixToStrings_UTF16(value);
    for (std::u16string row : rows) {
      // Several rows were padded to a common width; a single row is exact text.
      if (rows.size() > 1) {
        const std::size_t last = row.find_last_not_of(u' ');
        row.erase(last == std::u16string::npos ? 0 : last + 1);
      }
      builder.append(utUTF16ToUTF8(row));
    }
  } else if (zrIsDouble(value)) {
    // A double matrix that is not a vector is deliberately not an error.
    if (!zrIsVector(value) && !zrIsEmpty(value)) return;
    const double* data = zrGetPr(value);
    const zrSize n = zrGetNumberOfElements(value);
    for (zrSize k = 0; k < n; ++k) builder.append(formatNumber(data[k]));
  } else {
    raiseBadArguments(value);
  }
  std::int32_t count = 0;
  char** strings = builder.release(count);
  adopt(count, strings);
}

zrArray_tag* NStrings::toCellArray() const {
  gui_objects::ZrArrayPtr cell(zrCreateCellMatrix(static_cast<zrSize>(count_), 1));
  for (std::int32_t i = 0; i < count_; ++i) {
    zrSetCell(cell.get(), static_cast<zrSize>(i), zrCreateString(strings_[i] != nullptr ? strings_[i] : ""));
  }
  return cell.release();
}

zrArray_tag* NStrings::toMatrix() const {
  switch (format_) {
    case CharMatrix: {
      std::vector<const char*> rows(static_cast<std::size_t>(count_));
      for (std::int32_t i = 0; i < count_; ++i) rows[i] = strings_[i] != nullptr ? strings_[i] : "";
      zrArray_tag* matrix = zrCreateCharMatrixFromStrings(rows.size(), rows.data());
      zrChar* chars = zrGetChars(matrix);
      const zrSize n = zrGetNumberOfElements(matrix);
      for (zrSize k = 0; k < n; ++k) {
        if (chars[k] == 0) chars[k] = u' ';
      }
      return matrix;
    }
    case CellArray:
      return toCellArray();
  }
  return nullptr;
}

// ---- Flat interface -------------------------------------------------------------

zrArray_tag* NStrings_to_CellArray(const NStrings* strings) {
  return strings != nullptr ? strings->toCellArray() : NStrings().toCellArray();
}

char* NStrings_to_string(const NStrings* strings) {
  // The line feed is the conventional separator of multi-line text.
  return strings != nullptr ? strings->toString('\n') : nullptr;
}

NStrings* copy_NStrings(const NStrings* strings) {
  return strings != nullptr ? new NStrings(*strings) : nullptr;
}

void free_NStrings(NStrings* strings) { delete strings; }

NStrings* Matrix_to_NStrings(const zrArray_tag* value) { return new NStrings(value); }

NStrings* delimited_string_to_NStrings(const char* text, const char* delimiter, const char* escape) {
  if (delimiter == nullptr || *delimiter == '\0') return new NStrings(text, '\n', '\0');
  if (text == nullptr || *text == '\0') return new NStrings();
  return new NStrings(text, delimiter[0], escape != nullptr ? escape[0] : '\0');
}
