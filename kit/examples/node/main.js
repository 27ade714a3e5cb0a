// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// One incoming call that the host can answer, reject, hold, send tones to and route the audio of.

import dbus from '@particle/dbus-next';
import { createInterface } from 'node:readline';
import { parseArgs } from 'node:util';

const { interface: service, Message, sessionBus, validators, Variant } = dbus;

const PROGRAM = 'ringlet-example-node';
const MANAGER_PATH = '/ringlet/example';
const CALL_PATH = `${MANAGER_PATH}/call1`;
const SERVICE_PATH = '/zelkovar/call/service';

const Status = { DISCONNECTED: 1, INCOMING: 3, ACTIVE: 5, HELD: 7 };
const STATUS_NAMES = [
  'disconnected', 'disconnected', 'dialing', 'incoming', 'disconnected', 'active', 'active', 'held',
];

const statusText = (status) => `${status} ${STATUS_NAMES[status] ?? 'unknown'}`;
// Text that came over the bus stays on its line, whatever is in it.
const quoted = (text) => JSON.stringify(text);
const routeText = (muted, input, output) =>
  `muted=${muted ? 'yes' : 'no'} input=${quoted(input)} output=${quoted(output)}`;

// --- What is on the bus

// The call itself. `onEnd` is called when it has ended, whoever ended it.
class Call extends service.Interface {
  #status = Status.INCOMING;
  #name;
  #address;
  #onEnd;

  constructor(name, address, onEnd) {
    super('zelkovar.Call.Call1');
    this.#name = name;
    this.#address = address;
    this.#onEnd = onEnd;
  }

