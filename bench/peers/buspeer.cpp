// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// A receiver on the bus's reference library, without Qt: buspeer NAME. Answers a registration, reports signals,
// and sends commands to the application that registered last.

#include "busconnection.h"
#include "control.h"

#include <cstdio>
#include <cstdlib>
#include <poll.h>
#include <unistd.h>

namespace {

class Peer
{
public:
    explicit Peer(const char *name) : m_bus(std::getenv("DBUS_SESSION_BUS_ADDRESS"))
    {
        m_bus.call(Message::call(busDaemon, "RequestName").string(name).number(0));
    }

    void run()
    {
        report(eventNow(EventKind::Ready));
        pollfd descriptors[] = {{m_bus.descriptor(), POLLIN, 0}, {controlDescriptor, POLLIN, 0}};
        for (bool isWanted = true; isWanted;) {
            m_bus.pump([this](const Message &message) { handle(message); });
            poll(descriptors, 2, -1);
            if (descriptors[1].revents)
                isWanted = serve();
        }
    }

private:
    void handle(const Message &message)
    {
        const std::string member = message.member();
        if (member == "StatusChanged")
            report(eventNow(EventKind::Status));
        else if (member == "InterfacesAdded")
            report(eventNow(EventKind::CallAdded));
        else if (member == "InterfacesRemoved")
            report(eventNow(EventKind::CallGone));
        else if (member == "RegisterCallManager")
            acceptRegistration(message);
    }

    void acceptRegistration(const Message &message)
    {
        m_application = dbus_message_get_sender(message.raw());
        m_bus.send(Message::call(busDaemon, "AddMatch").string("type='signal',sender='" + m_application + "'"));
        m_bus.send(Message::reply(message));
    }

    bool serve()
    {
        Request request = {};
        if (read(controlDescriptor, &request, sizeof request) != sizeof request)
            return false;
        const Event done = eventNow(EventKind::Done);
        m_bus.send(
            Message::call({m_application, "/app/" + std::to_string(request.call), "zelkovar.Call.Call1"}, "Accept"));
        report(done);
        return true;
    }

    static const Target busDaemon;
    BusConnection m_bus;
    std::string m_application;
};

const Target Peer::busDaemon = {"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus"};

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 2) {
        std::fprintf(stderr, "Usage: buspeer NAME\n");
        return 2;
    }
    try {
        Peer(argv[1]).run();
    } catch (const std::exception &error) {
        std::fprintf(stderr, "buspeer: %s\n", error.what());
        return 1;
    }
}
