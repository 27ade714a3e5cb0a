#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""One incoming call that the host can answer, reject, hold, send tones to and route the audio of."""

import argparse
import json
import os
import signal
import sys

import gi

gi.require_version("Gio", "2.0")
from dasbus.client.handler import GLibClient
from dasbus.client.observer import GLibMonitoring
from dasbus.connection import SessionMessageBus
from dasbus.loop import EventLoop
from dasbus.server.interface import dbus_class, dbus_interface, dbus_signal, get_xml
from dasbus.server.property import PropertiesInterface
from dasbus.typing import Bool, Dict, Int32, List, ObjPath, Str, Structure, Tuple, UInt32, get_variant
from gi.repository import Gio, GLib

PROGRAM = "ringlet-example-dasbus"
MANAGER_PATH = "/ringlet/example"
CALL_PATH = MANAGER_PATH + "/call1"
SERVICE_PATH = "/zelkovar/call/service"
REPLY_TIMEOUT = 25000  # milliseconds

DISCONNECTED, INCOMING, ACTIVE, HELD = 1, 3, 5, 7
STATUS_NAMES = ["disconnected", "disconnected", "dialing", "incoming", "disconnected", "active", "active", "held"]


def report(*words):
    print(*words, flush=True)


def complain(text):
    print(f"{PROGRAM}: {text}", file=sys.stderr, flush=True)


def status_text(status):
    return f"{status} {STATUS_NAMES[status] if status < len(STATUS_NAMES) else 'unknown'}"


def quoted(text):
    """Text that came over the bus stays on its line, whatever is in it."""
    return json.dumps(text, ensure_ascii=False)


def route_text(muted, input_id, output_id):
    return f"muted={'yes' if muted else 'no'} input={quoted(input_id)} output={quoted(output_id)}"


# --- What is on the bus: the names and the types of the members are those of the interfaces.


@dbus_interface("org.freedesktop.DBus.ObjectManager")
class ObjectManager:
    """dasbus has none of its own. Knows the objects by path, each with its interfaces and properties."""

    def __init__(self):
        self._objects = {}

    def GetManagedObjects(self) -> Dict[ObjPath, Dict[Str, Structure]]:
        return {path: describe(published) for path, published in self._objects.items()}

    @dbus_signal
    def InterfacesAdded(self, path: ObjPath, interfaces: Dict[Str, Structure]):
        pass

    @dbus_signal
    def InterfacesRemoved(self, path: ObjPath, interfaces: List[Str]):
        pass

    def add(self, path, published):
        """Announces the object with all its interfaces at once."""
        self._objects[path] = published
        self.InterfacesAdded(path, describe(published))

    def remove(self, path):
        self.InterfacesRemoved(path, list(describe(self._objects.pop(path))))


def describe(published):
    """Interfaces of a published object, and the properties of each."""
    return {
        interface.name: {
            declared.name: get_variant(declared.signature, getattr(published, declared.name))
            for declared in interface.properties
        }
        for interface in Gio.DBusNodeInfo.new_for_xml(get_xml(published)).interfaces
    }


@dbus_interface("zelkovar.Call.DTMF1")
class Tones:
    def SendDTMF(self, tones: Str):
        report("call1 command tones", quoted(tones))


@dbus_interface("zelkovar.Call.AudioControl1")
class AudioControl:
    def UpdateAudioRoute(self, muted: Bool, input_id: Str, output_id: Str):
        report("call1 audio-route", route_text(muted, input_id, output_id))

    def UpdateAudioRouteState(self, devices: List[Tuple[Str, Int32, Bool, Bool, Str, Structure]], muted: Bool,
                              input_id: Str, output_id: Str):
        ids = [quoted(device[0]) for device in devices]
        report("call1 audio-state", route_text(muted, input_id, output_id), f"devices={len(ids)}", *ids)

    @dbus_signal
    def RequestAudioRoute(self, input_id: Str, output_id: Str):
        pass

    @dbus_signal
    def RequestMute(self, mute: Bool):
        pass


