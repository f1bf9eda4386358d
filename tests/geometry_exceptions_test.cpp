// The exception family: texts, cloning and rethrowing through boost, and the
// user errors' catalogue texts.
#include <gtest/gtest.h>

#include <boost/exception_ptr.hpp>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

#include "qvgui/geometry.h"
#include "qvhost/testing.h"

namespace {

using namespace gui_objects;

template <class E>
std::function<void()> thrower() {
  return [] { throw E(); };
}

// Read through the base, so that each class must override what().
std::string internalText(const IInternalException& e) { return e.what(); }

TEST(Exceptions, InternalErrorTexts) {
  const std::pair<std::string, const char*> cases[] = {
      {internalText(ShortOverflowException()),
       "Attempt to cast a point to 16 bits which had coordinates which were too large"},
      {internalText(InvalidWException()), "Attempt to project a Point4d with W==0"},
      {internalText(ZeroLengthException()), "Attempt to normalize a zero length vector"},
      {internalText(InvalidScaleException()), "Scale factor <= 0"},
      {internalText(InvalidAxisException()), "Attempt to rotate around a zero length axis"},
      {internalText(InvalidCoordinateFrameException()), "Basis vectors are not orthogonal and right handed"},
      {internalText(InvalidBoundsException()), "Cannot create a projection matrix with volume <= 0"},
      {internalText(InvalidJacobianException()), "Cannot compute the Jacobian of a nonaffine transform"},
      {internalText(InvalidAxisAlignedBoundingBoxException()), "Invalid AxisAlignedBoundingBox"},
      {internalText(InvalidWidthException()), "Invalid width"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(text, expected);
}

// Rethrowing through boost keeps the dynamic type, for internal and user errors alike.
template <class Base, class E>
void expectRethrownAs(const std::function<void()>& raise) {
  boost::exception_ptr saved;
  try {
    raise();
  } catch (const Base&) {
    saved = boost::current_exception();
  }
  ASSERT_TRUE(saved);
  EXPECT_THROW(boost::rethrow_exception(saved), E);
}

TEST(Exceptions, RethrowAndCloneKeepDynamicType) {
  expectRethrownAs<IException, ZeroLengthException>([] { Vector3d().normalize(); });
  expectRethrownAs<IUserException, InvalidArrayShapeException>(thrower<InvalidArrayShapeException>());

  const InvalidArrayDataException original;
  std::unique_ptr<const boost::exception_detail::clone_base> copy(
      static_cast<const boost::exception_detail::clone_base&>(original).clone());
  const auto* typed = dynamic_cast<const InvalidArrayDataException*>(copy.get());
  ASSERT_NE(typed, nullptr);
  EXPECT_NE(static_cast<const void*>(typed), static_cast<const void*>(&original));
  EXPECT_STREQ(typed->what(), original.what());
  EXPECT_THROW(copy->rethrow(), InvalidArrayDataException);
  const InvalidJacobianException internal;
  std::unique_ptr<const boost::exception_detail::clone_base> internalCopy(
      static_cast<const boost::exception_detail::clone_base&>(internal).clone());
  EXPECT_THROW(internalCopy->rethrow(), InvalidJacobianException);
}

TEST(Exceptions, ArrayErrorsReadTheCatalogue) {
  const NullArrayException null;
  const InvalidArrayClassException arrayClass;
  const InvalidArrayShapeException shape;
  const InvalidArrayDataException data;
  const std::pair<const char*, const InvalidArrayException*> cases[] = {
      {"Tavrix::gui::array::NullArray", &null},
      {"Tavrix::gui::array::InvalidArrayClass", &arrayClass},
      {"Tavrix::gui::array::InvalidArrayShape", &shape},
      {"Tavrix::gui::array::InvalidArrayData", &data},
  };
  for (const auto& [identifier, e] : cases) {
    SCOPED_TRACE(identifier);
    ASSERT_TRUE(hostCatalogHas(identifier));
    EXPECT_EQ(e->identifier(), identifier);
    EXPECT_EQ(e->message(), hostCatalogText(identifier));
    EXPECT_EQ(std::string(e->what()), e->message());
    EXPECT_FALSE(e->message().empty());
  }
}

TEST(Exceptions, ConversionErrors) {
  EXPECT_STREQ(static_cast<const std::exception&>(invalidXYZTypeException()).what(),
               "X,Y or Z Data is non numeric");
  EXPECT_STREQ(static_cast<const std::exception&>(invalidCDataTypeException()).what(),
               "CData is non numeric");
  // Caught through a base pointer of its own polymorphic type only.
  static_assert(std::is_polymorphic_v<cdata::InvalidRGBADataException>);
  static_assert(!std::is_base_of_v<std::exception, cdata::InvalidRGBADataException>);
  static_assert(std::is_empty_v<ParallelException> && std::is_empty_v<RectangleCrossedPointsException>);
  EXPECT_THROW(throw cdata::InvalidRGBADataException(), cdata::InvalidRGBADataException);
}

}  // namespace
