// Window colour tables: the colormap and dithermap, the combined table that
// colour indices address, and the fields the back ends keep in the table.
#include <cstddef>
#include <cstring>
#include <memory>

#include "geometry/messages_p.h"
#include "qvgui/dataspace.h"
#include "qvgui/host.h"
#include "qvgui/raster.h"
#include "qvgui/window.h"
#include "raster/colortable_p.h"

namespace {

struct UtFree {
  void operator()(void* p) const noexcept { utFree(p); }
};
using Doubles = std::unique_ptr<double[], UtFree>;

Doubles allocDoubles(std::size_t n) {
  return Doubles(static_cast<double*>(utMallocWithCheck(n * sizeof(double))));
}

std::size_t len(std::int32_t n) { return n > 0 ? static_cast<std::size_t>(n) : 0; }

// The combined table for the given sources, planar with stride colormap
// length + (dithermap length when used). Allocated before anything in the
// table changes, so a failed allocation leaves the table as it was.
Doubles buildCombined(const Colortable_tag* t, const double* cmap, std::int32_t cmapLength, bool useDithermap,
                      std::int32_t* combinedLength) {
  const std::size_t nc = len(cmapLength);
  const std::size_t nd = useDithermap ? len(t->dithermap_length) : 0;
  const std::size_t n = nc + nd;
  Doubles out = allocDoubles(3 * n);
  for (std::size_t ch = 0; ch < 3; ++ch) {
    if (nc > 0) std::memcpy(out.get() + ch * n, cmap + ch * nc, nc * sizeof(double));
    if (nd > 0) std::memcpy(out.get() + ch * n + nc, t->dithermap_data + ch * nd, nd * sizeof(double));
  }
  *combinedLength = static_cast<std::int32_t>(n);
  return out;
}

void storeCombined(Colortable_tag* t, Doubles combined, std::int32_t combinedLength) {
  utFree(t->combined_data);
  t->combined_data = combined.release();
  t->combined_length = combinedLength;
  t->colormap_installed = false;
}

// Whole colours of values, copied and range-checked. The comparisons let NaN
// through on purpose: only values known to lie outside [0, 1] are refused.
// raiseOutOfRange refuses one element, given its 1-based position and value.
template <typename Raise>
Doubles checkedCopy(const NReals& values, const Raise& raiseOutOfRange, std::int32_t* colours) {
  const std::size_t k = values.count > 0 ? static_cast<std::size_t>(values.count) / 3 : 0;
  Doubles copy = allocDoubles(3 * k);
  if (k > 0) std::memcpy(copy.get(), values.values, 3 * k * sizeof(double));
  for (std::size_t i = 0; i < 3 * k; ++i) {
    const double v = copy[i];
    if (v < 0.0 || v > 1.0) {
      copy.reset();
      raiseOutOfRange(static_cast<long long>(i) + 1, v);
    }
  }
  *colours = static_cast<std::int32_t>(k);
  return copy;
}

}  // namespace

// ---- Life cycle ----------------------------------------------------------------------

Colortable_tag* create_ColortablePtr() {
  auto* t = static_cast<Colortable_tag*>(utCallocWithCheck(1, sizeof(Colortable_tag)));
  try {
    t->wsd = gui_objects::WindowProxyRegistry::FindSystemMethodsProxy()->createColortablePtrWsd();
  } catch (...) {
    utFree(t);
    throw;
  }
  t->colormap_installed = true;
  t->initialized = true;
  t->num_reserved = 0;
  t->min_colormap_length = 64;
  return t;
}

void destroy_ColortablePtr(Colortable_tag* t) {
  if (t == nullptr) return;
  gui_objects::WindowProxyRegistry::FindSystemMethodsProxy()->destroyColortablePtrWsd(t);
  utFree(t->combined_data);
  utFree(t->dithermap_data);
  utFree(t->colormap_data);
  utFree(t->fixed_data);
  utFree(t->fixed_usage);
  utFree(t->extern_data);
  utFree(t);
}

// ---- Plain fields ---------------------------------------------------------------------

winSysColorData_tag* get_ColortablePtr_wsd(const Colortable_tag* t) { return t->wsd; }
void set_ColortablePtr_wsd(Colortable_tag* t, winSysColorData_tag* wsd) { t->wsd = wsd; }

#define QVGUI_TABLE_INT_FIELD_(field)                                                  \
  std::int32_t get_ColortablePtr_##field(const Colortable_tag* t) { return t->field; } \
  void set_ColortablePtr_##field(Colortable_tag* t, std::int32_t n) { t->field = n; }
QVGUI_TABLE_INT_FIELD_(colormap_length)
QVGUI_TABLE_INT_FIELD_(dithermap_length)
QVGUI_TABLE_INT_FIELD_(min_colormap_length)
QVGUI_TABLE_INT_FIELD_(num_reserved)
QVGUI_TABLE_INT_FIELD_(fixed_length)
QVGUI_TABLE_INT_FIELD_(extern_length)
#undef QVGUI_TABLE_INT_FIELD_

