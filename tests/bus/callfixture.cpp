// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "callfixture.h"

const QString CallFixture::managerPath = "/m";
const QString CallFixture::callPath = "/m/c1";
const QString CallFixture::tones = "zelkovar.Call.DTMF1";
const QString CallFixture::audioControl = "zelkovar.Call.AudioControl1";
const QString CallFixture::active = "'Status': <uint32 5>";
const QString CallFixture::held = "'Status': <uint32 7>";
const QString CallFixture::incoming = "'Status': <uint32 3>, 'Incoming': <true>";
const QString CallFixture::holdableActive = "'Status': <uint32 5>, 'Holdable': <true>";

void CallFixture::SetUp()
{
    ASSERT_TRUE(factory.initialize());
    ASSERT_TRUE(factory.configure(&host));
    ASSERT_TRUE(application.registerCallManager(managerPath));
    provider = qobject_cast<CallProvider *>(host.providers.value(0));
    ASSERT_TRUE(provider);
    QObject::connect(provider, &CallProvider::interfacesAdded, &host,
        [this](const DBusCallObject &call, const QVariantMapMap &interfaces) {
            const QStringList names = interfaces.keys();
            host.note(QString("interfaces added %1 %2").arg(call.path.path(), names.join(',')));
        });
    QObject::connect(provider, &CallProvider::interfacesRemoved, &host,
        [this](const DBusCallObject &call, const QStringList &interfaces) {
            host.note(QString("interfaces removed %1 %2").arg(call.path.path(), interfaces.join(',')));
        });
    settle();
    host.events.clear();
}

QString CallFixture::callInterfaces(const QString &properties, const QStringList &further)
{
    QString text = QString("{'zelkovar.Call.Call1': {%1}").arg(properties);
    for (const QString &interface : further)
        text += QString(", '%1': {}").arg(interface);
    return text + '}';
}

AbstractVoiceCallHandler *CallFixture::addCall(
    const QString &properties, const QStringList &further, const QString &path)
{
    AbstractVoiceCallHandler *added = nullptr;
    const auto connection = QObject::connect(provider, &AbstractVoiceCallProvider::voiceCallAdded, &host,
        [&added](AbstractVoiceCallHandler *handler) { added = handler; });
    application.announce(managerPath, path, callInterfaces(properties, further));
    settle();
    QObject::disconnect(connection);
    return added;
}

void CallFixture::changeStatus(uint status, const QString &path)
{
    application.changeStatus(path, status);
    settle();
}

QStringList CallFixture::commands()
{
    settle();
    return application.commands();
}
