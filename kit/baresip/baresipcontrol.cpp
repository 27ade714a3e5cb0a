// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "baresipcontrol.h"

#include <QtCore/QJsonDocument>

static constexpr int firstRetryMs = 250;
static constexpr int longestRetryMs = 5000;
static constexpr int replyLimitMs = 5000;
// A connection that lasted this long was a good one. One that ended at once may have been taken over by
// another program, which would want it back as soon as it were taken from that one.
static constexpr int goodConnectionMs = 3000;
static constexpr int mostRestarts = 20;

BaresipControl::BaresipControl(const QString &host, quint16 port, QObject *parent)
    : QObject(parent),
      m_host(host),
      m_port(port)
{
    m_retry.setSingleShot(true);
    m_patience.setSingleShot(true);
    m_patience.setInterval(replyLimitMs);
    // What arrives while a message is handled waits in the kernel, not here.
    m_socket.setReadBufferSize(1 << 16);
    connect(&m_retry, &QTimer::timeout, this, &BaresipControl::connectNow);
    connect(&m_patience, &QTimer::timeout, this, [this] { drop(QStringLiteral("it does not answer")); });
    connect(&m_socket, &QTcpSocket::connected, this, &BaresipControl::onConnected);
    connect(&m_socket, &QTcpSocket::readyRead, this, &BaresipControl::onReadyRead);
    connect(&m_socket, &QTcpSocket::errorOccurred, this, &BaresipControl::onSocketFailed);
}

BaresipControl::~BaresipControl() { m_socket.disconnect(this); }

void BaresipControl::start() { connectNow(); }

bool BaresipControl::isConnected() const { return m_wasConnected; }

void BaresipControl::connectNow() { m_socket.connectToHost(m_host, m_port); }

void BaresipControl::onConnected()
{
    m_socket.setSocketOption(QAbstractSocket::LowDelayOption, 1);
    m_reader.reset();
    m_wasConnected = true;
    m_sinceConnected.start();
    emit connected();
}

void BaresipControl::onSocketFailed() { lose(m_socket.errorString()); }

void BaresipControl::drop(const QString &reason)
{
    const QSignalBlocker silent(m_socket);
    m_socket.abort();
    lose(reason);
}

void BaresipControl::lose(const QString &reason)
{
    const bool hadConnection = m_wasConnected;
    m_wasConnected = false;
    m_patience.stop();
    m_queue.clear();
    m_progress = {};
    m_isAwaitingReply = false;
    if (hadConnection && m_sinceConnected.hasExpired(goodConnectionMs))
        m_attempts = 0;
    m_retry.start(qMin(firstRetryMs << qMin(m_attempts, 10), longestRetryMs));
    ++m_attempts;
    if (hadConnection)
        emit disconnected(reason);
    else if (m_attempts == 1)
        emit unreachable(reason);
}

void BaresipControl::run(const CommandSequence &sequence)
{
    if (!m_wasConnected || sequence.commands.isEmpty())
        return;
    m_queue.enqueue(sequence);
    if (!m_isAwaitingReply && m_queue.size() == 1)
        restartSequence();
}

void BaresipControl::restartSequence()
{
    m_progress = {};
    m_isAsExpected = true;
    sendNext();
}

static QByteArray netstring(const Command &command, quint64 token)
{
    QJsonObject message{{QStringLiteral("command"), command.name}, {QStringLiteral("token"), QString::number(token)}};
    if (!command.parameter.isEmpty())
        message.insert(QStringLiteral("params"), command.parameter);
    return NetstringReader::frame(QJsonDocument(message).toJson(QJsonDocument::Compact));
}

void BaresipControl::sendNext()
{
    const CommandSequence &sequence = m_queue.head();
    const int first = m_progress.replies.size();
    const int count = sequence.pace == CommandSequence::Pace::Together ? sequence.commands.size() : 1;
    m_awaitedToken = m_lastToken + 1;
    QByteArray bytes;
    for (const Command &command : sequence.commands.mid(first, count))
        bytes += netstring(command, ++m_lastToken);
    m_isAwaitingReply = true;
    m_patience.start();
    m_socket.write(bytes);
}

void BaresipControl::onReadyRead()
{
    while (m_wasConnected && m_socket.bytesAvailable() > 0) {
        QList<QByteArray> messages;
        const bool isReadable = m_reader.read(m_socket.readAll(), &messages);
        for (const QByteArray &message : qAsConst(messages)) {
            if (m_wasConnected)
                onMessage(message);
        }
        if (!isReadable && m_wasConnected)
            drop(QStringLiteral("what it sends are no netstrings; is this baresip's ctrl_tcp?"));
    }
}

// Names of callers are passed on by baresip in whatever encoding they came.
static QByteArray asUtf8(const QByteArray &bytes) { return QString::fromUtf8(bytes).toUtf8(); }

void BaresipControl::onMessage(const QByteArray &bytes)
{
    const QJsonObject message = QJsonDocument::fromJson(asUtf8(bytes)).object();
    if (message.value(QStringLiteral("response")).toBool()) {
        onReply(message);
        return;
    }
    if (!message.value(QStringLiteral("event")).toBool())
        return;
    static const QStringList changingTheCurrentCall
        = {QStringLiteral("CALL_INCOMING"), QStringLiteral("CALL_LOCAL_SDP"), QStringLiteral("CALL_CLOSED")};
    if (changingTheCurrentCall.contains(message.value(QStringLiteral("type")).toString()))
        m_progress.isDisturbed = true;
    emit eventReceived(message);
}

void BaresipControl::onReply(const QJsonObject &message)
{
    if (!m_isAwaitingReply || message.value(QStringLiteral("token")).toString() != QString::number(m_awaitedToken))
        return;
    const Reply reply{message.value(QStringLiteral("ok")).toBool(), message.value(QStringLiteral("data")).toString()};
    const Command &command = m_queue.head().commands.at(m_progress.replies.size());
    m_isAsExpected = m_isAsExpected && reply.text.startsWith(command.expected);
    m_progress.replies.append(reply);
    if (m_awaitedToken != m_lastToken) {
        ++m_awaitedToken;
        return;
    }
    m_isAwaitingReply = false;
    m_patience.stop();
    goOn();
}

void BaresipControl::goOn()
{
    if (!m_isAsExpected || m_progress.replies.size() == m_queue.head().commands.size())
        finishSequence(m_isAsExpected);
    else if (!m_progress.isDisturbed)
        sendNext();
    else if (++m_restarts <= mostRestarts)
        restartSequence();
    else
        finishSequence(false);
}

void BaresipControl::finishSequence(bool isComplete)
{
    const CommandSequence sequence = m_queue.dequeue();
    CommandSequence::Result result = m_progress;
    result.isComplete = isComplete;
    m_progress = {};
    m_restarts = 0;
    // Before done() is called, which may add to the queue.
    if (!m_queue.isEmpty())
        restartSequence();
    if (sequence.done)
        sequence.done(result);
}
