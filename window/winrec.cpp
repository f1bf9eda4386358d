// Window records: creation, destruction and the fields the library reads.
#include "window/methods_p.h"

WinRec_tag* wr_Create(int objectClass, void* object) {
  auto* win = static_cast<WinRec_tag*>(utCallocWithCheck(1, sizeof(WinRec_tag)));
  win->objectClass = objectClass;
  win->object = object;
  return win;
}

void wr_Destroy(WinRec_tag* win) { utFree(win); }

winMethods_tag* gwr_winMethods(const WinRec_tag* win) { return win ? win->winMethods : nullptr; }

void swr_winMethods(WinRec_tag* win, winMethods_tag* methods) {
  if (win) win->winMethods = methods;
}

int gwr_ObjectClass(const WinRec_tag* win) { return win ? win->objectClass : 0; }

void* gwr_Object(const WinRec_tag* win) { return win ? win->object : nullptr; }
