// Number lists and the numeric property parsers built on them: scalars, points,
// 4-by-4 matrices, M-by-N matrices and the dimensions of a matrix literal.
#include <charconv>
#include <cmath>
#include <limits>

#include "bridge/parse_p.h"

namespace gui_objects::convert_from_string_utils {

namespace detail {

void raiseParse() { throw ParseException(); }

std::string_view textOrFail(const char* text) {
  if (text == nullptr || *text == '\0') raiseParse();
  return std::string_view(text);
}

std::string_view trimOrFail(std::string_view text, std::string_view leading, std::string_view trailing) {
  const std::size_t first = text.find_first_not_of(leading);
  if (first == std::string_view::npos) raiseParse();
  const std::size_t last = text.find_last_not_of(trailing);
  if (last == std::string_view::npos || last < first) raiseParse();
  return text.substr(first, last - first + 1);
}

namespace {

constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

// from_chars reports overflow and underflow alike; the C conversion gives
// +-HUGE_VAL for one and +-0 for the other. Tell them apart by the decimal
// exponent of the first significant digit.
double outOfRangeValue(std::string_view number) noexcept {
  const bool negative = !number.empty() && number[0] == '-';
  long position = 0;  // power of ten of the first significant digit
  bool found = false;
  std::size_t i = (!number.empty() && (number[0] == '-' || number[0] == '+')) ? 1 : 0;
  long integerDigits = 0;
  for (; i < number.size() && isDigit(number[i]); ++i) {
    if (found || number[i] != '0') {
      found = true;
      ++integerDigits;
    }
  }
  position = integerDigits - 1;
  if (!found && i < number.size() && number[i] == '.') {
    for (++i, position = -1; i < number.size() && isDigit(number[i]) && number[i] == '0'; ++i) --position;
  }
  while (i < number.size() && number[i] != 'e' && number[i] != 'E') ++i;
  long exponent = 0;
  if (i < number.size()) {
    ++i;
    const bool negativeExponent = i < number.size() && number[i] == '-';
    if (i < number.size() && (number[i] == '-' || number[i] == '+')) ++i;
    for (; i < number.size() && isDigit(number[i]); ++i) {
      if (exponent < 1000000000L) exponent = exponent * 10 + (number[i] - '0');
    }
    if (negativeExponent) exponent = -exponent;
  }
  const double magnitude = (position + exponent >= 0) ? std::numeric_limits<double>::infinity() : 0.0;
  return negative ? -magnitude : magnitude;
}

}  // namespace

bool convertToken(std::string_view token, double& value) noexcept {
  // The C conversion skips leading white space of any kind.
  while (!token.empty() && (token[0] == '\n' || token[0] == '\r' || token[0] == '\v' || token[0] == '\f')) {
    token.remove_prefix(1);
  }
  // Only plain decimal numbers: no hexadecimal forms and no spelled-out
  // infinities or NaNs in any case but the three exact words below.
  std::size_t i = 0;
  const std::size_t n = token.size();
  if (i < n && (token[i] == '+' || token[i] == '-')) ++i;
  std::size_t digits = 0;
  for (; i < n && isDigit(token[i]); ++i) ++digits;
  if (i < n && token[i] == '.') {
    for (++i; i < n && isDigit(token[i]); ++i) ++digits;
  }
  if (digits > 0) {
    if (i < n && (token[i] == 'e' || token[i] == 'E')) {
      std::size_t j = i + 1;
      if (j < n && (token[j] == '+' || token[j] == '-')) ++j;
      if (j < n && isDigit(token[j])) {
        while (j < n && isDigit(token[j])) ++j;
        i = j;
      }
    }
    std::string_view number = token.substr(0, i);
    const char* begin = number.data() + (number[0] == '+' ? 1 : 0);
    const auto result = std::from_chars(begin, number.data() + number.size(), value);
    if (result.ec == std::errc::result_out_of_range) value = outOfRangeValue(number);
    return true;
  }
  if (token == "nan") {
    value = std::copysign(std::numeric_limits<double>::quiet_NaN(), -1.0);
    return true;
  }
  if (token == "inf" || token == "-inf") {
    value =
        token[0] == '-' ? -std::numeric_limits<double>::infinity() : std::numeric_limits<double>::infinity();
    return true;
  }
  return false;
}

namespace {

std::size_t skipSeparators(std::string_view text, std::size_t pos) noexcept {
  while (pos < text.size() && isSeparator(text[pos])) ++pos;
  return pos;
}

// Reads the token at pos (which is not a separator) and returns the position after it.
std::size_t readToken(std::string_view text, std::size_t pos, double& value) {
  std::size_t end = pos;
  while (end < text.size() && !isSeparator(text[end])) ++end;
  if (!convertToken(text.substr(pos, end - pos), value)) raiseParse();
  return end;
}

}  // namespace

void readNumberList(std::string_view text, double* values, std::size_t count) {
  text = trimOrFail(text);
  std::size_t pos = 0;
  for (std::size_t k = 0; k < count; ++k) {
    pos = skipSeparators(text, pos);
    if (pos == text.size()) raiseParse();
    pos = readToken(text, pos, values[k]);
  }
  if (skipSeparators(text, pos) != text.size()) raiseParse();
}

void readNumberRow(std::string_view text, std::vector<double>& values) {
  text = trimOrFail(text);
  for (std::size_t pos = skipSeparators(text, 0); pos < text.size(); pos = skipSeparators(text, pos)) {
    double value = 0.0;
    pos = readToken(text, pos, value);
    values.push_back(value);
  }
}

std::vector<std::string_view> splitRows(std::string_view text) {
  std::vector<std::string_view> rows;
  for (;;) {
    const std::size_t semicolon = text.find(';');
    if (semicolon == 0) raiseParse();
    if (semicolon == std::string_view::npos) {
      rows.push_back(text);
      return rows;
    }
    if (semicolon + 1 == text.size()) raiseParse();
    rows.push_back(text.substr(0, semicolon));
    text.remove_prefix(semicolon + 1);
  }
}

}  // namespace detail

using detail::raiseParse;
using detail::readNumberList;
using detail::textOrFail;
using detail::trimOrFail;

double parse_double_scalar(const char* text) {
  double v = 0.0;
  readNumberList(textOrFail(text), &v, 1);
  return v;
}

Point2d parse_1x2_double(const char* text) {
  double v[2];
  readNumberList(textOrFail(text), v, 2);
  return Point2d(v[0], v[1]);
}

Point3d parse_1x3_double(const char* text) {
  double v[3];
  readNumberList(textOrFail(text), v, 3);
  return Point3d(v[0], v[1], v[2]);
}

Point4d parse_1x4_double(const char* text) {
  double v[4];
  readNumberList(textOrFail(text), v, 4);
  return Point4d(v[0], v[1], v[2], v[3]);
}

BoundingVolume parse_2x3_double(const char* text) {
  const std::string_view s = trimOrFail(textOrFail(text));
  const std::size_t semicolon = s.find(';');
  if (semicolon == std::string_view::npos || semicolon == 0 || semicolon + 1 == s.size()) raiseParse();
  double a[3];
  double b[3];
  readNumberList(s.substr(0, semicolon), a, 3);
  readNumberList(s.substr(semicolon + 1), b, 3);
  return BoundingVolume(Point3d(a[0], a[1], a[2]), Point3d(b[0], b[1], b[2]));
}

Matrix4x4d parse_4x4_double(const char* text) {
  std::string_view rest = trimOrFail(textOrFail(text));
  double rowMajor[16];
  for (int row = 0; row < 3; ++row) {
    const std::size_t semicolon = rest.find(';');
    if (semicolon == std::string_view::npos || semicolon == 0 || semicolon + 1 == rest.size()) raiseParse();
    readNumberList(rest.substr(0, semicolon), rowMajor + 4 * row, 4);
    rest.remove_prefix(semicolon + 1);
  }
  if (rest.find(';') != std::string_view::npos) raiseParse();
  readNumberList(rest, rowMajor + 12, 4);
  double columnMajor[16];
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) columnMajor[c * 4 + r] = rowMajor[r * 4 + c];
  }
  return Matrix4x4d(columnMajor);
}

