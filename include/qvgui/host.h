// The platform interface: exactly what libqvgui asks of its host, and so
// what a host that replaces the reference runtime qvhost must implement. Each
// section names the parts of the library that call it. The reference
// runtime's other services are in qvhost/runtime.h, its test controls in
// qvhost/testing.h; the library uses neither (a test reads the library's
// dynamic imports and holds it to this header).
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <locale>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "qvgui/export.h"

// ---- Host arrays ---------------------------------------------------------------
// Called by the array conversions, parsers, callbacks and string lists of the
// bridge, by data extents and ticks, contours and patch normals, colour
// records and the handle table.
//
// A host array is an N-dimensional (N >= 2), column-major value of one class.
// Element (i, j, k, ...) of an array with dimensions (d0, d1, d2, ...) sits at
// linear index i + d0*(j + d1*(k + ...)). zrGetN is the product of every
// dimension after the first, so an m x n x p array reports M = m, N = n*p.
// Trailing singleton dimensions beyond the second are dropped (2 x 3 x 1 is
// 2 x 3). Passing a null array where an array is required raises
// HostError("Tavrix::host::NullArray"); a class that does not fit the call
// raises "Tavrix::host::InvalidClass"; an index past the end raises
// "Tavrix::host::IndexOutOfRange".

struct zrArray_tag;
using zrSize = std::size_t;
using zrChar = char16_t;  // character arrays hold UTF-16 code units

// Class identifiers. The ten numeric classes are 6..15 in this order.
enum zrClassID : int {
  zrUNKNOWN_CLASS = 0,
  zrCELL_CLASS = 1,
  zrSTRUCT_CLASS = 2,
  zrLOGICAL_CLASS = 3,
  zrCHAR_CLASS = 4,
  zrVOID_CLASS = 5,
  zrDOUBLE_CLASS = 6,
  zrSINGLE_CLASS = 7,
  zrINT8_CLASS = 8,
  zrUINT8_CLASS = 9,
  zrINT16_CLASS = 10,
  zrUINT16_CLASS = 11,
  zrINT32_CLASS = 12,
  zrUINT32_CLASS = 13,
  zrINT64_CLASS = 14,
  zrUINT64_CLASS = 15,
  zrFUNCTION_CLASS = 16,
};

// Creation. Every numeric, logical and char array starts zero-filled; a cell
// array starts with null (empty) cells. All of them raise the host's
// out-of-memory error rather than return null, also when the product of the
// dimensions (or the byte count) does not fit in zrSize. zrCreateNumeric*
// accept the numeric classes and also logical and char.
QVHOST_API zrArray_tag* zrCreateDoubleMatrix(zrSize m, zrSize n);
QVHOST_API zrArray_tag* zrCreateDoubleScalar(double value);
QVHOST_API zrArray_tag* zrCreateNumericMatrix(zrSize m, zrSize n, zrClassID cls);
QVHOST_API zrArray_tag* zrCreateNumericArray(zrSize ndim, const zrSize* dims, zrClassID cls);
QVHOST_API zrArray_tag* zrCreateCellMatrix(zrSize m, zrSize n);
// A 1 x N char row from UTF-8 (N counts UTF-16 code units); null gives 0 x 0.
QVHOST_API zrArray_tag* zrCreateString(const char* utf8);
// A 1 x N char row from a zero-terminated UTF-16 string.
QVHOST_API zrArray_tag* zrCreateString_UTF16(const zrChar* text);
QVHOST_API zrArray_tag* zrCreateCharArray(zrSize ndim, const zrSize* dims);
// An m-row char matrix, rows padded with blanks to the longest (UTF-8 input).
QVHOST_API zrArray_tag* zrCreateCharMatrixFromStrings(zrSize m, const char** rows);
// A function-handle scalar that names a function of the interpreter.
QVHOST_API zrArray_tag* zrCreateFunctionHandle(const char* functionName);
QVHOST_API zrArray_tag* zrDuplicateArray(const zrArray_tag* array);
// Destroys the array and, for cells and structs, everything inside. Null is fine.
QVHOST_API void zrDestroyArray(zrArray_tag* array);

