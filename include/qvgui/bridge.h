// The bridge between the host and the library's own types: conversions to and
// from host arrays, parsers for property strings, string lists and callbacks.
//
// Raises: the InvalidArrayException family (NullArray, InvalidArrayClass,
// InvalidArrayShape, InvalidArrayData), invalidXYZTypeException,
// invalidCDataTypeException and cdata::InvalidRGBADataException from the
// conversions; convert_from_string_utils::ParseException from the parsers;
// MCallbackValueException and boost::numeric::bad_numeric_cast from callback
// objects, whose user code fails with ScriptException; HostError with
// "Tavrix:GUI:CreateCallback", "Tavrix::gui::nstrings::setUsingMatrix::BadArguments"
// and the host's out-of-memory and interrupt identifiers from the flat functions.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "qvgui/export.h"
#include "qvgui/geometry.h"
#include "qvgui/host.h"

namespace gui_objects {

// ---- Ownership of host arrays ------------------------------------------------

struct ZrArrayDtor {
  static void destroy(zrArray_tag* array) noexcept { HostArrayDeleter()(array); }
};

// Calls Dtor::destroy, so that std::unique_ptr can own what a Dtor frees.
template <class Dtor>
struct DtorDeleter {
  template <class T>
  void operator()(T* object) const noexcept {
    Dtor::destroy(object);
  }
};

// Sole owner of one object, destroyed through Dtor::destroy unless release()
// hands it on. Move-only, so ownership is never shared by accident.
template <class T, class Dtor>
class AutoPtr : public std::unique_ptr<T, DtorDeleter<Dtor>> {
 public:
  using std::unique_ptr<T, DtorDeleter<Dtor>>::unique_ptr;
  // The analyser takes the base's release() for an integer.
  // cppcheck-suppress CastIntegerToAddressAtReturn
  [[nodiscard]] T* release() noexcept { return std::unique_ptr<T, DtorDeleter<Dtor>>::release(); }
};

using ZrArrayPtr = AutoPtr<zrArray_tag, ZrArrayDtor>;

}  // namespace gui_objects

// A counted array of points, x then y (the flat form of a polyline).
struct NPoints {
  std::int32_t count;
  Real_point* points;
};

