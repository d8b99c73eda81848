"""Dolphin, in its details view."""

import tree
from waiting import same_twice, until

TOOLBAR_ITEM = "Fennmoor Cloud"
SETTINGS = """[General]
GlobalViewProps=true
ShowFullPath=false
RememberOpenedTabs=false
Version=202

[MainWindow]
MenuBar=Disabled
"""


class Dolphin:
    name = "dolphin"
    shows_disabled = True

    def __init__(self, session):
        self.session = session
        self.process = None

    def prepare(self):
        pass

    def _command(self, folder):
        return ["dolphin", "--new-window", folder]

    def _environment(self, with_plug_in):
        plug_in = self.session.plug_ins / f"quorvane-{self.name}" if with_plug_in else self.session.no_plug_ins
        return {"QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", "QT_PLUGIN_PATH": str(plug_in)}

    def application(self):
        return tree.application("dolphin")
