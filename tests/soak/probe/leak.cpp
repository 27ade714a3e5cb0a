// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "leak.h"

#include <QtCore/QMap>
#include <QtCore/QObject>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusPendingCall>
#include <fcntl.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr size_t memoryBytes = 64 * 1024;

void loseDescriptor() { open("/dev/null", O_RDONLY); } // NOLINT(cppcoreguidelines-pro-type-vararg)

void loseMemory()
{
    // Reachable, so that only counting shows it.
    static QList<QByteArray> kept;
    kept.append(QByteArray(memoryBytes, 'x'));
}

void loseObject()
{
    static QObject keeper;
    new QObject(&keeper);
}

// Nothing that the peer is sent is answered.
void losePendingCall()
{
    constexpr int timeoutMs = 600000;
    const QDBusMessage message = QDBusMessage::createMethodCall(
        qEnvironmentVariable("SOAK_SILENT_PEER"), QStringLiteral("/"), QString(), QStringLiteral("Wait"));
    QDBusConnection::sessionBus().asyncCall(message, timeoutMs);
}

void loseRule()
{
    static QObject receiver;
    static int rules = 0;
    QDBusConnection::sessionBus().connect(QString(), QStringLiteral("/lost/%1").arg(++rules),
        QStringLiteral("org.ringlet.Lost"), QStringLiteral("Lost"), &receiver, SLOT(deleteLater()));
}

// Eleven bytes on average, as the allocator counts them: a block takes 32. Reachable.
void loseMemoryOfCall()
{
    struct Block
    {
        Block *previous;
        qint64 rest[2];
    };
    static Block *kept = nullptr;
    static int owed = 0;
    owed += 11;
    if (owed >= 32) {
        owed -= 32;
        kept = new Block{kept, {}};
    }
}

void loseThread() { std::thread(pause).detach(); }

const QMap<QString, void (*)()> leaks = {
    {QStringLiteral("descriptor"), loseDescriptor},
    {QStringLiteral("memory"), loseMemory},
    {QStringLiteral("object"), loseObject},
    {QStringLiteral("pending-call"), losePendingCall},
    {QStringLiteral("rule"), loseRule},
    {QStringLiteral("thread"), loseThread},
};

} // namespace

void Leak::happen(const QString &kind)
{
    if (const auto leak = leaks.value(kind))
        leak();
}

void Leak::happenAtCall(const QString &kind)
{
    if (kind == QLatin1String("call-memory"))
        loseMemoryOfCall();
}
