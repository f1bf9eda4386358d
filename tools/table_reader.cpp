// Strict number, grid and table reading shared by the command-line tools.
#include "table_reader.h"

#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iostream>

namespace qvgui::tools {

NumberStatus parseNumber(std::string_view text, double* value) {
  // strtod would skip leading blanks and stop quietly at trailing ones; a
  // field with either is not what the user meant to be one number.
  if (text.empty() || std::isspace(static_cast<unsigned char>(text.front())) != 0) {
    return NumberStatus::NotANumber;
  }
  const std::string copy(text);
  errno = 0;
  char* stop = nullptr;
  const double v = std::strtod(copy.c_str(), &stop);
  if (stop != copy.c_str() + copy.size()) return NumberStatus::NotANumber;
  if (std::isinf(v)) return NumberStatus::OutOfRange;
  *value = v;
  return NumberStatus::Ok;
}

std::string where(const std::string& file, std::size_t line, std::size_t column) {
  return file + ":" + std::to_string(line) + ":" + std::to_string(column) + ": ";
}

Table readTable(std::istream& in, const std::string& name, bool allowNaN) {
  Table t;
  std::string line;
  std::size_t lineNo = 0;
  while (std::getline(in, line)) {
    ++lineNo;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    const std::size_t first = line.find_first_not_of(" \t");
    if (first == std::string::npos || line[first] == '#') continue;
    const bool csv = line.find(',') != std::string::npos;
    std::vector<double> row;
    std::size_t pos = 0;
    while (pos <= line.size()) {
      std::size_t end;
      if (csv) {
        end = line.find(',', pos);
        if (end == std::string::npos) end = line.size();
      } else {
        pos = line.find_first_not_of(" \t", pos);
        if (pos == std::string::npos) break;
        end = line.find_first_of(" \t", pos);
        if (end == std::string::npos) end = line.size();
      }
      std::size_t a = pos;
      std::size_t b = end;
      while (a < b && (line[a] == ' ' || line[a] == '\t')) ++a;
      while (b > a && (line[b - 1] == ' ' || line[b - 1] == '\t')) --b;
      const std::string_view cell = std::string_view(line).substr(a, b - a);
      // An empty cell has no first character; point at where it would be.
      const std::size_t column = (cell.empty() ? pos : a) + 1;
      if (cell.empty()) throw InputError(where(name, lineNo, column) + "empty cell");
      double v = 0;
      switch (parseNumber(cell, &v)) {
        case NumberStatus::NotANumber:
          throw InputError(where(name, lineNo, column) + "not a number: '" + std::string(cell) + "'");
        case NumberStatus::OutOfRange:
          throw InputError(where(name, lineNo, column) + "value out of range: '" + std::string(cell) + "'");
        case NumberStatus::Ok:
          break;
      }
      if (std::isnan(v) && !allowNaN)
        throw InputError(where(name, lineNo, column) + "NaN cannot be drawn here");
      row.push_back(v);
      if (!csv && end == line.size()) break;
      pos = end + 1;
      if (csv && end == line.size()) break;
    }
    if (!t.rows.empty() && row.size() != t.columns()) {
      throw InputError(where(name, lineNo, 1) + "row has " + std::to_string(row.size()) +
                       " values, expected " + std::to_string(t.columns()));
    }
    t.rows.push_back(std::move(row));
  }
  if (in.bad()) throw InputError(name + ": read error");
  if (t.rows.empty()) throw InputError(name + ": no data");
  return t;
}

Table readTable(const std::string& file, bool allowNaN) {
  if (file == "-") return readTable(std::cin, "<stdin>", allowNaN);
  std::ifstream in(file);
  if (!in) throw InputError(file + ": cannot open for reading");
  return readTable(in, file, allowNaN);
}

}  // namespace qvgui::tools
