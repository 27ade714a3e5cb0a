// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BARESIP_BARESIPCONTROL_H
#define BARESIP_BARESIPCONTROL_H

#include "command.h"
#include "netstringreader.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QJsonObject>
#include <QtCore/QObject>
#include <QtCore/QQueue>
#include <QtCore/QTimer>
#include <QtNetwork/QTcpSocket>

/**
 * The connection to baresip's module ctrl_tcp: commands and their answers, and events. A baresip that is not
 * there is awaited. One sequence of commands is on its way at a time.
 *
 * Most commands act on the current call of the current account, and baresip changes both by itself when a
 * call begins. A sequence in which that happens before its last command was sent begins anew.
 */
class BaresipControl : public QObject
{
    Q_OBJECT
public:
    BaresipControl(const QString &host, quint16 port, QObject *parent = nullptr);
    ~BaresipControl() override;

    /** Connects, now and whenever the connection is lost. */
    void start();

    bool isConnected() const;

    /** Runs it when all before it have been. Forgotten when there is no connection, or when it is lost. */
    void run(const CommandSequence &sequence);

Q_SIGNALS:
    void connected();
    /** There was a connection, and it has gone. */
    void disconnected(const QString &reason);
    /** The first of several attempts has failed. */
    void unreachable(const QString &reason);
    void eventReceived(const QJsonObject &event);

private:
    void connectNow();
    void onConnected();
    void onSocketFailed();
    void onReadyRead();
    void onMessage(const QByteArray &bytes);
    void onReply(const QJsonObject &message);
    void sendNext();
    void goOn();
    void restartSequence();
    void finishSequence(bool isComplete);
    /** Gives the connection up, and says why. */
    void drop(const QString &reason);
    void lose(const QString &reason);

    const QString m_host;
    const quint16 m_port;
    QTcpSocket m_socket;
    NetstringReader m_reader;
    QTimer m_retry;
    QTimer m_patience;
    QElapsedTimer m_sinceConnected;
    int m_attempts = 0;
    bool m_wasConnected = false;

    QQueue<CommandSequence> m_queue;
    CommandSequence::Result m_progress;
    int m_restarts = 0;
    quint64 m_lastToken = 0;
    quint64 m_awaitedToken = 0;
    bool m_isAwaitingReply = false;
    bool m_isAsExpected = true;
};

#endif
