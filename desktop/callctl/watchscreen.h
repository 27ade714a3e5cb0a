// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef CALLCTL_WATCHSCREEN_H
#define CALLCTL_WATCHSCREEN_H

#include "watchview.h"

#include <QtCore/QStringList>

/**
 * Keeps a table on a terminal up to date in its place, below what was there before. Only calls that fit on the
 * terminal are looked at, and only lines that have changed are written.
 */
class WatchScreen : public WatchView
{
public:
    void noteReady(const HostState &state) override;
    void noteCall(const HostState &state, const QString &path) override;
    void noteProvider(const HostState &, const QString &) override { }
    void noteAudio(const HostState &) override { m_isNoted = true; }
    void noteGone() override;
    void noteFailure(const QString &reason) override;
    void noteTerminalChange() override;
    QByteArray take(const HostState &state) override;
    std::chrono::milliseconds pause() const override { return std::chrono::milliseconds(100); }

private:
    QStringList lines(const HostState &state);
    QByteArray draw(const QStringList &lines);

    /** Whether something that is on the screen may be different now. */
    bool m_isNoted = false;
    bool m_isCleared = false;
    /** Why there is no table. */
    QString m_failure;
    /** The last call that is on the screen, the number of those that are, and of those below. */
    CallPath m_last;
    int m_shown = 0;
    int m_leftOut = 0;
    QStringList m_drawn;
};

#endif
