#pragma once

// What Thunar gives to its plug-ins. Its headers do not say that they are C, and what they include
// themselves must not be told so twice.

#include <gtk/gtk.h>

extern "C" {
#include <thunarx/thunarx.h>
}
