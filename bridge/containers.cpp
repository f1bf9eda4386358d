// Host arrays to and from standard containers, the typed ArrayVector layouts,
// UTF-16 strings and cell arrays of strings.
#include <cmath>
#include <limits>
#include <memory>

#include "bridge/array_p.h"

namespace gk {

namespace {

// A numeric vector (or an empty array) of any class; the checks every
// container reader starts with.
void requireNumericVector(const zrArray_tag* array) {
  if (array == nullptr) detail::raiseNullArray();
  if (!zrIsNumeric(array)) detail::raiseArrayClass();
  if (!zrIsEmpty(array) && !zrIsVector(array)) detail::raiseArrayShape();
}

std::string stripTrailingBlanks(std::u16string row) {
  const std::size_t last = row.find_last_not_of(u' ');
  row.erase(last == std::u16string::npos ? 0 : last + 1);
  return utUTF16ToUTF8(row);
}

}  // namespace

// ---- Standard containers ---------------------------------------------------------

namespace stlConvert {

std::vector<double> toDoubleVector(const zrArray_tag* array) {
  requireNumericVector(array);
  std::vector<double> values(zrGetNumberOfElements(array));
  for (std::size_t k = 0; k < values.size(); ++k) values[k] = detail::numericElement(array, k);
  return values;
}

std::vector<float> toFloatVector(const zrArray_tag* array) {
  requireNumericVector(array);
  std::vector<float> values(zrGetNumberOfElements(array));
  for (std::size_t k = 0; k < values.size(); ++k)
    values[k] = static_cast<float>(detail::numericElement(array, k));
  return values;
}

std::vector<std::size_t> toSizeTVector(const zrArray_tag* array) {
  requireNumericVector(array);
  std::vector<std::size_t> values(zrGetNumberOfElements(array));
  detail::dispatchNumeric(zrGetClassID(array), [&](auto tag) {
    using T = typename decltype(tag)::type;
    const T* in = static_cast<const T*>(zrGetData(array));
    for (std::size_t k = 0; k < values.size(); ++k) {
      const T v = in[k];
      if constexpr (std::is_floating_point_v<T>) {
        // 2^64 is the first double beyond the range; NaN fails the first test.
        if (!(v >= 0) || v != std::floor(v) || v >= static_cast<T>(18446744073709551616.0))
          detail::raiseArrayData();
      } else if constexpr (std::is_signed_v<T>) {
        if (v < 0) detail::raiseArrayData();
      }
      values[k] = static_cast<std::size_t>(v);
    }
  });
  return values;
}

std::vector<std::string> toStringVector(const zrArray_tag* array) {
  if (array == nullptr) detail::raiseNullArray();
  std::vector<std::string> strings;
  if (zrIsCell(array)) {
    const zrSize n = zrGetNumberOfElements(array);
    for (zrSize k = 0; k < n; ++k) {
      const zrArray_tag* cell = zrGetCell(array, k);
      if (cell == nullptr || (zrIsEmpty(cell) && !zrIsCell(cell) && !zrIsStruct(cell))) {
        strings.emplace_back();
      } else if (zrIsChar(cell)) {
        strings.push_back(UTF16String(cell).toUTF8());
      } else {
        detail::raiseArrayClass();
      }
    }
  } else if (zrIsChar(array)) {
    const std::vector<std::u16string> rows = zrCharMatrixToStrings_UTF16(array);
    for (const std::u16string& row : rows) {
      // Several rows were padded to a common width; a single row is exact text.
      strings.push_back(rows.size() > 1 ? stripTrailingBlanks(row) : utUTF16ToUTF8(row));
    }
  } else {
    detail::raiseArrayClass();
  }
  return strings;
}

ZrArrayPtr toZrArray(const std::vector<double>& values) {
  return detail::makeMatrix(1, values.size(), values.data());
}
ZrArrayPtr toZrArray(const std::vector<float>& values) {
  return detail::makeMatrix(1, values.size(), values.data());
}
ZrArrayPtr toZrArray(const std::vector<std::size_t>& values) {
  ZrArrayPtr array(zrCreateNumericMatrix(1, values.size(), zrUINT64_CLASS));
  auto* out = static_cast<std::uint64_t*>(zrGetData(array.get()));
  for (std::size_t k = 0; k < values.size(); ++k) out[k] = values[k];
  return array;
}
ZrArrayPtr toZrArray(const std::vector<std::string>& values) { return createCellArrayFromStrings(values); }

}  // namespace stlConvert

// ---- ArrayVector layouts -------------------------------------------------------------

namespace {

// Element type and rows per value of each layout; rows 1 means a plain vector.
template <class T>
struct Layout;

template <>
struct Layout<float> {
  using Element = float;
  static constexpr std::size_t rows = 1;
  static void store(const float& v, float* out) noexcept { out[0] = v; }
  static float load(const float* in) noexcept { return in[0]; }
};

template <>
struct Layout<std::size_t> {
  using Element = std::uint64_t;
  static constexpr std::size_t rows = 1;
  static void store(const std::size_t& v, std::uint64_t* out) noexcept { out[0] = v; }
  static std::size_t load(const std::uint64_t* in) noexcept { return static_cast<std::size_t>(in[0]); }
};

// Both point types store one x, y, z column per point.
template <class P, class E>
struct PointLayout {
  using Element = E;
  static constexpr std::size_t rows = 3;
  static void store(const P& p, E* out) noexcept {
    out[0] = p.getX();
    out[1] = p.getY();
    out[2] = p.getZ();
  }
  static P load(const E* in) noexcept { return {in[0], in[1], in[2]}; }
};

template <>
struct Layout<gui_objects::Point3d> : PointLayout<gui_objects::Point3d, double> {};
template <>
struct Layout<gui_objects::Point3f> : PointLayout<gui_objects::Point3f, float> {};

template <>
struct Layout<gui_objects::Color4b> {
  using Element = std::uint8_t;
  static constexpr std::size_t rows = 4;
  static void store(const gui_objects::Color4b& c, std::uint8_t* out) noexcept {
    out[0] = c.getRed();
    out[1] = c.getGreen();
    out[2] = c.getBlue();
    out[3] = c.getAlpha();
  }
  static gui_objects::Color4b load(const std::uint8_t* in) noexcept { return {in[0], in[1], in[2], in[3]}; }
};

}  // namespace

template <class T>
ArrayVector<T>::ArrayVector(const zrArray_tag* array) {
  using L = Layout<T>;
  detail::requireClass<typename L::Element>(array);
  if (!zrIsEmpty(array)) {
    const bool fits =
        L::rows == 1 ? zrIsVector(array) : zrGetNumberOfDimensions(array) == 2 && zrGetM(array) == L::rows;
    if (!fits) detail::raiseArrayShape();
  }
  const std::size_t count = zrIsEmpty(array) ? 0 : zrGetNumberOfElements(array) / L::rows;
  const auto* in = static_cast<const typename L::Element*>(zrGetData(array));
  values_.reserve(count);
  for (std::size_t k = 0; k < count; ++k) values_.push_back(L::load(in + k * L::rows));
}

template <class T>
ZrArrayPtr ArrayVector<T>::toZrArray() const {
  using L = Layout<T>;
  ZrArrayPtr array(zrCreateNumericMatrix(L::rows, values_.size(), detail::ClassOf<typename L::Element>::id));
  auto* out = static_cast<typename L::Element*>(zrGetData(array.get()));
  for (std::size_t k = 0; k < values_.size(); ++k) L::store(values_[k], out + k * L::rows);
  return array;
}

template class ArrayVector<float>;
template class ArrayVector<gui_objects::Point3d>;
template class ArrayVector<gui_objects::Point3f>;
template class ArrayVector<std::size_t>;
template class ArrayVector<gui_objects::Color4b>;

// ---- Strings ---------------------------------------------------------------------------

UTF16String::UTF16String(const char* utf8) {
  if (utf8 != nullptr) text_ = utUTF8ToUTF16(utf8);
}

UTF16String::UTF16String(const zrArray_tag* array) {
  if (array == nullptr) detail::raiseNullArray();
  if (!zrIsChar(array)) detail::raiseArrayClass();
  const zrChar* chars = zrGetChars(array);
  if (chars != nullptr) text_.assign(chars, zrGetNumberOfElements(array));
}

std::string UTF16String::toUTF8() const { return utUTF16ToUTF8(text_); }

ZrArrayPtr UTF16String::toZrArray() const { return ZrArrayPtr(zrCreateString_UTF16(text_.c_str())); }

ZrArrayPtr createCellArrayFromStrings(std::size_t count, const char* const* strings) {
  ZrArrayPtr cell(zrCreateCellMatrix(count, 1));
  for (std::size_t k = 0; k < count; ++k) {
    const char* s = strings != nullptr ? strings[k] : nullptr;
    zrSetCell(cell.get(), k, zrCreateString(s != nullptr ? s : ""));
  }
  return cell;
}

ZrArrayPtr createCellArrayFromStrings(const std::vector<std::string>& strings) {
  ZrArrayPtr cell(zrCreateCellMatrix(strings.size(), 1));
  for (std::size_t k = 0; k < strings.size(); ++k)
    zrSetCell(cell.get(), k, zrCreateString(strings[k].c_str()));
  return cell;
}

ZrArrayPtr createCellArrayFromStrings(const std::vector<UTF16String>& strings) {
  ZrArrayPtr cell(zrCreateCellMatrix(strings.size(), 1));
  for (std::size_t k = 0; k < strings.size(); ++k) zrSetCell(cell.get(), k, strings[k].toZrArray().release());
  return cell;
}

}  // namespace gk