@dbus_interface("zelkovar.Call.Call1")
class CallControl(PropertiesInterface):
    """The call itself. `on_end` is called when it has ended, whoever ended it."""

    def __init__(self, name, address, on_end):
        super().__init__()
        self._name = name
        self._address = address
        self._on_end = on_end
        self._status = INCOMING

    @property
    def Holdable(self) -> Bool:
        return True

    @property
    def Incoming(self) -> Bool:
        return True

    @property
    def LocalHandle(self) -> Str:
        return ""

    @property
    def LocalName(self) -> Str:
        return "dasbus example"

    @property
    def RemoteHandle(self) -> Str:
        return self._address

    @property
    def RemoteName(self) -> Str:
        return self._name

    @property
    def Status(self) -> UInt32:
        return self._status

    @property
    def Uri(self) -> Str:
        return self._address

    @dbus_signal
    def StatusChanged(self, status: UInt32):
        pass

    def Accept(self):
        report("call1 command accept")
        if self._status == INCOMING:
            self.set_status(ACTIVE)

    def Reject(self, reason: UInt32):
        report("call1 command reject", reason)
        self.end()

    def SetHold(self, hold: Bool):
        report("call1 command hold", "on" if hold else "off")
        if self._status == (ACTIVE if hold else HELD):
            self.set_status(HELD if hold else ACTIVE)

    def set_status(self, status):
        if status == self._status:
            return
        self._status = status
        report("call1 status", status_text(status))
        # The host listens to this one; whoever binds to properties, to the other.
        self.StatusChanged(status)
        self.report_changed_property("Status")
        self.flush_changes()

    def end(self):
        """The final status goes out before the interfaces do: behind them nobody listens any more."""
        self.set_status(DISCONNECTED)
        self._on_end()

    def on_shown(self, shown):
        """The host listens to the status only since it shows the call, and never asks for it: if it has
        changed meanwhile, the host must be told again."""
        report("call1 shown", status_text(shown))
        if shown != self._status:
            report("call1 status", status_text(self._status), "again")
            self.StatusChanged(self._status)


@dbus_class
class Call(CallControl, Tones, AudioControl):
    """A call with everything that a host can use."""


# --- The host


class HostLink:
    """Follows the host's name, and registers whenever somebody takes it. Nothing here waits: dasbus's
    proxies would, for the introspection of what they stand for."""

    def __init__(self, connection, name, on_registered, on_shown):
        self._connection = connection
        self._name = name
        self._on_registered = on_registered
        self._on_shown = on_shown
        self._unsubscribe = None
        GLibMonitoring.watch_name(
            connection, name, name_appeared=self._host_appeared, name_vanished=self._host_vanished)

    def _host_appeared(self, owner):
        report("host appeared", owner)
        # By the name of the connection that is the host now, so that no other is listened to.
        self._unsubscribe = GLibClient.subscribe_signal(
            self._connection, owner, SERVICE_PATH, "zelkovar.Call.ServiceManager1", "InterfacesAdded", self._added)
        GLibClient.async_call(
            self._connection, owner, SERVICE_PATH, "zelkovar.Call.Service1", "RegisterCallManager",
            get_variant(Tuple[ObjPath], (MANAGER_PATH,)), None, self._answered, timeout=REPLY_TIMEOUT)

    def _host_vanished(self):
        if self._unsubscribe:
            report("host gone")
            self._unsubscribe()
            self._unsubscribe = None
        report("waiting for host", self._name)

    def _added(self, arguments):
        if arguments.get_type_string() != "(soa{sa{sv}})":
            return
        application, path, interfaces = arguments.unpack()
        if application == self._connection.get_unique_name():
            self._on_shown(path, interfaces)

    def _answered(self, finish):
        try:
            finish()
        except GLib.Error as error:
            name = GLibClient.get_remote_error_name(error) or "org.freedesktop.DBus.Error.Failed"
            report("refused", MANAGER_PATH, name, quoted(GLibClient.get_remote_error_message(error)))
        else:
            report("registered", MANAGER_PATH)
            self._on_registered()


