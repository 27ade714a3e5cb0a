// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef CALLCTL_WATCHLINES_H
#define CALLCTL_WATCHLINES_H

#include "watchview.h"

#include <QtCore/QStringList>

/**
 * What changes at the host, a line each, for programs to read:
 *
 *     call ID added KEY=VALUE...        call ID changed KEY=VALUE...      call ID removed
 *     provider ID added type=TYPE       provider ID removed
 *     device ID added KEY=VALUE...      device ID removed
 *     audio changed KEY=VALUE...
 *     host ready                        host gone
 *
 * `added` gives all keys, `changed` those with a new value, both in a fixed order. The keys name, address
 * and app are always JSON strings; any other value, and an id, only when it is empty or holds something
 * else than letters, digits and _ . / : @ + -.
 *
 * Each change has its line, until so much waits to be read that this would take memory without end: what
 * changes then is told when there is room again, by what has become of it.
 */
class WatchLines : public WatchView
{
public:
    void noteReady(const HostState &state) override;
    void noteCall(const HostState &state, const QString &path) override;
    void noteProvider(const HostState &state, const QString &id) override;
    void noteAudio(const HostState &state) override;
    void noteGone() override;
    void noteFailure(const QString &reason) override;
    void noteTerminalChange() override { }
    QByteArray take(const HostState &state) override;
    std::chrono::milliseconds pause() const override { return std::chrono::milliseconds(0); }

private:
    void print(const QString &line);
    void printIfThereIsRoom(const HostState &state);
    void printNoted(const HostState &state);
    void noteThingsOf(const HostState &state);
    void noteEverything(const HostState &state);
    void printProvider(const HostState &state, const QString &id);
    void printAudio(const HostState &state);
    void printCall(const HostState &state, const CallPath &path);

    /** What the lines so far have told. */
    HostState m_told;
    QByteArray m_bytes;
    QStringList m_providers;
    QMap<CallPath, bool> m_calls;
    bool m_audio = false;
    bool m_isReady = false;
    bool m_isGone = false;
};

#endif