namespace gk {

using gui_objects::ZrArrayPtr;

// ---- Host arrays to and from kernel values -----------------------------------
//
// Every reader checks, in this order: null array (NullArrayException), class
// (InvalidArrayClassException), shape (InvalidArrayShapeException), then the
// values. Arrays made here are owned by the returned ZrArrayPtr.
namespace objConvert {

// A 4-by-4 double array in its own column-major order; null or empty gives
// the identity.
QVGUI_API gui_objects::Matrix4x4d toMatrix4x4d(const zrArray_tag* array);
// Any numeric class; 2-by-3, row 1 the minima and row 2 the maxima (a minimum
// above its maximum throws InvalidWidthException; equal bounds are fine).
QVGUI_API gui_objects::BoundingVolume toBoundingVolume(const zrArray_tag* array);
// Any numeric class; a 1-by-3 or 3-by-1 array, x y z in element order.
QVGUI_API gui_objects::Point3d toPoint3d(const zrArray_tag* array);
// Any numeric class; 2-by-3, one point per row. An empty array counts as null.
QVGUI_API gui_objects::Line3d toLine3d(const zrArray_tag* array);
QVGUI_API gui_objects::LineSegment3d toLineSegment3d(const zrArray_tag* array);

// The per-class readers behind the functions above. T is the element type of
// one numeric class (double, float, std::int8_t ... std::uint64_t); an array
// of any other class throws InvalidArrayClassException.
template <class T>
QVGUI_API gui_objects::BoundingVolume readBoundingVolume(const zrArray_tag* array);
template <class T>
QVGUI_API gui_objects::Point3d readPoint3d(const zrArray_tag* array);
template <class T>
QVGUI_API gui_objects::Line3d readLine3d(const zrArray_tag* array);
template <class T>
QVGUI_API gui_objects::LineSegment3d readLineSegment3d(const zrArray_tag* array);

QVGUI_API ZrArrayPtr toZrArray(double value);                       // 1-by-1 double
QVGUI_API ZrArrayPtr toZrArray(const wchar_t* text);                // char row; null gives 0-by-0
QVGUI_API ZrArrayPtr toZrArray(const gui_objects::Point2d& point);  // 1-by-2 double
QVGUI_API ZrArrayPtr toZrArray(const gui_objects::Point3d& point);  // 1-by-3 double
// 2-by-3 double, one point per row.
QVGUI_API ZrArrayPtr toZrArray(const gui_objects::Point3d& first, const gui_objects::Point3d& second);
QVGUI_API ZrArrayPtr toZrArray(const gui_objects::Matrix4x4d& matrix);  // 4-by-4 double
// 1-by-4 double in the rectangle's storage order: yMin, xMin, yMax, xMax.
QVGUI_API ZrArrayPtr toZrArray(const gui_objects::Rectangle2i& rectangle);
// 2-by-3 double: row 1 the minima, row 2 the maxima.
QVGUI_API ZrArrayPtr toZrArray(const gui_objects::BoundingVolume& volume);
// N-by-2 double, one point per row.
QVGUI_API ZrArrayPtr toZrArray(const NPoints& points);

// 3-by-N single, one point per column.
QVGUI_API ZrArrayPtr createVertexData(const gui_objects::Point3f& a);
QVGUI_API ZrArrayPtr createVertexData(const gui_objects::Point3f& a, const gui_objects::Point3f& b);
QVGUI_API ZrArrayPtr createVertexData(const gui_objects::Point3f& a, const gui_objects::Point3f& b,
                                      const gui_objects::Point3f& c);
QVGUI_API ZrArrayPtr createVertexData(const gui_objects::Point3f& a, const gui_objects::Point3f& b,
                                      const gui_objects::Point3f& c, const gui_objects::Point3f& d);
// 1-by-N uint32 rows of strip lengths and vertex indices.
QVGUI_API ZrArrayPtr createStripData(std::uint32_t a, std::uint32_t b);
QVGUI_API ZrArrayPtr createStripData(std::uint32_t a, std::uint32_t b, std::uint32_t c);
QVGUI_API ZrArrayPtr createStripData(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d);
QVGUI_API ZrArrayPtr createVertexIndices(std::uint32_t a, std::uint32_t b, std::uint32_t c);
QVGUI_API ZrArrayPtr createVertexIndices(std::size_t count, const std::uint32_t* indices);

}  // namespace objConvert

// ---- Host arrays to and from standard containers ------------------------------
//
// The numeric readers take a vector (1-by-N, N-by-1) or an empty array of any
// numeric class and convert each element.
namespace stlConvert {

QVGUI_API std::vector<double> toDoubleVector(const zrArray_tag* array);
QVGUI_API std::vector<float> toFloatVector(const zrArray_tag* array);
// Every element must be a non-negative whole number, else InvalidArrayDataException.
QVGUI_API std::vector<std::size_t> toSizeTVector(const zrArray_tag* array);
// A cell array of char rows (an empty cell reads as "") or a char matrix (one
// entry per row; the padding blanks of a multi-row matrix dropped); UTF-8.
QVGUI_API std::vector<std::string> toStringVector(const zrArray_tag* array);

QVGUI_API ZrArrayPtr toZrArray(const std::vector<double>& values);       // 1-by-N double
QVGUI_API ZrArrayPtr toZrArray(const std::vector<float>& values);        // 1-by-N single
QVGUI_API ZrArrayPtr toZrArray(const std::vector<std::size_t>& values);  // 1-by-N uint64
QVGUI_API ZrArrayPtr toZrArray(const std::vector<std::string>& values);  // N-by-1 cell

}  // namespace stlConvert

// ---- Typed element vectors with a fixed host layout ----------------------------
//
//   ArrayVector<float>                  1-by-N single
//   ArrayVector<gui_objects::Point3d>   3-by-N double, one point per column
//   ArrayVector<gui_objects::Point3f>   3-by-N single, one point per column
//   ArrayVector<std::size_t>            1-by-N uint64
//   ArrayVector<gui_objects::Color4b>   4-by-N uint8, RGBA per column
//
// Reading from a host array requires exactly that class; the 1-by-N layouts
// also accept N-by-1 and empty arrays, the 3- and 4-row layouts need that row
// count (or an empty array).
template <class T>
class QVGUI_API ArrayVector {
 public:
  using value_type = T;

