#include "FileManagers/GLib/DriveLoop.h"

#include <glib-unix.h>

namespace FileManagers {

namespace {

gboolean serve(gint, GIOCondition, gpointer drive) {
    static_cast<Drive*>(drive)->serve();
    return G_SOURCE_CONTINUE;
}

} // namespace

DriveLoop::DriveLoop(Drive& drive) {
    if (drive.descriptor() >= 0) {
        source_ = g_unix_fd_add(drive.descriptor(), G_IO_IN, &serve, &drive);
    }
}

DriveLoop::~DriveLoop() {
    if (source_ != 0) {
        (void)g_source_remove(source_); // it is there, as it never removes itself
    }
}

} // namespace FileManagers
