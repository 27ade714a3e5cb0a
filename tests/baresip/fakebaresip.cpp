// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "fakebaresip.h"

#include "waitfor.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

FakeBaresip::FakeBaresip()
{
    m_server.listen(QHostAddress::LocalHost);
    QObject::connect(&m_server, &QTcpServer::newConnection, [this] {
        m_socket = m_server.nextPendingConnection();
        ++m_connections;
        m_reader.reset();
        QObject::connect(m_socket, &QTcpSocket::readyRead, [this] { onReadyRead(); });
    });
}

bool FakeBaresip::waitForCommands(int count) const
{
    return waitFor([&] { return m_commands.size() >= count; });
}

void FakeBaresip::onReadyRead()
{
    QList<QByteArray> messages;
    m_reader.read(m_socket->readAll(), &messages);
    for (const QByteArray &message : qAsConst(messages)) {
        const QJsonObject command = QJsonDocument::fromJson(message).object();
        m_commands.append((command.value("command").toString() + ' ' + command.value("params").toString()).trimmed());
        m_lastToken = command.value("token").toString().toUtf8();
    }
}

void FakeBaresip::answer(const QByteArray &text, const QByteArray &token)
{
    send(NetstringReader::frame("{\"response\":true,\"ok\":true,\"data\":\"" + text + "\",\"token\":\""
        + (token.isEmpty() ? m_lastToken : token) + "\"}"));
}

void FakeBaresip::tell(const QByteArray &type)
{
    send(NetstringReader::frame("{\"event\":true,\"type\":\"" + type + "\"}"));
}

void FakeBaresip::send(const QByteArray &bytes) { m_socket->write(bytes); }

void FakeBaresip::hangUp() { m_socket->disconnectFromHost(); }
