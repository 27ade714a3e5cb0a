// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "stubhost.h"

#include "desktop/callctl/hoststate.h"
#include "hostprogram.h"

#include <QtDBus/QDBusMetaType>
#include <QtDBus/QDBusObjectPath>
#include <stdexcept>

using Interfaces = QMap<QString, QVariantMap>;
using Objects = QMap<QDBusObjectPath, Interfaces>;
Q_DECLARE_METATYPE(Interfaces)
Q_DECLARE_METATYPE(Objects)

static const QString connectionName = QStringLiteral("stub host");

StubHost::StubHost(Mood mood)
    : m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName)),
      m_mood(mood)
{
    qDBusRegisterMetaType<Interfaces>();
    qDBusRegisterMetaType<Objects>();
    qDBusRegisterMetaType<Provider>();
    qDBusRegisterMetaType<ProviderList>();
    if (!m_bus.registerVirtualObject(HostProgram::root(), this) || !m_bus.registerService(HostProgram::service()))
        throw std::runtime_error("the host's name cannot be had");
}

StubHost::~StubHost() { QDBusConnection::disconnectFromBus(connectionName); }

void StubHost::setMood(Mood mood)
{
    m_mood = mood;
    QList<QDBusMessage> waiting;
    waiting.swap(m_unanswered);
    for (const QDBusMessage &question : qAsConst(waiting))
        answer(question);
}

void StubHost::emitSignal(const QString &interface, const QString &member, const QVariantList &arguments)
{
    QDBusMessage signal = QDBusMessage::createSignal(HostProgram::root(), interface, member);
    signal.setArguments(arguments);
    m_bus.send(signal);
}

bool StubHost::handleMessage(const QDBusMessage &message, const QDBusConnection &)
{
    m_questions.append(message);
    answer(message);
    return true;
}

void StubHost::answer(const QDBusMessage &question)
{
    if (m_mood == Mood::IsSilent)
        m_unanswered.append(question);
    else if (m_mood == Mood::Refuses)
        m_bus.send(question.createErrorReply(QDBusError::Failed, QStringLiteral("not now")));
    else
        m_bus.send(question.createReply(contents(question)));
}

QVariant StubHost::contents(const QDBusMessage &question) const
{
    if (question.member() == QLatin1String("GetManagedObjects"))
        return QVariant::fromValue(Objects());
    if (question.arguments().value(0) != QLatin1String("org.tarnwickle.voicecall.Manager1"))
        return QVariantMap();
    ProviderList list;
    for (const QString &id : providers)
        list.append({id, QStringLiteral("stub")});
    return QVariantMap({{QStringLiteral("Providers"), QVariant::fromValue(list)}});
}
