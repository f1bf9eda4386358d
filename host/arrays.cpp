// Host arrays: the class table, creation, destruction, duplication,
// inspection and equality.

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <new>

#include "arrays_p.h"

namespace qvhost {

namespace {
std::int64_t g_liveArrays = 0;

struct ClassInfo {
  const char* name;
  zrSize elementSize;
};
constexpr ClassInfo kClasses[zrFUNCTION_CLASS + 1] = {
#define QVHOST_CLASS_INFO(id, name, size) {name, size},
    QVHOST_ARRAY_CLASSES(QVHOST_CLASS_INFO)
#undef QVHOST_CLASS_INFO
};

bool validClass(zrClassID id) noexcept { return id >= zrUNKNOWN_CLASS && id <= zrFUNCTION_CLASS; }

zrSize slotsPerElement(const zrArray_tag* a) noexcept {
  return a->classID == zrCELL_CLASS ? 1 : a->fieldNames.size();
}
}  // namespace

const char* className(zrClassID id) noexcept { return validClass(id) ? kClasses[id].name : "unknown"; }
zrSize classElementSize(zrClassID id) noexcept { return validClass(id) ? kClasses[id].elementSize : 0; }

const zrArray_tag* require(const zrArray_tag* a, const char* caller) {
  if (a == nullptr) throwHostError("Tavrix::host::NullArray", caller);
  return a;
}

zrArray_tag* require(zrArray_tag* a, const char* caller) {
  if (a == nullptr) throwHostError("Tavrix::host::NullArray", caller);
  return a;
}

void throwInvalidClass(const char* caller, const zrArray_tag* a) {
  throwHostError("Tavrix::host::InvalidClass", caller, className(a->classID));
}

zrSize elementCount(const zrSize* dims, zrSize ndim) {
  zrSize n = 1;
  for (zrSize k = 0; k < ndim; ++k) n = checkedMultiply(n, dims[k]);
  return n;
}

zrSize elementCount(const zrArray_tag* a) noexcept {
  zrSize n = 1;
  for (zrSize d : a->dims) n *= d;
  return n;
}

std::vector<zrSize> canonicalDims(const zrSize* dims, zrSize ndim) {
  std::vector<zrSize> out;
  try {
    if (dims == nullptr || ndim == 0) {
      out = {1, 1};
    } else if (ndim == 1) {
      out = {dims[0], 1};
    } else {
      out.assign(dims, dims + ndim);
      while (out.size() > 2 && out.back() == 1) out.pop_back();
    }
  } catch (const std::bad_alloc&) {
    throwOutOfMemory(ndim * sizeof(zrSize));
  }
  return out;
}

zrArray_tag* newArray(zrClassID id, std::vector<zrSize> dims) {
  const zrSize n = elementCount(dims.data(), dims.size());
  if (hasElementStorage(id)) checkedMultiply(n, classElementSize(id));
  consumeAllocation(sizeof(zrArray_tag));
  std::unique_ptr<zrArray_tag> a;
  try {
    a.reset(new zrArray_tag);
  } catch (const std::bad_alloc&) {
    throwOutOfMemory(sizeof(zrArray_tag));
  }
  a->classID = id;
  a->dims = std::move(dims);
  if (hasElementStorage(id)) {
    a->data = zrCalloc(n, classElementSize(id));
  } else if (id == zrCELL_CLASS || id == zrSTRUCT_CLASS) {
    // Struct slots are added with the fields.
    a->slots = static_cast<zrArray_tag**>(zrCalloc(id == zrCELL_CLASS ? n : 0, sizeof(zrArray_tag*)));
    a->slotCapacity = n;
  }
  ++g_liveArrays;
  return a.release();
}

double elementAsDouble(const zrArray_tag* a, zrSize i) noexcept {
  const void* d = a->data;
  return qvgui_numeric::visitNumericClass(
      a->classID,
      [&](auto tag) { return static_cast<double>(static_cast<const typename decltype(tag)::type*>(d)[i]); },
      [&] {
        if (a->classID == zrLOGICAL_CLASS) return static_cast<const bool*>(d)[i] ? 1.0 : 0.0;
        if (a->classID == zrCHAR_CLASS) return static_cast<double>(static_cast<const char16_t*>(d)[i]);
        return std::nan("");
      });
}

}  // namespace qvhost

