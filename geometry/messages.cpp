// Hands the library's message texts to the host when the library loads, so a
// host needs no copy of them.
#include "geometry/messages_p.h"

namespace qvgui_messages {
namespace {

#define QV_REGISTER_Library(identifier_, text_) HostMessageText{identifier_, text_},
#define QV_REGISTER_Host(identifier_, text_)
#define QV_REGISTER_Inline(identifier_, text_)
#define QV_MESSAGE(name, owner_, identifier_, text_, args_) QV_REGISTER_##owner_(identifier_, text_)
const HostMessageText kLibraryTexts[] = {
#include "geometry/message_areas.def"
};
#undef QV_MESSAGE
#undef QV_REGISTER_Inline
#undef QV_REGISTER_Host
#undef QV_REGISTER_Library

// Runs while the shared library loads, before any caller can reach a raise.
struct Registration {
  Registration() { hostRegisterMessages(kLibraryTexts, sizeof kLibraryTexts / sizeof kLibraryTexts[0]); }
};
const Registration g_registration;

}  // namespace
}  // namespace qvgui_messages
