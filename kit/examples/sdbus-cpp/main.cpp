// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// One incoming call: ringlet-example-sdbus-cpp [ADDRESS [NAME [BUS-NAME-OF-THE-HOST]]]. Ctrl-C is the far end
// hanging up.

#include <array>
#include <csignal>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <poll.h>
#include <sdbus-c++/sdbus-c++.h>
#include <string>
#include <sys/signalfd.h>
#include <vector>

namespace {

const std::string managerPath = "/ringlet/example";
const std::string callPath = managerPath + "/call1";
const std::string servicePath = "/zelkovar/call/service";
const std::vector<std::string> interfaces
    = {"zelkovar.Call.Call1", "zelkovar.Call.DTMF1", "zelkovar.Call.AudioControl1"};

enum Status : uint32_t { NotYet = 0, Ended = 1, Incoming = 3, Active = 5, Held = 7 };

using Properties = std::map<std::string, sdbus::Variant>;
using Interfaces = std::map<std::string, Properties>;
// Id, type, is-input, is-output, name and further properties.
using Device = sdbus::Struct<std::string, int32_t, bool, bool, std::string, Properties>;

class Example
{
public:
    Example(sdbus::IConnection &bus, const std::vector<std::string> &arguments)
        : m_bus(bus),
          m_address(arguments.empty() ? "sip:caller@example.org" : arguments[0]),
          m_name(arguments.size() < 2 ? "Caller" : arguments[1]),
          m_hostName(arguments.size() < 3 ? "org.tarnwickle.voicecall" : arguments[2]),
          m_manager(sdbus::createObject(bus, managerPath)),
          m_daemon(sdbus::createProxy(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus"))
    {
        m_manager->addObjectManager();
        m_daemon->uponSignal("NameOwnerChanged")
            .onInterface("org.freedesktop.DBus")
            .call([this](const std::string &name, const std::string & /*before*/, const std::string &owner) {
                if (name == m_hostName)
                    setHost(owner);
            });
        m_daemon->finishRegistration();
        m_daemon->callMethodAsync("GetNameOwner")
            .onInterface("org.freedesktop.DBus")
            .withArguments(m_hostName)
            .uponReplyInvoke([this](const sdbus::Error *error, const std::string &owner) {
                if (!error)
                    setHost(owner);
            });
    }

    // The final status goes first: behind the removal nobody listens.
    void endCall()
    {
        if (m_status <= Ended)
            return;
        m_status = Ended;
        sendStatus();
        m_call->emitInterfacesRemovedSignal(interfaces);
    }

    // Handles what has arrived. The object of an ended call goes when none of its commands is being handled.
    void process()
    {
        do {
            if (m_status == Ended)
                m_call.reset();
        } while (m_bus.processPendingRequest());
    }

private:
    void sendStatus() { m_call->emitSignal("StatusChanged").onInterface(interfaces[0]).withArguments(m_status); }

    void changeStatus(uint32_t from, uint32_t to)
    {
        if (m_status != from)
            return;
        m_status = to;
        sendStatus();
    }

    // Anybody on the bus can send a command; only the host is obeyed.
    template <typename Obey>
    void addCommand(int interface, const std::string &method, const std::string &signature, Obey obey)
    {
        m_call->registerMethod(interfaces[interface], method, signature, "", [=](sdbus::MethodCall call) {
            if (call.getSender() != m_host)
                throw sdbus::Error("org.freedesktop.DBus.Error.AccessDenied", "only the host commands calls");
            std::cout << method;
            obey(call);
            std::cout << std::endl;
            call.createReply().send();
        });
    }

    template <typename Value>
    void addProperty(const std::string &name, const Value &value)
    {
        m_call->registerProperty(name).onInterface(interfaces[0]).withGetter([&value] { return value; });
    }

    static void printRoute(sdbus::MethodCall &call)
    {
        bool muted = false;
        std::string input;
        std::string output;
        call >> muted >> input >> output;
        std::cout << (muted ? " muted " : " on ") << input << ' ' << output;
    }

    static void printAudioState(sdbus::MethodCall &call)
    {
        std::vector<Device> devices;
        call >> devices;
        for (const Device &device : devices)
            std::cout << ' ' << device.get<0>();
        printRoute(call);
    }

    void addMembers()
    {
        addCommand(0, "Accept", "", [this](sdbus::MethodCall &) { changeStatus(Incoming, Active); });
        addCommand(0, "Reject", "u", [this](sdbus::MethodCall &) { endCall(); });
        addCommand(0, "SetHold", "b", [this](sdbus::MethodCall &call) {
            bool hold = false;
            call >> hold;
            std::cout << (hold ? " true" : " false");
            changeStatus(hold ? Active : Held, hold ? Held : Active);
        });
        addCommand(1, "SendDTMF", "s", [](sdbus::MethodCall &call) {
            std::string tones;
            call >> tones;
            std::cout << ' ' << tones;
        });
        addCommand(2, "UpdateAudioRouteState", "a(sibbsa{sv})bss", &Example::printAudioState);
        addCommand(2, "UpdateAudioRoute", "bss", &Example::printRoute);
        m_call->registerSignal("StatusChanged").onInterface(interfaces[0]).withParameters<uint32_t>();
        addProperty("Incoming", m_yes);
        addProperty("Status", m_status);
        addProperty("Holdable", m_yes);
        addProperty("RemoteName", m_name);
        addProperty("Uri", m_address);
        m_call->finishRegistration();
    }

    // Only when it is registered may the call be announced. Before, it would be reported twice: by its
    // announcement, and in the answer to GetManagedObjects. A call that is up already is told by that answer.
    void onRegistered()
    {
        if (m_status != NotYet)
            return;
        m_status = Incoming;
        m_call = sdbus::createObject(m_bus, callPath);
        addMembers();
        m_call->emitInterfacesAddedSignal(interfaces);
    }

    // The proxy stands for the program that has the name now, so that no other is listened to.
    void setHost(const std::string &owner)
    {
        m_host = owner;
        m_service.reset();
        if (owner.empty())
            return;
        m_service = sdbus::createProxy(m_bus, owner, servicePath);
        m_service->uponSignal("InterfacesAdded")
            .onInterface("zelkovar.Call.ServiceManager1")
            .call([this](const std::string &application, const sdbus::ObjectPath &path, const Interfaces &shown) {
                if (application == m_bus.getUniqueName() && path == callPath && m_status > Ended)
                    onShown(shown);
            });
        m_service->finishRegistration();
        m_service->callMethodAsync("RegisterCallManager")
            .onInterface("zelkovar.Call.Service1")
            .withArguments(sdbus::ObjectPath(managerPath))
            .uponReplyInvoke([this](const sdbus::Error *error) {
                if (!error)
                    onRegistered();
            });
    }

    // The host shows the call, and only since then listens to its status: tell it again if it has changed.
    void onShown(const Interfaces &shown)
    {
        const auto call = shown.find(interfaces[0]);
        if (call == shown.end())
            return;
        const auto status = call->second.find("Status");
        if (status != call->second.end() && status->second.containsValueOfType<uint32_t>()
            && status->second.get<uint32_t>() != m_status)
            sendStatus();
    }

    sdbus::IConnection &m_bus;
    const std::string m_address;
    const std::string m_name;
    const std::string m_hostName;
    const bool m_yes = true;
    uint32_t m_status = NotYet;
    std::string m_host; // the connection that has the host's name; empty if none has
    std::unique_ptr<sdbus::IObject> m_manager;
    std::unique_ptr<sdbus::IObject> m_call;
    std::unique_ptr<sdbus::IProxy> m_daemon;
    std::unique_ptr<sdbus::IProxy> m_service;
};

// Throws sdbus::Error when the bus goes.
void run(sdbus::IConnection &bus, Example &example)
{
    sigset_t interrupt;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    sigprocmask(SIG_BLOCK, &interrupt, nullptr);
    std::array<pollfd, 2> sources{{{signalfd(-1, &interrupt, SFD_CLOEXEC), POLLIN, 0}, {-1, 0, 0}}};
    while (!sources[0].revents) {
        example.process();
        const auto data = bus.getEventLoopPollData();
        sources[1] = {data.fd, data.events, 0};
        poll(sources.data(), sources.size(), data.getPollTimeout());
    }
    example.endCall();
    example.process(); // writes what still waits
}

} // namespace

int main(int argc, char *argv[])
{
    try {
        const auto bus = sdbus::createSessionBusConnection();
        Example example(*bus, {argv + 1, argv + argc});
        run(*bus, example);
        return 0;
    } catch (const sdbus::Error &error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
