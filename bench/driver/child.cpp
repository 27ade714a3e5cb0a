// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "child.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

static constexpr int firstDescriptor = 3;

[[noreturn]] static void execute(const std::vector<std::string> &command, const std::vector<int> &descriptors,
    const std::vector<std::string> &environment, const std::string &errors)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);
    dup2(open(errors.c_str(), O_WRONLY | O_APPEND), STDERR_FILENO);
    // Out of the way first, for one may stand where another belongs.
    std::vector<int> moved;
    for (const int descriptor : descriptors)
        moved.push_back(fcntl(descriptor, F_DUPFD, 100));
    for (size_t i = 0; i < moved.size(); ++i)
        dup2(moved[i], firstDescriptor + int(i));
    close_range(unsigned(firstDescriptor) + unsigned(moved.size()), ~0U, 0);
    for (const std::string &variable : environment)
        putenv(strdup(variable.c_str()));
    std::vector<char *> arguments;
    for (const std::string &argument : command)
        arguments.push_back(const_cast<char *>(argument.c_str()));
    arguments.push_back(nullptr);
    execvp(arguments[0], arguments.data());
    _exit(127);
}

Child::Child(Side side, const std::vector<std::string> &command, const std::vector<int> &descriptors,
    const std::vector<std::string> &environment, const std::string &errors)
    : m_id(fork())
{
    if (m_id == 0) {
        runOn(side);
        execute(command, descriptors, environment, errors);
    }
    if (m_id < 0)
        throw std::runtime_error("cannot start " + command.front() + ": " + std::strerror(errno));
}

Child::~Child()
{
    if (m_id > 0) {
        kill(m_id, SIGKILL);
        wait();
    }
}

void Child::wait()
{
    waitpid(m_id, nullptr, 0);
    m_id = 0;
}

SocketPair::SocketPair()
{
    int sockets[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0)
        throw std::runtime_error(std::string("cannot make sockets: ") + std::strerror(errno));
    near = sockets[0];
    far = sockets[1];
}

SocketPair::~SocketPair()
{
    closeFar();
    close(near);
}

void SocketPair::closeFar()
{
    if (far >= 0)
        close(far);
    far = -1;
}
