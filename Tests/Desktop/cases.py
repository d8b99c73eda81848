"""What a user sees and does in a file manager, the same for all of them."""

import signal
import unittest

from waiting import same_twice, until

SHARE, PROPERTIES, TRASH = "QV: Share", "QV: Show Properties", "QV: Move To Trash"
RESTORE, DELETE, REFRESH = "QV: Restore", "QV: Delete", "QV: Refresh Folder"
DASHES = "\N{EM DASH}" * 17


def enabled(*titles):
    return [(title, True) for title in titles]


class FileManagerCase(unittest.TestCase):
    """A fresh drive, with a window of the file manager on its folder Docs."""

    session = drive = manager = None
    needs = "start"  # what a manager has to know for these cases

    def setUp(self):
        self.addCleanup(self.drive.end)
        self.drive.start()
        self.addCleanup(self.manager.end)
        self.addCleanup(self.take_picture)
        self.manager.start(self.drive.path / "Docs")
        self.manager.wait_for_item("a.txt")

    def take_picture(self):
        self.session.take_picture(f"{self.manager.name}-{self.id().split('.')[-1]}")

    def menu_of(self, *names):
        """Our entries, in a menu that is opened and closed again."""
        self.manager.open_menu(*names)
        entries = self.manager.entries()
        self.session.take_picture(f"{self.manager.name}-menu-{self.id().split('.')[-1]}")
        self.manager.close_menu()
        return entries

    # An extension that is late, as on a busy machine, is not waited for, and the menu has none of our
    # entries; opened again it has.

    def filled_menu_of(self, *names):
        return until(lambda: self.menu_of(*names), "a menu with our entries")

    def open_filled_menu(self, *names):
        def is_filled():
            self.manager.open_menu(*names)
            return self.manager.entries() or self.manager.close_menu()

        until(is_filled, "a menu with our entries")

    def open_toolbar_menu(self):
        until(self.manager.has_toolbar_menu, "the toolbar's menu")
        self.manager.open_toolbar_menu()

    def wait_for_menu(self, expected, *names):
        """For entries that come or go with the extension: until a menu that is opened has them."""
        last = []

        def fits():
            last[:] = self.menu_of(*names)
            return last == expected

        until(fits, lambda: f"a menu with {expected}, but {last}")

    def toolbar_menu(self):
        self.open_toolbar_menu()
        entries = self.manager.all_entries()
        self.session.take_picture(f"{self.manager.name}-toolbar-{self.id().split('.')[-1]}")
        self.manager.close_menu()
        return entries


class Menus(FileManagerCase):
    def test_of_a_file(self):
        expected = enabled(SHARE, PROPERTIES, TRASH)
        self.assertEqual(self.filled_menu_of("a.txt"), expected)
        self.assertEqual(self.drive.entries(self.drive.path / "Docs/a.txt"), expected)

    def test_of_several_files(self):
        expected = enabled(TRASH)
        self.assertEqual(self.filled_menu_of("a.txt", "b.txt"), expected)
        self.assertEqual(
            self.drive.entries(self.drive.path / "Docs/a.txt", self.drive.path / "Docs/b.txt"), expected)

    def test_of_the_background(self):
        expected = enabled(SHARE, PROPERTIES, REFRESH)
        self.assertEqual(self.filled_menu_of(), expected)
        self.assertEqual(
            self.drive.entries("--kind", "container", "--target", self.drive.path / "Docs"), expected)

    def test_are_empty_outside_of_the_drive(self):
        beside = self.drive.path.with_name(self.drive.path.name + "2")
        beside.mkdir(exist_ok=True)
        (beside / "foreign.txt").touch()
        self.manager.open_window(beside)
        self.manager.wait_for_item("foreign.txt")
        self.assertEqual(self.menu_of("foreign.txt"), [])
        self.assertEqual(self.menu_of(), [])
        self.assertFalse(self.manager.has_toolbar_menu())

    def test_of_the_special_folders(self):
        self.manager.go_up("Drive")
        self.manager.wait_for_item("Trash")
        self.assertEqual(self.menu_of("Trash"), [])
        self.assertEqual(self.menu_of("Shared Folders"), [])
        self.assertEqual(self.filled_menu_of("top.txt"), enabled(SHARE, PROPERTIES, TRASH))

    def test_refresh_the_folder(self):
        self.open_filled_menu()
        self.manager.pick(REFRESH)
        until(lambda: self.drive.requests("ext_refresh_folder"), "a request to refresh")
        self.assertEqual(self.drive.requests("ext_refresh_folder")[0]["payload"], ["/Docs"])

    def test_move_to_the_trash_and_back(self):
        self.open_filled_menu("a.txt")
        self.manager.pick(TRASH)
        self.drive.wait_for_file("Trash/a.txt")
        self.drive.wait_for_no_file("Docs/a.txt")
        self.manager.wait_for_no_item("a.txt")
        self.manager.open_window(self.drive.path / "Trash")
        self.manager.wait_for_item("a.txt")
        self.assertEqual(self.filled_menu_of("a.txt"), enabled(RESTORE, DELETE))
        self.open_filled_menu("a.txt")
        self.manager.pick(RESTORE)
        self.drive.wait_for_file("Docs/a.txt")
        self.drive.wait_for_no_file("Trash/a.txt")


