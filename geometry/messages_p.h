// The catalogue of every message the library raises: each identifier is
// declared once, in its area's messages.def, with its English text and the
// types of its arguments. From that declaration come the identifier constant
// (id::name), the typed raise (raise::name) and warn (warn::name) functions
// and the table of texts handed to the host when the library loads. A text
// whose printf conversions disagree with the declared types, or a raise with
// the wrong arguments, does not compile.
#pragma once

#include <cstddef>
#include <type_traits>

#include "qvgui/host.h"

namespace qvgui_messages {

// Library: the text is the library's own and is registered with the host.
// Host: the host owns the text; the library only raises the identifier.
// Inline: raised with its text under an identifier whose catalogue entry
// says something else (kept for callers that match on the exact wording).
enum class Owner { Library, Host, Inline };

// ---- Checking printf conversions at compile time ---------------------------------

struct Conversion {
  char length;  // 0, 'h', 'H' (hh), 'l', 'q' (ll), 'z', 'j', 't', 'L'
  char type;    // d i u x X o f F e E g G a A s c p
};

// 1 when a conversion was read into out, 0 at the end of the text, -1 when the
// text holds something the raise functions do not support (a '*' width, an
// unknown conversion, a lone '%' at the end).
constexpr int nextConversion(const char*& p, Conversion& out) noexcept {
  for (; *p != '\0'; ++p) {
    if (*p != '%') continue;
    ++p;
    if (*p == '%') continue;
    while (*p == '-' || *p == '+' || *p == ' ' || *p == '#' || *p == '0') ++p;
    while (*p >= '0' && *p <= '9') ++p;
    if (*p == '.') {
      ++p;
      while (*p >= '0' && *p <= '9') ++p;
    }
    if (*p == '*') return -1;
    char length = 0;
    if (*p == 'h' || *p == 'l') {
      length = p[1] == *p ? (*p == 'h' ? 'H' : 'q') : *p;
      p += length == 'H' || length == 'q' ? 2 : 1;
    } else if (*p == 'z' || *p == 'j' || *p == 't' || *p == 'L') {
      length = *p++;
    }
    const char type = *p;
    switch (type) {
      case 'd':
      case 'i':
      case 'u':
      case 'x':
      case 'X':
      case 'o':
      case 'f':
      case 'F':
      case 'e':
      case 'E':
      case 'g':
      case 'G':
      case 'a':
      case 'A':
      case 's':
      case 'c':
      case 'p':
        ++p;
        out = Conversion{length, type};
        return 1;
      default:
        return -1;
    }
  }
  return 0;
}

// Whether an argument of type T is what the conversion reads. Only exact types
// pass: default promotions would hide a size_t handed to "%d" on one platform.
template <class T>
constexpr bool readsAs(Conversion c) noexcept {
  using U = std::remove_cv_t<T>;
  switch (c.type) {
    case 'd':
    case 'i':
      return (c.length == 0 && std::is_same_v<U, int>) || (c.length == 'l' && std::is_same_v<U, long>) ||
             (c.length == 'q' && std::is_same_v<U, long long>) ||
             (c.length == 'z' && std::is_same_v<U, std::make_signed_t<std::size_t>>);
    case 'u':
    case 'x':
    case 'X':
    case 'o':
      return (c.length == 0 && std::is_same_v<U, unsigned>) ||
             (c.length == 'l' && std::is_same_v<U, unsigned long>) ||
             (c.length == 'q' && std::is_same_v<U, unsigned long long>) ||
             (c.length == 'z' && std::is_same_v<U, std::size_t>);
    case 'f':
    case 'F':
    case 'e':
    case 'E':
    case 'g':
    case 'G':
    case 'a':
    case 'A':
      return c.length == 0 && std::is_same_v<U, double>;
    case 's':
      return c.length == 0 && std::is_same_v<U, const char*>;
    case 'c':
      return c.length == 0 && std::is_same_v<U, int>;
    default:
      return false;
  }
}

template <class... A>
constexpr bool formatMatches(const char* text) noexcept {
  const char* p = text;
  Conversion c{0, 0};
  bool ok = true;
  ((ok = ok && nextConversion(p, c) == 1 && readsAs<A>(c)), ...);
  return ok && nextConversion(p, c) == 0;
}

// ---- Argument signatures ------------------------------------------------------------

// One letter per argument type, so the catalogue test can compare the declared
// arguments with the conversions it reads from each text on its own.
template <class T>
struct ArgCode;
template <>
struct ArgCode<int> {
  static constexpr char value = 'i';
};
template <>
struct ArgCode<unsigned> {
  static constexpr char value = 'u';
};
template <>
struct ArgCode<long> {
  static constexpr char value = 'l';
};
template <>
struct ArgCode<unsigned long> {
  static constexpr char value = 'm';
};
template <>
struct ArgCode<long long> {
  static constexpr char value = 'x';
};
template <>
struct ArgCode<unsigned long long> {
  static constexpr char value = 'y';
};
template <>
struct ArgCode<double> {
  static constexpr char value = 'd';
};
template <>
struct ArgCode<const char*> {
  static constexpr char value = 's';
};

template <class Signature>
struct Args;
template <class... A>
struct Args<void(A...)> {
  static constexpr char codes[] = {ArgCode<A>::value..., '\0'};
  static constexpr bool matches(const char* text) noexcept { return formatMatches<A...>(text); }
};

// ---- Raising ----------------------------------------------------------------------------

// The host formats the text, so a host that translates its catalogue shows
// the translation; only Inline messages carry their own wording.
template <class Message, class Signature>
struct Raiser;
template <class Message, class... A>
struct Raiser<Message, void(A...)> {
  [[noreturn]] void operator()(A... args) const {
    if constexpr (Message::owner == Owner::Inline) {
      zrErrMsgIdAndTxt(Message::identifier, Message::text, args...);
    } else {
      zrErrMsgId(Message::identifier, args...);
    }
  }
};

template <class Message, class Signature>
struct Warner;
template <class Message, class... A>
struct Warner<Message, void(A...)> {
  void operator()(A... args) const { zrWarningMsgId(Message::identifier, args...); }
};

// ---- The declarations ------------------------------------------------------------------

#define QV_MESSAGE(name, owner_, identifier_, text_, args_)                                 \
  struct name##Message {                                                                    \
    static constexpr const char* identifier = identifier_;                                  \
    static constexpr const char* text = text_;                                              \
    static constexpr Owner owner = Owner::owner_;                                           \
  };                                                                                        \
  static_assert(Args<void args_>::matches(text_), "message text disagrees with arguments"); \
  namespace id {                                                                            \
  inline constexpr const char* name = identifier_;                                          \
  }                                                                                         \
  namespace raise {                                                                         \
  inline constexpr Raiser<name##Message, void args_> name{};                                \
  }                                                                                         \
  namespace warn {                                                                          \
  inline constexpr Warner<name##Message, void args_> name{};                                \
  }
#include "geometry/message_areas.def"
#undef QV_MESSAGE

// Every declaration, in declaration order.
struct Declared {
  const char* name;
  Owner owner;
  const char* identifier;
  const char* text;
  const char* argCodes;
};

#define QV_MESSAGE(name, owner_, identifier_, text_, args_) \
  Declared{#name, Owner::owner_, identifier_, text_, Args<void args_>::codes},
inline constexpr Declared kDeclared[] = {
#include "geometry/message_areas.def"
};
#undef QV_MESSAGE

}  // namespace qvgui_messages
