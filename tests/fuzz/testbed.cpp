// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "testbed.h"

#include "finding.h"

#include <QtCore/QAbstractEventDispatcher>
#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtDBus/QDBusConnection>

constexpr const char *barrierPath = "/barrier";

TestBed::TestBed() : m_bus([dispatcher = QAbstractEventDispatcher::instance()] { dispatcher->wakeUp(); })
{
    qputenv("DBUS_SESSION_BUS_ADDRESS", QByteArray::fromStdString(m_bus.address()));
    QDBusConnection session = QDBusConnection::sessionBus();
    if (!session.isConnected() || !session.registerObject(barrierPath, &m_barrier, QDBusConnection::ExportAllSlots))
        reportFinding("the stub bus does not work");
    m_self = m_bus.join();
    // The bus layer delivers what comes before the event loop first runs out of order.
    settle();
}

void TestBed::settle()
{
    call(makeCall(StubBus::clientName(), barrierPath, "x.Barrier", "Pass"));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

Message TestBed::call(Message call)
{
    const unsigned ticket = m_bus.call(m_self, std::move(call));
    Message reply = m_bus.reply(ticket);
    while (!reply) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        reply = m_bus.reply(ticket);
    }
    return reply;
}

int TestBed::openDescriptors() { return QDir("/proc/self/fd").entryList(QDir::System | QDir::Files).size(); }
