// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// One incoming call that the host can answer, reject, hold, send tones to and route the audio of.

#include <array>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <getopt.h>
#include <iostream>
#include <map>
#include <memory>
#include <poll.h>
#include <regex>
#include <sdbus-c++/sdbus-c++.h>
#include <string>
#include <sys/signalfd.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

const std::string program = "ringlet-example-sdbus-cpp";
const std::string managerPath = "/ringlet/example";
const std::string callPath = managerPath + "/call1";
const std::string servicePath = "/zelkovar/call/service";
const std::string callInterface = "zelkovar.Call.Call1";
const std::string dtmfInterface = "zelkovar.Call.DTMF1";
const std::string audioInterface = "zelkovar.Call.AudioControl1";

enum Status : uint32_t { Disconnected = 1, Incoming = 3, Active = 5, Held = 7 };

using Properties = std::map<std::string, sdbus::Variant>;
using Interfaces = std::map<std::string, Properties>;
// Id, type, is-input, is-output, name and further properties.
using Device = sdbus::Struct<std::string, int32_t, bool, bool, std::string, Properties>;

template <typename... Parts>
void report(const Parts &...parts)
{
    (std::cout << ... << parts) << std::endl;
}

std::string statusText(uint32_t status)
{
    static const std::array<const char *, 8> names
        = {"disconnected", "disconnected", "dialing", "incoming", "disconnected", "active", "active", "held"};
    return std::to_string(status) + ' ' + (status < names.size() ? names.at(status) : "unknown");
}

// Text that came over the bus stays on its line, whatever is in it.
std::string quoted(const std::string &text)
{
    static const std::map<char, std::string> escapes
        = {{'\n', "\\n"}, {'\r', "\\r"}, {'\t', "\\t"}, {'"', "\\\""}, {'\\', "\\\\"}};
    std::string result = "\"";
    for (const char c : text) {
        const auto escape = escapes.find(c);
        result += escape == escapes.end() ? std::string(1, c) : escape->second;
    }
    return result + '"';
}

std::string routeText(bool muted, const std::string &input, const std::string &output)
{
    return std::string("muted=") + (muted ? "yes" : "no") + " input=" + quoted(input) + " output=" + quoted(output);
}

// The call on the bus, from its first ring to its end.
class Call
{
public:
    Call(sdbus::IConnection &bus, std::string name, std::string address)
        : m_name(std::move(name)),
          m_address(std::move(address)),
          m_object(sdbus::createObject(bus, callPath))
    {
        addCallInterface();
        addDtmfInterface();
        addAudioInterface();
        m_object->finishRegistration();
    }

    // With all its interfaces at once.
    void announce()
    {
        report("call1 announced ", statusText(m_status));
        m_object->emitInterfacesAddedSignal({callInterface, dtmfInterface, audioInterface});
    }

    // The final status goes out before the interfaces do: behind them nobody listens any more.
    void end()
    {
        if (m_isOver)
            return;
        setStatus(Disconnected);
        report("call1 removed");
        m_object->emitInterfacesRemovedSignal({callInterface, dtmfInterface, audioInterface});
        m_isOver = true;
    }

    // Over, and to be destroyed; not from inside, for the object may be handling a command just now.
    bool isOver() const { return m_isOver; }

    // The host listens to the status only since it shows the call, and never asks for it: if it has
    // changed meanwhile, the host must be told again.
    void onShown(uint32_t shown)
    {
        report("call1 shown ", statusText(shown));
        if (shown == m_status)
            return;
        report("call1 status ", statusText(m_status), " again");
        sendStatus();
    }

private:
    void setStatus(uint32_t status)
    {
        if (m_status == status)
            return;
        m_status = status;
        report("call1 status ", statusText(status));
        sendStatus();
    }

    void sendStatus() { m_object->emitSignal("StatusChanged").onInterface(callInterface).withArguments(m_status); }

    void onAccept()
    {
        report("call1 command accept");
        if (m_status == Incoming)
            setStatus(Active);
    }

    void onReject(uint32_t reason)
    {
        report("call1 command reject ", reason);
        end();
    }

