// A first figure with libqvgui from outside its build: a damped oscillation
// drawn with the figure layer and written as PNG (or PDF, SVG by extension).
#include <qvgui/geometry.h>
#include <qvgui/plot.h>

#include <cmath>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

int main(int argc, char** argv) {
  std::cout << "libqvgui " << libqvgui_version << " (built " << libqvgui_build_date << ")\n";
  const std::string out =
      argc > 1 ? argv[1] : (std::filesystem::temp_directory_path() / "qvgui_example.png").string();

  std::vector<double> t(400), y(400);
  for (std::size_t i = 0; i < t.size(); ++i) {
    t[i] = 0.025 * static_cast<double>(i);
    y[i] = std::exp(-0.3 * t[i]) * std::cos(4 * t[i]);
  }
  qvgui::plot::Figure fig(800, 500, 100);
  qvgui::plot::Axes& ax = fig.addAxes();
  ax.plot(t, y);
  ax.setTitle("Damped oscillation e^{-0.3t} cos(4t)");
  ax.setXLabel("time t (s)");
  ax.setYLabel("displacement (mm)");
  ax.setGrid(true);
  fig.save(out);
  std::cout << "wrote " << out << "\n";
  return 0;
}
