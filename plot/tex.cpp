// The TeX subset of titles, labels and tick labels: super- and subscripts,
// Greek letters and a few signs from the Symbol face, italic switches.
#include <cctype>
#include <cstring>

#include "plot/plot_p.h"

namespace qvgui::plot::detail {

namespace {

struct SymbolName {
  const char* name;
  char code;  // Symbol-face encoding
};

// clang-format off
constexpr SymbolName kSymbols[] = {
    {"alpha", 'a'}, {"beta", 'b'}, {"gamma", 'g'}, {"delta", 'd'}, {"epsilon", 'e'}, {"zeta", 'z'},
    {"eta", 'h'}, {"theta", 'q'}, {"iota", 'i'}, {"kappa", 'k'}, {"lambda", 'l'}, {"mu", 'm'},
    {"nu", 'n'}, {"xi", 'x'}, {"pi", 'p'}, {"rho", 'r'}, {"sigma", 's'}, {"tau", 't'},
    {"upsilon", 'u'}, {"phi", 'f'}, {"chi", 'c'}, {"psi", 'y'}, {"omega", 'w'},
    {"Gamma", 'G'}, {"Delta", 'D'}, {"Theta", 'Q'}, {"Lambda", 'L'}, {"Xi", 'X'}, {"Pi", 'P'},
    {"Sigma", 'S'}, {"Upsilon", 'U'}, {"Phi", 'F'}, {"Psi", 'Y'}, {"Omega", 'W'},
    {"infty", '\xA5'}, {"pm", '\xB1'}, {"times", '\xB4'}, {"cdot", '\xD7'}, {"circ", '\xB0'},
    {"partial", '\xB6'}, {"nabla", '\xD1'}, {"leq", '\xA3'}, {"geq", '\xB3'}, {"approx", '\xBB'}};
// clang-format on

constexpr double kScriptScale = 0.7;
constexpr double kSuperRise = 0.42;
constexpr double kSubRise = -0.2;

class Parser {
 public:
  explicit Parser(const std::string& s) : s_(s) {}

  std::vector<TextRun> run() {
    parse(1.0, 0.0, false, false);
    return std::move(runs_);
  }

 private:
  void emit(char ch, bool symbol, double scale, double rise, bool italic) {
    if (!runs_.empty()) {
      TextRun& last = runs_.back();
      if (last.symbol == symbol && last.scale == scale && last.rise == rise && last.italic == italic) {
        last.bytes.push_back(ch);
        return;
      }
    }
    runs_.push_back(TextRun{std::string(1, ch), symbol, italic, scale, rise});
  }

  // Parses until the end or an unmatched closing brace when inGroup.
  void parse(double scale, double rise, bool italic, bool inGroup) {
    while (pos_ < s_.size()) {
      const char ch = s_[pos_];
      if (ch == '}' && inGroup) {
        ++pos_;
        return;
      }
      if (ch == '{') {
        ++pos_;
        parse(scale, rise, italic, true);
        continue;
      }
      if ((ch == '^' || ch == '_') && pos_ + 1 < s_.size()) {
        ++pos_;
        const double r = rise + (ch == '^' ? kSuperRise : kSubRise) * scale;
        script(scale * kScriptScale, r, italic);
        continue;
      }
      if (ch == '\\' && pos_ + 1 < s_.size()) {
        if (control(scale, rise, &italic)) continue;
      }
      emit(ch, false, scale, rise, italic);
      ++pos_;
    }
  }

  void script(double scale, double rise, bool italic) {
    if (s_[pos_] == '{') {
      ++pos_;
      parse(scale, rise, italic, true);
    } else if (s_[pos_] == '\\') {
      if (!control(scale, rise, &italic)) {
        emit('\\', false, scale, rise, italic);
        ++pos_;
      }
    } else {
      emit(s_[pos_++], false, scale, rise, italic);
    }
  }

  // A control word at pos_ (the backslash); true when it was consumed.
  bool control(double scale, double rise, bool* italic) {
    std::size_t end = pos_ + 1;
    while (end < s_.size() && std::isalpha(static_cast<unsigned char>(s_[end]))) ++end;
    const std::string word = s_.substr(pos_ + 1, end - pos_ - 1);
    if (word.empty()) {
      // \{ \} \\ \^ \_ \$ stand for themselves.
      emit(s_[pos_ + 1], false, scale, rise, *italic);
      pos_ += 2;
      return true;
    }
    if (word == "it" || word == "rm") {
      *italic = word == "it";
      pos_ = end;
      if (pos_ < s_.size() && s_[pos_] == ' ') ++pos_;
      return true;
    }
    for (const SymbolName& sym : kSymbols) {
      if (word == sym.name) {
        emit(sym.code, true, scale, rise, false);
        pos_ = end;
        if (pos_ < s_.size() && s_[pos_] == ' ') ++pos_;
        return true;
      }
    }
    return false;
  }

  const std::string& s_;
  std::size_t pos_ = 0;
  std::vector<TextRun> runs_;
};

}  // namespace

std::vector<TextRun> layoutTex(const std::string& text) { return Parser(text).run(); }

}  // namespace qvgui::plot::detail