    void onSetHold(bool hold)
    {
        report("call1 command hold ", hold ? "on" : "off");
        if (m_status == (hold ? Active : Held))
            setStatus(hold ? Held : Active);
    }

    template <typename Getter>
    void addProperty(const std::string &name, Getter getter)
    {
        m_object->registerProperty(name).onInterface(callInterface).withGetter(std::move(getter));
    }

    void addCallInterface()
    {
        m_object->registerMethod("Accept").onInterface(callInterface).implementedAs([this] { onAccept(); });
        m_object->registerMethod("Reject").onInterface(callInterface).implementedAs([this](uint32_t reason) {
            onReject(reason);
        });
        m_object->registerMethod("SetHold").onInterface(callInterface).implementedAs([this](bool hold) {
            onSetHold(hold);
        });
        m_object->registerSignal("StatusChanged").onInterface(callInterface).withParameters<uint32_t>();
        addProperty("Incoming", [] { return true; });
        addProperty("Holdable", [] { return true; });
        addProperty("Status", [this] { return m_status; });
        addProperty("RemoteName", [this] { return m_name; });
        addProperty("RemoteHandle", [this] { return m_address; });
        addProperty("Uri", [this] { return m_address; });
        addProperty("LocalName", [] { return std::string("sdbus-c++ example"); });
        addProperty("LocalHandle", [] { return std::string(); });
    }

    void addDtmfInterface()
    {
        m_object->registerMethod("SendDTMF").onInterface(dtmfInterface).implementedAs([](const std::string &tones) {
            report("call1 command tones ", quoted(tones));
        });
    }

    void addAudioInterface()
    {
        m_object->registerMethod("UpdateAudioRoute")
            .onInterface(audioInterface)
            .implementedAs([](bool muted, const std::string &input, const std::string &output) {
                report("call1 audio-route ", routeText(muted, input, output));
            });
        m_object->registerMethod("UpdateAudioRouteState")
            .onInterface(audioInterface)
            .implementedAs([](const std::vector<Device> &devices, bool muted, const std::string &input,
                               const std::string &output) {
                std::string ids;
                for (const Device &device : devices)
                    ids += ' ' + quoted(device.get<0>());
                report("call1 audio-state ", routeText(muted, input, output), " devices=", devices.size(), ids);
            });
        m_object->registerSignal("RequestAudioRoute")
            .onInterface(audioInterface)
            .withParameters<std::string, std::string>();
        m_object->registerSignal("RequestMute").onInterface(audioInterface).withParameters<bool>();
    }

    const std::string m_name;
    const std::string m_address;
    uint32_t m_status = Incoming;
    bool m_isOver = false;
    std::unique_ptr<sdbus::IObject> m_object;
};

// Follows the host's name, and registers whenever somebody takes it.
class HostLink
{
public:
    // What happens when the host has answered, and when it says that it shows an object.
    struct Handlers
    {
        std::function<void()> registered;
        std::function<void(const std::string &path, const Interfaces &interfaces)> shown;
    };

