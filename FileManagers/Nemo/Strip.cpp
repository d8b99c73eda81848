#include "FileManagers/Nemo/Strip.h"

#include "FileManagers/Gtk3/EntriesMenu.h"
#include "FileManagers/Gtk3/LocationStrip.h"
#include "FileManagers/Gtk3/ThemeIcon.h"

#include <map>
#include <memory>
#include <utility>

namespace FileManagers {

namespace {

struct Strip {
    Drive& drive;
    SharedPlace place;
    GtkButton* button;
};

std::map<GtkWidget*, Strip>& strips() {
    static std::map<GtkWidget*, Strip> all;
    return all;
}

void update(GtkWidget* widget, const Strip& strip) {
    const bool isSeen = strip.drive.isOnDrive(strip.place->target);
    if (isSeen) {
        const Shell::ToolbarItem& item = strip.drive.toolbarItem();
        gtk_button_set_label(strip.button, item.name.c_str());
        gtk_button_set_image(strip.button,
                             gtk_image_new_from_icon_name(themeIcon(item), GTK_ICON_SIZE_MENU));
        gtk_widget_set_tooltip_text(GTK_WIDGET(strip.button), item.toolTip.c_str());
    }
    gtk_widget_set_visible(widget, isSeen ? TRUE : FALSE);
}

void clicked(GtkButton* button, gpointer widget) {
    const auto found = strips().find(static_cast<GtkWidget*>(widget));
    if (found == strips().end()) {
        return;
    }
    const auto [drive, place, own] = found->second;
    const auto entries = drive.clickedEntries(Shell::MenuKind::kToolbar, *place);
    if (!entries.empty()) {
        popUpOnce(newEntriesMenu(drive, Shell::MenuKind::kToolbar, entries, place),
                  gtk_widget_get_toplevel(GTK_WIDGET(button)));
    }
}

void left(GtkWidget* widget, gpointer) {
    const auto strip = strips().extract(widget);
    if (strip) {
        strip.mapped().drive.close(widget);
    }
}

} // namespace

GtkWidget* newStrip(Drive& drive, const std::string& folder) {
    GtkWidget* const widget = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0);
    GtkWidget* const button = gtk_button_new();
    gtk_button_set_relief(GTK_BUTTON(button), GTK_RELIEF_NONE);
    gtk_button_set_always_show_image(GTK_BUTTON(button), TRUE);
    gtk_box_pack_start(GTK_BOX(widget), button, FALSE, FALSE, 0);
    gtk_widget_show(button);
    gtk_widget_set_no_show_all(widget, TRUE);
    followVisibility(widget);
    g_signal_connect(button, "clicked", G_CALLBACK(&clicked), widget);
    g_signal_connect(widget, "destroy", G_CALLBACK(&left), nullptr);
    Strip strip{drive, std::make_shared<const Shell::Place>(Shell::Place{{}, folder}),
                GTK_BUTTON(button)};
    update(widget, strip);
    strips().emplace(widget, std::move(strip));
    drive.show(widget, {folder});
    return widget;
}

void updateStrips() {
    for (const auto& [widget, strip] : strips()) {
        update(widget, strip);
    }
}

} // namespace FileManagers