// The owner of one host array, for host and library code alike.
struct HostArrayDeleter {
  void operator()(zrArray_tag* array) const noexcept { zrDestroyArray(array); }
};
using HostArrayPtr = std::unique_ptr<zrArray_tag, HostArrayDeleter>;

// Inspection. Every query accepts only non-null arrays.
QVHOST_API zrClassID zrGetClassID(const zrArray_tag* array);
QVHOST_API const char* zrGetClassName(const zrArray_tag* array);
QVHOST_API bool zrIsNumeric(const zrArray_tag* array);  // classes 6..15
QVHOST_API bool zrIsDouble(const zrArray_tag* array);
QVHOST_API bool zrIsChar(const zrArray_tag* array);
QVHOST_API bool zrIsCell(const zrArray_tag* array);
QVHOST_API bool zrIsStruct(const zrArray_tag* array);
QVHOST_API bool zrIsFunctionHandle(const zrArray_tag* array);
QVHOST_API zrSize zrGetM(const zrArray_tag* array);
QVHOST_API zrSize zrGetN(const zrArray_tag* array);
QVHOST_API zrSize zrGetNumberOfDimensions(const zrArray_tag* array);
QVHOST_API const zrSize* zrGetDimensions(const zrArray_tag* array);
QVHOST_API zrSize zrGetNumberOfElements(const zrArray_tag* array);
QVHOST_API bool zrIsEmpty(const zrArray_tag* array);  // some dimension is 0
// Two dimensions, one of them 1 (a 1 x 1 counts; an empty 0 x 1 or 1 x 0 counts too).
QVHOST_API bool zrIsVector(const zrArray_tag* array);

// Data. zrGetPr is the double data (null unless class double); zrGetData the
// raw element storage of numeric, logical and char arrays.
QVHOST_API double* zrGetPr(const zrArray_tag* array);
QVHOST_API void* zrGetData(const zrArray_tag* array);
QVHOST_API zrChar* zrGetChars(const zrArray_tag* array);
QVHOST_API const char* zrGetFunctionName(const zrArray_tag* array);  // function handles

// Update. zrSetM/zrSetN/zrSetDimensions change the shape only (the caller makes
// the storage fit); cell and struct arrays are the exception: their slots grow
// (empty) to fit a larger shape and are kept, not destroyed, when it shrinks.
// zrSetN makes an N-D array two-dimensional (M x n). zrSetPr/zrSetData hand over storage from
// zrMalloc/zrCalloc; the array frees its old storage and owns the new.
QVHOST_API void zrSetM(zrArray_tag* array, zrSize m);
QVHOST_API void zrSetN(zrArray_tag* array, zrSize n);
QVHOST_API void zrSetPr(zrArray_tag* array, double* data);
QVHOST_API void zrSetData(zrArray_tag* array, void* data);
// Returns false (shape unchanged) when ndim < 2 or dims is null; an element
// count that overflows raises the out-of-memory error (shape unchanged).
QVHOST_API bool zrSetDimensions(zrArray_tag* array, const zrSize* dims, zrSize ndim);

// Cells (linear index). zrSetCell takes ownership of value and destroys what
// the cell held before; when it raises (bad index, wrong class) the caller
// keeps value. zrGetCell returns the cell's array, still owned by the
// cell array (null for an empty cell).
QVHOST_API zrArray_tag* zrGetCell(const zrArray_tag* cell, zrSize index);
QVHOST_API void zrSetCell(zrArray_tag* cell, zrSize index, zrArray_tag* value);

// Strings. zrArrayToString gives the char array's elements in column-major
// order as zero-terminated UTF-8 in zrMalloc storage (caller frees with
// zrFree), or null when the array is not char. zrCharMatrixToStrings_UTF16
// gives each row of a 2-D char matrix, trailing blanks kept.
QVHOST_API char* zrArrayToString(const zrArray_tag* array);
QVHOST_API std::vector<std::u16string> zrCharMatrixToStrings_UTF16(const zrArray_tag* array);

