// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "call.h"

#include <map>

static constexpr auto objectManagerInterface = "org.freedesktop.DBus.ObjectManager";

Call::Call(BusConnection &bus, HostClient &host, const CallScript &script, const std::string &manager,
    const std::string &uri, bool staysUp)
    : m_bus(bus),
      m_host(host),
      m_script(script),
      m_manager(manager),
      m_path(manager + '/' + uri),
      m_uri(uri),
      m_staysUp(staysUp),
      m_status(script.status)
{
}

ObjectReport Call::report() const
{
    return {m_path, m_script.interfaces,
        {
            {"Holdable", m_script.holdable},
            {"Incoming", m_script.isIncoming()},
            {"LocalHandle", std::string("sip:soak@example.org")},
            {"LocalName", std::string("Soak")},
            {"RemoteHandle", m_uri},
            {"RemoteName", std::string("Ada Lovelace")},
            {"Status", m_status},
            {"Uri", m_uri},
        }};
}

void Call::announce() { announce(report()); }

void Call::announce(const ObjectReport &what)
{
    const Message message = Message::signal(m_manager, objectManagerInterface, "InterfacesAdded");
    DBusMessageIter end;
    dbus_message_iter_init_append(message.raw(), &end);
    what.appendTo(&end);
    m_bus.send(message);
}

void Call::withdraw()
{
    m_bus.send(Message::signal(m_manager, objectManagerInterface, "InterfacesRemoved")
                   .objectPath(m_path)
                   .strings({callInterface, dtmfInterface, audioInterface}));
}

void Call::shown(const std::string &hostPath)
{
    if (!m_hostPath.empty())
        return;
    m_hostPath = hostPath;
    advance();
}

void Call::commanded(const std::string &member)
{
    if (m_hostPath.empty() || isOver() || !m_asked || member != step().awaited)
        return;
    perform();
    advance();
}

// The user does nothing before the host shows what there is to do it about.
void Call::askHost()
{
    static const std::map<uint32_t, int> shownAs = {{Dialing, 3}, {Ringing, 5}, {Active, 1}, {Held, 2}};
    if (m_asked || m_shownStatus != shownAs.at(m_status))
        return;
    m_asked = true;
    m_host.command(m_hostPath, step().hostCommand);
}

void Call::statusShown(int hostStatus)
{
    m_shownStatus = hostStatus;
    if (!m_hostPath.empty() && !isOver())
        askHost();
}

// Steps that wait for nothing follow one another at once.
void Call::advance()
{
    while (!isOver() && step().awaited.empty())
        perform();
    if (!isOver())
        askHost();
    else if (!m_staysUp)
        withdraw();
}

void Call::perform()
{
    const Step &now = step();
    ++m_position;
    m_asked = false;
    if (now.status != 0) {
        m_status = now.status;
        m_bus.send(Message::signal(m_path, callInterface.c_str(), "StatusChanged").number(m_status));
    }
    if (now.request != Step::None)
        request(now.request);
    if (!now.interfaces.empty()) {
        const bool again = now.interfaces.front() == callInterface;
        announce(again ? report() : ObjectReport{m_path, now.interfaces, {}});
    }
}

void Call::request(Step::Request what)
{
    if (what == Step::Route) {
        m_bus.send(
            Message::signal(m_path, audioInterface.c_str(), "RequestAudioRoute").string("headset").string("speaker"));
        return;
    }
    m_bus.send(Message::signal(m_path, audioInterface.c_str(), "RequestMute").boolean(what == Step::Mute));
}
