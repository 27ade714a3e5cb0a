// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "terminal.h"

#include "waitfor.h"

#include <QtCore/QRegularExpression>
#include <csignal>
#include <fcntl.h>
#include <pty.h>
#include <stdexcept>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

static winsize sizeOf(int columns, int rows)
{
    winsize size = {};
    size.ws_col = static_cast<unsigned short>(columns);
    size.ws_row = static_cast<unsigned short>(rows);
    return size;
}

Terminal::Terminal(const QByteArray &program, const QByteArray &argument, int columns, int rows)
{
    winsize size = sizeOf(columns, rows);
    m_pid = forkpty(&m_master, nullptr, nullptr, &size);
    if (m_pid < 0)
        throw std::runtime_error("no pseudo-terminal");
    if (m_pid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        setenv("TERM", "xterm", 1);
        execl(program.constData(), program.constData(), argument.constData(), nullptr);
        _exit(127);
    }
    fcntl(m_master, F_SETFL, O_NONBLOCK);
}

Terminal::~Terminal()
{
    if (m_pid > 0) {
        kill(m_pid, SIGKILL);
        waitpid(m_pid, nullptr, 0);
    }
    close(m_master);
}

void Terminal::resize(int columns, int rows)
{
    const winsize size = sizeOf(columns, rows);
    ioctl(m_master, TIOCSWINSZ, &size);
}

void Terminal::interrupt()
{
    const char controlC = 3;
    if (write(m_master, &controlC, 1) != 1)
        throw std::runtime_error("cannot write to the pseudo-terminal");
}

QByteArray Terminal::raw()
{
    char buffer[4096];
    for (ssize_t count = read(m_master, buffer, sizeof buffer); count > 0;
         count = read(m_master, buffer, sizeof buffer))
        m_output.append(buffer, int(count));
    return m_output;
}

// Knows what the program is allowed to use: line ends, cursor up, home, clear line, clear below and clear all.
QStringList Terminal::screen()
{
    static const QRegularExpression token(QStringLiteral("\033\\[(\\d*)([A-Z])|\r|\n|[^\033\r\n]+"));
    QStringList lines = {QString()};
    int row = 0;
    auto tokens = token.globalMatch(QString::fromUtf8(raw()));
    while (tokens.hasNext()) {
        const QRegularExpressionMatch match = tokens.next();
        const QString command = match.captured(2);
        if (match.captured() == QLatin1String("\n")) {
            if (++row == lines.size())
                lines.append(QString());
        } else if (command == QLatin1String("A")) {
            row = qMax(0, row - match.captured(1).toInt());
        } else if (command == QLatin1String("H")) {
            row = 0;
        } else if (command == QLatin1String("K")) {
            lines[row].clear();
        } else if (command == QLatin1String("J")) {
            lines = lines.mid(0, match.captured(1) == QLatin1String("2") ? 0 : row) << QString();
        } else if (match.captured() != QLatin1String("\r")) {
            lines[row] = match.captured();
        }
    }
    lines.removeLast();
    return lines;
}

QStringList Terminal::waitForScreen(const QStringList &lines)
{
    waitFor([&] { return screen() == lines; });
    return screen();
}

int Terminal::waitForExit()
{
    int status = -1;
    const bool ended = waitFor([&] {
        raw();
        return waitpid(m_pid, &status, WNOHANG) == m_pid;
    });
    if (ended)
        m_pid = -1;
    return ended && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
