// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// One incoming call: ringlet-example-rust [ADDRESS [NAME [BUS-NAME-OF-THE-HOST]]]. Ctrl-C is the far end hanging up.

use nix::poll::{poll, PollFd, PollFlags};
use nix::sys::signal::{SigSet, Signal};
use nix::sys::signalfd::SignalFd;
use std::collections::HashMap;
use std::os::unix::io::AsRawFd;
use zbus::zvariant::{ObjectPath, Value};
use zbus::{Connection, Message, MessageType, Result};

const MANAGER_PATH: &str = "/ringlet/example";
const CALL_PATH: &str = "/ringlet/example/call1";
const SERVICE_PATH: &str = "/zelkovar/call/service";
const DAEMON: &str = "org.freedesktop.DBus";
const OBJECT_MANAGER: &str = "org.freedesktop.DBus.ObjectManager";
const CALL: &str = "zelkovar.Call.Call1";
const DTMF: &str = "zelkovar.Call.DTMF1";
const AUDIO: &str = "zelkovar.Call.AudioControl1";

const NOT_YET: u32 = 0;
const ENDED: u32 = 1;
const INCOMING: u32 = 3;
const ACTIVE: u32 = 5;
const HELD: u32 = 7;

type Interfaces<'a> = HashMap<&'a str, HashMap<&'a str, Value<'a>>>;
// Id, type, is-input, is-output, name and further properties.
type Device<'a> = (&'a str, i32, bool, bool, &'a str, HashMap<&'a str, Value<'a>>);

struct Example {
    bus: Connection,
    address: String,
    name: String,
    host_name: String,
    host: String, // the connection that has the host's name; empty if none has
    owner_request: u32, // serials
    registration: u32,
    status: u32,
}

impl Example {
    // --- What the host is told

    fn interfaces(&self) -> Interfaces {
        let mut properties = HashMap::new();
        properties.insert("Incoming", Value::new(true));
        properties.insert("Status", Value::new(self.status));
        properties.insert("Holdable", Value::new(true));
        properties.insert("RemoteName", Value::new(self.name.as_str()));
        properties.insert("Uri", Value::new(self.address.as_str()));
        vec![(CALL, properties), (DTMF, HashMap::new()), (AUDIO, HashMap::new())].into_iter().collect()
    }

    fn emit_status(&self) -> Result<()> {
        self.bus.emit_signal(None, CALL_PATH, CALL, "StatusChanged", &self.status)
    }

    fn ring(&mut self) -> Result<()> {
        self.status = INCOMING;
        let call = (ObjectPath::try_from(CALL_PATH)?, self.interfaces());
        self.bus.emit_signal(None, MANAGER_PATH, OBJECT_MANAGER, "InterfacesAdded", &call)
    }

    fn change_status(&mut self, from: u32, to: u32) -> Result<()> {
        if self.status != from {
            return Ok(());
        }
        self.status = to;
        self.emit_status()
    }

    // The final status goes first: behind the removal nobody listens.
    fn end_call(&mut self) -> Result<()> {
        if self.status <= ENDED {
            return Ok(());
        }
        self.status = ENDED;
        self.emit_status()?;
        let call = (ObjectPath::try_from(CALL_PATH)?, vec![CALL, DTMF, AUDIO]);
        self.bus.emit_signal(None, MANAGER_PATH, OBJECT_MANAGER, "InterfacesRemoved", &call)
    }

    fn managed_objects(&self) -> Result<HashMap<ObjectPath, Interfaces>> {
        let mut objects = HashMap::new();
        if self.status > ENDED {
            objects.insert(ObjectPath::try_from(CALL_PATH)?, self.interfaces());
        }
        Ok(objects)
    }

    // --- What the host commands. The library's object server does not tell who calls: messages are handled here.

    // False if there is no such command. body() is an error if the arguments are of other types.
    fn obey(&mut self, message: &Message, interface: &str, method: &str) -> Result<bool> {
        match (interface, method) {
            (CALL, "Accept") => {
                message.body::<()>()?;
                println!("Accept");
                self.change_status(INCOMING, ACTIVE)?;
            }
            (CALL, "Reject") => {
                println!("Reject {}", message.body::<u32>()?);
                self.end_call()?;
            }
            (CALL, "SetHold") => {
                let hold = message.body::<bool>()?;
                println!("SetHold {}", hold);
                self.change_status(if hold { ACTIVE } else { HELD }, if hold { HELD } else { ACTIVE })?;
            }
            (DTMF, "SendDTMF") => println!("SendDTMF {}", message.body::<&str>()?),
            (AUDIO, "UpdateAudioRoute") => {
                println!("UpdateAudioRoute {:?}", message.body::<(bool, &str, &str)>()?)
            }
            (AUDIO, "UpdateAudioRouteState") => {
                println!("UpdateAudioRouteState {:?}", message.body::<(Vec<Device>, bool, &str, &str)>()?)
            }
            _ => return Ok(false),
        }
        Ok(true)
    }

