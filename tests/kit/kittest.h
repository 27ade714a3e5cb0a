// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_KITTEST_H
#define TESTS_KITTEST_H

#include "fakehost.h"
#include "printers.h"
#include "program.h"

#include <gmock/gmock.h>

/** A host, not yet on the bus under its name, and a program that looks for it. */
class KitTest : public testing::Test
{
protected:
    /** Makes the host appear, starts the simulator, and waits until it is registered. */
    void startSimulator(const QStringList &arguments = {});

    /** Types a command and waits until it has been carried out; false when it ended the program. */
    bool type(const QString &command);

    /** What is said on standard error about one command. */
    std::string complaintAbout(const QString &command);

    /** That a command is carried out without a word. */
    void expectDone(const QString &command);

    /** Lines of the program's output that begin with `start`. */
    QStringList linesThatStart(const QString &start);

    /** Runs the event loop until the program has printed the line. */
    bool waitForLine(const QString &line, int count = 1);

    QDBusMessage callInterface(const QString &call, const QString &member, const QVariantList &arguments = {});
    QDBusMessage updateAudioState(const QString &call, bool muted, const QString &input, const QString &output);
    QDBusMessage updateAudioRoute(const QString &call, bool muted, const QString &input, const QString &output);

    FakeHost host;
    Program program;
    /** Where the program's call objects are. */
    QString manager = QStringLiteral("/ringlet/sim");

private:
    int m_typed = 0;
};

#endif
