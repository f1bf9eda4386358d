// Contour tracing: walks each iso-line from box to box through the box sides
// the level crosses, starting beside holes, on the grid border, then inside.
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstring>

#include "geometry/messages_p.h"
#include "qvgui/surface.h"
#include "surface/host_memory_p.h"

namespace gui_objects {

namespace {

constexpr double kDblMax = DBL_MAX;

// Infinite corners take part in the tracing as the largest finite values.
[[nodiscard]] inline double clampInfinite(double v) noexcept {
  if (v > kDblMax) return kDblMax;
  if (v < -kDblMax) return -kDblMax;
  return v;
}

// Boxes around a NaN grid point (i, j) whose sides are tried first, so that
// lines cut by the hole start right beside it.
struct HoleStart {
  int di;
  int dj;
  int side;
};
constexpr HoleStart kHoleStarts[8] = {{-2, -1, 1}, {-2, 0, 1}, {-1, 1, 0}, {0, 1, 0},
                                      {1, 0, 3},   {1, -1, 3}, {0, -2, 2}, {-1, -2, 2}};

// A cheap pre-test on raw corner values that never rejects an edge the full
// crossing rule of cont_intercept would accept (NaN corners may pass it; the
// full rule then turns them away). Clamping infinities keeps every comparison
// with a finite level, so it need not happen here.
[[nodiscard]] inline bool mayCross(double a, double b, double level, bool atZMin) noexcept {
  if (atZMin) return a != b && (a <= level || b <= level);
  return (a >= level) != (b >= level);
}

}  // namespace

// ---- Construction and set-up -----------------------------------------------------

ContourEngine::ContourEngine(int rows, int columns)
    : z_(nullptr),
      x_(nullptr),
      yEnd_(nullptr),
      flags_(nullptr),
      flagCount_(0),
      level_(0.0),
      pointCount_(0),
      capacity_(0),
      side_(0),
      i_(0),
      j_(0),
      rows_(rows > 0 ? rows : 0),
      columns_(columns > 0 ? columns : 0),
      workspace_(nullptr),
      zmin_(0.0),
      zmax_(0.0) {
  const unsigned long long count =
      static_cast<unsigned long long>(rows_) * static_cast<unsigned long long>(columns_);
  if (count > UINT32_MAX) qvgui_messages::raise::outOfMemory(static_cast<std::size_t>(count));
  flagCount_ = static_cast<std::uint32_t>(count);
  flags_ = static_cast<unsigned char*>(utCallocWithCheck(flagCount_ == 0 ? 1 : flagCount_, 1));
}

ContourEngine::~ContourEngine() {
  utFree(flags_);
  utFree(workspace_);
}

void ContourEngine::setXYZPtrsAndZMinMax(const double* x, const double* y, const double* z, double zmin,
                                         double zmax) noexcept {
  x_ = x;
  yEnd_ = (y != nullptr && rows_ > 0) ? y + (rows_ - 1) : y;
  z_ = z;
  zmin_ = zmin;
  zmax_ = zmax;
}

void ContourEngine::setXYZAndZMinMax(const double* x, std::size_t xCount, const double* y, std::size_t yCount,
                                     const double* z, std::size_t zCount, double zmin, double zmax) {
  // An empty grid reads nothing.
  const auto check = [this](const char* name, const double* values, std::size_t count,
                            unsigned long long needed) {
    if (flagCount_ == 0) return;
    if (values == nullptr) count = 0;
    if (count < needed)
      qvgui_messages::raise::contourArraySizeMismatch(rows_, columns_, needed, name,
                                                      static_cast<unsigned long long>(count));
  };
  check("x", x, xCount, static_cast<unsigned long long>(columns_));
  check("y", y, yCount, static_cast<unsigned long long>(rows_));
  check("z", z, zCount, flagCount_);
  setXYZPtrsAndZMinMax(x, y, z, zmin, zmax);
}

void ContourEngine::allocWorkSpace(int points) {
  const int n = points > 0 ? points : 0;
  // Allocate before freeing so a failed allocation leaves the old workspace.
  auto* fresh = static_cast<Real_point*>(utCallocWithCheck(n == 0 ? 1 : n, sizeof(Real_point)));
  utFree(workspace_);
  workspace_ = fresh;
  capacity_ = n;
}

void ContourEngine::growWorkSpace() {
  if (capacity_ > INT_MAX / 2) {
    qvgui_messages::raise::outOfMemory(static_cast<std::size_t>(capacity_) * 2 * sizeof(Real_point));
  }
  const int grown = capacity_ >= 8 ? capacity_ * 2 : 16;
  workspace_ = static_cast<Real_point*>(
      utReallocWithCheck(workspace_, static_cast<std::size_t>(grown) * sizeof(Real_point)));
  capacity_ = grown;
}

// ---- Used flags -----------------------------------------------------------------

void ContourEngine::clearFlags() noexcept {
  if (flagCount_ != 0) std::memset(flags_, 0, flagCount_);
}

unsigned char* ContourEngine::get_pflag() const noexcept {
  const std::ptrdiff_t r = rows_;
  switch (side_) {
    case 0:
      return flags_ + (r - 1) * j_ + i_;
    case 1:
      return flags_ + r * j_ + i_ + 1;
    case 2:
      return flags_ + (r - 1) * j_ + i_ + (r - 1);
    default:
      return flags_ + r * j_ + i_;
  }
}

unsigned char ContourEngine::getMask() const noexcept { return (side_ & 1) != 0 ? 1 : 2; }

bool ContourEngine::get_used_flag() const noexcept { return (*get_pflag() & getMask()) != 0; }

void ContourEngine::set_used_flag() noexcept { *get_pflag() |= getMask(); }

// ---- Walking ----------------------------------------------------------------------

int ContourEngine::next_box() noexcept {
  switch (side_) {
    case 0:
      --j_;
      side_ = 2;
      return j_ >= 0 ? 1 : 0;
    case 1:
      ++i_;
      side_ = 3;
      return i_ < rows_ - 1 ? 1 : 0;
    case 2:
      ++j_;
      side_ = 0;
      return j_ < columns_ - 1 ? 1 : 0;
    default:
      --i_;
      side_ = 1;
      return i_ >= 0 ? 1 : 0;
  }
}

// Returns -1 at a hole, 0 when the current side is not crossed (or the
// crossing cannot be represented), 1 with the crossing point stored.
int ContourEngine::cont_intercept(Real_point* point) const noexcept {
  const std::ptrdiff_t r = rows_;
  const double* base = z_ + r * j_ + i_;
  double a;
  double b;
  switch (side_) {
    case 0:
      a = base[0];
      b = base[1];
      break;
    case 1:
      a = base[1];
      b = base[r + 1];
      break;
    case 2:
      a = base[r];
      b = base[r + 1];
      break;
    default:
      a = base[0];
      b = base[r];
      break;
  }
  if (std::isnan(a) || std::isnan(b)) return -1;
  a = clampInfinite(a);
  b = clampInfinite(b);

  const double level = level_;
  bool crossed;
  if (level != zmin_) {
    crossed = a > b ? (b < level && level <= a) : (a < level && level <= b);
  } else {
    // At zmin the low end is closed, so the lowest level is not lost.
    crossed = a > b ? (b <= level) : (a < b && a <= level);
  }
  if (!crossed) return 0;

  const double t = level - a;
  const double d = a - b;
  double c0;
  double c1;
  double fixed;
  const bool alongI = side_ == 0 || side_ == 2;
  if (alongI) {
    c0 = yEnd_[-static_cast<std::ptrdiff_t>(i_)];
    c1 = yEnd_[-static_cast<std::ptrdiff_t>(i_) - 1];
    fixed = x_[side_ == 0 ? j_ : j_ + 1];
  } else {
    c0 = x_[j_];
    c1 = x_[j_ + 1];
    fixed = yEnd_[-static_cast<std::ptrdiff_t>(side_ == 3 ? i_ : i_ + 1)];
  }
  const double slope = std::fabs(d) > kDblMax ? 0.0 : (c0 - c1) / d;
  const double v = slope * t + c0;
  if (std::fabs(slope) > kDblMax || std::fabs(v) > kDblMax) return 0;
  if (alongI) {
    point->x = fixed;
    point->y = v;
  } else {
    point->x = v;
    point->y = fixed;
  }
  return 1;
}

// One step: leaves the current box through a crossed side other than the
// entry side. -1 ends the line (hole or dead end), 0 means the exit edge was
// used already or the line left the grid, 1 means the walk goes on.
int ContourEngine::cont_ambig(Real_point* point) noexcept {
  const int entry = side_;
  const int s1 = nextSide(entry);
  const int s2 = nextSide(s1);
  const int s3 = nextSide(s2);

  side_ = s1;
  const int r1 = cont_intercept(point);
  if (r1 < 0) return -1;
  int exitSide;
  if (r1 > 0) {
    side_ = s3;
    const int r3 = cont_intercept(point);
    if (r3 < 0) return -1;
    if (r3 > 0) {
      // Saddle: the centre average decides which pair of sides is joined.
      const std::ptrdiff_t r = rows_;
      const double* base = z_ + r * j_ + i_;
      const double z0 = base[0];
      const double zc = (base[0] + base[1] + base[r] + base[r + 1]) * 0.25;
      const double level = level_;
      const bool a = (zc > z0 && zc > level) || (z0 >= zc && level >= zc);
      const bool s1AlongI = s1 == 0 || s1 == 2;
      exitSide = a == s1AlongI ? s1 : s3;
      side_ = exitSide;
      if (cont_intercept(point) < 1) return -1;
    } else {
      // Not a saddle: s+1 is the first crossed side and its point is still
      // in place (a side that is not crossed stores nothing).
      exitSide = s1;
    }
  } else {
    side_ = s2;
    const int r2 = cont_intercept(point);
    if (r2 < 0) return -1;
    if (r2 > 0) {
      exitSide = s2;
    } else {
      side_ = s3;
      if (cont_intercept(point) <= 0) return -1;
      exitSide = s3;
    }
  }
  side_ = exitSide;
  if (get_used_flag()) return 0;
  set_used_flag();
  return next_box();
}

// Traces one line from the current (box, side) into the buffer, which is
// the workspace (it moves when the workspace grows).
bool ContourEngine::cont_start(Real_point* buffer) {
  if (get_used_flag()) return false;
  pointCount_ = 0;
  if (capacity_ < 2) {
    growWorkSpace();
    buffer = workspace_;
  }
  if (cont_intercept(buffer) != 1) return false;
  set_used_flag();
  pointCount_ = 1;
  int answer;
  do {
    if (utIsInterruptPending()) return false;
    Real_point* slot = buffer + pointCount_;
    answer = cont_ambig(slot);
    if (answer < 0) break;
    const Real_point& previous = slot[-1];
    if (slot->x == previous.x && slot->y == previous.y) continue;  // reuse the slot
    if (++pointCount_ == capacity_) {
      growWorkSpace();
      buffer = workspace_;
    }
  } while (answer != 0);
  return true;
}

// Tries one start position; false when an interrupt is pending. Positions
// that cannot start a line (edge used or not crossed) are passed over without
// asking the host: stopping there or at the next real start gives the same
// result, and the query would otherwise dominate the scan.
bool ContourEngine::tryStart(int i, int j, int side, ContourResult& result) {
  i_ = i;
  j_ = j;
  side_ = side;
  if (get_used_flag()) return true;
  if (utIsInterruptPending()) return false;
  if (cont_start(workspace_)) result.append(level_, pointCount_, workspace_);
  return true;
}

// ---- One level ---------------------------------------------------------------------

bool ContourEngine::findLines(double level, ContourResult& result, const std::size_t* holes,
                              std::size_t holeCount) {
  level_ = level;
  const int rows = rows_;
  const int columns = columns_;
  const bool atZMin = level == zmin_;

  // 1. Beside every hole, in storage order.
  for (std::size_t h = 0; h < holeCount; ++h) {
    const int i = static_cast<int>(holes[h] % static_cast<std::size_t>(rows));
    const int j = static_cast<int>(holes[h] / static_cast<std::size_t>(rows));
    for (const HoleStart& s : kHoleStarts) {
      const int bi = i + s.di;
      const int bj = j + s.dj;
      if (bi < 0 || bi > rows - 2 || bj < 0 || bj > columns - 2) continue;
      if (!tryStart(bi, bj, s.side, result)) return false;
    }
  }

  // 2. Edges along j on the first and last row of boxes.
  const std::ptrdiff_t r = rows;
  for (int j = 0; j < columns - 1; ++j) {
    const double* zc = z_ + r * j;
    if (mayCross(zc[0], zc[r], level, atZMin) && !tryStart(0, j, 3, result)) return false;
    if (mayCross(zc[r - 1], zc[2 * r - 1], level, atZMin) && !tryStart(rows - 2, j, 1, result)) return false;
  }

  // 3. Every edge along i, columns taken alternately from the left and the
  // right; this pass closes the loops. Edge (i, col)-(i+1, col) has its flag at
  // (rows-1)*col + i whichever box it is entered from.
  for (int m = 0; m < columns; ++m) {
    const bool fromLeft = (m & 1) == 0;
    const int j = fromLeft ? m / 2 : columns - m / 2 - 2;
    const int side = fromLeft ? 0 : 2;
    const int col = fromLeft ? j : j + 1;
    const double* zc = z_ + r * col;
    const unsigned char* fc = flags_ + (r - 1) * col;
    if (atZMin) {
      for (int i = 0; i < rows - 1; ++i) {
        if ((fc[i] & 2) == 0 && mayCross(zc[i], zc[i + 1], level, true) && !tryStart(i, j, side, result))
          return false;
      }
    } else {
      bool above = zc[0] >= level;
      for (int i = 0; i < rows - 1; ++i) {
        const bool nextAbove = zc[i + 1] >= level;
        if (nextAbove != above && (fc[i] & 2) == 0 && !tryStart(i, j, side, result)) return false;
        above = nextAbove;
      }
    }
  }
  return true;
}

// ---- All levels ---------------------------------------------------------------------

void ContourEngine::plotContours(const double* levels, int count, ContourResult& result) {
  if (x_ == nullptr || yEnd_ == nullptr || z_ == nullptr || workspace_ == nullptr) return;
  if (levels == nullptr || count <= 0) return;

  // The holes do not change from level to level: find them once.
  detail::CheckedBuffer<std::size_t> holes;
  const bool hasBoxes = rows_ >= 2 && columns_ >= 2;
  if (hasBoxes) {
    for (std::size_t k = 0; k < flagCount_; ++k)
      if (std::isnan(z_[k])) holes.push_back(k);
  }

  for (int k = 0; k < count; ++k) {
    if (utIsInterruptPending()) return;
    const double level = levels[k];
    if (k > 0 && level == levels[k - 1]) continue;
    if (!hasBoxes || !(zmin_ <= level && level <= zmax_)) continue;
    clearFlags();
    if (!findLines(level, result, holes.data(), holes.size())) return;
  }
}

}  // namespace gui_objects
