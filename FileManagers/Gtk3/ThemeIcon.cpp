#include "FileManagers/Gtk3/ThemeIcon.h"

#include <gtk/gtk.h>

#include <string>

namespace FileManagers {

const char* themeIcon(const Shell::ToolbarItem& item) {
    GtkIconTheme* const theme = gtk_icon_theme_get_default();
    const std::size_t themes = item.imageFile.rfind("/hicolor/");
    if (gtk_icon_theme_has_icon(theme, item.imageName.c_str()) == FALSE &&
        themes != std::string::npos) {
        gtk_icon_theme_append_search_path(theme, item.imageFile.substr(0, themes).c_str());
    }
    return item.imageName.c_str();
}

} // namespace FileManagers
