// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BARESIP_OPTIONS_H
#define BARESIP_OPTIONS_H

#include "devicemap.h"

/** What the command line asks for. */
struct Options
{
    /** Where baresip's ctrl_tcp listens. */
    QString host;
    quint16 port = 0;
    DeviceMap inputs;
    DeviceMap outputs;
    /** What to print instead of doing anything: help or version. */
    QString answer;

    /** Reads the command line; what is wrong with it, empty if nothing. */
    QString read(const QStringList &arguments);
};

#endif
