// qvgui-ticks: nice axis limits and tick positions for a data range, as an
// axes object would get them.
#include <qvgui/dataspace.h>

#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <string>

#include "cli_common.h"
#include "table_reader.h"

namespace {

using qvgui::tools::InputError;

// Accepts only a whole, finite number: an infinite or NaN limit would give
// the tick picker nothing to place ticks on.
const CLI::Validator kFiniteNumber = qvgui::tools::finiteNumber("NaN is not a limit");

void printTicks(double lower, double upper, int count) {
  std::printf("limits %.17g %.17g\nticks %d:", lower, upper, count);
  for (int k = 0; k < count; ++k) {
    // Each tick from the lower limit, so rounding does not accumulate along the axis.
    const double t = count > 1 ? lower + (upper - lower) * k / (count - 1) : lower;
    std::printf(" %.15g", t);
  }
  std::printf("\n");
}

void printLogTicks(double lower, double upper, int maxTicks) {
  if (!(lower > 0)) throw InputError("LOW: a logarithmic axis needs positive limits");
  if (!(upper > 0)) throw InputError("HIGH: a logarithmic axis needs positive limits");
  double lo = lower;
  double hi = upper;
  const int count = gui_objects::tickpicker::calculateLogTicks(&lo, &hi, maxTicks,
                                                               gui_objects::tickpicker::kLimitExponents);
  if (count <= 0)
    throw InputError("--max: no logarithmic ticks for that range within " + std::to_string(maxTicks));
  // The ticks are evenly spaced exponents between the two limit exponents.
  std::printf("limits %.17g %.17g\nticks %d:", std::pow(10.0, lo), std::pow(10.0, hi), count);
  for (int k = 0; k < count; ++k) {
    const double e = count > 1 ? lo + (hi - lo) * k / (count - 1) : lo;
    std::printf(" %.15g", std::pow(10.0, e));
  }
  std::printf("\n");
}

}  // namespace

int main(int argc, char** argv) {
  using namespace gui_objects::tickpicker;
  CLI::App app{
      "Prints nice limits and the major ticks for the range [LOW, HIGH].\n"
      "A reversed or zero-width range is widened around its values. Put '--' before\n"
      "a LOW that starts with '-.' so it is not taken for an option."};
  double lower = 0;
  double upper = 0;
  bool log = false;
  bool inside = false;
  int minTicks = 2;
  int maxTicks = 11;
  app.add_option("LOW", lower, "lower end of the data range")->required()->check(kFiniteNumber);
  app.add_option("HIGH", upper, "upper end of the data range")->required()->check(kFiniteNumber);
  app.add_flag("--log", log, "logarithmic axis (LOW and HIGH must be positive)");
  app.add_flag("--inside", inside, "keep the limits inside the data range instead of enclosing it");
  app.add_option("--min", minTicks, "fewest ticks to consider (linear)")
      ->check(CLI::Range(1, 1000))
      ->capture_default_str();
  app.add_option("--max", maxTicks, "most ticks to consider")
      ->check(CLI::Range(1, 1000))
      ->capture_default_str();

  if (const auto stop = qvgui::tools::parseCommandLine(app, argc, argv, "qvgui-ticks")) return *stop;
  try {
    if (minTicks > maxTicks) {
      throw InputError("--min: " + std::to_string(minTicks) + " is more than --max " +
                       std::to_string(maxTicks));
    }
    if (log) {
      printLogTicks(lower, upper, maxTicks);
      return 0;
    }
    const int count = calculateLinearTicks(&lower, &upper, minTicks, maxTicks, inside ? kInside : kEnclosing);
    if (count <= 0) {
      throw InputError("--min/--max: no tick count between " + std::to_string(minTicks) + " and " +
                       std::to_string(maxTicks) + " fits that range");
    }
    printTicks(lower, upper, count);
    return 0;
  } catch (const InputError& e) {
    std::cerr << "qvgui-ticks: " << e.what() << "\n";
    return 2;
  }
}