class ToolbarMenu(FileManagerCase):
    def storage_line(self):
        return self.drive.toolbar_entries()[-1]["title"]

    def expected(self, count):
        entries = [(f"Empty Trash ({count})", True), (DASHES, False), ("Refresh Folder", True),
                   (DASHES, False), (self.storage_line(), False)]
        return [entry for entry in entries if entry[1] or self.manager.shows_disabled]

    def test_shows_the_count_and_the_storage_before_and_after(self):
        self.assertRegex(self.storage_line(), r"^\S+ \S+ of \S+ \S+ used$")
        self.assertEqual(self.toolbar_menu(), self.expected(1))
        self.open_filled_menu("a.txt", "b.txt")
        self.manager.pick(TRASH)
        self.drive.wait_for_file("Trash/b.txt")
        until(lambda: self.drive.toolbar_entries()[0]["title"] == "Empty Trash (3)",
              "the account's record with three items in the Trash")
        self.assertEqual(self.toolbar_menu(), self.expected(3))

    def test_empties_the_trash(self):
        self.open_toolbar_menu()
        self.manager.pick("Empty Trash (1)")
        self.drive.wait_for_no_file("Trash/old.txt")


class Places(FileManagerCase):
    needs = "open_place_menu"

    def menu_of_place(self, name):
        self.manager.open_place_menu(name)
        entries = self.manager.entries()
        self.manager.close_menu()
        return entries

    def test_have_the_menu_of_the_sidebar(self):
        expected = enabled(SHARE, PROPERTIES)
        self.assertEqual(until(lambda: self.menu_of_place("Docs"), "a menu with our entries"), expected)
        self.assertEqual(self.drive.entries("--kind", "sidebar", self.drive.path / "Docs"), expected)

    def test_have_none_when_they_are_the_drive(self):
        self.assertEqual(self.menu_of_place("Drive"), [])