  get Holdable() { return true; }
  get Incoming() { return true; }
  get LocalHandle() { return ''; }
  get LocalName() { return 'Node example'; }
  get RemoteHandle() { return this.#address; }
  get RemoteName() { return this.#name; }
  get Status() { return this.#status; }
  get Uri() { return this.#address; }

  // What a signal method returns is what is sent.
  StatusChanged(status) { return status; }

  Accept() {
    console.log('call1 command accept');
    if (this.#status === Status.INCOMING) this.#setStatus(Status.ACTIVE);
  }

  Reject(reason) {
    console.log(`call1 command reject ${reason}`);
    this.end();
  }

  SetHold(hold) {
    console.log(`call1 command hold ${hold ? 'on' : 'off'}`);
    if (this.#status === (hold ? Status.ACTIVE : Status.HELD)) this.#setStatus(hold ? Status.HELD : Status.ACTIVE);
  }

  #setStatus(status) {
    if (status === this.#status) return;
    this.#status = status;
    console.log(`call1 status ${statusText(status)}`);
    // Whoever binds to properties listens to the first one; the host, to the other.
    service.Interface.emitPropertiesChanged(this, { Status: status });
    this.StatusChanged(status);
  }

  // The final status goes out before the interfaces do: behind them nobody listens any more.
  end() {
    this.#setStatus(Status.DISCONNECTED);
    this.#onEnd();
  }

  // The host listens to the status only since it shows the call, and never asks for it: if it has
  // changed meanwhile, the host must be told again.
  shown(status) {
    console.log(`call1 shown ${statusText(status)}`);
    if (status === this.#status) return;
    console.log(`call1 status ${statusText(this.#status)} again`);
    this.StatusChanged(this.#status);
  }
}

const readOnly = (signature) => ({ signature, access: service.ACCESS_READ });

Call.configureMembers({
  properties: {
    Holdable: readOnly('b'),
    Incoming: readOnly('b'),
    LocalHandle: readOnly('s'),
    LocalName: readOnly('s'),
    RemoteHandle: readOnly('s'),
    RemoteName: readOnly('s'),
    Status: readOnly('u'),
    Uri: readOnly('s'),
  },
  methods: { Accept: {}, Reject: { inSignature: 'u' }, SetHold: { inSignature: 'b' } },
  signals: { StatusChanged: { signature: 'u' } },
});

class Tones extends service.Interface {
  constructor() { super('zelkovar.Call.DTMF1'); }

  SendDTMF(tones) { console.log(`call1 command tones ${quoted(tones)}`); }
}

Tones.configureMembers({ methods: { SendDTMF: { inSignature: 's' } } });

class AudioControl extends service.Interface {
  constructor() { super('zelkovar.Call.AudioControl1'); }

  UpdateAudioRoute(muted, input, output) { console.log(`call1 audio-route ${routeText(muted, input, output)}`); }

  UpdateAudioRouteState(devices, muted, input, output) {
    const ids = devices.map(([id]) => ` ${quoted(id)}`).join('');
    console.log(`call1 audio-state ${routeText(muted, input, output)} devices=${devices.length}${ids}`);
  }

  RequestAudioRoute(input, output) { return [input, output]; }
  RequestMute(mute) { return mute; }
}

AudioControl.configureMembers({
  methods: {
    UpdateAudioRoute: { inSignature: 'bss' },
    UpdateAudioRouteState: { inSignature: 'a(sibbsa{sv})bss' },
  },
  signals: { RequestAudioRoute: { signature: 'ss' }, RequestMute: { signature: 'b' } },
});

// The library has no object manager of its own.
class ObjectManager extends service.Interface {
  #bus;
  #objects = new Map();

  constructor(bus) {
    super('org.freedesktop.DBus.ObjectManager');
    this.#bus = bus;
  }

  GetManagedObjects() {
    return Object.fromEntries([...this.#objects].map(([path, interfaces]) => [path, describe(interfaces)]));
  }

  InterfacesAdded(path, interfaces) { return [path, interfaces]; }
  InterfacesRemoved(path, names) { return [path, names]; }

  // The object is exported whole, and then announced with all its interfaces at once.
  add(path, interfaces) {
    interfaces.forEach((each) => this.#bus.export(path, each));
    this.#objects.set(path, interfaces);
    this.InterfacesAdded(path, describe(interfaces));
  }

  remove(path) {
    this.InterfacesRemoved(path, this.#objects.get(path).map((each) => each.$name));
    this.#objects.delete(path);
    this.#bus.unexport(path);
  }
}

ObjectManager.configureMembers({
  methods: { GetManagedObjects: { outSignature: 'a{oa{sa{sv}}}' } },
  signals: { InterfacesAdded: { signature: 'oa{sa{sv}}' }, InterfacesRemoved: { signature: 'oas' } },
});

// a{sa{sv}}: interfaces of an object, and the properties of each.
function describe(interfaces) {
  const valuesOf = (each) => Object.entries(each.$properties ?? {}).map(
    ([name, { signature }]) => [name, new Variant(signature, each[name])]);
  return Object.fromEntries(interfaces.map((each) => [each.$name, Object.fromEntries(valuesOf(each))]));
}

// --- The host

const callBus = (bus, member, argument) => bus.call(new Message({
  destination: 'org.freedesktop.DBus',
  path: '/org/freedesktop/DBus',
  interface: 'org.freedesktop.DBus',
  member,
  signature: 's',
  body: [argument],
}));

// Follows the host's name, and registers whenever somebody takes it. The library's proxies are not used:
// they ask the host to describe itself before anything else.
class HostLink {
  #bus;
  #name;
  #owner = null;
  #onRegistered;
  #onShown;

  constructor(bus, name, onRegistered, onShown) {
    this.#bus = bus;
    this.#name = name;
    this.#onRegistered = onRegistered;
    this.#onShown = onShown;
  }

  async start() {
    this.#bus.on('message', (message) => this.#onMessage(message));
    await callBus(this.#bus, 'AddMatch', `type='signal',interface='zelkovar.Call.ServiceManager1',`
      + `path='${SERVICE_PATH}',member='InterfacesAdded',arg0='${this.#bus.name}'`);
    await callBus(this.#bus, 'AddMatch', `type='signal',sender='org.freedesktop.DBus',`
      + `interface='org.freedesktop.DBus',member='NameOwnerChanged',arg0='${this.#name}'`);
    try {
      const { body: [owner] } = await callBus(this.#bus, 'GetNameOwner', this.#name);
      this.#setOwner(owner);
    } catch {
      if (!this.#owner) console.log(`waiting for host ${this.#name}`);
    }
  }

  #onMessage({ sender, interface: name, member, signature, body }) {
    const [first, second, third] = body;
    if (sender === 'org.freedesktop.DBus' && member === 'NameOwnerChanged' && first === this.#name)
      this.#setOwner(third);
    else if (sender === this.#owner && name === 'zelkovar.Call.ServiceManager1' && member === 'InterfacesAdded'
      && signature === 'soa{sa{sv}}' && first === this.#bus.name)
      this.#onShown(second, third);
  }

  #setOwner(owner) {
    if (owner === (this.#owner ?? '')) return;
    if (this.#owner) console.log('host gone');
    this.#owner = owner || null;
    if (owner) {
      console.log(`host appeared ${owner}`);
      this.#register(owner);
    } else {
      console.log(`waiting for host ${this.#name}`);
    }
  }

  async #register(owner) {
    try {
      await this.#bus.call(new Message({
        destination: owner,
        path: SERVICE_PATH,
        interface: 'zelkovar.Call.Service1',
        member: 'RegisterCallManager',
        signature: 'o',
        body: [MANAGER_PATH],
      }));
    } catch (error) {
      console.log(`refused ${MANAGER_PATH} ${error.type} ${quoted(error.text ?? '')}`);
      return;
    }
    // Promises are settled behind all that came in one read: another host may have come meanwhile.
    if (owner !== this.#owner) return;
    console.log(`registered ${MANAGER_PATH}`);
    this.#onRegistered();
  }
}

// --- The program

function readOptions() {
  try {
    const { values } = parseArgs({
      options: {
        host: { type: 'string', default: 'org.tarnwickle.voicecall' },
        name: { type: 'string', default: '' },
        address: { type: 'string', default: 'sip:caller@example.org' },
      },
    });
    if (validators.isBusNameValid(values.host)) return values;
    console.error(`${PROGRAM}: --host is no bus name; one is like org.example.Host`);
  } catch (error) {
    console.error(`${PROGRAM}: ${error.message}; there are --host, --name and --address`);
  }
  return process.exit(2);
}

function lose(reason) {
  console.error(`${PROGRAM}: ${reason}`);
  process.exit(3);
}

function run(bus, options) {
  const manager = new ObjectManager(bus);
  let hasRung = false;
  let call = null;

  // Only when the registration is answered may the call be announced. Before, it would be reported twice:
  // by its announcement, and again in what the host asks for during the registration. A call that is there
  // already is told by the latter.
  function ring() {
    if (hasRung) return;
    hasRung = true;
    call = new Call(options.name, options.address, () => {
      console.log('call1 removed');
      manager.remove(CALL_PATH);
      call = null;
    });
    console.log(`call1 announced ${statusText(Status.INCOMING)}`);
    manager.add(CALL_PATH, [call, new Tones(), new AudioControl()]);
  }

  function shown(path, interfaces) {
    const status = interfaces['zelkovar.Call.Call1']?.Status;
    if (call && path === CALL_PATH && status?.signature === 'u') call.shown(status.value);
  }

  // What was written goes out before the connection closes, and with it the process.
  function leave() {
    call?.end();
    bus._connection.removeAllListeners('end').once('end', () => process.exit(0));
    bus.disconnect();
  }

  bus.export(MANAGER_PATH, manager);
  console.log(`connected ${bus.name}`);
  new HostLink(bus, options.host, ring, shown).start();

  createInterface({ input: process.stdin }).on('line', (line) => {
    if (line === 'hangup') call?.end();
    else if (line === 'quit') leave();
    else console.error(`${PROGRAM}: unknown command "${line}"; there are hangup and quit`);
  });
  process.on('SIGINT', leave).on('SIGTERM', leave);
}

const options = readOptions();
const bus = sessionBus();
bus.on('error', (error) => lose(bus.name ? `the session bus has gone: ${error.message}` : error.message));
bus.on('connect', () => {
  // The library does not tell when the bus hangs up.
  bus._connection.on('end', () => lose('the session bus has gone'));
  run(bus, options);
});