using namespace qvhost;

std::int64_t hostLiveArrayCount() { return g_liveArrays; }

// ---- Creation ----------------------------------------------------------------------

zrArray_tag* zrCreateDoubleMatrix(zrSize m, zrSize n) { return newArray(zrDOUBLE_CLASS, {m, n}); }

zrArray_tag* zrCreateDoubleScalar(double value) {
  zrArray_tag* a = newArray(zrDOUBLE_CLASS, {1, 1});
  *static_cast<double*>(a->data) = value;
  return a;
}

zrArray_tag* zrCreateNumericMatrix(zrSize m, zrSize n, zrClassID cls) {
  const zrSize dims[2] = {m, n};
  return zrCreateNumericArray(2, dims, cls);
}

zrArray_tag* zrCreateNumericArray(zrSize ndim, const zrSize* dims, zrClassID cls) {
  if (!hasElementStorage(cls))
    throwHostError("Tavrix::host::InvalidClass", "zrCreateNumericArray", className(cls));
  return newArray(cls, canonicalDims(dims, ndim));
}

zrArray_tag* zrCreateLogicalMatrix(zrSize m, zrSize n) { return newArray(zrLOGICAL_CLASS, {m, n}); }
zrArray_tag* zrCreateCellMatrix(zrSize m, zrSize n) { return newArray(zrCELL_CLASS, {m, n}); }
zrArray_tag* zrCreateCellArray(zrSize ndim, const zrSize* dims) {
  return newArray(zrCELL_CLASS, canonicalDims(dims, ndim));
}
zrArray_tag* zrCreateCharArray(zrSize ndim, const zrSize* dims) {
  return newArray(zrCHAR_CLASS, canonicalDims(dims, ndim));
}

zrArray_tag* zrCreateStructMatrix(zrSize m, zrSize n, int nfields, const char** fieldnames) {
  if (nfields < 0 || (nfields > 0 && fieldnames == nullptr)) {
    throwHostError("Tavrix::host::InvalidArgument", "zrCreateStructMatrix", "bad field list");
  }
  zrArray_tag* a = newArray(zrSTRUCT_CLASS, {m, n});
  try {
    for (int f = 0; f < nfields; ++f) {
      const char* name = fieldnames[f];
      if (name != nullptr && zrAddField(a, name) != f) {
        throwHostError("Tavrix::host::InvalidFieldName", name);  // a repeated name
      }
      if (name == nullptr) throwHostError("Tavrix::host::InvalidFieldName", "(null)");
    }
  } catch (...) {
    zrDestroyArray(a);
    throw;
  }
  return a;
}

namespace {

// A copy of the record and its element storage or field names; its slots stay empty.
zrArray_tag* duplicateShell(const zrArray_tag* array) {
  zrArray_tag* copy = newArray(array->classID, array->dims);
  try {
    copy->functionName = array->functionName;
    if (hasElementStorage(array->classID)) {
      const zrSize bytes = elementCount(array) * classElementSize(array->classID);
      if (bytes > 0) std::memcpy(copy->data, array->data, bytes);
    } else if (array->classID == zrSTRUCT_CLASS) {
      for (const std::string& name : array->fieldNames) zrAddField(copy, name.c_str());
    }
  } catch (const std::bad_alloc&) {
    zrDestroyArray(copy);
    throwOutOfMemory(0);
  } catch (...) {
    zrDestroyArray(copy);
    throw;
  }
  return copy;
}

}  // namespace

