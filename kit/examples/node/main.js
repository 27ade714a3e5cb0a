// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// One incoming call: node main.js [ADDRESS [NAME [BUS-NAME-OF-THE-HOST]]]. Ctrl-C is the far end hanging up.

import dbus from '@particle/dbus-next';

const { Message, MessageType, Variant } = dbus;

const MANAGER_PATH = '/ringlet/example';
const CALL_PATH = `${MANAGER_PATH}/call1`;
const SERVICE_PATH = '/zelkovar/call/service';
const OBJECT_MANAGER = 'org.freedesktop.DBus.ObjectManager';
const CALL = 'zelkovar.Call.Call1';
const DTMF = 'zelkovar.Call.DTMF1';
const AUDIO = 'zelkovar.Call.AudioControl1';
const [NOT_YET, ENDED, INCOMING, ACTIVE, HELD] = [0, 1, 3, 5, 7];

const [address = 'sip:caller@example.org', name = 'Caller', hostName = 'org.tarnwickle.voicecall']
  = process.argv.slice(2);
const bus = dbus.sessionBus();
let host = ''; // the connection that has the host's name
let status = NOT_YET;

// --- What the host is told

const emit = (...signal) => bus.send(Message.newSignal(...signal));
const emitStatus = () => emit(CALL_PATH, CALL, 'StatusChanged', 'u', [status]);

const describe = () => ({
  [CALL]: {
    Incoming: new Variant('b', true),
    Status: new Variant('u', status),
    Holdable: new Variant('b', true),
    RemoteName: new Variant('s', name),
    Uri: new Variant('s', address),
  },
  [DTMF]: {},
  [AUDIO]: {},
});

function ring() {
  status = INCOMING;
  emit(MANAGER_PATH, OBJECT_MANAGER, 'InterfacesAdded', 'oa{sa{sv}}', [CALL_PATH, describe()]);
}

function changeStatus(from, to) {
  if (status !== from) return;
  status = to;
  emitStatus();
}

// The final status goes first: behind the removal nobody listens.
function endCall() {
  if (status <= ENDED) return;
  status = ENDED;
  emitStatus();
  emit(MANAGER_PATH, OBJECT_MANAGER, 'InterfacesRemoved', 'oas', [CALL_PATH, [CALL, DTMF, AUDIO]]);
}

// --- What the host commands. The library's own objects do not learn who calls: messages are handled here.

const commands = {
  [`${CALL}.Accept`]: ['', () => changeStatus(INCOMING, ACTIVE)],
  [`${CALL}.Reject`]: ['u', endCall],
  [`${CALL}.SetHold`]: ['b', (hold) => (hold ? changeStatus(ACTIVE, HELD) : changeStatus(HELD, ACTIVE))],
  [`${DTMF}.SendDTMF`]: ['s', () => {}],
  [`${AUDIO}.UpdateAudioRouteState`]: ['a(sibbsa{sv})bss', () => {}],
  [`${AUDIO}.UpdateAudioRoute`]: ['bss', () => {}],
};

// Anybody on the bus can send a command; only the host is obeyed.
function reply(message, signature, obey) {
  if (message.sender !== host)
    return Message.newError(message, 'org.freedesktop.DBus.Error.AccessDenied', 'only the host commands calls');
  if (message.signature !== signature)
    return Message.newError(message, 'org.freedesktop.DBus.Error.InvalidArgs', `not of the types ${signature}`);
  console.log(message.member, JSON.stringify(message.body));
  obey(...message.body);
  return Message.newMethodReturn(message);
}

// Whether it is answered here; else the library answers it.
function answer(message) {
  const member = `${message.interface}.${message.member}`;
  if (message.path === MANAGER_PATH && member === `${OBJECT_MANAGER}.GetManagedObjects`) {
    const objects = status > ENDED ? { [CALL_PATH]: describe() } : {};
    bus.send(Message.newMethodReturn(message, 'a{oa{sa{sv}}}', [objects]));
    return true;
  }
  if (message.path !== CALL_PATH || status <= ENDED || !Object.hasOwn(commands, member)) return false;
  bus.send(reply(message, ...commands[member]));
  return true;
}

// --- The host

const call = (destination, path, service, member, signature, ...body) => bus.call(
  new Message({ destination, path, interface: service, member, signature, body }));
const callBus = (member, text) => call(
  'org.freedesktop.DBus', '/org/freedesktop/DBus', 'org.freedesktop.DBus', member, 's', text);

// Only when it is registered may the call be announced. Before, it would be reported twice: by its announcement,
// and in the answer to GetManagedObjects. A call that is up already is told by that answer.
async function setHost(owner) {
  host = owner;
  if (!host) return;
  await call(host, SERVICE_PATH, 'zelkovar.Call.Service1', 'RegisterCallManager', 'o', MANAGER_PATH);
  if (owner === host && status === NOT_YET) ring(); // another host may have come meanwhile
}

// The host shows the call, and only since then listens to its status: tell it again if it has changed.
function onShown([application, path, interfaces]) {
  const shown = interfaces[CALL]?.Status;
  if (application === bus.name && path === CALL_PATH && status > ENDED
    && shown?.signature === 'u' && shown.value !== status) emitStatus();
}

function onMessage({ type, sender, member, signature, body }) {
  if (type !== MessageType.SIGNAL) return;
  if (sender === 'org.freedesktop.DBus' && member === 'NameOwnerChanged' && body[0] === hostName)
    setHost(body[2]).catch(console.error);
  else if (sender === host && member === 'InterfacesAdded' && signature === 'soa{sa{sv}}')
    onShown(body);
}

// Ends when all is written.
function leave() {
  endCall();
  process.exitCode = 0;
  bus.disconnect();
}

bus.once('connect', async () => {
  process.exitCode = 1; // unless it is leave() that hangs up; the library does not tell when the bus does
  bus._connection.on('end', () => process.exit());
  process.on('SIGINT', leave);
  bus.addMethodHandler(answer);
  bus.on('message', onMessage);
  await callBus('AddMatch', `path='${SERVICE_PATH}',member='InterfacesAdded',arg0='${bus.name}'`);
  await callBus('AddMatch', `sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='${hostName}'`);
  const owner = await callBus('GetNameOwner', hostName).catch(() => null);
  if (owner) setHost(owner.body[0]).catch(console.error);
});
