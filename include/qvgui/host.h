// The platform interfaces: everything libqvgui asks of its host. The
// reference runtime qvhost implements all of it; a real host replaces qvhost
// and keeps these declarations.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <locale>
#include <string>
#include <string_view>
#include <vector>

#include "qvgui/export.h"

// ---- Host arrays ---------------------------------------------------------------
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
QVHOST_API zrArray_tag* zrCreateLogicalMatrix(zrSize m, zrSize n);
QVHOST_API zrArray_tag* zrCreateCellMatrix(zrSize m, zrSize n);
QVHOST_API zrArray_tag* zrCreateCellArray(zrSize ndim, const zrSize* dims);
QVHOST_API zrArray_tag* zrCreateStructMatrix(zrSize m, zrSize n, int nfields, const char** fieldnames);
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

// Inspection. Every query accepts only non-null arrays.
QVHOST_API zrClassID zrGetClassID(const zrArray_tag* array);
QVHOST_API const char* zrGetClassName(const zrArray_tag* array);
QVHOST_API bool zrIsNumeric(const zrArray_tag* array);  // classes 6..15
QVHOST_API bool zrIsDouble(const zrArray_tag* array);
QVHOST_API bool zrIsChar(const zrArray_tag* array);
QVHOST_API bool zrIsCell(const zrArray_tag* array);
QVHOST_API bool zrIsStruct(const zrArray_tag* array);
QVHOST_API bool zrIsLogical(const zrArray_tag* array);
QVHOST_API bool zrIsFunctionHandle(const zrArray_tag* array);
QVHOST_API zrSize zrGetM(const zrArray_tag* array);
QVHOST_API zrSize zrGetN(const zrArray_tag* array);
QVHOST_API zrSize zrGetNumberOfDimensions(const zrArray_tag* array);
QVHOST_API const zrSize* zrGetDimensions(const zrArray_tag* array);
QVHOST_API zrSize zrGetNumberOfElements(const zrArray_tag* array);
QVHOST_API zrSize zrGetElementSize(const zrArray_tag* array);  // bytes; 0 for cell/struct
QVHOST_API bool zrIsEmpty(const zrArray_tag* array);           // some dimension is 0
QVHOST_API bool zrIsScalar(const zrArray_tag* array);
// Two dimensions, one of them 1 (a 1 x 1 counts; an empty 0 x 1 or 1 x 0 counts too).
QVHOST_API bool zrIsVector(const zrArray_tag* array);

// Data. zrGetPr is the double data (null unless class double); zrGetData the
// raw element storage of numeric, logical and char arrays.
QVHOST_API double* zrGetPr(const zrArray_tag* array);
QVHOST_API void* zrGetData(const zrArray_tag* array);
QVHOST_API zrChar* zrGetChars(const zrArray_tag* array);
QVHOST_API bool* zrGetLogicals(const zrArray_tag* array);
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

// Structs (linear index, field by name). Same ownership rules as cells.
QVHOST_API int zrGetNumberOfFields(const zrArray_tag* array);
QVHOST_API const char* zrGetFieldNameByNumber(const zrArray_tag* array, int field);
QVHOST_API zrArray_tag* zrGetField(const zrArray_tag* array, zrSize index, const char* field);
// An unknown field name raises "Tavrix::host::UnknownField" (the caller keeps value).
QVHOST_API void zrSetField(zrArray_tag* array, zrSize index, const char* field, zrArray_tag* value);
// Adds a field (empty in every element) and returns its number; an existing
// name returns its number unchanged.
QVHOST_API int zrAddField(zrArray_tag* array, const char* field);

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
QVHOST_API void* zrRealloc(void* ptr, std::size_t bytes);
QVHOST_API void zrFree(void* ptr);

// Host arrays alive right now (created and not yet destroyed), so tests can
// check that a conversion leaks nothing.
QVHOST_API std::int64_t hostLiveArrayCount();

// Test hook: let this many further allocations succeed, then make every later
// one fail with the out-of-memory error until the hook is turned off with -1.
// Covers the checked allocators, zrMalloc/zrCalloc/zrRealloc and the creation
// of host arrays (each array record counts as one allocation, its element
// storage as another).
QVHOST_API void hostFailAllocationsAfter(std::int64_t successfulAllocations);  // -1 turns it off
QVHOST_API std::int64_t hostAllocationFailureBudget();                         // what is left; -1 when off