    // Anybody on the bus can send a command; only the host is obeyed.
    fn on_call(&mut self, message: &Message, path: &str, sender: &str, interface: &str, method: &str) -> Result<u32> {
        let error = |name: &str, text: &str| self.bus.reply_error(message, &format!("{}.Error.{}", DAEMON, name), &text);
        if (path, interface, method) == (MANAGER_PATH, OBJECT_MANAGER, "GetManagedObjects") {
            return self.bus.reply(message, &self.managed_objects()?);
        }
        if path != CALL_PATH || self.status <= ENDED || !interface.starts_with("zelkovar.") {
            return error("UnknownMethod", "there is no such method here");
        }
        if sender != self.host {
            return error("AccessDenied", "only the host commands calls");
        }
        match self.obey(message, interface, method) {
            Ok(true) => self.bus.reply(message, &()),
            Ok(false) => self.bus.reply_error(message, "org.freedesktop.DBus.Error.UnknownMethod", &method),
            Err(_) => self.bus.reply_error(message, "org.freedesktop.DBus.Error.InvalidArgs", &method),
        }
    }

    // --- The host

    fn ask_bus(&self, method: &str, text: &str) -> Result<u32> {
        let path = "/org/freedesktop/DBus";
        self.bus.send_message(Message::method(None, Some(DAEMON), path, Some(DAEMON), method, &text)?)
    }

    fn set_host(&mut self, owner: &str) -> Result<()> {
        self.host = owner.to_string();
        if !owner.is_empty() {
            let (interface, path) = ("zelkovar.Call.Service1", ObjectPath::try_from(MANAGER_PATH)?);
            self.registration = self.bus.send_message(Message::method(
                None, Some(owner), SERVICE_PATH, Some(interface), "RegisterCallManager", &path)?)?;
        }
        Ok(())
    }

    // Only when it is registered may the call be announced. Before, it would be reported twice: by its announcement,
    // and in the answer to GetManagedObjects. A call that is up already is told by that answer.
    fn on_reply(&mut self, message: &Message, sender: &str, serial: u32) -> Result<()> {
        if serial == self.owner_request && sender == DAEMON {
            self.set_host(message.body()?)?;
        } else if serial == self.registration && sender == self.host && self.status == NOT_YET {
            self.ring()?;
        }
        Ok(())
    }

    // The host shows the call, and only since then listens to its status: tell it again if it has changed.
    fn on_shown(&self, message: &Message) -> Result<()> {
        let (_, path, interfaces) = message.body::<(&str, ObjectPath, Interfaces)>()?;
        match interfaces.get(CALL).and_then(|properties| properties.get("Status")) {
            Some(Value::U32(shown)) if *path == *CALL_PATH && self.status > ENDED && *shown != self.status => {
                self.emit_status()
            }
            _ => Ok(()),
        }
    }

    fn on_message(&mut self, message: &Message) -> Result<()> {
        let header = message.header()?;
        let sender = header.sender()?.unwrap_or_default();
        let (interface, member) = (header.interface()?.unwrap_or_default(), header.member()?.unwrap_or_default());
        match (header.message_type()?, member) {
            (MessageType::MethodCall, _) => {
                let path = header.path()?.map(ObjectPath::as_str).unwrap_or_default();
                self.on_call(message, path, sender, interface, member).map(|_| ())
            }
            (MessageType::MethodReturn, _) => self.on_reply(message, sender, header.reply_serial()?.unwrap_or(0)),
            (MessageType::Signal, "NameOwnerChanged") if sender == DAEMON => {
                self.set_host(message.body::<(&str, &str, &str)>()?.2)
            }
            (MessageType::Signal, "InterfacesAdded") if sender == self.host => self.on_shown(message),
            _ => Ok(()),
        }
    }
}

fn main() -> std::result::Result<(), Box<dyn std::error::Error>> {
    let mut interrupt = SigSet::empty();
    interrupt.add(Signal::SIGINT);
    interrupt.thread_block()?;
    let interrupt = SignalFd::new(&interrupt)?;
    let argument = |index, otherwise: &str| std::env::args().nth(index).unwrap_or_else(|| otherwise.to_string());
    let mut example = Example {
        bus: Connection::new_session()?,
        address: argument(1, "sip:caller@example.org"),
        name: argument(2, "Caller"),
        host_name: argument(3, "org.tarnwickle.voicecall"),
        host: String::new(),
        owner_request: 0,
        registration: 0,
        status: NOT_YET,
    };
    let own_name = example.bus.unique_name().unwrap_or_default();
    example.ask_bus("AddMatch", &format!("path='{}',member='InterfacesAdded',arg0='{}'", SERVICE_PATH, own_name))?;
    let owner_changes = format!("sender='{}',member='NameOwnerChanged',arg0='{}'", DAEMON, example.host_name);
    example.ask_bus("AddMatch", &owner_changes)?;
    example.owner_request = example.ask_bus("GetNameOwner", &example.host_name)?;

    let mut sources = [example.bus.as_raw_fd(), interrupt.as_raw_fd()].map(|fd| PollFd::new(fd, PollFlags::POLLIN));
    loop {
        poll(&mut sources, -1)?;
        if sources[1].any() == Some(true) {
            break;
        }
        if sources[0].revents().map_or(false, |events| events.contains(PollFlags::POLLHUP)) {
            return Err("the session bus has gone".into()); // zbus would read the end for ever
        }
        let message = example.bus.receive_message()?;
        if let Err(error) = example.on_message(&message) {
            eprintln!("{}", error);
        }
    }
    example.end_call()?;
    Ok(())
}
