// qvgui-contour: traces the contour lines of a grid of values read from a text
// file (one grid row per line) and writes them as text or as an SVG drawing.
#include <qvgui/host.h>
#include <qvgui/surface.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <limits>
#include <string>
#include <vector>

#include "cli_common.h"
#include "table_reader.h"

namespace {

using qvgui::tools::InputError;

struct Grid {
  std::size_t rows = 0;
  std::size_t columns = 0;
  std::vector<double> rowMajor;
};

struct ContourLine {
  double level = 0;
  std::vector<double> xy;  // x0 y0 x1 y1 ...
};

const CLI::Validator kFiniteNumber = qvgui::tools::finiteNumber("NaN is not a level");

Grid readGrid(const std::string& path) {
  const qvgui::tools::Table t = qvgui::tools::readTable(path, true);
  const std::string name = path == "-" ? "<stdin>" : path;
  Grid g;
  g.rows = t.rows.size();
  g.columns = t.columns();
  if (g.rows < 2 || g.columns < 2) {
    throw InputError(name + ": the grid needs at least 2 rows and 2 columns, got " + std::to_string(g.rows) +
                     " x " + std::to_string(g.columns));
  }
  for (const auto& row : t.rows) g.rowMajor.insert(g.rowMajor.end(), row.begin(), row.end());
  return g;
}

std::vector<ContourLine> trace(const Grid& grid, std::vector<double> levels, int levelCount,
                               const std::string& name) {
  // The engine takes z column-major, and row i reads y[rows - 1 - i].
  const std::size_t rows = grid.rows;
  const std::size_t columns = grid.columns;
  std::vector<double> z(rows * columns);
  double zmin = std::numeric_limits<double>::infinity();
  double zmax = -zmin;
  for (std::size_t i = 0; i < rows; ++i) {
    for (std::size_t j = 0; j < columns; ++j) {
      const double v = grid.rowMajor[i * columns + j];
      z[j * rows + i] = v;
      if (!std::isnan(v)) {
        zmin = std::min(zmin, v);
        zmax = std::max(zmax, v);
      }
    }
  }
  if (!(zmin <= zmax)) throw InputError(name + ": the grid has no value that is not NaN");
  std::vector<double> x(columns);
  std::vector<double> y(rows);
  for (std::size_t j = 0; j < columns; ++j) x[j] = static_cast<double>(j + 1);
  for (std::size_t k = 0; k < rows; ++k) y[k] = static_cast<double>(rows - k);
  if (levels.empty()) {
    // Evenly spaced strictly inside the range, so neither extreme gets a degenerate line.
    for (int k = 1; k <= levelCount; ++k) levels.push_back(zmin + (zmax - zmin) * k / (levelCount + 1));
  }

  gui_objects::ContourEngine engine(static_cast<int>(rows), static_cast<int>(columns));
  engine.setXYZPtrsAndZMinMax(x.data(), y.data(), z.data(), zmin, zmax);
  engine.allocWorkSpace(1024);
  gui_objects::ContourResult result;
  engine.plotContours(levels.data(), static_cast<int>(levels.size()), result);
  zrArray_tag* matrix = result.release();
  const double* c = zrGetPr(matrix);
  const std::size_t n = zrGetN(matrix);
  std::vector<ContourLine> lines;
  // Each line is a header column (level, point count) followed by its points.
  for (std::size_t col = 0; col < n;) {
    ContourLine line;
    line.level = c[2 * col];
    const auto count = static_cast<std::size_t>(c[2 * col + 1]);
    for (std::size_t k = 1; k <= count && col + k < n; ++k) {
      line.xy.push_back(c[2 * (col + k)]);
      line.xy.push_back(c[2 * (col + k) + 1]);
    }
    lines.push_back(std::move(line));
    col += count + 1;
  }
  zrDestroyArray(matrix);
  return lines;
}

// ---- Output --------------------------------------------------------------------

// One or two numbers through a printf pattern of as many conversions.
template <class... Numbers>
std::string format(const char* pattern, Numbers... numbers) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, pattern, static_cast<double>(numbers)...);
  return buffer;
}

std::string toText(const std::vector<ContourLine>& lines) {
  std::string out;
  for (const ContourLine& line : lines) {
    // A blank line between lines, so plotting programs see separate curves.
    if (&line != &lines.front()) out += "\n";
    out += "# level " + format("%.15g", line.level) + ", " + std::to_string(line.xy.size() / 2) + " points\n";
    for (std::size_t k = 0; k < line.xy.size(); k += 2)
      out += format("%.15g %.15g\n", line.xy[k], line.xy[k + 1]);
  }
  return out;
}

// Lines darken from yellow-green at the highest level to violet at the lowest;
// the lightest colours of the usual ramp are left out because they vanish on white.
std::string levelColor(double t) {
  static const double kRamp[][3] = {
      {0x44, 0x01, 0x54}, {0x3b, 0x52, 0x8b}, {0x21, 0x91, 0x8c}, {0x5e, 0xc9, 0x62}, {0xaa, 0xdc, 0x32}};
  const double s = std::clamp(t, 0.0, 1.0) * 4;
  const int i = std::min(static_cast<int>(s), 3);
  const double f = s - i;
  char buffer[8];
  std::snprintf(buffer, sizeof buffer, "#%02x%02x%02x",
                static_cast<int>(std::lround(kRamp[i][0] + f * (kRamp[i + 1][0] - kRamp[i][0]))),
                static_cast<int>(std::lround(kRamp[i][1] + f * (kRamp[i + 1][1] - kRamp[i][1]))),
                static_cast<int>(std::lround(kRamp[i][2] + f * (kRamp[i + 1][2] - kRamp[i][2]))));
  return buffer;
}

