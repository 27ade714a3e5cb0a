// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_HONESTAPPLICATION_H
#define TESTS_HONESTAPPLICATION_H

#include "scriptedapplication.h"

#include <QtCore/QVariantList>
#include <QtCore/QVector>
#include <QtDBus/QDBusMessage>
#include <functional>

/**
 * The application that must not notice what another one does: it carries one call throughout, and further
 * ones as asked. Each step is checked on both sides, by what the host shows and by what arrives here, and
 * fails with a reason when it did not come to be within the patience.
 */
class HonestApplication
{
public:
    /** How long the host may take for one step, in milliseconds. Beyond it, it counts as hanging. */
    explicit HonestApplication(int patience) : m_patience(patience) { }

    /** Registers, and brings up the call that lasts: it comes in, is answered, is active. */
    void bringUp();

    /** A whole call: comes in, is shown, answered, active, hung up, gone. */
    void makeCall();

    /**
     * The lasting call is held, or resumed, by the host, and tells its new status. `meanwhile` is done when
     * the command has been given, before it is waited for.
     */
    void exchange(const std::function<void()> &meanwhile = [] {});

    /** The lasting call is hung up by the host and goes. */
    void hangUp();

    /** Whether a command of the host for the lasting call arrives here at all; its status stays. */
    bool hearsCommands();

    /** Asks the host's main thread something; milliseconds until it answered. */
    int roundTrip();

    QString providerId() const;

    /** Times in microseconds from the host's command to its arrival here, one for each exchange. */
    QVector<qint64> commandTimes;
    /** From StatusChanged until the host shows the status. */
    QVector<qint64> statusTimes;

    ScriptedApplication &connection() { return m_application; }

private:
    void bringIn(const QString &path);
    void command(
        const QString &path, const QString &method, const QVariantList &arguments, const QString &expected,
        const std::function<void()> &meanwhile = [] {});
    void tellStatus(const QString &path, uint status, const QString &shown);
    void withdraw(const QString &path);
    QDBusMessage ask(
        const QString &path, const QString &interface, const QString &method, const QVariantList &arguments) const;
    QString statusOf(const QString &path) const;
    QString findInHost(const QString &path) const;

    int m_patience;
    int m_calls = 0;
    bool m_isHeld = false;
    ScriptedApplication m_application;
    /** Object paths in the host, by object path here. */
    QHash<QString, QString> m_shownAs;
};

#endif
