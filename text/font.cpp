// Font records: names, the deferred size conversion between units, and the
// flat functions that forward to the record's operations.
#include <strings.h>

#include <climits>
#include <cstring>
#include <new>

#include "qvgui/text.h"

using gui_objects::FontProxy;
using gui_objects::WindowProxyRegistry;

namespace {

// Strings of the record live in the host's checked allocator, like the record.
char* duplicate(const char* s) {
  if (!s) s = "";
  const std::size_t n = std::strlen(s) + 1;
  char* copy = static_cast<char*>(utMallocWithCheck(n));
  std::memcpy(copy, s, n);
  return copy;
}

void replace(char*& field, const char* s) {
  char* copy = duplicate(s);  // before the free: s may be field itself
  utFree(field);
  field = copy;
}

bool isFixedWidthName(const char* name) {
  const char* fixed = WindowProxyRegistry::FindFontProxy()->getFixedWidthFontName();
  return name && fixed && strcasecmp(name, fixed) == 0;
}

}  // namespace

// ---- Life cycle ------------------------------------------------------------------------

zrFont::zrFont() : name_(duplicate("helvetica")), systemName_(nullptr) {
  try {
    systemName_ = duplicate("helvetica");
  } catch (...) {
    utFree(name_);
    throw;
  }
}

zrFont::zrFont(const zrFont& other)
    : name_(duplicate(other.name_)),
      size_(other.size_),
      units_(other.units_),
      storedUnits_(other.storedUnits_),
      smoothing_(other.smoothing_),
      conversionPending_(other.conversionPending_),
      heightReference_(other.heightReference_),
      referenceUnknown_(other.referenceUnknown_),
      systemPtr_(nullptr),
      weight_(other.weight_),
      angle_(other.angle_),
      location_(other.location_),
      invalid_(true),
      systemName_(nullptr),
      window_(other.window_) {
  try {
    systemName_ = duplicate(other.systemName_);
  } catch (...) {
    utFree(name_);
    throw;
  }
}

zrFont::~zrFont() {
  WindowProxyRegistry::FindSystemMethodsProxy()->freeSystemFont(this);
  utFree(name_);
  utFree(systemName_);
}

// ---- Names -----------------------------------------------------------------------------

void zrFont::setName(const char* name) {
  if (!name) name = "";
  if (name_[0] != '\0' && std::strcmp(name_, name) == 0) return;
  replace(name_, name);
  // The fixed-width face has a platform name of its own; it is looked up
  // when first asked for, since the proxy may not be registered yet.
  replace(systemName_, isFixedWidthName(name_) ? "" : name_);
  setInvalid(true);
}

const char* zrFont::getSystemName() {
  if (isFixedWidthName(name_)) {
    replace(systemName_, WindowProxyRegistry::FindFontProxy()->getFixedWidthSystemFontName());
  }
  return systemName_;
}

// ---- Size and units ----------------------------------------------------------------------

double zrFont::convertSize(double size, UnitTypes from, UnitTypes to) const {
  if (from == to) return size;
  // The size is the height of a rectangle at the origin; the reference
  // rectangle gives the normalised unit its meaning.
  tavrixRect_tag rect{0.0, 0.0, 0.0, size};
  qvrect reference{0, 0, heightReference_, 1};
  WinRec_tag* win = window_ ? window_ : WindowProxyRegistry::getRootWindow();
  WindowProxyRegistry::FindFontProxy()->convertTavrixRect(win, &rect, from, to, &reference);
  return rect.height;
}

void zrFont::update() {
  if (!conversionPending_) return;
  if (referenceUnknown_ && (units_ == UNITS_NORMALIZED || storedUnits_ == UNITS_NORMALIZED)) return;
  size_ = convertSize(size_, storedUnits_, units_);
  storedUnits_ = units_;
  conversionPending_ = false;
}

double zrFont::getSize() {
  update();
  return conversionPending_ ? -1.0 : size_;
}

void zrFont::setSize(double size) {
  if (size == size_) return;
  size_ = size;
  storedUnits_ = units_;
  conversionPending_ = false;
  setInvalid(true);
}

void zrFont::setUnits(UnitTypes units) {
  if (units == units_) return;
  // A second change while the first is pending keeps the original units: the
  // size is still expressed in them.
  if (!conversionPending_) {
    storedUnits_ = units_;
    conversionPending_ = true;
  }
  units_ = units;
  setInvalid(true);
  update();
}