  ArrayVector() = default;
  // cppcheck-suppress passedByValue ; a sink: callers move their values in
  explicit ArrayVector(std::vector<T> values) noexcept : values_(std::move(values)) {}
  explicit ArrayVector(const zrArray_tag* array);

  [[nodiscard]] std::size_t size() const noexcept { return values_.size(); }
  [[nodiscard]] bool empty() const noexcept { return values_.empty(); }
  T& operator[](std::size_t i) noexcept { return values_[i]; }
  const T& operator[](std::size_t i) const noexcept { return values_[i]; }
  void push_back(const T& value) { values_.push_back(value); }
  [[nodiscard]] auto begin() const noexcept { return values_.begin(); }
  [[nodiscard]] auto end() const noexcept { return values_.end(); }
  [[nodiscard]] const std::vector<T>& values() const noexcept { return values_; }

  [[nodiscard]] ZrArrayPtr toZrArray() const;

 private:
  std::vector<T> values_;
};

using ArrayVectorFloat = ArrayVector<float>;
using ArrayVectorPoint3d = ArrayVector<gui_objects::Point3d>;
using ArrayVectorPoint3f = ArrayVector<gui_objects::Point3f>;
using ArrayVectorSizeT = ArrayVector<std::size_t>;
using ArrayVectorColor4b = ArrayVector<gui_objects::Color4b>;

extern template class ArrayVector<float>;
extern template class ArrayVector<gui_objects::Point3d>;
extern template class ArrayVector<gui_objects::Point3f>;
extern template class ArrayVector<std::size_t>;
extern template class ArrayVector<gui_objects::Color4b>;

// ---- Strings -------------------------------------------------------------------

// A UTF-16 string as the host's char arrays hold it.
class QVGUI_API UTF16String {
 public:
  UTF16String() = default;
  // cppcheck-suppress passedByValue ; a sink: callers move their text in
  explicit UTF16String(std::u16string text) noexcept : text_(std::move(text)) {}
  // UTF-8 text; null gives the empty string.
  explicit UTF16String(const char* utf8);
  // A char array's elements in column-major order (NullArrayException,
  // InvalidArrayClassException for other classes).
  explicit UTF16String(const zrArray_tag* array);

  [[nodiscard]] const std::u16string& str() const noexcept { return text_; }
  [[nodiscard]] const char16_t* c_str() const noexcept { return text_.c_str(); }
  [[nodiscard]] std::size_t length() const noexcept { return text_.size(); }
  [[nodiscard]] bool empty() const noexcept { return text_.empty(); }
  [[nodiscard]] std::string toUTF8() const;
  [[nodiscard]] ZrArrayPtr toZrArray() const;  // 1-by-N char

  friend bool operator==(const UTF16String& a, const UTF16String& b) noexcept { return a.text_ == b.text_; }
  friend bool operator!=(const UTF16String& a, const UTF16String& b) noexcept { return !(a == b); }

