// The exception family: texts, cloning and rethrowing through boost, and the
// user errors' catalogue texts.
#include <gtest/gtest.h>

#include <boost/exception_ptr.hpp>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>

#include "qvgui/geometry.h"
#include "qvgui/host.h"

namespace {

using namespace gui_objects;

template <class E>
std::function<void()> thrower() {
  return [] { throw E(); };
}

TEST(Exceptions, InternalErrorTexts) {
  struct Case {
    const char* label;
    std::function<void()> raise;
    const char* text;
  };
  const Case cases[] = {
      {"ShortOverflow", thrower<ShortOverflowException>(),
       "Attempt to cast a point to 16 bits which had coordinates which were too large"},
      {"InvalidW", thrower<InvalidWException>(), "Attempt to project a Point4d with W==0"},
      {"ZeroLength", thrower<ZeroLengthException>(), "Attempt to normalize a zero length vector"},
      {"InvalidScale", thrower<InvalidScaleException>(), "Scale factor <= 0"},
      {"InvalidAxis", thrower<InvalidAxisException>(), "Attempt to rotate around a zero length axis"},
      {"InvalidCoordinateFrame", thrower<InvalidCoordinateFrameException>(),
       "Basis vectors are not orthogonal and right handed"},
      {"InvalidBounds", thrower<InvalidBoundsException>(),
       "Cannot create a projection matrix with volume <= 0"},
      {"InvalidJacobian", thrower<InvalidJacobianException>(),
       "Cannot compute the Jacobian of a nonaffine transform"},
      {"InvalidAxisAlignedBoundingBox", thrower<InvalidAxisAlignedBoundingBoxException>(),
       "Invalid AxisAlignedBoundingBox"},
      {"InvalidWidth", thrower<InvalidWidthException>(), "Invalid width"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    try {
      c.raise();
      ADD_FAILURE() << "nothing thrown";
    } catch (const IInternalException& e) {
      EXPECT_STREQ(e.what(), c.text);
    }
  }
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
  struct Case {
    const char* label;
    std::function<void()> raise;
    const char* identifier;
  };
  const Case cases[] = {
      {"null", thrower<NullArrayException>(), "Tavrix::gui::array::NullArray"},
      {"class", thrower<InvalidArrayClassException>(), "Tavrix::gui::array::InvalidArrayClass"},
      {"shape", thrower<InvalidArrayShapeException>(), "Tavrix::gui::array::InvalidArrayShape"},
      {"data", thrower<InvalidArrayDataException>(), "Tavrix::gui::array::InvalidArrayData"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    ASSERT_TRUE(hostCatalogHas(c.identifier));
    try {
      c.raise();
      ADD_FAILURE() << "nothing thrown";
    } catch (const InvalidArrayException& e) {
      EXPECT_EQ(e.identifier(), c.identifier);
      EXPECT_EQ(e.message(), hostCatalogText(c.identifier));
      EXPECT_EQ(std::string(e.what()), e.message());
      EXPECT_FALSE(e.message().empty());
    }
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