    HostLink(sdbus::IConnection &bus, std::string name, Handlers handlers)
        : m_bus(bus),
          m_name(std::move(name)),
          m_handlers(std::move(handlers)),
          m_ownName(bus.getUniqueName()),
          m_daemon(sdbus::createProxy(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus"))
    {
        m_daemon->uponSignal("NameOwnerChanged")
            .onInterface("org.freedesktop.DBus")
            .call([this](const std::string &name, const std::string &, const std::string &owner) {
                if (name == m_name)
                    setOwner(owner);
            });
        m_daemon->finishRegistration();
        m_daemon->callMethodAsync("GetNameOwner")
            .onInterface("org.freedesktop.DBus")
            .withArguments(m_name)
            .uponReplyInvoke([this](const sdbus::Error *error, const std::string &owner) {
                if (error)
                    report("waiting for host ", m_name);
                else if (!m_host) // the bus may have told of it before
                    setOwner(owner);
            });
    }

private:
    void setOwner(const std::string &owner)
    {
        if (m_host)
            report("host gone");
        m_host.reset();
        if (owner.empty())
            report("waiting for host ", m_name);
        else
            registerWith(owner);
    }

    // The proxy stands for the program that has the name now, so that no other is listened to.
    void registerWith(const std::string &owner)
    {
        report("host appeared ", owner);
        m_host = sdbus::createProxy(m_bus, owner, servicePath);
        m_host->uponSignal("InterfacesAdded")
            .onInterface("zelkovar.Call.ServiceManager1")
            .call([this](const std::string &application, const sdbus::ObjectPath &path, const Interfaces &interfaces) {
                if (application == m_ownName)
                    m_handlers.shown(path, interfaces);
            });
        m_host->finishRegistration();
        m_host->callMethodAsync("RegisterCallManager")
            .onInterface("zelkovar.Call.Service1")
            .withArguments(sdbus::ObjectPath(managerPath))
            .uponReplyInvoke([this](const sdbus::Error *error) { onReply(error); });
    }

    void onReply(const sdbus::Error *error)
    {
        if (error) {
            report("refused ", managerPath, ' ', error->getName(), ' ', quoted(error->getMessage()));
        } else {
            report("registered ", managerPath);
            m_handlers.registered();
        }
    }

    sdbus::IConnection &m_bus;
    const std::string m_name;
    const Handlers m_handlers;
    const std::string m_ownName;
    std::unique_ptr<sdbus::IProxy> m_daemon;
    std::unique_ptr<sdbus::IProxy> m_host;
};

struct Options
{
    std::string host = "org.tarnwickle.voicecall";
    std::string name;
    std::string address = "sip:caller@example.org";
};

class Example
{
public:
    Example(sdbus::IConnection &bus, const Options &options)
        : m_bus(bus),
          m_manager(sdbus::createObject(bus, managerPath)),
          m_options(options)
    {
        report("connected ", bus.getUniqueName());
        m_manager->addObjectManager();
        m_link = std::make_unique<HostLink>(bus, options.host,
            HostLink::Handlers{[this] { ring(); },
                [this](const std::string &path, const Interfaces &interfaces) { onShown(path, interfaces); }});
    }

    void endCall()
    {
        if (m_call)
            m_call->end();
    }

    // Handles all that has arrived. Throws sdbus::Error when the bus has gone.
    void process()
    {
        do {
            if (m_call && m_call->isOver())
                m_call.reset();
        } while (m_bus.processPendingRequest());
    }

private:
    // Only when the registration is answered may the call be announced. Before, it would be reported
    // twice: by its announcement, and again in what the host asks for during the registration. A call
    // that is there already is told by the latter.
    void ring()
    {
        if (std::exchange(m_hasRung, true))
            return;
        m_call = std::make_unique<Call>(m_bus, m_options.name, m_options.address);
        m_call->announce();
    }

    void onShown(const std::string &path, const Interfaces &interfaces)
    {
        const auto call = interfaces.find(callInterface);
        if (!m_call || m_call->isOver() || path != callPath || call == interfaces.end())
            return;
        const auto status = call->second.find("Status");
        if (status != call->second.end() && status->second.containsValueOfType<uint32_t>())
            m_call->onShown(status->second.get<uint32_t>());
    }

    sdbus::IConnection &m_bus;
    std::unique_ptr<sdbus::IObject> m_manager;
    const Options m_options;
    bool m_hasRung = false;
    std::unique_ptr<Call> m_call;
    std::unique_ptr<HostLink> m_link;
};

// What is typed, line by line.
class Input
{
public:
    explicit Input(std::function<void(const std::string &)> onLine) : m_onLine(std::move(onLine)) { }

    // False when there is no more.
    bool read()
    {
        std::array<char, 1024> piece; // NOLINT(cppcoreguidelines-pro-type-member-init): read() fills it
        const ssize_t size = ::read(STDIN_FILENO, piece.data(), piece.size());
        if (size <= 0)
            return false;
        m_typed.append(piece.data(), size_t(size));
        for (size_t end = m_typed.find('\n'); end != std::string::npos; end = m_typed.find('\n')) {
            const std::string line = m_typed.substr(0, end);
            m_typed.erase(0, end + 1);
            m_onLine(line);
        }
        return true;
    }

private:
    const std::function<void(const std::string &)> m_onLine;
    std::string m_typed;
};

// SIGINT and SIGTERM, as something that can be polled.
int stopSignals()
{
    sigset_t stops;
    sigemptyset(&stops);
    sigaddset(&stops, SIGINT);
    sigaddset(&stops, SIGTERM);
    sigprocmask(SIG_BLOCK, &stops, nullptr);
    return signalfd(-1, &stops, SFD_CLOEXEC);
}

void run(sdbus::IConnection &bus, const Options &options)
{
    bool isLeaving = false;
    Example example(bus, options);
    Input input([&](const std::string &line) {
        if (line == "hangup")
            example.endCall();
        else if (line == "quit")
            isLeaving = true;
        else
            std::cerr << program << ": unknown command \"" << line << "\"; there are hangup and quit\n";
    });

    enum { Bus, Typed, Stop };
    std::array<pollfd, 3> sources{{{-1, 0, 0}, {STDIN_FILENO, POLLIN, 0}, {stopSignals(), POLLIN, 0}}};
    while (!isLeaving) {
        example.process();
        const sdbus::IConnection::PollData data = bus.getEventLoopPollData();
        sources[Bus] = {data.fd, data.events, 0};
        poll(sources.data(), sources.size(), data.getPollTimeout());
        if (sources[Typed].revents && !input.read())
            sources[Typed].fd = -1; // the end of the input is not the end of the call
        if (sources[Stop].revents)
            isLeaving = true;
    }
    example.endCall();
    // What was sent last may still wait to be written.
    example.process();
    close(sources[Stop].fd);
}

bool isBusName(const std::string &text)
{
    static const std::regex form(R"((:[\w-]+(\.[\w-]+)+)|([A-Za-z_-][\w-]*(\.[A-Za-z_-][\w-]*)+))");
    return text.size() <= 255 && std::regex_match(text, form);
}

bool isUtf8(const std::string &text) { return mbstowcs(nullptr, text.c_str(), 0) != size_t(-1); }

// What is wrong with them, so that the bus would not take it; empty when nothing is.
std::string faultOf(const Options &options)
{
    if (!isBusName(options.host))
        return "--host is no bus name; one is like org.example.Host";
    if (!isUtf8(options.name) || !isUtf8(options.address))
        return "--name and --address must be UTF-8";
    return {};
}

// False when they are wrong; standard error says why.
bool readOptions(int argc, char *argv[], Options *options)
{
    static const std::array<option, 4> known{{{"host", required_argument, nullptr, 0},
        {"name", required_argument, nullptr, 0}, {"address", required_argument, nullptr, 0}, {}}};
    const std::array<std::string *, 3> values{&options->host, &options->name, &options->address};

    int index = 0;
    int result = 0;
    while ((result = getopt_long(argc, argv, "", known.data(), &index)) == 0)
        *values.at(size_t(index)) = optarg;
    if (result != -1)
        return false; // getopt has said why
    const std::string fault = optind < argc
        ? '\'' + std::string(argv[optind]) + "' is no option; there are --host, --name and --address"
        : faultOf(*options);
    if (!fault.empty())
        std::cerr << program << ": " << fault << '\n';
    return fault.empty();
}

int start(int argc, char *argv[])
{
    Options options;
    if (!readOptions(argc, argv, &options))
        return 2;
    std::string trouble = "no session bus";
    try {
        const auto bus = sdbus::createSessionBusConnection();
        trouble = "the session bus has gone";
        run(*bus, options);
        return 0;
    } catch (const sdbus::Error &error) {
        std::cerr << program << ": " << trouble << ": " << error.getMessage() << '\n';
        return 3;
    }
}

} // namespace

int main(int argc, char *argv[])
{
    std::setlocale(LC_CTYPE, "C.UTF-8");
    try {
        return start(argc, argv);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s: %s\n", program.c_str(), error.what());
        return 1;
    }
}
