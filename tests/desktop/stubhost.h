// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_STUBHOST_H
#define TESTS_STUBHOST_H

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusVirtualObject>

/** A host that has providers and nothing else, and answers as it is told; on a connection of its own. */
class StubHost : public QDBusVirtualObject
{
public:
    enum class Mood { Answers, Refuses, IsSilent };

    /** Takes the host's name. */
    explicit StubHost(Mood mood);
    /** Leaves the bus. */
    ~StubHost() override;

    /** From now on; what was asked in silence is answered now. */
    void setMood(Mood mood);

    /** What was asked so far. */
    int questionCount() const { return m_questions.size(); }

    /** Those that are there when it is asked. */
    QStringList providers;

    /** Sends a signal of its root object. */
    void emitSignal(const QString &interface, const QString &member, const QVariantList &arguments);

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;
    QString introspect(const QString &) const override { return {}; }

private:
    void answer(const QDBusMessage &question);
    QVariant contents(const QDBusMessage &question) const;

    QDBusConnection m_bus;
    Mood m_mood;
    QList<QDBusMessage> m_questions;
    QList<QDBusMessage> m_unanswered;
};

#endif