 private:
  std::u16string text_;
};

// An N-by-1 cell array of char rows; a null entry becomes "".
QVGUI_API ZrArrayPtr createCellArrayFromStrings(std::size_t count, const char* const* strings);
QVGUI_API ZrArrayPtr createCellArrayFromStrings(const std::vector<std::string>& strings);
QVGUI_API ZrArrayPtr createCellArrayFromStrings(const std::vector<UTF16String>& strings);

// ---- Colour data -----------------------------------------------------------------

namespace colordata_util {
// One colour from a host RGB or RGBA vector (3 or 4 elements): double and single
// values in [0, 1] (scaled by 255 and rounded), uint8 values as they are; alpha
// defaults to 255. Non-numeric input throws invalidCDataTypeException; any other
// numeric class, another element count or a value out of range (NaN included)
// throws cdata::InvalidRGBADataException.
QVGUI_API gui_objects::Color4b hcColorData(const zrArray_tag* rgba);
}  // namespace colordata_util

// The colour data of a graphics object: indexed (an M-by-N array of colour
// indices or values to be mapped) or true colour (M-by-N-by-3, each colour as
// hcColorData reads it). Non-numeric data throws invalidCDataTypeException; a
// third dimension other than 3 throws cdata::InvalidRGBADataException.
class QVGUI_API CData {
 public:
  explicit CData(const zrArray_tag* array);

  [[nodiscard]] bool isTrueColor() const noexcept { return trueColor_; }
  [[nodiscard]] std::size_t rows() const noexcept { return rows_; }
  [[nodiscard]] std::size_t columns() const noexcept { return columns_; }
  [[nodiscard]] std::size_t count() const noexcept { return rows_ * columns_; }
  // Element i (column-major) of indexed data; NaN for true colour.
  [[nodiscard]] double index(std::size_t i) const noexcept;
  // Colour i (column-major) of true-colour data; opaque black for indexed.
  [[nodiscard]] gui_objects::Color4b color(std::size_t i) const noexcept;

 private:
  bool trueColor_ = false;
  std::size_t rows_ = 0;
  std::size_t columns_ = 0;
  std::vector<double> indices_;
  std::vector<gui_objects::Color4b> colors_;
};

}  // namespace gk

// ---- Flat interface of point lists -----------------------------------------------

// An N-by-2 (or, for N != 2, 2-by-N) numeric array to a new point list; the
// geometry exceptions on bad input. Free with free_NPoints.
QVGUI_API NPoints* Matrix_to_NPoints(const zrArray_tag* array);
QVGUI_API zrArray_tag* NPoints_to_Matrix(const NPoints* points);  // N-by-2 double
QVGUI_API NPoints* create_NPoints(std::int32_t count);            // zero-filled
QVGUI_API void free_NPoints(NPoints* points);

// ---- Property-string parsers -----------------------------------------------------

