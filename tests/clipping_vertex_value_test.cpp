// VertexVector as a value: a vector that never held a vertex, and one moved
// from, behave exactly like a freshly built empty one and take new vertices.
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "qvgui/clipping.h"

namespace {

using namespace gui_objects;

void expectEmpty(const VertexVector& v) {
  EXPECT_EQ(v.getSize(), 0u);
  EXPECT_TRUE(v.getAccept());
  EXPECT_TRUE(v.getReject());
  EXPECT_FALSE(v.isProjected());
  EXPECT_EQ(v.getRGBAColors(), nullptr);
  EXPECT_EQ(v.getNormals(), nullptr);
  EXPECT_THROW((void)v.getOutcode(0), vertex_vector::InvalidIndexException);
}

TEST(VertexVectorValue, StatelessVectorsReadAndGrowLikeEmptyOnes) {
  const Point4d inside[] = {Point4d(0, 0, 0, 1), Point4d(0.5, 0.5, 0, 1)};
  VertexVector source(2, inside, nullptr);
  source.addNormals(std::vector<Point3d>(2, Point3d(0, 0, 1)).data());

  VertexVector fresh;
  VertexVector moved(source);
  VertexVector taker(std::move(moved));
  VertexVector copyOfFresh(fresh);
  VertexVector assigned(source);
  assigned = VertexVector();
  VertexVector cleared(source);
  cleared.clear();

  struct Case {
    const char* label;
    VertexVector* v;
  };
  Case cases[] = {{"default", &fresh},
                  {"moved from", &moved},
                  {"copy of default", &copyOfFresh},
                  {"assigned default", &assigned},
                  {"cleared", &cleared}};
  for (Case& c : cases) {
    SCOPED_TRACE(c.label);
    expectEmpty(*c.v);
    const VertexVector copy(*c.v);
    expectEmpty(copy);
    // The first vertex from a source adopts its attribute set.
    c.v->addVertex(source, 1);
    ASSERT_EQ(c.v->getSize(), 1u);
    EXPECT_EQ(c.v->getVertices()[0], inside[1]);
    ASSERT_NE(c.v->getNormals(), nullptr);
    EXPECT_EQ(c.v->getOutcode(0), 0u);
  }
  EXPECT_EQ(taker.getSize(), 2u);
  EXPECT_NE(taker.getNormals(), nullptr);
}

}  // namespace
