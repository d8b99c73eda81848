"""One adapter per file manager: how its windows are driven, with the same operations for all.

    name              of the file manager, its program and its plug-in's folder
    has_toolbar       whether the toolbar's menu is a button's; else it is a submenu of the background's
    shows_disabled    whether an entry can be shown that cannot be picked
    prepare()         writes its settings, once in a session
    start(folder)     starts it with a window on a folder, and waits until its files are there
    open_window(folder), open_tab_like(folder)
                      another window on a folder
    go_down(name), go_up()
                      to a folder that is shown, to the one above; wait until it is shown
    close_window()    the last one that was opened
    wait_for_item(name), wait_for_no_item(name)
    open_menu(names)  selects items and opens their menu; without names that of the background
    entries()         of ours in the open menu: titles, and whether each can be picked
    pick(title)       in the open menu
    close_menu()
    has_toolbar_menu(), open_toolbar_menu()
    wait_for_message(text)
                      until a message to the user holds a text; closes it
"""
