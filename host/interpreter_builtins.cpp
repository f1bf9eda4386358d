// The interpreter's built-in functions and its printf-style formatting.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

#include "interpreter_p.h"

namespace qvhost::script {

namespace {

using Builtin = void (*)(int nlhs, zrArray_tag** plhs, int nrhs, const zrArray_tag* const* prhs);

void requireInputs(int nrhs, int needed, const char* name) {
  if (nrhs < needed) throwScriptError("Tavrix::host::NotEnoughInputs", name);
}

[[noreturn]] void invalidArgument(const char* name, const char* why) {
  throwScriptError("Tavrix::host::InvalidArgument", name, why);
}

std::string textArgument(const zrArray_tag* a, const char* name) {
  if (a->classID != zrCHAR_CLASS) invalidArgument(name, "expected text");
  return arrayText(a);
}

double scalarArgument(const zrArray_tag* a, const char* name) {
  if (!isArithmetic(a) || elementCount(a) != 1) invalidArgument(name, "expected a numeric scalar");
  return elementAsDouble(a, 0);
}

zrArray_tag* logicalScalar(bool value) {
  zrArray_tag* a = zrCreateLogicalMatrix(1, 1);
  *zrGetLogicals(a) = value;
  return a;
}

// An identifier is a first argument of two or more that has a ':' and no blank.
void messageArguments(int nrhs, const zrArray_tag* const* prhs, const char* name, std::string& id,
                      std::string& message) {
  const std::string first = textArgument(prhs[0], name);
  if (nrhs == 1) {
    message = first;  // a lone message is taken literally
    return;
  }
  const bool isId = first.find(':') != std::string::npos && first.find_first_of(" \t\n") == std::string::npos;
  if (isId) {
    id = first;
    message = formatWithArguments(textArgument(prhs[1], name), nrhs - 2, prhs + 2);
  } else {
    message = formatWithArguments(first, nrhs - 1, prhs + 1);
  }
}

// ---- Display --------------------------------------------------------------------------------

std::string numberText(double v) {
  if (std::isnan(v)) return "NaN";
  if (std::isinf(v)) return v > 0 ? "Inf" : "-Inf";
  if (v == std::floor(v) && std::fabs(v) < 1e15) return qvhost::format("%.0f", v);
  return qvhost::format("%.5g", v);
}

std::string displayText(const zrArray_tag* a) {
  std::string out;
  switch (a->classID) {
    case zrCHAR_CLASS:
      for (const std::u16string& row : zrCharMatrixToStrings_UTF16(a)) out += utUTF16ToUTF8(row) + "\n";
      return out;
    case zrFUNCTION_CLASS:
      return "@" + a->functionName + "\n";
    case zrCELL_CLASS:
    case zrSTRUCT_CLASS:
      return qvhost::format("[%zux%zu %s]\n", zrGetM(a), zrGetN(a), zrGetClassName(a));
    default:
      break;
  }
  if (!isArithmetic(a) || elementCount(a) == 0) return out;
  const zrSize m = zrGetM(a), n = zrGetN(a);
  std::vector<std::string> cells(m * n);
  std::size_t width = 0;
  for (zrSize i = 0; i < m * n; ++i) {
    cells[i] = numberText(elementAsDouble(a, i));
    width = std::max(width, cells[i].size());
  }
  for (zrSize r = 0; r < m; ++r) {
    for (zrSize c = 0; c < n; ++c) {
      const std::string& s = cells[r + m * c];
      if (c > 0) out += "  ";
      out.append(width - s.size(), ' ');
      out += s;
    }
    out += "\n";
  }
  return out;
}

bool valuesEqual(const zrArray_tag* a, const zrArray_tag* b) {
  if (!isArithmetic(a) || !isArithmetic(b)) return zrArrayEqual(a, b);
  if (a->dims != b->dims) return false;
  for (zrSize i = 0, n = elementCount(a); i < n; ++i) {
    if (!(elementAsDouble(a, i) == elementAsDouble(b, i))) return false;
  }
  return true;
}

// zeros(n), zeros(m, n, ...), zeros([m n]): the shape from the arguments.
zrArray_tag* filled(int nrhs, const zrArray_tag* const* prhs, double value, const char* name) {
  std::vector<zrSize> dims;
  const auto add = [&](double d) {
    if (!(d >= 0) || d != std::floor(d) || d > 1e15)
      invalidArgument(name, "sizes must be non-negative integers");
    dims.push_back(static_cast<zrSize>(d));
  };
  if (nrhs == 1 && isArithmetic(prhs[0]) && elementCount(prhs[0]) > 1) {
    for (zrSize i = 0; i < elementCount(prhs[0]); ++i) add(elementAsDouble(prhs[0], i));
  } else {
    for (int k = 0; k < nrhs; ++k) add(scalarArgument(prhs[k], name));
  }
  if (dims.empty()) dims = {1, 1};
  if (dims.size() == 1) dims.push_back(dims[0]);
  zrArray_tag* a = zrCreateNumericArray(dims.size(), dims.data(), zrDOUBLE_CLASS);
  std::fill_n(zrGetPr(a), zrGetNumberOfElements(a), value);
  return a;
}

// ---- The built-ins ---------------------------------------------------------------------------

void b_error(int, zrArray_tag**, int nrhs, const zrArray_tag* const* prhs) {
  if (nrhs == 0) return;
  std::string id, message;
  messageArguments(nrhs, prhs, "error", id, message);
  if (message.empty() && id.empty()) return;  // error('') raises nothing
  throw ScriptException(std::move(id), std::move(message));
}

void b_warning(int, zrArray_tag**, int nrhs, const zrArray_tag* const* prhs) {
  requireInputs(nrhs, 1, "warning");
  std::string id, message;
  messageArguments(nrhs, prhs, "warning", id, message);
  raiseWarning(id.c_str(), message);
}

void b_disp(int, zrArray_tag**, int nrhs, const zrArray_tag* const* prhs) {
  requireInputs(nrhs, 1, "disp");
  utPrintf("%s", displayText(prhs[0]).c_str());
}

void b_fprintf(int nlhs, zrArray_tag** plhs, int nrhs, const zrArray_tag* const* prhs) {
  requireInputs(nrhs, 1, "fprintf");
  int first = 0;
  if (nrhs >= 2 && isNumericClass(prhs[0]->classID) && prhs[1]->classID == zrCHAR_CLASS) {
    const double fid = scalarArgument(prhs[0], "fprintf");
    if (fid != 1 && fid != 2) invalidArgument("fprintf", "only the console (1 or 2) can be written");
    first = 1;
  }
  const std::string text =
      formatWithArguments(textArgument(prhs[first], "fprintf"), nrhs - first - 1, prhs + first + 1);
  utPrintf("%s", text.c_str());
  if (nlhs > 0) plhs[0] = zrCreateDoubleScalar(static_cast<double>(text.size()));
}

void b_sprintf(int, zrArray_tag** plhs, int nrhs, const zrArray_tag* const* prhs) {
  requireInputs(nrhs, 1, "sprintf");
  plhs[0] = zrCreateString(formatWithArguments(textArgument(prhs[0], "sprintf"), nrhs - 1, prhs + 1).c_str());
}

void b_feval(int nlhs, zrArray_tag** plhs, int nrhs, const zrArray_tag* const* prhs) {
  requireInputs(nrhs, 1, "feval");
  std::string name;
  if (prhs[0]->classID == zrFUNCTION_CLASS) {
    name = prhs[0]->functionName;
  } else if (prhs[0]->classID == zrCHAR_CLASS) {
    name = arrayText(prhs[0]);
  } else {
    invalidArgument("feval", "expected a function handle or a function name");
  }
  std::vector<ArrayPtr> out =
      callFunction(name, nlhs, std::vector<const zrArray_tag*>(prhs + 1, prhs + nrhs));
  for (std::size_t k = 0; k < out.size(); ++k) plhs[k] = out[k].release();
}

void b_isequal(int, zrArray_tag** plhs, int nrhs, const zrArray_tag* const* prhs) {
  requireInputs(nrhs, 2, "isequal");
  bool equal = true;
  for (int k = 1; k < nrhs && equal; ++k) equal = valuesEqual(prhs[0], prhs[k]);
  plhs[0] = logicalScalar(equal);
}

void b_numel(int, zrArray_tag** plhs, int nrhs, const zrArray_tag* const* prhs) {
  requireInputs(nrhs, 1, "numel");
  plhs[0] = zrCreateDoubleScalar(static_cast<double>(zrGetNumberOfElements(prhs[0])));
}

void b_isempty(int, zrArray_tag** plhs, int nrhs, const zrArray_tag* const* prhs) {
  requireInputs(nrhs, 1, "isempty");
  plhs[0] = logicalScalar(zrIsEmpty(prhs[0]));
}

void b_class(int, zrArray_tag** plhs, int nrhs, const zrArray_tag* const* prhs) {
  requireInputs(nrhs, 1, "class");
  plhs[0] = zrCreateString(zrGetClassName(prhs[0]));
}

void b_size(int, zrArray_tag** plhs, int nrhs, const zrArray_tag* const* prhs) {
  requireInputs(nrhs, 1, "size");
  const std::vector<zrSize>& dims = prhs[0]->dims;
  plhs[0] = zrCreateDoubleMatrix(1, dims.size());
  for (std::size_t k = 0; k < dims.size(); ++k) zrGetPr(plhs[0])[k] = static_cast<double>(dims[k]);
}

void b_zeros(int, zrArray_tag** plhs, int nrhs, const zrArray_tag* const* prhs) {
  plhs[0] = filled(nrhs, prhs, 0.0, "zeros");
}
void b_ones(int, zrArray_tag** plhs, int nrhs, const zrArray_tag* const* prhs) {
  plhs[0] = filled(nrhs, prhs, 1.0, "ones");
}
void b_Inf(int, zrArray_tag** plhs, int nrhs, const zrArray_tag* const* prhs) {
  plhs[0] = filled(nrhs, prhs, std::numeric_limits<double>::infinity(), "Inf");
}
void b_NaN(int, zrArray_tag** plhs, int nrhs, const zrArray_tag* const* prhs) {
  plhs[0] = filled(nrhs, prhs, std::numeric_limits<double>::quiet_NaN(), "NaN");
}
void b_pi(int, zrArray_tag** plhs, int, const zrArray_tag* const*) { plhs[0] = zrCreateDoubleScalar(M_PI); }
void b_true(int, zrArray_tag** plhs, int, const zrArray_tag* const*) { plhs[0] = logicalScalar(true); }
void b_false(int, zrArray_tag** plhs, int, const zrArray_tag* const*) { plhs[0] = logicalScalar(false); }

void b_func2str(int, zrArray_tag** plhs, int nrhs, const zrArray_tag* const* prhs) {
  requireInputs(nrhs, 1, "func2str");
  if (prhs[0]->classID != zrFUNCTION_CLASS) invalidArgument("func2str", "expected a function handle");
  plhs[0] = zrCreateString(prhs[0]->functionName.c_str());
}

void b_str2func(int, zrArray_tag** plhs, int nrhs, const zrArray_tag* const* prhs) {
  requireInputs(nrhs, 1, "str2func");
  std::string name = textArgument(prhs[0], "str2func");
  if (!name.empty() && name[0] == '@') name.erase(0, 1);
  plhs[0] = zrCreateFunctionHandle(name.c_str());
}

// clang-format off
#define QVHOST_BUILTINS(X) \
  X("error", b_error) \
  X("warning", b_warning) \
  X("disp", b_disp) \
  X("fprintf", b_fprintf) \
  X("sprintf", b_sprintf) \
  X("feval", b_feval) \
  X("isequal", b_isequal) \
  X("numel", b_numel) \
  X("isempty", b_isempty) \
  X("class", b_class) \
  X("size", b_size) \
  X("zeros", b_zeros) \
  X("ones", b_ones) \
  X("Inf", b_Inf) \
  X("inf", b_Inf) \
  X("NaN", b_NaN) \
  X("nan", b_NaN) \
  X("pi", b_pi) \
  X("true", b_true) \
  X("false", b_false) \
  X("func2str", b_func2str) \
  X("str2func", b_str2func)
// clang-format on

struct BuiltinEntry {
  const char* name;
  Builtin function;
};
constexpr BuiltinEntry kBuiltins[] = {
#define QVHOST_BUILTIN_ENTRY(name, fn) {name, fn},
    QVHOST_BUILTINS(QVHOST_BUILTIN_ENTRY)
#undef QVHOST_BUILTIN_ENTRY
};

Builtin lookup(const std::string& name) {
  for (const BuiltinEntry& b : kBuiltins) {
    if (name == b.name) return b.function;
  }
  return nullptr;
}

// ---- Formatting ---------------------------------------------------------------------------------

struct Item {
  bool isText = false;
  std::string text;
  double value = 0;
};

std::string unescape(const std::string& format) {
  std::string out;
  for (std::size_t i = 0; i < format.size(); ++i) {
    if (format[i] != '\\' || i + 1 == format.size()) {
      out.push_back(format[i]);
      continue;
    }
    // Escape letters and what they stand for, at the same index; anything else
    // keeps its backslash.
    static constexpr char kLetters[] = "ntr\\";
    static constexpr char kMeanings[] = "\n\t\r\\";
    const char* known = std::strchr(kLetters, format[++i]);
    if (known != nullptr && *known != '\0') {
      out.push_back(kMeanings[known - kLetters]);
    } else {
      out.push_back('\\');
      out.push_back(format[i]);
    }
  }
  return out;
}

std::vector<Item> flatten(int nargs, const zrArray_tag* const* args) {
  std::vector<Item> items;
  for (int k = 0; k < nargs; ++k) {
    const zrArray_tag* a = args[k];
    if (a->classID == zrCHAR_CLASS) {
      items.push_back({true, arrayText(a), 0});
    } else if (a->classID == zrFUNCTION_CLASS) {
      items.push_back({true, "@" + a->functionName, 0});
    } else if (isArithmetic(a)) {
      for (zrSize i = 0, n = elementCount(a); i < n; ++i) items.push_back({false, {}, elementAsDouble(a, i)});
    } else {
      invalidArgument("sprintf", "cell and struct values cannot be formatted");
    }
  }
  return items;
}

std::string nonFinite(double v) { return std::isnan(v) ? "NaN" : (v > 0 ? "Inf" : "-Inf"); }

// One conversion: `flags` holds the flags and width (and `precision` the
// ".digits" part) as written; the value decides how it is printed.
std::string convert(char conv, const std::string& flags, const std::string& precision, const Item& item) {
  const auto withString = [&](const std::string& s) {
    return qvhost::format(("%" + flags + (conv == 's' ? precision : "") + "s").c_str(), s.c_str());
  };
  if (item.isText) return withString(item.text);
  const double v = item.value;
  if (!std::isfinite(v)) return withString(nonFinite(v));
  const bool integral = v == std::floor(v) && std::fabs(v) < 9.2e18;
  switch (conv) {
    case 'd':
    case 'i':
    case 'u':
      if (integral) return qvhost::format(("%" + flags + "lld").c_str(), static_cast<long long>(v));
      return qvhost::format(("%" + flags + precision + "e").c_str(), v);
    case 'x':
    case 'X':
    case 'o':
      if (integral && v >= 0) {
        return qvhost::format(("%" + flags + "ll" + conv).c_str(), static_cast<unsigned long long>(v));
      }
      return qvhost::format(("%" + flags + precision + "e").c_str(), v);
    case 'c': {
      // A value that is no UTF-16 code unit prints as a number, as %d does
      // for a value that is no integer.
      if (!(v >= 0 && v < 65536)) return qvhost::format(("%" + flags + precision + "e").c_str(), v);
      const std::u16string unit(1, static_cast<char16_t>(v));
      return withString(utUTF16ToUTF8(unit));
    }
    case 's':
      return withString(integral ? qvhost::format("%.0f", v) : qvhost::format("%.15g", v));
    default:  // f e E g G
      return qvhost::format(("%" + flags + precision + conv).c_str(), v);
  }
}

}  // namespace

// The format is applied again while data remain; output stops at the first
// conversion that has no data left. Without any data the conversions print
// nothing and the rest of the text still appears.
std::string formatWithArguments(const std::string& rawFormat, int nargs, const zrArray_tag* const* args) {
  const std::string format = unescape(rawFormat);
  const std::vector<Item> items = flatten(nargs, args);
  std::string out;
  std::size_t next = 0;
  for (;;) {
    const std::size_t before = next;
    for (std::size_t i = 0; i < format.size(); ++i) {
      if (format[i] != '%') {
        out.push_back(format[i]);
        continue;
      }
      if (i + 1 < format.size() && format[i + 1] == '%') {
        out.push_back('%');
        ++i;
        continue;
      }
      std::size_t j = i + 1;
      while (j < format.size() && std::strchr("-+ 0#", format[j]) != nullptr) ++j;
      while (j < format.size() && std::isdigit(static_cast<unsigned char>(format[j]))) ++j;
      const std::string flags = format.substr(i + 1, j - i - 1);
      std::size_t p = j;
      if (j < format.size() && format[j] == '.') {
        ++j;
        while (j < format.size() && std::isdigit(static_cast<unsigned char>(format[j]))) ++j;
      }
      const std::string precision = format.substr(p, j - p);
      if (j >= format.size() || std::strchr("diuxXocsfeEgG", format[j]) == nullptr) {
        out.append(format, i, j - i);  // not a conversion: printed as written
        i = j - 1;
        continue;
      }
      if (items.empty()) {  // no data at all: conversions print nothing, the text goes on
        i = j;
        continue;
      }
      if (next >= items.size()) return out;
      out += convert(format[j], flags, precision, items[next++]);
      i = j;
    }
    if (next >= items.size() || next == before) return out;
  }
}

std::string arrayText(const zrArray_tag* a) {
  if (a == nullptr || a->classID != zrCHAR_CLASS) return {};
  return utUTF16ToUTF8(std::u16string_view(static_cast<const zrChar*>(a->data), elementCount(a)));
}

bool isArithmetic(const zrArray_tag* a) { return hasElementStorage(a->classID); }

bool findBuiltin(const std::string& name) { return lookup(name) != nullptr; }

void callBuiltin(const std::string& name, int nlhs, zrArray_tag** plhs, int nrhs,
                 const zrArray_tag* const* prhs) {
  lookup(name)(nlhs, plhs, nrhs, prhs);
}

}  // namespace qvhost::script
