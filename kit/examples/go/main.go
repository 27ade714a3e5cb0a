// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// One incoming call: ringlet-example-go [ADDRESS [NAME [BUS-NAME-OF-THE-HOST]]]. Ctrl-C is the far end hanging up.
package main

import (
	"fmt"
	"log"
	"os"
	"os/signal"
	"sync"

	"github.com/godbus/dbus"
)

const (
	managerPath    = dbus.ObjectPath("/ringlet/example")
	callPath       = managerPath + "/call1"
	servicePath    = dbus.ObjectPath("/zelkovar/call/service")
	daemon         = "org.freedesktop.DBus"
	objectManager  = "org.freedesktop.DBus.ObjectManager"
	callInterface  = "zelkovar.Call.Call1"
	dtmfInterface  = "zelkovar.Call.DTMF1"
	audioInterface = "zelkovar.Call.AudioControl1"

	notYet, ended, incoming, active, held uint32 = 0, 1, 3, 5, 7
)

var (
	address  = argument(1, "sip:caller@example.org")
	name     = argument(2, "Caller")
	hostName = argument(3, "org.tarnwickle.voicecall")
	bus      *dbus.Conn
	state    sync.Mutex // over what follows
	host     string     // the connection that has the host's name; empty if none has
	status   = notYet
)

func argument(index int, otherwise string) string {
	if len(os.Args) > index {
		return os.Args[index]
	}
	return otherwise
}

// --- The library handles every call in a thread of its own, so that a hold can overtake an answer. Here no message
// is looked at before the last call is answered; and every call is answered.

var unanswered sync.Mutex

func beforeMessage(message *dbus.Message) {
	unanswered.Lock()
	if message.Type == dbus.TypeMethodCall {
		message.Flags &^= dbus.FlagNoReplyExpected
	} else {
		unanswered.Unlock()
	}
}

func beforeSending(message *dbus.Message) {
	if message.Type == dbus.TypeMethodReply || message.Type == dbus.TypeError {
		unanswered.Unlock()
	}
}

// --- What the host is told

type interfaces map[string]map[string]dbus.Variant

func describe() interfaces {
	return interfaces{dtmfInterface: {}, audioInterface: {}, callInterface: {
		"Incoming":   dbus.MakeVariant(true),
		"Status":     dbus.MakeVariant(status),
		"Holdable":   dbus.MakeVariant(true),
		"RemoteName": dbus.MakeVariant(name),
		"Uri":        dbus.MakeVariant(address),
	}}
}

type manager struct{}

func (manager) GetManagedObjects() (map[dbus.ObjectPath]interfaces, *dbus.Error) {
	state.Lock()
	defer state.Unlock()
	if status <= ended {
		return map[dbus.ObjectPath]interfaces{}, nil
	}
	return map[dbus.ObjectPath]interfaces{callPath: describe()}, nil
}

func emitStatus() { bus.Emit(callPath, callInterface+".StatusChanged", status) }

func changeStatus(from, to uint32) {
	if status == from {
		status = to
		emitStatus()
	}
}

// What the object at the call's path can do; nothing before the call and behind it.
func export(object interface{}) {
	for _, each := range []string{callInterface, dtmfInterface, audioInterface} {
		bus.Export(object, callPath, each)
	}
}

// The final status goes first: behind the removal nobody listens.
func endCall() {
	if status > ended {
		status = ended
		emitStatus()
		bus.Emit(managerPath, objectManager+".InterfacesRemoved", callPath,
			[]string{callInterface, dtmfInterface, audioInterface})
		export(nil)
	}
}

// --- What the host commands. The library compares the arguments with those of the functions.

type call struct{}

// Anybody on the bus can send a command; only the host is obeyed.
func obey(sender dbus.Sender, action func(), words ...interface{}) *dbus.Error {
	state.Lock()
	defer state.Unlock()
	if string(sender) != host {
		return dbus.NewError(daemon+".Error.AccessDenied", []interface{}{"only the host commands calls"})
	}
	fmt.Println(words...)
	action()
	return nil
}

