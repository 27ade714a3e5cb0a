# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""Mistakes in commands, in audio, and with several calls."""

from application import AUDIO, CALL, MANAGER, TONES, Application, plain

class NeverReplies(Application):
    """obeys and never replies"""
    rule = "command-unanswered"

    def reply(self, invocation):
        self.kept = [*getattr(self, "kept", []), invocation]

    def SendDTMF(self, invocation, path, tones):
        # It stays a while, so that the missing reply can be seen.
        self.reply(invocation)
        self.press("Hangup", delay=2500)

    UpdateAudioRouteState = UpdateAudioRoute = lambda self, invocation, *_: invocation.return_value(None)


class NeverRepliesToTones(Application):
    """never replies to SendDTMF"""
    rule = "command-unanswered"

    def SendDTMF(self, invocation, path, tones):
        self.kept = invocation
        self.press("Hangup", delay=300)


class RefusesAccept(Application):
    """refuses Accept"""
    rule = "command-refused"

    def Accept(self, invocation, path):
        invocation.return_dbus_error("org.example.Error.NotToday", "not today")


class RefusesTones(Application):
    """refuses SendDTMF"""
    rule = "command-refused"

    def SendDTMF(self, invocation, path, tones):
        invocation.return_dbus_error("org.example.Error.NotToday", "not today")
        self.press("Hangup")


class RefusesUpdates(Application):
    """offers AudioControl1 and refuses its updates"""
    rule = "command-refused"

    def UpdateAudioRouteState(self, invocation, *_):
        invocation.return_dbus_error("org.freedesktop.DBus.Error.UnknownMethod", "unknown")


class IgnoresAccept(Application):
    """does nothing on Accept"""
    rule = "command-without-effect"

    def Accept(self, invocation, path):
        self.reply(invocation)


class IgnoresReject(Application):
    """does nothing on Reject"""
    rule = "command-without-effect"

    def Reject(self, invocation, path, reason):
        self.reply(invocation)


class IgnoresResume(Application):
    """does nothing on SetHold(false)"""
    rule = "command-without-effect"

    def SetHold(self, invocation, path, hold):
        if hold:
            super().SetHold(invocation, path, hold)
        else:
            self.reply(invocation)


class RepliesLate(Application):
    """replies to Accept after half a second"""
    rule = "command-late"

    def Accept(self, invocation, path):
        self.after(600, lambda: super(RepliesLate, self).Accept(invocation, path))


class IgnoresHold(Application):
    """says that it can be held and does nothing on SetHold(true)"""
    rule = "hold-promised-not-kept"

    def SetHold(self, invocation, path, hold):
        self.reply(invocation)


class RefusesHold(Application):
    """says that it can be held and refuses SetHold(true)"""
    rule = "hold-promised-not-kept"

    def SetHold(self, invocation, path, hold):
        invocation.return_dbus_error("org.freedesktop.DBus.Error.NotSupported", "no")


class RepliesInDisorder(Application):
    """answers ten tones in another order"""
    rule = "tones-out-of-order"

    def resumed(self):
        self.kept = []
        for tone in "1234567890":
            self.press("SendDtmf", plain((tone,), "(s)"))

    def SendDTMF(self, invocation, path, tones):
        self.kept.insert(0, invocation)
        if len(self.kept) == 10:
            for one in self.kept:
                self.reply(one)
            self.press("Hangup")


class GetsStuck(Application):
    """says nothing any more when it is answered"""
    rule = "application-stuck"

    def Accept(self, invocation, path):
        self.kept = invocation

    UpdateAudioRoute = lambda self, invocation, *_: None


class AsksTooEarly(Application):
    """sends RequestMute before the host knows of AudioControl1"""
    rule = "request-too-early"
    status = 2

    def announce(self, path):
        self.emit(self.path, MANAGER, "InterfacesAdded", "(oa{sa{sv}})", (path, {CALL: self.properties(), TONES: {}}))
        self.ask()
        self.emit(self.path, MANAGER, "InterfacesAdded", "(oa{sa{sv}})", (path, {AUDIO: {}}))

    def shown(self):
        self.tell(5)
        self.answered()
        self.shown = lambda: None

    def ask(self):
        self.emit(self.call, AUDIO, "RequestMute", "(b)", (False,))


class RoutesTooEarly(AsksTooEarly):
    """sends RequestAudioRoute before the host knows of AudioControl1"""

    def ask(self):
        self.emit(self.call, AUDIO, "RequestAudioRoute", "(ss)", ("microphone", "earpiece"))


class AsksWhileItRings(Application):
    """sends RequestMute while the call rings"""
    rule = "request-in-wrong-status"

    def shown(self):
        self.after(100, lambda: self.emit(self.call, AUDIO, "RequestMute", "(b)", (False,)))


class AsksWhileHeld(Application):
    """sends RequestAudioRoute while the call is held"""
    rule = "request-in-wrong-status"

    def tell(self, status, path=None):
        super().tell(status, path)
        if status == 7:
            self.emit(self.call, AUDIO, "RequestAudioRoute", "(ss)", ("microphone", "earpiece"))


class Asks(Application):
    rule = "request-signature"
    asked, kind, values = "RequestMute", "(u)", (0,)

    def answered(self):
        self.emit(self.call, AUDIO, self.asked, self.kind, self.values)
        super().answered()


def asking(name, rule, text, signal, kind, values):
    return type(name, (Asks,), {"__doc__": text, "rule": rule, "asked": signal, "kind": kind, "values": values})


MADE = [
    asking("AsksWithANumber", "request-signature", "sends RequestMute with u", "RequestMute", "(u)", (0,)),
    asking("AsksWithAWord", "request-signature", "sends RequestMute with a word", "RequestMute", "(s)", ("off",)),
    asking("RoutesOneDevice", "request-signature", "sends RequestAudioRoute with one device", "RequestAudioRoute",
           "(s)", ("earpiece",)),
    asking("RoutesToNowhere", "route-unknown-device", "asks for a device that is not there", "RequestAudioRoute",
           "(ss)", ("hw:1", "hw:1")),
    asking("RoutesInDisorder", "route-swapped", "asks for output and input", "RequestAudioRoute", "(ss)",
           ("earpiece", "microphone")),
]


class TwoAtOnce(Application):
    """has two active calls"""
    rule = "two-active-calls"

    def answered(self):
        self.status = 5
        self.uri = "sip:second@example.org"
        self.add(self.path + "/c2")


class UsesAPathAgain(Application):
    """gives a new call the path of the last one"""
    rule = "path-reused-at-once"

    def end(self):
        super().end()
        self.end = super().end
        self.stays = True
        self.add(self.call)
