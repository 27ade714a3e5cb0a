// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_FAKEBARESIP_H
#define TESTS_FAKEBARESIP_H

#include "netstringreader.h"

#include <QtCore/QStringList>
#include <QtNetwork/QTcpServer>
#include <QtNetwork/QTcpSocket>

/** Listens like baresip's ctrl_tcp, and answers nothing by itself. */
class FakeBaresip
{
public:
    FakeBaresip();

    quint16 port() const { return m_server.serverPort(); }

    /** How many connections have come so far. */
    int connections() const { return m_connections; }

    /** "command parameter" of each command that has come, in order. */
    QStringList commands() const { return m_commands; }
    /** Waits until so many commands have come. */
    bool waitForCommands(int count) const;

    /** Answers the last command. */
    void answer(const QByteArray &text, const QByteArray &token = {});
    /** Tells an event of this type. */
    void tell(const QByteArray &type);
    /** Sends bytes as they are. */
    void send(const QByteArray &bytes);
    /** Closes the connection. */
    void hangUp();

private:
    void onReadyRead();

    QTcpServer m_server;
    QTcpSocket *m_socket = nullptr;
    NetstringReader m_reader;
    QStringList m_commands;
    QByteArray m_lastToken;
    int m_connections = 0;
};

#endif
