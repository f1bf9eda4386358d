// Patch normals, face checks and extents of face-vertex patches.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "qvgui/surface.h"
#include "qvhost/testing.h"

namespace {

using namespace gui_objects;
using Rows = std::vector<std::vector<double>>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double M = std::numeric_limits<double>::max();

// A column-major double matrix from rows written naturally.
zrArray_tag* matrix(const Rows& rows) {
  const std::size_t m = rows.size(), n = m == 0 ? 3 : rows[0].size();
  zrArray_tag* a = zrCreateDoubleMatrix(m, n);
  for (std::size_t r = 0; r < m; ++r)
    for (std::size_t c = 0; c < n; ++c) zrGetPr(a)[r + c * m] = rows[r][c];
  return a;
}

std::vector<double> row(const zrArray_tag* a, std::size_t r) {
  std::vector<double> out;
  for (std::size_t c = 0; c < zrGetN(a); ++c) out.push_back(zrGetPr(a)[r + c * zrGetM(a)]);
  return out;
}

// Holds copies like the host's patch object; storing normals bumps the mode
// so that a missing restore shows.
class FakePatch final : public PatchProxy {
 public:
  FakePatch(zrArray_tag* vertices, zrArray_tag* faces) : vertices_(vertices), faces_(faces) {}
  ~FakePatch() override {
    for (zrArray_tag* a : {vertices_, faces_, vertexNormals_, faceNormals_}) zrDestroyArray(a);
  }
  const zrArray_tag* getFaces() override { return faces_; }
  const zrArray_tag* getVertices() override { return vertices_; }
  void setVertexNormals(zrArray_tag* n) override { store(vertexNormals_, n, true); }
  zrArray_tag* getVertexNormals() override { return vertexNormals_; }
  void setFaceNormals(zrArray_tag* n) override { store(faceNormals_, n, keepFaceNormals); }
  zrArray_tag* getFaceNormals() override { return faceNormals_; }
  std::int32_t getNormalsMode() override { return mode_; }
  void setNormalsMode(std::int32_t mode) override { mode_ = mode; }

