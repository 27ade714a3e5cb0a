// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef CALLCTL_WATCHSCREEN_H
#define CALLCTL_WATCHSCREEN_H

#include "hoststate.h"

#include <QtCore/QStringList>

/** Keeps a table on a terminal up to date in its place, below what was there before. */
class WatchScreen
{
public:
    /** Shows the calls and the audio line. */
    void show(const HostState &state);

    /** Shows that the host is not there. */
    void showGone();

    /** The terminal has another size: what was drawn may be anywhere. */
    void reset();

private:
    void draw(const QStringList &lines);

    int m_drawn = 0;
};

#endif
