// The geometry exception family: what() texts, boost cloning and rethrowing,
// and the catalogue-backed host-array errors.
#include <locale>

#include "geometry/exceptions_p.h"
#include "qvgui/geometry.h"
#include "qvgui/host.h"

namespace gui_objects {

IException::~IException() noexcept = default;
IInternalException::~IInternalException() noexcept = default;
IUserException::~IUserException() noexcept = default;

template <class E>
void raise() {
  throw E();
}

// clone() hands boost::current_exception a heap copy of the dynamic type;
// rethrow() throws a copy so that boost::rethrow_exception keeps that type.
#define QVGUI_DEFINE_INTERNAL_EXCEPTION(Name, Text)                                          \
  Name::~Name() noexcept = default;                                                          \
  const char* Name::what() const noexcept { return Text; }                                   \
  const boost::exception_detail::clone_base* Name::clone() const { return new Name(*this); } \
  void Name::rethrow() const { throw *this; }                                                \
  template void raise<Name>();
QVGUI_INTERNAL_EXCEPTIONS(QVGUI_DEFINE_INTERNAL_EXCEPTION)
#undef QVGUI_DEFINE_INTERNAL_EXCEPTION

// The text is looked up once, when the error is raised: a later change of the
// global locale does not change an exception already in flight.
InvalidArrayException::InvalidArrayException(const char* identifier)
    : identifier_(identifier), message_(hostCatalogText(identifier, std::locale())) {}
InvalidArrayException::~InvalidArrayException() noexcept = default;
const char* InvalidArrayException::what() const noexcept { return message_.c_str(); }

#define QVGUI_DEFINE_ARRAY_EXCEPTION(Name, Identifier)                                       \
  Name::Name() : InvalidArrayException(Identifier) {}                                        \
  Name::~Name() noexcept = default;                                                          \
  const boost::exception_detail::clone_base* Name::clone() const { return new Name(*this); } \
  void Name::rethrow() const { throw *this; }
QVGUI_ARRAY_EXCEPTIONS(QVGUI_DEFINE_ARRAY_EXCEPTION)
#undef QVGUI_DEFINE_ARRAY_EXCEPTION

const char* invalidXYZTypeException::what() const noexcept { return "X,Y or Z Data is non numeric"; }
const char* invalidCDataTypeException::what() const noexcept { return "CData is non numeric"; }

cdata::InvalidRGBADataException::~InvalidRGBADataException() = default;

}  // namespace gui_objects
