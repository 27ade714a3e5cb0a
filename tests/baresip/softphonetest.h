// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_SOFTPHONETEST_H
#define TESTS_SOFTPHONETEST_H

#include "baresip.h"
#include "desktophost.h"
#include "portblock.h"

#include <gmock/gmock.h>

/** voicecalld with the plug-in, the bridge, the baresip that it bridges, and others that call and are called. */
class SoftphoneTest : public testing::Test
{
protected:
    /** Frequencies of the tones that they send. */
    static constexpr int nearTone = 440;
    static constexpr int farTone = 800;

    SoftphoneTest();
    void SetUp() override;
    /** Shows what everybody has printed when the test has failed. */
    void TearDown() override;

    /** Starts the bridge and waits until it has both baresip and the host. */
    bool startBridge(const QStringList &options = {});
    /** Ends the bridge with SIGTERM; its exit code. */
    int stopBridge();
    /** Ends the bridge without a word. */
    void killBridge();

    /** The far end calls; returns when it rings in the host. */
    bool ring();
    /** The same, answered from the host; returns when sound goes both ways. */
    bool talk();

    /** Properties of the host's call with this address; empty when there is none. */
    QVariantMap hostCall(const QString &address) const;
    /** Calls a method of the host's call with this address; the name of the error, empty when there was none. */
    QString command(const QString &address, const QString &method, const QVariantList &arguments = {}) const;

    /** For addresses in host.table(). */
    static QString row(const Baresip &peer, const char *status);

    PortBlock ports;
    DesktopHost host;
    Program bridge;
    /** The bridged one. */
    Baresip ann;
    Baresip ben;
    Baresip cid;
};

#endif
