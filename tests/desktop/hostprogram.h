// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_HOSTPROGRAM_H
#define TESTS_HOSTPROGRAM_H

#include "program.h"
#include "scriptedapplication.h"

/** voicecalld with fake plug-ins, and a client of it on the bus. Values are written in GVariant text form. */
class HostProgram
{
public:
    static QString service() { return QStringLiteral("org.tarnwickle.voicecall"); }
    static QString root() { return QStringLiteral("/org/tarnwickle/voicecall"); }

    /** The object path of a call. */
    static QString call(const QString &id) { return root() + QStringLiteral("/calls/") + id; }

    /** Starts it with the fake plug-in, and waits until it is ready. */
    bool start(const QStringList &arguments = {QStringLiteral("--plugin"), QStringLiteral(FAKE_PLUGIN)},
        const QStringList &environment = {});

    Program &program() { return m_program; }

    /** Ends it as a supervisor would; its exit code. */
    int end();

    /** Calls a method of one of the host's own interfaces, named without "org.tarnwickle.voicecall.". */
    QString ask(const QString &path, const QString &interfaceAndMember, const QString &arguments = {});

    /** Calls a method of a bus standard interface, named without "org.freedesktop.DBus.". */
    QString askStandard(const QString &path, const QString &interfaceAndMember, const QString &arguments = {});

    /** The value of a property of the root object, such as "<'earpiece'>"; interface named as for ask(). */
    QString property(const QString &interface, const QString &name);

    /** The value of a property of a call. */
    QString callProperty(const QString &id, const QString &name);

    /** Makes the fake plug-in do something. */
    QString plugin(const QString &member, const QString &arguments = {});

    /** The commands and audio signals that reached the fake plug-in since the last time, as printed by GVariant. */
    QString pluginNotes() { return plugin(QStringLiteral("TakeNotes")); }

    /** Adds a call to the provider; its id. */
    QString addCall(const QString &provider, const QString &state = QStringLiteral("@a{sv} {}"));

    /** From now on the host's signals are recorded. */
    void listen();

    /** The host's signals since the last time, as "/path Interface.Member(arguments)", all of them. */
    QStringList takeSignals();

private:
    Program m_program;
    ScriptedApplication m_client;
};

#endif
