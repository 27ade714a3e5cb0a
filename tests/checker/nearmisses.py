# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""Honest ways that look like mistakes."""

from application import AUDIO, CALL, MANAGER, TONES, Application, plain
from gi.repository import GLib


class Honest(Application):
    """does all as it has to be done"""


class HasACallAtTheStart(Application):
    """has a call when it registers, and does not announce it"""
    in_snapshot = True


class AnswersABitLate(Application):
    """answers GetManagedObjects and commands after a tenth of a second"""

    def snapshot(self, *arguments):
        objects = GLib.Variant("(a{oa{sa{sv}}})", (self.objects,))
        self.after(100, lambda: arguments[-1].return_value(objects))

    def reply(self, invocation):
        self.after(100, lambda: super(AnswersABitLate, self).reply(invocation))


class CorrectsItsStatus(Application):
    """sends a status too early, and again when the host shows another one"""
    done = False

    def announce(self, path):
        super().announce(path)
        self.tell(5)

    def shown(self):
        self.tell(5)
        self.answered()


class TellsAsProperty(Application):
    """sends PropertiesChanged and StatusChanged"""

    def tell(self, status, path=None):
        self.emit(self.call, "org.freedesktop.DBus.Properties", "PropertiesChanged", "(sa{sv}as)",
                  (CALL, {"Status": plain(status, "u")}, []))
        super().tell(status, path)


class ChangesWhatIsNotOurs(Application):
    """tells of a property of another interface"""

    def answered(self):
        self.emit(self.call, "org.freedesktop.DBus.Properties", "PropertiesChanged", "(sa{sv}as)",
                  ("org.example.Statistics1", {"Lost": plain(3, "u")}, []))
        super().answered()


class RemovesOneByOne(Application):
    """removes DTMF1 first and Call1 a moment later"""

    def remove(self):
        self.objects.pop(self.call, None)
        for names in ([TONES, AUDIO], [CALL]):
            self.emit(self.path, MANAGER, "InterfacesRemoved", "(oas)", (self.call, names))


class AddsTonesLater(Application):
    """announces Call1 first and DTMF1 behind it"""

    def announce(self, path):
        for interfaces in ({CALL: self.properties(), AUDIO: {}}, {TONES: {}}):
            self.emit(self.path, MANAGER, "InterfacesAdded", "(oa{sa{sv}})", (path, interfaces))


class HasOtherObjects(Application):
    """announces objects that are no calls"""

    def begin(self):
        for interface in ("org.example.Account1", "org.example.Call1"):
            self.emit(self.path, MANAGER, "InterfacesAdded", "(oa{sa{sv}})",
                      (self.path + "/" + interface.split(".")[-1], {interface: {"Name": plain("Ann")}}))
        super().begin()


class HasOtherProperties(Application):
    """has properties and interfaces of its own beside a call's"""

    def interfaces(self):
        found = super().interfaces()
        found[CALL]["Codec"] = plain("opus")
        found["org.example.Statistics1"] = {"Lost": plain(3, "u")}
        return found


class CannotBeHeld(Application):
    """is not Holdable, and refuses SetHold"""

    def properties(self):
        return {**super().properties(), "Holdable": plain(False, "b")}

    def SetHold(self, invocation, path, hold):
        invocation.return_dbus_error("org.example.Error.Gone", "no such call")


class HasNeitherTonesNorAudio(Application):
    """offers Call1 only"""

    def interfaces(self):
        return {CALL: self.properties()}

    def resumed(self):
        self.press("Hangup")


class GoesOut(Application):
    """is an outgoing call that the far end answers"""
    status = 2

    def properties(self):
        return {**super().properties(), "Incoming": plain(False, "b")}

    def shown(self):
        self.tell(5)
        self.answered()


class ManyTones(Application):
    """answers ten tones in their order"""
    heard = 0

    def resumed(self):
        for tone in "1234567890":
            self.press("SendDtmf", plain((tone,), "(s)"))

    def SendDTMF(self, invocation, path, tones):
        self.reply(invocation)
        self.heard += 1
        if self.heard == 10:
            self.press("Hangup")


class AsksAtTheRightTime(Application):
    """asks for a route when it is active and the host has told its state"""

    def answered(self):
        self.emit(self.call, AUDIO, "RequestAudioRoute", "(ss)", ("microphone", "earpiece"))
        super().answered()


class HoldsTheFirst(Application):
    """holds its first call when the second is answered"""

    def answered(self):
        self.tell(7)
        self.objects[self.path + "/c2"] = self.interfaces()
        self.objects[self.path + "/c2"][CALL].update(Status=plain(5, "u"), Uri=plain("sip:two@example.org"))
        self.export_call(self.path + "/c2")
        self.announce(self.path + "/c2")
        self.after(2500, self.over)

    def over(self):
        del self.objects[self.path + "/c2"]
        self.tell(1, self.path + "/c2")
        self.emit(self.path, MANAGER, "InterfacesRemoved", "(oas)", (self.path + "/c2", [CALL, TONES, AUDIO]))
        self.end()


class UsesAPathLater(Application):
    """gives a path to another call two seconds later"""
    rings = 0

    def end(self):
        super().end()
        self.rings += 1
        if self.rings == 1:
            self.stays = True
            self.after(2000, lambda: self.add(self.call))


class AnswersSlowly(Application):
    """takes a second and a half to answer the call"""

    def Accept(self, invocation, path):
        self.reply(invocation)
        self.after(1500, lambda: (self.tell(5), self.answered()))


class GetsTheLastCommand(Application):
    """refuses a command for a call that it has just removed"""

    def SendDTMF(self, invocation, path, tones):
        self.end()
        invocation.return_dbus_error("org.freedesktop.DBus.Error.UnknownObject", "gone")


class IsRejected(Application):
    """is rejected while it rings"""

    def shown(self):
        self.press("Hangup")


class IsCancelled(Application):
    """is cancelled by the far end"""

    def shown(self):
        self.after(100, self.end)


class RegistersBlindly(Application):
    """has nothing to show, and stays registered"""

    def begin(self):
        pass


class TwoManagers(Application):
    """registers two paths and announces from both"""

    def start(self):
        super().start()
        self.second_path = "/second/calls"
        node_path, self.path = self.path, self.second_path
        self.export()
        self.path = node_path
        self.call_register(self.bus, self.second_path)

    def snapshot(self, *arguments):
        arguments[-1].return_value(GLib.Variant("(a{oa{sa{sv}}})", ({},)))

    def replied(self, bus, result):
        bus.call_finish(result)
        self.replies = getattr(self, "replies", 0) + 1
        if self.replies == 2:
            self.begin()