  void store(zrArray_tag*& slot, zrArray_tag* n, bool keep) {
    zrDestroyArray(slot);
    slot = keep ? zrDuplicateArray(n) : nullptr;
    ++mode_;
  }
  bool keepFaceNormals = true;
  std::int32_t mode_ = 7;
  zrArray_tag *vertices_, *faces_, *vertexNormals_ = nullptr, *faceNormals_ = nullptr;
};

TEST(HowManyPatchVerticesAreOk, CountsLeadingEntries) {
  struct Case {
    const char* label;
    std::vector<double> face;
    std::size_t expected;
    const char* warning;  // expected message text, or null for none
  };
  const Case cases[] = {
      {"all valid", {1, 2, 3, 4}, 4, nullptr},
      {"the vertex count itself is valid", {4, 1, 2}, 3, nullptr},
      {"NaN ends the face quietly", {1, 2, kNaN, 3}, 2, nullptr},
      {"NaN first", {kNaN, 1, 2}, 0, nullptr},
      {"NaN before a bad entry hides it", {1, kNaN, 0}, 1, nullptr},
      {"zero rejects the face", {1, 0, 2}, 0, "Faces entry 0 at position 2 of face 3"},
      {"below 1 rejects the face", {0.5, 1, 2}, 0, "Faces entry 0.5 at position 1 of face 3"},
      {"above the vertex count", {1, 2, 5}, 0, "Faces entry 5 at position 3 of face 3"},
      {"infinity", {1, kInf}, 0, "Faces entry inf at position 2 of face 3"},
      {"no columns", {}, 0, nullptr},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    // Face number 2 (0-based) of a 4-face matrix; the other rows hold junk.
    const std::size_t nf = 4;
    std::vector<double> faces(nf * c.face.size(), -99.0);
    for (std::size_t pos = 0; pos < c.face.size(); ++pos) faces[2 + pos * nf] = c.face[pos];
    hostClearRecordedWarnings();
    EXPECT_EQ(howManyPatchVerticesAreOk(2, nf, c.face.size(), faces.data(), 4), c.expected);
    const std::vector<HostWarning> warnings = hostRecordedWarnings();
    ASSERT_EQ(warnings.size(), c.warning == nullptr ? 0u : 1u);
    if (c.warning == nullptr) continue;
    EXPECT_EQ(warnings[0].identifier, "Tavrix::gui::surface::PatchFacesElementExceedsVerticesLength");
    EXPECT_NE(warnings[0].message.find(c.warning), std::string::npos) << warnings[0].message;
    EXPECT_NE(warnings[0].message.find(" 4"), std::string::npos) << "vertex count";
  }
  hostClearRecordedWarnings();
}

TEST(ComputePatchNormals, FanTriangulationRules) {
  const std::vector<double> none{kNaN, kNaN, kNaN};
  struct Case {
    const char* label;
    Rows vertices, faces;
    Rows vertexNormals;  // NaN rows: no normal
    Rows faceNormals;
  };
  const Rows tri{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
  const Rows down3(3, {0, 0, -1});
  // clang-format off
  const Case cases[] = {
      {"triangle: second edge crossed with the first", tri, {{1, 2, 3}}, down3, {{0, 0, -1}}},
      {"two-column vertices lie at z = 0", {{0, 0}, {0, 1}, {1, 0}}, {{1, 2, 3}}, Rows(3, {0, 0, 1}),
       {{0, 0, 1}}},
      {"not normalised: area weighs", {{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}}, {{1, 2, 3, 4}},
       Rows(4, {0, 0, -4}), {{0, 0, -4}}},
      {"shared vertex averages the faces' normals", {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}},
       {{1, 2, 3}, {1, 4, 2}}, {{0, -0.5, -0.5}, {0, -0.5, -0.5}, {0, 0, -1}, {0, -1, 0}},
       {{0, 0, -1}, {0, -1, 0}}},
      {"face normal is the last triangle's", {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 1}}, {{1, 2, 3, 4}},
       {{0, 0, -1}, {0, 0, -1}, {0, 0, -1}, {-1, 1, -1}}, {{-1, 1, -1}}},
      {"two entries give no normal", tri, {{1, 2, kNaN}}, Rows(3, none), {{0, 0, 0}}},
      {"repeated second entry: only the fourth vertex receives", tri, {{1, 2, 2, 3}},
       {none, none, {0, 0, -1}}, {{0, 0, -1}}},
      {"bad entry skips only its face", tri, {{1, 0, 3}, {1, 2, 3}}, down3, {{0, 0, 0}, {0, 0, -1}}},
      {"non-finite vertex skips the face", {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {kInf, 0, 0}},
       {{1, 2, 4}, {1, 2, 3}},
       {{0, 0, -1}, {0, 0, -1}, {0, 0, -1}, none}, {{0, 0, 0}, {0, 0, -1}}},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    hostClearRecordedWarnings();
    FakePatch patch(matrix(c.vertices), matrix(c.faces));
    computePatchNormals(patch);
    EXPECT_EQ(patch.mode_, 7) << "normals mode restored";
    ASSERT_NE(patch.vertexNormals_, nullptr);
    ASSERT_NE(patch.faceNormals_, nullptr);
    ASSERT_EQ(zrGetM(patch.vertexNormals_), c.vertices.size());
    ASSERT_EQ(zrGetN(patch.vertexNormals_), 3u);
    for (std::size_t v = 0; v < c.vertices.size(); ++v) {
      const std::vector<double> got = row(patch.vertexNormals_, v);
      for (int k = 0; k < 3; ++k) {
        if (std::isnan(c.vertexNormals[v][k])) {
          // The marker is the quiet NaN with the sign bit set.
          std::uint64_t bits;
          std::memcpy(&bits, &got[k], sizeof bits);
          EXPECT_EQ(bits, 0xFFF8000000000000ULL) << "vertex " << v;
        } else {
          EXPECT_DOUBLE_EQ(got[k], c.vertexNormals[v][k]) << "vertex " << v << " component " << k;
        }
      }
    }
    for (std::size_t f = 0; f < c.faces.size(); ++f)
      EXPECT_EQ(row(patch.faceNormals_, f), c.faceNormals[f]) << "face " << f;
  }
  hostClearRecordedWarnings();
}

