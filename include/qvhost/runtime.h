// What the reference runtime offers beyond the platform interface of
// qvgui/host.h: the rest of the array library, the interpreter and its
// workspace, console redirection and the registries' queries. Tools, tests
// and examples use it; libqvgui itself does not.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "qvgui/host.h"

// ---- Host arrays ------------------------------------------------------------

QVHOST_API zrArray_tag* zrCreateLogicalMatrix(zrSize m, zrSize n);
QVHOST_API zrArray_tag* zrCreateCellArray(zrSize ndim, const zrSize* dims);
QVHOST_API zrArray_tag* zrCreateStructMatrix(zrSize m, zrSize n, int nfields, const char** fieldnames);
QVHOST_API zrSize zrGetElementSize(const zrArray_tag* array);  // bytes; 0 for cell/struct
QVHOST_API bool zrIsScalar(const zrArray_tag* array);
QVHOST_API bool zrIsLogical(const zrArray_tag* array);
QVHOST_API bool* zrGetLogicals(const zrArray_tag* array);
// Structs (linear index, field by name). Same ownership rules as cells.
QVHOST_API int zrGetNumberOfFields(const zrArray_tag* array);
QVHOST_API const char* zrGetFieldNameByNumber(const zrArray_tag* array, int field);
QVHOST_API zrArray_tag* zrGetField(const zrArray_tag* array, zrSize index, const char* field);
// An unknown field name raises "Tavrix::host::UnknownField" (the caller keeps value).
QVHOST_API void zrSetField(zrArray_tag* array, zrSize index, const char* field, zrArray_tag* value);
// Adds a field (empty in every element) and returns its number; an existing
// name returns its number unchanged.
QVHOST_API int zrAddField(zrArray_tag* array, const char* field);
QVHOST_API void* zrRealloc(void* ptr, std::size_t bytes);

// ---- Message catalogue ------------------------------------------------------

// The catalogue text formatted with printf-style arguments.
QVHOST_API std::string hostFormatMessage(const char* identifier, ...);
QVHOST_API std::string hostFormatMessageV(const char* identifier, std::va_list args);
QVHOST_API bool hostCatalogHas(const char* identifier);

// ---- Console ----------------------------------------------------------------

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

// ---- Feature registry -------------------------------------------------------

QVHOST_API bool hostHasFeature(const char* name);
// Calls the feature; an unknown name raises HostError("Tavrix::host::UnknownFeature").
QVHOST_API int hostCallFeature(const char* name, int argument);
QVHOST_API void hostUnregisterFeature(const char* name);

// ---- Interpreter ------------------------------------------------------------

// A callable function: outputs are created by the function and owned by the
// caller; inputs are borrowed.
using HostFunction =
    std::function<void(int nlhs, zrArray_tag** plhs, int nrhs, const zrArray_tag* const* prhs)>;
QVHOST_API void hostRegisterFunction(const char* name, HostFunction function);
QVHOST_API bool hostHasFunction(const char* name);
QVHOST_API void hostUnregisterFunction(const char* name);
// The language hostEvalString evaluates:
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
QVHOST_API void hostCallFunctionByName(const char* name, int nlhs, zrArray_tag** plhs, int nrhs,
                                       const zrArray_tag* const* prhs);
// Base-workspace variables (copies in and out; null when absent; setting null
// removes the variable).
QVHOST_API void hostSetVariable(const char* name, const zrArray_tag* value);
QVHOST_API zrArray_tag* hostGetVariable(const char* name);
QVHOST_API void hostClearWorkspace();
QVHOST_API void hostSetTerminating(bool terminating);
QVHOST_API bool hostInterruptsEnabled();

// ---- Object system ----------------------------------------------------------

QVHOST_API void hostRegisterObjectType(const void* object, const char* typeName);
QVHOST_API void hostUnregisterObjectType(const void* object);