class Account(FileManagerCase):
    """The drive itself, in a sidebar."""

    needs = "open_account_menu"
    silent_host = [("The host has not answered", False)]

    def setUp(self):
        super().setUp()
        until(self.manager.has_account, "the drive in the sidebar")

    def menu_of_account(self):
        self.manager.open_account_menu()
        entries = self.manager.account_entries()
        self.session.take_picture(f"{self.manager.name}-account-{self.id().split('.')[-1]}")
        self.manager.close_menu()
        return entries

    def wait_for_entries(self, expected):
        last = []

        def fits():
            last[:] = self.menu_of_account()
            return last == expected

        until(fits, lambda: f"a menu with {expected}, but {last}")

    def entries(self):
        return [(item["title"], item["enabled"]) for item in self.drive.toolbar_entries()]

    def test_has_the_menu_of_the_toolbar(self):
        self.assertEqual(len(self.entries()), 5)
        self.wait_for_entries(self.entries())
        self.open_filled_menu("a.txt", "b.txt")
        self.manager.pick(TRASH)
        self.wait_for_entries([("Empty Trash (3)", True)] + self.entries()[1:])

    def test_opens_the_drive(self):
        self.manager.open_account("Drive")
        self.manager.wait_for_item("top.txt")

    def test_empties_the_trash(self):
        self.wait_for_entries(self.entries())
        self.manager.open_account_menu()
        self.manager.pick("Empty Trash (1)")
        self.drive.wait_for_no_file("Trash/old.txt")
        self.wait_for_entries(self.entries())

    def test_says_that_a_stopped_host_has_not_answered(self):
        entries = self.entries()
        self.drive.host.signal(signal.SIGSTOP)
        self.assertEqual(self.entries(), entries)  # which asks the host
        self.wait_for_entries(entries + self.silent_host)
        until(lambda: self.manager.account_tool_tip() == self.silent_host[0][0], "that in the tool tip")
        self.drive.host.signal(signal.SIGCONT)
        self.wait_for_entries(entries)

    def test_says_that_a_killed_host_has_not_answered(self):
        entries = self.entries()
        self.drive.host.kill()
        self.wait_for_entries(entries + self.silent_host)

    def test_says_that_no_host_has_answered_yet(self):
        self.drive.end()
        until(lambda: not self.manager.has_account(), "no drive in the sidebar")
        self.drive.start_waiting_extension()
        until(self.manager.has_account, "the drive in the sidebar")
        self.wait_for_entries(self.silent_host)
        self.drive.start_host()
        self.drive.wait_for_extension()
        self.wait_for_entries(self.entries())

    def test_is_there_while_the_extension_is(self):
        self.drive.extension.kill()
        until(lambda: not self.manager.has_account(), "no drive in the sidebar")
        self.drive.start_extension()
        until(self.manager.has_account, "the drive in the sidebar")
        self.wait_for_entries(self.entries())

    def test_does_not_do_later_what_a_stopped_extension_left_undone(self):
        entries = self.entries()
        self.wait_for_entries(entries)
        self.drive.stop_extension()
        silent = "Fennmoor Cloud does not answer"
        self.manager.open_account_menu()
        self.manager.pick("Empty Trash (1)")
        until(lambda: self.manager.account_tool_tip() == silent, "that the extension does not answer")
        self.assertEqual(self.menu_of_account(), entries + [(silent, False)])
        self.drive.continue_extension()
        self.wait_for_entries(entries)
        self.assertEqual(self.drive.requests("ext_emptytrash"), [])
        self.assertTrue((self.drive.path / "Trash/old.txt").exists())


class ShownFolders(FileManagerCase):
    def test_are_begun_and_ended_with_their_windows(self):
        self.drive.wait_for_shown("/Docs")
        self.manager.open_window(self.drive.path / "Docs")
        self.manager.open_window(self.drive.path)
        self.drive.wait_for_shown("/Docs", "/")
        self.manager.close_window()
        self.manager.close_window()
        self.drive.wait_for_shown("/Docs")
        self.assertEqual(self.drive.times_begun("/Docs"), 1)

    def test_follow_the_window(self):
        self.manager.go_down("Inner")
        self.drive.wait_for_shown("/Docs/Inner")
        self.manager.go_up("Docs")
        self.drive.wait_for_shown("/Docs")

    def test_are_those_of_all_tabs_that_the_plug_in_hears_of(self):
        self.drive.wait_for_shown("/Docs")
        self.manager.open_tab()
        self.manager.go_down("Inner")
        behind = ["/Docs"] if self.manager.tells_hidden_tabs else []
        self.drive.wait_for_shown("/Docs/Inner", *behind)
        self.manager.close_tab()
        self.drive.wait_for_shown("/Docs")

    def test_end_with_a_file_manager_that_dies(self):
        self.drive.wait_for_shown("/Docs")
        self.manager.process.kill()
        until(lambda: self.drive.requests("ext_obs_end"), "an end")
        self.assertEqual(self.drive.requests("ext_obs_end")[0]["payload"], ["/Docs"])
        self.drive.wait_for_shown()

    def test_are_told_to_an_extension_that_is_started_again(self):
        self.drive.wait_for_shown("/Docs")
        self.drive.extension.kill()
        self.drive.start_extension()
        until(lambda: self.drive.times_begun("/Docs") == 2, "the folder, begun anew")
        self.drive.wait_for_shown("/Docs")


