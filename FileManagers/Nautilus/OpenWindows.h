#pragma once

#include "FileManagers/Shared/Drive.h"

#include <glib-object.h>

namespace FileManagers {

// Tells a drive which folders the windows and tabs of this application show, for as long as its
// owner lives. Does nothing at a second call for an owner, which the drive belongs to.
//
// Nautilus tells them to the session bus, where it is listened to here as any program could,
// without waiting. That a window is closed comes late there; this leans on the bus's name for a
// window ending with the number that the application knows it by. Where that is not so a closed
// window's folders end with the next report, and where there are no reports, none are told.
void followOpenWindows(GObject* owner, Drive& drive);

} // namespace FileManagers
