"""One adapter per file manager: how its windows are driven, with the same operations for all.

    name              of the file manager, its program and its plug-in's folder
    shows_disabled    whether an entry can be shown that cannot be picked
    prepare()         writes its settings, once in a session
    start(folder, with_plug_in=True), end()
                      starts it with a window on a folder; ends it
    open_window(folder)
                      another one
    go_down(name), go_up(name)
                      to a folder that is shown, to the one above
    close_window()    the last one that was opened
    open_tab(), close_tab()
                      another one on the same folder; the last one
    tells_hidden_tabs whether its plug-in hears of the folders of tabs that others hide
    split()           has a window show two halves; only where it can
    view_extents()    of the part of the window with the items
    wait_for_item(name), wait_for_no_item(name)
    open_menu(names)  selects items and opens their menu; without names that of the background
    entries()         of ours in the open menu: titles, and whether each can be picked
    pick(title)       in the open menu
    close_menu()
    all_entries()     of the open menu, whosever they are
    has_toolbar_menu(), open_toolbar_menu()
    open_place_menu(name)
                      of a folder in the sidebar; only where sidebars can have our entries
    has_account(), account_tool_tip(), open_account(name), open_account_menu(), account_entries()
                      of the drive itself in the sidebar; only where sidebars show it
    wait_for_message(text)
                      until a message to the user holds a text; closes it
"""
