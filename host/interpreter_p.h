// The interpreter's private parts: tokens, the syntax tree, the parser, and
// the evaluation helpers shared by the evaluator and the built-in functions.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "arrays_p.h"

namespace qvhost::script {

// ---- Syntax --------------------------------------------------------------------------

enum class TokenKind { Number, String, Name, Operator, Newline, End };

struct Token {
  TokenKind kind = TokenKind::End;
  std::string text;  // name, operator, or the decoded string
  double number = 0;
  bool spaceBefore = false;  // separates matrix elements: [1 -2] has two
  int line = 1;
  int column = 1;
};

// Raises ScriptException("Tavrix::host::SyntaxError") for text that is not a
// program. Never reads past the end of the input.
std::vector<Token> tokenize(std::string_view text);

enum class NodeKind { Number, String, Matrix, Name, Call, Handle, Negate, Plus, Binary };

// How deep parentheses, signs, calls and matrices may nest in one text; how
// deep evaluation may go, counting nested expressions and calls together
// across texts that run one another; and how many calls may be active at
// once (a call through a function that runs code again costs far more stack
// than a nested expression). Together they keep the stack well inside the
// smallest thread stacks the host gives its graphics thread.
inline constexpr int kMaxExpressionNesting = 256;
inline constexpr int kMaxEvaluationDepth = 1024;
inline constexpr int kMaxCallDepth = 128;

// Binary: children[0] op[0] children[1] op[1] ... evaluated left to right, all
// operators of one precedence level.
struct Node {
  NodeKind kind = NodeKind::Number;
  double number = 0;
  std::string text;  // name or string contents
  std::vector<std::unique_ptr<Node>> children;
  std::vector<std::string> operators;   // Binary
  int level = 0;                        // Binary: 0 for + -, 1 for * / .* ./
  std::vector<std::size_t> rowLengths;  // Matrix: elements per row, in order
  int line = 1;
  int column = 1;
};

struct Statement {
  std::string target;  // empty for an expression statement
  std::unique_ptr<Node> expression;
};

std::vector<Statement> parse(std::string_view text);

// ---- Values ----------------------------------------------------------------------------

using ArrayPtr = HostArrayPtr;

// Raises the ScriptException of an error in the code (identifier and catalogue
// text formatted with the arguments).
[[noreturn]] void throwScriptError(const char* identifier, ...);

// Calls a registered function or a built-in by name with borrowed inputs. The
// result holds max(nlhs, 1) outputs, any of them possibly null; failures
// arrive as ScriptException (or HostError for the user's interrupt).
std::vector<ArrayPtr> callFunction(const std::string& name, int nlhs,
                                   const std::vector<const zrArray_tag*>& args);

// Built-ins: true when `name` is one; then runs it.
bool findBuiltin(const std::string& name);
void callBuiltin(const std::string& name, int nlhs, zrArray_tag** plhs, int nrhs,
                 const zrArray_tag* const* prhs);

// The value of an array as text (char arrays in column-major order).
std::string arrayText(const zrArray_tag* a);
// True for classes that arithmetic reads as double (numeric, logical, char).
bool isArithmetic(const zrArray_tag* a);
// printf-style formatting with the interpreter's rules: escapes in the format,
// arguments flattened element by element, the format reused while data remain.
std::string formatWithArguments(const std::string& format, int nargs, const zrArray_tag* const* args);

}  // namespace qvhost::script
