// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef CALLCTL_WATCHVIEW_H
#define CALLCTL_WATCHVIEW_H

#include "hoststate.h"

#include <QtCore/QByteArray>
#include <chrono>

/**
 * A way to show the host as it changes. It is told what has changed, and asked for bytes for standard output
 * when they can be written.
 */
class WatchView
{
public:
    virtual ~WatchView() = default;

    /** Everything may have changed, and the host is there. */
    virtual void noteReady(const HostState &state) = 0;
    virtual void noteCall(const HostState &state, const QString &path) = 0;
    virtual void noteProvider(const HostState &state, const QString &id) = 0;
    virtual void noteAudio(const HostState &state) = 0;

    /** The host has gone. */
    virtual void noteGone() = 0;

    /** There is no host that can be shown, or none yet. */
    virtual void noteFailure(const QString &reason) = 0;

    /** What stands on the terminal is no longer what was written. */
    virtual void noteTerminalChange() = 0;

    /** What shows all that was noted since the last time; empty when nothing is to be shown. */
    virtual QByteArray take(const HostState &state) = 0;

    /** How long to leave alone what was written. */
    virtual std::chrono::milliseconds pause() const = 0;

protected:
    WatchView() = default;
    WatchView(const WatchView &) = default;
    WatchView &operator=(const WatchView &) = default;
};

#endif
