// A colour table's fixed colours: colours drawing asked for by value, kept
// once per 8-bit colour with a reference count.
#include <cstddef>
#include <cstring>
#include <memory>

#include "qvgui/host.h"
#include "qvgui/raster.h"
#include "raster/colortable_p.h"

namespace {

using qvgui_raster::eightBit;

struct UtFree {
  void operator()(void* p) const noexcept { utFree(p); }
};

std::size_t fixedCount(const Colortable_tag* t) {
  return t->fixed_length > 0 ? static_cast<std::size_t>(t->fixed_length) : 0;
}

// Copies the n old planar entries, minus `skip` (n to keep all), into arrays
// re-strided for m colours. Both arrays are allocated before the table is
// touched, so a failed allocation leaves it as it was.
void restride(Colortable_tag* t, std::size_t m, std::size_t skip, std::unique_ptr<double[], UtFree>* data,
              std::unique_ptr<std::int32_t[], UtFree>* usage) {
  data->reset(static_cast<double*>(utMallocWithCheck(3 * m * sizeof(double))));
  usage->reset(static_cast<std::int32_t*>(utMallocWithCheck(m * sizeof(std::int32_t))));
  const std::size_t n = fixedCount(t);
  std::size_t j = 0;
  for (std::size_t i = 0; i < n; ++i) {
    if (i == skip) continue;
    for (std::size_t ch = 0; ch < 3; ++ch) (*data)[ch * m + j] = t->fixed_data[ch * n + i];
    (*usage)[j] = t->fixed_usage[i];
    ++j;
  }
}

void store(Colortable_tag* t, std::size_t m, std::unique_ptr<double[], UtFree> data,
           std::unique_ptr<std::int32_t[], UtFree> usage) {
  utFree(t->fixed_data);
  utFree(t->fixed_usage);
  t->fixed_data = data.release();
  t->fixed_usage = usage.release();
  t->fixed_length = static_cast<std::int32_t>(m);
}

}  // namespace

unsigned int fixed_ColorPtr_to_index(const Color_tag* c, const Colortable_tag* t) {
  const std::int32_t r = eightBit(c->red);
  const std::int32_t g = eightBit(c->green);
  const std::int32_t b = eightBit(c->blue);
  const std::size_t n = fixedCount(t);
  const double* d = t->fixed_data;
  for (std::size_t i = 0; i < n; ++i) {
    if (eightBit(d[i]) == r && eightBit(d[n + i]) == g && eightBit(d[2 * n + i]) == b) {
      return static_cast<unsigned int>(i);
    }
  }
  return static_cast<unsigned int>(n);
}

unsigned int fixed_ColorPtr_to_TavrixColorspaceIndex(const Color_tag* c, const Colortable_tag* t) {
  return fixed_ColorPtr_to_index(c, t) + static_cast<unsigned int>(t->combined_length);
}

std::int32_t fixed_index_to_usage(unsigned int i, const Colortable_tag* t) { return t->fixed_usage[i]; }

void add_ColorPtr_to_fixed_data(Color_tag* c, Colortable_tag* t) {
  const std::size_t n = fixedCount(t);
  const std::size_t i = fixed_ColorPtr_to_index(c, t);
  if (i < n) {
    ++t->fixed_usage[i];
  } else {
    std::unique_ptr<double[], UtFree> data;
    std::unique_ptr<std::int32_t[], UtFree> usage;
    restride(t, n + 1, n + 1, &data, &usage);
    data[n] = c->red;
    data[2 * n + 1] = c->green;
    data[3 * n + 2] = c->blue;
    usage[n] = 1;
    store(t, n + 1, std::move(data), std::move(usage));
  }
  c->gotten = true;
}

void remove_ColorPtr_from_fixed_data(Color_tag* c, Colortable_tag* t) {
  const std::size_t n = fixedCount(t);
  const std::size_t i = fixed_ColorPtr_to_index(c, t);
  if (i >= n) {
    // Not in the list: the caller's mistake, but nothing to count down.
    c->gotten = false;
    return;
  }
  if (t->fixed_usage[i] != 1) {
    --t->fixed_usage[i];
    c->gotten = false;
    return;
  }
  std::unique_ptr<double[], UtFree> data;
  std::unique_ptr<std::int32_t[], UtFree> usage;
  restride(t, n - 1, i, &data, &usage);
  store(t, n - 1, std::move(data), std::move(usage));
  c->gotten = false;
}
