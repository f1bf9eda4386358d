// qvplot: draws a figure from a grid or a table of columns in a text file (or
// a built-in sample) and writes it as PNG, PDF or SVG.
#include <qvgui/offscreen.h>
#include <qvgui/plot.h>

#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "cli_common.h"
#include "table_reader.h"

namespace {

using namespace qvgui::plot;

using qvgui::tools::InputError;
using qvgui::tools::readTable;
using qvgui::tools::Table;
using qvgui::tools::where;

// ---- Reading numbers -----------------------------------------------------------

std::vector<double> readVector(const std::string& file) {
  const Table t = readTable(file, false);
  std::vector<double> v;
  for (const auto& row : t.rows) v.insert(v.end(), row.begin(), row.end());
  return v;
}

// ---- Options -------------------------------------------------------------------

struct Options {
  std::string data;
  std::string xFile, yFile;
  std::string output = "figure.png";
  std::string kind;
  std::string sample;
  std::string size = "800x600";
  double dpi = 100;
  std::string levels;
  std::string cmap = "viridis";
  std::vector<double> view;
  bool logx = false, logy = false, logz = false;
  std::string title, xlabel, ylabel, zlabel;
  bool noColorbar = false;
  std::string legend;
  std::string labels;
};

// Comma-separated labels, one per curve; none given: the file's column
// numbers, so that a legend asked for still tells the curves apart.
std::vector<std::string> curveLabels(const std::string& given, std::size_t curves, std::size_t firstColumn) {
  std::vector<std::string> out;
  if (given.empty()) {
    for (std::size_t k = 0; k < curves; ++k) out.push_back("column " + std::to_string(firstColumn + k));
    return out;
  }
  std::stringstream in(given);
  std::string cell;
  while (std::getline(in, cell, ',')) out.push_back(cell);
  if (given.back() == ',') out.emplace_back();
  if (out.size() != curves)
    throw InputError("--labels: expected " + std::to_string(curves) + " (one per curve), got " +
                     std::to_string(out.size()));
  return out;
}

Legend legendByName(const std::string& name) {
  if (name == "upper-right") return Legend::UpperRight;
  if (name == "upper-left") return Legend::UpperLeft;
  if (name == "lower-left") return Legend::LowerLeft;
  if (name == "lower-right") return Legend::LowerRight;
  if (name == "off") return Legend::Off;
  return Legend::Best;
}

void parseSize(const std::string& s, int* w, int* h) {
  int a = 0;
  int b = 0;
  char x = 0;
  char extra = 0;
  if (std::sscanf(s.c_str(), "%d%c%d%c", &a, &x, &b, &extra) != 3 || (x != 'x' && x != 'X') || a < 16 ||
      b < 16 || a > 20000 || b > 20000) {
    throw InputError("--size: expected WIDTHxHEIGHT in pixels, 16..20000 each, got '" + s + "'");
  }
  *w = a;
  *h = b;
}

// "12" asks for about twelve levels; "0,0.5,1" gives them.
void parseLevels(const std::string& s, int* count, std::vector<double>* levels) {
  if (s.empty()) return;
  if (s.find(',') == std::string::npos) {
    char* end = nullptr;
    const long n = std::strtol(s.c_str(), &end, 10);
    if (*end != '\0' || n < 1 || n > 100)
      throw InputError("--levels: expected a count 1..100 or a comma list, got '" + s + "'");
    *count = static_cast<int>(n);
    return;
  }
  std::stringstream in(s);
  std::string cell;
  while (std::getline(in, cell, ',')) {
    char* end = nullptr;
    const double v = std::strtod(cell.c_str(), &end);
    if (cell.empty() || *end != '\0' || !std::isfinite(v))
      throw InputError("--levels: '" + cell + "' is not a finite number");
    levels->push_back(v);
  }
}

Scale scaleOf(bool log) { return log ? Scale::Log : Scale::Linear; }

Figure build(const Options& o) {
  int w = 0;
  int h = 0;
  parseSize(o.size, &w, &h);
  if (!(o.dpi >= 10 && o.dpi <= 2400)) throw InputError("--dpi: must be within 10..2400");
  if ((!o.legend.empty() || !o.labels.empty()) &&
      (o.data.empty() || (o.kind != "line" && o.kind != "scatter")))
    throw InputError(std::string(o.legend.empty() ? "--labels" : "--legend") +
                     ": only for --kind line or scatter with a data file");
  if (o.data.empty()) return sampleFigure(o.sample.empty() ? "contourf" : o.sample, w, h, o.dpi);

  int count = 10;
  std::vector<double> levels;
  parseLevels(o.levels, &count, &levels);
  const ColorMap map = colorMapByName(o.cmap);
  const std::string kind = o.kind.empty() ? "contourf" : o.kind;
  const bool grid = kind == "contourf" || kind == "contour" || kind == "surface" || kind == "image";
  Figure f(w, h, o.dpi);
  Axes& ax = f.addAxes(kind == "surface");
  ax.setColorMap(map);
  ax.setXScale(scaleOf(o.logx));
  ax.setYScale(scaleOf(o.logy));
  ax.setZScale(scaleOf(o.logz));
  if (o.view.size() == 2) ax.setView(o.view[0], o.view[1]);
  if (grid) {
    const Table t = readTable(o.data, true);
    std::vector<double> z;
    for (const auto& row : t.rows) z.insert(z.end(), row.begin(), row.end());
    std::vector<double> x;
    std::vector<double> y;
    if (!o.xFile.empty()) x = readVector(o.xFile);
    if (!o.yFile.empty()) y = readVector(o.yFile);
    if (!x.empty() && x.size() != t.columns())
      throw InputError(o.xFile + ": has " + std::to_string(x.size()) + " values, the grid " +
                       std::to_string(t.columns()) + " columns");
    if (!y.empty() && y.size() != t.rows.size())
      throw InputError(o.yFile + ": has " + std::to_string(y.size()) + " values, the grid " +
                       std::to_string(t.rows.size()) + " rows");
    if (kind != "image" && (t.rows.size() < 2 || t.columns() < 2))
      throw InputError(o.data + ": a " + kind + " plot needs at least 2 rows and 2 columns");
    const Grid g{z, t.rows.size(), t.columns(), x, y};
    try {
      if (kind == "contourf") {
        ax.contourf(g, levels, count);
        ax.contour(g, levels, count, false);
      } else if (kind == "contour") {
        ax.contour(g, levels, count, true);
      } else if (kind == "surface") {
        ax.surface(g);
      } else {
        ax.image(g);
      }
    } catch (const std::invalid_argument& e) {
      throw InputError(o.data + ": " + e.what());
    }
    if (!o.noColorbar) ax.colorbar();
  } else if (kind == "line" || kind == "scatter") {
    const Table t = readTable(o.data, kind == "line");
    if (t.columns() < 2) throw InputError(o.data + ": a " + kind + " plot needs columns x and y");
    for (std::size_t r = 0; r < t.rows.size(); ++r) {
      if (std::isnan(t.rows[r][0])) throw InputError(where(o.data, r + 1, 1) + "NaN cannot be drawn here");
    }
    std::vector<double> x;
    for (const auto& row : t.rows) x.push_back(row[0]);
    const bool legend = !o.legend.empty() || !o.labels.empty();
    const std::size_t curves = kind == "line" ? t.columns() - 1 : 1;
    const std::vector<std::string> labels =
        legend ? curveLabels(o.labels, curves, 2) : std::vector<std::string>(curves);
    if (legend) ax.legend(o.legend.empty() ? Legend::Best : legendByName(o.legend));
    if (kind == "line") {
      for (std::size_t c = 1; c < t.columns(); ++c) {
        std::vector<double> y;
        for (const auto& row : t.rows) y.push_back(row[c]);
        LineOptions opt;
        const Rgb palette[4] = {
            {0.0, 0.447, 0.741}, {0.85, 0.325, 0.098}, {0.466, 0.674, 0.188}, {0.494, 0.184, 0.556}};
        opt.color = palette[(c - 1) % 4];
        opt.label = labels[c - 1];
        ax.plot(x, y, opt);
      }
    } else {
      std::vector<double> y;
      std::vector<double> c;
      for (const auto& row : t.rows) {
        y.push_back(row[1]);
        if (t.columns() > 2) c.push_back(row[2]);
      }
      LineOptions opt;
      opt.label = labels[0];
      ax.scatter(x, y, c, opt);
      if (!c.empty() && !o.noColorbar) ax.colorbar();
    }
  } else {
    throw InputError("--kind: unknown kind '" + kind + "'");
  }
  ax.setTitle(o.title);
  ax.setXLabel(o.xlabel);
  ax.setYLabel(o.ylabel);
  ax.setZLabel(o.zlabel);
  return f;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{
      "Draws a figure from a data file and writes it as PNG, PDF or SVG (by the output's extension).\n"
      "A grid file holds one row per line (commas or blanks between values, 'nan' for a hole);\n"
      "a table for line and scatter plots holds x then one or more y columns (scatter: x, y[, colour]).\n"
      "Without a data file a built-in sample is drawn."};
  Options o;
  app.add_option("data", o.data, "grid or table file")->check(CLI::ExistingFile);
  app.add_option("-o,--output", o.output, "output file: .png, .pdf or .svg")->capture_default_str();
  app.add_option("-k,--kind", o.kind, "contourf (default), contour, surface, image, line or scatter")
      ->check(CLI::IsMember({"contourf", "contour", "surface", "image", "line", "scatter"}));
  app.add_option("--sample", o.sample, "built-in sample without a data file: contourf, surface or lines")
      ->check(CLI::IsMember({"contourf", "surface", "lines"}));
  app.add_option("--x", o.xFile, "x of each grid column, one file of values")->check(CLI::ExistingFile);
  app.add_option("--y", o.yFile, "y of each grid row, one file of values")->check(CLI::ExistingFile);
  app.add_option("-s,--size", o.size, "WIDTHxHEIGHT in pixels")->capture_default_str();
  app.add_option("--dpi", o.dpi, "pixels per inch (text and line widths scale with it)")
      ->capture_default_str();
  app.add_option("-l,--levels", o.levels, "contour levels: a count, or a comma list of values");
  app.add_option("-c,--cmap", o.cmap, "colour map: viridis, magma, gray or coolwarm")
      ->check(CLI::IsMember({"viridis", "magma", "gray", "grey", "coolwarm"}))
      ->capture_default_str();
  app.add_option("--view", o.view, "azimuth and elevation in degrees (surface)")->expected(2)->delimiter(',');
  app.add_flag("--logx", o.logx, "logarithmic x axis");
  app.add_flag("--logy", o.logy, "logarithmic y axis");
  app.add_flag("--logz", o.logz, "logarithmic z axis (surface)");
  app.add_option("-t,--title", o.title, "title (TeX subset: ^{..}, _{..}, \\alpha ...)");
  app.add_option("--xlabel", o.xlabel, "x axis label");
  app.add_option("--ylabel", o.ylabel, "y axis label");
  app.add_option("--zlabel", o.zlabel, "z axis label (surface)");
  app.add_flag("--no-colorbar", o.noColorbar, "leave out the colour bar");
  app.add_option(
         "--legend", o.legend,
         "legend of a line or scatter plot (best: the emptiest corner); curves are named by --labels,\n"
         "else by column number")
      ->check(CLI::IsMember({"best", "upper-right", "upper-left", "lower-left", "lower-right", "off"}));
  app.add_option("--labels", o.labels,
                 "legend labels, one per y column, comma-separated (TeX subset); implies --legend best");

  if (const auto stop = qvgui::tools::parseCommandLine(app, argc, argv, "qvplot")) return *stop;
  try {
    try {
      (void)qvgui::offscreen::formatForPath(o.output);
    } catch (const std::invalid_argument& e) {
      throw InputError(std::string("--output: ") + e.what());
    }
    Figure f = build(o);
    f.save(o.output);
    std::cout << o.output << "\n";
    return 0;
  } catch (const InputError& e) {
    std::cerr << "qvplot: " << e.what() << "\n";
    return 2;
  } catch (const std::invalid_argument& e) {
    std::cerr << "qvplot: " << e.what() << "\n";
    return 2;
  } catch (const std::exception& e) {
    std::cerr << "qvplot: " << e.what() << "\n";
    return 1;
  } catch (...) {
    // The geometry code throws tag classes without text.
    std::cerr << "qvplot: the figure could not be drawn\n";
    return 1;
  }
}