std::vector<double> parse_mxn(const char* text, MxN& dims) {
  const std::vector<std::string_view> rows = detail::splitRows(trimOrFail(textOrFail(text)));
  std::vector<double> rowMajor;
  std::size_t columns = 0;
  for (std::size_t r = 0; r < rows.size(); ++r) {
    const std::size_t before = rowMajor.size();
    detail::readNumberRow(rows[r], rowMajor);
    const std::size_t read = rowMajor.size() - before;
    if (r == 0) columns = read;
    if (read == 0 || read != columns) raiseParse();
  }
  std::vector<double> columnMajor(rowMajor.size());
  for (std::size_t r = 0; r < rows.size(); ++r) {
    for (std::size_t c = 0; c < columns; ++c) columnMajor[c * rows.size() + r] = rowMajor[r * columns + c];
  }
  dims = MxN{rows.size(), columns};
  return columnMajor;
}

namespace {

template <class T>
ZrArrayPtr parseMatrixAs(const char* text, zrClassID cls) {
  MxN dims;
  const std::vector<double> values = parse_mxn(text, dims);
  ZrArrayPtr array(zrCreateNumericMatrix(dims.m, dims.n, cls));
  T* out = static_cast<T*>(zrGetData(array.get()));
  for (std::size_t k = 0; k < values.size(); ++k) out[k] = static_cast<T>(values[k]);
  return array;
}

}  // namespace

ZrArrayPtr parse_mxn_double(const char* text) { return parseMatrixAs<double>(text, zrDOUBLE_CLASS); }
ZrArrayPtr parse_mxn_float(const char* text) { return parseMatrixAs<float>(text, zrSINGLE_CLASS); }

// ---- Dimensions of a matrix literal ------------------------------------------

MxN parse_array_dimensions(const char* text) {
  const std::string_view s = textOrFail(text);
  if (s.front() != '[' || s.back() != ']') raiseParse();
  std::uint64_t rows = 1;
  std::uint64_t columns = 0;
  std::uint64_t inRow = 0;  // numbers counted in the current row
  bool inNumber = false;
  bool afterSemicolon = false;
  for (const char c : s) {
    if ((c >= '0' && c <= '9') || c == '-' || c == '.' || c == 'n' || c == 'a' || c == 'i' || c == 'f') {
      inNumber = true;
      afterSemicolon = false;
    } else if (c == ';' || (c == '\n' && !afterSemicolon)) {
      if (inNumber) {
        if (rows == 1) {
          ++columns;
        } else if (inRow + 1 != columns) {
          raiseParse();
        }
      }
      ++rows;
      afterSemicolon = (c == ';');
      inRow = 0;
      inNumber = false;
    } else if ((c == ' ' || c == ']') && inNumber) {
      if (rows == 1) ++columns;
      ++inRow;
      inNumber = false;
    } else {
      inNumber = false;
    }
  }
  // The closing bracket ends the last row, which must match the first unless
  // nothing was counted in it (so "[1 2;]" is two rows, as the scan says).
  if (rows > 1 && inRow != 0 && inRow != columns) raiseParse();
  return MxN{rows, columns};
}

}  // namespace gui_objects::convert_from_string_utils