// The grid spans x in [1, columns] and y in [1, rows] with y growing upwards;
// SVG's y grows downwards, so y is mirrored: the first row of the file (y = 1)
// is drawn at the bottom, as on a plot's axes.
std::string toSvg(const std::vector<ContourLine>& lines, const Grid& grid) {
  const double w = static_cast<double>(grid.columns - 1);
  const double h = static_cast<double>(grid.rows - 1);
  const double margin = 0.02 * std::max(w, h);
  const double boxW = w + 2 * margin;
  const double boxH = h + 2 * margin;
  // The longer side is drawn 640 px wide; strokes are given in pixels of that size.
  const double scale = 640 / std::max(boxW, boxH);
  const double flip = static_cast<double>(grid.rows) + 1;
  double lo = std::numeric_limits<double>::infinity();
  double hi = -lo;
  for (const ContourLine& line : lines) {
    lo = std::min(lo, line.level);
    hi = std::max(hi, line.level);
  }

  std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
  out += "<svg xmlns=\"http://www.w3.org/2000/svg\" version=\"1.1\" width=\"" +
         format("%.0f", std::ceil(boxW * scale)) + "\" height=\"" + format("%.0f", std::ceil(boxH * scale)) +
         "\" viewBox=\"" + format("%.6g %.6g ", 1 - margin, 1 - margin) + format("%.6g %.6g", boxW, boxH) +
         "\">\n";
  out += "<rect x=\"1\" y=\"1\" width=\"" + format("%.6g", w) + "\" height=\"" + format("%.6g", h) +
         "\" fill=\"none\" stroke=\"#999999\" stroke-width=\"" + format("%.4g", 1 / scale) + "\"/>\n";
  out += "<g fill=\"none\" stroke-width=\"" + format("%.4g", 1.5 / scale) +
         "\" stroke-linejoin=\"round\" stroke-linecap=\"round\">\n";
  for (const ContourLine& line : lines) {
    const std::size_t points = line.xy.size() / 2;
    if (points == 0) continue;
    const bool closed =
        points > 2 && line.xy[0] == line.xy[2 * points - 2] && line.xy[1] == line.xy[2 * points - 1];
    std::string d;
    for (std::size_t k = 0; k < (closed ? points - 1 : points); ++k) {
      d += (k == 0 ? "M" : " L") + format("%.6g %.6g", line.xy[2 * k], flip - line.xy[2 * k + 1]);
    }
    if (closed) d += " Z";
    const double t = hi > lo ? (line.level - lo) / (hi - lo) : 0.5;
    out += "<path stroke=\"" + levelColor(t) + "\" d=\"" + d + "\"><title>level " +
           format("%.15g", line.level) + "</title></path>\n";
  }
  out += "</g>\n</svg>\n";
  return out;
}

bool endsWithSvg(const std::string& path) {
  if (path.size() < 4) return false;
  std::string tail = path.substr(path.size() - 4);
  for (char& ch : tail) ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
  return tail == ".svg";
}

bool writeFile(const std::string& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary);
  out << text;
  out.close();
  return static_cast<bool>(out);
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{
      "Traces the contour lines of a grid and prints each as '# level L, N points' followed by its\n"
      "points, one 'x y' per line, with a blank line between lines. FILE holds one grid row per line,\n"
      "values separated by blanks or commas; '-' reads standard input, and 'nan' marks a hole.\n"
      "Column k (from 0) has x = k + 1 and row k has y = k + 1, y growing upwards.\n"
      "Default: 10 levels evenly spaced inside the data range. The text goes to standard output\n"
      "unless an output file is named."};
  std::string path;
  int levelCount = 10;
  std::vector<double> levels;
  std::string output;
  std::string svg;
  app.add_option("FILE", path, "grid file, or '-' for standard input")->required();
  auto* count = app.add_option("-n,--levels", levelCount, "number of evenly spaced levels")
                    ->check(CLI::Range(1, 100000))
                    ->capture_default_str();
  app.add_option("-v,--level", levels, "a level to trace (repeatable)")
      ->check(kFiniteNumber)
      ->excludes(count)
      ->allow_extra_args(false);
  app.add_option("-o,--output", output, "write to this file: SVG when it ends in .svg, text otherwise");
  app.add_option("--svg", svg, "also write the lines as an SVG drawing to this file");

  if (const auto stop = qvgui::tools::parseCommandLine(app, argc, argv, "qvgui-contour")) return *stop;
  try {
    const Grid grid = readGrid(path);
    const std::vector<ContourLine> lines = trace(grid, levels, levelCount, path == "-" ? "<stdin>" : path);
    // Everything is formatted before any file is opened, so a failure leaves no partial output.
    const std::string text = toText(lines);
    const std::string drawing = (!svg.empty() || endsWithSvg(output)) ? toSvg(lines, grid) : std::string();
    if (output.empty() && svg.empty()) {
      std::fwrite(text.data(), 1, text.size(), stdout);
      return std::fflush(stdout) == 0 ? 0 : 1;
    }
    if (!output.empty() && !writeFile(output, endsWithSvg(output) ? drawing : text)) {
      std::cerr << "qvgui-contour: " << output << ": cannot write\n";
      return 1;
    }
    if (!svg.empty() && !writeFile(svg, drawing)) {
      std::cerr << "qvgui-contour: " << svg << ": cannot write\n";
      return 1;
    }
    return 0;
  } catch (const InputError& e) {
    std::cerr << "qvgui-contour: " << e.what() << "\n";
    return 2;
  } catch (const HostError& e) {
    std::cerr << "qvgui-contour: " << e.what() << "\n";
    return 1;
  }
}