# --- The program


class Example:
    def __init__(self, bus, options):
        self._bus = bus
        self._options = options
        self._loop = EventLoop()
        self._call = None
        self._has_rung = False
        self._typed = b""
        self._manager = ObjectManager()
        self._link = None
        self._exit_code = 0

    def run(self):
        connection = self._bus.connection
        connection.set_exit_on_close(False)
        connection.connect("closed", self._bus_closed)
        report("connected", connection.get_unique_name())
        self._bus.publish_object(MANAGER_PATH, self._manager)
        self._link = HostLink(connection, self._options.host, self._ring, self._shown)
        GLib.io_add_watch(sys.stdin.fileno(), GLib.PRIORITY_DEFAULT, GLib.IO_IN | GLib.IO_HUP, self._read_input)
        for number in (signal.SIGINT, signal.SIGTERM):
            GLib.unix_signal_add(GLib.PRIORITY_DEFAULT, number, self._leave)
        self._loop.run()
        return self._exit_code

    def _ring(self):
        """Only when the registration is answered may the call be announced. Before, it would be reported
        twice: by its announcement, and again in what the host asks for during the registration. A call
        that is there already is told by the latter."""
        if self._has_rung:
            return
        self._has_rung = True
        self._call = Call(self._options.name, self._options.address, self._call_ended)
        self._bus.publish_object(CALL_PATH, self._call)
        report("call1 announced", status_text(INCOMING))
        self._manager.add(CALL_PATH, self._call)

    def _call_ended(self):
        report("call1 removed")
        self._manager.remove(CALL_PATH)
        self._bus.unpublish_object(CALL_PATH)
        self._call = None

    def _shown(self, path, interfaces):
        shown = interfaces.get("zelkovar.Call.Call1", {}).get("Status")
        if self._call and path == CALL_PATH and isinstance(shown, int):
            self._call.on_shown(shown)

    def _read_input(self, descriptor, _condition):
        piece = os.read(descriptor, 4096)
        *lines, self._typed = (self._typed + piece).split(b"\n")
        for line in lines:
            self._obey(line.decode(errors="replace"))
        return bool(piece)  # the end of the input is not the end of the call

    def _obey(self, line):
        if line == "quit":
            self._leave()
        elif line != "hangup":
            complain(f'unknown command "{line}"; there are hangup and quit')
        elif self._call:
            self._call.end()

    def _leave(self):
        if self._call:
            self._call.end()
        self._bus.connection.flush_sync()
        self._loop.quit()
        return True

    def _bus_closed(self, *_):
        complain("the session bus has gone")
        self._exit_code = 3
        self._loop.quit()


def bus_name(text):
    if not Gio.dbus_is_name(text):
        raise argparse.ArgumentTypeError(f"'{text}' is no bus name; one is like org.example.Host")
    return text


def utf8(text):
    try:
        text.encode()
    except UnicodeEncodeError:
        raise argparse.ArgumentTypeError("must be UTF-8") from None
    return text


def main():
    parser = argparse.ArgumentParser(prog=PROGRAM, description="One incoming call for a voice-call host.",
                                     allow_abbrev=False)
    parser.add_argument("--host", metavar="NAME", type=bus_name, default="org.tarnwickle.voicecall",
                        help="bus name of the host [%(default)s]")
    parser.add_argument("--name", metavar="TEXT", type=utf8, default="", help="name of the caller")
    parser.add_argument("--address", metavar="ADDRESS", type=utf8, default="sip:caller@example.org",
                        help="address of the caller")
    example = Example(SessionMessageBus(), parser.parse_args())
    try:
        return example.run()
    except GLib.Error as error:
        complain(error.message)
        return 3


if __name__ == "__main__":
    sys.exit(main())
