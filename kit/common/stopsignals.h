// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef KIT_STOPSIGNALS_H
#define KIT_STOPSIGNALS_H

#include <QtCore/QObject>

/** SIGINT and SIGTERM, brought into the event loop. One object at a time. */
class StopSignals : public QObject
{
    Q_OBJECT
public:
    explicit StopSignals(QObject *parent = nullptr);

Q_SIGNALS:
    /** Once; a second signal ends the process at once. */
    void received();
};

#endif