class SplitWindow(FileManagerCase):
    needs = "split"

    def test_shows_the_folders_of_both_halves(self):
        self.drive.wait_for_shown("/Docs")
        self.manager.split()
        self.manager.go_down("Inner")
        self.drive.wait_for_shown("/Docs", "/Docs/Inner")
        self.manager.go_up("Docs")
        self.drive.wait_for_shown("/Docs")
        self.assertEqual(self.drive.times_begun("/Docs"), 1)


class Window(FileManagerCase):
    def test_is_outside_of_the_drive_as_it_is_without_the_plug_in(self):
        beside = self.drive.path.with_name("Beside")
        beside.mkdir(exist_ok=True)
        self.manager.end()
        self.manager.start(beside)
        with_plug_in = self.manager.view_extents()
        self.manager.end()
        self.manager.start(beside, with_plug_in=False)
        self.assertEqual(with_plug_in, self.manager.view_extents())


class Extension(FileManagerCase):
    def test_stopped_has_no_entries_until_it_goes_on(self):
        self.drive.stop_extension()
        self.assertEqual(self.menu_of("a.txt"), [])
        self.assertEqual(self.menu_of("b.txt"), [])
        self.drive.continue_extension()
        self.wait_for_menu(enabled(SHARE, PROPERTIES, TRASH), "b.txt")

    def test_killed_has_no_entries_until_it_is_started_again(self):
        expected = enabled(SHARE, PROPERTIES, TRASH)
        self.assertEqual(self.filled_menu_of("a.txt"), expected)
        self.drive.extension.kill()
        self.wait_for_menu([], "a.txt")
        self.wait_for_menu([])
        until(lambda: not self.manager.has_toolbar_menu(), "no toolbar's menu")
        self.drive.start_extension()
        self.wait_for_menu(expected, "a.txt")
        self.wait_for_menu(enabled(SHARE, PROPERTIES, REFRESH))
        until(self.manager.has_toolbar_menu, "the toolbar's menu")

    def test_started_after_the_file_manager_has_its_entries(self):
        self.manager.end()
        self.drive.extension.kill()
        self.manager.start(self.drive.path / "Docs")
        self.manager.wait_for_item("a.txt")
        self.assertEqual(self.menu_of("a.txt"), [])
        self.assertFalse(self.manager.has_toolbar_menu())
        self.drive.start_extension()
        self.wait_for_menu(enabled(SHARE, PROPERTIES, TRASH), "a.txt")
        until(self.manager.has_toolbar_menu, "the toolbar's menu")
        self.drive.wait_for_shown("/Docs")

    def test_stopped_does_not_do_later_what_the_user_was_told(self):
        self.open_filled_menu("a.txt")
        self.assertEqual(self.manager.entries(), enabled(SHARE, PROPERTIES, TRASH))
        self.drive.stop_extension()
        self.manager.pick(TRASH)
        self.manager.wait_for_message("Nothing was done, and nothing will be done later.")
        self.drive.continue_extension()
        # Its answers come in the order of the questions.
        self.assertEqual(same_twice(lambda: self.drive.entries(self.drive.path / "Docs/a.txt"), "a menu"),
                         enabled(SHARE, PROPERTIES, TRASH))
        self.assertEqual(self.drive.requests("ext_movetotrash"), [])
        self.assertTrue((self.drive.path / "Docs/a.txt").exists())
