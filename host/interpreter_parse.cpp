// The interpreter's lexer and recursive-descent parser (grammar in host.h).

#include <cctype>
#include <cstdlib>

#include "interpreter_p.h"

namespace qvhost::script {

namespace {

[[noreturn]] void syntaxError(int line, int column, const char* what) {
  throwScriptError("Tavrix::host::SyntaxError", line, column, what);
}

bool isNameStart(char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0; }
bool isNameChar(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }
bool isDigit(char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }

}  // namespace

// ---- Lexer -------------------------------------------------------------------------------

std::vector<Token> tokenize(std::string_view text) {
  std::vector<Token> tokens;
  std::size_t i = 0;
  int line = 1;
  std::size_t lineStart = 0;
  bool space = false;
  const auto at = [&](std::size_t k) { return k < text.size() ? text[k] : '\0'; };
  while (i < text.size()) {
    const char c = text[i];
    Token t;
    t.line = line;
    t.column = static_cast<int>(i - lineStart) + 1;
    t.spaceBefore = space;
    space = false;
    if (c == ' ' || c == '\t' || c == '\r') {
      space = true;
      ++i;
      continue;
    }
    if (c == '%') {  // comment
      while (i < text.size() && text[i] != '\n') ++i;
      continue;
    }
    if (c == '.' && at(i + 1) == '.' && at(i + 2) == '.') {  // continuation
      while (i < text.size() && text[i] != '\n') ++i;
      if (i < text.size()) ++i, ++line, lineStart = i;
      space = true;
      continue;
    }
    if (c == '\n') {
      t.kind = TokenKind::Newline;
      ++i, ++line, lineStart = i;
    } else if (isDigit(c) || (c == '.' && isDigit(at(i + 1)))) {
      std::size_t j = i;
      while (isDigit(at(j))) ++j;
      if (at(j) == '.' && !(at(j + 1) == '*' || at(j + 1) == '/')) {
        ++j;
        while (isDigit(at(j))) ++j;
      }
      if (at(j) == 'e' || at(j) == 'E') {
        std::size_t k = j + 1;
        if (at(k) == '+' || at(k) == '-') ++k;
        if (!isDigit(at(k))) syntaxError(t.line, t.column, "malformed number");
        while (isDigit(at(k))) ++k;
        j = k;
      }
      if (isNameChar(at(j))) syntaxError(t.line, t.column, "malformed number");
      t.kind = TokenKind::Number;
      t.number = std::strtod(std::string(text.substr(i, j - i)).c_str(), nullptr);
      i = j;
    } else if (isNameStart(c)) {
      std::size_t j = i;
      while (isNameChar(at(j))) ++j;
      t.kind = TokenKind::Name;
      t.text = std::string(text.substr(i, j - i));
      i = j;
    } else if (c == '\'' || c == '"') {
      // A doubled quote inside the string stands for one quote.
      std::size_t j = i + 1;
      for (;;) {
        if (j >= text.size() || text[j] == '\n') syntaxError(t.line, t.column, "unterminated string");
        if (text[j] == c) {
          if (at(j + 1) != c) break;
          ++j;
        }
        t.text.push_back(text[j]);
        ++j;
      }
      t.kind = TokenKind::String;
      i = j + 1;
    } else if (c == '.' && (at(i + 1) == '*' || at(i + 1) == '/')) {
      t.kind = TokenKind::Operator;
      t.text = std::string(text.substr(i, 2));
      i += 2;
    } else if (std::string_view("+-*/=()[],;@").find(c) != std::string_view::npos) {
      t.kind = TokenKind::Operator;
      t.text = std::string(1, c);
      ++i;
    } else {
      syntaxError(t.line, t.column, "unexpected character");
    }
    tokens.push_back(std::move(t));
  }
  Token end;
  end.line = line;
  end.column = static_cast<int>(text.size() - lineStart) + 1;
  end.spaceBefore = true;
  tokens.push_back(end);
  return tokens;
}

// ---- Parser --------------------------------------------------------------------------------

namespace {

class Parser {
 public:
  explicit Parser(std::vector<Token> tokens) : tokens_(std::move(tokens)) {}

