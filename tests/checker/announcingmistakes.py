# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""Mistakes in announcing calls."""

from application import AUDIO, CALL, MANAGER, TONES, Application, connect, plain
from gi.repository import GLib
from mistakes import Snapshot

class NeverAnnounces(Application):
    """adds a call without InterfacesAdded"""
    rule = "not-announced"
    why = "not-shown"

    def announce(self, path):
        self.after(300, lambda: self.tell(5))


class NeverAnnouncesAndIsQuiet(Application):
    """adds a call without any signal"""
    rule = "not-announced"
    why = "not-shown"

    def announce(self, path):
        pass


class AnnouncesFromTheCall(Application):
    """announces a call from the call's path"""
    rule = "announced-elsewhere"
    why = "not-shown"

    def announce(self, path):
        self.emit(path, MANAGER, "InterfacesAdded", "(oa{sa{sv}})", (path, self.objects[path]))


class AnnouncesFromTheRoot(Application):
    """announces a call from /"""
    rule = "announced-elsewhere"
    why = "not-shown"

    def announce(self, path):
        self.emit("/", MANAGER, "InterfacesAdded", "(oa{sa{sv}})", (path, self.objects[path]))


class AnnouncesOnAnotherConnection(Application):
    """announces a call on another connection"""
    rule = "announced-elsewhere"
    why = "not-shown"
    path = registered = "/announced/elsewhere"

    def start(self):
        self.second = connect()
        super().start()

    def announce(self, path):
        self.emit(self.path, MANAGER, "InterfacesAdded", "(oa{sa{sv}})", (path, self.objects[path]), self.second)


class AnnouncesNames(Application):
    """announces a call with the names of its interfaces only"""
    rule = "announcement-type"
    why = "not-shown"

    def announce(self, path):
        self.emit(self.path, MANAGER, "InterfacesAdded", "(oas)", (path, [CALL, TONES]))


class AnnouncesAString(Application):
    """announces a call by a string instead of an object path"""
    rule = "announcement-type"
    why = "not-shown"

    def announce(self, path):
        self.emit(self.path, MANAGER, "InterfacesAdded", "(sa{sa{sv}})", (path, self.objects[path]))


class AnnouncesProperties(Application):
    """announces a call with its properties only"""
    rule = "announcement-type"
    why = "not-shown"

    def announce(self, path):
        self.emit(self.path, MANAGER, "InterfacesAdded", "(oa{sv})", (path, self.properties()))


class AnnouncesPlainValues(Application):
    """announces a call with values that are no variants"""
    rule = "announcement-type"
    why = "not-shown"

    def announce(self, path):
        self.emit(self.path, MANAGER, "InterfacesAdded", "(oa{sa{ss}})", (path, {CALL: {"Uri": self.uri}}))


class AnnouncesWhatWasAnswered(Snapshot):
    """announces a call that is in GetManagedObjects"""
    rule = "announced-and-in-snapshot"

    def begin(self):
        self.after(100, lambda: self.announce(self.call))


class AnnouncesBeforeItAnswers(Application):
    """announces a call while GetManagedObjects is on its way, and answers with it"""
    rule = "announced-and-in-snapshot"

    def snapshot(self, *arguments):
        self.after(300, lambda: super(AnnouncesBeforeItAnswers, self).snapshot(*arguments))


class AnnouncesTwice(Application):
    """announces a call twice"""
    rule = "announced-twice"

    def announce(self, path):
        super().announce(path)
        super().announce(path)


class AnnouncesAgainLater(Application):
    """announces a call again with another name"""
    rule = "announced-twice"

    def answered(self):
        self.objects[self.call][CALL]["RemoteName"] = plain("Somebody else")
        self.announce(self.call)
        super().answered()


class AnnouncesBeforeItRegisters(Application):
    """announces a call right before it registers"""
    rule = "announced-too-early"
    why = "not-shown"

    def snapshot(self, *arguments):
        # The call is not in the first answer, but it is there.
        arguments[-1].return_value(GLib.Variant("(a{oa{sa{sv}}})", (self.objects if self.is_asked else {},)))
        self.is_asked = True

    def register(self):
        self.is_asked = False
        self.add(self.call)
        super().register()

    def begin(self):
        pass


class TonesBeforeTheCall(Application):
    """announces DTMF1 before Call1"""
    rule = "call-interface-late"

    def announce(self, path):
        for interfaces in ({TONES: {}}, {CALL: self.properties(), AUDIO: {}}):
            self.emit(self.path, MANAGER, "InterfacesAdded", "(oa{sa{sv}})", (path, interfaces))


class EachInterfaceByItself(Application):
    """announces AudioControl1, DTMF1 and Call1 one behind the other"""
    rule = "call-interface-late"

    def announce(self, path):
        for interfaces in ({AUDIO: {}}, {CALL: self.properties(), TONES: {}}):
            self.emit(self.path, MANAGER, "InterfacesAdded", "(oa{sa{sv}})", (path, interfaces))


class Misspelt(Application):
    """writes zelkovar.call.Call1"""
    rule = why = "interface-misspelt"
    right, wrong = CALL, "zelkovar.call.Call1"

    def interfaces(self):
        return {self.wrong if name == self.right else name: value for name, value in super().interfaces().items()}


class MisspeltAtTheStart(Misspelt):
    """writes Zelkovar.Call.Call1"""
    wrong = "Zelkovar.Call.Call1"


class MisspeltWithoutItsNumber(Misspelt):
    """writes zelkovar.Call.Call"""
    wrong = "zelkovar.Call.Call"


class MisspeltTones(Misspelt):
    """writes zelkovar.Call.Dtmf1"""
    right, wrong = TONES, "zelkovar.Call.Dtmf1"
    stays = True


class MisspeltAudio(Misspelt):
    """writes zelkovar.Call.AudioControl"""
    right, wrong = AUDIO, "zelkovar.Call.AudioControl"
    stays = True
