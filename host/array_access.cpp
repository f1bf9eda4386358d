// Host arrays: element data, shape updates, cells and struct fields.

#include <cctype>
#include <cstring>
#include <new>

#include "arrays_p.h"

using namespace qvhost;

namespace {

zrSize slotsPerElement(const zrArray_tag* a) noexcept {
  return a->classID == zrCELL_CLASS ? 1 : a->fieldNames.size();
}

// Makes room for `elements` elements of a cell or struct array; new slots are empty.
void reserveSlots(zrArray_tag* a, zrSize elements) {
  if (elements <= a->slotCapacity) return;
  const zrSize per = slotsPerElement(a);
  const zrSize oldSlots = a->slotCapacity * per;
  const zrSize newSlots = checkedMultiply(elements, per);
  auto* grown =
      static_cast<zrArray_tag**>(zrRealloc(a->slots, checkedMultiply(newSlots, sizeof(zrArray_tag*))));
  std::memset(static_cast<void*>(grown + oldSlots), 0, (newSlots - oldSlots) * sizeof(zrArray_tag*));
  a->slots = grown;
  a->slotCapacity = elements;
}

// Validates and applies a canonical shape; the record is unchanged on failure.
void applyShape(zrArray_tag* a, std::vector<zrSize> dims) {
  const zrSize n = elementCount(dims.data(), dims.size());
  if (a->slots != nullptr) reserveSlots(a, n);
  a->dims = std::move(dims);
}

bool validFieldName(const char* name) {
  if (name == nullptr || !std::isalpha(static_cast<unsigned char>(*name))) return false;
  for (const char* p = name; *p != '\0'; ++p) {
    if (!std::isalnum(static_cast<unsigned char>(*p)) && *p != '_') return false;
  }
  return true;
}

void checkIndex(const zrArray_tag* a, zrSize index) {
  const zrSize n = elementCount(a);
  if (index >= n) throwHostError("Tavrix::host::IndexOutOfRange", index, n);
}

int fieldNumber(const zrArray_tag* a, const char* field) {
  if (field == nullptr) return -1;
  for (std::size_t f = 0; f < a->fieldNames.size(); ++f) {
    if (a->fieldNames[f] == field) return static_cast<int>(f);
  }
  return -1;
}

const zrArray_tag* requireClass(const zrArray_tag* a, zrClassID id, const char* caller) {
  if (require(a, caller)->classID != id) throwInvalidClass(caller, a);
  return a;
}

}  // namespace

// ---- Data --------------------------------------------------------------------------

double* zrGetPr(const zrArray_tag* a) {
  return require(a, "zrGetPr")->classID == zrDOUBLE_CLASS ? static_cast<double*>(a->data) : nullptr;
}
void* zrGetData(const zrArray_tag* a) { return require(a, "zrGetData")->data; }
zrChar* zrGetChars(const zrArray_tag* a) {
  return require(a, "zrGetChars")->classID == zrCHAR_CLASS ? static_cast<zrChar*>(a->data) : nullptr;
}
bool* zrGetLogicals(const zrArray_tag* a) {
  return require(a, "zrGetLogicals")->classID == zrLOGICAL_CLASS ? static_cast<bool*>(a->data) : nullptr;
}
const char* zrGetFunctionName(const zrArray_tag* a) {
  return require(a, "zrGetFunctionName")->classID == zrFUNCTION_CLASS ? a->functionName.c_str() : nullptr;
}

void zrSetPr(zrArray_tag* a, double* data) {
  if (require(a, "zrSetPr")->classID != zrDOUBLE_CLASS) throwInvalidClass("zrSetPr", a);
  zrSetData(a, data);
}

void zrSetData(zrArray_tag* a, void* data) {
  if (!hasElementStorage(require(a, "zrSetData")->classID)) throwInvalidClass("zrSetData", a);
  if (data == a->data) return;
  zrFree(a->data);
  a->data = data;
}

// ---- Shape ---------------------------------------------------------------------------

