// qvgui-contour: traces the contour lines of a grid of values read from a text
// file (one grid row per line) and prints them line by line.
#include <qvgui/host.h>
#include <qvgui/surface.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

namespace {

int usage() {
  std::fprintf(stderr,
               "usage: qvgui-contour [--levels N | --level V ...] FILE\n"
               "  FILE holds one grid row per line, values separated by blanks or commas;\n"
               "  '-' reads standard input, and 'nan' marks a hole. Column k has x = k + 1,\n"
               "  row k has y = k + 1. Prints each line as '# level L, N points' followed by\n"
               "  its points. Default: 10 levels evenly spaced inside the data range.\n");
  return 2;
}

struct Grid {
  int rows = 0;
  int columns = 0;
  std::vector<double> rowMajor;
};

bool readGrid(std::istream& in, Grid* grid, std::string* error) {
  std::string line;
  while (std::getline(in, line)) {
    for (char& c : line) {
      if (c == ',') c = ' ';
    }
    std::istringstream fields(line);
    std::vector<double> row;
    std::string field;
    while (fields >> field) {
      char* end = nullptr;
      const double v = std::strtod(field.c_str(), &end);
      if (end == field.c_str() || *end != '\0') {
        *error = "not a number: '" + field + "' in row " + std::to_string(grid->rows + 1);
        return false;
      }
      row.push_back(v);
    }
    if (row.empty()) continue;
    if (grid->rows > 0 && static_cast<int>(row.size()) != grid->columns) {
      *error = "row " + std::to_string(grid->rows + 1) + " has " + std::to_string(row.size()) +
               " values, the first row " + std::to_string(grid->columns);
      return false;
    }
    grid->columns = static_cast<int>(row.size());
    grid->rowMajor.insert(grid->rowMajor.end(), row.begin(), row.end());
    ++grid->rows;
  }
  if (grid->rows < 2 || grid->columns < 2) {
    *error = "the grid needs at least 2 rows and 2 columns";
    return false;
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  int levelCount = 10;
  std::vector<double> levels;
  const char* path = nullptr;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--levels") == 0 && i + 1 < argc) {
      levelCount = std::atoi(argv[++i]);
      if (levelCount < 1 || levelCount > 100000) return usage();
    } else if (std::strcmp(argv[i], "--level") == 0 && i + 1 < argc) {
      char* end = nullptr;
      levels.push_back(std::strtod(argv[++i], &end));
      if (*end != '\0') return usage();
    } else if (path == nullptr) {
      path = argv[i];
    } else {
      return usage();
    }
  }
  if (path == nullptr) return usage();

  Grid grid;
  std::string error;
  std::ifstream file;
  if (std::strcmp(path, "-") != 0) {
    file.open(path);
    if (!file) {
      std::fprintf(stderr, "qvgui-contour: cannot open %s\n", path);
      return 1;
    }
  }
  if (!readGrid(std::strcmp(path, "-") == 0 ? std::cin : file, &grid, &error)) {
    std::fprintf(stderr, "qvgui-contour: %s\n", error.c_str());
    return 1;
  }

  // The engine takes z column-major, and row i reads y[rows - 1 - i].
  const int rows = grid.rows;
  const int columns = grid.columns;
  std::vector<double> z(static_cast<std::size_t>(rows) * columns);
  double zmin = std::numeric_limits<double>::infinity();
  double zmax = -zmin;
  for (int i = 0; i < rows; ++i) {
    for (int j = 0; j < columns; ++j) {
      const double v = grid.rowMajor[static_cast<std::size_t>(i) * columns + j];
      z[static_cast<std::size_t>(j) * rows + i] = v;
      if (std::isfinite(v)) {
        zmin = std::min(zmin, v);
        zmax = std::max(zmax, v);
      }
    }
  }
  if (!(zmin <= zmax)) {
    std::fprintf(stderr, "qvgui-contour: the grid has no finite value\n");
    return 1;
  }
  std::vector<double> x(columns);
  std::vector<double> y(rows);
  for (int j = 0; j < columns; ++j) x[j] = j + 1;
  for (int k = 0; k < rows; ++k) y[k] = rows - k;
  if (levels.empty()) {
    // Evenly spaced strictly inside the range, so neither extreme gets a degenerate line.
    for (int k = 1; k <= levelCount; ++k) levels.push_back(zmin + (zmax - zmin) * k / (levelCount + 1));
  }

  try {
    gui_objects::ContourEngine engine(rows, columns);
    engine.setXYZPtrsAndZMinMax(x.data(), y.data(), z.data(), zmin, zmax);
    engine.allocWorkSpace(1024);
    gui_objects::ContourResult result;
    engine.plotContours(levels.data(), static_cast<int>(levels.size()), result);
    zrArray_tag* matrix = result.release();
    const double* c = zrGetPr(matrix);
    const std::size_t n = zrGetN(matrix);
    for (std::size_t col = 0; col < n;) {
      const double level = c[2 * col];
      const std::size_t count = static_cast<std::size_t>(c[2 * col + 1]);
      std::printf("# level %.15g, %zu points\n", level, count);
      for (std::size_t k = 1; k <= count && col + k < n; ++k) {
        std::printf("%.15g %.15g\n", c[2 * (col + k)], c[2 * (col + k) + 1]);
      }
      col += count + 1;
    }
    zrDestroyArray(matrix);
  } catch (const HostError& e) {
    std::fprintf(stderr, "qvgui-contour: %s\n", e.what());
    return 1;
  }
  return 0;
}
