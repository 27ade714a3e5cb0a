// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_CLIENTTEST_H
#define TESTS_CLIENTTEST_H

#include "fakehost.h"
#include "printers.h"
#include "waitfor.h"

#include <QtTest/QSignalSpy>
#include <RingletClient/callmanager.h>
#include <gmock/gmock.h>
#include <memory>

/** A host, not yet on the bus under its name, and an application in this process that looks for it. */
class ClientTest : public testing::Test
{
protected:
    ClientTest();

    /** Makes the host appear and waits until the application is registered; forgets what it saw. */
    void registerWithHost();

    /** An incoming call that can do everything, known to the host; forgets what the host saw. */
    Ringlet::Call *addKnownCall(const Ringlet::CallDescription &description = {});

    /** The same, answered. */
    Ringlet::Call *addActiveCall();

    bool waitForState(Ringlet::CallManager::State state) const;

    /** Calls a method of the call's; `interface` without its common prefix. The name of the error, if any. */
    QString command(
        const QString &path, const QString &interface, const QString &member, const QVariantList &arguments);

    /** Sends the host's audio, and waits until the application has it. */
    void updateAudioState(const Ringlet::Call *call, bool muted, const FakeDeviceList &devices = {});
    void updateAudioRoute(const Ringlet::Call *call, bool muted, const QString &input, const QString &output);

    /** What has arrived at the host when everything sent so far has. */
    QStringList wire();

    FakeHost host;
    const QString path = QStringLiteral("/org/example/calls");
    std::unique_ptr<Ringlet::CallManager> calls;
};

#endif