// Sets the hook for its lifetime and restores the previous setting afterwards.
class QVHOST_API HostAllocationFailureScope {
 public:
  explicit HostAllocationFailureScope(std::int64_t successfulAllocations);
  ~HostAllocationFailureScope();
  HostAllocationFailureScope(const HostAllocationFailureScope&) = delete;
  HostAllocationFailureScope& operator=(const HostAllocationFailureScope&) = delete;

 private:
  std::int64_t previous_;
};

// ---- Errors, warnings and the message catalogue ------------------------------------
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
// The catalogue text formatted with printf-style arguments.
QVHOST_API std::string hostFormatMessage(const char* identifier, ...);
QVHOST_API std::string hostFormatMessageV(const char* identifier, std::va_list args);
QVHOST_API bool hostCatalogHas(const char* identifier);

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

// Warnings raised so far, oldest first, for callers and tests that must see
// which identifiers were raised.
struct HostWarning {
  std::string identifier;
  std::string message;
};
QVHOST_API std::vector<HostWarning> hostRecordedWarnings();
QVHOST_API void hostClearRecordedWarnings();

// ---- Utility library ---------------------------------------------------------------

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
// Raises HostError(kHostInterruptId) when an interrupt is pending (and clears it).
QVHOST_API void utThrowIfInterruptPending();
// The host (or a test) raises or clears the user's interrupt.
QVHOST_API void utSetInterruptPending(bool pending);
// Counts down the queries of utIsInterruptPending: the query that brings the
// count to zero makes an interrupt pending by itself (so 1 interrupts the very
// next query); 0 turns the countdown off. Queries made under a deferral count
// too. Lets tests interrupt a long computation at a chosen point.
QVHOST_API void utSetInterruptAfterQueries(std::uint64_t queries);

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
using HostConsoleSink = std::function<void(std::string_view)>;
QVHOST_API void hostSetConsoleSink(HostConsoleSink sink);

// Captures console output for its lifetime (restores the previous sink).
class QVHOST_API HostConsoleCapture {
 public:
  HostConsoleCapture();
  ~HostConsoleCapture();
  HostConsoleCapture(const HostConsoleCapture&) = delete;
  HostConsoleCapture& operator=(const HostConsoleCapture&) = delete;
  const std::string& text() const noexcept;

 private:
  HostConsoleSink previous_;
  std::string text_;
};

// UTF-8 <-> UTF-16. Malformed input becomes U+FFFD; never throws on content.
QVHOST_API std::u16string utUTF8ToUTF16(std::string_view utf8);
QVHOST_API std::string utUTF16ToUTF8(std::u16string_view utf16);

// ---- Feature registry ----------------------------------------------------------------

using HostFeatureFunction = std::function<int(int)>;
// Registers (or replaces) a named feature.
QVHOST_API void hostRegisterFeature(const char* name, HostFeatureFunction function);
QVHOST_API bool hostHasFeature(const char* name);
// Calls the feature; an unknown name raises HostError("Tavrix::host::UnknownFeature").
QVHOST_API int hostCallFeature(const char* name, int argument);
QVHOST_API void hostUnregisterFeature(const char* name);

// ---- Interpreter ---------------------------------------------------------------------
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

// A callable function: outputs are created by the function and owned by the
// caller; inputs are borrowed.
using HostFunction =
    std::function<void(int nlhs, zrArray_tag** plhs, int nrhs, const zrArray_tag* const* prhs)>;
QVHOST_API void hostRegisterFunction(const char* name, HostFunction function);
QVHOST_API bool hostHasFunction(const char* name);
QVHOST_API void hostUnregisterFunction(const char* name);

