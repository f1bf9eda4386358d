// Grid data as faces and vertices: the quad layout and the coordinate and
// colour conversions.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "qvgui/surface.h"
#include "qvhost/testing.h"

namespace {

using namespace gui_objects;

zrArray_tag* doubles(std::size_t m, std::size_t n, const std::vector<double>& columnMajor) {
  zrArray_tag* a = zrCreateDoubleMatrix(m, n);
  std::copy(columnMajor.begin(), columnMajor.end(), zrGetPr(a));
  return a;
}

class GridDescriptor : public ::testing::Test {
 protected:
  static constexpr std::size_t kRows = 3, kColumns = 4, kVertices = kRows * kColumns;
  static constexpr std::size_t kFaces = (kRows - 1) * (kColumns - 1);
  void SetUp() override { d_ = createFaceVertexDescriptor(kRows, kColumns); }
  void TearDown() override { destroyFaceVertexDescriptor(d_); }
  double vertex(std::size_t v, std::size_t c) const { return zrGetPr(d_.vertices)[v + c * kVertices]; }
  FaceVertexDescriptor d_;
};

TEST_F(GridDescriptor, OneQuadPerCell) {
  ASSERT_EQ(zrGetM(d_.faces), kFaces);
  ASSERT_EQ(zrGetN(d_.faces), 4u);
  ASSERT_EQ(zrGetM(d_.vertices), kVertices);
  ASSERT_EQ(zrGetN(d_.vertices), 3u);
  const double* f = zrGetPr(d_.faces);
  auto v = [](std::size_t r, std::size_t c) { return static_cast<double>(r + c * kRows + 1); };
  for (std::size_t j = 0; j + 1 < kColumns; ++j)
    for (std::size_t i = 0; i + 1 < kRows; ++i) {
      SCOPED_TRACE(testing::Message() << "cell " << i << "," << j);
      const std::size_t face = i + j * (kRows - 1);
      EXPECT_EQ(f[face], v(i, j));
      EXPECT_EQ(f[face + kFaces], v(i + 1, j));
      EXPECT_EQ(f[face + 2 * kFaces], v(i + 1, j + 1));
      EXPECT_EQ(f[face + 3 * kFaces], v(i, j + 1));
    }

  FaceVertexDescriptor line = createFaceVertexDescriptor(1, 5);
  EXPECT_EQ(zrGetM(line.faces), 0u) << "one row has no cells";
  EXPECT_EQ(zrGetM(line.vertices), 5u);
  destroyFaceVertexDescriptor(line);
  EXPECT_EQ(line.faces, nullptr);
}

TEST_F(GridDescriptor, CoordinatesFromGridsAndVectors) {
  // x per column as a row vector, y per row as an int32 column, z a full grid.
  zrArray_tag* x = doubles(1, kColumns, {10, 20, 30, 40});
  zrArray_tag* y = zrCreateNumericMatrix(kRows, 1, zrINT32_CLASS);
  auto* yd = static_cast<std::int32_t*>(zrGetData(y));
  yd[0] = -1, yd[1] = -2, yd[2] = -3;
  std::vector<double> zvalues;
  for (std::size_t k = 0; k < kVertices; ++k) zvalues.push_back(0.5 * k);
  zrArray_tag* z = doubles(kRows, kColumns, zvalues);

  EXPECT_TRUE(convert_XYZ_to_FaceVertex(d_, x, 0));
  EXPECT_EQ(d_.coordinatesSet, 1u);
  EXPECT_TRUE(convert_XYZ_to_FaceVertex(d_, y, 1));
  EXPECT_TRUE(convert_XYZ_to_FaceVertex(d_, z, 2));
  EXPECT_EQ(d_.coordinatesSet, 7u);
  for (std::size_t v = 0; v < kVertices; ++v) {
    EXPECT_EQ(vertex(v, 0), 10.0 * (v / kRows + 1));
    EXPECT_EQ(vertex(v, 1), -1.0 - v % kRows);
    EXPECT_EQ(vertex(v, 2), 0.5 * v);
  }

  for (zrArray_tag* a : {x, y, z}) zrDestroyArray(a);
}

TEST_F(GridDescriptor, CoordinateRefusals) {
  zrArray_tag* x = doubles(1, kColumns, {1, 2, 3, 4});
  zrArray_tag* rowsLong = doubles(kRows, 1, {1, 2, 3});
  zrArray_tag* wrong = doubles(2, 2, {1, 2, 3, 4});
  struct Case {
    const char* label;
    const zrArray_tag* data;
    std::size_t coordinate;
    bool breakDescriptor;
  };
  const Case cases[] = {
      {"coordinate 3", x, 3, false},
      {"null data", nullptr, 0, false},
      {"a per-column vector is x only", x, 1, false},
      {"a per-row vector is y only", rowsLong, 0, false},
      {"grid of the wrong shape", wrong, 2, false},
      {"descriptor without arrays", x, 0, true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    FaceVertexDescriptor d = d_;
    if (c.breakDescriptor) d.vertices = nullptr;
    EXPECT_FALSE(convert_XYZ_to_FaceVertex(d, c.data, c.coordinate));
    EXPECT_EQ(d.coordinatesSet, 0u);
  }
  for (std::size_t v = 0; v < kVertices; ++v) EXPECT_EQ(vertex(v, 0), 0.0) << "nothing written";

  zrArray_tag* text = zrCreateString("abcd");
  EXPECT_THROW((void)convert_XYZ_to_FaceVertex(d_, text, 0), invalidXYZTypeException);
  for (zrArray_tag* a : {text, x, rowsLong, wrong}) zrDestroyArray(a);
}

TEST_F(GridDescriptor, ColourDataBackToGrid) {
  // Indexed colours per vertex, uint8.
  zrArray_tag* perVertex = zrCreateNumericMatrix(kVertices, 1, zrUINT8_CLASS);
  for (std::size_t k = 0; k < kVertices; ++k)
    static_cast<std::uint8_t*>(zrGetData(perVertex))[k] = static_cast<std::uint8_t>(k * 3);
  zrArray_tag* grid = convert_FaceVertexCData_to_CData(d_, perVertex);
  ASSERT_NE(grid, nullptr);
  EXPECT_EQ(zrGetM(grid), kRows);
  EXPECT_EQ(zrGetN(grid), kColumns);
  for (std::size_t k = 0; k < kVertices; ++k) EXPECT_EQ(zrGetPr(grid)[k], 3.0 * k);
  zrDestroyArray(grid);

  // True colours per face: rows x columns x 3, NaN where no cell starts.
  std::vector<double> rgb;
  for (std::size_t c = 0; c < 3; ++c)
    for (std::size_t f = 0; f < kFaces; ++f) rgb.push_back(c + 0.01 * f);
  zrArray_tag* perFace = doubles(kFaces, 3, rgb);
  zrArray_tag* cube = convert_FaceVertexCData_to_CData(d_, perFace);
  ASSERT_NE(cube, nullptr);
  ASSERT_EQ(zrGetNumberOfDimensions(cube), 3u);
  EXPECT_EQ(zrGetDimensions(cube)[0], kRows);
  EXPECT_EQ(zrGetDimensions(cube)[1], kColumns);
  EXPECT_EQ(zrGetDimensions(cube)[2], 3u);
  for (std::size_t c = 0; c < 3; ++c)
    for (std::size_t j = 0; j < kColumns; ++j)
      for (std::size_t i = 0; i < kRows; ++i) {
        const double got = zrGetPr(cube)[i + j * kRows + c * kVertices];
        if (i + 1 == kRows || j + 1 == kColumns)
          EXPECT_TRUE(std::isnan(got));
        else
          EXPECT_EQ(got, c + 0.01 * (i + j * (kRows - 1)));
      }
  zrDestroyArray(cube);

  zrArray_tag* twoColumns = doubles(kVertices, 2, std::vector<double>(2 * kVertices, 1.0));
  zrArray_tag* oddRows = doubles(5, 1, {1, 2, 3, 4, 5});
  zrArray_tag* cell = zrCreateCellMatrix(kVertices, 1);
  for (const zrArray_tag* bad : {twoColumns, oddRows, static_cast<zrArray_tag*>(nullptr)})
    EXPECT_EQ(convert_FaceVertexCData_to_CData(d_, bad), nullptr);
  EXPECT_EQ(convert_FaceVertexCData_to_CData(FaceVertexDescriptor(), perFace), nullptr);
  EXPECT_THROW((void)convert_FaceVertexCData_to_CData(d_, cell), invalidCDataTypeException);
  for (zrArray_tag* a : {perVertex, perFace, twoColumns, oddRows, cell}) zrDestroyArray(a);
}

}  // namespace