// Cells nest as deep as a caller cares to build them, so the copy walks an
// explicit list of slots still to fill instead of recursing.
zrArray_tag* zrDuplicateArray(const zrArray_tag* array) {
  if (array == nullptr) return nullptr;
  zrArray_tag* root = duplicateShell(array);
  struct Pending {
    const zrArray_tag* from;
    zrArray_tag* to;
  };
  try {
    std::vector<Pending> pending{{array, root}};
    while (!pending.empty()) {
      const Pending p = pending.back();
      pending.pop_back();
      if (p.from->slots == nullptr) continue;
      const zrSize used = elementCount(p.from) * slotsPerElement(p.from);
      for (zrSize k = 0; k < used; ++k) {
        const zrArray_tag* child = p.from->slots[k];
        if (child == nullptr) continue;
        p.to->slots[k] = duplicateShell(child);
        if (child->slots != nullptr) pending.push_back({child, p.to->slots[k]});
      }
    }
  } catch (const std::bad_alloc&) {
    zrDestroyArray(root);
    throwOutOfMemory(0);
  } catch (...) {
    zrDestroyArray(root);
    throw;
  }
  return root;
}

void zrDestroyArray(zrArray_tag* array) {
  zrArray_tag* queue = array;
  if (queue != nullptr) queue->nextToFree = nullptr;
  while (queue != nullptr) {
    zrArray_tag* a = queue;
    queue = a->nextToFree;
    if (a->slots != nullptr) {
      const zrSize total = a->slotCapacity * slotsPerElement(a);
      for (zrSize k = 0; k < total; ++k) {
        zrArray_tag* child = a->slots[k];
        if (child == nullptr) continue;
        child->nextToFree = queue;
        queue = child;
      }
      zrFree(a->slots);
    }
    zrFree(a->data);
    delete a;
    --g_liveArrays;
  }
}

// ---- Inspection ----------------------------------------------------------------------

zrClassID zrGetClassID(const zrArray_tag* a) { return require(a, "zrGetClassID")->classID; }
const char* zrGetClassName(const zrArray_tag* a) { return className(require(a, "zrGetClassName")->classID); }
bool zrIsNumeric(const zrArray_tag* a) { return isNumericClass(require(a, "zrIsNumeric")->classID); }
bool zrIsDouble(const zrArray_tag* a) { return require(a, "zrIsDouble")->classID == zrDOUBLE_CLASS; }
bool zrIsChar(const zrArray_tag* a) { return require(a, "zrIsChar")->classID == zrCHAR_CLASS; }
bool zrIsCell(const zrArray_tag* a) { return require(a, "zrIsCell")->classID == zrCELL_CLASS; }
bool zrIsStruct(const zrArray_tag* a) { return require(a, "zrIsStruct")->classID == zrSTRUCT_CLASS; }
bool zrIsLogical(const zrArray_tag* a) { return require(a, "zrIsLogical")->classID == zrLOGICAL_CLASS; }
bool zrIsFunctionHandle(const zrArray_tag* a) {
  return require(a, "zrIsFunctionHandle")->classID == zrFUNCTION_CLASS;
}

zrSize zrGetM(const zrArray_tag* a) { return require(a, "zrGetM")->dims[0]; }

zrSize zrGetN(const zrArray_tag* a) {
  require(a, "zrGetN");
  zrSize n = 1;
  for (std::size_t k = 1; k < a->dims.size(); ++k) n *= a->dims[k];
  return n;
}

zrSize zrGetNumberOfDimensions(const zrArray_tag* a) {
  return require(a, "zrGetNumberOfDimensions")->dims.size();
}
const zrSize* zrGetDimensions(const zrArray_tag* a) { return require(a, "zrGetDimensions")->dims.data(); }
zrSize zrGetNumberOfElements(const zrArray_tag* a) {
  return elementCount(require(a, "zrGetNumberOfElements"));
}
zrSize zrGetElementSize(const zrArray_tag* a) {
  return classElementSize(require(a, "zrGetElementSize")->classID);
}
bool zrIsEmpty(const zrArray_tag* a) { return elementCount(require(a, "zrIsEmpty")) == 0; }
bool zrIsScalar(const zrArray_tag* a) { return elementCount(require(a, "zrIsScalar")) == 1; }

