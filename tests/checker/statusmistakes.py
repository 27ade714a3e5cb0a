# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""Mistakes in statuses and in ending calls."""

from application import AUDIO, CALL, MANAGER, TONES, Application, connect, plain

class TellsRightAway(Application):
    """sends a status right behind the announcement"""
    rule = "status-too-early"
    stays = True

    def begin(self):
        # Several: whether one is early enough depends on how busy the machine is.
        paths = [f"{self.path}/c{number}" for number in range(1, 11)]
        for path in paths:
            self.objects[path] = self.interfaces()
            self.export_call(path)
        for path in paths:
            self.announce(path)
            self.tell(7, path)


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
