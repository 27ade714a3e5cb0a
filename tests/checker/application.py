# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""An honest application on GIO, made so that each thing it does can be done wrong."""

import json
import os
import pathlib

from gi.repository import Gio, GLib

HOST = "org.tarnwickle.voicecall"
CALL = "zelkovar.Call.Call1"
TONES = "zelkovar.Call.DTMF1"
AUDIO = "zelkovar.Call.AudioControl1"
MANAGER = "org.freedesktop.DBus.ObjectManager"
DBUS = pathlib.Path(os.environ["SOURCE"]) / "dbus"


def connect():
    flags = Gio.DBusConnectionFlags
    return Gio.DBusConnection.new_for_address_sync(
        os.environ["DBUS_SESSION_BUS_ADDRESS"],
        flags.AUTHENTICATION_CLIENT | flags.MESSAGE_BUS_CONNECTION, None, None)


def described(name):
    return (DBUS / f"{name}.xml").read_text(encoding="utf-8")


def plain(text, kind="s"):
    return GLib.Variant(kind, text)


CALL_INTERFACES = [Gio.DBusNodeInfo.new_for_xml(described(name)).interfaces[0] for name in (CALL, TONES, AUDIO)]


class Person:
    """Who presses the buttons at the host, for all applications: they write into a pipe what is to be pressed."""

    def __init__(self):
        self.reading, self.writing = os.pipe()

    def serve(self):
        """Presses what is asked for, as long as anybody can ask."""
        self.bus = connect()
        self.calls = {}
        self.bus.signal_subscribe(HOST, MANAGER, "InterfacesAdded", None, None, 0, self.appeared)
        GLib.io_add_watch(self.reading, GLib.PRIORITY_DEFAULT, GLib.IOCondition.IN, self.asked)

    def press(self, uri, method, arguments=None):
        text = arguments.print_(True) if arguments else ""
        os.write(self.writing, (json.dumps([uri, method, text]) + "\n").encode())

    def appeared(self, _bus, _sender, _path, _interface, _signal, arguments):
        path, interfaces = arguments.unpack()
        self.calls[interfaces.get(HOST + ".Call1", {}).get("Uri")] = path

    def asked(self, *_):
        # Each line is written at once, and short enough never to be torn.
        for line in os.read(self.reading, 4096).decode().splitlines():
            uri, method, text = json.loads(line)
            if uri in self.calls:
                self.bus.call(HOST, self.calls[uri], HOST + ".Call1", method,
                              GLib.Variant.parse(None, text, None, None) if text else None, None,
                              Gio.DBusCallFlags.NONE, -1, None, None)
        return True


