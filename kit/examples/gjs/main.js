#!/usr/bin/gjs -m
// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// One incoming call: ringlet-example-gjs [ADDRESS [NAME [BUS-NAME-OF-THE-HOST]]]. Ctrl-C is the far end hanging up.

import Gio from 'gi://Gio';
import GLib from 'gi://GLib';
import System from 'system';

const MANAGER_PATH = '/ringlet/example';
const CALL_PATH = `${MANAGER_PATH}/call1`;
const SERVICE_PATH = '/zelkovar/call/service';
const CALL = 'zelkovar.Call.Call1';
const [NOT_YET, ENDED, INCOMING, ACTIVE, HELD] = [0, 1, 3, 5, 7];

const [address = 'sip:caller@example.org', name = 'Caller', hostName = 'org.tarnwickle.voicecall']
  = System.programArgs;
const bus = Gio.DBus.session; // which ends the program when the bus goes
const loop = new GLib.MainLoop(null, false);
let host = null; // the connection that has the host's name
let status = NOT_YET;

const emit = (path, member, signature, ...values) => bus.emit_signal(
  null, path, path === CALL_PATH ? CALL : 'org.freedesktop.DBus.ObjectManager', member,
  new GLib.Variant(signature, values));
const emitStatus = () => emit(CALL_PATH, 'StatusChanged', '(u)', status);

function changeStatus(from, to) {
  if (status !== from) return;
  status = to;
  emitStatus();
}

// --- What is on the bus. GJS checks the arguments of a command by the description of its interface.

const manager = Gio.DBusExportedObject.wrapJSObject(`<node><interface name='org.freedesktop.DBus.ObjectManager'>
    <method name='GetManagedObjects'><arg type='a{oa{sa{sv}}}' direction='out'/></method>
  </interface></node>`, {
  GetManagedObjects: () => (status > ENDED ? { [CALL_PATH]: describe() } : {}),
});

// Anybody on the bus can send a command; only the host is obeyed.
function exportable(description, commands) {
  const methods = Object.entries(commands).map(([method, obey]) => [`${method}Async`, (values, invocation) => {
    if (invocation.get_sender() !== host) {
      invocation.return_dbus_error('org.freedesktop.DBus.Error.AccessDenied', 'only the host commands calls');
      return;
    }
    print(method, JSON.stringify(values));
    obey(...values);
    invocation.return_value(null);
  }]);
  return Gio.DBusExportedObject.wrapJSObject(`<node>${description}</node>`, Object.fromEntries(methods));
}

const interfaces = [
  exportable(`<interface name='zelkovar.Call.Call1'>
      <method name='Accept'/>
      <method name='Reject'><arg type='u' direction='in'/></method>
      <method name='SetHold'><arg type='b' direction='in'/></method>
    </interface>`, {
    Accept: () => changeStatus(INCOMING, ACTIVE),
    Reject: () => endCall(),
    SetHold: (hold) => (hold ? changeStatus(ACTIVE, HELD) : changeStatus(HELD, ACTIVE)),
  }),
  exportable(`<interface name='zelkovar.Call.DTMF1'>
      <method name='SendDTMF'><arg type='s' direction='in'/></method>
    </interface>`, { SendDTMF: () => {} }),
  exportable(`<interface name='zelkovar.Call.AudioControl1'>
      <method name='UpdateAudioRouteState'><arg type='a(sibbsa{sv})' direction='in'/>
        <arg type='b' direction='in'/><arg type='s' direction='in'/><arg type='s' direction='in'/></method>
      <method name='UpdateAudioRoute'>
        <arg type='b' direction='in'/><arg type='s' direction='in'/><arg type='s' direction='in'/></method>
    </interface>`, { UpdateAudioRouteState: () => {}, UpdateAudioRoute: () => {} }),
];

const describe = () => ({
  [CALL]: {
    Incoming: new GLib.Variant('b', true),
    Status: new GLib.Variant('u', status),
    Holdable: new GLib.Variant('b', true),
    RemoteName: new GLib.Variant('s', name),
    Uri: new GLib.Variant('s', address),
  },
  'zelkovar.Call.DTMF1': {},
  'zelkovar.Call.AudioControl1': {},
});

function ring() {
  status = INCOMING;
  interfaces.forEach((each) => each.export(bus, CALL_PATH));
  emit(MANAGER_PATH, 'InterfacesAdded', '(oa{sa{sv}})', CALL_PATH, describe());
}

// The final status goes first: behind the removal nobody listens.
function endCall() {
  if (status <= ENDED) return;
  status = ENDED;
  emitStatus();
  emit(MANAGER_PATH, 'InterfacesRemoved', '(oas)', CALL_PATH, Object.keys(describe()));
  interfaces.forEach((each) => each.unexport());
}

// --- The host

// Only when it is registered may the call be announced. Before, it would be reported twice: by its announcement,
// and in the answer to GetManagedObjects. A call that is up already is told by that answer.
function onHostAppeared(_bus, _name, owner) {
  host = owner;
  bus.call(host, SERVICE_PATH, 'zelkovar.Call.Service1', 'RegisterCallManager',
    new GLib.Variant('(o)', [MANAGER_PATH]), null, Gio.DBusCallFlags.NO_AUTO_START, -1, null, (_, result) => {
      try {
        bus.call_finish(result);
        if (status === NOT_YET) ring();
      } catch (error) {
        logError(error);
      }
    });
}

// The host shows the call, and only since then listens to its status: tell it again if it has changed.
function onShown(_bus, sender, _path, _interface, _member, values) {
  if (sender !== host || status <= ENDED || values.get_type_string() !== '(soa{sa{sv}})') return;
  const [, path, shown] = values.deepUnpack();
  const seen = shown[CALL]?.Status;
  if (path === CALL_PATH && seen?.get_type_string() === 'u' && seen.unpack() !== status) emitStatus();
}

manager.export(bus, MANAGER_PATH);
bus.signal_subscribe(null, 'zelkovar.Call.ServiceManager1', 'InterfacesAdded', SERVICE_PATH, bus.get_unique_name(),
  Gio.DBusSignalFlags.NONE, onShown);
Gio.bus_watch_name_on_connection(bus, hostName, Gio.BusNameWatcherFlags.NONE, onHostAppeared, () => { host = null; });
GLib.unix_signal_add(GLib.PRIORITY_DEFAULT, 2, () => loop.quit());
loop.run();
endCall();
bus.flush_sync(null);