TEST(ComputePatchNormals, MissingPiecesAndStaleNormals) {
  const Rows triangle{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
  FakePatch noVertices(nullptr, matrix({{1, 2, 3}}));
  computePatchNormals(noVertices);
  EXPECT_EQ(noVertices.vertexNormals_, nullptr);

  FakePatch noFaceNormals(matrix(triangle), matrix({{1, 2, 3}}));
  noFaceNormals.keepFaceNormals = false;
  computePatchNormals(noFaceNormals);
  ASSERT_NE(noFaceNormals.vertexNormals_, nullptr);
  EXPECT_EQ(row(noFaceNormals.vertexNormals_, 0), (std::vector<double>{0, 0, -1}));

  // A second run starts from zero rather than adding to the first.
  FakePatch twice(matrix(triangle), matrix({{1, 2, 3}}));
  computePatchNormals(twice);
  computePatchNormals(twice);
  EXPECT_EQ(row(twice.vertexNormals_, 2), (std::vector<double>{0, 0, -1}));
}

TEST(ComputeFaceVertexExtents, Rules) {
  struct Case {
    const char* label;
    Rows vertices, faces;
    double expected[12];
    bool zeroZ;
  };
  // clang-format off
  const Case cases[] = {
      {"mixed signs", {{-2, 1}, {3, -1}}, {{1, 2}}, {-2, 3, -1, 1, 0, 0, -2, 3, -1, 1, -M, M}, true},
      {"first vertex sets the minimums", {{5, 6, 7}, {8, 9, 10}}, {{1, 2}},
       {5, 8, 6, 9, 7, 10, -M, 5, -M, 6, -M, 7}, false},
      {"unreferenced and non-finite vertices are ignored",
       {{1, 1, 1}, {-100, -100, -100}, {kNaN, 50, 50}, {2, -3, 0}}, {{1, 3, 4}},
       {1, 2, -3, 1, 0, 1, -M, 1, -3, 1, -M, 1}, false},
      {"a face ends at its first non-finite entry", {{1, 1, 1}, {9, 9, 9}}, {{1, kNaN, 2}, {1, kInf, 99}},
       {1, 1, 1, 1, 1, 1, -M, 1, -M, 1, -M, 1}, false},
      {"no faces keeps the defaults", {{1, 2, 3}}, {}, {M, -M, M, -M, M, -M, -M, M, -M, M, -M, M}, false},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    zrArray_tag* v = matrix(c.vertices);
    zrArray_tag* f = matrix(c.faces);
    const FaceVertexExtents e = computeFaceVertexExtents(f, v);
    for (int k = 0; k < 12; ++k) EXPECT_EQ(e.values[k], c.expected[k]) << "value " << k;
    EXPECT_EQ(e.hasZeroZ(), c.zeroZ);
    EXPECT_EQ(e.getLimit(tickpicker::kYAxis, tickpicker::kUpperRenderLimit), c.expected[3]);
    EXPECT_EQ(e.getInnerLimit(tickpicker::kYAxis, tickpicker::kMaxNegativeData), c.expected[8]);
    zrDestroyArray(v);
    zrDestroyArray(f);
  }

  zrArray_tag* v = matrix({{0, 0, 0}, {1, 1, 1}});
  for (const Rows& faces : {Rows{{1, 0}}, Rows{{1, 3}}, Rows{{0.5, 1}}, Rows{{-1, 1}}}) {
    SCOPED_TRACE(faces[0][0] + faces[0][1]);
    zrArray_tag* f = matrix(faces);
    EXPECT_THROW((void)computeFaceVertexExtents(f, v), InvalidDataException);
    zrDestroyArray(f);
  }
  EXPECT_THROW((void)computeFaceVertexExtents(nullptr, v), InvalidDataException);
  EXPECT_THROW((void)computeFaceVertexExtents(v, nullptr), InvalidDataException);
  zrDestroyArray(v);
}

TEST(ConvertFaceVertexToXYZ, ColumnsPerFace) {
  zrArray_tag* v = matrix({{10, 20, 30}, {11, 21, 31}, {12, 22, 32}});
  zrArray_tag* f = matrix({{1, 2, kNaN}, {3, 1, 2}, {kNaN, 1, 2}, {2, 4, 1}});
  struct Case {
    std::size_t coordinate;
    Rows expected;  // maxv x nf
  };
  const Case cases[] = {
      {0, {{10, 12, 0, 11}, {11, 10, 0, 11}, {11, 11, 0, 11}}},
      {2, {{30, 32, 0, 31}, {31, 30, 0, 31}, {31, 31, 0, 31}}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.coordinate);
    zrArray_tag* out = convert_FaceVertex_to_XYZ(f, v, c.coordinate);
    ASSERT_NE(out, nullptr);
    ASSERT_EQ(zrGetM(out), 3u);
    ASSERT_EQ(zrGetN(out), 4u);
    for (std::size_t r = 0; r < 3; ++r) EXPECT_EQ(row(out, r), c.expected[r]) << "row " << r;
    zrDestroyArray(out);
  }
  zrArray_tag* flat = matrix({{1, 2}, {3, 4}});
  EXPECT_EQ(convert_FaceVertex_to_XYZ(f, flat, 2), nullptr) << "no z column";
  EXPECT_EQ(convert_FaceVertex_to_XYZ(f, v, 3), nullptr);
  EXPECT_EQ(convert_FaceVertex_to_XYZ(nullptr, v, 0), nullptr);
  EXPECT_EQ(convert_FaceVertex_to_XYZ(f, nullptr, 0), nullptr);
  zrArray_tag* text = zrCreateString("abc");
  EXPECT_THROW((void)convert_FaceVertex_to_XYZ(f, text, 0), invalidXYZTypeException);
  for (zrArray_tag* a : {text, flat, v, f}) zrDestroyArray(a);
}

}  // namespace
