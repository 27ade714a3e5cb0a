# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""What can go wrong when the host is restarted, or is not there at first."""

from application import AUDIO, CALL, HOST, Application
from gi.repository import Gio, GLib


class Lasts(Application):
    watches = True

    def start(self):
        self.is_muted = None
        self.states = 0
        super().start()
        if self.watches:
            Gio.bus_watch_name_on_connection(self.bus, HOST, Gio.BusNameWatcherFlags.NONE, self.appeared, None)

    def register(self):
        if not self.watches:
            super().register()

    def appeared(self, *_):
        self.is_shown = False
        super().register()

    def begin(self):
        if self.call not in self.objects:
            super().begin()

    def shown(self):
        if self.status == 3:
            super().shown()

    def tell(self, status, path=None):
        self.status = status
        self.objects[self.call] = self.interfaces()
        super().tell(status, path)

    def answered(self):
        pass

    def Reject(self, invocation, _path, _reason):
        self.reply(invocation)
        self.end()


class RegistersOnce(Lasts):
    """registers once and not with the new host"""
    rule = "not-registered-with-new-host"
    watches = is_registered = False

    def register(self):
        Gio.bus_watch_name_on_connection(self.bus, HOST, Gio.BusNameWatcherFlags.NONE, self.first, None)

    def first(self, *_):
        if not self.is_registered:
            self.call_register(self.bus, self.registered)
        self.is_registered = True


class OpensItsMicrophone(Lasts):
    """is muted, and not any more with the new host"""
    rule = "opened-microphone-at-restart"

    def answered(self):
        self.after(200, lambda: self.ask(True))

    def ask(self, muted):
        self.emit(self.call, AUDIO, "RequestMute", "(b)", (muted,))


class StaysMuted(OpensItsMicrophone):
    """is muted, and asks the new host to be so again"""
    rule = None
    is_wanted = False

    def answered(self):
        self.is_wanted = True
        self.ask(True)

    def UpdateAudioRouteState(self, invocation, _path, _devices, muted, *_):
        self.reply(invocation)
        if self.is_wanted and not muted:
            self.ask(True)


class Registers(Lasts):
    """registers with every host, and has its call with each"""


class TriesTwice(Lasts):
    """tries to register while there is no host, and again when there is"""

    def register(self):
        Application.register(self)


class GivesUp(Lasts):
    """tries to register while there is no host, and never again"""
    rule = "no-host"
    watches = False

    def register(self):
        Application.register(self)

    def begin(self):
        pass


class Echoes(Lasts):
    """sends the host's mute back, turned round"""
    rule = "mute-echo"
    turns = 0

    def answered(self):
        self.ask(True)

    def ask(self, muted):
        self.emit(self.call, AUDIO, "RequestMute", "(b)", (muted,))

    def UpdateAudioRoute(self, invocation, _path, muted, *_):
        self.reply(invocation)
        self.turns += 1
        if 0 < self.turns < 7 and self.status == 5:
            self.ask(not muted)


class HoldsNothing(Lasts):
    """says that it can be held and is not, whoever asks"""
    rule = "hold-promised-not-kept"

    def shown(self):
        pass

    def SetHold(self, invocation, path, hold):
        self.reply(invocation)

    def SendDTMF(self, invocation, path, tones):
        self.reply(invocation)


class Pours(Lasts):
    """sends twenty thousand signals as fast as it can"""
    rule = "flood"
    count = 20000

    def answered(self):
        arguments = [GLib.Variant("(u)", (status,)) for status in (7, 5)]
        for number in range(self.count):
            self.bus.emit_signal(None, self.call, CALL, "StatusChanged", arguments[number % 2])
