// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_CALLFIXTURE_H
#define TESTS_CALLFIXTURE_H

#include "calls/callprovider.h"
#include "plugin/callproviderfactory.h"
#include "printers.h"
#include "recordinghost.h"
#include "scriptedapplication.h"
#include "testclock.h"
#include "waitfor.h"

#include <gmock/gmock.h>

/**
 * A configured plug-in with one application, whose call manager stands at `managerPath` and has no objects
 * yet. Besides what RecordingHost notes, the host's list has what the provider tells of objects:
 *
 *     interfaces added PATH INTERFACE,INTERFACE          interfaces removed PATH INTERFACE,INTERFACE
 *
 * The list is empty when a test begins. Time stands still but for what a test lets pass, so that calls do not tell
 * of their durations meanwhile, however slow the machine is.
 */
class CallFixture : public testing::Test
{
protected:
    void SetUp() override;

    /** Text of an a{sa{sv}} with the call interface, whose properties are given, and others without any. */
    static QString callInterfaces(const QString &properties, const QStringList &further = {});

    /** Announces a call and returns its handler once all that it entails has happened; null when none came. */
    AbstractVoiceCallHandler *addCall(
        const QString &properties = {}, const QStringList &further = {}, const QString &path = callPath);

    /** Sends StatusChanged and returns when it has been handled. */
    void changeStatus(uint status, const QString &path = callPath);

    /** The commands that the application got, once all that was sent to it has arrived. */
    QStringList commands();

    /** Lets the host handle all that was sent to it. */
    void settle() { ASSERT_TRUE(application.settle()); }

    static const QString managerPath;
    static const QString callPath;
    static const QString tones;
    static const QString audioControl;
    /** Property texts of calls in these states. */
    static const QString active;
    static const QString held;
    static const QString incoming;
    static const QString holdableActive;

    TestClock clock;
    RecordingHost host;
    ScriptedApplication application;
    CallProviderFactory factory;
    CallProvider *provider = nullptr;
};

#endif
