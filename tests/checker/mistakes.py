# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""Mistakes in registering and announcing. The docstring of each says what is done wrong."""

from application import AUDIO, CALL, MANAGER, TONES, Application, connect, described, plain
from gi.repository import GLib


class RegistersItsParent(Application):
    """registers the path above its object manager"""
    rule = why = "registered-wrong-path"
    registered = "/app"


class RegistersItsCall(Application):
    """registers the path of its call"""
    rule = why = "registered-wrong-path"
    registered = "/app/calls/c1"


class RegistersTheRoot(Application):
    """registers /"""
    rule = why = "registered-wrong-path"
    registered = "/"


class RegistersWithASlip(Application):
    """registers a path with a letter missing"""
    rule = why = "registered-wrong-path"
    registered = "/app/call"


class RegistersOnAnotherConnection(Application):
    """registers on another connection than the one that has the objects"""
    rule = why = "registered-other-connection"
    path = registered = "/other/connection"

    def register(self):
        self.second = connect()
        self.call_register(self.second, self.path)


class RegistersAndLeaves(Application):
    """closes the connection that has registered"""
    rule = "registered-and-left"

    def replied(self, bus, result):
        bus.call_finish(result)
        self.begin()
        bus.close(None, None)

    def register(self):
        self.second = connect()
        self.call_register(self.second, self.path)


class NeverRegisters(Application):
    """announces its call and has not registered"""
    rule = "not-registered"

    def register(self):
        self.after(50, self.begin)


class ExportsTooLate(Application):
    """exports its object manager when it is registered"""
    rule = "registered-too-early"

    def export(self):
        pass

    def begin(self):
        super().export()
        self.after(200, super().begin)


class WrongInterface(Application):
    """calls RegisterCallManager with another interface"""
    rule = "register-call-wrong"

    def register(self):
        self.call_register(self.bus, self.path, interface="zelkovar.Call.Service")


class WrongPath(Application):
    """calls RegisterCallManager at another path"""
    rule = "register-call-wrong"

    def register(self):
        self.call_register(self.bus, self.path, at="/zelkovar/call")


class WrongArgument(Application):
    """calls RegisterCallManager with a string"""
    rule = "register-call-wrong"

    def register(self):
        self.call_register(self.bus, self.path, kind="(s)")


class TwoArguments(Application):
    """calls RegisterCallManager with two paths"""
    rule = "register-call-wrong"

    def register(self):
        self.call_register(self.bus, self.path, kind="(oo)")


class WrongMethod(Application):
    """calls RegisterManager"""
    rule = "register-call-wrong"

    def register(self):
        self.call_register(self.bus, self.path, method="RegisterManager")


class WrongHost(Application):
    """calls RegisterCallManager of a name that nobody owns"""
    rule = "register-call-wrong"

    def register(self):
        self.call_register(self.bus, self.path, host="org.tarnwickle.voicecal")


class RegistersAgain(Application):
    """registers twice"""
    rule = "registered-again"

    def begin(self):
        super().begin()
        self.begin = lambda: None
        self.register()


class Snapshot(Application):
    in_snapshot = True


class AnswersWithAnError(Snapshot):
    """answers GetManagedObjects with an error"""
    rule = why = "snapshot-error"

    def snapshot(self, *arguments):
        arguments[-1].return_dbus_error("org.example.Error.Broken", "broken")


class DeniesAccess(Snapshot):
    """answers GetManagedObjects with AccessDenied"""
    rule = why = "snapshot-error"

    def snapshot(self, *arguments):
        arguments[-1].return_dbus_error("org.freedesktop.DBus.Error.AccessDenied", "no")


class NeverAnswers(Snapshot):
    """never answers GetManagedObjects"""
    rule = why = "snapshot-unanswered"

    def snapshot(self, *arguments):
        self.kept = arguments[-1]


class AnswersLate(Snapshot):
    """answers GetManagedObjects late"""
    rule = "snapshot-late"

    def snapshot(self, *arguments):
        self.after(900, lambda: super(AnswersLate, self).snapshot(*arguments))


class OtherAnswer(Snapshot):
    """answers GetManagedObjects with paths only"""
    rule = why = "snapshot-type"
    kind, answer = "ao", ([Snapshot.path + "/c1"],)

    def __init__(self, person):
        super().__init__(person)
        self.manager_xml = described(MANAGER).replace("a{oa{sa{sv}}}", self.kind)

    def snapshot(self, *arguments):
        arguments[-1].return_value(GLib.Variant(f"({self.kind})", self.answer))


class AnswersWithoutInterfaces(OtherAnswer):
    """answers GetManagedObjects with the interfaces of one object"""
    kind, answer = "a{sa{sv}}", ({CALL: {"Status": plain(3, "u")}},)


class AnswersWithPlainValues(OtherAnswer):
    """answers GetManagedObjects with values that are no variants"""
    kind, answer = "a{oa{sa{ss}}}", ({Snapshot.path + "/c1": {CALL: {"Uri": "sip:a@example.org"}}},)


class AnswersWithText(OtherAnswer):
    """answers GetManagedObjects with a text"""
    kind, answer = "s", ("nothing",)


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
