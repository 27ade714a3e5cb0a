// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "watchscreen.h"

#include "programs/printabletext.h"
#include "views.h"

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

void WatchScreen::noteReady(const HostState &)
{
    m_failure.clear();
    m_isNoted = true;
}

void WatchScreen::noteCall(const HostState &state, const QString &path)
{
    // One that is below the screen shows by the number of those.
    const bool isBelow = m_leftOut > 0 && m_last < CallPath{path};
    const bool isCountSame = m_shown + m_leftOut == state.calls.size();
    m_isNoted = m_isNoted || !isBelow || !isCountSame;
}

void WatchScreen::noteGone() { noteFailure(QStringLiteral("voicecalld is gone")); }

void WatchScreen::noteFailure(const QString &reason)
{
    m_failure = reason;
    m_isNoted = true;
}

void WatchScreen::noteTerminalChange() { m_isNoted = m_isCleared = true; }

QStringList WatchScreen::lines(const HostState &state)
{
    const Size size = terminalSize();
    // The heading, the audio line, one for what is left out, and the one the cursor stands in must fit as well.
    const int room = qMax(1, size.rows - 4);
    const bool fits = state.calls.size() <= room + 1;
    QList<CallInfo> shown;
    for (auto call = state.calls.cbegin(); call != state.calls.cend() && (fits || shown.size() < room); ++call) {
        shown.append(*call);
        m_last = call.key();
    }
    m_shown = shown.size();
    m_leftOut = state.calls.size() - m_shown;
    QStringList lines = Views::calls(shown, size.columns);
    if (m_leftOut > 0)
        lines.append(QStringLiteral("... and %1 more").arg(m_leftOut));
    return lines << Views::audioLine(state, size.columns);
}

QByteArray WatchScreen::take(const HostState &state)
{
    if (!m_isNoted)
        return {};
    m_isNoted = false;
    if (m_failure.isEmpty())
        return draw(lines(state));
    const QString text = PrintableText::printable(m_failure) + QStringLiteral("; waiting for it to come back");
    return draw({PrintableText::elided(text, terminalSize().columns)});
}

// The cursor stands below what is drawn.
QByteArray WatchScreen::draw(const QStringList &lines)
{
    QByteArray bytes;
    if (m_isCleared) {
        bytes += "\033[2J\033[H";
        m_drawn.clear();
    }
    m_isCleared = false;
    if (lines == m_drawn)
        return bytes;
    if (!m_drawn.isEmpty())
        bytes += "\033[" + QByteArray::number(m_drawn.size()) + 'A';
    for (int i = 0; i < lines.size(); ++i) {
        if (lines.at(i) != m_drawn.value(i) || i >= m_drawn.size())
            bytes += "\033[2K" + lines.at(i).toUtf8();
        bytes += '\n';
    }
    if (lines.size() < m_drawn.size())
        bytes += "\033[J";
    m_drawn = lines;
    return bytes;
}
