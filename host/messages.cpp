// Errors and warnings by message identifier, and the message catalogue: the
// host's own texts from catalog/host.def and those libraries register.

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <unordered_map>

#include "host_p.h"

namespace {

struct CatalogEntry {
  std::string_view identifier;
  const char* text;
};

#define QV_MESSAGE(id, text) {id, text},
const CatalogEntry kCatalog[] = {
#include "catalog/host.def"
};
#undef QV_MESSAGE

constexpr const char* kUnknownMessageId = "Tavrix::host::UnknownMessage";

// Texts handed over by libraries at load time.
std::unordered_map<std::string, std::string>& registeredTexts() {
  static std::unordered_map<std::string, std::string> texts;
  return texts;
}

const char* findText(const char* identifier) {
  if (identifier == nullptr || *identifier == '\0') return nullptr;
  const std::string_view id(identifier);
  for (const CatalogEntry& entry : kCatalog) {
    if (entry.identifier == id) return entry.text;
  }
  const auto& registered = registeredTexts();
  const auto it = registered.find(std::string(id));
  return it != registered.end() ? it->second.c_str() : nullptr;
}

// An identifier without a catalogue entry still reads as a sentence naming it;
// its arguments are dropped because their types are unknown.
std::string unknownText(const char* identifier) {
  const char* fallback = findText(kUnknownMessageId);
  return qvhost::format(fallback != nullptr ? fallback : "%s", identifier != nullptr ? identifier : "(null)");
}

std::vector<HostWarning> g_warnings;

}  // namespace

namespace qvhost {

std::string formatV(const char* format, std::va_list args) {
  if (format == nullptr) return {};
  std::va_list copy;
  va_copy(copy, args);
  char small[256];
  const int n = std::vsnprintf(small, sizeof small, format, copy);
  va_end(copy);
  if (n < 0) return format;  // a bad conversion: the raw format is still readable
  if (static_cast<std::size_t>(n) < sizeof small) return std::string(small, static_cast<std::size_t>(n));
  std::string out(static_cast<std::size_t>(n) + 1, '\0');
  std::vsnprintf(out.data(), out.size(), format, args);
  out.resize(static_cast<std::size_t>(n));
  return out;
}

std::string format(const char* fmt, ...) {
  std::va_list args;
  va_start(args, fmt);
  std::string out = formatV(fmt, args);
  va_end(args);
  return out;
}

void throwHostErrorText(const char* identifier, std::string message) {
  throw HostError(identifier != nullptr ? identifier : "", std::move(message));
}

void throwHostError(const char* identifier, ...) {
  std::va_list args;
  va_start(args, identifier);
  std::string message = hostFormatMessageV(identifier, args);
  va_end(args);
  throwHostErrorText(identifier, std::move(message));
}

void throwOutOfMemory(std::size_t bytes) { throwHostError(kHostOutOfMemoryId, bytes); }

void throwSizeOverflow() {
  throwHostErrorText(kHostOutOfMemoryId,
                     "Out of memory: the requested size does not fit in memory addresses.");
}

}  // namespace qvhost

// ---- HostError --------------------------------------------------------------------

HostError::HostError(std::string identifier, std::string message)
    : identifier_(std::move(identifier)), message_(std::move(message)) {}
const char* HostError::what() const noexcept { return message_.c_str(); }
const std::string& HostError::identifier() const noexcept { return identifier_; }
const std::string& HostError::message() const noexcept { return message_; }

// ---- Raising errors and warnings ------------------------------------------------------

void zrErrMsgIdAndTxt(const char* identifier, const char* format, ...) {
  std::va_list args;
  va_start(args, format);
  std::string message = qvhost::formatV(format, args);
  va_end(args);
  qvhost::throwHostErrorText(identifier, std::move(message));
}

void zrErrMsgId(const char* identifier, ...) {
  std::va_list args;
  va_start(args, identifier);
  std::string message = hostFormatMessageV(identifier, args);
  va_end(args);
  qvhost::throwHostErrorText(identifier, std::move(message));
}

void zrWarningMsgId(const char* identifier, ...) {
  std::va_list args;
  va_start(args, identifier);
  std::string message = hostFormatMessageV(identifier, args);
  va_end(args);
  qvhost::raiseWarning(identifier, message);
}

void qvhost::raiseWarning(const char* identifier, const std::string& message) {
  utPrintf("Warning: %s\n", message.c_str());
  g_warnings.push_back({identifier != nullptr ? identifier : "", message});
}

std::vector<HostWarning> hostRecordedWarnings() { return g_warnings; }
void hostClearRecordedWarnings() { g_warnings.clear(); }

// ---- Catalogue -------------------------------------------------------------------------

// English is the only language shipped, so every locale reads the English text.
std::string hostCatalogText(const char* identifier, const std::locale& /*locale*/) {
  const char* text = findText(identifier);
  return text != nullptr ? std::string(text) : unknownText(identifier);
}

std::string hostFormatMessage(const char* identifier, ...) {
  std::va_list args;
  va_start(args, identifier);
  std::string out = hostFormatMessageV(identifier, args);
  va_end(args);
  return out;
}

std::string hostFormatMessageV(const char* identifier, std::va_list args) {
  const char* text = findText(identifier);
  return text != nullptr ? qvhost::formatV(text, args) : unknownText(identifier);
}

bool hostCatalogHas(const char* identifier) { return findText(identifier) != nullptr; }

void hostRegisterMessages(const HostMessageText* texts, std::size_t count) {
  if (texts == nullptr) return;
  auto& registered = registeredTexts();
  for (std::size_t i = 0; i < count; ++i) {
    if (texts[i].identifier == nullptr || *texts[i].identifier == '\0' || texts[i].text == nullptr) continue;
    registered.emplace(texts[i].identifier, texts[i].text);
  }
}
