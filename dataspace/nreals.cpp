// Counted arrays of doubles: storage from the host's checked allocator,
// deep copies, exact comparison and printing.
#include <algorithm>
#include <cmath>
#include <ostream>
#include <utility>

#include "qvgui/dataspace.h"
#include "qvgui/host.h"

namespace {

double* allocateValues(int capacity) {
  if (capacity <= 0) return nullptr;
  return static_cast<double*>(utMallocWithCheck(sizeof(double) * static_cast<std::size_t>(capacity)));
}

}  // namespace

NReals::NReals(int capacity) : values(allocateValues(capacity)), capacity_(capacity > 0 ? capacity : 0) {}

NReals::NReals(const double* first, int n) : NReals(n) {
  if (n > 0) std::copy(first, first + n, values);
  count = capacity_;
}

NReals::NReals(std::initializer_list<double> list) : NReals(list.begin(), static_cast<int>(list.size())) {}

NReals::NReals(const NReals& other) : NReals(other.capacity_) {
  count = other.count;
  if (other.capacity_ > 0) std::copy(other.values, other.values + other.capacity_, values);
}

NReals::NReals(NReals&& other) noexcept
    : count(std::exchange(other.count, 0)),
      values(std::exchange(other.values, nullptr)),
      capacity_(std::exchange(other.capacity_, 0)) {}

NReals& NReals::operator=(const NReals& other) {
  if (this != &other) {
    NReals copy(other);  // allocate first: a failed allocation leaves this record untouched
    *this = std::move(copy);
  }
  return *this;
}

NReals& NReals::operator=(NReals&& other) noexcept {
  if (this != &other) {
    if (values != nullptr) utFree(values);
    count = std::exchange(other.count, 0);
    values = std::exchange(other.values, nullptr);
    capacity_ = std::exchange(other.capacity_, 0);
  }
  return *this;
}

NReals::~NReals() {
  if (values != nullptr) utFree(values);
}

bool NReals::append(double value) noexcept {
  if (count < 0 || count >= capacity_) return false;
  values[count++] = value;
  return true;
}

bool operator==(const NReals& a, const NReals& b) noexcept {
  if (a.count != b.count) return false;
  return std::equal(a.begin(), a.end(), b.begin(),
                    [](double x, double y) { return x == y || (std::isnan(x) && std::isnan(y)); });
}

std::ostream& operator<<(std::ostream& os, const NReals& r) {
  os << "NReals(" << r.count << ")[";
  const char* sep = "";
  for (double v : r) {
    os << sep << v;
    sep = ", ";
  }
  return os << "]";
}