// Evaluates a text in the base workspace. The language:
//   program    := statement { (';' | ',' | newline) statement }
//   statement  := name '=' expr | expr          (an expression's value goes to "ans")
//   expr       := term { ('+'|'-') term }
//   term       := unary { ('*'|'/'|'.*'|'./') unary }   elementwise, scalars expand
//   unary      := ('-'|'+') unary | primary
//   primary    := number (1, 2.5, 1e-3, Inf, NaN) | 'text' ('' is a quote) | "text"
//               | '[' rows ']' (elements split by blanks or ',', rows by ';' or newline)
//               | '@' name (a function handle) | '(' expr ')'
//               | name | name '(' args ')'   (a variable is indexed, a function called)
// '%' starts a comment to the end of the line and '...' continues a line. In a
// matrix "[1 -2]" has two elements, "[1 - 2]" one. Arithmetic works on double
// values (logical and char operands are read as doubles); [] of only text
// stays text. Indexing takes one (linear) or two positive integer subscripts.
// Results are not echoed.
// Names resolve to a variable, then a registered function, then a built-in:
// error(msg), error(id, fmt, args...) (id when the first of two or more
// arguments contains ':' and no blank), warning(...), disp, fprintf, sprintf,
// feval, isequal, numel, isempty, class, size, zeros, ones, func2str,
// str2func, Inf, NaN, pi, true, false. Formats follow printf with '\n' and
// '\t' escapes; array arguments are used element by element and the format
// repeats while they last.
// The text is parsed completely before anything runs: a syntax error raises
// ScriptException("Tavrix::host::SyntaxError") and runs nothing. An unknown
// name raises ScriptException("Tavrix::host::UndefinedFunction"); error() in
// the code raises ScriptException with its id (empty without one); a HostError
// escaping a function becomes a ScriptException with the same identifier and
// message and that function's name. The one exception: while interrupts are
// enabled, a pending interrupt is checked before every statement and every
// call, and stops evaluation with HostError(kHostInterruptId), unwrapped, so
// callers can tell a user's interrupt from an error in the code.
QVHOST_API void hostEvalString(const char* text);
// Calls a function, given as a function handle or a char array naming it.
// plhs[0..nlhs-1] are set to null first and hold the outputs on success (each
// requested output must be produced); errors arrive as in hostEvalString and
// leave no outputs behind.
QVHOST_API void hostCallFunction(const zrArray_tag* function, int nlhs, zrArray_tag** plhs, int nrhs,
                                 const zrArray_tag* const* prhs);
QVHOST_API void hostCallFunctionByName(const char* name, int nlhs, zrArray_tag** plhs, int nrhs,
                                       const zrArray_tag* const* prhs);
// Base-workspace variables (copies in and out; null when absent; setting null
// removes the variable).
QVHOST_API void hostSetVariable(const char* name, const zrArray_tag* value);
QVHOST_API zrArray_tag* hostGetVariable(const char* name);
QVHOST_API void hostClearWorkspace();
// Publishes the workspace changes of user code to the host's listeners (the
// reference runtime has none and only counts the publications, for tests).
QVHOST_API void hostPublishWorkspaceEvents();
QVHOST_API std::size_t hostWorkspaceEventsPublished();

// The terminating flag: set while the host shuts down; callbacks do not run then.
QVHOST_API bool hostIsTerminating();
QVHOST_API void hostSetTerminating(bool terminating);

// Whether user interrupts are enabled (callbacks enable them while user code
// runs); returns the previous state.
QVHOST_API bool hostSetInterruptsEnabled(bool enabled);
QVHOST_API bool hostInterruptsEnabled();

// Unhandled-error processing: prints an error report to the console and keeps
// the last one for inspection.
QVHOST_API void hostReportUnhandledException(const ScriptException& error);
QVHOST_API void hostReportUnhandledInterrupt();
QVHOST_API std::vector<ScriptException> hostUnhandledExceptions();
// Interrupts reported through hostReportUnhandledInterrupt.
QVHOST_API std::size_t hostUnhandledInterruptCount();
// Clears both the exceptions and the interrupt count.
QVHOST_API void hostClearUnhandledExceptions();

// Flushes buffered console output of user code.
QVHOST_API void hostFlushConsole();

// ---- Object system ---------------------------------------------------------------------

// The type name of the object behind a pointer ("unknown" when the object system
// does not know it).
QVHOST_API const char* hostObjectTypeName(const void* object);
QVHOST_API void hostRegisterObjectType(const void* object, const char* typeName);
QVHOST_API void hostUnregisterObjectType(const void* object);