int zrFont::getPointSize() {
  update();
  // A proxy may answer any double; saturate rather than convert out of range.
  const double points = convertSize(size_, units_, UNITS_POINTS) + 0.5;
  if (!(points > static_cast<double>(INT_MIN))) return points < 0 ? INT_MIN : 0;
  if (points >= static_cast<double>(INT_MAX)) return INT_MAX;
  return static_cast<int>(points);
}

double zrFont::getPointSizeForJava() {
  update();
  if (conversionPending_) return -1.0;
  return getPointSize() * ws_GetScreenPixelsPerPoint() * 72.0 / 72.0;
}

void zrFont::setHeightReference(int height, WinRec_tag* win) {
  window_ = win;
  referenceUnknown_ = false;
  if (height == heightReference_) return;
  heightReference_ = height;
  update();
  if (units_ == UNITS_NORMALIZED) setInvalid(true);
}

// ---- State and comparison ------------------------------------------------------------------

void zrFont::setInvalid(bool invalid) {
  invalid_ = invalid;
  // A font marked invalid no longer matches what the back end realised.
  if (invalid) WindowProxyRegistry::FindSystemMethodsProxy()->freeSystemFont(this);
}

bool zrFont::isEqual(zrFont* other) {
  if (other == this) return true;
  if (!other) return false;
  return std::strcmp(name_, other->name_) == 0 && getPointSize() == other->getPointSize() &&
         weight_ == other->weight_ && angle_ == other->angle_;
}

// ---- Flat interface ----------------------------------------------------------------------------

zrFont* create_font() {
  void* mem = utMallocWithCheck(sizeof(zrFont));
  try {
    return new (mem) zrFont();
  } catch (...) {
    utFree(mem);
    throw;
  }
}

zrFont* copy_font(const zrFont* font) {
  if (!font) return nullptr;
  void* mem = utMallocWithCheck(sizeof(zrFont));
  try {
    return new (mem) zrFont(*font);
  } catch (...) {
    utFree(mem);
    throw;
  }
}

void destroy_font(zrFont* font) {
  if (!font) return;
  font->~zrFont();
  utFree(font);
}

const char* font_get_name(zrFont* font) { return font->getName(); }
void font_set_name(zrFont* font, const char* name) { font->setName(name); }
const char* font_get_system_name(zrFont* font) { return font->getSystemName(); }
double font_get_size(zrFont* font) { return font->getSize(); }
void font_set_size(zrFont* font, double size) { font->setSize(size); }
UnitTypes font_get_units(zrFont* font) { return font->getUnits(); }
void font_set_units(zrFont* font, UnitTypes units) { font->setUnits(units); }
int font_get_pointsize(zrFont* font) { return font->getPointSize(); }
double font_get_pointsize_for_java(zrFont* font) { return font->getPointSizeForJava(); }
FontWeightType font_get_weight(zrFont* font) { return font->getWeight(); }
void font_set_weight(zrFont* font, FontWeightType weight) { font->setWeight(weight); }
FontAngleType font_get_angle(zrFont* font) { return font->getAngle(); }
void font_set_angle(zrFont* font, FontAngleType angle) { font->setAngle(angle); }
FontLocationType font_get_location(zrFont* font) { return font->getLocation(); }
void font_set_location(zrFont* font, FontLocationType location) { font->setLocation(location); }
bool font_getsmoothing(zrFont* font) { return font->getSmoothing(); }
void font_setsmoothing(zrFont* font, bool smoothing) { font->setSmoothing(smoothing); }
void* font_getsysptr(zrFont* font) { return font->getSystemPtr(); }
void font_setsysptr(zrFont* font, void* ptr) { font->setSystemPtr(ptr); }
bool font_getinvalid(zrFont* font) { return font->getInvalid(); }
void font_setinvalid(zrFont* font, bool invalid) { font->setInvalid(invalid); }
int get_font_height_reference(zrFont* font) { return font->getHeightReference(); }
void set_font_height_reference(zrFont* font, int height, WinRec_tag* win) {
  font->setHeightReference(height, win);
}
bool font_height_independent_of_reference(zrFont* font) { return font->getHeightIndependentOfReference(); }
bool font_compare(zrFont* a, zrFont* b) { return a->isEqual(b); }
