# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""Mistakes in registering, and in answering GetManagedObjects. The docstring of each says what is done wrong."""

from application import CALL, MANAGER, Application, connect, described, plain
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
