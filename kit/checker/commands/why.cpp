// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "analysis/comparison.h"
#include "analysis/names.h"
#include "commands/commands.h"
#include "commands/follower.h"
#include "commands/output.h"

#include <algorithm>
#include <cstdio>

namespace {

/** Looks once at everything as it is now. */
class Examination
{
public:
    Examination(GDBusConnection *connection, const Options &options)
        : m_analysis(options.host),
          m_bus(connection),
          m_selection(options.argument(0))
    {
        m_bus.onMessage = [this](GDBusMessage *message) {
            m_analysis.add(Message(message, now(), 0, 0));
            if (g_dbus_message_get_message_type(message) == G_DBUS_MESSAGE_TYPE_METHOD_RETURN)
                m_last.reset(static_cast<GDBusMessage *>(g_object_ref(message)));
        };
    }

    void look()
    {
        lookForHost();
        for (const std::string &name : m_bus.uniqueNames())
            learn(name);
        const World &world = m_analysis.world();
        if (world.host.empty())
            return;
        m_bus.ask(world.hostName, std::string(Names::servicePath), Names::serviceManager, "ListCallManagers");
        lookAtManagers();
        lookAtStrangers();
        lookAtHost();
        // What was to come behind this is not awaited, but judged.
        constexpr Time longEnough = 10000 * milliseconds;
        m_analysis.advance(now() + longEnough);
    }

    Findings &findings() { return m_analysis.findings(); }
    bool isAnybodyFound() const { return m_selection.isEverybody() || !m_meant.empty(); }
    bool isWanted(const Finding &finding) const { return m_selection.contains(finding.application); }

private:
    void lookForHost()
    {
        m_bus.ownerOf(m_analysis.world().hostName);
        const Message moment;
        m_analysis.happen({m_analysis, m_analysis.world(), Event::HostSought, moment});
        if (m_selection.isEverybody() || m_selection.text()[0] == ':')
            return;
        const std::string owner = m_bus.ownerOf(m_selection.text());
        if (!owner.empty())
            m_selection.learnOwner(owner);
    }

    void learn(const std::string &name)
    {
        const unsigned pid = m_bus.processOf(name);
        const std::string program = pid != 0 ? programOf(pid) : "";
        m_analysis.learnProgram(name, pid, program);
        if (m_selection.learn(name, pid, program) || m_selection.contains(name))
            m_meant.push_back(name);
    }

    void lookAtManagers()
    {
        std::vector<std::pair<std::string, std::string>> managers;
        for (const auto &[name, application] : m_analysis.world().applications) {
            for (const auto &[path, manager] : application.managers)
                managers.emplace_back(name, path);
        }
        for (const auto &[name, path] : managers) {
            if (!isOfInterest(name))
                continue;
            const Variant objects = m_bus.ask(name, path, Names::objectManager, "GetManagedObjects");
            // A program that does not answer this would not answer what follows either.
            const bool isMute = !objects && m_analysis.world().find(name)->managers[path].cause >= 0;
            if (!objects && !isMute)
                search(name);
        }
    }

    // Those of the same process count as well: it may be they that have registered.
    bool isOfInterest(const std::string &name)
    {
        const Application *application = m_analysis.world().find(name);
        const ByName<unsigned> &processes = m_analysis.world().processes;
        return std::any_of(m_meant.begin(), m_meant.end(), [&](const std::string &meant) {
            const auto process = processes.find(meant);
            const bool isSibling = application && application->pid != 0 && process != processes.end()
                && process->second == application->pid;
            return meant == name || isSibling;
        });
    }

    // Where else the object manager may be: on this connection, or on another of its process.
    void search(const std::string &name)
    {
        const Application *application = m_analysis.world().find(name);
        std::vector<std::string> names = {name};
        for (const auto &[other, pid] : m_analysis.world().processes) {
            if (application && pid == application->pid && pid != 0 && other != name)
                names.push_back(other);
        }
        for (const std::string &one : names) {
            for (const std::string &path : m_bus.objectManagers(one))
                m_bus.ask(one, path, Names::objectManager, "GetManagedObjects");
        }
    }

    // Only whoever was named is asked without having registered.
    void lookAtStrangers()
    {
        if (m_selection.isEverybody())
            return;
        for (const std::string &name : m_meant) {
            const Application *application = m_analysis.world().find(name);
            if (application && !application->managers.empty())
                continue;
            for (const std::string &path : m_bus.objectManagers(name))
                m_bus.ask(name, path, Names::objectManager, "GetManagedObjects");
        }
    }

    void lookAtHost()
    {
        m_last.reset();
        m_bus.ask(
            m_analysis.world().hostName, std::string(Names::desktopPath), Names::objectManager, "GetManagedObjects");
        if (m_last)
            Comparison::compare(m_analysis, Message(m_last.get(), now(), 0, 0));
    }

    Analysis m_analysis;
    Bus m_bus;
    Selection m_selection;
    std::vector<std::string> m_meant;
    BusMessage m_last;
};

} // namespace

int Commands::why(const Options &options)
{
    std::string error;
    const Connection connection = Bus::connect(&error);
    if (!connection) {
        std::fprintf(stderr, "ringlet-check: %s\n", error.c_str());
        return Exit::impossible;
    }
    auto examination = std::make_unique<Examination>(connection.get(), options);
    examination->look();
    const auto isWanted = [&examination](const Finding &finding) { return examination->isWanted(finding); };
    // What was only on its way is over when one looks again.
    if (examination->findings().isAnyCounted(isWanted)) {
        g_usleep(500 * 1000UL);
        examination = std::make_unique<Examination>(connection.get(), options);
        examination->look();
    }
    if (!examination->isAnybodyFound()) {
        std::fprintf(stderr, "ringlet-check: nothing on the bus is called %s\n", options.argument(0).c_str());
        return Exit::impossible;
    }
    return Output::print(examination->findings(), options.format, isWanted);
}
