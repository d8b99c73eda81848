#pragma once

#include "FileManagers/GLib/LocalPath.h"
#include "FileManagers/GLib/Owned.h"
#include "FileManagers/GLib/Picks.h"

#include <string>
#include <utility>
#include <vector>

namespace FileManagers {

// What the extension interfaces of Caja, Nemo and Nautilus have in common, under names of their
// own: files that tell their URIs, and items with a name, a label, a tip and an icon, the property
// "sensitive" and the signal "activate".

template <class File>
using TextOfFile = char* (*)(File*);
template <class Item>
using NewItem = Item* (*)(const char* name, const char* label, const char* tip, const char* icon);

// A selection in the folder of its first file. A file that is not of this machine is in it without
// a path, so that there is no menu.
template <class File>
SharedPlace placeOfFiles(GList* files, TextOfFile<File> uri, TextOfFile<File> parentURI) {
    Shell::Place place;
    for (const GList* each = files; each != nullptr; each = each->next) {
        auto* const file = static_cast<File*>(each->data);
        place.items.push_back(localPath(OwnedText(uri(file)).get()));
        if (each == files) {
            place.target = localPath(OwnedText(parentURI(file)).get());
        }
    }
    return std::make_shared<const Shell::Place>(std::move(place));
}

template <class File>
SharedPlace placeOfFolder(File* folder, TextOfFile<File> uri) {
    return std::make_shared<const Shell::Place>(
        Shell::Place{{}, localPath(OwnedText(uri(folder)).get())});
}

// Items for entries, which carry them out; the list and its items are the caller's.
template <class Item>
GList* newMenuItems(Drive& drive, Shell::MenuKind kind,
                    const std::vector<Shell::MenuEntry>& entries, const SharedPlace& place,
                    NewItem<Item> newItem) {
    const std::string prefix = "Quorvane" + std::to_string(static_cast<int>(kind)) + "::";
    GList* items = nullptr;
    for (const Shell::MenuEntry& entry : entries) {
        const std::string name = prefix + std::to_string(g_list_length(items));
        Item* const item =
            newItem(name.c_str(), withoutMnemonics(entry.title, '_').c_str(), "", nullptr);
        g_object_set(item, "sensitive", entry.enabled ? TRUE : FALSE, nullptr);
        pickOnActivate(item, drive, kind, entry, place);
        items = g_list_append(items, item);
    }
    return items;
}

// The same for what a place has.
template <class Item>
GList* newMenuItems(Drive& drive, Shell::MenuKind kind, const SharedPlace& place,
                    NewItem<Item> newItem) {
    return newMenuItems(drive, kind, drive.entries(kind, *place), place, newItem);
}

} // namespace FileManagers
