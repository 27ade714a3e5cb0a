# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""Mistakes in statuses, endings, commands and audio."""

from application import AUDIO, CALL, MANAGER, TONES, Application, connect, plain


class AnswersRightAway(Application):
    """sends a status right behind the announcement"""
    rule = "status-too-early"
    stays = True

    def announce(self, path):
        super().announce(path)
        self.tell(5)


class Tells(Application):
    rule = "status-signature"
    kind, values = "(i)", lambda self, status: (status,)

    def tell(self, status, path=None):
        self.emit(path or self.call, CALL, "StatusChanged", self.kind, self.values(status) if self.kind else None)


class TellsSigned(Tells):
    """sends StatusChanged with i"""


class TellsAWord(Tells):
    """sends StatusChanged with a word"""
    kind, values = "(s)", lambda self, status: (str(status),)


class TellsNothing(Tells):
    """sends StatusChanged without an argument"""
    kind = None


class TellsTwoNumbers(Tells):
    """sends StatusChanged with two numbers"""
    kind, values = "(uu)", lambda self, status: (status, 3)


class TellsFromTheManager(Application):
    """sends StatusChanged from the object manager's path"""
    rule = "status-elsewhere"

    def tell(self, status, path=None):
        super().tell(status, self.path)


class TellsOnAnotherConnection(Application):
    """sends StatusChanged on another connection"""
    rule = "status-elsewhere"
    path = registered = "/told/elsewhere"

    def start(self):
        self.second = connect()
        super().start()

    def tell(self, status, path=None):
        self.emit(self.call, CALL, "StatusChanged", "(u)", (status,), self.second)


class TellsWithAnotherInterface(Application):
    """sends StatusChanged with another interface"""
    rule = "status-elsewhere"

    def tell(self, status, path=None):
        self.emit(self.call, "org.example.Call1", "StatusChanged", "(u)", (status,))


class TellsByProperty(Application):
    """changes Status by PropertiesChanged only"""
    rule = "status-only-as-property"

    def tell(self, status, path=None):
        self.emit(self.call, "org.freedesktop.DBus.Properties", "PropertiesChanged", "(sa{sv}as)",
                  (CALL, {"Status": plain(status, "u")}, []))


class TellsEight(Application):
    """sends the status 8"""
    rule = "status-unknown"

    def answered(self):
        self.tell(8)
        self.tell(5)
        super().answered()


class TellsSix(Application):
    """sends 6 for active"""
    rule = "status-odd"

    def tell(self, status, path=None):
        super().tell(6 if status == 5 else status, path)


class EndsWithNull(Application):
    """sends 0 at the end"""
    rule = "status-odd"

    def end(self):
        self.tell(0)
        self.remove()


class EndsWithFour(Application):
    """sends 4 at the end"""
    rule = "status-odd"

    def end(self):
        self.tell(4)
        self.remove()


class RingsAgain(Application):
    """rings again when it has been answered"""
    rule = "status-impossible"

    def answered(self):
        self.tell(3)
        self.tell(5)
        super().answered()


class LivesAfterItsEnd(Application):
    """is active again behind its end"""
    rule = "status-impossible"

    def end(self):
        self.tell(1)
        self.tell(5)
        self.tell(1)
        self.remove()


class RepeatsItself(Application):
    """sends a status twice"""
    rule = "status-repeated"

    def answered(self):
        self.tell(5)
        super().answered()


class NeverRemoved(Application):
    """does not remove its call"""
    rule = "ended-not-removed"

    def remove(self):
        pass


class EndsWithoutStatus(Application):
    """removes its call without a final status"""
    rule = "removed-without-status"

    def end(self):
        self.remove()


class Removes(Application):
    rule = "removed-without-call-interface"
    why = None
    kind, names = "(oas)", [TONES, AUDIO]

    def remove(self):
        self.objects.pop(self.call)
        self.emit(self.path, MANAGER, "InterfacesRemoved", self.kind,
                  (self.call, self.names) if self.names is not None else (self.call,))


class RemovesTheOthers(Removes):
    """removes DTMF1 and AudioControl1 only"""
    why = "still-shown"


class RemovesNothing(Removes):
    """removes no interface"""
    names = []
    why = "still-shown"


class RemovesWithASlip(Removes):
    """removes zelkovar.Call.call1"""
    names = ["zelkovar.Call.call1"]
    why = "still-shown"


class RemovesByPath(Removes):
    """sends InterfacesRemoved with the path only"""
    rule, why = "removal-type", "still-shown"
    kind, names = "(o)", None


class RemovesByString(Removes):
    """sends InterfacesRemoved with a string for the path"""
    rule, why = "removal-type", "still-shown"
    kind, names = "(sas)", [CALL, TONES, AUDIO]


class RemovesFromTheCall(Application):
    """sends InterfacesRemoved from the call's path"""
    rule, why = "removed-elsewhere", "still-shown"

    def remove(self):
        self.objects.pop(self.call)
        self.emit(self.call, MANAGER, "InterfacesRemoved", "(oas)", (self.call, [CALL, TONES, AUDIO]))


class RemovesOnAnotherConnection(Application):
    """sends InterfacesRemoved on another connection"""
    rule, why = "removed-elsewhere", "still-shown"
    path = registered = "/removed/elsewhere"

    def start(self):
        # It has to do with calls as well: otherwise it would be anybody's.
        self.second = connect()
        super().start()

    def remove(self):
        self.objects.pop(self.call)
        self.emit(self.path, CALL, "Ended", bus=self.second)
        self.emit(self.path, MANAGER, "InterfacesRemoved", "(oas)", (self.call, [CALL, TONES, AUDIO]), self.second)


class SpeaksAfterItsEnd(Application):
    """sends the final status behind the removal"""
    rule = "signal-behind-removal"

    def end(self):
        super().end()
        self.tell(1)


class Leaves(Application):
    """leaves the bus with a call"""
    rule = "left-with-calls"

    def answered(self):
        self.after(100, lambda: self.bus.close(None, None))


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