namespace gui_objects::convert_from_string_utils {

// The one failure of the parsers: no text, no fields; callers raise their own error.
class QVGUI_API ParseException {};

// Rows then columns.
struct MxN {
  std::uint64_t m = 0;
  std::uint64_t n = 0;
  friend constexpr bool operator==(const MxN& a, const MxN& b) noexcept { return a.m == b.m && a.n == b.n; }
  friend constexpr bool operator!=(const MxN& a, const MxN& b) noexcept { return !(a == b); }
};

// Number lists: optional [ ] or ( ) at the two ends; values separated by spaces,
// tabs or commas; each value a decimal number (trailing letters inside the
// token are ignored: "2px" is 2) or exactly "nan", "inf", "-inf". Rows are
// separated by ';'. Every malformed text throws ParseException.
QVGUI_API double parse_double_scalar(const char* text);
QVGUI_API Point2d parse_1x2_double(const char* text);
QVGUI_API Point3d parse_1x3_double(const char* text);
QVGUI_API Point4d parse_1x4_double(const char* text);
// Two rows of three: the two corners of the box.
QVGUI_API BoundingVolume parse_2x3_double(const char* text);
// Four rows of four; row i of the text is row i of the matrix.
QVGUI_API Matrix4x4d parse_4x4_double(const char* text);
// Rows and columns of a bracketed literal such as "[1 2;3 4]", counted
// without converting the numbers.
QVGUI_API MxN parse_array_dimensions(const char* text);

// Any number of rows of equal length, at least one value each. Returns the
// values in column-major order and stores the shape in dims.
QVGUI_API std::vector<double> parse_mxn(const char* text, MxN& dims);
QVGUI_API ZrArrayPtr parse_mxn_double(const char* text);  // M-by-N double
QVGUI_API ZrArrayPtr parse_mxn_float(const char* text);   // M-by-N single
// Rows of words, each a bare word or a 'quoted string' ('' inside quotes is
// one quote), with the row rules above: an M-by-N cell array of char rows.
QVGUI_API ZrArrayPtr parse_strings(const char* text);

// A plot format such as "r--o" split into colour code, line style and marker.
// Returns false for a malformed format (the outputs keep what was read until
// then); never throws for bad text.
QVGUI_API bool stringToColorMarkerLineStyle(const char* text, std::string& colour, std::string& lineStyle,
                                            std::string& marker);

}  // namespace gui_objects::convert_from_string_utils

// ---- String lists -------------------------------------------------------------------

// A list of NUL-terminated strings (UTF-8), each owned by the list.
class QVGUI_API NStrings {
 public:
  // How toMatrix hands the list back; other values make toMatrix return null.
  enum OutputFormat : std::int32_t { CharMatrix = 0, CellArray = 1 };

  NStrings() noexcept = default;
  NStrings(std::int32_t count, const char* const* strings);
  NStrings(const NStrings& other);
  explicit NStrings(const NStrings* other);
  // Splits text at delimiter; escape 0 means none (see setUsingDelimitedString).
  NStrings(const char* text, char delimiter, char escape = 0);
  explicit NStrings(const zrArray_tag* value);
  NStrings(NStrings&& other) noexcept;
  NStrings& operator=(const NStrings& other);
  NStrings& operator=(NStrings&& other) noexcept;
  ~NStrings();

  // Records handed through the flat interface come from the host's checked
  // allocator, so running out of memory raises the host's error.
  static void* operator new(std::size_t bytes);
  static void operator delete(void* p) noexcept;

  bool operator==(const NStrings& other) const noexcept;
  bool operator!=(const NStrings& other) const noexcept { return !(*this == other); }
  char*& operator[](std::int32_t index) noexcept { return strings_[index]; }
  const char* operator[](std::int32_t index) const noexcept { return strings_[index]; }

  void clear() noexcept;
  // Out-of-range indices are ignored; null text stores "".
  void setStringAt(std::int32_t index, const char* text);
  [[nodiscard]] std::int32_t getNumStrings() const noexcept { return count_; }
  [[nodiscard]] OutputFormat getFormat() const noexcept { return format_; }
  void setFormat(OutputFormat format) noexcept { format_ = format; }

  // The entries joined by separator, in checked host memory (free with utFree).
  [[nodiscard]] char* toString(char separator) const;
  [[nodiscard]] zrArray_tag* toCellArray() const;  // count-by-1 cell of char rows
  [[nodiscard]] zrArray_tag* toMatrix() const;     // by output format; null for others

  // Replaces the content with the pieces of text split at unescaped
  // delimiters. A delimiter preceded by an odd number of escapes does not
  // split; an escape before a delimiter or another escape is dropped. Only
  // whole UTF-8 characters are compared. Null text leaves the list unchanged.
  void setUsingDelimitedString(const char* text, char delimiter, char escape = 0);
  // Replaces the content from a host value: a cell array (one entry per cell;
  // char rows, empty cells as "", real numeric scalars formatted as numbers),
  // a char matrix (one entry per row, padding blanks dropped when there are
  // several rows), or a double vector (numbers as "%g", "Inf", "-Inf", "NaN";
  // a double matrix that is not a vector leaves the list as it is). Other
  // values raise Tavrix::gui::nstrings::setUsingMatrix::BadArguments.
  void setUsingMatrix(const zrArray_tag* value);
  // Splits every entry at delimiter; the pieces replace the entries in order.
  void applyDelimiter(char delimiter);
  // Moves the entries of other onto the end of this list; other ends empty.
  void mergeOntoEnd(NStrings& other);

