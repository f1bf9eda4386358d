// UI event records and the observers that wait for a key or button press.
#include <algorithm>
#include <utility>

#include "qvgui/window.h"

namespace gui_objects {

// ---- Event records -----------------------------------------------------------------

namespace {

UI_EventRecord makeEvent(UI_EventRecord::Type type, WinRec_tag* win, unsigned modifiers) {
  UI_EventRecord e;
  e.type = type;
  e.window = win;
  e.modifiers = modifiers;
  return e;
}

}  // namespace

UI_EventRecord UI_EventRecord::makeButton(Type type, WinRec_tag* win, qvpoint where, int button,
                                          unsigned modifiers) {
  UI_EventRecord e = makeEvent(type, win, modifiers);
  e.where = where;
  e.button = button;
  e.clickCount = 1;
  return e;
}

UI_EventRecord UI_EventRecord::makeKey(Type type, WinRec_tag* win, int key, unsigned modifiers) {
  UI_EventRecord e = makeEvent(type, win, modifiers);
  e.key = key;
  return e;
}

UI_EventRecord UI_EventRecord::makeMotion(WinRec_tag* win, qvpoint where, unsigned modifiers) {
  UI_EventRecord e = makeEvent(Motion, win, modifiers);
  e.where = where;
  return e;
}

const char* UI_EventRecord::typeName(Type type) noexcept {
  switch (type) {
    case ButtonDown:
      return "ButtonDown";
    case ButtonUp:
      return "ButtonUp";
    case KeyDown:
      return "KeyDown";
    case KeyUp:
      return "KeyUp";
    case Motion:
      return "Motion";
    case ScrollWheel:
      return "ScrollWheel";
    case None:
      break;
  }
  return "None";
}

// ---- Waiting for a key or button press -------------------------------------------------

WaitForObserver::~WaitForObserver() = default;

struct WaitForSubject::Impl {
  std::vector<std::pair<WinRec_tag*, WaitForObserver*>> waiting;  // in attach order

  auto findObserver(WaitForObserver* o) {
    return std::find_if(waiting.begin(), waiting.end(), [o](const auto& w) { return w.second == o; });
  }
};

WaitForSubject::WaitForSubject() : impl_(new Impl) {}
WaitForSubject::~WaitForSubject() = default;

void WaitForSubject::attach(WinRec_tag* win, WaitForObserver* observer) {
  if (!observer) return;
  detach(observer);
  impl_->waiting.emplace_back(win, observer);
}

void WaitForSubject::detach(WaitForObserver* observer) {
  const auto it = impl_->findObserver(observer);
  if (it != impl_->waiting.end()) impl_->waiting.erase(it);
}

bool WaitForSubject::isWaiting(WinRec_tag* win) const {
  return std::any_of(impl_->waiting.begin(), impl_->waiting.end(),
                     [win](const auto& w) { return w.first == win; });
}

std::size_t WaitForSubject::observerCount() const { return impl_->waiting.size(); }

std::size_t WaitForSubject::notify(const UI_EventRecord& event) {
  if (event.type != UI_EventRecord::ButtonDown && event.type != UI_EventRecord::KeyDown) return 0;
  // Observers may attach or detach others while being told, so work on a copy
  // and tell only those still waiting.
  const auto snapshot = impl_->waiting;
  std::size_t told = 0;
  for (const auto& [win, observer] : snapshot) {
    if (win != event.window) continue;
    const auto it = impl_->findObserver(observer);
    if (it == impl_->waiting.end() || it->first != win) continue;
    ++told;
    if (observer->keyOrButtonPressed(event)) detach(observer);
  }
  return told;
}

void WaitForSubject::abort(WinRec_tag* win) {
  std::vector<WaitForObserver*> aborted;
  auto& waiting = impl_->waiting;
  for (auto it = waiting.begin(); it != waiting.end();) {
    if (it->first == win) {
      aborted.push_back(it->second);
      it = waiting.erase(it);
    } else {
      ++it;
    }
  }
  for (WaitForObserver* o : aborted) o->waitAborted(win);
}

}  // namespace gui_objects
