// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_STOPSIGNALS_H
#define VOICECALLD_STOPSIGNALS_H

#include <QtCore/QThread>
#include <QtCore/QTimer>

class UnixSignals;

/**
 * Ends the program on SIGINT and SIGTERM: its event loop with 0, or the process itself with 0 if the loop
 * does not end soon. The signals are seen in a thread of their own, since the main thread may wait for the
 * bus daemon for a long time.
 */
class StopSignals : public QObject
{
    Q_OBJECT

public:
    StopSignals();

    /** From here on the process can no longer be ended by force. */
    ~StopSignals() override;

    /** Why the signals are not seen, for people; empty when they are. */
    QString errorString() const;

private:
    std::unique_ptr<UnixSignals> m_signals;
    QTimer m_patience;
    QThread m_thread;
};

#endif
