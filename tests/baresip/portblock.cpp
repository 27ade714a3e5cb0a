// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "portblock.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

static constexpr int firstPort = 20000;
static constexpr int endPort = 32000;
static constexpr int blockSize = 100;

// A socket of this kind on the port; -1 when it is taken. Connections of the past that linger there do not count.
static int bound(int type, int port)
{
    const int socket = ::socket(AF_INET, type | SOCK_CLOEXEC, 0);
    const int yes = 1;
    if (type == SOCK_STREAM)
        setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(quint16(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (bind(socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0
        && (type != SOCK_STREAM || listen(socket, 1) == 0))
        return socket;
    close(socket);
    return -1;
}

static bool isFree(int type, int port)
{
    const int socket = bound(type, port);
    if (socket >= 0)
        close(socket);
    return socket >= 0;
}

static bool isFree(int first)
{
    for (int port = first + 1; port < first + blockSize; ++port) {
        if (!isFree(SOCK_DGRAM, port) || !isFree(SOCK_STREAM, port))
            return false;
    }
    return true;
}

PortBlock::PortBlock()
{
    // Not the one that the last process had: its softphones may just be ending.
    const int blocks = (endPort - firstPort) / blockSize;
    for (int i = 0; i < blocks; ++i) {
        const int first = firstPort + (int(getpid()) + i) % blocks * blockSize;
        m_socket = bound(SOCK_STREAM, first);
        m_first = quint16(first);
        if (m_socket >= 0 && isFree(first))
            return;
        if (m_socket >= 0)
            close(m_socket);
    }
    throw std::runtime_error("no free ports");
}

PortBlock::~PortBlock() { close(m_socket); }

quint16 PortBlock::port(int number) const { return quint16(m_first + number); }
