#include "app/caps_lock.h"

#include <QGuiApplication>

#if defined(KESTRELON_HAVE_XKB)
// After Qt: Xlib's macros (None, Bool, Status) would clash with Qt's names.
#include <X11/XKBlib.h>
#endif

namespace kestrelon {

std::optional<bool> capsLockOn()
{
#if defined(KESTRELON_HAVE_XKB)
    const auto* x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    Display* display = x11 ? x11->display() : nullptr;
    XkbStateRec state;
    if (display && XkbGetState(display, XkbUseCoreKbd, &state) == Success)
        return (state.locked_mods & LockMask) != 0;
#endif
    return std::nullopt;
}

} // namespace kestrelon
