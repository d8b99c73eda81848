#pragma once

// Nautilus's extension interface. Its headers do not all say that they are of C.

#include <glib-object.h>

#include <gtk/gtk.h>

extern "C" {
#include <nautilus-extension.h>
}