bool zrIsVector(const zrArray_tag* a) {
  require(a, "zrIsVector");
  return a->dims.size() == 2 && (a->dims[0] == 1 || a->dims[1] == 1);
}

// ---- Equality --------------------------------------------------------------------------

namespace {

bool elementsEqual(const zrArray_tag* a, const zrArray_tag* b, zrSize n) {
  for (zrSize i = 0; i < n; ++i) {
    // Exact comparison of the values; NaN != NaN, +0 == -0. 64-bit integers
    // compare as integers so values above 2^53 stay distinct.
    switch (a->classID) {
      case zrINT64_CLASS:
        if (static_cast<const std::int64_t*>(a->data)[i] != static_cast<const std::int64_t*>(b->data)[i]) {
          return false;
        }
        break;
      case zrUINT64_CLASS:
        if (static_cast<const std::uint64_t*>(a->data)[i] != static_cast<const std::uint64_t*>(b->data)[i]) {
          return false;
        }
        break;
      default:
        if (!(elementAsDouble(a, i) == elementAsDouble(b, i))) return false;
    }
  }
  return true;
}

// An empty cell reads as the empty double matrix.
bool isEmptyDouble(const zrArray_tag* a) {
  return a != nullptr && a->classID == zrDOUBLE_CLASS && elementCount(a) == 0 && a->dims.size() == 2 &&
         a->dims[0] == 0 && a->dims[1] == 0;
}

// Compares the records themselves; nested slots are left to the caller.
bool shallowEqual(const zrArray_tag* a, const zrArray_tag* b) {
  if (a->classID != b->classID || a->dims != b->dims) return false;
  switch (a->classID) {
    case zrFUNCTION_CLASS:
      return a->functionName == b->functionName;
    case zrCELL_CLASS:
      return true;
    case zrSTRUCT_CLASS: {
      if (a->fieldNames.size() != b->fieldNames.size()) return false;
      for (const std::string& name : a->fieldNames) {
        if (std::find(b->fieldNames.begin(), b->fieldNames.end(), name) == b->fieldNames.end()) return false;
      }
      return true;
    }
    default:
      return hasElementStorage(a->classID) ? elementsEqual(a, b, elementCount(a)) : true;
  }
}

}  // namespace

// Nested cells are compared with an explicit stack of slot pairs, so that the
// depth of the nesting costs heap, not call stack.
bool zrArrayEqual(const zrArray_tag* a, const zrArray_tag* b) {
  struct Pair {
    const zrArray_tag* a;
    const zrArray_tag* b;
  };
  std::vector<Pair> pending;
  const auto push = [&pending](const zrArray_tag* x, const zrArray_tag* y) {
    // An empty cell reads as the empty double matrix.
    if (x == nullptr || y == nullptr) return x == y || isEmptyDouble(x) || isEmptyDouble(y);
    if (!shallowEqual(x, y)) return false;
    if (x->classID == zrCELL_CLASS || x->classID == zrSTRUCT_CLASS) pending.push_back({x, y});
    return true;
  };
  try {
    if (a == nullptr || b == nullptr) return a == b;
    if (!push(a, b)) return false;
    while (!pending.empty()) {
      const Pair p = pending.back();
      pending.pop_back();
      const zrSize n = elementCount(p.a);
      if (p.a->classID == zrCELL_CLASS) {
        for (zrSize i = 0; i < n; ++i) {
          if (!push(p.a->slots[i], p.b->slots[i])) return false;
        }
        continue;
      }
      // Fields match by name; their order does not matter.
      const zrSize nf = p.a->fieldNames.size();
      for (zrSize f = 0; f < nf; ++f) {
        const auto g = static_cast<zrSize>(
            std::find(p.b->fieldNames.begin(), p.b->fieldNames.end(), p.a->fieldNames[f]) -
            p.b->fieldNames.begin());
        for (zrSize i = 0; i < n; ++i) {
          if (!push(p.a->slots[i * nf + f], p.b->slots[i * nf + g])) return false;
        }
      }
    }
  } catch (const std::bad_alloc&) {
    throwOutOfMemory(0);
  }
  return true;
}
