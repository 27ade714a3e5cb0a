// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "commands/follower.h"

#include "analysis/names.h"

#include <glib-unix.h>

static constexpr Time askingInterval = 3000 * milliseconds;
static constexpr Time searchDelay = 300 * milliseconds;
// What is being handled by the bus while the clock is read.
static constexpr Time grace = 50 * milliseconds;

Follower::Follower(const std::string &host, const std::string &application) : m_analysis(host), m_selection(application)
{
}

bool Follower::start(std::string *error)
{
    m_connection = Bus::connect(error);
    if (!m_connection)
        return false;
    m_bus = std::make_unique<Bus>(m_connection.get());
    if (!m_monitor.start(error))
        return false;
    askForWhatIs();
    return true;
}

void Follower::learn(const std::string &unique)
{
    const unsigned pid = m_bus->processOf(unique);
    const std::string program = pid != 0 ? programOf(pid) : "";
    m_selection.learn(unique, pid, program);
    m_analysis.learnProgram(unique, pid, program);
}

void Follower::askForWhatIs()
{
    const std::string &host = m_analysis.world().hostName;
    m_bus->ownerOf(host);
    if (!m_selection.isEverybody() && m_selection.text()[0] != ':')
        m_selection.learnOwner(m_bus->ownerOf(m_selection.text()));
    for (const std::string &name : m_bus->uniqueNames())
        learn(name);
    const Variant managers
        = m_bus->ask(host, std::string(Names::servicePath), Names::serviceManager, "ListCallManagers");
    if (!managers || !hasType(managers.get(), "a(so)"))
        return;
    for (gsize i = 0, count = g_variant_n_children(managers.get()); i < count; ++i) {
        const Variant entry = child(managers.get(), i);
        const std::string name(textOf(child(entry.get(), 0).get()));
        const std::string path(textOf(child(entry.get(), 1).get()));
        m_bus->ask(name, path, Names::objectManager, "GetManagedObjects");
    }
}

void Follower::keepAsking()
{
    m_isAsking = true;
    const auto next = m_analysis.onEvent;
    m_analysis.onEvent = [this, next](const Occasion &occasion) {
        if (next)
            next(occasion);
        if (occasion.event == Event::SnapshotFailed)
            m_toSearch[occasion.application->name] = now() + searchDelay;
    };
}

void Follower::askAgain()
{
    if (!m_isAsking || now() - m_askedAt < askingInterval)
        return;
    for (const auto &[name, application] : m_analysis.world().applications) {
        // Who has not answered the last question is not asked the next one.
        if (m_askedAt != 0 && application.lastSent < m_askedAt && application.isBorn && !application.calls.empty())
            continue;
        for (const auto &[path, manager] : application.managers) {
            if (manager.isReplied && !manager.hasFailed)
                m_bus->askAside(name, path, Names::objectManager, "GetManagedObjects");
        }
    }
    m_askedAt = now();
}

void Follower::search()
{
    for (auto entry = m_toSearch.begin(); entry != m_toSearch.end();) {
        if (now() < entry->second) {
            ++entry;
            continue;
        }
        const Application *application = m_analysis.world().find(entry->first);
        std::vector<std::string> names = {entry->first};
        for (const auto &[name, pid] : m_analysis.world().processes) {
            if (application && application->pid != 0 && pid == application->pid && name != entry->first)
                names.push_back(name);
        }
        entry = m_toSearch.erase(entry);
        for (const std::string &name : names) {
            for (const std::string &path : m_bus->objectManagers(name))
                m_bus->askAside(name, path, Names::objectManager, "GetManagedObjects");
        }
    }
}

void Follower::handle(const Monitor::Item &item)
{
    GVariant *body = g_dbus_message_get_body(item.message.get());
    const Message message(item.message.get(), item.time, item.number, body ? g_variant_get_size(body) : 0);
    if (onMessage)
        onMessage(item);
    m_analysis.add(message);
    if (message.sender != Names::bus || message.member != "NameOwnerChanged" || message.signature != "sss")
        return;
    const std::string name(textOf(child(body, 0).get()));
    if (name.substr(0, 1) == ":" && textOf(child(body, 1).get()).empty() && name != m_bus->uniqueName())
        learn(name);
    else if (name == m_selection.text())
        m_selection.learnOwner(std::string(textOf(child(body, 2).get())));
}

void Follower::handlePending()
{
    for (Monitor::Item item = m_monitor.take(); item.message; item = m_monitor.take())
        handle(item);
    m_analysis.advance(now() - grace);
    askAgain();
    search();
}

static gboolean stopped(gpointer flag)
{
    *static_cast<bool *>(flag) = true;
    return G_SOURCE_CONTINUE;
}

bool Follower::run(std::string *error)
{
    const guint interrupt = g_unix_signal_add(SIGINT, stopped, &m_isStopped);
    const guint terminate = g_unix_signal_add(SIGTERM, stopped, &m_isStopped);
    // Timeouts of rules are judged a tenth of a second late at most.
    const guint tick = g_timeout_add(
        100, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
    while (!m_isStopped && !m_monitor.isLost()) {
        g_main_context_iteration(nullptr, TRUE);
        handlePending();
    }
    if (m_monitor.isLost() && !m_isStopped)
        *error = "the bus has gone, or has thrown the monitor out";
    g_source_remove(interrupt);
    g_source_remove(terminate);
    g_source_remove(tick);
    return error->empty();
}
