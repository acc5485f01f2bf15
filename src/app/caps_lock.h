#pragma once
// The state of the caps-lock key for the status bar's "CAP" pane. Qt has no
// portable question for it, so it is asked from the window system where the
// program knows how (X11 with its keyboard extension).
#include <optional>

namespace kestrelon {

// True or false where the window system tells; nullopt where it cannot
// (offscreen, Wayland, a build without X11).
std::optional<bool> capsLockOn();

} // namespace kestrelon