std::int32_t get_ColortablePtr_combined_length(const Colortable_tag* t) { return t->combined_length; }
bool get_ColortablePtr_UseDithermap(const Colortable_tag* t) { return t->UseDithermap; }

double* get_ColortablePtr_colormap_data(const Colortable_tag* t) { return t->colormap_data; }
double* get_ColortablePtr_dithermap_data(const Colortable_tag* t) { return t->dithermap_data; }
double* get_ColortablePtr_combined_data(const Colortable_tag* t) { return t->combined_data; }
double* get_ColortablePtr_fixed_data(const Colortable_tag* t) { return t->fixed_data; }
double* get_ColortablePtr_extern_data(const Colortable_tag* t) { return t->extern_data; }

void set_ColortablePtr_fixed_data(Colortable_tag* t, double* p) {
  if (p == t->fixed_data) return;
  utFree(t->fixed_data);
  t->fixed_data = p;
}

void set_ColortablePtr_extern_data(Colortable_tag* t, double* p) {
  if (p == t->extern_data) return;
  utFree(t->extern_data);
  t->extern_data = p;
}

// ---- Colormap, dithermap and the combined table -------------------------------------------

void set_ColortablePtr_colormap_data(Colortable_tag* t, const NReals& values) {
  std::int32_t k = 0;
  Doubles copy = checkedCopy(values, qvgui_messages::raise::colormapElementOutOfRange, &k);
  std::int32_t combinedLength = 0;
  Doubles combined = buildCombined(t, copy.get(), k, t->UseDithermap, &combinedLength);
  utThrowIfInterruptPending();
  {
    // Everything that can fail has been done; an interrupt now would leave
    // the colormap and the combined table disagreeing.
    utInterruptDeferral defer;
    utFree(t->colormap_data);
    t->colormap_data = copy.release();
    t->colormap_length = k;
    storeCombined(t, std::move(combined), combinedLength);
  }
  utThrowIfInterruptPending();
}

void set_ColortablePtr_dithermap_data(Colortable_tag* t, const NReals& values) {
  std::int32_t k = 0;
  Doubles copy = checkedCopy(values, qvgui_messages::raise::dithermapElementOutOfRange, &k);
  Doubles combined;
  std::int32_t combinedLength = 0;
  if (t->UseDithermap) {
    // buildCombined reads the dithermap from the table: show it the new one
    // for the duration of the call only.
    double* const oldData = t->dithermap_data;
    const std::int32_t oldLength = t->dithermap_length;
    t->dithermap_data = copy.get();
    t->dithermap_length = k;
    try {
      combined = buildCombined(t, t->colormap_data, t->colormap_length, true, &combinedLength);
    } catch (...) {
      t->dithermap_data = oldData;
      t->dithermap_length = oldLength;
      throw;
    }
    t->dithermap_data = oldData;
    t->dithermap_length = oldLength;
  }
  utThrowIfInterruptPending();
  {
    utInterruptDeferral defer;
    utFree(t->dithermap_data);
    t->dithermap_data = copy.release();
    t->dithermap_length = k;
    t->dithermap_installed = false;
    if (combined) storeCombined(t, std::move(combined), combinedLength);
  }
  utThrowIfInterruptPending();
}

void set_ColortablePtr_UseDithermap(WinRec_tag* win, Colortable_tag* t, bool flag) {
  if (flag == t->UseDithermap) return;
  std::int32_t combinedLength = 0;
  Doubles combined = buildCombined(t, t->colormap_data, t->colormap_length, flag, &combinedLength);
  t->UseDithermap = flag;
  storeCombined(t, std::move(combined), combinedLength);
  wm_InstallWindowColormap(win, t);
}

// ---- Averages and distances -------------------------------------------------------------

void avgRGBColor(const double* indices, int n, const Colortable_tag* t, Color_tag* out) {
  double sum[3] = {0.0, 0.0, 0.0};
  const std::size_t stride = len(t->combined_length);
  for (int i = 0; i < n; ++i) {
    const auto k = static_cast<std::size_t>(static_cast<unsigned int>(indices[i]));
    for (std::size_t ch = 0; ch < 3; ++ch) sum[ch] += t->combined_data[ch * stride + k];
  }
  out->red = sum[0] / n;
  out->green = sum[1] / n;
  out->blue = sum[2] / n;
}

bool close_enough(const qvpoint* a, const qvpoint* b) {
  if (a == nullptr || b == nullptr) return false;
  const int dh = a->h - b->h;
  const int dv = a->v - b->v;
  return (dh < 0 ? -dh : dh) + (dv < 0 ? -dv : dv) < 7;
}
