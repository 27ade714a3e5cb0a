// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_TESTBED_H
#define TESTS_TESTBED_H

#include "stubbus.h"

#include <QtCore/QObject>

/** An object on the host's connection that the host's main thread answers for, when it has nothing else to do. */
class Barrier : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "x.Barrier")

public Q_SLOTS:
    void Pass() { }
};

/**
 * What one process needs for any number of inputs: the stub bus as its session bus, and a way to wait on it. Needs
 * an application object, and comes before anything that uses the session bus.
 */
class TestBed
{
public:
    TestBed();

    StubBus &bus() { return m_bus; }

    /** Returns when everything that was sent has been handled, and what was sent in turn has arrived. */
    void settle();

    /** Sends a call and runs the event loop until its reply has come. */
    Message call(Message call);

    /** Descriptors that the process has open. */
    static int openDescriptors();

private:
    StubBus m_bus;
    Barrier m_barrier;
    std::string m_self;
};

#endif