// Equality of class, shape and content. NaN is never equal to NaN.
QVHOST_API bool zrArrayEqual(const zrArray_tag* a, const zrArray_tag* b);

// The host array allocator: storage for zrSetPr/zrSetData and for the strings
// handed out above. Raises the out-of-memory error instead of returning null.
QVHOST_API void* zrMalloc(std::size_t bytes);
QVHOST_API void* zrCalloc(std::size_t count, std::size_t size);
QVHOST_API void zrFree(void* ptr);

// ---- Errors, warnings and the message catalogue ------------------------------------
//
// Called by every flat function that fails (through the typed raise and warn
// functions), by the user-error exceptions for their texts, and once at load
// time to register the library's texts.
//
// Message identifiers name an area: "Tavrix::gui::handle::OutOfUniqueHandles".
// The catalogue maps each identifier to an English text with printf-style
// arguments; an unknown identifier still yields a readable message.

// The host's error: thrown by the zrErr functions and the checked allocators.
class QVHOST_API HostError : public std::exception {
 public:
  HostError(std::string identifier, std::string message);
  const char* what() const noexcept override;
  const std::string& identifier() const noexcept;
  const std::string& message() const noexcept;

 private:
  std::string identifier_;
  std::string message_;
};

// The identifier of the host's out-of-memory error.
inline constexpr const char* kHostOutOfMemoryId = "Tavrix::host::OutOfMemory";
// The identifier raised when the user interrupts a computation.
inline constexpr const char* kHostInterruptId = "Tavrix::host::Interrupted";

// Raises an error with an explicit text (printf-style) under the identifier.
[[noreturn]] QVHOST_API void zrErrMsgIdAndTxt(const char* identifier, const char* format, ...)
    QV_PRINTF_FORMAT(2, 3);
// Raises an error whose text is the identifier's catalogue entry, formatted
// with the arguments.
[[noreturn]] QVHOST_API void zrErrMsgId(const char* identifier, ...);
// Prints the catalogue text as a warning on the console and records it; the
// caller goes on.
QVHOST_API void zrWarningMsgId(const char* identifier, ...);

// The catalogue text for an identifier in the given locale (English is the only
// language shipped; other locales fall back to it), unformatted.
QVHOST_API std::string hostCatalogText(const char* identifier, const std::locale& locale = std::locale());

// One catalogue entry handed over by a library: identifier and English text.
struct HostMessageText {
  const char* identifier;
  const char* text;
};
// Adds a library's texts to the catalogue (copied, so the table may go away
// with the library). Called by libqvgui once while it loads. The host's own
// entries win over a registered text with the same identifier; among
// registered texts the first registration wins.
QVHOST_API void hostRegisterMessages(const HostMessageText* texts, std::size_t count);

// ---- Utility library ---------------------------------------------------------------

// Checked allocation for every record the library makes; the tolerance test
// in the geometry kernel; interrupts in contour tracing and colour tables;
// CPU time and console output in the window-method profiler and handle dump;
// UTF conversion in the string lists and callbacks.

// Checked allocation: raises HostError(kHostOutOfMemoryId) instead of
// returning null. A zero-byte request returns a valid unique pointer.
QVHOST_API void* utMallocWithCheck(std::size_t bytes);
QVHOST_API void* utCallocWithCheck(std::size_t count, std::size_t size);
QVHOST_API void* utReallocWithCheck(void* ptr, std::size_t bytes);
QVHOST_API void utFree(void* ptr);

// The host's tolerance equality: a == b, or both finite and
// |a - b| <= 4 * DBL_EPSILON * max(|a|, |b|, 1). NaN is never equal.
QVHOST_API bool utEqualWithinEps(double a, double b);

