#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""One incoming call: ringlet-example-dasbus [ADDRESS [NAME [BUS-NAME-OF-THE-HOST]]]. Ctrl-C is the far end
hanging up."""

import signal
import sys

from dasbus.client.handler import GLibClient
from dasbus.client.observer import GLibMonitoring
from dasbus.connection import SessionMessageBus
from dasbus.loop import EventLoop
from dasbus.server.handler import ServerObjectHandler
from dasbus.server.interface import dbus_class, dbus_interface, dbus_signal
from dasbus.typing import Bool, Dict, Int32, List, ObjPath, Str, Structure, Tuple, UInt32, get_variant
from gi.repository import Gio, GLib

MANAGER_PATH = "/ringlet/example"
CALL_PATH = MANAGER_PATH + "/call1"
SERVICE_PATH = "/zelkovar/call/service"
NOT_YET, ENDED, INCOMING, ACTIVE, HELD = 0, 1, 3, 5, 7


class CommandHandler(ServerObjectHandler):
    """Anybody on the bus can send a command; only the host is obeyed."""

    def _method_callback(self, invocation, interface_name, method_name, parameters):
        if invocation.get_sender() != self._object.host:
            invocation.return_dbus_error("org.freedesktop.DBus.Error.AccessDenied", "only the host commands calls")
            return
        print(method_name, *parameters.unpack(), flush=True)
        super()._method_callback(invocation, interface_name, method_name, parameters)


@dbus_interface("zelkovar.Call.DTMF1")
class Tones:
    def SendDTMF(self, tones: Str):
        pass


@dbus_interface("zelkovar.Call.AudioControl1")
class AudioControl:
    def UpdateAudioRouteState(self, devices: List[Tuple[Str, Int32, Bool, Bool, Str, Structure]], muted: Bool,
                              input_id: Str, output_id: Str):
        pass

    def UpdateAudioRoute(self, muted: Bool, input_id: Str, output_id: Str):
        pass


@dbus_interface("zelkovar.Call.Call1")
class CallControl:
    def __init__(self, on_end):
        self.host = None  # the connection that has the host's name
        self.status = NOT_YET
        self._on_end = on_end

    @dbus_signal
    def StatusChanged(self, status: UInt32):
        pass

    def Accept(self):
        self._change_status(INCOMING, ACTIVE)

    def Reject(self, reason: UInt32):
        self._on_end()

    def SetHold(self, hold: Bool):
        self._change_status(*((ACTIVE, HELD) if hold else (HELD, ACTIVE)))

    def _change_status(self, before, after):
        if self.status == before:
            self.status = after
            self.StatusChanged(after)


@dbus_class
class Call(CallControl, Tones, AudioControl):
    pass


@dbus_interface("org.freedesktop.DBus.ObjectManager")
class Example:
    """The object manager, which dasbus has not."""

    def __init__(self, bus, address="sip:caller@example.org", name="Caller", host_name="org.tarnwickle.voicecall"):
        self._bus = bus
        self._address = address
        self._name = name
        self._call = Call(self.end_call)
        bus.publish_object(MANAGER_PATH, self)
        # GLib's own calls, and dasbus's low level: its proxies would ask the host to describe itself first.
        bus.connection.signal_subscribe(None, "zelkovar.Call.ServiceManager1", "InterfacesAdded", SERVICE_PATH,
                                        bus.connection.get_unique_name(), Gio.DBusSignalFlags.NONE, self._on_shown)
        GLibMonitoring.watch_name(bus.connection, host_name, name_appeared=self._on_host_appeared,
                                  name_vanished=self._on_host_vanished)

    def GetManagedObjects(self) -> Dict[ObjPath, Dict[Str, Structure]]:
        return {CALL_PATH: self._describe()} if self._call.status > ENDED else {}

    @dbus_signal
    def InterfacesAdded(self, path: ObjPath, interfaces: Dict[Str, Structure]):
        pass

    @dbus_signal
    def InterfacesRemoved(self, path: ObjPath, interfaces: List[Str]):
        pass

    def _describe(self):
        properties = {
            "Incoming": get_variant(Bool, True),
            "Status": get_variant(UInt32, self._call.status),
            "Holdable": get_variant(Bool, True),
            "RemoteName": get_variant(Str, self._name),
            "Uri": get_variant(Str, self._address),
        }
        return {"zelkovar.Call.Call1": properties, "zelkovar.Call.DTMF1": {}, "zelkovar.Call.AudioControl1": {}}

    def end_call(self):
        """The final status goes first: behind the removal nobody listens."""
        if self._call.status > ENDED:
            self._call.status = ENDED
            self._call.StatusChanged(ENDED)
            self.InterfacesRemoved(CALL_PATH, list(self._describe()))
            self._bus.unpublish_object(CALL_PATH)

    def _on_host_appeared(self, owner):
        self._call.host = owner
        GLibClient.async_call(self._bus.connection, owner, SERVICE_PATH, "zelkovar.Call.Service1",
                              "RegisterCallManager", get_variant(Tuple[ObjPath], (MANAGER_PATH,)), None,
                              self._on_registered)

    def _on_host_vanished(self):
        self._call.host = None

    def _on_registered(self, finish):
        """Only now may the call be announced. Before, it would be reported twice: by its announcement, and in
        the answer to GetManagedObjects. A call that is up already is told by that answer."""
        finish()
        if self._call.status == NOT_YET:
            self._call.status = INCOMING
            self._bus.publish_object(CALL_PATH, self._call, server_factory=CommandHandler)
            self.InterfacesAdded(CALL_PATH, self._describe())

    def _on_shown(self, _connection, sender, _path, _interface, _signal, arguments):
        """The host shows the call, and only since then listens to its status: tell it again if it has changed."""
        if sender != self._call.host or self._call.status <= ENDED or arguments.get_type_string() != "(soa{sa{sv}})":
            return
        _, path, interfaces = arguments.unpack()
        shown = interfaces.get("zelkovar.Call.Call1", {}).get("Status")
        if path == CALL_PATH and isinstance(shown, int) and shown != self._call.status:
            self._call.StatusChanged(self._call.status)


def main():
    loop = EventLoop()
    bus = SessionMessageBus()  # which ends the program when the bus goes
    example = Example(bus, *sys.argv[1:])
    GLib.unix_signal_add(GLib.PRIORITY_DEFAULT, signal.SIGINT, loop.quit)
    loop.run()
    example.end_call()
    bus.connection.flush_sync()


if __name__ == "__main__":
    main()
