// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "hostprogram.h"

#include <csignal>

static QStringList split(const QString &interfaceAndMember)
{
    return {interfaceAndMember.section(QLatin1Char('.'), 0, -2), interfaceAndMember.section(QLatin1Char('.'), -1)};
}

bool HostProgram::start(const QStringList &arguments, const QStringList &environment)
{
    m_program.setMustStay();
    return m_program.start(QStringLiteral(VOICECALLD), arguments, environment)
        && m_program.waitForOutput(QStringLiteral("voicecalld: ready"));
}

int HostProgram::end()
{
    m_program.signal(SIGTERM);
    return m_program.waitForExit();
}

QString HostProgram::ask(const QString &path, const QString &interfaceAndMember, const QString &arguments)
{
    const QStringList names = split(interfaceAndMember);
    return m_client.call(
        service(), path, QStringLiteral("org.tarnwickle.voicecall.") + names.at(0), names.at(1), arguments);
}

QString HostProgram::askStandard(const QString &path, const QString &interfaceAndMember, const QString &arguments)
{
    const QStringList names = split(interfaceAndMember);
    return m_client.call(
        service(), path, QStringLiteral("org.freedesktop.DBus.") + names.at(0), names.at(1), arguments);
}

// "(<value>,)"
static QString inner(const QString &tuple) { return tuple.mid(1, tuple.size() - 3); }

QString HostProgram::property(const QString &interface, const QString &name)
{
    return inner(askStandard(root(), QStringLiteral("Properties.Get"),
        QStringLiteral("'org.tarnwickle.voicecall.%1', '%2'").arg(interface, name)));
}

QString HostProgram::callProperty(const QString &id, const QString &name)
{
    return inner(askStandard(call(id), QStringLiteral("Properties.Get"),
        QStringLiteral("'org.tarnwickle.voicecall.Call1', '%1'").arg(name)));
}

QString HostProgram::plugin(const QString &member, const QString &arguments)
{
    return m_client.call(
        service(), QStringLiteral("/fakeplugin"), QStringLiteral("org.example.FakePlugin"), member, arguments);
}

QString HostProgram::addCall(const QString &provider, const QString &state)
{
    const QString reply = plugin(QStringLiteral("AddCall"), QStringLiteral("'%1', %2").arg(provider, state));
    return reply.mid(2, reply.size() - 5);
}

void HostProgram::listen()
{
    m_client.subscribe(QStringLiteral("type='signal',path_namespace='/org/tarnwickle/voicecall'"));
}

QStringList HostProgram::takeSignals()
{
    // An answer comes behind all signals that the host sent before it.
    askStandard(root(), QStringLiteral("Introspectable.Introspect"));
    const QStringList heard = m_client.signalsHeard().filter(root());
    m_client.forgetWhatArrived();
    return heard;
}