  std::vector<Statement> program() {
    std::vector<Statement> statements;
    for (;;) {
      while (isOp(peek(), ";") || isOp(peek(), ",") || peek().kind == TokenKind::Newline) ++pos_;
      if (peek().kind == TokenKind::End) break;
      statements.push_back(statement());
      const Token& t = peek();
      if (!(isOp(t, ";") || isOp(t, ",") || t.kind == TokenKind::Newline || t.kind == TokenKind::End)) {
        fail(t, "expected the end of the statement");
      }
    }
    return statements;
  }

 private:
  enum class Context { Statement, Paren, Matrix };

  static bool isOp(const Token& t, const char* op) { return t.kind == TokenKind::Operator && t.text == op; }
  [[noreturn]] static void fail(const Token& t, const char* what) { syntaxError(t.line, t.column, what); }

  // Inside parentheses a line break is only layout.
  const Token& peek() {
    if (!contexts_.empty() && contexts_.back() == Context::Paren) {
      while (tokens_[pos_].kind == TokenKind::Newline) ++pos_;
    }
    return tokens_[pos_];
  }
  const Token& next() {
    const Token& t = peek();
    if (t.kind != TokenKind::End) ++pos_;
    return t;
  }
  void expect(const char* op, const char* what) {
    if (!isOp(peek(), op)) fail(peek(), what);
    ++pos_;
  }
  bool inMatrix() const { return !contexts_.empty() && contexts_.back() == Context::Matrix; }

  Statement statement() {
    Statement s;
    if (peek().kind == TokenKind::Name && isOp(tokens_[pos_ + 1], "=")) {
      s.target = next().text;
      ++pos_;
    }
    s.expression = expression();
    return s;
  }

  std::unique_ptr<Node> make(NodeKind kind, const Token& at) {
    auto n = std::make_unique<Node>();
    n->kind = kind;
    n->line = at.line;
    n->column = at.column;
    return n;
  }

  // A run of operators of one precedence becomes one flat node, so that a sum
  // of a million terms is a wide tree, not a deep one.
  void appendOperand(std::unique_ptr<Node>& chain, const Token& op, std::unique_ptr<Node> rhs) {
    if (chain->kind != NodeKind::Binary || chain->level != level(op)) {
      auto n = make(NodeKind::Binary, op);
      n->level = level(op);
      n->children.push_back(std::move(chain));
      chain = std::move(n);
    }
    chain->operators.push_back(op.text);
    chain->children.push_back(std::move(rhs));
  }
  static int level(const Token& op) { return isOp(op, "+") || isOp(op, "-") ? 0 : 1; }

  // Parentheses, signs, calls and matrices nest by recursion; each level is
  // counted so that no text can exhaust the stack.
  class Nesting {
   public:
    Nesting(Parser& p, const Token& at) : depth_(p.depth_) {
      if (++depth_ > kMaxExpressionNesting) {
        --depth_;
        throwScriptError("Tavrix::host::NestingTooDeep", at.line, at.column, kMaxExpressionNesting);
      }
    }
    ~Nesting() { --depth_; }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;

   private:
    int& depth_;
  };

  // In a matrix, "a -b" starts a new element while "a - b" and "a-b" subtract.
  bool startsElement(const Token& op) {
    return inMatrix() && op.spaceBefore && !tokens_[pos_ + 1].spaceBefore;
  }

  std::unique_ptr<Node> expression() {
    auto lhs = term();
    for (;;) {
      const Token& op = peek();
      if (!(isOp(op, "+") || isOp(op, "-")) || startsElement(op)) return lhs;
      ++pos_;
      appendOperand(lhs, op, term());
    }
  }

