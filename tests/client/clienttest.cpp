// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "clienttest.h"

using Ringlet::Call;
using Ringlet::CallManager;
using Ringlet::CallStatus;

ClientTest::ClientTest() : calls(std::make_unique<CallManager>(path)) { }

void ClientTest::registerWithHost()
{
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(waitForState(CallManager::State::Registered));
    ASSERT_TRUE(host.settle(path));
    host.forgetWire();
}

Call *ClientTest::addKnownCall(const Ringlet::CallDescription &description)
{
    if (calls->state() != CallManager::State::Registered)
        registerWithHost();
    Call *call = calls->addCall(description);
    waitFor([call] { return call->isShown(); });
    host.forgetWire();
    return call;
}

Call *ClientTest::addActiveCall()
{
    Call *call = addKnownCall();
    call->setStatus(CallStatus::Active);
    host.settle(path);
    host.forgetWire();
    return call;
}

bool ClientTest::waitForState(CallManager::State state) const
{
    return waitFor([this, state] { return calls->state() == state; });
}

QString ClientTest::command(
    const QString &object, const QString &interface, const QString &member, const QVariantList &arguments)
{
    return host.call(object, QStringLiteral("zelkovar.Call.") + interface, member, arguments).errorName();
}

void ClientTest::updateAudioState(const Call *call, bool muted, const FakeDeviceList &devices)
{
    ASSERT_EQ(command(call->path(), QStringLiteral("AudioControl1"), QStringLiteral("UpdateAudioRouteState"),
                  {QVariant::fromValue(devices), muted, QStringLiteral("mic"), QStringLiteral("ear")}),
        QString());
}

void ClientTest::updateAudioRoute(const Call *call, bool muted, const QString &input, const QString &output)
{
    ASSERT_EQ(command(call->path(), QStringLiteral("AudioControl1"), QStringLiteral("UpdateAudioRoute"),
                  {muted, input, output}),
        QString());
}

QStringList ClientTest::wire()
{
    host.settle(path);
    return host.wire();
}
