// qvgui-ticks: nice axis limits and tick positions for a data range, as an
// axes object would get them.
#include <qvgui/dataspace.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

int usage() {
  std::fprintf(stderr,
               "usage: qvgui-ticks LOW HIGH [--log] [--inside] [--min N] [--max N]\n"
               "  Prints nice limits and the major ticks for the range [LOW, HIGH].\n"
               "  --log     logarithmic axis (LOW and HIGH must be positive)\n"
               "  --inside  keep the limits inside the data range instead of enclosing it\n"
               "  --min N   fewest ticks to consider (linear; default 2)\n"
               "  --max N   most ticks to consider (default 11)\n");
  return 2;
}

bool parseNumber(const char* text, double* value) {
  char* end = nullptr;
  *value = std::strtod(text, &end);
  return end != text && *end == '\0';
}

bool parseCount(const char* text, int* value) {
  char* end = nullptr;
  const long v = std::strtol(text, &end, 10);
  if (end == text || *end != '\0' || v < 1 || v > 1000) return false;
  *value = static_cast<int>(v);
  return true;
}

void printTicks(double lower, double upper, int count) {
  std::printf("limits %.17g %.17g\nticks %d:", lower, upper, count);
  for (int k = 0; k < count; ++k) {
    // Each tick from the lower limit, so rounding does not accumulate along the axis.
    const double t = count > 1 ? lower + (upper - lower) * k / (count - 1) : lower;
    std::printf(" %.15g", t);
  }
  std::printf("\n");
}

}  // namespace

int main(int argc, char** argv) {
  using namespace gui_objects::tickpicker;
  double lower = 0;
  double upper = 0;
  bool log = false;
  InOut mode = kEnclosing;
  int minTicks = 2;
  int maxTicks = 11;
  int positional = 0;
  for (int i = 1; i < argc; ++i) {
    const char* a = argv[i];
    if (std::strcmp(a, "--log") == 0) {
      log = true;
    } else if (std::strcmp(a, "--inside") == 0) {
      mode = kInside;
    } else if (std::strcmp(a, "--min") == 0 && i + 1 < argc) {
      if (!parseCount(argv[++i], &minTicks)) return usage();
    } else if (std::strcmp(a, "--max") == 0 && i + 1 < argc) {
      if (!parseCount(argv[++i], &maxTicks)) return usage();
    } else if (positional < 2 && parseNumber(a, positional == 0 ? &lower : &upper)) {
      ++positional;
    } else {
      return usage();
    }
  }
  if (positional != 2) return usage();

  if (log) {
    if (!(lower > 0 && upper > 0)) {
      std::fprintf(stderr, "qvgui-ticks: a logarithmic axis needs positive limits\n");
      return 1;
    }
    double lo = lower;
    double hi = upper;
    const int count = calculateLogTicks(&lo, &hi, maxTicks, kLimitExponents);
    if (count <= 0) {
      std::fprintf(stderr, "qvgui-ticks: no logarithmic ticks for that range\n");
      return 1;
    }
    // The ticks are evenly spaced exponents between the two limit exponents.
    std::printf("limits %.17g %.17g\nticks %d:", std::pow(10.0, lo), std::pow(10.0, hi), count);
    for (int k = 0; k < count; ++k) {
      const double e = count > 1 ? lo + (hi - lo) * k / (count - 1) : lo;
      std::printf(" %.15g", std::pow(10.0, e));
    }
    std::printf("\n");
    return 0;
  }

  const int count = calculateLinearTicks(&lower, &upper, minTicks, maxTicks, mode);
  if (count <= 0) {
    std::fprintf(stderr, "qvgui-ticks: no tick count between %d and %d fits that range\n", minTicks,
                 maxTicks);
    return 1;
  }
  printTicks(lower, upper, count);
  return 0;
}