 private:
  void adopt(std::int32_t count, char** strings) noexcept;

  std::int32_t count_ = 0;
  char** strings_ = nullptr;
  OutputFormat format_ = CharMatrix;
};

QVGUI_API zrArray_tag* NStrings_to_CellArray(const NStrings* strings);
// Joined with line feeds; free with utFree. Null gives null.
QVGUI_API char* NStrings_to_string(const NStrings* strings);
QVGUI_API NStrings* copy_NStrings(const NStrings* strings);
QVGUI_API void free_NStrings(NStrings* strings);
QVGUI_API NStrings* Matrix_to_NStrings(const zrArray_tag* value);
// An empty (or null) delimiter splits at line feeds; otherwise an empty text
// gives an empty list, and the first characters of delimiter and escape are
// used (escape may be null).
QVGUI_API NStrings* delimited_string_to_NStrings(const char* text, const char* delimiter, const char* escape);

// ---- Callback objects ------------------------------------------------------------------

class MCallback;

// Process-wide hooks of the graphics layer. create makes the per-callback hook
// data; enter and leave bracket every execution; attach and detach announce a
// callback (with its hook data) as it is made and destroyed.
using MCallbackCreateHook = void* (*)();
using MCallbackEnterHook = void (*)(void* hookData);
using MCallbackLeaveHook = void (*)(void* hookData);
using MCallbackAttachHook = void (*)(void* hookData, MCallback* callback);
using MCallbackDetachHook = void (*)(void* hookData, MCallback* callback);
// The host's current callback object: get returns a new array owned by the
// caller (or null); set copies what it is given.
using MCallbackGetCallbackObjectFcn = zrArray_tag* (*)();
using MCallbackSetCallbackObjectFcn = void (*)(const zrArray_tag* object);

QVGUI_API void gui_set_mcallback_hooks(MCallbackCreateHook create, MCallbackEnterHook enter,
                                       MCallbackLeaveHook leave, MCallbackAttachHook attach,
                                       MCallbackDetachHook detach);
QVGUI_API void MCallbackRegisterGetCallbackObjectFcn(MCallbackGetCallbackObjectFcn fn);
QVGUI_API void MCallbackRegisterSetCallbackObjectFcn(MCallbackSetCallbackObjectFcn fn);

// A host value that is not a callback.
class QVGUI_API MCallbackValueException : public std::runtime_error {
 public:
  MCallbackValueException();
};

// User code held by a callback property: script text, a function (by name or
// handle) with extra arguments, run with the triggering object and event.
// Reference-counted: made with count 1, freed when release() drops the last
// reference (the destructor is not public, so nothing deletes it behind the
// count's back).
class QVGUI_API MCallback {
 protected:
  virtual ~MCallback();
  MCallback(const MCallback& other);

 public:
  explicit MCallback(const char* text);
  // A string, a function handle or a cell array {string or handle, args...};
  // null or empty gives an empty text callback. Anything else throws
  // MCallbackValueException; a cell with more elements than a signed 32-bit
  // count holds throws boost::numeric::positive_overflow.
  explicit MCallback(const zrArray_tag* value);
  MCallback& operator=(const MCallback&) = delete;

  [[nodiscard]] virtual MCallback* clone() const;
  // Runs the callback; false when it did not run or the user code failed.
  // Errors of the user code never escape: they are saved (setSaveException)
  // or handed to the host's unhandled-error processing.
  virtual bool execute(const zrArray_tag* source, const zrArray_tag* event);