class Application:
    """One application with one call, on a connection of its own: it rings, is answered, held, resumed, sent tones
    to, and hung up. A mistake is a class that does one of these steps in another way."""

    rule = None         # which the checker has to name; None when there is nothing to be found
    why = None          # which it has to name when it has not watched
    stays = False       # the call only rings, and is not answered
    path = "/app/calls"
    registered = path   # the path that is registered
    manager_xml = None  # of the object manager's interface, when it is another
    in_snapshot = False  # the call exists when the application registers
    status = 3
    delay = 120         # ms between two things that the person at the host does

    def __init__(self, person):
        self.person = person
        self.name = type(self).__name__
        self.uri = f"sip:{self.name}@example.org"
        self.bus = connect()
        self.call = self.path + "/c1"
        self.objects = {}
        self.exported = {}
        self.is_shown = False

    # Starting

    def start(self):
        self.prepare()
        self.export()
        self.hear_host()
        self.register()

    def prepare(self):
        if self.in_snapshot:
            self.objects[self.call] = self.interfaces()

    def export(self):
        node = Gio.DBusNodeInfo.new_for_xml(self.manager_xml or described(MANAGER))
        self.exported[self.path] = self.bus.register_object(
            self.path, node.interfaces[0], self.snapshot, None, None)
        for path in self.objects:
            self.export_call(path)

    def hear_host(self):
        self.bus.signal_subscribe(HOST, "zelkovar.Call.ServiceManager1", "InterfacesAdded", "/zelkovar/call/service",
                                  self.bus.get_unique_name(), 0, self.relayed)

    def register(self):
        self.call_register(self.bus, self.registered)

    def call_register(self, bus, path, interface="zelkovar.Call.Service1", at="/zelkovar/call/service",
                      method="RegisterCallManager", kind="(o)", host=HOST):
        arguments = GLib.Variant(kind, (path,) if kind in ("(o)", "(s)") else (path, path))
        bus.call(host, at, interface, method, arguments, None, Gio.DBusCallFlags.NO_AUTO_START, -1, None, self.replied)

    def replied(self, bus, result):
        try:
            bus.call_finish(result)
        except GLib.Error:
            pass
        self.begin()

    def snapshot(self, _bus, _sender, _path, _interface, _method, _arguments, invocation):
        invocation.return_value(GLib.Variant("(a{oa{sa{sv}}})", (self.objects,)))

    # The call

    def properties(self):
        return {"Status": plain(self.status, "u"), "Incoming": plain(True, "b"), "Holdable": plain(True, "b"),
                "RemoteName": plain(self.name), "Uri": plain(self.uri)}

    def interfaces(self):
        return {CALL: self.properties(), TONES: {}, AUDIO: {}}

    def begin(self):
        if not self.in_snapshot:
            self.add(self.call)

    def add(self, path):
        self.objects[path] = self.interfaces()
        self.export_call(path)
        self.announce(path)

    def export_call(self, path):
        if path not in self.exported:
            self.exported[path] = [self.bus.register_object(path, interface, self.commanded, None, None)
                                   for interface in CALL_INTERFACES]

    def announce(self, path):
        self.emit(self.path, MANAGER, "InterfacesAdded", "(oa{sa{sv}})", (path, self.objects[path]))

    def emit(self, path, interface, name, kind=None, values=None, bus=None):
        (bus or self.bus).emit_signal(None, path, interface, name, GLib.Variant(kind, values) if kind else None)

    def tell(self, status, path=None):
        self.emit(path or self.call, CALL, "StatusChanged", "(u)", (status,))

    def end(self):
        self.tell(1)
        self.remove()

    def remove(self):
        self.objects.pop(self.call, None)
        self.emit(self.path, MANAGER, "InterfacesRemoved", "(oas)", (self.call, [CALL, TONES, AUDIO]))

    # What the host says

    def relayed(self, _bus, _sender, _path, _interface, _signal, arguments):
        # Once, even if a mistake makes the host say it twice.
        if arguments.unpack()[1] == self.call and not self.is_shown:
            self.is_shown = True
            self.shown()

    def shown(self):
        if not self.stays:
            self.press("Answer")

    def press(self, method, arguments=None, delay=None):
        self.after(delay or self.delay, lambda: self.person.press(self.uri, method, arguments))

    @staticmethod
    def after(delay, action):
        GLib.timeout_add(delay, lambda: bool(action()) and False)

    def commanded(self, _bus, _sender, path, _interface, method, arguments, invocation):
        getattr(self, method)(invocation, path, *arguments.unpack())

    def reply(self, invocation):
        invocation.return_value(None)

    def Accept(self, invocation, _path):
        self.reply(invocation)
        self.tell(5)
        self.answered()

    def answered(self):
        self.press("Hold", plain((True,), "(b)"))

    def SetHold(self, invocation, _path, hold):
        self.reply(invocation)
        self.tell(7 if hold else 5)
        if hold:
            self.press("Hold", plain((False,), "(b)"))
        else:
            self.resumed()

    def resumed(self):
        self.press("SendDtmf", plain(("12",), "(s)"))

    def SendDTMF(self, invocation, _path, _tones):
        self.reply(invocation)
        self.press("Hangup")

    def Reject(self, invocation, _path, _reason):
        self.reply(invocation)
        self.end()

    def UpdateAudioRouteState(self, invocation, _path, devices, muted, input_device, output_device):
        self.reply(invocation)

    def UpdateAudioRoute(self, invocation, _path, muted, input_device, output_device):
        self.reply(invocation)
