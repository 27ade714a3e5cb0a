// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "watchscreen.h"

#include "programs/printabletext.h"
#include "views.h"

#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

struct Size
{
    int columns;
    int rows;
};

static Size terminalSize()
{
    winsize size = {};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) < 0 || size.ws_col == 0 || size.ws_row == 0)
        return {80, 24};
    return {size.ws_col, size.ws_row};
}

void WatchScreen::show(const HostState &state)
{
    const Size size = terminalSize();
    QStringList lines = Views::calls(state.calls, size.columns);
    // The audio line, one for what is left out, and the one the cursor stands in must fit as well.
    const int room = qMax(1, size.rows - 3);
    if (lines.size() > room) {
        const int leftOut = lines.size() - room;
        lines = lines.mid(0, room) << QStringLiteral("... and %1 more").arg(leftOut);
    }
    draw(lines << Views::audioLine(state, size.columns));
}

void WatchScreen::showGone()
{
    draw({PrintableText::elided(
        QStringLiteral("voicecalld is gone; waiting for it to come back"), terminalSize().columns)});
}

void WatchScreen::reset()
{
    std::fputs("\033[2J\033[H", stdout);
    m_drawn = 0;
}

void WatchScreen::draw(const QStringList &lines)
{
    if (m_drawn > 0)
        std::printf("\033[%dA\033[J", m_drawn);
    for (const QString &line : lines)
        std::printf("%s\n", qUtf8Printable(line));
    std::fflush(stdout);
    m_drawn = lines.size();
}
