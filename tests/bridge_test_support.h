// Small helpers the bridge tests share: filled host arrays and the kind of
// bridge exception an action raises.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host_test_support.h"
#include "qvgui/bridge.h"

namespace bridge_test {

using gui_objects::ZrArrayPtr;
using host_test::errorId;
using host_test::raised;

// An m-by-n array of class cls holding values (column-major) cast to T.
template <class T>
ZrArrayPtr typed(zrClassID cls, zrSize m, zrSize n, const std::vector<double>& values) {
  ZrArrayPtr a(zrCreateNumericMatrix(m, n, cls));
  for (std::size_t k = 0; k < values.size(); ++k)
    static_cast<T*>(zrGetData(a.get()))[k] = static_cast<T>(values[k]);
  return a;
}

inline ZrArrayPtr doubles(zrSize m, zrSize n, const std::vector<double>& values) {
  return typed<double>(zrDOUBLE_CLASS, m, n, values);
}

// A 1-by-N cell taking ownership of values.
inline ZrArrayPtr cellOf(const std::vector<zrArray_tag*>& values) {
  ZrArrayPtr cell(zrCreateCellMatrix(1, values.size()));
  for (std::size_t k = 0; k < values.size(); ++k) zrSetCell(cell.get(), k, values[k]);
  return cell;
}

inline std::string charText(const zrArray_tag* a) {
  char* s = zrArrayToString(a);
  std::string out = s != nullptr ? s : "<not char>";
  zrFree(s);
  return out;
}

enum class Failure { None, Null, Class, Shape, Data, Width, ZeroLength, CDataType, RGBA };

inline Failure failureOf(const std::function<void()>& f) {
  try {
    f();
  } catch (const gui_objects::NullArrayException&) {
    return Failure::Null;
  } catch (const gui_objects::InvalidArrayClassException&) {
    return Failure::Class;
  } catch (const gui_objects::InvalidArrayShapeException&) {
    return Failure::Shape;
  } catch (const gui_objects::InvalidArrayDataException&) {
    return Failure::Data;
  } catch (const gui_objects::InvalidWidthException&) {
    return Failure::Width;
  } catch (const gui_objects::ZeroLengthException&) {
    return Failure::ZeroLength;
  } catch (const gui_objects::invalidCDataTypeException&) {
    return Failure::CDataType;
  } catch (const gui_objects::cdata::InvalidRGBADataException&) {
    return Failure::RGBA;
  }
  return Failure::None;
}

}  // namespace bridge_test