  // Zero-filled checked host memory.
  static void* operator new(std::size_t bytes);
  static void operator delete(void* p) noexcept;

  // Null for null text. With the create hook installed, "@name" becomes a
  // function handle of name; otherwise the whole text is script text.
  [[nodiscard]] static MCallback* createFromString(const char* text);

  [[nodiscard]] bool isEqual(const MCallback* other) const;
  // A new host value (owned by the caller) or null for a callback with
  // nothing to give back. sharedArgs is accepted for compatibility; the host
  // has no shared copies, so arguments are always duplicated.
  [[nodiscard]] zrArray_tag* convertToTavrixArray(bool sharedArgs) const;
  [[nodiscard]] bool isEmpty() const noexcept;
  [[nodiscard]] bool isExecutable() const;

  MCallback* getReference() noexcept;
  // Drops one reference; the last one destroys the callback.
  void release() noexcept;
  [[nodiscard]] std::int32_t getReferenceCount() const noexcept { return refCount_; }

  [[nodiscard]] const char* getText() const noexcept { return text_; }
  [[nodiscard]] const char* getFunctionName() const noexcept { return functionName_; }
  [[nodiscard]] const zrArray_tag* getFunctionPtr() const noexcept { return function_; }
  [[nodiscard]] zrArray_tag* const* getOptionalArgs() const noexcept { return args_; }
  [[nodiscard]] std::int32_t getNumberOfOptionalArgs() const noexcept { return argCount_; }
  [[nodiscard]] void* getHookData() const noexcept { return hookData_; }

  void setSaveException(bool save) noexcept;
  [[nodiscard]] bool wasExceptionCaughtAndSaved() const noexcept;
  [[nodiscard]] const ScriptException& getScriptException() const noexcept;

  void mcr_detach() noexcept { hookData_ = nullptr; }

  [[nodiscard]] static zrArray_tag* getCallbackObject();
  static void setCallbackObject(const zrArray_tag* object);

 private:
  struct SavedException {
    bool save = false;
    bool caughtAndSaved = false;
    ScriptException exception;
  };

  void initialise(const char* text, const char* functionName, const zrArray_tag* function);
  void attachHooks() noexcept;
  void freeFields() noexcept;
  bool runOne(const zrArray_tag* source, const zrArray_tag* const* args, int argCount) noexcept;
  void processException(const ScriptException& error) noexcept;
  [[nodiscard]] std::string displayName() const;

  char* text_ = nullptr;
  char* functionName_ = nullptr;
  zrArray_tag* function_ = nullptr;
  zrArray_tag** args_ = nullptr;
  std::int32_t argCount_ = 0;
  std::int32_t refCount_ = 1;
  void* hookData_ = nullptr;
  SavedException* saved_ = nullptr;
};

QVGUI_API MCallback* StringToMCallback(const char* text);  // null when memory runs out
// Raises the host error "Tavrix:GUI:CreateCallback" for a value that is not a callback.
QVGUI_API MCallback* MatrixToMCallback(const zrArray_tag* value);
QVGUI_API zrArray_tag* MCallbackToMatrix(const MCallback* callback);  // never null
QVGUI_API MCallback* CopyMCallback(const MCallback* callback);
QVGUI_API void DestroyMCallback(MCallback* callback);
QVGUI_API MCallback* GetMCallbackReference(MCallback* callback);
// Both null: true. One null: true when the other is empty, otherwise true only
// while the host is terminating (nothing is inspected during shutdown).
QVGUI_API bool CompareMCallback(const MCallback* a, const MCallback* b);
QVGUI_API bool ExecuteMCallback(MCallback* callback, const zrArray_tag* source, const zrArray_tag* event);
QVGUI_API bool IsMCallbackExecutable(const MCallback* callback);