void zrSetM(zrArray_tag* a, zrSize m) {
  require(a, "zrSetM");
  std::vector<zrSize> dims = a->dims;
  dims[0] = m;
  applyShape(a, canonicalDims(dims.data(), dims.size()));
}

void zrSetN(zrArray_tag* a, zrSize n) {
  require(a, "zrSetN");
  const zrSize dims[2] = {a->dims[0], n};
  applyShape(a, canonicalDims(dims, 2));
}

bool zrSetDimensions(zrArray_tag* a, const zrSize* dims, zrSize ndim) {
  require(a, "zrSetDimensions");
  if (dims == nullptr || ndim < 2) return false;
  applyShape(a, canonicalDims(dims, ndim));
  return true;
}

// ---- Cells ---------------------------------------------------------------------------

zrArray_tag* zrGetCell(const zrArray_tag* cell, zrSize index) {
  requireClass(cell, zrCELL_CLASS, "zrGetCell");
  checkIndex(cell, index);
  return cell->slots[index];
}

void zrSetCell(zrArray_tag* cell, zrSize index, zrArray_tag* value) {
  requireClass(cell, zrCELL_CLASS, "zrSetCell");
  checkIndex(cell, index);
  if (cell->slots[index] == value) return;
  zrDestroyArray(cell->slots[index]);
  cell->slots[index] = value;
}

// ---- Structs ---------------------------------------------------------------------------

int zrGetNumberOfFields(const zrArray_tag* a) {
  requireClass(a, zrSTRUCT_CLASS, "zrGetNumberOfFields");
  return static_cast<int>(a->fieldNames.size());
}

const char* zrGetFieldNameByNumber(const zrArray_tag* a, int field) {
  requireClass(a, zrSTRUCT_CLASS, "zrGetFieldNameByNumber");
  if (field < 0 || static_cast<std::size_t>(field) >= a->fieldNames.size()) return nullptr;
  return a->fieldNames[static_cast<std::size_t>(field)].c_str();
}

zrArray_tag* zrGetField(const zrArray_tag* a, zrSize index, const char* field) {
  requireClass(a, zrSTRUCT_CLASS, "zrGetField");
  checkIndex(a, index);
  const int f = fieldNumber(a, field);
  return f < 0 ? nullptr : a->slots[index * a->fieldNames.size() + static_cast<zrSize>(f)];
}

void zrSetField(zrArray_tag* a, zrSize index, const char* field, zrArray_tag* value) {
  requireClass(a, zrSTRUCT_CLASS, "zrSetField");
  checkIndex(a, index);
  const int f = fieldNumber(a, field);
  if (f < 0) throwHostError("Tavrix::host::UnknownField", field != nullptr ? field : "(null)");
  zrArray_tag*& slot = a->slots[index * a->fieldNames.size() + static_cast<zrSize>(f)];
  if (slot == value) return;
  zrDestroyArray(slot);
  slot = value;
}

// Re-lays the element-major slots with one more field per element; everything
// is allocated before the record changes.
int zrAddField(zrArray_tag* a, const char* field) {
  requireClass(a, zrSTRUCT_CLASS, "zrAddField");
  const int existing = fieldNumber(a, field);
  if (existing >= 0) return existing;
  if (!validFieldName(field))
    throwHostError("Tavrix::host::InvalidFieldName", field != nullptr ? field : "(null)");
  const zrSize oldPer = a->fieldNames.size();
  const zrSize newPer = oldPer + 1;
  const zrSize cap = a->slotCapacity;
  auto* slots = static_cast<zrArray_tag**>(zrCalloc(checkedMultiply(cap, newPer), sizeof(zrArray_tag*)));
  try {
    a->fieldNames.emplace_back(field);
  } catch (const std::bad_alloc&) {
    zrFree(slots);
    throwOutOfMemory(std::strlen(field));
  }
  for (zrSize e = 0; e < cap; ++e) {
    for (zrSize f = 0; f < oldPer; ++f) slots[e * newPer + f] = a->slots[e * oldPer + f];
  }
  zrFree(a->slots);
  a->slots = slots;
  return static_cast<int>(oldPer);
}
