// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "soakprobe.h"

#include "leak.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/private/qdbusconnection_p.h>
#include <atomic>
#include <malloc.h>

extern Q_CORE_EXPORT quintptr qtHookData[];

namespace {

// Positions in the table that Qt keeps for inspection tools.
constexpr int objectAdded = 3;
constexpr int objectRemoved = 4;

// Objects are also made on the bus layer's own thread.
std::atomic<qint64> objects{0};

void added(QObject *) { ++objects; }

void removed(QObject *) { --objects; }

qint64 heapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return qint64(info.uordblks + info.hblkhd);
}

// Without the bus daemon itself: the bus layer watches it, too, until the first peer leaves, and then no more.
qint64 watchedPeers(const QDBusConnectionPrivate &bus)
{
    return bus.watchedServices.size() - int(bus.watchedServices.contains(QStringLiteral("org.freedesktop.DBus")));
}

} // namespace

SoakProbe::SoakProbe()
{
    qtHookData[objectAdded] = reinterpret_cast<quintptr>(&added);
    qtHookData[objectRemoved] = reinterpret_cast<quintptr>(&removed);
}

SoakProbe::~SoakProbe()
{
    qtHookData[objectAdded] = 0;
    qtHookData[objectRemoved] = 0;
}

bool SoakProbe::initialize()
{
    return QDBusConnection::sessionBus().registerObject(
        QStringLiteral("/org/ringlet/soakprobe"), this, QDBusConnection::ExportScriptableSlots);
}

QVariantMap SoakProbe::Counts() const
{
    Leak::happen(qEnvironmentVariable("SOAK_LEAK"));
    QDBusConnectionPrivate *bus = QDBusConnectionPrivate::d(QDBusConnection::sessionBus());
    const QReadLocker lock(&bus->lock);
    return {
        {QStringLiteral("objects"), qint64(objects)},
        {QStringLiteral("pending calls"), qint64(bus->pendingCalls.size())},
        {QStringLiteral("signal hooks"), qint64(bus->signalHooks.size())},
        {QStringLiteral("watched peers"), watchedPeers(*bus)},
        {QStringLiteral("heap"), heapInUse()},
    };
}

void SoakProbe::EndCall() const { Leak::happenAtCall(qEnvironmentVariable("SOAK_LEAK")); }
