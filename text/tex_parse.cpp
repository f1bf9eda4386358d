// The markup interpreter: plain strings, the TeX subset and LaTeX-checked
// strings become a flat list of glyph, space, line and script-pen steps.
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "qvgui/text.h"
#include "text/layout_p.h"
#include "text/tex_p.h"

namespace gui_objects::font {

namespace {

using detail::kSymbolAfmIndex;

constexpr double kScriptShrink = 0.7;
constexpr double kSuperscriptRise = 0.4;
constexpr double kSubscriptDrop = 0.2;
// Deep enough for any label; shallow enough that hostile input cannot exhaust
// the stack through the recursive descent.
constexpr int kMaxDepth = 200;

bool isLetter(char c) noexcept { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

// Font, size, colour and baseline of the text being read; groups save and
// restore it whole.
struct Style {
  std::string face;
  int weight = 1;
  int angle = 0;
  bool shapeChosen = false;  // a font command set weight or angle in this group
  double size = 10.0;
  double rise = 0.0;
  Color3d color;
  int afm = 12;
  int mathItalicAfm = 14;
};

class Reader {
 public:
  Reader(TextKind kind, std::string_view text, const StringProps& props, std::vector<TextAtom>* out)
      : latex_(kind == TextKind::Latex), text_(text), out_(out) {
    style_.face = props.faceName;
    style_.weight = props.weight;
    style_.angle = props.angle;
    style_.size = detail::layoutSize(props.size);
    style_.color = props.color;
    resolveFace();
  }

  TextError run() {
    readSequence(false);
    if (math_)
      fail(mathOpen_,
           displayMath_ ? "math opened with $$ is not closed" : "math opened with $ is not closed");
    return std::move(error_);
  }

 private:
  // ---- Output -------------------------------------------------------------

  void fail(std::size_t at, std::string message) {
    if (!error_.ok()) return;
    error_.offset = at;
    error_.message = std::move(message);
  }

  void resolveFace() {
    if (out_ == nullptr) return;
    style_.afm = afmIndexFor(style_.face.c_str(), style_.weight, style_.angle);
    style_.mathItalicAfm = afmIndexFor(style_.face.c_str(), style_.weight, 1);
  }

  TextAtom& push(AtomOp op, std::size_t at) {
    TextAtom& a = out_->emplace_back();
    a.op = op;
    a.afmIndex = style_.afm;
    a.size = style_.size;
    a.rise = style_.rise;
    a.color = style_.color;
    a.offset = at;
    return a;
  }

  void step(AtomOp op, std::size_t at) {
    if (out_ != nullptr) push(op, at);
  }

  void lineBreak(std::size_t at) {
    step(AtomOp::LineBreak, at);
    mathLast_ = detail::MathClass::None;
  }

  void space(double ems, std::size_t at) {
    if (out_ != nullptr) push(AtomOp::Space, at).space = ems * style_.size;
  }

  // Consecutive bytes in one face, size, baseline and colour share an atom so
  // that the pairs between them are kerned.
  void emitByte(int afm, unsigned char byte, std::size_t at) {
    if (out_ == nullptr) return;
    if (!out_->empty()) {
      TextAtom& last = out_->back();
      if (last.op == AtomOp::Glyphs && last.afmIndex == afm && last.size == style_.size &&
          last.rise == style_.rise && last.color == style_.color) {
        last.bytes.push_back(static_cast<char>(byte));
        return;
      }
    }
    TextAtom& a = push(AtomOp::Glyphs, at);
    a.afmIndex = afm;
    a.bytes.push_back(static_cast<char>(byte));
  }

  void emitCodePoint(std::uint32_t cp, std::size_t at) {
    if (cp == '\t') cp = ' ';
    if (cp < 0x20 || cp == 0x7F) return;
    // A hyphen is too short and too thin for a minus sign in a formula.
    if (cp == '-' && math_) cp = 0x2212;
    if (cp != ' ') mathSpacing(detail::mathClassOf(cp), at);
    if (cp <= 0xFF) {
      const bool italicLetter = math_ && !style_.shapeChosen && cp < 0x80 && isLetter(static_cast<char>(cp));
      emitByte(italicLetter ? style_.mathItalicAfm : style_.afm, static_cast<unsigned char>(cp), at);
      return;
    }
    const int code = detail::symbolCodeForCodePoint(cp);
    if (code >= 0)
      emitByte(kSymbolAfmIndex, static_cast<unsigned char>(code), at);
    else
      emitByte(style_.afm, '?', at);
  }

  // TeX's spacing in formulas, reduced to its common cases: a binary
  // operator after something ordinary gets a medium space on each side (one
  // at the start, after an operator, relation or opening is a sign and gets
  // none), a relation a thick space on each side. Scripts keep their spacing
  // tight and leave the class of their base in place.
  void mathSpacing(detail::MathClass cls, std::size_t at) {
    using detail::MathClass;
    if (!math_ || scriptLevel_ > 0) return;
    if (cls == MathClass::Binary && mathLast_ != MathClass::Ordinary) cls = MathClass::Ordinary;
    double ems = 0.0;
    if (mathLast_ == MathClass::Ordinary && cls == MathClass::Binary) ems = 4.0 / 18.0;
    if (mathLast_ == MathClass::Binary && cls != MathClass::Relation) ems = 4.0 / 18.0;
    if ((mathLast_ == MathClass::Ordinary && cls == MathClass::Relation) ||
        (mathLast_ == MathClass::Relation && (cls == MathClass::Ordinary || cls == MathClass::Opening)))
      ems = 5.0 / 18.0;
    if (ems > 0.0) space(ems, at);
    mathLast_ = cls;
  }

  void emitLiteral(std::string_view bytes, std::size_t at) {
    for (char c : bytes) emitByte(style_.afm, static_cast<unsigned char>(c), at);
  }

  // ---- Reading ------------------------------------------------------------

  bool atEnd() const noexcept { return pos_ >= text_.size(); }
  char peek() const noexcept { return atEnd() ? '\0' : text_[pos_]; }
  void skipSpaces() {
    while (!atEnd() && text_[pos_] == ' ') ++pos_;
  }

  // Reads items up to the end, or up to a closing brace when inGroup (which
  // is left for the caller).
  void readSequence(bool inGroup) {
    while (!atEnd()) {
      if (peek() == '}' && inGroup) return;
      readItem();
    }
  }

  // One character, group, command or script pair.
  void readItem() {
    const std::size_t at = pos_;
    const char c = text_[pos_];
    switch (c) {
      case '{':
        readGroup();
        return;
      case '}':
        ++pos_;
        fail(at, "unbalanced }: no group is open");
        emitLiteral("}", at);
        return;
      case '^':
      case '_':
        readScripts();
        return;
      case '\\':
        readCommand();
        return;
      case '\n':
        ++pos_;
        lineBreak(at);
        return;
      default:
        break;
    }
    if (latex_) {
      switch (c) {
        case '$':
          toggleMath();
          return;
        case '%':
          while (!atEnd() && text_[pos_] != '\n') ++pos_;
          if (!atEnd()) ++pos_;
          return;
        case '~':
          ++pos_;
          emitCodePoint(' ', at);
          return;
        case ' ':
          if (!math_) break;
          ++pos_;  // formulas space themselves
          return;
        case '&':
        case '#':
          ++pos_;
          fail(at, std::string(1, c) + " is not allowed here; write \\" + c);
          emitLiteral(std::string_view(&text_[at], 1), at);
          return;
        default:
          break;
      }
    }
    emitCodePoint(detail::decodeUtf8(text_, pos_), at);
  }

  void toggleMath() {
    const std::size_t at = pos_;
    const bool dollars = pos_ + 1 < text_.size() && text_[pos_ + 1] == '$';
    if (!math_) {
      math_ = true;
      mathLast_ = detail::MathClass::None;
      displayMath_ = dollars;
      mathOpen_ = at;
      pos_ += dollars ? 2 : 1;
      return;
    }
    if (displayMath_ && !dollars) fail(at, "math opened with $$ is closed with a single $");
    if (!displayMath_ && dollars) {
      // "$x$$y$": the first $ of the pair closes, the second opens again.
      pos_ += 1;
      math_ = false;
      return;
    }
    pos_ += dollars ? 2 : 1;
    math_ = false;
  }

  bool enter(std::size_t at) {
    if (depth_ >= kMaxDepth) {
      fail(at, "markup nested too deeply");
      return false;
    }
    ++depth_;
    return true;
  }

  void readGroup() {
    const std::size_t open = pos_;
    ++pos_;
    if (!enter(open)) return;
    const Style saved = style_;
    readSequence(true);
    if (atEnd())
      fail(open, "missing } for the { opened here");
    else
      ++pos_;
    style_ = saved;
    --depth_;
  }

  // A superscript, a subscript, or one of each on the same base.
  void readScripts() {
    bool seen[2] = {false, false};
    step(AtomOp::ScriptMark, pos_);
    for (int k = 0; k < 2 && !atEnd(); ++k) {
      const int which = text_[pos_] == '^' ? 0 : (text_[pos_] == '_' ? 1 : -1);
      if (which < 0 || seen[which]) break;
      seen[which] = true;
      if (k == 1) step(AtomOp::ScriptSwap, pos_);
      readScript(which == 0);
    }
    if (!seen[1] || !seen[0]) step(AtomOp::ScriptSwap, pos_);
    step(AtomOp::ScriptJoin, pos_);
    if (!atEnd() && ((text_[pos_] == '^' && seen[0]) || (text_[pos_] == '_' && seen[1])))
      fail(pos_, text_[pos_] == '^' ? "double superscript: use braces" : "double subscript: use braces");
  }

  void readScript(bool superscript) {
    const std::size_t at = pos_;
    ++pos_;
    if (latex_ && !math_) fail(at, std::string(superscript ? "^" : "_") + " is allowed only in math mode");
    skipSpaces();
    const char next = peek();
    if (atEnd() || next == '}' || next == '^' || next == '_') {
      fail(at, std::string("missing argument for ") + (superscript ? "^" : "_"));
      emitLiteral(superscript ? "^" : "_", at);
      return;
    }
    if (!enter(at)) return;
    const Style saved = style_;
    style_.rise += (superscript ? kSuperscriptRise : -kSubscriptDrop) * style_.size;
    style_.size *= kScriptShrink;
    ++scriptLevel_;
    if (next == '{')
      readGroup();
    else if (next == '\\')
      readCommand();
    else
      emitCodePoint(detail::decodeUtf8(text_, pos_), pos_);
    --scriptLevel_;
    style_ = saved;
    --depth_;
  }

  // The text between braces right after a command; false (with the error
  // reported at the command) when there is none or it is not closed.
  bool readRawArgument(std::size_t command, std::string_view name, std::string_view* arg) {
    skipSpaces();
    if (peek() != '{') {
      fail(command, "\\" + std::string(name) + " needs an argument in braces");
      return false;
    }
    const std::size_t close = text_.find('}', pos_);
    if (close == std::string_view::npos) {
      fail(pos_, "missing } for the { opened here");
      pos_ = text_.size();
      return false;
    }
    *arg = text_.substr(pos_ + 1, close - pos_ - 1);
    pos_ = close + 1;
    return true;
  }

  void setShape(int weight, int angle) {
    style_.weight = weight;
    style_.angle = angle;
    style_.shapeChosen = true;
    resolveFace();
  }

  void mathOnly(std::size_t at, std::string_view name) {
    if (latex_ && !math_) fail(at, "\\" + std::string(name) + " is allowed only in math mode");
  }

  void readCommand() {
    const std::size_t at = pos_;
    ++pos_;
    if (atEnd()) {
      fail(at, "\\ at the end of the string");
      emitLiteral("\\", at);
      return;
    }
    if (!isLetter(peek())) {
      readControlSymbol(at);
      return;
    }
    const std::size_t start = pos_;
    while (!atEnd() && isLetter(text_[pos_])) ++pos_;
    const std::string_view name = text_.substr(start, pos_ - start);
    skipSpaces();

    std::uint32_t codePoint = 0;
    if (const int code = detail::symbolCodeForCommand(name, &codePoint); code >= 0) {
      mathOnly(at, name);
      mathSpacing(detail::mathClassOf(codePoint), at);
      emitByte(kSymbolAfmIndex, static_cast<unsigned char>(code), at);
    } else if (name == "bf") {
      setShape(2, style_.angle);
    } else if (name == "it" || name == "sl") {
      setShape(style_.weight, name == "it" ? 1 : 2);
    } else if (name == "rm") {
      setShape(1, 0);
    } else if (name == "textbf" || name == "textit" || name == "textrm" || name == "mathbf" ||
               name == "mathit" || name == "mathrm") {
      readStyledArgument(at, name);
    } else if (name == "fontname") {
      std::string_view arg;
      if (!readRawArgument(at, name, &arg)) return;
      // An empty name would match the first family of the face table.
      if (arg.find_first_not_of(' ') == std::string_view::npos) {
        fail(at, "\\fontname needs a face name");
        return;
      }
      style_.face.assign(arg.begin(), arg.end());
      resolveFace();
    } else if (name == "fontsize") {
      readFontSize(at, name);
    } else if (name == "color") {
      readColor(at);
    } else if (name == "quad" || name == "qquad") {
      space(name == "quad" ? 1.0 : 2.0, at);
    } else {
      fail(at, "unknown command \\" + std::string(name));
      emitLiteral(text_.substr(at, start + name.size() - at), at);
    }
  }

  void readControlSymbol(std::size_t at) {
    const char c = text_[pos_++];
    switch (c) {
      case '\\':
        if (latex_)
          lineBreak(at);
        else
          emitByte(style_.afm, '\\', at);
        return;
      case '{':
      case '}':
      case '_':
      case '^':
      case '%':
      case '$':
      case '&':
      case '#':
      case '~':
        emitByte(style_.afm, static_cast<unsigned char>(c), at);
        return;
      case ',':
        space(3.0 / 18.0, at);
        return;
      case ':':
        space(4.0 / 18.0, at);
        return;
      case ';':
        space(5.0 / 18.0, at);
        return;
      case ' ':
        space(1.0 / 3.0, at);
        return;
      default:
        break;
    }
    --pos_;
    std::size_t next = pos_;
    (void)detail::decodeUtf8(text_, next);
    fail(at, "unknown command " + std::string(text_.substr(at, next - at)));
    emitLiteral(text_.substr(at, next - at), at);
    pos_ = next;
  }

  // \textbf{..} and kin: a group whose shape is set first.
  void readStyledArgument(std::size_t at, std::string_view name) {
    if (name.substr(0, 4) == "math") mathOnly(at, name);
    skipSpaces();
    if (peek() != '{') {
      fail(at, "\\" + std::string(name) + " needs an argument in braces");
      return;
    }
    const Style saved = style_;
    const std::string_view shape = name.substr(name.size() - 2);
    if (shape == "bf")
      setShape(2, style_.angle);
    else if (shape == "it")
      setShape(style_.weight, 1);
    else
      setShape(1, 0);
    readGroup();
    style_ = saved;
  }

  void readFontSize(std::size_t at, std::string_view name) {
    std::string_view arg;
    if (!readRawArgument(at, name, &arg)) return;
    const std::string digits(arg);
    char* end = nullptr;
    const double size = std::strtod(digits.c_str(), &end);
    // The cap keeps every position of a layout finite.
    if (digits.empty() || *end != '\0' || detail::layoutSize(size) != size) {
      fail(at, "\\fontsize needs a number of points in (0, 10000], not '" + digits + "'");
      return;
    }
    style_.size = size;
  }

  void readColor(std::size_t at) {
    skipSpaces();
    bool rgb = false;
    if (peek() == '[') {
      const std::size_t close = text_.find(']', pos_);
      const std::string_view model =
          close == std::string_view::npos ? std::string_view() : text_.substr(pos_ + 1, close - pos_ - 1);
      if (model != "rgb") {
        fail(pos_, "\\color supports only the rgb model");
        if (close == std::string_view::npos) return;
      }
      rgb = true;
      pos_ = close + 1;
    }
    std::string_view arg;
    if (!readRawArgument(at, "color", &arg)) return;
    Color3d color;
    if (rgb ? parseRgb(arg, &color) : detail::colorByName(arg, &color)) {
      style_.color = color;
      return;
    }
    fail(at, rgb ? "\\color[rgb] needs three numbers separated by commas, not '" + std::string(arg) + "'"
                 : "unknown colour name '" + std::string(arg) + "'");
  }

  static bool parseRgb(std::string_view arg, Color3d* out) {
    const std::string s(arg);
    double v[3];
    const char* p = s.c_str();
    for (int k = 0; k < 3; ++k) {
      char* end = nullptr;
      v[k] = std::strtod(p, &end);
      if (end == p || !std::isfinite(v[k])) return false;
      while (*end == ' ') ++end;
      if (k < 2 && *end++ != ',') return false;
      if (k == 2 && *end != '\0') return false;
      p = end;
    }
    *out = Color3d(v[0], v[1], v[2]);
    return true;
  }

  const bool latex_;
  std::string_view text_;
  std::vector<TextAtom>* out_;
  std::size_t pos_ = 0;
  int depth_ = 0;
  bool math_ = false;
  bool displayMath_ = false;
  int scriptLevel_ = 0;
  detail::MathClass mathLast_ = detail::MathClass::None;
  std::size_t mathOpen_ = 0;
  Style style_;
  TextError error_;
};

// Plain strings: every character as it is, '\n' between lines.
void readPlain(std::string_view text, const StringProps& props, std::vector<TextAtom>* out) {
  const int afm = afmIndexFor(props.faceName.c_str(), props.weight, props.angle);
  const double size = detail::layoutSize(props.size);
  TextAtom* current = nullptr;
  auto start = [&](AtomOp op, int face, std::size_t at) -> TextAtom& {
    TextAtom& a = out->emplace_back();
    a.op = op;
    a.afmIndex = face;
    a.size = size;
    a.color = props.color;
    a.offset = at;
    return a;
  };
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t at = i;
    std::uint32_t cp = detail::decodeUtf8(text, i);
    if (cp == '\n') {
      start(AtomOp::LineBreak, afm, at);
      current = nullptr;
      continue;
    }
    if (cp == '\t') cp = ' ';
    if (cp < 0x20 || cp == 0x7F) continue;
    int face = afm, code = static_cast<int>(cp);
    if (cp > 0xFF) {
      code = detail::symbolCodeForCodePoint(cp);
      face = code >= 0 ? kSymbolAfmIndex : afm;
      if (code < 0) code = '?';
    }
    if (current == nullptr || current->afmIndex != face) current = &start(AtomOp::Glyphs, face, at);
    current->bytes.push_back(static_cast<char>(code));
  }
}

}  // namespace

TextError Interpreter::interpret(std::string_view text, const StringProps& props,
                                 std::vector<TextAtom>* out) const {
  if (kind_ != TextKind::Tex && kind_ != TextKind::Latex) {
    if (out != nullptr) readPlain(text, props, out);
    return {};
  }
  return Reader(kind_, text, props, out).run();
}

}  // namespace gui_objects::font