func (call) Accept(sender dbus.Sender) *dbus.Error {
	return obey(sender, func() { changeStatus(incoming, active) }, "Accept")
}

func (call) Reject(sender dbus.Sender, reason uint32) *dbus.Error {
	return obey(sender, endCall, "Reject", reason)
}

func (call) SetHold(sender dbus.Sender, hold bool) *dbus.Error {
	return obey(sender, func() {
		if hold {
			changeStatus(active, held)
		} else {
			changeStatus(held, active)
		}
	}, "SetHold", hold)
}

func (call) SendDTMF(sender dbus.Sender, tones string) *dbus.Error {
	return obey(sender, func() {}, "SendDTMF", tones)
}

type device struct {
	ID              string
	Type            int32
	IsInput         bool
	IsOutput        bool
	Name            string
	OtherProperties map[string]dbus.Variant
}

func (call) UpdateAudioRouteState(sender dbus.Sender, devices []device, muted bool, input, output string) *dbus.Error {
	return obey(sender, func() {}, "UpdateAudioRouteState", devices, muted, input, output)
}

func (call) UpdateAudioRoute(sender dbus.Sender, muted bool, input, output string) *dbus.Error {
	return obey(sender, func() {}, "UpdateAudioRoute", muted, input, output)
}

// --- The host

// Only when it is registered may the call be announced. Before, it would be reported twice: by its announcement,
// and in the answer to GetManagedObjects. A call that is up already is told by that answer.
func setHost(owner string) {
	host = owner
	if host == "" {
		return
	}
	registration := bus.Object(host, servicePath).Go(
		"zelkovar.Call.Service1.RegisterCallManager", dbus.FlagNoAutoStart, nil, managerPath)
	go func() {
		<-registration.Done
		state.Lock()
		defer state.Unlock()
		if registration.Err == nil && owner == host && status == notYet {
			status = incoming
			export(call{})
			bus.Emit(managerPath, objectManager+".InterfacesAdded", callPath, describe())
		}
	}()
}

type signals struct{}

// Called by the library with each signal in its order.
func (signals) DeliverSignal(_, _ string, signal *dbus.Signal) {
	state.Lock()
	defer state.Unlock()
	if signal.Sender == daemon && signal.Name == daemon+".NameOwnerChanged" {
		setHost(signal.Body[2].(string))
	} else if signal.Sender == host && signal.Name == "zelkovar.Call.ServiceManager1.InterfacesAdded" {
		onShown(signal.Body)
	}
}

// The host shows the call, and only since then listens to its status: tell it again if it has changed.
func onShown(body []interface{}) {
	var application string
	var path dbus.ObjectPath
	var interfaces interfaces
	if dbus.Store(body, &application, &path, &interfaces) != nil || path != callPath || status <= ended {
		return
	}
	shown, known := interfaces[callInterface]["Status"].Value().(uint32)
	if known && shown != status {
		emitStatus()
	}
}

func main() {
	var err error
	if bus, err = dbus.ConnectSessionBus(dbus.WithIncomingInterceptor(beforeMessage),
		dbus.WithOutgoingInterceptor(beforeSending), dbus.WithSignalHandler(signals{})); err != nil {
		log.Fatal(err)
	}
	bus.Export(manager{}, managerPath, objectManager)
	bus.AddMatchSignal(dbus.WithMatchObjectPath(servicePath), dbus.WithMatchMember("InterfacesAdded"),
		dbus.WithMatchOption("arg0", bus.Names()[0]))
	bus.AddMatchSignal(dbus.WithMatchSender(daemon), dbus.WithMatchMember("NameOwnerChanged"),
		dbus.WithMatchOption("arg0", hostName))
	var owner string
	if bus.BusObject().Call(daemon+".GetNameOwner", 0, hostName).Store(&owner) == nil {
		state.Lock()
		setHost(owner)
		state.Unlock()
	}

	interrupt := make(chan os.Signal, 1)
	signal.Notify(interrupt, os.Interrupt)
	select {
	case <-interrupt:
		state.Lock()
		endCall()
		bus.Close()
	case <-bus.Context().Done():
		log.Fatal("the session bus has gone")
	}
}