  std::unique_ptr<Node> term() {
    auto lhs = unary();
    for (;;) {
      const Token& op = peek();
      if (!(isOp(op, "*") || isOp(op, "/") || isOp(op, ".*") || isOp(op, "./"))) return lhs;
      ++pos_;
      appendOperand(lhs, op, unary());
    }
  }

  std::unique_ptr<Node> unary() {
    const Token& t = peek();
    if (isOp(t, "-") || isOp(t, "+")) {
      const Nesting nesting(*this, t);
      ++pos_;
      auto n = make(t.text == "-" ? NodeKind::Negate : NodeKind::Plus, t);
      n->children.push_back(unary());
      return n;
    }
    return primary();
  }

  std::unique_ptr<Node> primary() {
    const Token& t = next();
    switch (t.kind) {
      case TokenKind::Number: {
        auto n = make(NodeKind::Number, t);
        n->number = t.number;
        return n;
      }
      case TokenKind::String: {
        auto n = make(NodeKind::String, t);
        n->text = t.text;
        return n;
      }
      case TokenKind::Name:
        return nameOrCall(t);
      case TokenKind::Operator:
        if (t.text == "(") {
          const Nesting nesting(*this, t);
          contexts_.push_back(Context::Paren);
          auto inner = expression();
          expect(")", "expected ')'");
          contexts_.pop_back();
          return inner;
        }
        if (t.text == "[") {
          const Nesting nesting(*this, t);
          return matrix(t);
        }
        if (t.text == "@") {
          const Token& name = next();
          if (name.kind != TokenKind::Name) fail(name, "expected a function name after '@'");
          auto n = make(NodeKind::Handle, t);
          n->text = name.text;
          return n;
        }
        break;
      default:
        break;
    }
    fail(t, "expected a value");
  }

  std::unique_ptr<Node> nameOrCall(const Token& name) {
    const Token& open = peek();
    // In a matrix, "f (1)" is two elements.
    if (!isOp(open, "(") || (inMatrix() && open.spaceBefore)) {
      auto n = make(NodeKind::Name, name);
      n->text = name.text;
      return n;
    }
    const Nesting nesting(*this, name);
    ++pos_;
    auto n = make(NodeKind::Call, name);
    n->text = name.text;
    contexts_.push_back(Context::Paren);
    if (!isOp(peek(), ")")) {
      for (;;) {
        n->children.push_back(expression());
        if (!isOp(peek(), ",")) break;
        ++pos_;
      }
    }
    expect(")", "expected ')' or ',' in the argument list");
    contexts_.pop_back();
    return n;
  }

  std::unique_ptr<Node> matrix(const Token& open) {
    auto n = make(NodeKind::Matrix, open);
    contexts_.push_back(Context::Matrix);
    std::size_t inRow = 0;
    const auto endRow = [&] {
      if (inRow > 0) n->rowLengths.push_back(inRow);
      inRow = 0;
    };
    for (;;) {
      const Token& t = peek();
      if (isOp(t, "]")) {
        ++pos_;
        break;
      }
      if (t.kind == TokenKind::End) fail(t, "expected ']'");
      if (isOp(t, ";") || t.kind == TokenKind::Newline) {
        ++pos_;
        endRow();
        continue;
      }
      if (isOp(t, ",")) {
        ++pos_;
        continue;
      }
      n->children.push_back(expression());
      ++inRow;
      const Token& after = peek();
      if (!(isOp(after, "]") || isOp(after, ";") || isOp(after, ",") || after.kind == TokenKind::Newline ||
            after.spaceBefore)) {
        fail(after, "expected ',', ';' or ']'");
      }
    }
    endRow();
    contexts_.pop_back();
    return n;
  }

  std::vector<Token> tokens_;
  std::size_t pos_ = 0;
  std::vector<Context> contexts_;
  int depth_ = 0;
};

}  // namespace

std::vector<Statement> parse(std::string_view text) { return Parser(tokenize(text)).program(); }

}  // namespace qvhost::script
