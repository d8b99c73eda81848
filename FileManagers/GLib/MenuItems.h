#pragma once

#include "FileManagers/GLib/FolderPath.h"
#include "FileManagers/GLib/LocalPath.h"
#include "FileManagers/GLib/Owned.h"
#include "FileManagers/GLib/Picks.h"

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace FileManagers {

// What the extension interfaces of Caja, Nemo and Nautilus have in common, under names of their
// own: files that tell where they are, and items with a name, a label, a tip and an icon, the
// property "sensitive" and the signal "activate".

template <class File>
using TextOfFile = char* (*)(File*);
template <class File>
using FolderOfFile = GFile* (*)(File*); // nothing for a place that is in none
template <class Item>
using NewItem = Item* (*)(const char* name, const char* label, const char* tip, const char* icon);

// A selection in the folder of its first file, by what tells a file's path. A file that is not of
// this machine is in it without a path, so that there is no menu.
template <class PathOfFile>
SharedPlace placeOf(GList* files, PathOfFile path) {
    Shell::Place place;
    place.items.reserve(g_list_length(files));
    for (const GList* each = files; each != nullptr; each = each->next) {
        place.items.push_back(path(each->data));
    }
    if (!place.items.empty()) {
        place.target = std::filesystem::path(place.items.front()).parent_path();
    }
    return std::make_shared<const Shell::Place>(std::move(place));
}

template <class File>
SharedPlace placeOfFiles(GList* files, TextOfFile<File> uri) {
    return placeOf(files, [uri](gpointer file) {
        return localPath(OwnedText(uri(static_cast<File*>(file))).get());
    });
}

// The same for file managers that make an URI of folder and name each time that they are asked for
// it, which for thousands of files takes longer than all else.
template <class File>
SharedPlace placeOfFiles(GList* files, TextOfFile<File> uri, TextOfFile<File> name,
                         FolderOfFile<File> folder) {
    return placeOf(files, [=, paths = FolderPath()](gpointer data) mutable {
        auto* const file = static_cast<File*>(data);
        OwnedObject<GFile> in(folder(file));
        return in ? paths.of(std::move(in), OwnedText(name(file)).get())
                  : localPath(OwnedText(uri(file)).get());
    });
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
