// Matrix4x4d: construction of the standard transforms, products, inverse,
// normal transform and the classification queries.
#include <cmath>
#include <cstring>

#include "geometry/exceptions_p.h"
#include "qvgui/geometry.h"
#include "qvgui/host.h"

namespace gui_objects {
namespace {

constexpr double kIdentity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

// 0-based row and column into column-major storage.
constexpr int at(int row, int column) noexcept { return row + 4 * column; }

double det2(double a, double b, double c, double d) noexcept { return a * d - b * c; }

// The determinant of the 3x3 matrix left when row `skipRow` and column
// `skipColumn` are struck out of the 4x4 matrix m.
double minor3(const double* m, int skipRow, int skipColumn) noexcept {
  int rows[3];
  int columns[3];
  for (int i = 0, r = 0; i < 4; ++i)
    if (i != skipRow) rows[r++] = i;
  for (int i = 0, c = 0; i < 4; ++i)
    if (i != skipColumn) columns[c++] = i;
  auto e = [&](int r, int c) { return m[at(rows[r], columns[c])]; };
  return e(0, 0) * det2(e(1, 1), e(1, 2), e(2, 1), e(2, 2)) -
         e(0, 1) * det2(e(1, 0), e(1, 2), e(2, 0), e(2, 2)) +
         e(0, 2) * det2(e(1, 0), e(1, 1), e(2, 0), e(2, 1));
}

Matrix4x4d fromElements(const double (&values)[16]) noexcept { return Matrix4x4d(values); }

// A counter-clockwise turn in the plane of axes i and j: i turns towards j.
Matrix4x4d planeRotation(int i, int j, double angle) noexcept {
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  double e[16];
  std::memcpy(e, kIdentity, sizeof e);
  e[at(i, i)] = c;
  e[at(i, j)] = -s;
  e[at(j, i)] = s;
  e[at(j, j)] = c;
  return fromElements(e);
}

}  // namespace

// ---- Construction ------------------------------------------------------------------

Matrix4x4d::Matrix4x4d() noexcept { std::memcpy(m_, kIdentity, sizeof m_); }
Matrix4x4d::Matrix4x4d(const double* values) noexcept { std::memcpy(m_, values, sizeof m_); }

const Matrix4x4d Matrix4x4d::operator=(const Matrix4x4d& other) noexcept {
  std::memcpy(m_, other.m_, sizeof m_);
  return *this;
}

void Matrix4x4d::setIdentity() noexcept { std::memcpy(m_, kIdentity, sizeof m_); }

Matrix4x4d Matrix4x4d::createTranslation(const Vector3d& t) noexcept {
  Matrix4x4d r;
  r.m_[12] = t.getX();
  r.m_[13] = t.getY();
  r.m_[14] = t.getZ();
  return r;
}

Matrix4x4d Matrix4x4d::createScale(double s) noexcept { return createScale(Vector3d(s, s, s)); }

Matrix4x4d Matrix4x4d::createScale(const Vector3d& s) noexcept {
  Matrix4x4d r;
  r.m_[0] = s.getX();
  r.m_[5] = s.getY();
  r.m_[10] = s.getZ();
  return r;
}

Matrix4x4d Matrix4x4d::createXRotation(double angle) noexcept { return planeRotation(1, 2, angle); }

// z turns towards x, so that the three turns are all right-handed.
Matrix4x4d Matrix4x4d::createYRotation(double angle) noexcept { return planeRotation(2, 0, angle); }

Matrix4x4d Matrix4x4d::createZRotation(double angle) noexcept { return planeRotation(0, 1, angle); }

Matrix4x4d Matrix4x4d::createRotation(const Vector3d& axis, double angle) {
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  // Tested before normalising, so ZeroLengthException cannot escape from here.
  if (axis.dot(axis) < 1e-10) raise<InvalidAxisException>();
  Vector3d n(axis);
  n.normalize();
  const double u[3] = {n.getX(), n.getY(), n.getZ()};
  // c I + (1 - c) n n^T + s K, with K v = n x v.
  const double k[3][3] = {{0, -u[2], u[1]}, {u[2], 0, -u[0]}, {-u[1], u[0], 0}};
  Matrix4x4d r;
  for (int row = 0; row < 3; ++row)
    for (int column = 0; column < 3; ++column)
      r.m_[at(row, column)] = (row == column ? c : 0.0) + (1.0 - c) * u[row] * u[column] + s * k[row][column];
  return r;
}

Matrix4x4d Matrix4x4d::createFromPointer(const double* values) noexcept { return Matrix4x4d(values); }

Matrix4x4d Matrix4x4d::createFrustum(double left, double right, double bottom, double top, double zNear,
                                     double zFar) {
  // Written as >= so that NaN bounds pass, as callers have always seen.
  if (left >= right || bottom >= top || zNear >= zFar) raise<InvalidBoundsException>();
  double e[16] = {};
  e[at(0, 0)] = 2.0 * zNear / (right - left);
  e[at(1, 1)] = 2.0 * zNear / (top - bottom);
  e[at(0, 2)] = (right + left) / (right - left);
  e[at(1, 2)] = (top + bottom) / (top - bottom);
  e[at(2, 2)] = -(zFar + zNear) / (zFar - zNear);
  e[at(3, 2)] = -1.0;
  e[at(2, 3)] = -2.0 * zFar * zNear / (zFar - zNear);
  return fromElements(e);
}

Matrix4x4d Matrix4x4d::createOrtho(double left, double right, double bottom, double top, double zNear,
                                   double zFar) {
  // Depth is not checked: zNear == zFar divides by zero and gives infinities.
  if (left >= right || bottom >= top) raise<InvalidBoundsException>();
  double e[16] = {};
  e[at(0, 0)] = 2.0 / (right - left);
  e[at(1, 1)] = 2.0 / (top - bottom);
  e[at(2, 2)] = -2.0 / (zFar - zNear);
  e[at(0, 3)] = -(right + left) / (right - left);
  e[at(1, 3)] = -(top + bottom) / (top - bottom);
  e[at(2, 3)] = -(zFar + zNear) / (zFar - zNear);
  e[at(3, 3)] = 1.0;
  return fromElements(e);
}

Matrix4x4d Matrix4x4d::createCoordinateFrame(const Vector3d& u, const Vector3d& v, const Vector3d& w) {
  if (!nearlyEqual(u.dot(v), 0.0) || !nearlyEqual(v.dot(w), 0.0) || !nearlyEqual(w.dot(u), 0.0))
    raise<InvalidCoordinateFrameException>();
  if (u.cross(v).dot(w) < 0.0) raise<InvalidCoordinateFrameException>();
  Matrix4x4d r;
  const Vector3d* rows[3] = {&u, &v, &w};
  for (int row = 0; row < 3; ++row) {
    r.m_[at(row, 0)] = rows[row]->getX();
    r.m_[at(row, 1)] = rows[row]->getY();
    r.m_[at(row, 2)] = rows[row]->getZ();
  }
  return r;
}

Matrix4x4d Matrix4x4d::createJacobian(const Matrix4x4d& m) {
  if (!m.isAffine()) raise<InvalidJacobianException>();
  Matrix4x4d r(m);
  r.m_[12] = r.m_[13] = r.m_[14] = 0.0;
  return r;
}

// ---- Operations ----------------------------------------------------------------------

Matrix4x4d& Matrix4x4d::operator*=(const Matrix4x4d& b) noexcept {
  double product[16];
  for (int row = 0; row < 4; ++row)
    for (int column = 0; column < 4; ++column) {
      double sum = 0.0;
      for (int k = 0; k < 4; ++k) sum += m_[at(row, k)] * b.m_[at(k, column)];
      product[at(row, column)] = sum;
    }
  std::memcpy(m_, product, sizeof m_);
  return *this;
}

Point4d Matrix4x4d::transform(const Point4d& p) const noexcept {
  const double x = p.getX(), y = p.getY(), z = p.getZ(), w = p.getW();
  return Point4d(
      m_[0] * x + m_[4] * y + m_[8] * z + m_[12] * w, m_[1] * x + m_[5] * y + m_[9] * z + m_[13] * w,
      m_[2] * x + m_[6] * y + m_[10] * z + m_[14] * w, m_[3] * x + m_[7] * y + m_[11] * z + m_[15] * w);
}

void Matrix4x4d::invert() noexcept {
  // inverse = adjugate / det, the adjugate being the transposed cofactors.
  double adjugate[16];
  for (int row = 0; row < 4; ++row)
    for (int column = 0; column < 4; ++column) {
      const double sign = ((row + column) & 1) ? -1.0 : 1.0;
      adjugate[at(column, row)] = sign * minor3(m_, row, column);
    }
  // Expansion along row 0: det = sum over columns of m(0, c) * cofactor(0, c).
  double det = 0.0;
  for (int column = 0; column < 4; ++column) det += m_[at(0, column)] * adjugate[at(column, 0)];
  // No singularity test: det == 0 yields infinities and NaNs on purpose.
  const double inverseDet = 1.0 / det;
  for (int k = 0; k < 16; ++k) m_[k] = adjugate[k] * inverseDet;
}

void Matrix4x4d::transpose() noexcept {
  for (int row = 0; row < 4; ++row)
    for (int column = row + 1; column < 4; ++column) std::swap(m_[at(row, column)], m_[at(column, row)]);
}

Matrix4x4d Matrix4x4d::createInverseTranspose() const noexcept {
  Matrix4x4d r(*this);
  r.invert();
  r.transpose();
  return r;
}

Matrix4x4d Matrix4x4d::createNormalTransform() const noexcept {
  Matrix4x4d r;
  for (int row = 0; row < 3; ++row)
    for (int column = 0; column < 3; ++column) {
      const int r0 = row == 0 ? 1 : 0, r1 = row == 2 ? 1 : 2;
      const int c0 = column == 0 ? 1 : 0, c1 = column == 2 ? 1 : 2;
      const double minor = det2(m_[at(r0, c0)], m_[at(r0, c1)], m_[at(r1, c0)], m_[at(r1, c1)]);
      r.m_[at(row, column)] = ((row + column) & 1) ? -minor : minor;
    }
  return r;
}

// ---- Queries -------------------------------------------------------------------------

bool Matrix4x4d::isIdentity() const noexcept {
  for (int k = 0; k < 16; ++k)
    if (!(m_[k] == kIdentity[k])) return false;
  return true;
}

bool Matrix4x4d::isAffine() const noexcept {
  return utEqualWithinEps(m_[3], 0.0) && utEqualWithinEps(m_[7], 0.0) && utEqualWithinEps(m_[11], 0.0) &&
         utEqualWithinEps(m_[15], 1.0);
}

bool Matrix4x4d::isRightHanded() const noexcept {
  const Vector3d c0(m_[0], m_[1], m_[2]);
  const Vector3d c1(m_[4], m_[5], m_[6]);
  const Vector3d c2(m_[8], m_[9], m_[10]);
  return c0.cross(c1).dot(c2) > 0.0;
}

bool operator==(const Matrix4x4d& a, const Matrix4x4d& b) noexcept {
  for (int k = 0; k < 16; ++k)
    if (!(a.getPointer()[k] == b.getPointer()[k])) return false;
  return true;
}
bool operator!=(const Matrix4x4d& a, const Matrix4x4d& b) noexcept { return !(a == b); }

bool nearlyEqual(const Matrix4x4d& a, const Matrix4x4d& b) noexcept {
  for (int k = 0; k < 16; ++k)
    if (!nearlyEqual(a.getPointer()[k], b.getPointer()[k])) return false;
  return true;
}

Matrix4x4d operator*(const Matrix4x4d& a, const Matrix4x4d& b) noexcept {
  Matrix4x4d r(a);
  r *= b;
  return r;
}

Point4d transform(const Matrix4x4d& m, const Point4d& p) noexcept { return m.transform(p); }
Point4d transform(const Matrix4x4d& m, const Point3d& p) noexcept { return m.transform(Point4d(p)); }

}  // namespace gui_objects