// The pending-interrupt query. While an interrupt deferral is alive the query
// answers false; the interrupt stays pending and shows again afterwards.
QVHOST_API bool utIsInterruptPending();

// Raises HostError(kHostInterruptId) when an interrupt is pending (and clears
// it). Colour-table updates call it before and after swapping their arrays.
QVHOST_API void utThrowIfInterruptPending();

// Scoped deferral of user interrupts; nests (the interrupt shows again when the
// outermost deferral ends).
class QVHOST_API utInterruptDeferral {
 public:
  utInterruptDeferral();
  ~utInterruptDeferral();
  utInterruptDeferral(const utInterruptDeferral&) = delete;
  utInterruptDeferral& operator=(const utInterruptDeferral&) = delete;
};

// Processor time of this process in seconds.
QVHOST_API double utCPUtime();

// Console output. Everything the library prints goes through utPrintf; a host
// or test may redirect it (an empty sink restores standard output).
QVHOST_API int utPrintf(const char* format, ...) QV_PRINTF_FORMAT(1, 2);

// UTF-8 <-> UTF-16. Malformed input becomes U+FFFD; never throws on content.
QVHOST_API std::u16string utUTF8ToUTF16(std::string_view utf8);
QVHOST_API std::string utUTF16ToUTF8(std::u16string_view utf16);

// ---- Feature registry ----------------------------------------------------------------

// Called by the window-method profiler to register its three features.

using HostFeatureFunction = std::function<int(int)>;
// Registers (or replaces) a named feature.
QVHOST_API void hostRegisterFeature(const char* name, HostFeatureFunction function);

// ---- Interpreter ---------------------------------------------------------------------
//
// Called by callback objects only.
//
// The envelope of an error raised by user code: what callbacks catch, save or
// hand to the host's unhandled-exception processing.
class QVHOST_API ScriptException : public std::exception {
 public:
  ScriptException() = default;
  ScriptException(std::string identifier, std::string message, std::string functionName = {});
  const char* what() const noexcept override;
  const std::string& identifier() const noexcept;
  const std::string& message() const noexcept;
  // The function (or callback) in which the error was raised; may be empty.
  const std::string& functionName() const noexcept;
  // The same error wrapped as raised inside the named function.
  ScriptException withFunctionName(std::string functionName) const;

 private:
  std::string identifier_;
  std::string message_;
  std::string functionName_;
};

// Evaluates a text of the host's language in the base workspace; a syntax or
// run-time error arrives as ScriptException, a user's interrupt as
// HostError(kHostInterruptId). Callback objects run their text through it.
QVHOST_API void hostEvalString(const char* text);
// Calls a function, given as a function handle or a char array naming it.
// plhs[0..nlhs-1] are set to null first and hold the outputs on success (each
// requested output must be produced); errors arrive as in hostEvalString and
// leave no outputs behind.
QVHOST_API void hostCallFunction(const zrArray_tag* function, int nlhs, zrArray_tag** plhs, int nrhs,
                                 const zrArray_tag* const* prhs);
// Publishes the workspace changes of user code to the host's listeners (the
// reference runtime has none and only counts the publications, for tests).
QVHOST_API void hostPublishWorkspaceEvents();

// The terminating flag: set while the host shuts down; callbacks do not run then.
QVHOST_API bool hostIsTerminating();

// Whether user interrupts are enabled (callbacks enable them while user code
// runs); returns the previous state.
QVHOST_API bool hostSetInterruptsEnabled(bool enabled);

// Unhandled-error processing: prints an error report to the console and keeps
// the last one for inspection.
QVHOST_API void hostReportUnhandledException(const ScriptException& error);
QVHOST_API void hostReportUnhandledInterrupt();

// Flushes buffered console output of user code.
QVHOST_API void hostFlushConsole();

// ---- Object system ---------------------------------------------------------------------

// Called by the handle table's diagnostic dump.

// The type name of the object behind a pointer ("unknown" when the object system
// does not know it).
QVHOST_API const char* hostObjectTypeName(const void* object);
